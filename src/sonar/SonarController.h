#pragma once
// Keeps the sonar in step with the settings. Each Tick compares every subsystem's record with
// the copy last sent and sends what differs; a new connection sends everything, and so does the
// second tick after the sonar answers the handshake. Replies on the command bus are read back
// into the records the rest of the program sees. Nothing here waits for a reply.
//
// Tick runs on the window thread; DeliverMessage, and the window sends it sets off, on the
// command bus thread. One lock guards all state; posting never blocks, so it is held across
// sends and the two threads' commands stay whole.

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "core/MessageObserver.h"
#include "sonar/QCConfig.h"
#include "sonar/RecorderConfig.h"
#include "sonar/SensorConfig.h"
#include "sonar/SonarConfig.h"

namespace halvo {

class MessageHub;
class TickSource;

class SonarController : public MessageObserver {
  public:
    static constexpr int kSonars = 4;
    static constexpr std::size_t kPulseEntryBytes = 360;
    static constexpr std::size_t kStatusWords = 25;
    static constexpr std::size_t kRecorderStatusBytes = 332;
    static constexpr std::size_t kTextBytes = 256;  // pulse names and file names on the wire
    static constexpr std::uint32_t kCheckPeriodMs = 1500;
    static constexpr std::uint32_t kStatusPeriodMs = 10000;
    static constexpr std::int32_t kDefaultRate = 1000;  // rates read back before any reply
    static constexpr std::int32_t kPulseListQuery = 32;

    // Handshake states.
    static constexpr int kHandshakeNone = 0;
    static constexpr int kHandshakeReplied = 1;
    static constexpr int kHandshakeOneTick = 2;
    static constexpr int kHandshakeDone = 3;

    // The connection count of the sonar command link: odd while connected.
    using ConnectionCountFn = std::function<int()>;
    // Applies the live-video settings; told whether this tick sends everything.
    using LiveVideoFn = std::function<void(bool forced)>;

    // Attaches to the hub's command bus; the destructor detaches.
    SonarController(MessageHub& hub, TickSource& ticks, int configType);
    ~SonarController() override;
    SonarController(const SonarController&) = delete;
    SonarController& operator=(const SonarController&) = delete;

    // Until a count is plugged in the link reads as down and nothing is sent.
    void SetConnectionCount(ConnectionCountFn count);
    void SetLiveVideo(LiveVideoFn apply);
    void SetConfigType(int configType);
    int ConfigType() const;

    void Tick();
    // Sends the windows of one subsystem if its mark is set, then a ping-rate query.
    void SendWindow(int index);
    void DeliverMessage(SonarMessage* message, int source, std::uint32_t extra) override;

    // Records. An index outside 0 to 3 means 3.
    static int ClampIndex(int index);
    int NumSonars() const;
    void SetNumSonars(int count);  // stored as given; loops use at most four
    SonarConfig GetSonar(int index) const;
    // Marks the subsystem active, stores the record and raises the change count.
    void SetSonar(const SonarConfig& record, int index);
    bool IsActive(int index) const;
    bool GetQC(QCConfig& record, int index) const;
    void SetQC(const QCConfig& record, int index);
    QCConfig QCRecord(int index) const;  // a plain copy, for saving
    SensorConfig GetSensor() const;
    void SetSensor(const SensorConfig& record);
    RecorderConfig GetRecorder() const;
    void SetRecorder(const RecorderConfig& record);

    int GetChangeCount() const;
    int GetReplyChangeCount() const;
    int GetReplyCount() const;
    int HandshakeState() const;

    // What the sonar said.
    std::vector<std::string> GetPulseNames(int index) const;
    std::vector<std::uint8_t> GetPulseBlock(int index) const;
    int GetPulseBlockVersion(int index) const;
    int GetPulseCount(int index) const;
    std::array<std::int32_t, kStatusWords> GetStatus() const;
    // Whether a whole system status reply has come since start: before it the words are zeros,
    // not readings.
    bool HasStatus() const;
    // The last 444 reply, kept whole; empty before the first.
    std::vector<std::uint8_t> GetRecorderStatus() const;
    std::int32_t PingRateReadBack(int index) const;
    std::int32_t AdcRateReadBack(int index) const;
    // "Ping Rate %f, ADC Rate %f" from the last 124 and 142 replies.
    std::string RateText(int index) const;

  private:
    using Bytes = std::span<const std::uint8_t>;
    void Send(int type, int direction, int subsystem, int channel, Bytes payload);
    void SendWord(int type, int subsystem, int channel, std::int32_t word);
    void Query(int type, int subsystem, int channel = 0);
    void SendText(int type, int subsystem, const std::string& text);

    void SendSubsystem(int index, bool forced);       // under the lock
    void SendSensorsAndRecorder(bool forced);         // under the lock
    void SendWindowLocked(int index);                 // under the lock
    int Match(int subsystem, bool activeOnly) const;  // under the lock; -1 when none
    void ReadPulseList(int index, Bytes payload, std::int32_t size);  // under the lock

    MessageHub& hub_;
    TickSource& ticks_;
    mutable std::mutex mutex_;
    ConnectionCountFn connectionCount_;
    LiveVideoFn liveVideo_;
    int configType_ = 0;
    int numSonars_ = 0;

    std::array<SonarConfig, kSonars> current_{};
    std::array<SonarConfig, kSonars> sent_{};
    std::array<QCConfig, kSonars> qc_{};
    std::array<std::int32_t, kSonars> qcSent_{};
    std::array<bool, kSonars> active_{};
    std::array<bool, kSonars> windowDirty_{};
    std::array<std::int32_t, kSonars> pingRateBack_{};
    std::array<std::int32_t, kSonars> adcRateBack_{};
    std::array<std::vector<std::uint8_t>, kSonars> pulseBlock_{};
    std::array<int, kSonars> pulseVersion_{};
    std::array<int, kSonars> pulseCount_{};
    std::array<std::vector<std::string>, kSonars> pulseNames_{};
    SensorConfig sensor_;
    SensorConfig sensorSent_;
    RecorderConfig recorder_;
    RecorderConfig recorderSent_;
    std::array<std::int32_t, kStatusWords> status_{};
    bool statusSeen_ = false;
    std::vector<std::uint8_t> recorderStatus_;

    int handshake_ = kHandshakeNone;
    int lastConnectionCount_ = 0;
    int changeCount_ = 0;
    int sentChangeCount_ = 0;
    int replyChangeCount_ = 0;
    int replyCount_ = 0;
    std::uint32_t lastCheckMs_ = 0;
    std::uint32_t lastStatusMs_ = 0;
    bool firstConnection_ = true;
};

}  // namespace halvo
