#pragma once
// The display chain asks which sonar a trace belongs to; the sonar model holds the answer.

#include "dsp/SonarChannelMap.h"
#include "sonar/SonarIF.h"

namespace halvo {

class SonarModelChannelMap final : public SonarChannelMapIF {
  public:
    explicit SonarModelChannelMap(const SonarIF* const& sonar) : sonar_(sonar) {}

    int FindSonar(int subsystem, int& firstChannel) const override {
        if (sonar_ == nullptr) return -1;
        const int count = sonar_->GetNumSonars();
        for (int i = 0; i < count && i < SonarIF::kSonars; ++i) {
            const SonarConfig s = sonar_->GetSonar(i);
            if (s.subsystem == subsystem) {
                firstChannel = s.channelOffset;
                return i;
            }
        }
        return -1;
    }

  private:
    // The model is made at start-up, after the chain: the map follows the owner's pointer.
    const SonarIF* const& sonar_;
};

}  // namespace halvo
