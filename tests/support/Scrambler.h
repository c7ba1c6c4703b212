// The inverse of the object file's line descrambler, so tests can build
// scrambled files from plain ones.
#pragma once

#include <string>
#include <vector>

namespace zortest {

// Scrambles one plain line with a key from 6 to 999 (written as three digits
// at positions 6..8 of the 10-character prefix). Plain characters must be
// printable (32..126) or above 127; an empty line stays empty.
std::string ScrambleLine(const std::string& plain, int key);

// A scrambled file: six leading lines, then the version line as the seventh,
// then the body. keys[i % keys.size()] scrambles line i.
std::string ScrambleFile(const std::string& versionLine, const std::vector<std::string>& body,
                         const std::vector<int>& keys);

}  // namespace zortest
