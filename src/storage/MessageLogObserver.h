#pragma once
// Puts one line per message into the event log, as the Logging flags ask: "SONRDAT" lines for
// the data stream, "SONRCMD" lines for the command stream. The program feeds it from the sonar
// links (Log); attached to a bus instead it logs each message in the first stage, as it arrived.

#include <cstdint>

#include "core/MessageObserver.h"
#include "storage/MessageLogLines.h"

namespace halvo {

class EventLog;
class LoggingControl;

class MessageLogObserver : public MessageObserver {
  public:
    MessageLogObserver(LogStream stream, LoggingControl& logging, EventLog& events)
        : stream_(stream), logging_(logging), events_(events) {}

    void PreviewMessage(SonarMessage* message, int source, std::uint32_t extra) override;
    // The same lines for a message that is logged outside a bus stage.
    void Log(const SonarMessage& message);

  private:
    LogStream stream_;
    LoggingControl& logging_;
    EventLog& events_;
};

}  // namespace halvo
