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

namespace {

// The next physical line as fgets(buffer, 512, stream) reads it: at most 511
// characters, through the first "\n". False at the end of the file (nothing
// read). The view holds the line up to its first NUL byte, as the C string
// that fgets leaves does, "\n" included.
//
// With glibc the line is found with memchr in the stream's own buffer and the
// read position moved past it, exactly as getc_unlocked moves it (the same two
// FILE fields and nothing else): the stream stays the one source of the file
// position, so ftell, fseek and a host swapping m_stream for another stream
// all behave as with fgets. A line that runs past the end of the buffered
// bytes (or any other libc) goes through fgets itself.
bool next_physical_line(std::FILE* stream, char* buffer, std::string_view* raw) {
    constexpr std::size_t kMaxCharacters = ObjectFileState::kLineBufferSize - 1;
#if defined(__GLIBC__)
    char* begin = stream->_IO_read_ptr;
    const std::size_t available = static_cast<std::size_t>(stream->_IO_read_end - begin);
    const std::size_t window = available < kMaxCharacters ? available : kMaxCharacters;
    const void* newline = window > 0 ? std::memchr(begin, '\n', window) : nullptr;
    if (newline != nullptr || available >= kMaxCharacters) {
        const std::size_t length =
            newline != nullptr ? static_cast<std::size_t>(static_cast<const char*>(newline) - begin) + 1 : window;
        stream->_IO_read_ptr = begin + length;
        const void* nul = std::memchr(begin, '\0', length);
        *raw = std::string_view(
            begin, nul != nullptr ? static_cast<std::size_t>(static_cast<const char*>(nul) - begin) : length);
        return true;
    }
#endif
    if (fgets_unlocked(buffer, ObjectFileState::kLineBufferSize, stream) == nullptr) return false;
    *raw = std::string_view(buffer);
    return true;
}

}  // namespace

bool read_object_line(std::FILE*& stream, std::string_view& line) {
    line = std::string_view();
    if (stream == nullptr) return false;
    ObjectFileState& state = object_file_state();
    for (;;) {
        // 511 characters at most: a longer physical line arrives as several
        // lines. Intended; nothing in a valid file is that long.
        std::string_view raw;
        if (!next_physical_line(stream, state.lineBuffer, &raw)) {
            std::fclose(stream);
            stream = nullptr;
            return false;
        }
        if (!raw.empty() && raw.back() == '\n') raw.remove_suffix(1);
        if (state.firstLinePending || !state.fileIsPlain) {
            // Descrambling works on a copy; a plain file's line is used where
            // it lies (valid until the next line is read).
            std::string& text = state.lineText;
            text.assign(raw);
            DescrambleLine(text, state);
            raw = text;
        }
        line = trim_white_space(raw);
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
