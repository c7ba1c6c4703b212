#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "dxf/DxfNumber.h"

namespace {

std::uint64_t bits_of(double v) {
    std::uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

void expect_as_strtod(const std::string& token) {
    const double expected = std::strtod(token.c_str(), nullptr);
    ASSERT_EQ(bits_of(zor::dxf_number(token)), bits_of(expected)) << '"' << token << '"';
}

TEST(DxfNumber, ReadsWhatStrtodReads) {
    for (const char* token : {
             "0", "-0", "0.0", "-0.000", "1", "1.", ".5", "-.5", ".", "-", "", "+5", "5+", "1e5", "1E-5", "1e", "1e+",
             "1e+3x", "2.5e-027", "7e27", "7e28", "1e0001", "0x1A", "inf", "-nan", "1.2e+03",
             // Ties and near-ties: 2^53 + 1 and + 3, 17-digit and 19-digit values.
             "9007199254740993", "9007199254740995", "9007199254740993.0000000001", "0.1", "0.30000000000000004",
             "-96.95907235145569", "185.24760007858276", "1234567890123456789", "12345678901234567890",
             "0.0000000000000000000000001234567890123456789", "1.7976931348623157e308", "4.9e-324",
             "2.2250738585072014e-308", "00000000000000000000000000012.5", "12.500000000000000000000000000",
             // Just above a tie by a hair: hard cases for a fast conversion.
             "0.000000007090758331363102072", "0.000000007235666183327729032", "0.000000002252366803909754946",
             "1..2", "1.2.3", "--1", "1e5.5", "123456789.987654321e-27", "999999999999999999.9e27"})
        expect_as_strtod(token);
}

// Random plain decimals as drawings write them, with and without exponents,
// up to 20 digits on either side of the point.
TEST(DxfNumber, RandomDecimalsMatchStrtodBitForBit) {
    std::mt19937_64 rng(7);
    auto digits = [&](int n) {
        std::string s;
        for (int i = 0; i < n; ++i) s += static_cast<char>('0' + rng() % 10);
        return s;
    };
    for (int i = 0; i < 300000; ++i) {
        std::string token = rng() % 2 ? "-" : "";
        token += digits(static_cast<int>(rng() % 12));
        if (rng() % 4 != 0) token += "." + digits(static_cast<int>(rng() % 21));
        if (rng() % 5 == 0) token += (rng() % 2 ? "e" : "E") + std::string(rng() % 2 ? "-" : "+") +
                                     std::to_string(rng() % 40);
        expect_as_strtod(token);
        if (HasFatalFailure()) return;
    }
}

}  // namespace
