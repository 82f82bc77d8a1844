#pragma once
// What the rest of the program sees of the sonar: up to four subsystem records, a sensor record
// and a recorder record, each copied by value, with change counts to poll. Load and save of the
// sonar sections live here; the records themselves and the commands live in the controller,
// which this object makes and owns.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "app/SettingsLifecycle.h"
#include "sonar/DataFormatWarning.h"
#include "sonar/SonarController.h"

namespace halvo {

class MessageHub;
class StorageControl;
class SystemCoordinator;
class TickSource;

class SonarIF {
  public:
    static constexpr int kSonars = SonarController::kSonars;
    static constexpr int kDefaultNumSonars = 3;
    static constexpr std::int32_t kStateLoaded = 2;

    // Makes the controller, which attaches to the hub's command bus.
    SonarIF(const SystemCoordinator& coordinator, MessageHub& hub, TickSource& ticks,
            StorageControl& storage, int configType);
    virtual ~SonarIF();
    SonarIF(const SonarIF&) = delete;
    SonarIF& operator=(const SonarIF&) = delete;

    // The window thread's 250 ms call.
    virtual void Tick();

    void Start();
    // Reads sections SonarStorage, SonarSerial, Sonar and SBSonar0..3 of the active settings
    // file, applies the configuration type, and stores every record.
    void Load();
    // Writes the same keys, SonarOn among them. Nothing unless loaded.
    void Save();
    const SettingsLifecycle& Lifecycle() const { return lifecycle_; }

    int GetNumSonars() const;
    // Held to 0 to 4. A load stores NumSonars as the file gives it.
    void SetNumSonars(int count);
    int ConfigType() const;

    // An index outside 0 to 3 means 3, in every accessor.
    SonarConfig GetSonar(int index) const;
    // Marks the subsystem active. When transmit is switched, the program leaves playback
    // acquisition, so that live data is not hidden while the sonar pings. Raises the change count.
    void SetSonar(const SonarConfig& record, int index);
    // Fills the record only if its change count differs from the stored one; true if filled.
    bool GetQC(QCConfig& record, int index) const;
    void SetQC(const QCConfig& record, int index);
    SensorConfig GetSensor() const;
    void SetSensor(const SensorConfig& record);
    RecorderConfig GetRecorder() const;
    void SetRecorder(const RecorderConfig& record);
    std::int32_t GetState(int index) const;

    int GetChangeCount() const;
    int GetReplyChangeCount() const;
    int GetReplyCount() const;
    std::vector<std::string> GetPulseNames(int index) const;
    std::vector<std::uint8_t> GetPulseBlock(int index) const;
    int GetPulseBlockVersion(int index) const;
    std::array<std::int32_t, SonarController::kStatusWords> GetStatus() const;
    // Whether a whole system status reply has come: before it the words are zeros.
    bool HasStatus() const;
    // The last 332-byte recorder status reply; empty before the first.
    std::vector<std::uint8_t> GetRecorderStatus() const;
    std::string RateText(int index) const;

    DataFormatWarning& FormatWarning() { return formatWarning_; }
    SonarController& Controller() { return *controller_; }

  private:
    const SystemCoordinator& coordinator_;
    StorageControl& storage_;
    std::unique_ptr<SonarController> controller_;
    std::array<std::int32_t, kSonars> state_{};
    SettingsLifecycle lifecycle_;
    DataFormatWarning formatWarning_;
};

}  // namespace halvo
