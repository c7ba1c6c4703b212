#include "objectfile/FieldScan.h"

#include <langinfo.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace zor {

// The conversions below are the ones sscanf itself ends in: glibc's "%d"
// collects a sign and digits and converts them with strtol (storing the long
// as int), "%f" and "%lf" collect the characters of a number and convert them
// with strtof and strtod. Called on the token directly they give the same
// value, much faster than the format interpreter; from_chars is faster still
// and used where it provably reads the same number.

namespace {

bool white_space(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }

std::string_view skip_white_space(std::string_view token) {
    while (!token.empty() && white_space(token.front())) token.remove_prefix(1);
    return token;
}

// Digits, sign, point, exponent and white space only: there strtod and "%lf"
// read the same characters, and from_chars too (bar a leading "+"). Anything
// else (hex, inf, nan with a payload, other letters) goes through sscanf.
bool plain_decimal(std::string_view token) {
    for (char c : token)
        if (!((c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E' || white_space(c)))
            return false;
    return true;
}

}  // namespace

bool decimal_point_is_dot() {
    // The item localeconv()->decimal_point reads, without filling its struct.
    const char* point = nl_langinfo(RADIXCHAR);
    return point[0] == '.' && point[1] == '\0';
}

bool ScanIntToken(std::string_view token, int* value) {
    // from_chars reads what strtol reads in base 10, except for a leading "+"
    // and values out of range: those take strtol.
    const std::string_view number = skip_white_space(token);
    if (number.empty()) return false;
    if (number.front() != '+') {
        long parsed = 0;
        const auto result = std::from_chars(number.data(), number.data() + number.size(), parsed);
        if (result.ec == std::errc()) {
            *value = static_cast<int>(parsed);
            return true;
        }
        if (result.ec == std::errc::invalid_argument) return false;
    }
    const std::string copy(token);
    char* end = nullptr;
    const long parsed = std::strtol(copy.c_str(), &end, 10);
    if (end == copy.c_str()) return false;
    *value = static_cast<int>(parsed);
    return true;
}

bool ScanFloatToken(std::string_view token, float* value) {
    const std::string copy(token);
    if (!plain_decimal(token)) return std::sscanf(copy.c_str(), "%f", value) == 1;
    char* end = nullptr;
    const float parsed = std::strtof(copy.c_str(), &end);
    if (end == copy.c_str()) return false;
    *value = parsed;
    return true;
}

bool ScanDoubleToken(std::string_view token, double* value, bool dotLocale) {
    if (plain_decimal(token)) {
        // A plain decimal number converts to the same correctly rounded
        // double through from_chars as through strtod while the locale's
        // decimal point is "." (from_chars ignores the locale).
        const std::string_view number = skip_white_space(token);
        if (number.empty()) return false;
        if (number.front() != '+' && dotLocale) {
            double parsed = 0.0;
            const auto result = std::from_chars(number.data(), number.data() + number.size(), parsed);
            if (result.ec == std::errc()) {
                *value = parsed;
                return true;
            }
            if (result.ec == std::errc::invalid_argument) return false;
        }
        // Out of range (strtod gives inf or a denormal, as "%lf" does), a
        // leading "+" or another decimal point.
        const std::string copy(token);
        char* end = nullptr;
        const double parsed = std::strtod(copy.c_str(), &end);
        if (end == copy.c_str()) return false;
        *value = parsed;
        return true;
    }
    const std::string copy(token);
    return std::sscanf(copy.c_str(), "%lf", value) == 1;
}

namespace {

bool digit(char c) { return c >= '0' && c <= '9'; }

// The separator set as a bit per byte value, and whether it is free of the
// characters of a decimal number: then from_chars, which stops at the first
// character that cannot continue a number, finds a token's end itself.
class SeparatorSet {
public:
    explicit SeparatorSet(const char* separators) {
        if (separators == nullptr) return;
        for (const char* c = separators; *c != '\0'; ++c) {
            const auto b = static_cast<unsigned char>(*c);
            m_bits[b >> 6] |= std::uint64_t{1} << (b & 63);
            if (digit(*c) || *c == '.' || *c == '+' || *c == '-' || *c == 'e' || *c == 'E') m_numberFree = false;
        }
    }
    bool contains(char c) const {
        const auto b = static_cast<unsigned char>(c);
        return ((m_bits[b >> 6] >> (b & 63)) & 1) != 0;
    }
    bool number_free() const { return m_numberFree; }

private:
    std::uint64_t m_bits[4] = {0, 0, 0, 0};
    bool m_numberFree = true;
};

// Splits text like strtok on separators (runs of separators count as one,
// empty tokens do not exist) and scans the first n tokens in place.
template <class T, class Scan>
bool scan_list(std::string_view text, int n, T* dest, const char* separators, Scan scan) {
    const SeparatorSet set(separators);
    const char* p = text.data();
    const char* const end = p + text.size();
    for (int i = 0; i < n; ++i) {
        while (p != end && set.contains(*p)) ++p;
        if (p == end) return false;
        const char* start = p;
        while (p != end && !set.contains(*p)) ++p;
        scan(std::string_view(start, static_cast<std::size_t>(p - start)), &dest[i]);
    }
    return true;
}

// scan_list, with the common token found and converted in one pass by the
// from_chars call that the sscanf-equivalent scanners above would make for
// it. The common token: from_chars (into Wide) takes all of it and its last
// character is a digit or a point. It is then [-]digits[.digits][e[+-]digits]
// (for a double never inf, nan, hex or white space): a plain number without a
// leading "+", which those scanners convert with from_chars too. Any other
// token takes slow.
template <class Wide, class T, class Slow>
bool scan_list_fused(std::string_view text, int n, T* dest, const char* separators, Slow slow) {
    const SeparatorSet set(separators);
    if (!set.number_free()) return scan_list(text, n, dest, separators, slow);
    const char* p = text.data();
    const char* const end = p + text.size();
    for (int i = 0; i < n; ++i) {
        while (p != end && set.contains(*p)) ++p;
        if (p == end) return false;
        Wide parsed{};
        const auto result = std::from_chars(p, end, parsed);
        if (result.ec == std::errc() && (result.ptr == end || set.contains(*result.ptr)) &&
            (digit(result.ptr[-1]) || result.ptr[-1] == '.')) {
            dest[i] = static_cast<T>(parsed);  // "%d" stores strtol's long as an int
            p = result.ptr;
            continue;
        }
        const char* start = p;
        while (p != end && !set.contains(*p)) ++p;
        slow(std::string_view(start, static_cast<std::size_t>(p - start)), &dest[i]);
    }
    return true;
}

}  // namespace

bool ScanInts(std::string_view text, int n, int* dest, const char* separators) {
    return scan_list_fused<long>(text, n, dest, separators, ScanIntToken);
}

bool ScanFloats(std::string_view text, int n, float* dest, const char* separators) {
    return scan_list(text, n, dest, separators, ScanFloatToken);
}

bool ScanDoubles(std::string_view text, int n, double* dest, const char* separators) {
    const bool dotLocale = decimal_point_is_dot();
    const auto slow = [dotLocale](std::string_view token, double* value) { ScanDoubleToken(token, value, dotLocale); };
    // from_chars ignores the locale: with another decimal point every token
    // is read as sscanf reads it (strtod).
    if (!dotLocale) return scan_list(text, n, dest, separators, slow);
    return scan_list_fused<double>(text, n, dest, separators, slow);
}

}  // namespace zor
