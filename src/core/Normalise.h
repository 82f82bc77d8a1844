#pragma once
// Brings every trace message to the one form consumers read (type 80 with a 240-byte header and
// plain samples): packed samples are unpacked, compact headers widened, and the older type 82 is
// mapped onto type 80. Other messages pass untouched.

#include <cstddef>
#include <cstdint>
#include <functional>

#include "core/SonarMessage.h"

namespace halvo {

// The clock that dates compact traces, which carry no date: seconds since 1970, UTC.
using UtcSecondsFn = std::function<std::int64_t()>;

// No normalised payload may exceed this. A message that would (a corrupt sample count, say) is
// treated like a failed allocation: it goes on as it arrived and no consumer reads it as a trace.
constexpr std::int64_t kMaxNormalisedPayload = 16 * 1024 * 1024;

// Payload size of the message once normalised (the stored size when nothing changes).
std::int64_t ExpandedSize(const SonarMessage& message);
bool NeedsExpansion(const SonarMessage& message);

// Writes the expanded header and payload into `target`, whose block must hold
// 16 + max(ExpandedSize, payload bytes held) bytes and be zeroed. False when the target is too
// small.
bool Expand(const SonarMessage& source, SonarMessage& target, std::int64_t utcSeconds);

// The whole normalisation step. Returns the new block, or an empty handle when the message
// already has its final form (or no new block could be made): the caller then goes on with the
// message it has. `utcNow` is asked only for compact traces.
SonarMessage Normalise(const SonarMessage& message, const UtcSecondsFn& utcNow);

// Calendar fields of a UTC time, with the deliberate fallback to second 86400 of the epoch
// when the time cannot be broken down: a bad clock must not stop the data.
struct UtcCalendar {
    int year = 1970;
    int dayOfYear = 2;  // counts from 1
    int hour = 0;
    int minute = 0;
    int second = 0;
};
UtcCalendar BreakDownUtc(std::int64_t utcSeconds);

}  // namespace halvo
