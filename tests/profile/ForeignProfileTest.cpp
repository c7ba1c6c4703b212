#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "profile/ForeignProfile.h"
#include "profile/ForeignProfileSource.h"
#include "profile/MWZORProfile.h"
#include "profile/ProfileTestUtil.h"
#include "support/ForeignProfileWriter.h"
#include "support/ProfileFileWriter.h"
#include "support/TempDir.h"
#include "zorapi/XmlHolder.h"

namespace {

using namespace zortest;

TEST(DirectionOf, FollowsTheFourAngleBranchesAndTheirHalfTurns) {
    const struct {
        double cx, cy, sx, sy, ex, ey;
        const char* expected;
    } cases[] = {
        {0, 0, 1, 0.2, 1, 0.6, "CCW"},  {0, 0, 1, 0.6, 1, 0.2, "CW"},      // both upper
        {0, 0, 1, 0.5, 1, -0.5, "CW"},  {0, 0, -1, 0.1, -1, -0.1, "CCW"},  // upper to lower, the short way
        {0, 0, 1, -0.5, 1, 0.5, "CCW"}, {0, 0, -1, -0.1, -1, 0.1, "CW"},   // lower to upper
        {0, 0, 1, -0.5, 1, -0.2, "CW"}, {0, 0, 1, -0.2, 1, -0.5, "CCW"},   // both lower: the reverse of both upper
        {10, 5, 10, 0, 10, 10, "CCW"},  {10, 5, 10, 10, 10, 0, "CW"},      // exact half turns
        {0, 0, 1, 0, -1, 0, "CCW"},     {0, 0, -1, 0, 1, 0, "CW"},
        {0, 0, -1e-9, 1, 0, -1, "CCW"}, {0, 0, -1e-9, -1, 0, 1, "CW"},  // just off the half turn
        {0, 0, 1, 1, 2, 2, "CW"},       {0, 0, 1, -1, 2, -2, "CW"},     // no turn
    };
    for (const auto& c : cases) {
        EXPECT_STREQ(zor::DirectionOf(c.cx, c.cy, c.sx, c.sy, c.ex, c.ey), c.expected)
            << c.cx << " " << c.cy << ": " << c.sx << " " << c.sy << " to " << c.ex << " " << c.ey;
    }
}

// The bits of a double whose low four bytes were replaced by those of a float.
double with_single_in_low_half(double before, float value) {
    std::uint64_t bits;
    std::uint32_t single;
    std::memcpy(&bits, &before, 8);
    std::memcpy(&single, &value, 4);
    bits = (bits & 0xFFFFFFFF00000000ull) | single;
    std::memcpy(&before, &bits, 8);
    return before;
}

TEST(VericutField, ExponentFieldsReplaceOnlyTheLowHalfOfTheDouble) {
    const struct {
        const char* field;
        double before, expected;
    } cases[] = {
        {"12.5", 99.0, 12.5},
        {"-0.125", 0.0, -0.125},
        {"1e0", 1.0, with_single_in_low_half(1.0, 1.0f)},  // not 1.0
        {"2.5E1", 0.0, with_single_in_low_half(0.0, 25.0f)},
        {"abc", 7.0, 7.0},
        {"e", 7.0, 7.0},
    };
    for (const auto& c : cases) {
        double target = c.before;
        zor::read_vericut_field(c.field, &target);
        EXPECT_EQ(std::memcmp(&target, &c.expected, 8), 0) << c.field << ": " << target;
    }
    EXPECT_NE(with_single_in_low_half(1.0, 1.0f), 1.0);
}

class ForeignProfile : public ::testing::Test {
protected:
    void TearDown() override { zor::reset_xml_holders(); }
    std::string write(const std::string& text) { return dir.write("profile-" + std::to_string(++files), text); }
    TempDir dir;
    int files = 0;
};

TEST_F(ForeignProfile, VericutClosesOnFileValuesAndScalesTheZRange) {
    CMWZORExtrude open;
    ASSERT_TRUE(
        open.ReadVericut(write(VericutXmlWriter::Sweep(0, 5).Pt(0, 0).Pt(10, 0).Pt(10, 10).Text()).c_str(), 1, 1));
    EXPECT_EQ(segments_of(open), (Segs{L(0, 0), L(10, 0), L(10, 10), L(0, 0)}));
    CMWZORSweep closed;
    ASSERT_TRUE(closed.ReadVericut(
        write(VericutXmlWriter::Sor(0.01).Pt(0, 0).Pt(10, 0).Pt(10, 10).Pt(0, 0.000001).Text()).c_str(), 1, 1));
    EXPECT_EQ(segments_of(closed), (Segs{L(0, 0), L(10, 0), L(10, 10), L(0, 0.000001)}));
    EXPECT_EQ(closed.m_tolerance, 0.01);
    // 0.000001 apart in the file is closed, though 0.0000254 after scaling is not. An arc without a direction
    // gets the computed one.
    CMWZORExtrude e;
    ASSERT_TRUE(e.ReadVericut(
        write(VericutXmlWriter::Sweep(0, 2).Pt(0, 0).Pt(10, 0).Arc(10, 5, "", "", 99).Pt(10, 10).Pt(0, 1e-6).Text())
            .c_str(),
        1, 2));
    const double k = 25.4;
    EXPECT_EQ(std::make_pair(e.m_zMin, e.m_zMax), std::make_pair(0.0, 2 * k));
    EXPECT_EQ(e.GetUnit(), 1);
    EXPECT_EQ(segments_of(e), (Segs{L(0, 0), L(10 * k, 0), A(IO_CCLW, 10 * k, 5 * k, 10 * k, 10 * k), L(0, 1e-6 * k)}));
}

TEST_F(ForeignProfile, VericutDirectionSurvivesFromArcToArc) {
    const struct {
        std::string attribute, child;
        int first, second;
    } cases[] = {
        {"", "", IO_CCLW, IO_CCLW},
        {"cw", "", IO_CLW, IO_CLW},      // computed; lower-case "cw" is inherited
        {"CCW", "Cw", IO_CLW, IO_CLW},   // the child wins over the attribute
        {"left", "", IO_CCLW, IO_CCLW},  // an unknown word is recomputed
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.attribute + "/" + c.child);
        CMWZORSweep s;
        ASSERT_TRUE(s.ReadVericut(write(VericutXmlWriter::Sor(0.005)
                                            .Pt(10, 0)
                                            .Arc(10, 5, c.attribute, c.child)
                                            .Pt(10, 10)
                                            .Arc(10, 15)
                                            .Pt(10, 20)
                                            .Text())
                                      .c_str(),
                                  1, 1));
        EXPECT_EQ(segments_of(s), (Segs{L(10, 0), A(c.first, 10, 5, 10, 10), A(c.second, 10, 15, 10, 20), L(10, 0)}));
    }
}

TEST_F(ForeignProfile, VericutFindsItsElementBelowTheRootInAnyCaseAndPrefersZ) {
    CMWZORExtrude e;
    ASSERT_TRUE(e.ReadVericut(write(VericutXmlWriter::Sweep(1, 2)
                                        .Name("SWEEP")
                                        .Root("VericutData")
                                        .Pt(1, 2, "Z")
                                        .Raw("<PT><X>3</X><Y>4</Y><Z>5</Z></PT>")
                                        .Raw("<pt><x>6</x></pt>")  // no second coordinate: keeps 5
                                        .Raw("<Note>ignored</Note>")
                                        .Text())
                                  .c_str(),
                              1, 1));
    EXPECT_EQ(segments_of(e), (Segs{L(1, 2), L(3, 5), L(6, 5), L(1, 2)}));
    EXPECT_EQ(std::make_pair(e.m_zMin, e.m_zMax), std::make_pair(1.0, 2.0));
}

TEST_F(ForeignProfile, VericutOddDocumentsReadWithoutCrashing) {
    const struct {
        const char* what;
        std::string xml;
        bool turned, read;
        Segs expected;
    } cases[] = {
        {"extrusion reader on a Sor", VericutXmlWriter::Sor(0.1).Pt(1, 1).Text(), false, false, {}},
        {"turned reader on a Sweep", VericutXmlWriter::Sweep(0, 1).Pt(1, 1).Text(), true, false, {}},
        {"other document", "<tools><tool name='Sweep'/></tools>", false, false, {}},
        // The arc starts at (0, 0); it is no vertex, so the chain closes to (5, 5), where it ends.
        {"arc before any point", VericutXmlWriter::Sweep(0, 1).Arc(0, 5).Pt(0, 10).Pt(5, 5).Text(), false, true,
         Segs{A(IO_CCLW, 0, 5, 0, 10), L(5, 5)}},
        {"no point at all", VericutXmlWriter::Sweep(0, 1).Arc(0, 5).Text(), false, true, Segs{}},
        {"not numbers", "<Sweep Zmin='low' Zmax='high'><PT><X>abc</X><Y>1</Y></PT><PT><X/><Y>x</Y></PT></Sweep>", false,
         true, Segs{L(0, 1), L(0, 0), L(0, 1)}},
        {"arc at the end", VericutXmlWriter::Sweep(0, 1).Pt(1, 1).Pt(2, 1).Arc(3, 3).Text(), false, true,
         Segs{L(1, 1), L(2, 1), L(1, 1)}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string path = write(c.xml);
        CMWZORExtrude e;
        CMWZORSweep s;
        EXPECT_EQ(c.turned ? s.ReadVericut(path.c_str(), 1, 1) : e.ReadVericut(path.c_str(), 1, 1), c.read);
        EXPECT_EQ(segments_of(e), c.turned ? Segs{} : c.expected);
        EXPECT_EQ(s.m_segments.GetSize() + (c.turned ? 0 : 0), 0);
        EXPECT_EQ(s.m_tolerance, 0.005);
        EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name(zor::kVericutHolder), nullptr);
    }
}

TEST_F(ForeignProfile, VericutPlainText) {
    CMWZORExtrude e;
    ASSERT_TRUE(e.ReadVericut(write(VericutTextWriter::Extrusion("-1.5", "4\tignored")
                                        .Point(0, 0)
                                        .Raw("")
                                        .Raw("7")  // one field: skipped
                                        .Raw("  10   0   extra")
                                        .Point(10, 10)
                                        .Text())
                                  .c_str(),
                              2, 1));
    const double f = 0.03937007874015748;
    EXPECT_EQ(std::make_pair(e.m_zMin, e.m_zMax), std::make_pair(-1.5 * f, 4 * f));
    EXPECT_EQ(segments_of(e), (Segs{L(0, 0), L(10 * f, 0), L(10 * f, 10 * f), L(0, 0)}));
    // Line 5 is already a point of a turned profile; an exponent puts a float into the low half of x, which had
    // the bits of 2.0; a line of more than 80 characters arrives in pieces.
    CMWZORSweep s;
    ASSERT_TRUE(s.ReadVericut(
        write(VericutTextWriter::Sor("0.02").Point(2, 3).Raw("1e1 2").Raw("5 6" + std::string(77, ' ') + "7 8").Text())
            .c_str(),
        1, 1));
    EXPECT_EQ(s.m_tolerance, 0.02);
    EXPECT_EQ(segments_of(s), (Segs{L(2, 3), L(with_single_in_low_half(2.0, 10.0f), 2), L(5, 6), L(7, 8), L(2, 3)}));
    // Shorter than the header: refused, after the Z range was read and scaled.
    CMWZORExtrude four;
    four.SetZValues(3, 3);
    EXPECT_FALSE(four.ReadVericut(write("a\nb\nc\n2\n").c_str(), 1, 2));
    EXPECT_EQ(std::make_pair(four.m_zMin, four.m_zMax), std::make_pair(2 * 25.4, 3 * 25.4));
    CMWZORSweep three;
    EXPECT_FALSE(three.ReadVericut(write("a\nb\nc\n").c_str(), 1, 1) ||
                 three.ReadVericut(dir.file("no").c_str(), 1, 1));
    EXPECT_EQ(four.m_segments.GetSize() + three.m_segments.GetSize(), 0);
}

TEST_F(ForeignProfile, VericutEveryPrefixReadsCleanly) {
    const std::string xml = VericutXmlWriter::Sweep(0, 2).Pt(0, 0).Pt(10, 0).Arc(10, 5, "CW").Pt(10, 10).Text();
    const std::string text = VericutTextWriter::Extrusion("0", "2").Point(0, 0).Point(10, 0).Text();
    for (const std::string& whole : {xml, text}) {
        for (size_t n = 0; n < whole.size(); ++n) {
            const std::string prefix = whole.substr(0, n);
            CMWZORExtrude e;
            const bool read = e.ReadVericut(write(prefix).c_str(), 1, 1);
            // A prefix that is no XML falls back to plain text, which needs five lines.
            const long lines = std::count(prefix.begin(), prefix.end(), '\n') + (n > 0 && prefix.back() != '\n');
            EXPECT_TRUE(lines >= 5 || !read) << n;
            EXPECT_LE(e.m_segments.GetSize(), 6) << n;
        }
    }
}

TEST_F(ForeignProfile, MachineWorks) {
    // An extrusion takes attributes by position, is left open, and its Z range holds the last point.
    CMWZORExtrude e;
    e.SetZValues(-5, 5);
    ASSERT_TRUE(e.ReadMachineWorksExt(
        write(MachineWorksWriter(1, 2).Point(3, 4).Child({"7", "8", "9", "10"}).Child({"11"}).Point(5, 6.5).Text())
            .c_str()));
    EXPECT_EQ(segments_of(e), (Segs{L(1, 2), L(3, 4), L(7, 8), L(11, 0), L(5, 6.5)}));
    EXPECT_EQ(std::make_pair(e.m_zMin, e.m_zMax), std::make_pair(5.0, 6.5));
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name(zor::kMachineWorksHolder), nullptr);
    // A rotation is always closed back to its start; a child without two attributes is a clockwise arc.
    CMWZORSweep s;
    ASSERT_TRUE(s.ReadMachineWorksRot(
        write(MachineWorksWriter(0, 10).Arc(0, 0, 10, 0).Child({"1", "2", "3"}).Child({}).Point(0, 10).Text())
            .c_str()));
    EXPECT_EQ(segments_of(s), (Segs{L(0, 10), A(IO_CLW, 0, 0, 10, 0), A(IO_CLW, 1, 2, 3, 0), A(IO_CLW, 0, 0, 0, 0),
                                    L(0, 10), L(0, 10)}));
    for (const std::string& text : {std::string("profile 1 2\n"), std::string("<doc><element a='1' b='2'/></doc>"),
                                    std::string("<doc><profile x='left' y=''/></doc>")}) {
        SCOPED_TRACE(text);
        CMWZORExtrude ext;
        CMWZORSweep rot;
        EXPECT_TRUE(ext.ReadMachineWorksExt(write(text).c_str()) && rot.ReadMachineWorksRot(write(text).c_str()) &&
                    ext.ReadMachineWorksExt(dir.file("missing").c_str()));
        EXPECT_EQ(segments_of(ext), (Segs{L(0, 0), L(0, 0)}));
        EXPECT_EQ(segments_of(rot), (Segs{L(0, 0), L(0, 0)}));
    }
}

// Reads text into both profile classes (one body) and checks that they agree.
Segs read_sirius(const TempDir& dir, const std::string& text, unsigned fileUnit = 1) {
    const std::string path = dir.write("profile.sir", text);
    CMWZORExtrude e;
    CMWZORSweep s;
    EXPECT_TRUE(e.ReadSirius(path.c_str(), 1, fileUnit) && s.ReadSirius(path.c_str(), 1, fileUnit));
    EXPECT_EQ(segments_of(e), segments_of(s));
    return segments_of(s);
}

TEST(SiriusProfile, ClosesOnlyAProfileThatEndsAwayFromItsStart) {
    TempDir dir;
    const struct {
        Point3 end;
        Segs expected;
    } cases[] = {
        {{10, 5, 2}, {L(0, 0, 1), L(10, 0, 1), L(10, 5, 2), L(0, 0, 1)}},
        {{0, 0.000001, 1}, {L(0, 0, 1), L(10, 0, 1), L(0, 0.000001, 1)}},
        {{0, 0, 2}, {L(0, 0, 1), L(10, 0, 1), L(0, 0, 2), L(0, 0, 1)}},  // z counts too
    };
    for (const auto& c : cases)
        EXPECT_EQ(read_sirius(dir, SiriusWriter().Line({0, 0, 1}, {10, 0, 1}).Line({10, 0, 1}, c.end).Text()),
                  c.expected);
}

TEST(SiriusProfile, DirectionWordsDecideTheArcAndUnitsScaleEveryPoint) {
    TempDir dir;
    for (const char* word : {"CLW", "clw", "CCLW", " Cclw ", "CW", ""}) {
        SCOPED_TRACE(word);
        const std::string w = word;
        const Seg arc = w.find_first_of("Ll") == std::string::npos      ? L(10, 0)
                        : w.find_first_of("Cc", 1) == std::string::npos ? A(IO_CLW, 5, 0, 10, 0)
                                                                        : A(IO_CCLW, 5, 0, 10, 0);
        EXPECT_EQ(read_sirius(dir, SiriusWriter().Arc({0, 0, 0}, {10, 0, 0}, {5, 0, 0}, word).Text()),
                  (Segs{L(0, 0), arc, L(0, 0)}));
    }
    const double k = 25.4;
    EXPECT_EQ(
        read_sirius(dir, SiriusWriter().Line({1, 2, 3}, {4, 5, 6}).Arc({4, 5, 6}, {1, 2, 3}, {2, 2, 2}, "CLW").Text(),
                    2),
        (Segs{L(1 * k, 2 * k, 3 * k), L(4 * k, 5 * k, 6 * k), A(IO_CLW, 2 * k, 2 * k, 1 * k, 2 * k, 2 * k, 3 * k)}));
}

TEST(SiriusProfile, SkipsLinesOutsideTheGrammar) {
    TempDir dir;
    EXPECT_EQ(read_sirius(dir, SiriusWriter()
                                   .Raw("")
                                   .Raw("TITLE = profile (1,2,3,4,5,6)")
                                   .Raw("LINE = L1 1,2,3,4,5,6)")
                                   .Raw("LINE = L1 (1,2,3,4,5,6")
                                   .Raw("LINE (1,2,3,4,5,6)")
                                   .Raw("  line\t= L1 (0,0,0,1,0,0)  trailing")
                                   .Raw(std::string(1000, 'x'))
                                   .Raw("LINE = " + std::string(990, ' ') + "(1,1,1,2,2,2)")
                                   .Raw("ARC=(1,0,0,0,1,0,0,0,0,CCLW)")
                                   .Text()),
              (Segs{L(0, 0), L(1, 0), A(IO_CCLW, 0, 0, 0, 1), L(0, 0)}));
    // A first line that supplies nothing leaves no start point to close to; a short line takes its missing values
    // from the line before.
    EXPECT_EQ(read_sirius(dir, SiriusWriter().Raw("LINE = L1 (a,b)").Line({0, 0, 0}, {5, 0, 0}).Text()),
              (Segs{L(5, 0)}));
    EXPECT_EQ(read_sirius(dir, SiriusWriter().Line({0, 0, 0}, {5, 0, 0}).Raw("LINE = L2 (5,0,0,5,7)").Text()),
              (Segs{L(0, 0), L(5, 0), L(5, 7), L(0, 0)}));
    EXPECT_EQ(read_sirius(dir, ""), Segs{});
    EXPECT_EQ(read_sirius(dir, "LINE = L1 ()\n"), Segs{});
    CMWZORExtrude e;
    CMWZORSweep s;
    EXPECT_FALSE(e.ReadSirius(dir.file("missing").c_str(), 1, 1) || s.ReadSirius(dir.file("missing").c_str(), 1, 1));
}

TEST(ForeignProfileSource, TellsEachSourceApart) {
    TempDir dir;
    const std::string examples = std::string(ZOR_EXAMPLES_DIR) + "/foreign/";
    const std::pair<std::string, const char*> cases[] = {
        {dir.write("a", VericutXmlWriter::Sweep(0, 1).Root("Model").Pt(0, 0).Text()), "vericut"},
        {dir.write("b", VericutXmlWriter::Sor(0.1).Name("SOR").Pt(0, 0).Text()), "vericut-sor"},
        {dir.write("c", VericutTextWriter::Extrusion("0", "5").Point(0, 0).Point(1, 0).Text()), "vericut"},
        {dir.write("d", VericutTextWriter::Sor("0.1").Point(0, 0).Point(1, 0).Text()), "vericut-sor"},
        {dir.write("e", MachineWorksWriter(0, 0).Point(1, 0).Point(1, 1).Text()), "machineworks-ext"},
        {dir.write("f", MachineWorksWriter(0, 0).Point(1, 0).Arc(0, 0, 0, 1).Text()), "machineworks-rot"},
        {dir.write("g", SiriusWriter().Raw("* header").Line({0, 0, 0}, {1, 0, 0}).Text()), "sirius"},
        {dir.write("h", SiriusWriter().Arc({0, 0, 0}, {1, 0, 0}, {0.5, 0, 0}, "CLW").Text()), "sirius"},
        {dir.write("i", ProfileFileWriter::Extrude(0, 1, 1).Line(0, 0, 0).Line(1, 0, 0).Text()), ""},
        {dir.write("j", "<tools><tool/></tools>"), ""},
        {dir.write("k", "a\nb\nc\n"), ""},
        {dir.file("missing"), ""},
        {examples + "vericut-sweep.xml", "vericut"},
        {examples + "vericut-sweep.txt", "vericut"},
        {examples + "vericut-sor.xml", "vericut-sor"},
        {examples + "machineworks-ext.xml", "machineworks-ext"},
        {examples + "machineworks-rot.xml", "machineworks-rot"},
        {examples + "sirius.txt", "sirius"},
        {examples + "vericut-cube.pol", ""},
    };
    for (const auto& [path, source] : cases) EXPECT_EQ(zor::detect_profile_source(path.c_str()), source) << path;
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name("detect"), nullptr);  // detection leaves no document held
}

}  // namespace
