#include "profile/FixedText.h"

#include <langinfo.h>

#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace zor {

namespace {

// Below 2^53 the integer part fits 64 bits with room to round up.
constexpr double kDirectLimit = 9007199254740992.0;

void append_printf(std::string& out, double value) {
    char text[512];
    const int length = std::snprintf(text, sizeof text, "%lf", value);
    if (length >= 0 && static_cast<std::size_t>(length) < sizeof text) {
        out.append(text, static_cast<std::size_t>(length));
        return;
    }
    // Up to 309 integer digits: a longer text than the buffer takes.
    std::string wide(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(&wide[0], wide.size(), "%lf", value);
    out.append(wide.data(), static_cast<std::size_t>(length));
}

}  // namespace

bool fixed6_direct() {
    const char* point = nl_langinfo(RADIXCHAR);
    return std::fegetround() == FE_TONEAREST && point[0] == '.' && point[1] == '\0';
}

char* put_fixed6(char* at, double value) {
    const double magnitude = std::fabs(value);
    if (!(magnitude < kDirectLimit)) return nullptr;  // also NaN and infinity
    // magnitude = m * 2^e exactly; printf prints the exact value rounded to
    // six decimals, ties to even. m * 10^6 < 2^73 fits 128 bits.
    std::uint64_t bits;
    std::memcpy(&bits, &magnitude, sizeof bits);
    const int biased = static_cast<int>(bits >> 52);
    std::uint64_t m = bits & ((std::uint64_t{1} << 52) - 1);
    int e = -1074;
    if (biased != 0) {
        m |= std::uint64_t{1} << 52;
        e = biased - 1075;
    }
    using U128 = unsigned __int128;
    const U128 scaled = static_cast<U128>(m) * 1000000u;
    U128 millionths;
    if (e >= 0) {
        millionths = scaled;  // e is 0 here: magnitude in [2^52, 2^53)
    } else if (e <= -120) {
        millionths = 0;  // below 2^73 / 2^120: far under half a millionth
    } else {
        const int shift = -e;
        millionths = scaled >> shift;
        const U128 rest = scaled & ((static_cast<U128>(1) << shift) - 1);
        const U128 half = static_cast<U128>(1) << (shift - 1);
        if (rest > half || (rest == half && (millionths & 1) != 0)) ++millionths;
    }
    std::uint64_t whole;
    unsigned fraction;
    if ((millionths >> 64) == 0) {  // below 2^64 / 10^6: no 128-bit division
        const auto small = static_cast<std::uint64_t>(millionths);
        whole = small / 1000000u;
        fraction = static_cast<unsigned>(small % 1000000u);
    } else {
        whole = static_cast<std::uint64_t>(millionths / 1000000u);
        fraction = static_cast<unsigned>(millionths % 1000000u);
    }

    char text[kFixed6Max];
    char* p = text + sizeof text;
    for (int i = 0; i < 6; ++i) {
        *--p = static_cast<char>('0' + fraction % 10);
        fraction /= 10;
    }
    *--p = '.';
    do {
        *--p = static_cast<char>('0' + whole % 10);
        whole /= 10;
    } while (whole != 0);
    // printf keeps the sign of every negative value, -0.0 and those that
    // round to zero included.
    if (std::signbit(value)) *--p = '-';
    const auto length = static_cast<std::size_t>(text + sizeof text - p);
    std::memcpy(at, p, length);
    return at + length;
}

void append_fixed6(std::string& out, double value, bool direct) {
    char text[kFixed6Max];
    const char* end = direct ? put_fixed6(text, value) : nullptr;
    if (end == nullptr) {
        append_printf(out, value);
        return;
    }
    out.append(text, static_cast<std::size_t>(end - text));
}

}  // namespace zor
