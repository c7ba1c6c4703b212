#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "profile/MWZORProfile.h"
#include "support/ProfileFileWriter.h"
#include "support/TempDir.h"

namespace {

using zortest::ProfileFileWriter;
using zortest::TempDir;

struct Seg {
    int type;
    double v[9];  // line: end; arc: centre, axis, end
};

std::vector<Seg> segments_of(const CMWZORSegmentArray& list) {
    std::vector<Seg> out;
    for (long long i = 0; i < list.m_segments.GetSize(); ++i) {
        const CMWZORSegment* s = list.m_segments[i];
        Seg seg{static_cast<int>(s->m_type), {}};
        for (long long p = 0; p < s->m_points.GetSize(); ++p) {
            seg.v[3 * p] = s->m_points[p]->x;
            seg.v[3 * p + 1] = s->m_points[p]->y;
            seg.v[3 * p + 2] = s->m_points[p]->z;
        }
        out.push_back(seg);
    }
    return out;
}

void expect_line(const CMWZORSegmentArray& list, long long i, double x, double y, double z) {
    SCOPED_TRACE(i);
    ASSERT_LT(i, list.m_segments.GetSize());
    const CMWZORSegment* s = list.m_segments[i];
    ASSERT_EQ(s->m_type, IO_LINE);
    EXPECT_NEAR(s->m_points[0]->x, x, 1e-9);
    EXPECT_NEAR(s->m_points[0]->y, y, 1e-9);
    EXPECT_NEAR(s->m_points[0]->z, z, 1e-9);
}

// A list exposing the readers' shared unit conversion.
struct Exposed : CMWZORSweep {
    using CMWZORSegmentArray::SetUnitConversion;
};

void fill_sample(CMWZORSegmentArray& list) {
    list.AddPoint(0, 0, 0);
    list.AddPoint(10, 0, 0);
    list.AddArc(10, 5, 0, 10, 10, 0, IO_CCLW);
    list.AddArc(5, 10, 0, 0.1234567, 10, 0, IO_CLW);
    list.AddPoint(0, 0, 0);
}

TEST(NativeProfile, ExtrusionAndSweepRoundTripInBothUnits) {
    TempDir dir;
    for (int unit : {1, 2}) {
        SCOPED_TRACE(unit);
        CMWZORExtrude extrude;
        extrude.SetUnit(unit);
        extrude.m_tolerance = 0.0125;
        extrude.m_version = 9;  // not written: files always say 1
        fill_sample(extrude);
        std::string path = dir.file("e" + std::to_string(unit) + ".ext");
        ASSERT_TRUE(extrude.WriteFile(path.c_str(), -2.5, 10));
        double z0 = 0, z1 = 0;
        extrude.GetZValues(&z0, &z1);
        EXPECT_EQ(z0, -2.5);
        EXPECT_EQ(z1, 10);

        CMWZORExtrude back;
        back.m_version = 0;
        ASSERT_TRUE(back.ResadFile(path.c_str(), static_cast<unsigned>(unit)));
        EXPECT_EQ(back.GetUnit(), unit);
        EXPECT_EQ(back.m_version, 1);
        EXPECT_DOUBLE_EQ(back.m_tolerance, 0.0125);
        back.GetZValues(&z0, &z1);
        EXPECT_EQ(z0, -2.5);
        EXPECT_EQ(z1, 10);
        std::vector<Seg> want = segments_of(extrude), got = segments_of(back);
        ASSERT_EQ(got.size(), want.size());
        for (size_t i = 0; i < want.size(); ++i) {
            EXPECT_EQ(got[i].type, want[i].type);
            for (int k = 0; k < 9; ++k) EXPECT_NEAR(got[i].v[k], want[i].v[k], 5e-7) << i << " " << k;
        }

        CMWZORSweep sweep;
        sweep.SetUnit(unit);
        fill_sample(sweep);
        std::string sweepPath = dir.file("s" + std::to_string(unit) + ".swp");
        ASSERT_TRUE(sweep.WriteFile(sweepPath.c_str()));
        EXPECT_EQ(zortest::read_file(sweepPath).rfind("KOLP SWEEP FILE\nVersion < 1 >\nUnit < ", 0), 0u);
        CMWZORSweep sweepBack;
        ASSERT_TRUE(sweepBack.ResadFile(sweepPath.c_str(), static_cast<unsigned>(unit)));
        EXPECT_EQ(segments_of(sweepBack).size(), want.size());
        EXPECT_EQ(sweepBack.GetUnit(), unit);
    }
}

TEST(NativeProfile, WrittenExtrusionFileIsExact) {
    TempDir dir;
    CMWZORExtrude e;
    e.AddPoint(0, 0, 0);
    e.AddPoint(10, 0, 0);
    e.AddArc(10, 5, 0, 10, 10, 0, IO_CCLW);
    e.AddPoint(0, 0, 0);
    std::string path = dir.file("a.ext");
    ASSERT_TRUE(e.WriteFile(path.c_str(), 0, 10));
    EXPECT_EQ(zortest::read_file(path),
              "KOLP EXTRUDE FILE\nVersion < 1 >\nZ < 0.000000 10.000000 >\nUnit < 1 >\nToler < 0.005000 >\n"
              "LINE < 0.000000 0.000000 0.000000 >\nLINE < 10.000000 0.000000 0.000000 >\n"
              "CCLW < 10.000000 5.000000 0.000000 0.000000 0.000000 1.000000 10.000000 10.000000 0.000000>\n"
              "LINE < 0.000000 0.000000 0.000000 >\n");
}

TEST(NativeProfile, UnitConversionMatrix) {
    TempDir dir;
    const struct {
        int fileUnit;
        unsigned wanted;
        double factor;
    } cases[] = {{1, 1, 1.0}, {2, 1, 25.4}, {1, 2, 1 / 25.4}, {2, 2, 1.0}, {1, 0, 1.0}, {0, 2, 1.0}, {3, 1, 1.0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.fileUnit) + " -> " + std::to_string(c.wanted));
        std::string path = dir.write(
            "m.ext", ProfileFileWriter::Extrude(1, 2, c.fileUnit, 0.01).Line(1, 2, 3).Arc(true, 4, 5, 6, 7).Text());
        CMWZORExtrude e;
        ASSERT_TRUE(e.ResadFile(path.c_str(), c.wanted));
        EXPECT_EQ(e.GetUnit(), static_cast<int>(c.wanted));
        EXPECT_DOUBLE_EQ(e.m_scale, c.factor);
        EXPECT_DOUBLE_EQ(e.m_tolerance, 0.01);  // never converted
        EXPECT_DOUBLE_EQ(e.m_zMin, 1 * c.factor);
        EXPECT_DOUBLE_EQ(e.m_zMax, 2 * c.factor);
        expect_line(e, 0, 1 * c.factor, 2 * c.factor, 3 * c.factor);
        const CMWZORSegment* arc = e.m_segments[1];
        EXPECT_DOUBLE_EQ(arc->m_points[0]->x, 4 * c.factor);
        EXPECT_DOUBLE_EQ(arc->m_points[1]->z, -1.0);
        EXPECT_DOUBLE_EQ(arc->m_points[2]->y, 7 * c.factor);
    }
}

TEST(NativeProfile, UnitConversionKeepsAnEarlierScale) {
    Exposed list;
    list.SetUnitConversion(3, 1);  // unfiltered unit; conversion from mm
    EXPECT_EQ(list.GetUnit(), 3);
    EXPECT_DOUBLE_EQ(list.m_scale, 1 / 25.4);
    list.SetUnitConversion(1, 2);
    EXPECT_DOUBLE_EQ(list.m_scale, 25.4);
    list.SetUnitConversion(1, 1);
    EXPECT_DOUBLE_EQ(list.m_scale, 25.4);
    list.SetUnitConversion(2, 5);
    EXPECT_DOUBLE_EQ(list.m_scale, 25.4);
    EXPECT_EQ(list.GetUnit(), 2);
}

TEST(NativeProfile, SecondReadAppendsAndKeepsTheScale) {
    TempDir dir;
    std::string inches = dir.write("in.swp", ProfileFileWriter::Sweep(2).Line(1, 0, 0).Text());
    std::string mm = dir.write("mm.swp", ProfileFileWriter::Sweep(1).Line(1, 0, 0).Text());
    CMWZORSweep s;
    ASSERT_TRUE(s.ResadFile(inches.c_str(), 1));
    ASSERT_TRUE(s.ResadFile(mm.c_str(), 1));
    ASSERT_TRUE(s.ResadFile(mm.c_str(), 1));
    ASSERT_EQ(s.m_segments.GetSize(), 3);
    for (int i = 0; i < 3; ++i) expect_line(s, i, 25.4, 0, 0);
}

TEST(NativeProfile, SegmentLinesAreMatchedByPrefixAfterUpperCasing) {
    TempDir dir;
    std::string text = ProfileFileWriter::Sweep(1)
                           .Raw("line < 1 2 3 >")
                           .Raw("   LINE<4 5 6>   ")
                           .Raw("LINEAR < 7 8 9 >")
                           .Raw("cclw < 1 1 0 0 0 -1 2 2 0 >")
                           .Raw("CLW < 3 3 0 0 0 1 4 4 0 >")
                           .Raw("# a comment")
                           .Raw("")
                           .Raw("ARC < 1 2 3 >")
                           .Text();
    CMWZORSweep s;
    ASSERT_TRUE(s.ResadFile(dir.write("p.swp", text).c_str(), 1));
    ASSERT_EQ(s.m_segments.GetSize(), 5);
    expect_line(s, 0, 1, 2, 3);
    expect_line(s, 1, 4, 5, 6);
    expect_line(s, 2, 4, 5, 6);  // a line, but its pattern stops at "A": numbers reused
    std::vector<Seg> segs = segments_of(s);
    EXPECT_EQ(segs[3].type, IO_CCLW);
    EXPECT_EQ(segs[3].v[5], 1.0);  // axis from the keyword, not the file
    EXPECT_EQ(segs[3].v[6], 2.0);
    EXPECT_EQ(segs[4].type, IO_CLW);
    EXPECT_EQ(segs[4].v[5], -1.0);
    EXPECT_EQ(segs[4].v[0], 3.0);
}

TEST(NativeProfile, ShortSegmentLinesReuseEarlierNumbers) {
    TempDir dir;
    std::string text = ProfileFileWriter::Sweep(1)
                           .Raw("LINE < >")  // nothing read yet: zeros
                           .Raw("LINE < 1 2 3 >")
                           .Raw("LINE < 7 >")              // y, z from the line before
                           .Raw("CLW < 5 6 0 0 0 -1 8 >")  // end y, z shared with the lines
                           .Raw("LINE < 9 x 1 >")          // stops at the letter
                           .Raw("CLWX < 1 1 1 >")          // nothing converted: the arc before again
                           .Text();
    CMWZORSweep s;
    ASSERT_TRUE(s.ResadFile(dir.write("p.swp", text).c_str(), 1));
    std::vector<Seg> segs = segments_of(s);
    ASSERT_EQ(segs.size(), 6u);
    expect_line(s, 0, 0, 0, 0);
    expect_line(s, 2, 7, 2, 3);
    EXPECT_EQ(segs[3].v[6], 8);
    EXPECT_EQ(segs[3].v[7], 2);
    EXPECT_EQ(segs[3].v[8], 3);
    expect_line(s, 4, 9, 2, 3);
    EXPECT_EQ(segs[5].type, IO_CLW);
    EXPECT_EQ(segs[5].v[0], 5);
    EXPECT_EQ(segs[5].v[1], 6);
    EXPECT_EQ(segs[5].v[6], 9);
}

TEST(NativeProfile, HeaderIsTakenByPosition) {
    TempDir dir;
    // Any first line is accepted.
    CMWZORExtrude any;
    ASSERT_TRUE(any.ResadFile(
        dir.write("a.ext", ProfileFileWriter::Extrude(1, 2, 2).DropLine(0).Raw("x").Raw("LINE < 1 0 0 >").Text())
            .c_str(),
        1));
    // With the magic dropped every header line moved up one: "Version" was
    // swallowed as the magic, the Z line was read as version (no match)...
    EXPECT_EQ(any.m_zMin, 0.0);
    EXPECT_EQ(any.m_segments.GetSize(), 1);
    // ... the unit line was taken for Z and not matched, the tolerance line
    // for the unit, and "x" for the tolerance: no conversion happened.
    EXPECT_DOUBLE_EQ(any.m_scale, 1.0);
    expect_line(any, 0, 1, 0, 0);

    // Without a Z line the first segment line is consumed as the tolerance.
    CMWZORExtrude noZ;
    std::string text = ProfileFileWriter::Sweep(2).Line(1, 0, 0).Line(2, 0, 0).Text();
    text.replace(0, text.find('\n'), "KOLP EXTRUDE FILE");
    ASSERT_TRUE(noZ.ResadFile(dir.write("b.ext", text).c_str(), 1));
    EXPECT_EQ(noZ.GetUnit(), 1);
    EXPECT_DOUBLE_EQ(noZ.m_scale, 1.0);
    ASSERT_EQ(noZ.m_segments.GetSize(), 1);
    expect_line(noZ, 0, 2, 0, 0);

    // Headers in the wrong order leave their fields unchanged.
    CMWZORSweep swapped;
    swapped.m_tolerance = 0.5;
    ASSERT_TRUE(swapped.ResadFile(
        dir.write("c.swp", "KOLP SWEEP FILE\nVersion < 4 >\nToler < 0.1 >\nUnit < 2 >\nLINE < 1 0 0 >\n").c_str(), 1));
    EXPECT_EQ(swapped.m_version, 4);
    EXPECT_EQ(swapped.m_tolerance, 0.5);
    EXPECT_DOUBLE_EQ(swapped.m_scale, 1.0);
    expect_line(swapped, 0, 1, 0, 0);

    // No header at all, or an empty file.
    for (const char* bytes : {"", "LINE < 1 2 3 >\n", "KOLP SWEEP FILE\nVersion < 1 >\n"}) {
        CMWZORSweep s;
        ASSERT_TRUE(s.ResadFile(dir.write("d.swp", bytes).c_str(), 2));
        EXPECT_EQ(s.m_segments.GetSize(), 0);
        EXPECT_EQ(s.GetUnit(), 2);
        EXPECT_DOUBLE_EQ(s.m_scale, 1 / 25.4);  // the fresh unit 1 counts as the file's
    }
}

TEST(NativeProfile, LinesAreSplitAtNinetyNineBytes) {
    TempDir dir;
    const std::string keep = "LINE < 7 8 9 >";
    const struct {
        std::string line;
        long long segments;
    } cases[] = {
        // A 99-byte filler is one piece; the next piece starts with the keyword.
        {std::string(99, 'X') + keep, 1},
        // One byte less and the keyword is cut.
        {std::string(98, 'X') + keep, 0},
        // A line of 99 bytes is read whole.
        {"LINE < 1 2 " + std::string(85, ' ') + "3 >", 1},
        // The cut-off part is parsed as far as it goes; the rest is ignored.
        {"LINE < 1 2 3." + std::string(200, '0') + "1 >", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line.size());
        CMWZORSweep s;
        ASSERT_TRUE(s.ResadFile(dir.write("l.swp", ProfileFileWriter::Sweep(1).Raw(c.line).Text()).c_str(), 1));
        ASSERT_EQ(s.m_segments.GetSize(), c.segments);
        if (c.segments == 1 && c.line[0] == 'X') expect_line(s, 0, 7, 8, 9);
        if (c.segments == 1 && c.line[0] == 'L') expect_line(s, 0, 1, 2, 3);
    }
}

TEST(NativeProfile, EveryPrefixReadsCleanly) {
    CMWZORSweep full;
    fill_sample(full);
    TempDir dir;
    std::string path = dir.file("full.swp");
    ASSERT_TRUE(full.WriteFile(path.c_str()));
    const std::string text = zortest::read_file(path);
    for (size_t n = 0; n <= text.size(); ++n) {
        CMWZORSweep s;
        ASSERT_TRUE(s.ResadFile(dir.write("p.swp", text.substr(0, n)).c_str(), 1)) << n;
        ASSERT_LE(s.m_segments.GetSize(), full.m_segments.GetSize()) << n;
    }
    CMWZORSweep garbage;
    ASSERT_TRUE(garbage.ResadFile(dir.write("g.swp", text + std::string("\0\xff LINE <<<\n", 12)).c_str(), 1));
    EXPECT_EQ(garbage.m_segments.GetSize(), full.m_segments.GetSize());
}

TEST(NativeProfile, UnopenableFilesFail) {
    TempDir dir;
    std::string missing = dir.file("no/such/file");
    CMWZORExtrude e;
    e.SetZValues(1, 2);
    EXPECT_FALSE(e.ResadFile(missing.c_str(), 1));
    EXPECT_FALSE(e.WriteFile(missing.c_str(), 5, 6));
    double z0 = 0, z1 = 0;
    e.GetZValues(nullptr, &z1);
    EXPECT_EQ(z0, 0);
    EXPECT_EQ(z1, 2);
    e.GetZValues(&z0, nullptr);
    EXPECT_EQ(z0, 1);
    CMWZORSweep s;
    EXPECT_FALSE(s.ResadFile(missing.c_str(), 1));
    EXPECT_FALSE(s.WriteFile(missing.c_str()));
}

TEST(NativeProfile, CopyRebuildsSegmentsAndScalesAgain) {
    CMWZORExtrude source;
    source.m_scale = 2.0;
    source.m_tolerance = 0.1;
    source.m_unit = 2;
    source.m_version = 5;
    source.SetZValues(-1, 3);
    source.AddPoint(1, 0, 0);  // held as 2
    source.AddArc(1, 1, 0, 0, 1, 0, IO_CLW);
    source.AddPoint(0, 0, 0);

    CMWZORExtrude target;
    target.AddPoint(9, 9, 9);
    target.AddPoint(8, 8, 8);
    target.GetNext();
    target.GetNext();
    CMWZORSegment* old = target.m_segments[0];
    source.Copy(&target);
    source.Copy(nullptr);

    EXPECT_EQ(target.m_zMin, -1);
    EXPECT_EQ(target.m_zMax, 3);
    EXPECT_EQ(target.m_tolerance, 0.1);
    EXPECT_EQ(target.m_scale, 2.0);
    EXPECT_EQ(target.GetUnit(), 2);
    EXPECT_EQ(target.m_version, 5);
    ASSERT_EQ(target.m_segments.GetSize(), 3);
    EXPECT_EQ(target.m_cursor, 2);
    expect_line(target, 0, 4, 0, 0);  // scaled a second time
    EXPECT_EQ(target.m_segments[1]->m_type, IO_CLW);
    EXPECT_EQ(target.m_segments[1]->m_points[2]->y, 4);
    EXPECT_EQ(target.m_segments[1]->m_points[1]->z, -1);
    for (long long i = 0; i < 3; ++i) EXPECT_NE(target.m_segments[i], source.m_segments[i]);
    // The source is unchanged, and the target's old segments are still there
    // for anyone who held them.
    expect_line(source, 0, 2, 0, 0);
    EXPECT_EQ(source.m_cursor, 0);
    EXPECT_EQ(old->m_points[0]->x, 9);

    // A null slot copies nothing, but the cursor still steps for it.
    CMWZORSweep one, into;
    one.AddPoint(1, 1, 1);
    one.m_segments.Add(nullptr);
    one.Copy(&into);
    EXPECT_EQ(into.m_segments.GetSize(), 1);
    EXPECT_EQ(into.m_cursor, 1);
    CMWZORSweep single, intoSingle;
    single.AddPoint(1, 1, 1);
    single.Copy(&intoSingle);
    EXPECT_EQ(intoSingle.m_cursor, 0);
    // Copying into itself empties the list but keeps its segments alive.
    CMWZORSweep self;
    self.AddPoint(1, 1, 1);
    CMWZORSegment* kept = self.m_segments[0];
    self.Copy(&self);
    EXPECT_EQ(self.m_segments.GetSize(), 0);
    EXPECT_EQ(kept->m_points[0]->x, 1);
}

}  // namespace
