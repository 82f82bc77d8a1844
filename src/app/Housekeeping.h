#pragma once
// The main window's periodic update, as logic: every 250 ms it shows the status line (unless a
// message is being held), ticks the sonar controller, and every eighth call works out the
// indicator panes — navigation, sonar link, recorder, altitude — writing an event log line only
// when an indicator changes. Red panes blink. The GUI paints what this decides; the headless
// program runs the very same object.
//
// The pieces it looks at live in higher layers, so they come in as functions; a function left
// empty is a piece this build does not have, and its step does nothing.

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace halvo {

class EventLog;

struct PaneState {
    // 0 dialog face/black, 1 red and blinking, 2 red/white, 3 dialog face/black.
    int state = 0;
    std::string text;
    // Set by the blink step for panes in state 1 or 2.
    bool red = false;
    bool whiteText = false;

    friend bool operator==(const PaneState&, const PaneState&) = default;
};

// How the status line is shown: its text height in pixels and how many lines it may take
// (0 hides it). Held to the ranges the status page offers.
struct StatusLineStyle {
    static constexpr int kMinFont = 5;
    static constexpr int kMaxFont = 100;
    static constexpr int kMaxLines = 3;
    int fontSize = 22;
    int lines = 1;
    friend bool operator==(const StatusLineStyle&, const StatusLineStyle&) = default;
};

// The recorder's state, reduced to what its pane shows.
struct RecorderIndicator {
    enum Row { Record, Playback, IdlePlayback, EndOfFile, Other };
    Row row = Other;
    int fileNumber = 0;
};

class Housekeeping {
  public:
    static constexpr int kPanes = 8;
    static constexpr int kNavigationPane = 0;
    static constexpr int kLinkPane = 1;
    static constexpr int kRecorderPane = 2;
    static constexpr int kAltitudePane = 3;
    static constexpr int kAlertPane = 4;
    static constexpr std::uint32_t kStatusHoldMs = 3000;
    static constexpr int kIndicatorEvery = 8;

    struct Sources {
        std::function<std::uint32_t()> tick;           // program tick, ms
        std::function<void()> drainDisplays;           // the display queue into the caches
        std::function<std::string()> statusLine;       // status digest line
        std::function<void()> sonarTick;               // the sonar controller's Tick
        std::function<bool()> isPlayback;              // storage in playback
        std::function<int()> navStatus;                // 0 none, 1 data, 2 position
        std::function<RecorderIndicator()> recorder;   // storage status
        std::function<std::uint32_t()> sonarLinkWord;  // first word of the command link status
        std::function<std::uint32_t()> alertWord;      // pending alerts
        std::function<std::string()> alertText;        // " ROLL", " ALT" ... for that word
        std::function<StatusLineStyle()> statusStyle;  // FontSize and StatusLines
        std::function<int()> altitudeDisplayNumber;    // -1 status record, 0-9 display, 10+ alerts
        std::function<double()> statusAltitudeMetres;  // status record's altitude
        std::function<double(int)> trackedAltitude;    // a display's tracked altitude, metres
        std::function<int()> sonarChangeCount;         // sonar parameter change count
        std::function<std::array<int, 4>()> displayChannels;  // Channel of displays 0-3
    };

    struct Result {
        bool statusLineChanged = false;
        bool barChanged = false;
        bool sonarSettingsChanged = false;
        bool channelsChanged = false;
    };

    Housekeeping(Sources sources, EventLog* log);

    // One pass of the 250 ms timer.
    Result Update();

    // The message pane's text: the status line, or a held message.
    const std::string& StatusText() const { return statusText_; }
    const StatusLineStyle& LineStyle() const { return style_; }
    // Shows a message in the message pane and holds it there for kStatusHoldMs.
    void ShowMessage(std::string text);

    // Sets a pane's state and text; an empty text keeps the old one. Panes above 7 are ignored.
    void SetPane(int pane, int state, std::optional<std::string> text = std::nullopt);
    const PaneState& Pane(int pane) const { return panes_.at(pane); }
    std::uint32_t BlinkCount() const { return blink_; }
    const std::array<int, 4>& DisplayChannels() const { return channels_; }

  private:
    void UpdateIndicators(Result& result);
    void UpdateNavigation(bool playback, Result& result);
    void UpdateLink(bool playback, Result& result);
    void UpdateRecorder(Result& result);
    void UpdateAltitude(Result& result);
    void UpdateAlerts(Result& result);
    void Log(const char* line);
    std::uint32_t Now() const;

    Sources src_;
    EventLog* log_;
    std::array<PaneState, kPanes> panes_{};
    std::string statusText_;
    StatusLineStyle style_;
    std::uint32_t holdTime_ = 0;
    bool holding_ = false;
    std::uint32_t blink_ = 0;

    // Last values shown, so that a pane is rewritten and logged only on a change.
    std::optional<int> lastNav_;
    std::optional<int> lastLink_;
    std::optional<std::pair<int, int>> lastRecorder_;
    std::optional<std::pair<bool, long>> lastAltitude_;
    std::optional<int> lastSonarChanges_;
    std::array<int, 4> channels_{-1, -1, -1, -1};
};

}  // namespace halvo
