#include "objectfile/LineReader.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
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

std::string_view trim_white_space(std::string_view text) {
    constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos) return std::string_view();
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

bool read_object_line(std::FILE*& stream, std::string_view& line) {
    line = std::string_view();
    if (stream == nullptr) return false;
    ObjectFileState& state = object_file_state();
    std::string& text = state.lineText;
    for (;;) {
        // 511 characters at most: a longer physical line arrives as several
        // lines. Intended; nothing in a valid file is that long.
        // The stream belongs to one reader on one thread: no locking per line.
        if (fgets_unlocked(state.lineBuffer, ObjectFileState::kLineBufferSize, stream) == nullptr) {
            std::fclose(stream);
            stream = nullptr;
            return false;
        }
        // Up to the first NUL, as the buffer is a C string.
        text.assign(state.lineBuffer);
        if (!text.empty() && text.back() == '\n') text.pop_back();
        DescrambleLine(text, state);
        line = trim_white_space(text);
        if (!line.empty()) return true;
    }
}

bool read_object_line(std::FILE*& stream, CString& line) {
    std::string_view view;
    const bool ok = read_object_line(stream, view);
    line = CString(view);
    return ok;
}

}  // namespace zor
