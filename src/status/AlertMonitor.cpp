#include "status/AlertMonitor.h"

#include <cmath>

namespace halvo {

namespace {

// Attitude fields hold 180 degrees in 32768 steps.
float Degrees(const ConstTraceHeaderView& th, TraceField f) {
    return static_cast<float>(static_cast<std::int16_t>(th.GetInt(f))) * 180.0f * (1.0f / 32768.0f);
}

bool OutsideLimits(float v, float min, float max) {
    // Limits that do not open a band switch the test off (the defaults are both 0).
    return max > min && (v < min || v > max);
}

std::int16_t Annotation(const ConstTraceHeaderView& th, int channel) {
    const auto f = static_cast<TraceField>(static_cast<int>(TraceField::AnnotationWord0) + channel);
    return static_cast<std::int16_t>(th.GetInt(f));
}

}  // namespace

std::uint32_t AlertMonitor::Evaluate(const AlertSettings& s, const ConstTraceHeaderView& th,
                                     const GeneralValues& general, std::int32_t overflow,
                                     const StatusSources& sources) {
    const auto enabled = static_cast<std::uint32_t>(s.alertFlags);
    std::uint32_t result = 0;
    auto raise = [&](std::uint32_t bit, bool condition) {
        if ((enabled & bit) != 0 && condition) result |= bit;
    };

    raise(AlertRoll, OutsideLimits(Degrees(th, TraceField::Roll), s.rollMin, s.rollMax));
    raise(AlertPitch, OutsideLimits(Degrees(th, TraceField::Pitch), s.pitchMin, s.pitchMax));

    if ((enabled & AlertAltitude) != 0 && s.altitudeDisplay >= -1 && s.altitudeDisplay <= 9) {
        double altitude = 0;
        if (s.altitudeDisplay == -1) {
            altitude = th.GetInt(TraceField::Altitude) / 1000.0;
        } else if (sources.display) {
            altitude = std::fabs(sources.display(s.altitudeDisplay).trackedAltitude);
        }
        raise(AlertAltitude, s.altitudeWarning > altitude);
    }

    // The bottle is watched, not the water.
    const int bottle = general.BottleTemperatureChannel;
    if (bottle >= 0 && bottle <= 7) {
        const float t = Annotation(th, bottle) * general.BottleTemperatureGain +
                        general.BottleTemperatureOffset;
        raise(AlertHot, t > s.temperatureMax);
    }

    if (s.miscChan >= 0 && s.miscChan <= 7) {
        const std::int32_t v = Annotation(th, s.miscChan);
        // Limits given the wrong way round make a band alarm: inside the band is the fault.
        const bool leak = s.miscMin < s.miscMax ? (v < s.miscMin || v > s.miscMax)
                                                : (v >= s.miscMin && v <= s.miscMax);
        raise(AlertLeak, leak);
    }

    // A file played back says nothing about today's navigation or today's disk.
    const bool playback = sources.isPlaybackMode && sources.isPlaybackMode();
    if (!playback) {
        const int nav = sources.navStatus ? sources.navStatus() : 0;
        raise(AlertNav, nav != 2);
        if (s.minDiskFree >= 0 && (enabled & AlertDisk) != 0) {
            const std::int32_t freeMB = sources.storageStatus ? sources.storageStatus().freeMB : -1;
            raise(AlertDisk, freeMB >= 0 && freeMB <= s.minDiskFree);
        }
    }

    raise(AlertAdcClip, static_cast<std::uint16_t>(th.GetInt(TraceField::ADCMax)) > 32000);

    // Raised for the one evaluation in which the counter moved.
    if (overflow != lastOverflow_) {
        lastOverflow_ = overflow;
        raise(AlertOverflow, true);
    }

    const std::uint32_t word = result | silent_;
    word_.store(word, std::memory_order_release);
    return word;
}

bool AlertMonitor::WindowDue(std::uint32_t tick) const {
    return static_cast<std::uint32_t>(tick - lastWindow_) > kWindowMs;
}

void AlertMonitor::CloseWindow(std::uint32_t tick, const AlertSettings& settings,
                               bool settingsChanged) {
    if (settingsChanged) {
        Clear();
        seen_ = kSensorAlertBits;
    }
    lastWindow_ = tick;
    silent_ = static_cast<std::uint32_t>(settings.alertFlags) & kSensorAlertBits & ~seen_;
    seen_ = 0;
}

std::string AlertMonitor::AlertText(std::uint32_t word) {
    if (word == 0) return " No Alerts";
    std::string text = "ALERTS: ";
    for (const AlertBitInfo& info : AlertBitTable()) {
        if ((word & info.bit) != 0) text += info.word;
    }
    return text;
}

}  // namespace halvo
