#include "platform/ProcessPriority.h"

#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace halvo {

namespace {

// True when the thread refused; a thread that has ended since the listing did not refuse.
bool ShiftRefused(id_t tid, int shift) {
    errno = 0;
    const int now = ::getpriority(PRIO_PROCESS, tid);
    if (now == -1 && errno != 0) return false;
    const int wanted = std::clamp(now + shift, -20, 19);
    return ::setpriority(PRIO_PROCESS, tid, wanted) != 0 && errno != ESRCH;
}

}  // namespace

int ProcessPriority::Shift(int shift) {
    if (shift == 0) return 0;
    int refused = 0;
    int seen = 0;
    std::error_code ec;
    // A process has a bounded number of threads; the bound guards against a runaway listing.
    constexpr int kMaxThreads = 4096;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task", ec)) {
        if (++seen > kMaxThreads) break;
        const int tid = std::atoi(entry.path().filename().c_str());
        if (tid <= 0) continue;
        if (ShiftRefused(static_cast<id_t>(tid), shift)) ++refused;
    }
    if (ec || seen == 0) {
        // No task list (an unusual mount): at least the calling thread.
        if (ShiftRefused(0, shift)) ++refused;
    }
    return refused;
}

}  // namespace halvo
