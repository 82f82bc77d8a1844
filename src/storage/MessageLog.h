#pragma once
// Puts one line per message into the event log, as the Logging flags ask: "SONRDAT" lines for
// the data stream, "SONRCMD" lines for the command stream. The sonar links feed it: a reply once
// its body has arrived, a command once its bytes have left.

#include "storage/MessageLogLines.h"

namespace halvo {

class EventLog;
class LoggingControl;
class SonarMessage;

class MessageLog {
  public:
    MessageLog(LogStream stream, LoggingControl& logging, EventLog& events)
        : stream_(stream), logging_(logging), events_(events) {}

    void Log(const SonarMessage& message);

  private:
    LogStream stream_;
    LoggingControl& logging_;
    EventLog& events_;
};

}  // namespace halvo
