#include "status/TerminalBeeper.h"

#include <unistd.h>

#include <chrono>

namespace halvo {

void TerminalBeeper::Beep(int toneHz, int durationMs) {
    if (::isatty(STDERR_FILENO) == 1) {
        const char bell = '\a';
        // A bell that cannot be written is no reason to stop warning by the log.
        [[maybe_unused]] const ssize_t n = ::write(STDERR_FILENO, &bell, 1);
    }
    if (durationMs <= 0) return;
    std::unique_lock lock(mutex_);
    wake_.wait_for(lock, std::chrono::milliseconds(durationMs), [this] { return interrupted_; });
}

void TerminalBeeper::Interrupt() {
    {
        std::lock_guard lock(mutex_);
        interrupted_ = true;
    }
    wake_.notify_all();
}

}  // namespace halvo
