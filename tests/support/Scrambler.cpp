#include "support/Scrambler.h"

#include <cstdio>
#include <stdexcept>

namespace zortest {

std::string ScrambleLine(const std::string& plain, int key) {
    if (key < 6 || key > 999) throw std::invalid_argument("key out of range");
    if (plain.empty()) return plain;
    char prefix[11];
    std::snprintf(prefix, sizeof prefix, "#zor#=%03d#", key);
    std::string out(prefix);
    const long long k = (key - 6) / 3;
    for (std::size_t j = 0; j < plain.size(); ++j) {
        const long long s = (static_cast<long long>(j) + k) * static_cast<long long>(j) + k;
        const int p = static_cast<unsigned char>(plain[j]);
        if (p >= 32 && p <= 126)
            out += static_cast<char>((p - 32 + s) % 95 + 32);
        else if (p >= 128)
            out += static_cast<char>((p - 128 + s) % 128 + 128);
        else
            throw std::invalid_argument("control characters cannot be scrambled");
    }
    return out;
}

std::string ScrambleFile(const std::string& versionLine, const std::vector<std::string>& body,
                         const std::vector<int>& keys) {
    std::string out;
    int n = 0;
    auto add = [&](const std::string& line) {
        out += ScrambleLine(line, keys[static_cast<std::size_t>(n++) % keys.size()]);
        out += '\n';
    };
    for (int i = 1; i <= 6; ++i) add("header line " + std::to_string(i));
    add(versionLine);
    for (const std::string& line : body) add(line);
    return out;
}

}  // namespace zortest
