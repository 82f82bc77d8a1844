#pragma once
// Fixed numbers of the data file: the record bound, the legacy layout and its limits.

#include <cstddef>
#include <cstdint>

namespace halvo {

// Largest payload a record may carry in a file. Tighter than the network's bound on purpose:
// a stored message above it stops playback at that record.
constexpr std::uint32_t kMaxFilePayload = 1'000'000;

// The older layout: a run of 240-byte trace headers, each followed by its samples.
constexpr std::size_t kLegacyHeaderSize = 240;
// A legacy record is built in a buffer of sample bytes plus this; at kMaxFilePayload or more the
// read is given up and the file stays open.
constexpr std::size_t kLegacyBufferExtra = 256;
// Sample intervals below this mark an old-style complex header (interval in microseconds).
constexpr std::int32_t kLegacyOldStyleInterval = 1000;

}  // namespace halvo
