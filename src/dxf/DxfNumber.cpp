#include "dxf/DxfNumber.h"

#include <charconv>
#include <cstdlib>
#include <string>

namespace zor {

double dxf_number(std::string_view token) {
    // from_chars when it reads the whole token (the same correctly rounded
    // value, and fast), else the C library on a terminated copy.
    double v = 0.0;
    auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), v);
    if (error == std::errc() && end == token.data() + token.size()) return v;
    return std::strtod(std::string(token).c_str(), nullptr);
}

}  // namespace zor
