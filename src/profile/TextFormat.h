// printf-style formatting into a std::string of any length (a coordinate
// printed with "%lf" can be hundreds of characters long).
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>

namespace zor {

#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
inline std::string
format_text(const char* pattern, ...) {
    va_list args;
    va_start(args, pattern);
    va_list copy;
    va_copy(copy, args);
    int length = std::vsnprintf(nullptr, 0, pattern, copy);
    va_end(copy);
    std::string text;
    if (length > 0) {
        text.resize(static_cast<size_t>(length) + 1);
        std::vsnprintf(&text[0], text.size(), pattern, args);
        text.resize(static_cast<size_t>(length));
    }
    va_end(args);
    return text;
}

}  // namespace zor
