#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "profile/MWZORProfile.h"
#include "profile/ProfileTestUtil.h"
#include "support/ProfileFileWriter.h"
#include "support/TempDir.h"

namespace {

using namespace zortest;

void fill_sample(CMWZORSegmentArray& list) {
    list.AddPoint(0, 0, 0);
    list.AddPoint(10, 0, 0);
    list.AddArc(10, 5, 0, 10, 10, 0, IO_CCLW);
    list.AddArc(5, 10, 0, 0.125, 10, 0, IO_CLW);
    list.AddPoint(0, 0, 0);
}

std::string sample_text(ProfileFileWriter header) {
    return header.Line(0, 0, 0)
        .Line(10, 0, 0)
        .Arc(false, 10, 5, 10, 10)
        .Arc(true, 5, 10, 0.125, 10)
        .Line(0, 0, 0)
        .Text();
}

TEST(NativeProfile, WritesExactTextAndReadsItBackInBothUnits) {
    TempDir dir;
    for (int unit : {1, 2}) {
        SCOPED_TRACE(unit);
        CMWZORExtrude e;
        CMWZORSweep s;
        for (CMWZORSegmentArray* list : {static_cast<CMWZORSegmentArray*>(&e), static_cast<CMWZORSegmentArray*>(&s)}) {
            list->SetUnit(unit);
            list->m_tolerance = 0.0125;
            list->m_version = 9;  // not written: files always say 1
            fill_sample(*list);
        }
        const std::string ep = dir.file("e.ext"), sp = dir.file("s.swp");
        ASSERT_TRUE(e.WriteFile(ep.c_str(), -2.5, 10));
        ASSERT_TRUE(s.WriteFile(sp.c_str()));
        EXPECT_EQ(read_file(ep), sample_text(ProfileFileWriter::Extrude(-2.5, 10, unit, 0.0125)));
        EXPECT_EQ(read_file(sp), sample_text(ProfileFileWriter::Sweep(unit, 0.0125)));
        double z0 = 0, z1 = 0;
        e.GetZValues(&z0, &z1);
        EXPECT_EQ(std::make_pair(z0, z1), std::make_pair(-2.5, 10.0));

        CMWZORExtrude eb;
        CMWZORSweep sb;
        ASSERT_TRUE(eb.ResadFile(ep.c_str(), static_cast<unsigned>(unit)));
        ASSERT_TRUE(sb.ResadFile(sp.c_str(), static_cast<unsigned>(unit)));
        EXPECT_EQ(std::make_pair(eb.m_zMin, eb.m_zMax), std::make_pair(-2.5, 10.0));
        for (CMWZORSegmentArray* back :
             {static_cast<CMWZORSegmentArray*>(&eb), static_cast<CMWZORSegmentArray*>(&sb)}) {
            EXPECT_EQ(segments_of(*back), segments_of(e));
            EXPECT_EQ(back->GetUnit(), unit);
            EXPECT_EQ(back->m_version, 1);
            EXPECT_EQ(back->m_tolerance, 0.0125);
        }
    }
}

TEST(NativeProfile, ConvertsUnitsButNeverTheTolerance) {
    TempDir dir;
    const struct {
        int fileUnit;
        unsigned wanted;
        double factor;
    } cases[] = {{1, 1, 1.0}, {2, 1, 25.4}, {1, 2, 1 / 25.4}, {2, 2, 1.0}, {1, 0, 1.0}, {0, 2, 1.0}, {3, 1, 1.0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.fileUnit) + " -> " + std::to_string(c.wanted));
        CMWZORExtrude e;
        ASSERT_TRUE(e.ResadFile(
            dir.write("m.ext",
                      ProfileFileWriter::Extrude(1, 2, c.fileUnit, 0.01).Line(1, 2, 3).Arc(true, 4, 5, 6, 7).Text())
                .c_str(),
            c.wanted));
        const double f = e.m_scale;
        EXPECT_DOUBLE_EQ(f, c.factor);
        EXPECT_EQ(e.GetUnit(), static_cast<int>(c.wanted));
        EXPECT_EQ(e.m_tolerance, 0.01);
        EXPECT_EQ(std::make_pair(e.m_zMin, e.m_zMax), std::make_pair(1 * f, 2 * f));
        EXPECT_EQ(segments_of(e), (Segs{L(1 * f, 2 * f, 3 * f), A(IO_CLW, 4 * f, 5 * f, 6 * f, 7 * f)}));
    }
    // A later read in millimetres keeps the scale of an earlier one in inches, and appends.
    CMWZORSweep s;
    ASSERT_TRUE(s.ResadFile(dir.write("in.swp", ProfileFileWriter::Sweep(2).Line(1, 0, 0).Text()).c_str(), 1));
    ASSERT_TRUE(s.ResadFile(dir.write("mm.swp", ProfileFileWriter::Sweep(1).Line(1, 0, 0).Text()).c_str(), 1));
    EXPECT_EQ(segments_of(s), (Segs{L(25.4, 0, 0), L(25.4, 0, 0)}));
}

TEST(NativeProfile, SegmentLinesMatchByPrefixAndReuseEarlierNumbers) {
    const struct {
        std::vector<std::string> lines;
        Segs expected;
    } cases[] = {
        {{"line < 1 2 3 >", "   LINE<4 5 6>   ", "LINEAR < 7 8 9 >", "cclw < 1 1 0 0 0 -1 2 2 0 >",
          "CLW < 3 3 0 0 0 1 4 4 0 >", "# a comment", "", "ARC < 1 2 3 >"},
         // "LINEAR" is a line whose pattern stops at "A": the numbers before are reused. Axes follow the keyword.
         {L(1, 2, 3), L(4, 5, 6), L(4, 5, 6), A(IO_CCLW, 1, 1, 2, 2), A(IO_CLW, 3, 3, 4, 4)}},
        {{"LINE < >", "LINE < 1 2 3 >", "LINE < 7 >", "CLW < 5 6 0 0 0 -1 8 >", "LINE < 9 x 1 >", "CLWX < 1 1 1 >"},
         // Nothing read yet gives zeros; lines and arc ends share their numbers; a letter stops the line.
         {L(0, 0, 0), L(1, 2, 3), L(7, 2, 3), A(IO_CLW, 5, 6, 8, 2, 0, 3), L(9, 2, 3), A(IO_CLW, 5, 6, 9, 2, 0, 3)}},
    };
    TempDir dir;
    for (const auto& c : cases) {
        ProfileFileWriter w = ProfileFileWriter::Sweep(1);
        for (const std::string& line : c.lines) w.Raw(line);
        CMWZORSweep s;
        ASSERT_TRUE(s.ResadFile(dir.write("p.swp", w.Text()).c_str(), 1));
        EXPECT_EQ(segments_of(s), c.expected);
    }
}

TEST(NativeProfile, HeaderIsTakenByPosition) {
    TempDir dir;
    // Without the magic every header line moves up one: no Z range, no unit, and "x" is the tolerance.
    std::string text = ProfileFileWriter::Extrude(1, 2, 2).Raw("x").Line(1, 0, 0).Text();
    CMWZORExtrude noMagic;
    ASSERT_TRUE(noMagic.ResadFile(dir.write("a.ext", text.substr(text.find('\n') + 1)).c_str(), 1));
    EXPECT_EQ(noMagic.m_zMin, 0.0);
    EXPECT_EQ(noMagic.m_scale, 1.0);
    EXPECT_EQ(segments_of(noMagic), (Segs{L(1, 0, 0)}));

    // An extrusion without a Z line takes its first segment line as the tolerance.
    text = ProfileFileWriter::Sweep(2).Line(1, 0, 0).Line(2, 0, 0).Text();
    CMWZORExtrude noZ;
    ASSERT_TRUE(noZ.ResadFile(dir.write("b.ext", "KOLP EXTRUDE FILE" + text.substr(text.find('\n'))).c_str(), 1));
    EXPECT_EQ(noZ.GetUnit(), 1);
    EXPECT_EQ(noZ.m_scale, 1.0);
    EXPECT_EQ(segments_of(noZ), (Segs{L(2, 0, 0)}));

    // Headers in the wrong order leave their fields unchanged.
    CMWZORSweep swapped;
    swapped.m_tolerance = 0.5;
    text = "KOLP SWEEP FILE\nVersion < 4 >\nToler < 0.1 >\nUnit < 2 >\nLINE < 1 0 0 >\n";
    ASSERT_TRUE(swapped.ResadFile(dir.write("c.swp", text).c_str(), 1));
    EXPECT_EQ(swapped.m_version, 4);
    EXPECT_EQ(swapped.m_tolerance, 0.5);
    EXPECT_EQ(swapped.m_scale, 1.0);
    EXPECT_EQ(segments_of(swapped), (Segs{L(1, 0, 0)}));

    for (const char* bytes : {"", "LINE < 1 2 3 >\n", "KOLP SWEEP FILE\nVersion < 1 >\n"}) {
        CMWZORSweep s;
        ASSERT_TRUE(s.ResadFile(dir.write("d.swp", bytes).c_str(), 2));
        EXPECT_EQ(s.m_segments.GetSize(), 0);
        EXPECT_EQ(s.GetUnit(), 2);
        EXPECT_DOUBLE_EQ(s.m_scale, 1 / 25.4);  // the fresh unit 1 counts as the file's
    }
}

TEST(NativeProfile, LinesAreSplitAtNinetyNineBytes) {
    const std::string keep = "LINE < 7 8 9 >";
    const struct {
        std::string line;
        Segs expected;
    } cases[] = {
        {std::string(99, 'X') + keep, {L(7, 8, 9)}},                      // the next piece starts with the keyword
        {std::string(98, 'X') + keep, {}},                                // the keyword is cut
        {"LINE < 1 2 " + std::string(85, ' ') + "3 >", {L(1, 2, 3)}},     // 99 bytes: whole
        {"LINE < 1 2 3." + std::string(200, '0') + "1 >", {L(1, 2, 3)}},  // the rest is ignored
    };
    TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line.size());
        CMWZORSweep s;
        ASSERT_TRUE(s.ResadFile(dir.write("l.swp", ProfileFileWriter::Sweep(1).Raw(c.line).Text()).c_str(), 1));
        EXPECT_EQ(segments_of(s), c.expected);
    }
}

TEST(NativeProfile, EveryPrefixAndTrailingGarbageReadCleanly) {
    TempDir dir;
    const std::string text = sample_text(ProfileFileWriter::Sweep(1));
    for (size_t n = 0; n <= text.size(); ++n) {
        CMWZORSweep s;
        ASSERT_TRUE(s.ResadFile(dir.write("p.swp", text.substr(0, n)).c_str(), 1)) << n;
        ASSERT_LE(s.m_segments.GetSize(), 5) << n;
    }
    CMWZORSweep garbage;
    ASSERT_TRUE(garbage.ResadFile(dir.write("g.swp", text + std::string("\0\xff LINE <<<\n", 12)).c_str(), 1));
    EXPECT_EQ(garbage.m_segments.GetSize(), 5);
}

TEST(NativeProfile, UnopenableFilesFail) {
    TempDir dir;
    const std::string missing = dir.file("no/such/file");
    CMWZORExtrude e;
    CMWZORSweep s;
    e.SetZValues(1, 2);
    EXPECT_FALSE(e.ResadFile(missing.c_str(), 1) || e.WriteFile(missing.c_str(), 5, 6));
    EXPECT_FALSE(s.ResadFile(missing.c_str(), 1) || s.WriteFile(missing.c_str()));
    double z0 = 0, z1 = 0;
    e.GetZValues(nullptr, &z1);
    e.GetZValues(&z0, nullptr);
    EXPECT_EQ(std::make_pair(z0, z1), std::make_pair(1.0, 2.0));
}

TEST(NativeProfile, CopyRebuildsSegmentsAndScalesAgain) {
    CMWZORExtrude source, target;
    source.m_scale = 2.0;
    source.m_tolerance = 0.1;
    source.m_unit = 2;
    source.m_version = 5;
    source.SetZValues(-1, 3);
    source.AddPoint(1, 0, 0);  // held as 2
    source.AddArc(1, 1, 0, 0, 1, 0, IO_CLW);
    target.AddPoint(9, 9, 9);
    target.GetNext();
    CMWZORSegment* old = target.m_segments[0];
    source.Copy(&target);
    source.Copy(nullptr);
    EXPECT_EQ(std::make_pair(target.m_zMin, target.m_zMax), std::make_pair(-1.0, 3.0));
    EXPECT_EQ(target.m_tolerance, 0.1);
    EXPECT_EQ(target.m_scale, 2.0);
    EXPECT_EQ(target.GetUnit(), 2);
    EXPECT_EQ(target.m_version, 5);
    EXPECT_EQ(target.m_cursor, 1);
    EXPECT_EQ(segments_of(target), (Segs{L(4, 0, 0), A(IO_CLW, 4, 4, 0, 4)}));  // scaled a second time
    EXPECT_NE(target.m_segments[0], source.m_segments[0]);
    EXPECT_EQ(segments_of(source), (Segs{L(2, 0, 0), A(IO_CLW, 2, 2, 0, 2)}));
    EXPECT_EQ(source.m_cursor, 0);
    EXPECT_EQ(old->m_points[0]->x, 9);  // the target's old segments stay alive for anyone who held them

    // A null slot copies nothing, but the cursor still steps for it; copying into itself empties the list.
    CMWZORSweep one, into;
    one.AddPoint(1, 1, 1);
    one.m_segments.Add(nullptr);
    one.Copy(&into);
    EXPECT_EQ(into.m_segments.GetSize(), 1);
    EXPECT_EQ(into.m_cursor, 1);
    CMWZORSegment* kept = into.m_segments[0];
    into.Copy(&into);
    EXPECT_EQ(into.m_segments.GetSize(), 0);
    EXPECT_EQ(kept->m_points[0]->x, 1);
}

}  // namespace
