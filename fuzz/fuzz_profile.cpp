// Bytes as a settings file: read some keys, write one, read again. Whatever the file holds, the
// written key must read back and every key that was readable before must read the same after.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "app/IniFile.h"
#include "app/ProfileDocument.h"
#include "app/SystemCoordinator.h"

namespace {

using halvo::IniFile;
using halvo::ProfileDocument;

constexpr std::string_view kValue = "fuzz-value-17";

void Check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "fuzz_profile: %s\n", what);
        std::abort();
    }
}

// The (section, key) pairs the document can answer for, by first match, for the first 64 key
// lines: every lookup walks the document, so all of them would make an input of many short lines
// cost its square, and the first lines already reach every rule of the lookup.
std::map<std::pair<std::string, std::string>, std::string> Readable(const ProfileDocument& doc,
                                                                    std::string_view bytes) {
    std::map<std::pair<std::string, std::string>, std::string> out;
    std::string section;
    std::size_t pos = 0;
    int keys = 0;
    while (pos < bytes.size() && keys < 64) {
        std::size_t nl = bytes.find('\n', pos);
        if (nl == std::string_view::npos) nl = bytes.size();
        std::string_view line = bytes.substr(pos, nl - pos);
        pos = nl + 1;
        const std::size_t lead = line.find_first_not_of(" \t\r\v\f");
        if (lead == std::string_view::npos) continue;
        line.remove_prefix(lead);
        if (line.front() == '[') {
            const std::size_t close = line.find(']');
            if (close != std::string_view::npos) section = std::string(line.substr(1, close - 1));
            continue;
        }
        const std::size_t eq = line.find('=');
        if (eq == std::string_view::npos) continue;
        ++keys;
        const std::string key(line.substr(0, eq));
        if (auto v = doc.Find(section, key)) out[{section, key}] = *v;
    }
    return out;
}

// Names as lookup compares them: blanks around ignored, ASCII case folded.
std::string Folded(std::string_view s) {
    const std::size_t a = s.find_first_not_of(" \t\r\v\f");
    if (a == std::string_view::npos) return {};
    s = s.substr(a, s.find_last_not_of(" \t\r\v\f") - a + 1);
    std::string out(s);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

// One file for the whole run, on a memory file system when there is one (the disk's journal
// otherwise costs more than the parsing), removed when the run ends.
char gTempName[128];

void RemoveTemp() {
    ::unlink(gTempName);
}

std::string TempName() {
    if (gTempName[0] == '\0') {
        const char* dir = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        std::snprintf(gTempName, sizeof gTempName, "%s/halvo-fuzz-profile-%d.ini", dir,
                      static_cast<int>(::getpid()));
        std::atexit(RemoveTemp);
    }
    return gTempName;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 64 * 1024) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);

    // In memory: parse, write a key, serialise, parse again.
    ProfileDocument doc = ProfileDocument::Parse(bytes);
    Check(doc.Serialise() == bytes, "parse and serialise must give the bytes back");
    const auto before = Readable(doc, bytes);
    const auto sections = doc.SectionNames();
    const std::string section =
        sections.empty() ? std::string("Fuzz") : sections[size % sections.size()];
    std::string key = "FuzzKey";
    for (const auto& [sk, value] : before) {
        if (sk.first == section && size % 2 == 0) key = sk.second;
    }
    const bool written = doc.Set(section, key, kValue);
    const std::string after = doc.Serialise();
    const ProfileDocument reread = ProfileDocument::Parse(after);
    if (written) {
        const auto v = reread.Find(section, key);
        Check(v && *v == kValue, "the written key must read back");
    } else {
        Check(after == bytes, "a refused write must change nothing");
    }
    for (const auto& [sk, value] : before) {
        const auto v = reread.Find(sk.first, sk.second);
        if (written && Folded(sk.first) == Folded(section) && Folded(sk.second) == Folded(key)) {
            Check(v && *v == kValue, "the written key reached through another spelling");
            continue;
        }
        Check(v && *v == value, "other keys must read as before");
    }

    // Through the file helpers, as the settings owners use them. Files are slow, so only one
    // input in eight takes this path.
    if (size % 8 != 0) return 0;
    const std::string file = TempName();
    {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    halvo::SystemCoordinator coordinator;
    coordinator.SetActiveProfile(file);
    IniFile ini(coordinator);
    ini.Open(section);
    (void)ini.ReadInt("NumSplits0", 4);
    (void)ini.ReadFloat("HeaveScale", 1.0);
    (void)ini.ReadHex("Colour", 0xFF);
    (void)ini.ReadStringOrCreate("Name", "x", false);
    if (ini.WriteInt(key, 1234)) {
        Check(ini.ReadInt(key, -1) == 1234, "an int written through the file must read back");
    }
    return 0;
}
