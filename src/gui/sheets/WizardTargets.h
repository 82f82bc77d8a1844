#pragma once
// What the setup wizard asks of the pages it drives. The sonar, display and disk pages of the
// "Status And Control" sheet implement these; the wizard finds them by their tab captions.

#include <string>

namespace halvo {

// A sonar page.
class WizardSonarTarget {
  public:
    virtual ~WizardSonarTarget() = default;
    // Raw data, internal trigger, 1 ping per second, a data window of 100 ms, pinging on.
    virtual void SetupRawDataCollection() = 0;
    // The display channel this sonar's data arrives on.
    virtual int FirstDisplayChannel() const = 0;
};

// A display page.
class WizardDisplayTarget {
  public:
    virtual ~WizardDisplayTarget() = default;
    virtual void ShowChannel(int channel) = 0;
};

// The disk page.
class WizardDiskTarget {
  public:
    virtual ~WizardDiskTarget() = default;
    // Sets the record directory and file name, and starts recording.
    virtual void StartRecording(const std::string& directory, const std::string& fileName) = 0;
};

}  // namespace halvo
