// Feeds arbitrary bytes to the data file reader as if they were a file, through both ways of
// reading, and through the playback steps; checks that every record lies within its block and
// that reading always ends.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "core/SonarMessage.h"
#include "storage/HsfReader.h"
#include "storage/PlaybackPreparer.h"
#include "storage/StorageSettings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace halvo;
    if (size > 4 * 1024 * 1024) return 0;
    const std::span<const std::uint8_t> bytes(data, size);

    StorageSettings settings;
    settings.flags = size & 1;
    settings.markFileStart = 1;
    settings.playbackRangeType = static_cast<int>(size % 4);
    settings.playbackRange0 = -1000;
    settings.playbackRange1 = 1000;
    PlaybackContext context;
    context.gpsFlags = [] { return std::int16_t{1}; };
    PlaybackPreparer preparer;

    HsfReader reader;
    reader.Attach(std::make_unique<MemorySource>(bytes));
    // Every record or skipped header consumes at least 16 bytes, so this bound is never hit by a
    // reader that makes progress.
    for (std::size_t guard = 0; guard <= size / 16 + 2; ++guard) {
        SonarMessage m;
        const ReadStatus s = reader.Next(m);
        if (s == ReadStatus::Record) {
            if (m.Wire().size() > m.BlockSize() || m.Payload().size() + 16 != m.Wire().size()) {
                __builtin_trap();
            }
            preparer.Prepare(m, settings, context);
            continue;
        }
        if (s != ReadStatus::Deferred) break;
        if (guard == size / 16 + 2) __builtin_trap();
    }

    HsfReader views;
    views.Attach(std::make_unique<MemorySource>(bytes));
    std::size_t total = 0;
    for (std::size_t guard = 0; guard <= size / 16 + 2; ++guard) {
        std::span<const std::uint8_t> record;
        const ReadStatus s = views.NextView(record);
        if (s == ReadStatus::Record) {
            MessageHeader h;
            if (!MessageHeader::Read(record, h) || record.size() != 16u + std::uint32_t(h.size)) {
                __builtin_trap();
            }
            total += record.size();
            continue;
        }
        if (s != ReadStatus::Deferred) break;
    }
    if (views.Position() > static_cast<std::int64_t>(size)) __builtin_trap();
    (void)total;
    return 0;
}
