#include "app/Housekeeping.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "app/EventLog.h"

namespace halvo {

Housekeeping::Housekeeping(Sources sources, EventLog* log) : src_(std::move(sources)), log_(log) {}

std::uint32_t Housekeeping::Now() const {
    return src_.tick ? src_.tick() : 0;
}

void Housekeeping::Log(const char* line) {
    if (log_ != nullptr) log_->Add(line);
}

void Housekeeping::ShowMessage(std::string text) {
    statusText_ = std::move(text);
    holdTime_ = Now();
    holding_ = true;
}

void Housekeeping::SetPane(int pane, int state, std::optional<std::string> text) {
    if (pane < 0 || pane >= kPanes) return;
    PaneState& p = panes_[pane];
    p.state = state;
    p.red = state == 1 || state == 2;
    p.whiteText = state == 2;
    if (text) p.text = std::move(*text);
}

Housekeeping::Result Housekeeping::Update() {
    Result result;
    if (src_.drainDisplays) src_.drainDisplays();

    // 1. The status line, unless a message is being held. A tick that went back ends the hold.
    const std::uint32_t now = Now();
    const bool held = holding_ && now >= holdTime_ && now - holdTime_ < kStatusHoldMs;
    if (!held) {
        holding_ = false;
        if (src_.statusLine) {
            std::string line = src_.statusLine();
            if (line != statusText_) {
                statusText_ = std::move(line);
                result.statusLineChanged = true;
            }
        }
    }

    if (src_.statusStyle) {
        StatusLineStyle style = src_.statusStyle();
        style.fontSize =
            std::clamp(style.fontSize, StatusLineStyle::kMinFont, StatusLineStyle::kMaxFont);
        style.lines = std::clamp(style.lines, 0, StatusLineStyle::kMaxLines);
        if (style != style_) {
            style_ = style;
            result.barChanged = true;
        }
    }

    // The alert words reach their own pane at every pass, so a new alert shows as soon as the
    // status line does; a word of 0 clears the pane.
    UpdateAlerts(result);

    // 2. The sonar controller.
    if (src_.sonarTick) src_.sonarTick();

    // 3. Indicators every eighth pass, then the blink of red panes.
    ++blink_;
    if (blink_ % kIndicatorEvery == 0) UpdateIndicators(result);
    for (PaneState& p : panes_) {
        if (p.state != 1 && p.state != 2) continue;
        const bool white = p.state == 2 || (blink_ & 2u) != 0;
        if (!p.red || p.whiteText != white) result.barChanged = true;
        p.red = true;
        p.whiteText = white;
    }

    // 4. Sonar settings moved: the window refreshes its copies.
    if (src_.sonarChangeCount) {
        const int changes = src_.sonarChangeCount();
        if (!lastSonarChanges_ || *lastSonarChanges_ != changes) {
            lastSonarChanges_ = changes;
            result.sonarSettingsChanged = true;
        }
    }

    // 5. Channel labels of the first four displays.
    if (src_.displayChannels) {
        const std::array<int, 4> channels = src_.displayChannels();
        if (channels != channels_) {
            channels_ = channels;
            result.channelsChanged = true;
        }
    }
    return result;
}

void Housekeeping::UpdateAlerts(Result& result) {
    if (!src_.alertWord) return;
    const std::uint32_t word = src_.alertWord();
    std::string text = word != 0 && src_.alertText ? src_.alertText() : std::string();
    PaneState& pane = panes_[kAlertPane];
    if (pane.text == text && (pane.state == 2) == (word != 0)) return;
    // Red with white text, steady: the altitude pane already blinks for the same word.
    SetPane(kAlertPane, word != 0 ? 2 : 0, std::move(text));
    result.barChanged = true;
}

void Housekeeping::UpdateIndicators(Result& result) {
    const bool playback = src_.isPlayback && src_.isPlayback();
    UpdateAltitude(result);
    UpdateNavigation(playback, result);
    UpdateRecorder(result);
    UpdateLink(playback, result);
}

void Housekeeping::UpdateAltitude(Result& result) {
    if (!src_.altitudeDisplayNumber) return;
    const int number = src_.altitudeDisplayNumber();
    const bool alerting = src_.alertWord && src_.alertWord() != 0;
    double altitude = 0;
    std::string text;
    if (number >= 10) {
        text = "Alerts";
    } else {
        if (number == -1) {
            altitude = src_.statusAltitudeMetres ? src_.statusAltitudeMetres() : 0.0;
        } else if (number >= 0) {
            altitude = src_.trackedAltitude ? std::fabs(src_.trackedAltitude(number)) : 0.0;
        }
        char buf[48];
        std::snprintf(buf, sizeof buf, altitude >= 10.0 ? "Alt %3.0f" : "Alt %3.1f", altitude);
        text = buf;
    }
    const long tenths = number >= 10 ? -1 : std::lround(altitude * 10.0);
    const std::pair<bool, long> shown{alerting, tenths};
    if (lastAltitude_ && *lastAltitude_ == shown && panes_[kAltitudePane].text == text) return;
    lastAltitude_ = shown;
    SetPane(kAltitudePane, alerting ? 1 : 0, text);
    result.barChanged = true;
}

void Housekeeping::UpdateNavigation(bool playback, Result& result) {
    if (!src_.navStatus && !playback) return;
    const int value = playback ? -2 : src_.navStatus();
    const int row = value == -2 ? -2 : value == 2 ? 2 : value == 1 ? 1 : 0;
    if (lastNav_ && *lastNav_ == row) return;
    lastNav_ = row;
    switch (row) {
        case -2:
            SetPane(kNavigationPane, 0, "NAV:PB");
            Log("NAV : Ignored in Playback");
            break;
        case 2:
            SetPane(kNavigationPane, 0, "GPS:ON");
            Log("NAV : On");
            break;
        case 1:
            SetPane(kNavigationPane, 1, "GPS:NoLL");
            Log("NAV : No lat long");
            break;
        default:
            SetPane(kNavigationPane, 1, "GPS:OFF");
            Log("NAV : No data (Off)");
            break;
    }
    result.barChanged = true;
}

void Housekeeping::UpdateRecorder(Result& result) {
    if (!src_.recorder) return;
    const RecorderIndicator r = src_.recorder();
    const std::pair<int, int> shown{static_cast<int>(r.row), r.fileNumber};
    if (lastRecorder_ && *lastRecorder_ == shown) return;
    lastRecorder_ = shown;
    switch (r.row) {
        case RecorderIndicator::Record: {
            char buf[32];
            std::snprintf(buf, sizeof buf, "R:%03d", r.fileNumber);
            SetPane(kRecorderPane, 0, buf);
            break;
        }
        case RecorderIndicator::Playback:
            SetPane(kRecorderPane, 2, "Playback");
            break;
        case RecorderIndicator::IdlePlayback:
            SetPane(kRecorderPane, 0, "File:IDLE");
            break;
        case RecorderIndicator::EndOfFile:
            SetPane(kRecorderPane, 0, "EOF");
            break;
        default:
            SetPane(kRecorderPane, 1, "Record:OFF");
            break;
    }
    result.barChanged = true;
}

void Housekeeping::UpdateLink(bool playback, Result& result) {
    if (!src_.sonarLinkWord && !playback) return;
    int row;
    if (playback) {
        row = -2;
    } else {
        row = (src_.sonarLinkWord() & 1u) != 0 ? 1 : 0;
    }
    if (lastLink_ && *lastLink_ == row) return;
    lastLink_ = row;
    if (row == -2) {
        SetPane(kLinkPane, 0, "NET:PB");
        Log("SONAR : Ignored in Playback");
    } else if (row == 1) {
        SetPane(kLinkPane, 0, "NET:ON");
        Log("SONAR : Connected");
    } else {
        SetPane(kLinkPane, 1, "NET:OFF");
        Log("SONAR : Not Connected");
    }
    result.barChanged = true;
}

}  // namespace halvo
