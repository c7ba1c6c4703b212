// The raw read limit: a file read in 1 MiB chunks, its line ends counted. No
// reader that looks at every byte can be faster. Shared by zorbench_raw and
// the Google Benchmark of the object-file reader.
#pragma once

#include <cstdio>
#include <cstring>
#include <vector>

namespace zorbench {

// The line ends of the file at path; -1 when it cannot be opened.
inline long long count_lines_in_chunks(const char* path) {
    std::FILE* f = std::fopen(path, "rb");
    if (f == nullptr) return -1;
    std::vector<char> buffer(1 << 20);
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
}

}  // namespace zorbench
