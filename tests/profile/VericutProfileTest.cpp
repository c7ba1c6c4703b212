#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "profile/ForeignProfile.h"
#include "profile/ForeignProfileTestUtil.h"
#include "profile/MWZORProfile.h"
#include "support/ForeignProfileWriter.h"
#include "support/TempDir.h"
#include "zorapi/XmlHolder.h"

namespace {

using zortest::A;
using zortest::L;
using zortest::Seg;
using zortest::segments_of;
using zortest::TempDir;
using zortest::VericutTextWriter;
using zortest::VericutXmlWriter;
using Segs = std::vector<Seg>;

constexpr double kPi = 3.141592653589793;

TEST(DirectionOf, FollowsTheFourAngleBranches) {
    const struct {
        const char* what;
        double a1, a2;  // start and end angles about the origin
        const char* expected;
    } cases[] = {
        {"both upper, end further on", 0.2, 0.5, "CCW"},
        {"both upper, end behind", 0.5, 0.2, "CW"},
        {"upper to lower, short way clockwise", 0.5, -0.5, "CW"},
        {"upper to lower, short way counter-clockwise", 3.0, -3.0, "CCW"},
        {"lower to upper, short way counter-clockwise", -0.5, 0.5, "CCW"},
        {"lower to upper, short way clockwise", -3.0, 3.0, "CW"},
        // Both negative is the reverse of both non-negative.
        {"both lower, end counter-clockwise of start", -0.5, -0.2, "CW"},
        {"both lower, end clockwise of start", -0.2, -0.5, "CCW"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_STREQ(zor::DirectionOf(0, 0, std::cos(c.a1), std::sin(c.a1), std::cos(c.a2), std::sin(c.a2)),
                     c.expected);
    }
}

TEST(DirectionOf, ExactHalfTurnsDependOnTheBranch) {
    // Start and end opposite each other about (10, 5): the sums equal pi.
    EXPECT_STREQ(zor::DirectionOf(10, 5, 10, 0, 10, 10), "CCW");  // -pi/2 to pi/2
    EXPECT_STREQ(zor::DirectionOf(10, 5, 10, 10, 10, 0), "CW");   // pi/2 to -pi/2
    EXPECT_STREQ(zor::DirectionOf(0, 0, 1, 0, -1, 0), "CCW");     // 0 to pi
    EXPECT_STREQ(zor::DirectionOf(0, 0, -1, 0, 1, 0), "CW");      // pi to 0
    // Both angles equal: no turn at all.
    EXPECT_STREQ(zor::DirectionOf(0, 0, 1, 1, 2, 2), "CW");
    EXPECT_STREQ(zor::DirectionOf(0, 0, 1, -1, 2, -2), "CW");
    // Just off the half turn the shorter side wins again.
    EXPECT_STREQ(zor::DirectionOf(0, 0, std::cos(kPi / 2 + 1e-9), std::sin(kPi / 2 + 1e-9), 0, -1), "CCW");
    EXPECT_STREQ(zor::DirectionOf(0, 0, std::cos(-kPi / 2 - 1e-9), std::sin(-kPi / 2 - 1e-9), 0, 1), "CW");
}

class VericutProfileTest : public ::testing::Test {
protected:
    void TearDown() override { zor::reset_xml_holders(); }

    std::string write(const std::string& text) { return dir.write("profile-" + std::to_string(++files), text); }

    TempDir dir;
    int files = 0;
};

TEST_F(VericutProfileTest, ClosesAnOpenTriangleButNotOneThatEndsWithinTolerance) {
    CMWZORExtrude open;
    ASSERT_TRUE(
        open.ReadVericut(write(VericutXmlWriter::Sweep(0, 5).Pt(0, 0).Pt(10, 0).Pt(10, 10).Text()).c_str(), 1, 1));
    EXPECT_EQ(segments_of(open), (Segs{L(0, 0), L(10, 0), L(10, 10), L(0, 0)}));

    CMWZORSweep closed;
    ASSERT_TRUE(closed.ReadVericut(
        write(VericutXmlWriter::Sor(0.01).Pt(0, 0).Pt(10, 0).Pt(10, 10).Pt(0, 0.000001).Text()).c_str(), 1, 1));
    EXPECT_EQ(segments_of(closed), (Segs{L(0, 0), L(10, 0), L(10, 10), L(0, 0.000001)}));
    EXPECT_EQ(closed.m_tolerance, 0.01);
}

TEST_F(VericutProfileTest, ArcWithoutDirectionGetsTheComputedOne) {
    CMWZORExtrude e;
    ASSERT_TRUE(e.ReadVericut(
        write(VericutXmlWriter::Sweep(0, 1).Pt(0, 0).Pt(10, 0).Arc(10, 5, "", "", 99).Pt(10, 10).Text()).c_str(), 1, 1));
    EXPECT_EQ(segments_of(e), (Segs{L(0, 0), L(10, 0), A(IO_CCLW, 10, 5, 10, 10), L(0, 0)}));
}

TEST_F(VericutProfileTest, DirectionSurvivesFromArcToArc) {
    const struct {
        const char* what;
        std::string attribute, child;
        int first, second;
    } cases[] = {
        // The computed direction would be CCW for both arcs.
        {"lower-case cw attribute", "cw", "", IO_CLW, IO_CLW},
        {"child wins over attribute", "CCW", "Cw", IO_CLW, IO_CLW},
        {"unknown word is recomputed", "left", "", IO_CCLW, IO_CCLW},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CMWZORSweep s;
        std::string path = write(VericutXmlWriter::Sor(0.005)
                                     .Pt(10, 0)
                                     .Arc(10, 5, c.attribute, c.child)
                                     .Pt(10, 10)
                                     .Arc(10, 15)  // no direction of its own
                                     .Pt(10, 20)
                                     .Text());
        ASSERT_TRUE(s.ReadVericut(path.c_str(), 1, 1));
        EXPECT_EQ(segments_of(s), (Segs{L(10, 0), A(c.first, 10, 5, 10, 10), A(c.second, 10, 15, 10, 20), L(10, 0)}));
    }
}

TEST_F(VericutProfileTest, SecondCoordinateComesFromZWhenGiven) {
    CMWZORExtrude e;
    std::string path = write(VericutXmlWriter::Sweep(0, 1)
                                 .Pt(1, 2, "Z")
                                 .Raw("<PT><X>3</X><Y>4</Y><Z>5</Z></PT>")
                                 .Raw("<pt><x>6</x></pt>")  // no second coordinate: keeps 5
                                 .Raw("<Note>ignored</Note>")
                                 .Text());
    ASSERT_TRUE(e.ReadVericut(path.c_str(), 1, 1));
    EXPECT_EQ(segments_of(e), (Segs{L(1, 2), L(3, 5), L(6, 5), L(1, 2)}));
}

TEST_F(VericutProfileTest, ConvertsUnitsAndZRangeButClosesOnFileValues) {
    CMWZORExtrude e;
    std::string path =
        write(VericutXmlWriter::Sweep(0, 2).Pt(0, 0).Pt(10, 0).Arc(10, 5).Pt(10, 10).Pt(0, 0.000001).Text());
    ASSERT_TRUE(e.ReadVericut(path.c_str(), 1, 2));
    double zMin = -1, zMax = -1;
    e.GetZValues(&zMin, &zMax);
    EXPECT_EQ(zMin, 0.0);
    EXPECT_EQ(zMax, 2 * 25.4);
    EXPECT_EQ(e.GetUnit(), 1);
    // 0.000001 apart in the file, 0.0000254 after scaling: not closed again.
    EXPECT_EQ(segments_of(e), (Segs{L(0, 0), L(10 * 25.4, 0), A(IO_CCLW, 10 * 25.4, 5 * 25.4, 10 * 25.4, 10 * 25.4),
                                    L(0, 0.000001 * 25.4)}));

    CMWZORSweep s;
    ASSERT_TRUE(s.ReadVericut(write(VericutXmlWriter::Sor(0.25).Pt(25.4, 0).Pt(0, 0).Text()).c_str(), 2, 1));
    EXPECT_EQ(s.m_tolerance, 0.25);  // never scaled
    EXPECT_EQ(segments_of(s), (Segs{L(25.4 * 0.03937007874015748, 0), L(0, 0), L(25.4 * 0.03937007874015748, 0)}));
}

TEST_F(VericutProfileTest, FindsTheProfileElementAtOrBelowTheRootInAnyCase) {
    const struct {
        const char* what;
        VericutXmlWriter writer;
    } cases[] = {
        {"root", VericutXmlWriter::Sweep(1, 2).Pt(0, 0).Pt(1, 0)},
        {"below root", VericutXmlWriter::Sweep(1, 2).Root("VericutData").Pt(0, 0).Pt(1, 0)},
        {"upper case", VericutXmlWriter::Sweep(1, 2).Name("SWEEP").Pt(0, 0).Pt(1, 0)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CMWZORExtrude e;
        ASSERT_TRUE(e.ReadVericut(write(c.writer.Text()).c_str(), 1, 1));
        EXPECT_EQ(segments_of(e), (Segs{L(0, 0), L(1, 0), L(0, 0)}));
        EXPECT_EQ(e.m_zMin, 1);
        EXPECT_EQ(e.m_zMax, 2);
    }
}

TEST_F(VericutProfileTest, RefusesDocumentsWithoutItsProfileElement) {
    const struct {
        const char* what;
        std::string xml;
        bool turned;
    } cases[] = {
        {"extrusion reader on a Sor", VericutXmlWriter::Sor(0.1).Pt(1, 1).Text(), false},
        {"turned reader on a Sweep", VericutXmlWriter::Sweep(0, 1).Pt(1, 1).Text(), true},
        {"other document", "<tools><tool name='Sweep'/></tools>", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::string path = write(c.xml);
        CMWZORExtrude e;
        CMWZORSweep s;
        EXPECT_FALSE(c.turned ? s.ReadVericut(path.c_str(), 1, 1) : e.ReadVericut(path.c_str(), 1, 1));
        EXPECT_EQ(e.m_segments.GetSize() + s.m_segments.GetSize(), 0);
        EXPECT_EQ(s.m_tolerance, 0.005);
        EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name(zor::kVericutHolder), nullptr);
    }
}

TEST_F(VericutProfileTest, OddDocumentsReadWithoutCrashing) {
    const struct {
        const char* what;
        std::string xml;
        Segs expected;
    } cases[] = {
        // The arc starts at (0, 0): the file gives it no start. It is no
        // vertex either, so the chain closes to (5, 5), where it ends.
        {"arc before any point", VericutXmlWriter::Sweep(0, 1).Arc(0, 5).Pt(0, 10).Pt(5, 5).Text(),
         Segs{A(IO_CCLW, 0, 5, 0, 10), L(5, 5)}},
        {"no point at all", VericutXmlWriter::Sweep(0, 1).Arc(0, 5).Text(), Segs{}},
        {"attributes and values that are not numbers",
         "<Sweep Zmin='low' Zmax='high'><PT><X>abc</X><Y>1</Y></PT><PT><X/><Y>x</Y></PT></Sweep>",
         Segs{L(0, 1), L(0, 0), L(0, 1)}},
        {"arc without point after it", VericutXmlWriter::Sweep(0, 1).Pt(1, 1).Pt(2, 1).Arc(3, 3).Text(),
         Segs{L(1, 1), L(2, 1), L(1, 1)}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CMWZORExtrude e;
        EXPECT_TRUE(e.ReadVericut(write(c.xml).c_str(), 1, 1));
        EXPECT_EQ(segments_of(e), c.expected);
    }
}

// The bits of a double whose low four bytes were replaced by value's.
double with_single_in_low_half(double before, float value) {
    std::uint64_t bits;
    std::memcpy(&bits, &before, 8);
    std::uint32_t single;
    std::memcpy(&single, &value, 4);
    bits = (bits & 0xFFFFFFFF00000000ull) | single;
    double out;
    std::memcpy(&out, &bits, 8);
    return out;
}

bool same_bits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

TEST(VericutField, ExponentFieldsReplaceOnlyTheLowHalfOfTheDouble) {
    const struct {
        const char* field;
        double before;
        double expected;
    } cases[] = {
        {"12.5", 99.0, 12.5},
        {"-0.125", 0.0, -0.125},
        {"1e0", 0.0, with_single_in_low_half(0.0, 1.0f)},
        {"2.5E1", 0.0, with_single_in_low_half(0.0, 25.0f)},
        {"1.5e2", 100.0, with_single_in_low_half(100.0, 150.0f)},
        {"abc", 7.0, 7.0},  // does not convert: unchanged
        {"e", 7.0, 7.0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.field);
        double target = c.before;
        zor::read_vericut_field(c.field, &target);
        EXPECT_TRUE(same_bits(target, c.expected)) << target << " vs " << c.expected;
    }
    // The quirk really changes the value: 1e0 is not read as 1.
    double one = 1.0;
    zor::read_vericut_field("1e0", &one);
    EXPECT_NE(one, 1.0);
}

TEST_F(VericutProfileTest, PlainTextExtrusionAndTurnedProfile) {
    CMWZORExtrude e;
    std::string path = write(VericutTextWriter::Extrusion("-1.5", "4\tignored")
                                 .Point(0, 0)
                                 .Raw("")
                                 .Raw("7")  // one field: skipped
                                 .Raw("  10   0   extra")
                                 .Point(10, 10)
                                 .Text());
    ASSERT_TRUE(e.ReadVericut(path.c_str(), 2, 1));
    const double f = 0.03937007874015748;
    EXPECT_EQ(e.m_zMin, -1.5 * f);
    EXPECT_EQ(e.m_zMax, 4 * f);
    EXPECT_EQ(segments_of(e), (Segs{L(0, 0), L(10 * f, 0), L(10 * f, 10 * f), L(0, 0)}));

    CMWZORSweep s;
    ASSERT_TRUE(s.ReadVericut(
        write(VericutTextWriter::Sor("0.02").Point(5, 0).Point(5, 5).Point(5, 0.000001).Text()).c_str(), 1, 1));
    EXPECT_EQ(s.m_tolerance, 0.02);
    // Line 5 is already a point for a turned profile.
    EXPECT_EQ(segments_of(s), (Segs{L(5, 0), L(5, 5), L(5, 0.000001)}));
}

TEST_F(VericutProfileTest, PlainTextKeepsTheExponentQuirk) {
    CMWZORSweep s;
    ASSERT_TRUE(s.ReadVericut(write(VericutTextWriter::Sor("1").Point(2, 3).Raw("1e1 2").Text()).c_str(), 1, 1));
    // x of the second point had the bits of 2.0 and gets 10.0f in its low half.
    const double x = with_single_in_low_half(2.0, 10.0f);
    EXPECT_EQ(segments_of(s), (Segs{L(2, 3), L(x, 2), L(2, 3)}));
}

TEST_F(VericutProfileTest, PlainTextLinesLongerThanEightyCharactersArriveInPieces) {
    CMWZORSweep s;
    std::string longLine = "5 6" + std::string(77, ' ') + "7 8";  // 80 characters, then "7 8"
    ASSERT_TRUE(s.ReadVericut(write(VericutTextWriter::Sor("1").Raw(longLine).Text()).c_str(), 1, 1));
    EXPECT_EQ(segments_of(s), (Segs{L(5, 6), L(7, 8), L(5, 6)}));
}

TEST_F(VericutProfileTest, PlainTextShorterThanItsHeaderIsRefused) {
    CMWZORExtrude four;
    four.SetZValues(3, 3);
    EXPECT_FALSE(four.ReadVericut(write("a\nb\nc\n2\n").c_str(), 1, 2));
    EXPECT_EQ(four.m_segments.GetSize(), 0);
    EXPECT_EQ(four.m_zMin, 2 * 25.4);  // read from line 4, then scaled
    EXPECT_EQ(four.m_zMax, 3 * 25.4);

    CMWZORSweep three;
    EXPECT_FALSE(three.ReadVericut(write("a\nb\nc\n").c_str(), 1, 1));
    EXPECT_EQ(three.m_segments.GetSize(), 0);
    CMWZORSweep missing;
    EXPECT_FALSE(missing.ReadVericut(dir.file("missing").c_str(), 1, 1));
}

TEST_F(VericutProfileTest, EveryPrefixOfAProfileReadsCleanly) {
    const std::string xml = VericutXmlWriter::Sweep(0, 2).Pt(0, 0).Pt(10, 0).Arc(10, 5, "CW").Pt(10, 10).Text();
    const std::string text = VericutTextWriter::Extrusion("0", "2").Point(0, 0).Point(10, 0).Text();
    for (const std::string* whole : {&xml, &text}) {
        for (size_t n = 0; n < whole->size(); ++n) {
            SCOPED_TRACE(n);
            CMWZORExtrude e;
            const bool read = e.ReadVericut(write(whole->substr(0, n)).c_str(), 1, 1);
            // A prefix that is not XML any more falls back to plain text,
            // which needs five lines.
            const std::string prefix = whole->substr(0, n);
            const long lines = std::count(prefix.begin(), prefix.end(), '\n') + (n > 0 && prefix.back() != '\n');
            if (lines < 5) {
                EXPECT_FALSE(read);
            }
            EXPECT_LE(e.m_segments.GetSize(), 6);
        }
    }
}

}  // namespace
