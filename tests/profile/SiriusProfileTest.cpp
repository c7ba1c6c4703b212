#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "profile/ForeignProfileTestUtil.h"
#include "profile/MWZORProfile.h"
#include "support/ForeignProfileWriter.h"
#include "support/TempDir.h"

namespace {

using zortest::A;
using zortest::L;
using zortest::Seg;
using zortest::segments_of;
using zortest::SiriusWriter;
using zortest::TempDir;
using Segs = std::vector<Seg>;

// Reads text into both profile classes (one body) and checks they agree.
Segs read_both(const TempDir& dir, const std::string& text, unsigned wanted = 1, unsigned file = 1) {
    std::string path = dir.write("profile.sir", text);
    CMWZORExtrude e;
    CMWZORSweep s;
    EXPECT_TRUE(e.ReadSirius(path.c_str(), wanted, file));
    EXPECT_TRUE(s.ReadSirius(path.c_str(), wanted, file));
    EXPECT_EQ(segments_of(e), segments_of(s));
    return segments_of(s);
}

TEST(SiriusProfile, ClosesOnlyAProfileThatEndsAwayFromItsStart) {
    TempDir dir;
    EXPECT_EQ(read_both(dir, SiriusWriter().Line({0, 0, 1}, {10, 0, 1}).Line({10, 0, 1}, {10, 5, 2}).Text()),
              (Segs{L(0, 0, 1), L(10, 0, 1), L(10, 5, 2), L(0, 0, 1)}));
    EXPECT_EQ(read_both(dir, SiriusWriter()
                                 .Line({0, 0, 0}, {10, 0, 0})
                                 .Line({10, 0, 0}, {10, 5, 0})
                                 .Line({10, 5, 0}, {0, 0.000001, 0})
                                 .Text()),
              (Segs{L(0, 0), L(10, 0), L(10, 5), L(0, 0.000001)}));
    // z counts in the closing test too.
    EXPECT_EQ(read_both(dir, SiriusWriter().Line({0, 0, 0}, {5, 0, 0}).Line({5, 0, 0}, {0, 0, 1}).Text()),
              (Segs{L(0, 0), L(5, 0), L(0, 0, 1), L(0, 0)}));
}

TEST(SiriusProfile, DirectionWordsDecideTheArc) {
    TempDir dir;
    const struct {
        const char* word;
        Seg expected;
    } cases[] = {
        {"CLW", A(IO_CLW, 5, 0, 10, 0)},
        {"clw", A(IO_CLW, 5, 0, 10, 0)},
        {"CCLW", A(IO_CCLW, 5, 0, 10, 0)},
        {"cclw", A(IO_CCLW, 5, 0, 10, 0)},
        {" Cclw ", A(IO_CCLW, 5, 0, 10, 0)},
        {"CW", L(10, 0)},
        {"", L(10, 0)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.word);
        EXPECT_EQ(read_both(dir, SiriusWriter().Arc({0, 0, 0}, {10, 0, 0}, {5, 0, 0}, c.word).Text()),
                  (Segs{L(0, 0), c.expected, L(0, 0)}));
    }
}

TEST(SiriusProfile, ConvertsUnitsThroughTheScale) {
    TempDir dir;
    const double k = 25.4;
    EXPECT_EQ(
        read_both(dir, SiriusWriter().Line({1, 2, 3}, {4, 5, 6}).Arc({4, 5, 6}, {1, 2, 3}, {2, 2, 2}, "CLW").Text(), 1,
                  2),
        (Segs{L(1 * k, 2 * k, 3 * k), L(4 * k, 5 * k, 6 * k), A(IO_CLW, 2 * k, 2 * k, 1 * k, 2 * k, 2 * k, 3 * k)}));
}

TEST(SiriusProfile, SkipsLinesOutsideTheGrammar) {
    TempDir dir;
    std::string text = SiriusWriter()
                           .Raw("")
                           .Raw("TITLE = profile (1,2,3,4,5,6)")
                           .Raw("LINE = L1 1,2,3,4,5,6)")  // no "("
                           .Raw("LINE = L1 (1,2,3,4,5,6")  // no ")"
                           .Raw("LINE (1,2,3,4,5,6)")      // no "="
                           .Raw("  line\t= L1 (0,0,0,1,0,0)  trailing")
                           .Raw(std::string(1000, 'x'))
                           .Raw("LINE = " + std::string(990, ' ') + "(1,1,1,2,2,2)")
                           .Raw("ARC=(1,0,0,0,1,0,0,0,0,CCLW)")
                           .Text();
    EXPECT_EQ(read_both(dir, text), (Segs{L(0, 0), L(1, 0), A(IO_CCLW, 0, 0, 0, 1), L(0, 0)}));
}

TEST(SiriusProfile, LinesThatSupplyNothingOnlyCount) {
    TempDir dir;
    // The first segment line parses nothing: no start point, so no closing.
    EXPECT_EQ(read_both(dir, SiriusWriter().Raw("LINE = L1 (a,b)").Line({0, 0, 0}, {5, 0, 0}).Text()), (Segs{L(5, 0)}));
    // A short line takes its missing values from the line before.
    EXPECT_EQ(read_both(dir, SiriusWriter().Line({0, 0, 0}, {5, 0, 0}).Raw("LINE = L2 (5,0,0,5,7)").Text()),
              (Segs{L(0, 0), L(5, 0), L(5, 7), L(0, 0)}));
    EXPECT_EQ(read_both(dir, ""), Segs{});
    EXPECT_EQ(read_both(dir, "LINE = L1 ()\n"), Segs{});
}

TEST(SiriusProfile, MissingFileIsRefused) {
    TempDir dir;
    CMWZORExtrude e;
    EXPECT_FALSE(e.ReadSirius(dir.file("missing.sir").c_str(), 1, 1));
    CMWZORSweep s;
    EXPECT_FALSE(s.ReadSirius(dir.file("missing.sir").c_str(), 1, 1));
}

}  // namespace
