#include "display/PlotStrip.h"

#include <algorithm>
#include <cstdio>

#include "display/SonarDataCacheElement.h"

namespace halvo {

namespace {

// Half a pane is five degrees at a gain of 1.
int AngleHeight(int raw, float gain, int half) {
    const double y = static_cast<double>(raw) * gain * half * 180.0 / 32768.0 / 5.0;
    const int held = static_cast<int>(std::clamp(
        y, static_cast<double>(-half + 1), static_cast<double>(std::max(half - 1, -half + 1))));
    return half - held;
}

}  // namespace

std::vector<StripMark> PlotStrip::Column(int column, int width, int height, int zoom, float gain,
                                         const Colours& colours, const Lookup& lines) {
    std::vector<StripMark> out;
    const int age = AgeOf(column, zoom);
    const SonarDataCacheElement* line = lines ? lines(age) : nullptr;
    if (line == nullptr || height <= 0) return out;
    const SonarDataCacheElement* next = lines(age + 1);
    const int half = height / 2;
    const int x = width - column - 1;
    const auto angle = [&](TraceField field, std::int32_t colour) {
        if (colour == 0) return;
        const int y = AngleHeight(line->Header().GetInt(field), gain, half);
        if (next != nullptr) {
            const int y0 = AngleHeight(next->Header().GetInt(field), gain, half);
            out.push_back({x - 1, y0, x, y, colour});
        } else {
            out.push_back({x, y, x, y, colour});
        }
    };
    angle(TraceField::Pitch, colours.pitch);
    angle(TraceField::Roll, colours.roll);
    if (colours.rc != 0) {
        const double y = -static_cast<double>(line->reflection) / 20.0 * 2.0 * height;
        const int held = static_cast<int>(std::clamp(y, 0.0, static_cast<double>(height - 1)));
        out.push_back({x, held, x, held, colours.rc});
    }
    return out;
}

std::string PlotStrip::CursorText(const SonarDataCacheElement* line) {
    if (line == nullptr) return "No Data At Cursor";
    const ConstTraceHeaderView h = line->Header();
    char buf[120];
    std::snprintf(buf, sizeof buf, "Ping %d Pitch %7.2f Roll %7.2f RC %5.2f",
                  h.GetInt(TraceField::PingNumber), Degrees(h.GetInt(TraceField::Pitch)),
                  Degrees(h.GetInt(TraceField::Roll)), static_cast<double>(line->reflection));
    return buf;
}

}  // namespace halvo
