// One timed run in a process of its own, reported as one line that bench/run
// reads:
//   zorbench tool=NAME wall_ms=W cpu_ms=C peak_kb=K check=N
// cpu_ms is user + system time of the process during the run; peak_kb the
// process's peak resident memory (what the reader needed, plus the program):
// VmHWM, since ru_maxrss after exec starts from the parent's size at fork.
// Header only, so that every peer harness measures the same way.
#pragma once

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace zorbench {

// User + system time of the process (glibc's clock() counts microseconds).
inline double cpu_ms() { return 1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

inline long peak_kb() {
    long peak = -1;
    if (std::FILE* status = std::fopen("/proc/self/status", "r")) {
        char line[256];
        while (std::fgets(line, sizeof line, status) != nullptr)
            if (std::strncmp(line, "VmHWM:", 6) == 0) peak = std::strtol(line + 6, nullptr, 10);
        std::fclose(status);
    }
    if (peak < 0) {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        peak = usage.ru_maxrss;
    }
    return peak;
}

// Runs read() once and prints the line; read returns a count the driver can
// check (vertices, contours, tokens...), negative on failure.
template <typename Read>
int measure(const char* tool, Read read) {
    const double c0 = cpu_ms();
    const auto w0 = std::chrono::steady_clock::now();
    const long long check = read();
    const auto w1 = std::chrono::steady_clock::now();
    const double c1 = cpu_ms();
    const long peak = peak_kb();
    // A failed read is reported too (check=-1, exit status 1): for hostile
    // inputs failing is the expected result, and its time counts.
    std::printf("zorbench tool=%s wall_ms=%.3f cpu_ms=%.3f peak_kb=%ld check=%lld\n", tool,
                std::chrono::duration<double, std::milli>(w1 - w0).count(), c1 - c0, peak, check < 0 ? -1 : check);
    if (check < 0) {
        std::fprintf(stderr, "%s: the read failed\n", tool);
        return 1;
    }
    return 0;
}

}  // namespace zorbench
