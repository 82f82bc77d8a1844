#pragma once
// What the stamping step keeps of the navigation state: the chosen position, the chosen time,
// course and speed, the event text, and when it last took something. A plain record copied by
// value; NavigationState guards the one live copy.
//
// The fix feeds it in seven groups, each with its change counter (the record's stamp):
//   A RMC   position if LatLonSource is 0; time and date if TimeSource is 2
//   B GGA   position if LatLonSource is 2; time if TimeSource is 3, date from the program's clock
//   C GLL   position if LatLonSource is 1; time if TimeSource is 1, date from the program's clock
//   D ZDA   time and date if TimeSource is 0
//   E VTG   always: true course to heading, magnetic to course, knots, km/h
//   F EVT   always: the 800-byte text block
//   G PSIMSNS always: one value, kept and not read further
// There is no fallback: a sentence other than the chosen one never moves the position.

#include <array>
#include <cstdint>

#include "core/TimeValue.h"
#include "nav/NavigationFix.h"

namespace halvo {

struct NavigationSnapshot {
    enum Group { GroupA, GroupB, GroupC, GroupD, GroupE, GroupF, GroupG, kGroups };

    // Last change counter taken of each group.
    std::array<std::int32_t, kGroups> counters{};

    float heading = 0;   // VTG true course
    float course = 0;    // VTG magnetic course
    float speed = 0;     // knots
    float speedKmh = 0;  // the further value, not stamped

    std::int32_t hour = 0, minute = 0;
    float second = 0;
    std::int32_t day = 0, month = 0, year = 0;

    std::int32_t latDegrees = 0;
    float latMinutes = 0;
    std::int32_t lonDegrees = 0;
    float lonMinutes = 0;
    char latHemisphere = 0;
    char lonHemisphere = 0;

    std::array<char, EventRecord::kFields * EventRecord::kFieldSize> text{};
    float psimsns = 0;  // group G

    // Ticks (ms) of the last position taken and of the last update of any kind. A time counts
    // only once its flag is set, so a snapshot that never took anything is never fresh.
    std::uint32_t positionTick = 0;
    std::uint32_t updateTick = 0;
    bool hasPosition = false;
    bool hasUpdate = false;

    // Takes over every group whose counter moved, by the chosen sources. `tick` is now in ms;
    // `programNow` dates the times of groups B and C. Every call counts as an update.
    void TakeOver(const NavigationFix& fix, std::int32_t latLonSource, std::int32_t timeSource,
                  std::uint32_t tick, TimeValue programNow);

    // True when `then` was set and lies at most `limitMs` - 1 ms before `now`. A tick that ran
    // backward counts as expired.
    static bool Within(bool set, std::uint32_t then, std::uint32_t now, std::uint32_t limitMs);
};

}  // namespace halvo
