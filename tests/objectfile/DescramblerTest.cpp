#include <gtest/gtest.h>

#include <random>

#include "objectfile/LineReader.h"
#include "objectfile/ObjectFileState.h"
#include "support/Scrambler.h"

namespace {

std::string descramble(std::string line, bool first = false) {
    zor::ObjectFileState state;
    state.firstLinePending = first;
    zor::DescrambleLine(line, state);
    return line;
}

TEST(DescramblerTest, InvertsTheScramblerOnRandomPrintableAndHighBytes) {
    std::mt19937 rng(12345);
    for (int key : {6, 7, 8, 9, 42, 123, 500, 999}) {
        for (int trial = 0; trial < 200; ++trial) {
            std::string plain(rng() % 300, ' ');
            for (char& c : plain) {
                int b = static_cast<int>(rng() % 190);
                c = static_cast<char>(b < 95 ? b + 32 : b - 95 + 128 + 33);
            }
            SCOPED_TRACE("key " + std::to_string(key));
            EXPECT_EQ(descramble(zortest::ScrambleLine(plain, key)), plain);
        }
    }
}

TEST(DescramblerTest, PlainFileIsRecognisedOnlyByAVersionLineAtColumnOne) {
    struct Case {
        const char* first;
        bool plain;
    } cases[] = {{"// Version: 1.15", true}, {"// Version:", true}, {" // Version: 1.15", false},
                 {"", false}, {"// version: 1.15", false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.first);
        zor::ObjectFileState state;
        state.firstLinePending = true;
        std::string line = c.first;
        zor::DescrambleLine(line, state);
        EXPECT_EQ(state.fileIsPlain, c.plain);
        EXPECT_FALSE(state.firstLinePending);
    }
}

TEST(DescramblerTest, ShortLinesBecomeEmptyAndTheLineLosesTenCharacters) {
    EXPECT_EQ(descramble("0123456789"), "");
    EXPECT_EQ(descramble("abc"), "");
    EXPECT_EQ(descramble("").size(), 0u);
    // Key 6 gives k = 0: position j is shifted by j * j.
    EXPECT_EQ(descramble("xxxxxx006xAAA"), std::string("A@=") );
}

TEST(DescramblerTest, ControlCharactersKeepTheByteAlreadyAtTheTargetPosition) {
    // The tab at position 11 leaves position 1 as it was ('1').
    std::string line = "012345006xA\tB";
    std::string out = descramble(line);
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0], 'A');
    EXPECT_EQ(out[1], '1');
}

TEST(DescramblerTest, NegativeKeyLeavesPositiveValuesUnreduced) {
    // Key "000" gives k = -2: s = (j - 2) * j - 2, so position 0 has s = -2 and
    // '~' (126) becomes 126 + 2 = 128 without reduction.
    std::string out = descramble("xxxxxx000x~");
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(static_cast<unsigned char>(out[0]), 128u);
}

TEST(DescramblerTest, NonNumericKeysDoNotMisbehave) {
    for (const char* key : {"inf", "nan", "abc", "-99", "1e9"}) {
        SCOPED_TRACE(key);
        std::string line = std::string("xxxxxx") + key + "x" + std::string(100, 'Q') + "\xff\x80";
        EXPECT_EQ(descramble(line).size(), line.size() - 10);
    }
}

}  // namespace
