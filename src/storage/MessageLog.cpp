#include "storage/MessageLog.h"

#include "app/EventLog.h"
#include "core/SonarMessage.h"
#include "storage/LoggingControl.h"

namespace halvo {

void MessageLog::Log(const SonarMessage& message) {
    const std::int32_t flags = logging_.Flags();
    // Most messages go unlogged: leave before any text is made.
    if (!MessageLogLines::Wanted(message.type(), message.direction(), stream_, flags)) return;
    for (const std::string& line : MessageLogLines::Lines(message, stream_, flags)) {
        events_.Add(line);
    }
}

}  // namespace halvo
