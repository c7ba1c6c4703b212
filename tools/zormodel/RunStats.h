// --stats and the progress bar of zormodel: wall time and peak memory of the
// run, and, for input files over 50 MB with standard error on a terminal, a
// progress bar fed by the read position of the open input file (taken from
// /proc, so no reader needs to report progress).
#pragma once

#include <chrono>
#include <string>

namespace zormodel {

// Starts watching path when it is a file over 50 MB and stderr is a
// terminal; otherwise does nothing. finish_progress (Commands.h) stops the
// bar and clears its line.
void start_progress(const std::string& path);

// Peak resident memory of the process in bytes.
long long peak_memory_bytes();

// "time 1.234 s, peak memory 56.7 MB" on standard error.
void print_run_stats(std::chrono::steady_clock::time_point start);

}  // namespace zormodel
