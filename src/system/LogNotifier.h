#pragma once
// Where message boxes go when there is no window: into the event log, title and text on one line.

#include <string>

#include "app/EventLog.h"
#include "app/Notifier.h"

namespace halvo {

class LogNotifier final : public Notifier {
  public:
    explicit LogNotifier(EventLog& log) : log_(log) {}
    void Notify(std::string_view title, std::string_view text) override {
        std::string line(title);
        line += " : ";
        line += text;
        log_.Add(line);
    }

  private:
    EventLog& log_;
};

}  // namespace halvo
