#include "extensions/ExtensionList.h"

#include "extensions/HalvoExtension.h"

namespace halvo {

namespace {
// The trace is for reading, not an archive: a program that reloads all day keeps the newest.
constexpr std::size_t kTraceLimit = 1000;
}  // namespace

void ExtensionList::RegisterExtension(HalvoExtension* extension) {
    list_.push_back(extension);
}

template <typename Call>
void ExtensionList::Walk(const std::string& what, Call call) {
    for (HalvoExtension* e : list_) {
        if (e == nullptr) continue;
        if (trace_.size() >= kTraceLimit) trace_.erase(trace_.begin());
        trace_.push_back(what + " " + e->Name());
        call(*e);
    }
}

void ExtensionList::ReadSettings() {
    Walk("read", [](HalvoExtension& e) { e.ReadSettings(); });
}

void ExtensionList::WriteSettings() {
    Walk("write", [](HalvoExtension& e) { e.WriteSettings(); });
}

void ExtensionList::StartPhase(int phase) {
    Walk("phase " + std::to_string(phase), [phase](HalvoExtension& e) { e.StartPhase(phase); });
}

std::vector<std::string> ExtensionList::Names() const {
    std::vector<std::string> out;
    for (const HalvoExtension* e : list_) {
        if (e != nullptr) out.emplace_back(e->Name());
    }
    return out;
}

}  // namespace halvo
