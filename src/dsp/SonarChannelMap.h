#pragma once
// Which sonar a trace belongs to: the position of the sonar whose subsystem matches the message's
// and that sonar's first channel. The sonar settings own the answer; the chain only asks.

#include <cstdint>
#include <vector>

namespace halvo {

class SonarChannelMapIF {
  public:
    virtual ~SonarChannelMapIF() = default;
    // Position of the first sonar with this subsystem, with its first channel; -1 for none.
    virtual int FindSonar(int subsystem, int& firstChannel) const = 0;
};

// A fixed list, for tools and tests (and for a program with no sonar configured: empty).
class FixedSonarChannelMap final : public SonarChannelMapIF {
  public:
    struct Sonar {
        int subsystem = 0;
        int firstChannel = 0;
    };
    FixedSonarChannelMap() = default;
    explicit FixedSonarChannelMap(std::vector<Sonar> sonars) : sonars_(std::move(sonars)) {}

    int FindSonar(int subsystem, int& firstChannel) const override {
        for (std::size_t s = 0; s < sonars_.size(); ++s) {
            if (sonars_[s].subsystem == subsystem) {
                firstChannel = sonars_[s].firstChannel;
                return static_cast<int>(s);
            }
        }
        return -1;
    }

  private:
    std::vector<Sonar> sonars_;
};

}  // namespace halvo
