// The object file's line reader and its descrambler. A file whose first line
// is not its version line is scrambled: every line carries a 10-character
// prefix whose characters 6 to 8 hold the line's key, and the characters after
// it are shifted by an amount that grows with their position.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "platform/afxstr.h"

namespace zor {

struct ObjectFileState;

// Descrambles line in place (after "\n" removal, before trimming). The first
// line seen after state.firstLinePending was set decides whether the file is
// plain; plain files and empty lines stay unchanged.
void DescrambleLine(std::string& line, ObjectFileState& state);

// The object file's line reader: the next non-empty line of stream,
// descrambled and trimmed. At the end of the file the stream is closed and
// set to null, and the result is false. Set firstLinePending in the module
// state before the first line of a file.
bool read_object_line(std::FILE*& stream, CString& line);
// The same, as a view into the module's line text: valid until the next line
// is read.
bool read_object_line(std::FILE*& stream, std::string_view& line);

// White space of the reader's trimming: " \t\n\v\f\r", as CString trims.
inline bool is_white_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
inline std::string_view trim_white_space(std::string_view text) {
    std::size_t first = 0, last = text.size();
    while (first < last && is_white_space(text[first])) ++first;
    while (last > first && is_white_space(text[last - 1])) --last;
    return text.substr(first, last - first);
}

}  // namespace zor
