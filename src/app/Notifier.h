#pragma once
// The few message boxes that logic below the windows raises go through this interface. The GUI
// shows them; the headless program writes them to the event log; tests record them.

#include <string_view>

namespace halvo {

class Notifier {
  public:
    virtual ~Notifier() = default;
    // A message box with a title and a text; never blocks the caller for an answer.
    virtual void Notify(std::string_view title, std::string_view text) = 0;
};

// For pieces that are built without anyone listening.
class SilentNotifier final : public Notifier {
  public:
    void Notify(std::string_view, std::string_view) override {}
};

}  // namespace halvo
