#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
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
    std::uint64_t bits, single = 0;
    std::memcpy(&bits, &before, 8);
    std::memcpy(&single, &value, 4);  // little-endian
    bits = (bits & 0xFFFFFFFF00000000ull) | single;
    std::memcpy(&before, &bits, 8);
    return before;
}

class ForeignProfile : public ::testing::Test {
protected:
    void TearDown() override { zor::reset_xml_holders(); }
    std::string write(const std::string& text) { return dir.write("p" + std::to_string(++files), text); }
    template <class Profile>
    bool vericut(Profile& profile, const std::string& text, unsigned unit = 1, unsigned fileUnit = 1) {
        return profile.ReadVericut(write(text).c_str(), unit, fileUnit);
    }
    // Reads a Sirius profile into both classes (one body), checks that they agree and gives the segments.
    Segs sirius(const std::string& text, unsigned fileUnit = 1) {
        const std::string path = write(text);
        CMWZORExtrude e;
        CMWZORSweep s;
        EXPECT_TRUE(e.ReadSirius(path.c_str(), 1, fileUnit) && s.ReadSirius(path.c_str(), 1, fileUnit));
        EXPECT_EQ(segments_of(e), segments_of(s));
        return segments_of(s);
    }
    TempDir dir;
    int files = 0;
};

TEST_F(ForeignProfile, VericutClosesOnFileValuesAndScalesTheZRange) {
    CMWZORExtrude open, e;
    CMWZORSweep closed;
    ASSERT_TRUE(vericut(open, VericutXmlWriter::Sweep(0, 5).Pt(0, 0).Pt(10, 0).Pt(10, 10).Text()));
    EXPECT_EQ(segments_of(open), (Segs{L(0, 0), L(10, 0), L(10, 10), L(0, 0)}));
    ASSERT_TRUE(vericut(closed, VericutXmlWriter::Sor(0.01).Pt(0, 0).Pt(10, 0).Pt(10, 10).Pt(0, 1e-6).Text()));
    EXPECT_EQ(segments_of(closed), (Segs{L(0, 0), L(10, 0), L(10, 10), L(0, 1e-6)}));
    EXPECT_EQ(closed.m_tolerance, 0.01);
    // Closed on file values, 1e-6 apart, not on scaled ones; an arc without a direction gets the computed one.
    const auto xml = VericutXmlWriter::Sweep(0, 2).Pt(0, 0).Pt(10, 0).Arc(10, 5, "", "", 99).Pt(10, 10).Pt(0, 1e-6);
    ASSERT_TRUE(vericut(e, xml.Text(), 1, 2));
    const double k = 25.4;
    EXPECT_EQ(std::make_tuple(e.m_zMin, e.m_zMax, e.GetUnit()), std::make_tuple(0.0, 2 * k, 1));
    EXPECT_EQ(segments_of(e), (Segs{L(0, 0), L(10 * k, 0), A(IO_CCLW, 10 * k, 5 * k, 10 * k, 10 * k), L(0, 1e-6 * k)}));
}

TEST_F(ForeignProfile, VericutDirectionSurvivesFromArcToArc) {
    const struct {
        std::string attribute, child;
        int first, second;
    } cases[] = {
        {"", "", IO_CCLW, IO_CCLW},
        {"cw", "", IO_CLW, IO_CLW},      // lower-case "cw" is inherited by the next arc
        {"CCW", "Cw", IO_CLW, IO_CLW},   // the child wins over the attribute
        {"left", "", IO_CCLW, IO_CCLW},  // an unknown word is recomputed
    };
    for (const auto& c : cases) {
        CMWZORSweep s;
        const auto xml = VericutXmlWriter::Sor(0.005).Pt(10, 0).Arc(10, 5, c.attribute, c.child).Pt(10, 10);
        ASSERT_TRUE(vericut(s, VericutXmlWriter(xml).Arc(10, 15).Pt(10, 20).Text()));
        EXPECT_EQ(segments_of(s), (Segs{L(10, 0), A(c.first, 10, 5, 10, 10), A(c.second, 10, 15, 10, 20), L(10, 0)}))
            << c.attribute << "/" << c.child;
    }
}

TEST_F(ForeignProfile, VericutOddDocuments) {
    CMWZORExtrude e;
    const auto xml = VericutXmlWriter::Sweep(1, 2).Name("SWEEP").Root("Data").Pt(1, 2, "Z").Raw("<Note>ignored</Note>");
    // Found below the root in any case; "Z" wins over "Y"; a point without a second coordinate keeps the last.
    ASSERT_TRUE(
        vericut(e, VericutXmlWriter(xml).Raw("<PT><X>3</X><Y>4</Y><Z>5</Z></PT>").Raw("<pt><x>6</x></pt>").Text()));
    EXPECT_EQ(segments_of(e), (Segs{L(1, 2), L(3, 5), L(6, 5), L(1, 2)}));
    EXPECT_EQ(std::make_pair(e.m_zMin, e.m_zMax), std::make_pair(1.0, 2.0));
    const struct {
        std::string xml;
        bool read;
        Segs expected;
    } cases[] = {
        {VericutXmlWriter::Sor(0.1).Pt(1, 1).Text(), false, {}},
        {"<tools><tool name='Sweep'/></tools>", false, {}},
        // The arc starts at (0, 0); it is no vertex, so the chain closes to (5, 5), where it ends.
        {VericutXmlWriter::Sweep(0, 1).Arc(0, 5).Pt(0, 10).Pt(5, 5).Text(), true, {A(IO_CCLW, 0, 5, 0, 10), L(5, 5)}},
        {VericutXmlWriter::Sweep(0, 1).Arc(0, 5).Text(), true, {}},
        {"<Sweep Zmin='a' Zmax='b'><PT><X>abc</X><Y>1</Y></PT><PT><X/><Y>x</Y></PT></Sweep>",
         true,
         {L(0, 1), L(0, 0), L(0, 1)}},
        {VericutXmlWriter::Sweep(0, 1).Pt(1, 1).Pt(2, 1).Arc(3, 3).Text(), true, {L(1, 1), L(2, 1), L(1, 1)}},
    };
    for (const auto& c : cases) {
        CMWZORExtrude odd;
        EXPECT_EQ(vericut(odd, c.xml), c.read) << c.xml;
        EXPECT_EQ(segments_of(odd), c.expected) << c.xml;
        EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name(zor::kVericutHolder), nullptr);
    }
    CMWZORSweep s;
    EXPECT_FALSE(vericut(s, VericutXmlWriter::Sweep(0, 1).Pt(1, 1).Text()));
    EXPECT_EQ(s.m_tolerance, 0.005);
}

TEST_F(ForeignProfile, VericutPlainText) {
    CMWZORExtrude e, four;
    const auto text = VericutTextWriter::Extrusion("-1.5", "4\tignored").Point(0, 0).Raw("").Raw("7");
    ASSERT_TRUE(vericut(e, VericutTextWriter(text).Raw("  10   0   extra").Point(10, 10).Text(), 2, 1));
    const double f = 0.03937007874015748;
    EXPECT_EQ(std::make_pair(e.m_zMin, e.m_zMax), std::make_pair(-1.5 * f, 4 * f));
    EXPECT_EQ(segments_of(e), (Segs{L(0, 0), L(10 * f, 0), L(10 * f, 10 * f), L(0, 0)}));  // "7" alone is skipped
    // Line 5 is already a point of a turned profile; an exponent puts a float into the low half of x (which had
    // the bits of 2.0); a line of more than 80 characters arrives in pieces.
    CMWZORSweep s, three;
    ASSERT_TRUE(vericut(
        s, VericutTextWriter::Sor("0.02").Point(2, 3).Raw("1e1 2").Raw("5 6" + std::string(77, ' ') + "7 8").Text()));
    EXPECT_EQ(s.m_tolerance, 0.02);
    EXPECT_EQ(segments_of(s), (Segs{L(2, 3), L(with_single_in_low_half(2.0, 10.0f), 2), L(5, 6), L(7, 8), L(2, 3)}));
    EXPECT_NE(with_single_in_low_half(2.0, 10.0f), 10.0);
    // Shorter than the header: refused, after the Z range was read and scaled.
    four.SetZValues(3, 3);
    EXPECT_FALSE(vericut(four, "a\nb\nc\n2\n", 1, 2) || vericut(three, "a\nb\nc\n") || vericut(three, "", 1, 1));
    EXPECT_EQ(std::make_pair(four.m_zMin, four.m_zMax), std::make_pair(2 * 25.4, 3 * 25.4));
    EXPECT_FALSE(three.ReadVericut(dir.file("missing").c_str(), 1, 1));
    EXPECT_EQ(four.m_segments.GetSize() + three.m_segments.GetSize(), 0);
}

TEST_F(ForeignProfile, VericutEveryPrefixReadsCleanly) {
    const std::string xml = VericutXmlWriter::Sweep(0, 2).Pt(0, 0).Pt(10, 0).Arc(10, 5, "CW").Pt(10, 10).Text();
    for (const std::string& whole : {xml, VericutTextWriter::Extrusion("0", "2").Point(0, 0).Point(10, 0).Text()}) {
        for (size_t n = 0; n < whole.size(); ++n) {
            const std::string prefix = whole.substr(0, n);
            CMWZORExtrude e;
            const bool read = vericut(e, prefix);
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
    const auto ext = MachineWorksWriter(1, 2).Point(3, 4).Child({"7", "8", "9", "10"}).Child({"11"}).Point(5, 6.5);
    ASSERT_TRUE(e.ReadMachineWorksExt(write(ext.Text()).c_str()));
    EXPECT_EQ(segments_of(e), (Segs{L(1, 2), L(3, 4), L(7, 8), L(11, 0), L(5, 6.5)}));
    EXPECT_EQ(std::make_pair(e.m_zMin, e.m_zMax), std::make_pair(5.0, 6.5));
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name(zor::kMachineWorksHolder), nullptr);
    // A rotation is always closed back to its start; a child without two attributes is a clockwise arc.
    CMWZORSweep s;
    const auto rot = MachineWorksWriter(0, 10).Arc(0, 0, 10, 0).Child({"1", "2", "3"}).Child({}).Point(0, 10);
    ASSERT_TRUE(s.ReadMachineWorksRot(write(rot.Text()).c_str()));
    EXPECT_EQ(segments_of(s), (Segs{L(0, 10), A(IO_CLW, 0, 0, 10, 0), A(IO_CLW, 1, 2, 3, 0), A(IO_CLW, 0, 0, 0, 0),
                                    L(0, 10), L(0, 10)}));
    for (const char* text :
         {"profile 1 2\n", "<doc><element a='1' b='2'/></doc>", "<doc><profile x='a' y=''/></doc>"}) {
        CMWZORExtrude ext1;
        CMWZORSweep rot1;
        EXPECT_TRUE(ext1.ReadMachineWorksExt(write(text).c_str()) && rot1.ReadMachineWorksRot(write(text).c_str()) &&
                    ext1.ReadMachineWorksExt(dir.file("missing").c_str()));
        EXPECT_EQ(segments_of(ext1), (Segs{L(0, 0), L(0, 0)})) << text;
        EXPECT_EQ(segments_of(rot1), (Segs{L(0, 0), L(0, 0)})) << text;
    }
}

TEST_F(ForeignProfile, SiriusClosesAwayFromTheStartAndReadsDirectionWordsAndUnits) {
    const SiriusWriter base = SiriusWriter().Line({0, 0, 1}, {10, 0, 1});
    EXPECT_EQ(sirius(SiriusWriter(base).Line({10, 0, 1}, {10, 5, 2}).Text()),
              (Segs{L(0, 0, 1), L(10, 0, 1), L(10, 5, 2), L(0, 0, 1)}));
    EXPECT_EQ(sirius(SiriusWriter(base).Line({10, 0, 1}, {0, 1e-6, 1}).Text()),
              (Segs{L(0, 0, 1), L(10, 0, 1), L(0, 1e-6, 1)}));
    EXPECT_EQ(sirius(SiriusWriter(base).Line({10, 0, 1}, {0, 0, 2}).Text()),  // z counts too
              (Segs{L(0, 0, 1), L(10, 0, 1), L(0, 0, 2), L(0, 0, 1)}));
    const std::pair<std::vector<const char*>, Seg> words[] = {{{"CLW", "clw"}, A(IO_CLW, 5, 0, 10, 0)},
                                                              {{"CCLW", " Cclw "}, A(IO_CCLW, 5, 0, 10, 0)},
                                                              {{"CW", ""}, L(10, 0)}};
    for (const auto& [list, arc] : words) {
        for (const char* word : list) {
            const std::string text = SiriusWriter().Arc({0, 0, 0}, {10, 0, 0}, {5, 0, 0}, word).Text();
            EXPECT_EQ(sirius(text), (Segs{L(0, 0), arc, L(0, 0)})) << word;
        }
    }
    const double k = 25.4;
    EXPECT_EQ(sirius(SiriusWriter().Line({1, 2, 3}, {4, 5, 6}).Arc({4, 5, 6}, {1, 2, 3}, {2, 2, 2}, "CLW").Text(), 2),
              (Segs{L(k, 2 * k, 3 * k), L(4 * k, 5 * k, 6 * k), A(IO_CLW, 2 * k, 2 * k, k, 2 * k, 2 * k, 3 * k)}));
}

TEST_F(ForeignProfile, SiriusSkipsLinesOutsideTheGrammar) {
    SiriusWriter odd;
    for (const std::string& line :
         {std::string(), std::string("TITLE = profile (1,2,3,4,5,6)"), std::string("LINE = L1 1,2,3,4,5,6)"),
          std::string("LINE = L1 (1,2,3,4,5,6"), std::string("LINE (1,2,3,4,5,6)"), std::string(1000, 'x'),
          std::string("  line\t= L1 (0,0,0,1,0,0)  trailing"), "LINE = " + std::string(990, ' ') + "(1,1,1,2,2,2)",
          std::string("ARC=(1,0,0,0,1,0,0,0,0,CCLW)")})
        odd.Raw(line);
    EXPECT_EQ(sirius(odd.Text()), (Segs{L(0, 0), L(1, 0), A(IO_CCLW, 0, 0, 0, 1), L(0, 0)}));
    // A first line that supplies nothing leaves no start to close to; a short line reuses the values before.
    EXPECT_EQ(sirius(SiriusWriter().Raw("LINE = L1 (a,b)").Line({0, 0, 0}, {5, 0, 0}).Text()), (Segs{L(5, 0)}));
    EXPECT_EQ(sirius(SiriusWriter().Line({0, 0, 0}, {5, 0, 0}).Raw("LINE = L2 (5,0,0,5,7)").Text()),
              (Segs{L(0, 0), L(5, 0), L(5, 7), L(0, 0)}));
    EXPECT_EQ(sirius(""), Segs{});
    EXPECT_EQ(sirius("LINE = L1 ()\n"), Segs{});
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
        {dir.write("c", VericutTextWriter::Sor("0.1").Point(0, 0).Point(1, 0).Text()), "vericut-sor"},
        {dir.write("d", MachineWorksWriter(0, 0).Point(1, 0).Point(1, 1).Text()), "machineworks-ext"},
        {dir.write("e", MachineWorksWriter(0, 0).Point(1, 0).Arc(0, 0, 0, 1).Text()), "machineworks-rot"},
        {dir.write("f", SiriusWriter().Raw("* header").Arc({0, 0, 0}, {1, 0, 0}, {0.5, 0, 0}, "CLW").Text()), "sirius"},
        {dir.write("g", ProfileFileWriter::Extrude(0, 1, 1).Line(0, 0, 0).Line(1, 0, 0).Text()), ""},
        {dir.write("h", "<tools><tool/></tools>"), ""},
        {dir.write("i", "a\nb\nc\n"), ""},
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
