// halvo-sim: the sonar simulator as a program. Parses options, starts the server and waits for
// SIGINT, SIGTERM or the end of --duration.

#include <signal.h>

#include <chrono>
#include <cstdio>
#include <thread>

#include "halvo-sim/SimServer.h"

int main(int argc, char** argv) {
    std::string message;
    int exitCode = 0;
    const auto options = halvo::ParseSimOptions(argc, argv, message, exitCode);
    if (!options) {
        std::fprintf(exitCode == 0 ? stdout : stderr, "%s\n", message.c_str());
        return exitCode;
    }
    // Signals are taken synchronously by this thread; every other thread inherits the mask.
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    signal(SIGPIPE, SIG_IGN);

    halvo::SystemWallClock clock;
    halvo::SimServer server(*options, clock, [](const std::string& line) {
        std::printf("%s\n", line.c_str());
        std::fflush(stdout);
    });
    std::string error;
    if (!server.Start(error)) {
        std::fprintf(stderr, "halvo-sim: %s\n", error.c_str());
        return 1;
    }
    const auto start = std::chrono::steady_clock::now();
    for (;;) {
        timespec wait{0, 200 * 1000 * 1000};
        const int sig = sigtimedwait(&set, nullptr, &wait);
        if (sig == SIGINT || sig == SIGTERM) break;
        if (options->duration > 0 &&
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() >=
                options->duration)
            break;
    }
    server.Stop();
    const halvo::SimCounters c = server.Counters();
    if (!options->quiet) {
        std::printf(
            "halvo-sim: stopped; received %llu, replies %llu, data messages %llu (%llu bytes)\n",
            static_cast<unsigned long long>(c.received),
            static_cast<unsigned long long>(c.repliesSent),
            static_cast<unsigned long long>(c.dataMessagesSent),
            static_cast<unsigned long long>(c.dataBytesSent));
    }
    return 0;
}
