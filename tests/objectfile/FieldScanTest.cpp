// The number scanning of field values against the plain sscanf version it
// replaces: same values, bit for bit, and the same "left unchanged" cases.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "objectfile/FieldScan.h"

namespace {

// The straightforward version: strtok, then sscanf per token.
template <class T>
bool plain_scan(const std::string& text, int n, T* dest, const char* separators, const char* format) {
    std::string copy = text;
    char* save = nullptr;
    char* token = strtok_r(copy.data(), separators, &save);
    for (int i = 0; i < n; ++i) {
        if (token == nullptr) return false;
        std::sscanf(token, format, &dest[i]);
        token = strtok_r(nullptr, separators, &save);
    }
    return true;
}

std::vector<std::string> tokens() {
    std::vector<std::string> out = {"0",           "-0",
                                    "+5",          "+-5",
                                    "-+5",         "5.",
                                    ".5",          ".",
                                    "-",           "+",
                                    "e5",          "1e",
                                    "1e+",         "1e-5",
                                    "1E5",         "1e5.3",
                                    "1.5.3",       "1-2",
                                    " \t7",        "7 8",
                                    "1e999",       "-1e999",
                                    "1e-400",      "4.9e-324",
                                    "0x1p3",       "0x",
                                    "inf",         "-inf",
                                    "nan",         "nan(12)",
                                    "100ergs",     "2147483648",
                                    "-2147483649", "99999999999999999999",
                                    "12abc",       "",
                                    "0.1",         "123456.789012",
                                    "-500.000001"};
    std::mt19937 rng(99);
    const std::string alphabet = "0123456789+-.eE \t";
    for (int i = 0; i < 20000; ++i) {
        std::string t;
        const int length = 1 + static_cast<int>(rng() % 12);
        for (int k = 0; k < length; ++k) t += alphabet[rng() % alphabet.size()];
        out.push_back(t);
    }
    return out;
}

TEST(FieldScanTest, TokensScanAsSscanfDoes) {
    for (const std::string& token : tokens()) {
        SCOPED_TRACE("token \"" + token + "\"");
        double fast = -7.25, plain = -7.25;
        const bool fastOk = zor::ScanDoubleToken(token, &fast, true);
        const bool plainOk = std::sscanf(token.c_str(), "%lf", &plain) == 1;
        EXPECT_EQ(fastOk, plainOk);
        EXPECT_EQ(std::memcmp(&fast, &plain, sizeof fast), 0) << fast << " " << plain;

        int fastInt = -7, plainInt = -7;
        EXPECT_EQ(zor::ScanIntToken(token, &fastInt), std::sscanf(token.c_str(), "%d", &plainInt) == 1);
        EXPECT_EQ(fastInt, plainInt);

        float fastFloat = -7.25f, plainFloat = -7.25f;
        EXPECT_EQ(zor::ScanFloatToken(token, &fastFloat), std::sscanf(token.c_str(), "%f", &plainFloat) == 1);
        EXPECT_EQ(std::memcmp(&fastFloat, &plainFloat, sizeof fastFloat), 0);
    }
}

TEST(FieldScanTest, ListsSplitAsStrtokDoes) {
    std::mt19937 rng(5);
    const std::string alphabet = "0123456789-.e,/ ";
    for (int trial = 0; trial < 5000; ++trial) {
        std::string text;
        const int length = static_cast<int>(rng() % 30);
        for (int k = 0; k < length; ++k) text += alphabet[rng() % alphabet.size()];
        for (const char* separators : {" ", ",", "/,"}) {
            SCOPED_TRACE("\"" + text + "\" on \"" + separators + "\"");
            double fast[3] = {1, 2, 3}, plain[3] = {1, 2, 3};
            EXPECT_EQ(zor::ScanDoubles(text, 3, fast, separators), plain_scan(text, 3, plain, separators, "%lf"));
            EXPECT_EQ(std::memcmp(fast, plain, sizeof fast), 0);
            int fastInts[3] = {1, 2, 3}, plainInts[3] = {1, 2, 3};
            EXPECT_EQ(zor::ScanInts(text, 3, fastInts, separators), plain_scan(text, 3, plainInts, separators, "%d"));
            EXPECT_EQ(std::memcmp(fastInts, plainInts, sizeof fastInts), 0);
        }
    }
}

// The numbers files carry (every printf form of random doubles and ints, with
// blanks around the separators at times): the fast one-pass conversion must
// give sscanf's values bit for bit.
TEST(FieldScanTest, WrittenNumbersScanAsSscanfDoes) {
    std::mt19937_64 rng(31);
    std::uniform_real_distribution<double> coordinate(-1e4, 1e4);
    const char* formats[] = {"%.17g", "%.6f", "%g", "%e", "%.3E", "%.0f", "%.20f", "%a"};
    for (int trial = 0; trial < 20000; ++trial) {
        double v = coordinate(rng);
        if (trial % 4 == 1) v = std::ldexp(v, static_cast<int>(rng() % 2000) - 1000);  // huge, tiny, denormal
        char number[400];
        std::snprintf(number, sizeof number, formats[rng() % 8], v);
        const long long integer = static_cast<long long>(rng() % 2000000) - 1000000;
        const std::string token = trial % 8 == 7 ? std::to_string(integer * 100000) : number;
        for (const char* separators : {" ", ",", "/,"}) {
            const std::string separator = separators[0] == ' ' ? " " : (trial % 3 == 0 ? ", " : ",");
            const std::string text = token + separator + token + separator + std::to_string(integer);
            SCOPED_TRACE("\"" + text + "\" on \"" + separators + "\"");
            double fast[3] = {1, 2, 3}, plain[3] = {1, 2, 3};
            EXPECT_EQ(zor::ScanDoubles(text, 3, fast, separators), plain_scan(text, 3, plain, separators, "%lf"));
            EXPECT_EQ(std::memcmp(fast, plain, sizeof fast), 0);
            int fastInts[3] = {1, 2, 3}, plainInts[3] = {1, 2, 3};
            EXPECT_EQ(zor::ScanInts(text, 3, fastInts, separators), plain_scan(text, 3, plainInts, separators, "%d"));
            EXPECT_EQ(std::memcmp(fastInts, plainInts, sizeof fastInts), 0);
        }
    }
}

}  // namespace
