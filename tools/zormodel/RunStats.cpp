#include "RunStats.h"

#include <dirent.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <atomic>
#include <fstream>
#include <memory>
#include <thread>
#include "Commands.h"

namespace zormodel {

namespace {

constexpr long long kProgressThreshold = 50LL * 1024 * 1024;

// Read position of the first descriptor of this process open on path, or -1.
long long read_position(const std::string& realPath) {
    DIR* fds = opendir("/proc/self/fd");
    if (fds == nullptr) return -1;
    long long position = -1;
    while (dirent* entry = readdir(fds)) {
        if (entry->d_name[0] == '.') continue;
        char target[PATH_MAX];
        std::string link = std::string("/proc/self/fd/") + entry->d_name;
        ssize_t n = readlink(link.c_str(), target, sizeof target - 1);
        if (n <= 0) continue;
        target[n] = '\0';
        if (realPath != target) continue;
        std::ifstream info(std::string("/proc/self/fdinfo/") + entry->d_name);
        std::string key;
        while (info >> key) {
            if (key == "pos:") {
                info >> position;
                break;
            }
        }
        break;
    }
    closedir(fds);
    return position;
}

class ProgressBar {
public:
    ProgressBar(std::string path, long long size) : m_thread(&ProgressBar::watch, this, std::move(path), size) {}
    // Stops and clears the bar.
    ~ProgressBar() {
        m_stop = true;
        m_thread.join();
        std::fprintf(stderr, "\r%60s\r", "");
        std::fflush(stderr);
    }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

private:
    void watch(std::string path, long long size);

    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

std::unique_ptr<ProgressBar> g_bar;

}  // namespace

void finish_progress() { g_bar.reset(); }

void start_progress(const std::string& path) {
    struct stat info;
    if (!isatty(STDERR_FILENO) || stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode) ||
        info.st_size < kProgressThreshold)
        return;
    char* real = realpath(path.c_str(), nullptr);
    if (real == nullptr) return;
    std::string realPath = real;
    std::free(real);
    g_bar = std::make_unique<ProgressBar>(realPath, static_cast<long long>(info.st_size));
}

namespace {

void ProgressBar::watch(std::string path, long long size) {
    constexpr int kWidth = 40;
    while (!m_stop) {
        long long position = read_position(path);
        if (position >= 0) {
            int filled = static_cast<int>(kWidth * position / size);
            if (filled > kWidth) filled = kWidth;
            std::fprintf(stderr, "\r[%.*s%*s] %3lld%%", filled, "########################################",
                         kWidth - filled, "", 100 * position / size);
            std::fflush(stderr);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
}

}  // namespace

long long peak_memory_bytes() {
    struct rusage usage;
    if (getrusage(RUSAGE_SELF, &usage) != 0) return 0;
    return static_cast<long long>(usage.ru_maxrss) * 1024;  // kilobytes on Linux
}

void print_run_stats(std::chrono::steady_clock::time_point start) {
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::fprintf(stderr, "time %.3f s, peak memory %.1f MB\n", seconds, peak_memory_bytes() / 1e6);
}

}  // namespace zormodel
