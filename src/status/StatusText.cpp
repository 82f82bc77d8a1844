#include "status/StatusText.h"

#include <cstdarg>
#include <cstdio>

#include "core/ByteOrder.h"
#include "status/CustomFormat.h"

namespace halvo {

namespace {

constexpr const char* kBar = " | ";
constexpr const char* kPingNames[3] = {"SB", "SL", "SH"};
constexpr const char* kSignalNames[3] = {"SBS ", "SLS ", "SHS "};

std::string Printf(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Printf(const char* format, ...) {
    char buf[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buf, sizeof buf, format, args);
    va_end(args);
    return buf;
}

bool Has(std::int32_t flags, std::uint32_t bit) {
    return (static_cast<std::uint32_t>(flags) & bit) != 0;
}

std::string Text(const StatusSources::HeaderText& fn, const ConstTraceHeaderView& th) {
    return fn ? fn(th) : std::string();
}

SonarChannels SonarOf(const StatusSources& sources, int sonar) {
    return sources.sonar ? sources.sonar(sonar) : SonarChannels{};
}

DisplayState DisplayOf(const StatusSources& sources, int display) {
    return sources.display ? sources.display(display) : DisplayState{};
}

bool Kept(int channel) {
    return channel >= 0 && channel < StatusRecord::kChannels;
}

std::string SignalText(std::uint32_t adcMax) {
    const int v = SignalPermille(adcMax);
    return v >= 1000 ? std::string("MAX ") : Printf("%03d ", v);
}

// The 2060 block as kept in the record: values at block offsets 0, 4, 8, 16, 20; flags at 12.
std::string CtdText(const StatusRecord& r) {
    const auto flags = static_cast<std::uint32_t>(r.ctd[3]);
    std::string out = (r.ctdCount % 50) < 25 ? "x" : "+";
    if (flags & 0x01) out += Printf("PSI %4.1f ", r.ctd[0] / 1000.0);
    if (flags & 0x02) out += Printf("degC %4.1f ", r.ctd[1] / 1000.0);
    if (flags & 0x10) out += Printf("SVS %4d ", r.ctd[5] / 1000);
    if (flags & 0x04) out += Printf("SAL %4.1f ", r.ctd[2] / 1000.0);
    if (flags & 0x08) out += Printf("CON %4.1f ", r.ctd[4] / 1000.0);
    return out + kBar;
}

double TotalDepthLive(const StatusRecord& r, const GeneralValues& g, const StatusSources& s) {
    double metres = r.depth / 1000.0;
    const DisplayState d0 = DisplayOf(s, 0);
    const float rate = Kept(d0.channel) ? r.sampleRate[d0.channel] : 0.0f;
    if (rate != 0.0f)
        metres += d0.bottomSample / static_cast<double>(rate) * g.WaterSoundSpeed * 0.5;
    return metres;
}

}  // namespace

int SignalPermille(std::uint32_t adcMax) {
    return static_cast<int>(static_cast<std::uint64_t>(adcMax) * 1000u / 32767u);
}

std::string BuildStatusLine(const StatusRecord& r, const StatusSettings& settings,
                            const GeneralValues& general, const StatusSources& sources) {
    const std::int32_t f = settings.flags;
    std::string out;
    // The navigation texts carry their own brackets and go on without a bar.
    if (Has(f, ItemLatLong)) out += r.position;
    if (Has(f, ItemCourseSpeed)) out += r.speed;
    if (Has(f, ItemTime)) out += r.time;
    for (int s = 0; s < 3; ++s) {
        if (!Has(f, ItemSBPing << s)) continue;
        const int ch = SonarOf(sources, s).firstChannel;
        if (Kept(ch)) out += Printf("%s %u%s", kPingNames[s], r.ping[ch], kBar);
    }
    for (int s = 0; s < 3; ++s) {
        if (!Has(f, ItemSBSignal << s)) continue;
        const SonarChannels sc = SonarOf(sources, s);
        if (!Kept(sc.firstChannel)) continue;
        out += kSignalNames[s];
        for (int c = 0; c < sc.channels && Kept(sc.firstChannel + c); ++c) {
            out += SignalText(r.signal[sc.firstChannel + c]);
        }
        out += kBar;
    }
    if (Has(f, ItemSBGain)) {
        const int ch = SonarOf(sources, 0).firstChannel;
        if (Kept(ch)) out += Printf("SBG %u%s", r.gain[ch], kBar);
    }
    if (Has(f, ItemPitchRoll)) out += r.attitude;
    if (Has(f, ItemOverflowCheck)) out += Printf("OF:%d%s", r.overflow, kBar);
    if (Has(f, ItemMark)) out += Printf("M %d%s", r.markNumber, kBar);
    if (Has(f, ItemDepthEstimate)) out += Printf("%4.1f M%s", r.depth / 1000.0, kBar);
    if (Has(f, ItemTotalDepth)) {
        out += Printf("%4.1f MT%s", TotalDepthLive(r, general, sources), kBar);
    }
    if (Has(f, ItemPressure)) out += Printf("%4.1f PSI%s", r.pressure / 1000.0, kBar);
    if (Has(f, ItemCTD)) out += CtdText(r);
    if (Has(f, ItemSoundVelocity)) out += Printf("%d M/S%s", r.soundSpeed, kBar);
    if (Has(f, ItemWaterTemp)) out += Printf("%4.1f C%s", r.temperature / 10.0, kBar);
    if (Has(f, ItemReflectionCoef)) {
        out += Printf("RC %5.2f%s", DisplayOf(sources, 0).reflection, kBar);
    }
    if (Has(f, ItemBottleTemp)) out += Printf("%4.1f BC%s", r.bottleTemperature / 10.0, kBar);
    for (int n = 0; n < StatusSettings::kCustomCount; ++n) {
        const CustomField& c = settings.custom[n];
        if (c.enable != 0) out += FormatCustomField(c.label, r.custom[n]) + kBar;
    }
    if (Has(f, ItemSystemStatus) && sources.systemStatus) {
        if (const auto w = sources.systemStatus()) {
            out += Printf("OF=%d 48V=%3.1f AMB=%3.1fC BOT=%3.1fC%s", (*w)[0], (*w)[13] / 1000.0,
                          (*w)[12] / 1000.0, (*w)[11] / 1000.0, kBar);
        }
    }
    return out.empty() ? std::string(kNoSelectedStatus) : out;
}

std::string BuildPingText(const PingView* ping, std::size_t limit, const StatusSettings& settings,
                          const GeneralValues& general, const StatusSources& sources) {
    if (limit == 0) return {};
    if (ping == nullptr) return std::string(kNoPingData).substr(0, limit - 1);
    const ConstTraceHeaderView th(ping->header);
    const std::int32_t f = settings.flags;
    std::string out;
    bool full = false;
    auto add = [&](const std::string& item) {
        if (full) return;
        if (out.size() + item.size() + 1 > limit) {
            full = true;
            return;
        }
        out += item;
    };
    auto bar = [](std::string s) { return s + kBar; };

    const double depthM = th.GetInt(TraceField::DepthMM) / 1000.0;
    const auto adcMax = static_cast<std::uint16_t>(th.GetInt(TraceField::ADCMax));
    if (Has(f, ItemLatLong)) add(Text(sources.positionText, th));
    if (Has(f, ItemCourseSpeed)) add(Text(sources.speedText, th));
    if (Has(f, ItemTime)) add(Text(sources.timeText, th));
    if (Has(f, ItemSBPing | ItemSSLPing | ItemSSHPing)) {
        add(bar(Printf("Ping %d", th.GetInt(TraceField::PingNumber))));
    }
    if (Has(f, ItemSBSignal | ItemSSLSignal | ItemSSHSignal)) {
        const int v = SignalPermille(adcMax);
        add(bar(v >= 1000 ? std::string("Signal MAX") : Printf("Signal %03d", v)));
    }
    if (Has(f, ItemPulseID)) add(bar(Printf("ID %d", th.GetInt(TraceField::PulseID))));
    if (Has(f, ItemSBGain) && th.GetInt(TraceField::ChannelNumber) == 0) {
        add(bar(Printf("Gain %u", static_cast<std::uint16_t>(th.GetInt(TraceField::ADCGain)))));
    }
    if (Has(f, ItemPitchRoll)) add(Text(sources.attitudeText, th));
    if (Has(f, ItemMark)) add(bar(Printf("Mark %d", th.GetInt(TraceField::MarkNumber))));
    if (Has(f, ItemDepthEstimate)) add(bar(Printf("%4.1f M", depthM)));
    if (Has(f, ItemTotalDepth)) {
        const auto interval = static_cast<std::uint32_t>(th.GetInt(TraceField::SampleIntervalNS));
        const double metres =
            ping->bottomSample * (interval * 1e-9) * general.WaterSoundSpeed * 0.5 + depthM;
        add(bar(Printf("%4.1f MT", metres)));
    }
    if (Has(f, ItemPressure)) {
        add(bar(Printf("%4.1f PSI", th.GetInt(TraceField::PressurePSI) / 1000.0)));
    }
    if (Has(f, ItemSoundVelocity)) {
        add(bar(Printf("%d M/S", static_cast<int>(th.GetFloat(TraceField::SoundSpeed) + 0.5f))));
    }
    if (Has(f, ItemWaterTemp)) {
        add(bar(Printf("%4.1f C", th.GetInt(TraceField::Temperature) / 10.0)));
    }
    if (Has(f, ItemReflectionCoef)) add(bar(Printf("RC %5.2f", ping->reflection)));
    const int channel = th.GetInt(TraceField::ChannelNumber);
    for (int n = 0; n < StatusSettings::kCustomCount; ++n) {
        const CustomField& c = settings.custom[n];
        if (c.enable == 0 || (c.channel != -1 && c.channel != channel)) continue;
        if (const auto v = ReadCustomField(ping->header, c.field)) {
            add(bar(FormatCustomField(c.label, *v)));
        }
    }
    return out;
}

}  // namespace halvo
