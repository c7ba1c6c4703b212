// The "%lf" numbers of native profile files against printf itself: the same
// text, byte for byte, for every kind of double.
#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "profile/FixedText.h"

namespace {

std::string printf_text(double value) {
    std::vector<char> text(static_cast<std::size_t>(std::snprintf(nullptr, 0, "%lf", value)) + 1);
    std::snprintf(text.data(), text.size(), "%lf", value);
    return text.data();
}

std::string fixed_text(double value, bool direct) {
    std::string out = "x";  // appends, keeps what is there
    zor::append_fixed6(out, value, direct);
    return out.substr(1);
}

std::vector<double> values() {
    using limits = std::numeric_limits<double>;
    std::vector<double> out = {0.0,
                               -0.0,
                               1.0,
                               -1.0,
                               0.5e-6,
                               -0.5e-6,
                               1.5e-6,
                               0.4999999e-6,
                               -1e-9,
                               0.9999995,
                               999999.9999995,
                               123.456789,
                               -500.000001,
                               0.0078125,  // 7812.5 millionths: a tie, to even
                               0.0234375,  // 23437.5: a tie, to even (up)
                               -0.0078125,
                               4503599627370495.5,
                               4503599627370496.0,
                               9007199254740991.0,
                               9007199254740992.0,
                               9007199254740994.0,
                               1e15 + 0.3,
                               1e300,
                               -1e300,
                               limits::max(),
                               limits::lowest(),
                               limits::min(),
                               limits::denorm_min(),
                               -limits::denorm_min(),
                               limits::infinity(),
                               -limits::infinity(),
                               limits::quiet_NaN(),
                               -limits::quiet_NaN()};
    std::mt19937_64 rng(20240601);
    // Every bit pattern: all exponents, subnormals, NaN payloads.
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t bits = rng();
        double v;
        std::memcpy(&v, &bits, sizeof v);
        out.push_back(v);
    }
    // The ranges drawings live in, and numbers near a sixth decimal.
    std::uniform_real_distribution<double> coordinate(-1e6, 1e6);
    for (int i = 0; i < 100000; ++i) {
        const double v = coordinate(rng);
        out.push_back(v);
        const double six = std::round(v * 1e6) / 1e6;
        out.push_back(six);
        out.push_back(std::nextafter(six, 0.0));
        out.push_back((std::round(v * 1e6) + 0.5) / 1e6);
    }
    // Dyadic ties: j / 2^k with k up to 20 puts the seventh digit on a 5 with
    // nothing after it for odd j.
    for (int k = 1; k <= 20; ++k)
        for (int j = 1; j < 400; j += 2) out.push_back(std::ldexp(static_cast<double>(j), -k));
    return out;
}

TEST(FixedTextTest, WritesWhatPrintfWrites) {
    ASSERT_TRUE(zor::fixed6_direct());
    for (const double v : values()) {
        const std::string expected = printf_text(v);
        ASSERT_EQ(fixed_text(v, true), expected) << std::hexfloat << v;
        ASSERT_EQ(fixed_text(v, false), expected) << std::hexfloat << v;
    }
}

// printf rounds in the current rounding mode: another mode is left to it.
TEST(FixedTextTest, LeavesOtherRoundingModesToPrintf) {
    const int mode = std::fegetround();
    ASSERT_EQ(std::fesetround(FE_UPWARD), 0);
    const bool direct = zor::fixed6_direct();
    const std::string text = fixed_text(0.0000001, direct);
    std::fesetround(mode);
    EXPECT_FALSE(direct);
    EXPECT_EQ(text, "0.000001");
}

}  // namespace
