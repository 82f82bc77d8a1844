#pragma once
// Puts one line per message of a bus into the event log, as the Logging flags ask: attached to
// the data bus it writes "SONRDAT" lines, to the command bus "SONRCMD" lines. It looks at each
// message in the first stage, as it arrived, so played records are logged like live ones.

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
