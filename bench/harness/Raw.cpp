// zorbench_raw PATH: the raw read limit (see RawRead.h).
#include <cstdio>

#include "Measure.h"
#include "RawRead.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: zorbench_raw PATH\n");
        return 2;
    }
    const char* path = argv[1];
    return zorbench::measure("raw", [&] { return zorbench::count_lines_in_chunks(path); });
}
