// zorbench_raw PATH: the raw read limit. Reads the file in 1 MiB chunks and
// counts its line ends: no reader that looks at every byte can be faster.
#include <cstdio>
#include <cstring>
#include <vector>

#include "Measure.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: zorbench_raw PATH\n");
        return 2;
    }
    const char* path = argv[1];
    std::vector<char> buffer(1 << 20);
    return zorbench::measure("raw", [&] {
        std::FILE* f = std::fopen(path, "rb");
        if (f == nullptr) return -1LL;
        long long lines = 0;
        std::size_t n;
        while ((n = std::fread(buffer.data(), 1, buffer.size(), f)) > 0) {
            const char* p = buffer.data();
            const char* end = p + n;
            while ((p = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)))) != nullptr) {
                ++lines;
                ++p;
            }
        }
        std::fclose(f);
        return lines;
    });
}
