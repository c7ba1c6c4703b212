#include "objectfile/LineReader.h"

#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstdio>
#include <cstring>
#include <string>

#include "objectfile/ObjectFileState.h"

namespace zor {

void DescrambleLine(std::string& line, ObjectFileState& state) {
    if (state.firstLinePending) {
        state.firstLinePending = false;
        if (line.compare(0, 11, "// Version:") == 0) state.fileIsPlain = true;
    }
    if (state.fileIsPlain || line.empty()) return;

    // Key from characters 6..8 (whatever of them the line has).
    char keyText[4] = {};
    if (line.size() > 6) line.copy(keyText, 3, 6);
    const double keyValue = std::atof(keyText);
    // The key is truncated to an int; "inf", "nan" and other values out of
    // int's range take the integer-indefinite value INT_MIN instead of
    // undefined behaviour.
    const long long n = (std::isfinite(keyValue) && keyValue > INT_MIN && keyValue < INT_MAX)
                            ? static_cast<long long>(keyValue)
                            : static_cast<long long>(INT_MIN);
    const long long k = (n - 6) / 3;

    if (line.size() < 11) {
        line.clear();
        return;
    }
    const std::size_t length = line.size();
    for (std::size_t i = 10; i < length; ++i) {
        const long long j = static_cast<long long>(i) - 10;
        const long long s = (j + k) * j + k;
        const int b = static_cast<unsigned char>(line[i]);
        long long v;
        if (b >= 32 && b <= 126) {
            v = b - 32 - s;
            // Only a negative value is brought into range; a positive one is
            // left as it is (possible only with a negative key): intended.
            if (v < 0) v += ((-v + 94) / 95) * 95;
            line[static_cast<std::size_t>(j)] = static_cast<char>(v + 32);
        } else if (b >= 128) {
            v = b - 128 - s;
            if (v < 0) v += ((-v + 127) / 128) * 128;
            line[static_cast<std::size_t>(j)] = static_cast<char>((v + 128) % 256);
        }
        // Control characters and 127 are skipped: position j keeps what it
        // held. Files written by the application rely on nothing else.
    }
    line.resize(length - 10);
}

bool read_object_line(std::FILE*& stream, CString& line) {
    line.Empty();
    if (stream == nullptr) return false;
    ObjectFileState& state = object_file_state();
    std::string text;
    for (;;) {
        // 511 characters at most: a longer physical line arrives as several
        // lines. Intended; nothing in a valid file is that long.
        if (std::fgets(state.lineBuffer, ObjectFileState::kLineBufferSize, stream) == nullptr) {
            std::fclose(stream);
            stream = nullptr;
            return false;
        }
        text.assign(state.lineBuffer);
        if (!text.empty() && text.back() == '\n') text.pop_back();
        DescrambleLine(text, state);
        line = CString(std::string_view(text));
        line.Trim();
        if (!line.IsEmpty()) return true;
    }
}

}  // namespace zor
