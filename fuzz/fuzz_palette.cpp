// Bytes as a `.hsp` palette file, read from memory and through a real file. Both ways must give
// the same table and the same verdict, and a second load of the same text must too (a load
// starts from the default ramp, never from what was there).

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

#include "display/Palette.h"

namespace {

// On a memory file system when there is one: the disk's journal costs more than the parsing.
std::string TempName() {
    static const std::string name =
        std::string(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") +
        "/halvo-fuzz-palette-" + std::to_string(::getpid());
    return name;
}

void Check(bool ok) {
    if (!ok) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using halvo::Palette;
    if (size > Palette::kMaxFileBytes) return 0;
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    Palette memory;
    const Palette::Load fromText = memory.LoadText(text);
    Check(fromText == Palette::Load::Complete || fromText == Palette::Load::Stopped);

    Palette again;
    again.LoadText("0 9 9 9\n255 1 2 3\n");
    Check(again.LoadText(text) == fromText && again.Table() == memory.Table());

    // Files are slow; every eighth input takes the file path as well. The name is given without
    // ".hsp" so the second spelling is tried too.
    if (size % 8 != 0) return 0;
    const std::string base = TempName();
    {
        std::ofstream out(base + ".hsp", std::ios::binary | std::ios::trunc);
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
    Palette file;
    const Palette::Load fromFile = file.LoadFile(base);
    ::unlink((base + ".hsp").c_str());
    // A file of exactly the limit loses its unfinished last line, so only shorter ones compare.
    if (size < Palette::kMaxFileBytes) {
        Check(fromFile == fromText);
        Check(file.Table() == memory.Table());
    }
    Check(file.LoadFile(base) == Palette::Load::NotFound);
    return 0;
}
