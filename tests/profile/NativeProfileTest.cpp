#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "profile/MWZORProfile.h"
#include "profile/ProfileTestUtil.h"
#include "support/ProfileFileWriter.h"
#include "support/TempDir.h"

namespace {

using namespace zortest;

std::string sample_text(ProfileFileWriter w) {
    return w.Line(0, 0, 0).Line(10, 0, 0).Arc(false, 10, 5, 10, 10).Arc(true, 5, 10, 0.125, 10).Text();
}
const Segs kSample = {L(0, 0), L(10, 0), A(IO_CCLW, 10, 5, 10, 10), A(IO_CLW, 5, 10, 0.125, 10)};

template <class Profile>
Segs read(const TempDir& dir, Profile& profile, const std::string& text, unsigned wanted = 1) {
    EXPECT_TRUE(profile.ResadFile(dir.write("p", text).c_str(), wanted));
    return segments_of(profile);
}

TEST(NativeProfile, WritesExactTextAndReadsItBackInBothUnits) {
    TempDir dir;
    for (int unit : {1, 2}) {
        CMWZORExtrude e, eb;
        CMWZORSweep s, sb;
        for (CMWZORSegmentArray* list : std::vector<CMWZORSegmentArray*>{&e, &s}) {
            list->SetUnit(unit);
            list->m_tolerance = 0.0125;
            list->m_version = 9;  // not written: files always say 1
            for (const Seg& g : kSample)
                g.type == IO_LINE ? list->AddPoint(g.x, g.y, 0)
                                  : list->AddArc(g.cx, g.cy, 0, g.x, g.y, 0, static_cast<m_IOenumType>(g.type));
        }
        const std::string ep = dir.file("e.ext"), sp = dir.file("s.swp");
        ASSERT_TRUE(e.WriteFile(ep.c_str(), -2.5, 10) && s.WriteFile(sp.c_str()));
        EXPECT_EQ(read_file(ep), sample_text(ProfileFileWriter::Extrude(-2.5, 10, unit, 0.0125)));
        EXPECT_EQ(read_file(sp), sample_text(ProfileFileWriter::Sweep(unit, 0.0125)));
        EXPECT_EQ(std::make_pair(e.m_zMin, e.m_zMax), std::make_pair(-2.5, 10.0));
        EXPECT_EQ(read(dir, eb, read_file(ep), unit), kSample);
        EXPECT_EQ(read(dir, sb, read_file(sp), unit), kSample);
        EXPECT_EQ(std::make_tuple(eb.m_zMin, eb.m_zMax, eb.GetUnit(), eb.m_version, eb.m_tolerance),
                  std::make_tuple(-2.5, 10.0, unit, 1, 0.0125));
        EXPECT_EQ(std::make_tuple(sb.GetUnit(), sb.m_version, sb.m_tolerance), std::make_tuple(unit, 1, 0.0125));
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
        CMWZORExtrude e;
        const auto w = ProfileFileWriter::Extrude(1, 2, c.fileUnit, 0.01).Line(1, 2, 3).Arc(true, 4, 5, 6, 7);
        const Segs got = read(dir, e, w.Text(), c.wanted);
        const double f = e.m_scale;
        EXPECT_DOUBLE_EQ(f, c.factor) << c.fileUnit << " -> " << c.wanted;
        EXPECT_EQ(std::make_tuple(e.GetUnit(), e.m_tolerance, e.m_zMin, e.m_zMax),
                  std::make_tuple(int(c.wanted), 0.01, f, 2 * f));
        EXPECT_EQ(got, (Segs{L(1 * f, 2 * f, 3 * f), A(IO_CLW, 4 * f, 5 * f, 6 * f, 7 * f)}));
    }
    // A later read in millimetres keeps the scale of an earlier one in inches, and appends.
    CMWZORSweep s;
    read(dir, s, ProfileFileWriter::Sweep(2).Line(1, 0, 0).Text());
    EXPECT_EQ(read(dir, s, ProfileFileWriter::Sweep(1).Line(1, 0, 0).Text()), (Segs{L(25.4, 0), L(25.4, 0)}));
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
        // Lines are read in pieces of 99 bytes: the filler is one piece and the keyword starts the next, unless
        // it is cut; a line of 99 bytes is read whole; a number cut off is read as far as it goes.
        {{std::string(99, 'X') + "LINE < 7 8 9 >", std::string(98, 'X') + "LINE < 1 1 1 >",
          "LINE < 1 2 " + std::string(85, ' ') + "3 >", "LINE < 1 2 3." + std::string(200, '0') + "1 >"},
         {L(7, 8, 9), L(1, 2, 3), L(1, 2, 3)}},
    };
    TempDir dir;
    for (const auto& c : cases) {
        ProfileFileWriter w = ProfileFileWriter::Sweep(1);
        for (const std::string& line : c.lines) w.Raw(line);
        CMWZORSweep s;
        EXPECT_EQ(read(dir, s, w.Text()), c.expected);
    }
}

TEST(NativeProfile, HeaderIsTakenByPosition) {
    TempDir dir;
    // Without the magic every header line moves up one: no Z range, no unit, and "x" is the tolerance.
    std::string text = ProfileFileWriter::Extrude(1, 2, 2).Raw("x").Line(1, 0, 0).Text();
    CMWZORExtrude noMagic, noZ;
    EXPECT_EQ(read(dir, noMagic, text.substr(text.find('\n') + 1)), (Segs{L(1, 0)}));
    EXPECT_EQ(std::make_pair(noMagic.m_zMin, noMagic.m_scale), std::make_pair(0.0, 1.0));
    // An extrusion without a Z line takes its first segment line as the tolerance.
    text = ProfileFileWriter::Sweep(2).Line(1, 0, 0).Line(2, 0, 0).Text();
    EXPECT_EQ(read(dir, noZ, "KOLP EXTRUDE FILE" + text.substr(text.find('\n'))), (Segs{L(2, 0)}));
    EXPECT_EQ(std::make_pair(noZ.GetUnit(), noZ.m_scale), std::make_pair(1, 1.0));
    // Headers in the wrong order leave their fields unchanged.
    CMWZORSweep swapped;
    swapped.m_tolerance = 0.5;
    EXPECT_EQ(read(dir, swapped, "KOLP SWEEP FILE\nVersion < 4 >\nToler < 0.1 >\nUnit < 2 >\nLINE < 1 0 0 >\n"),
              (Segs{L(1, 0)}));
    EXPECT_EQ(std::make_tuple(swapped.m_version, swapped.m_tolerance, swapped.m_scale), std::make_tuple(4, 0.5, 1.0));
    for (const char* bytes : {"", "LINE < 1 2 3 >\n", "KOLP SWEEP FILE\nVersion < 1 >\n"}) {
        CMWZORSweep s;
        EXPECT_EQ(read(dir, s, bytes, 2), Segs{});
        EXPECT_EQ(std::make_pair(s.GetUnit(), s.m_scale),
                  std::make_pair(2, 1 / 25.4));  // the fresh unit 1 is the file's
    }
}

TEST(NativeProfile, EveryPrefixAndTrailingGarbageReadCleanly) {
    TempDir dir;
    const std::string text = sample_text(ProfileFileWriter::Sweep(1));
    for (size_t n = 0; n <= text.size(); ++n) {
        CMWZORSweep s;
        ASSERT_LE(read(dir, s, text.substr(0, n)).size(), 4u) << n;
    }
    CMWZORSweep garbage;
    EXPECT_EQ(read(dir, garbage, text + std::string("\0\xff LINE <<<\n", 12)), kSample);
    const std::string missing = dir.file("no/such/file");
    CMWZORExtrude e;
    e.SetZValues(1, 2);
    EXPECT_FALSE(e.ResadFile(missing.c_str(), 1) || e.WriteFile(missing.c_str(), 5, 6) ||
                 garbage.ResadFile(missing.c_str(), 1) || garbage.WriteFile(missing.c_str()));
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
    CMWZORSegment* old = target.m_segments[0];
    source.Copy(&target);
    source.Copy(nullptr);
    EXPECT_EQ(std::make_tuple(target.m_zMin, target.m_zMax, target.m_tolerance, target.m_scale, target.GetUnit(),
                              target.m_version, target.m_cursor),
              std::make_tuple(-1.0, 3.0, 0.1, 2.0, 2, 5, 1));
    EXPECT_EQ(segments_of(target), (Segs{L(4, 0), A(IO_CLW, 4, 4, 0, 4)}));  // scaled a second time
    EXPECT_EQ(segments_of(source), (Segs{L(2, 0), A(IO_CLW, 2, 2, 0, 2)}));
    EXPECT_NE(target.m_segments[0], source.m_segments[0]);
    EXPECT_EQ(source.m_cursor, 0);
    EXPECT_EQ(old->m_points[0]->x, 9);  // the target's old segments stay alive for anyone who held them
    // A null slot copies nothing, but the cursor steps for it; copying into itself empties the list.
    CMWZORSweep one, into;
    one.AddPoint(1, 1, 1);
    one.m_segments.Add(nullptr);
    one.Copy(&into);
    EXPECT_EQ(std::make_pair(into.m_segments.GetSize(), into.m_cursor), std::make_pair(1LL, 1));
    CMWZORSegment* kept = into.m_segments[0];
    into.Copy(&into);
    EXPECT_EQ(std::make_pair(into.m_segments.GetSize(), kept->m_points[0]->x), std::make_pair(0LL, 1.0));
}

}  // namespace
