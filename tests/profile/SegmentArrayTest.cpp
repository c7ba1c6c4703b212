#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "profile/MWZORSegment.h"
#include "support/TempDir.h"

namespace {

// What WriteText / WriteBody put on a stream.
template <class Write>
std::string written(Write write) {
    std::FILE* stream = std::tmpfile();
    write(stream);
    std::string text;
    std::rewind(stream);
    for (int c; (c = std::fgetc(stream)) != EOF;) text += static_cast<char>(c);
    std::fclose(stream);
    return text;
}

void expect_point(const CMWZORPoint* p, double x, double y, double z) {
    ASSERT_NE(p, nullptr);
    EXPECT_DOUBLE_EQ(p->x, x);
    EXPECT_DOUBLE_EQ(p->y, y);
    EXPECT_DOUBLE_EQ(p->z, z);
}

TEST(SegmentArray, NewListIsEmptyWithDefaults) {
    CMWZORSegmentArray list;
    m_IOenumType type = IO_CCLW;
    double x = 7;
    EXPECT_FALSE(list.GetType(&type));
    EXPECT_EQ(type, IO_CCLW);
    EXPECT_FALSE(list.GetLine(&x, &x, &x));
    EXPECT_FALSE(list.GetArc(&x, &x, &x, &x, &x, &x, &type));
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.GetUnit(), 1);
    EXPECT_EQ(list.m_version, 1);
    EXPECT_DOUBLE_EQ(list.m_tolerance, 0.005);
    EXPECT_DOUBLE_EQ(list.m_scale, 1.0);
}

TEST(SegmentArray, SetUnitAcceptsOnlyMillimetresAndInches) {
    const struct {
        int given;
        int expected;
    } cases[] = {{2, 2}, {1, 1}, {0, 1}, {3, 1}, {-1, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.given);
        CMWZORSegmentArray list;
        list.m_scale = 3.0;
        list.SetUnit(c.given);
        EXPECT_EQ(list.GetUnit(), c.expected);
        EXPECT_DOUBLE_EQ(list.m_scale, 3.0);
    }
    CMWZORSegmentArray list;
    list.SetUnit(2);
    list.SetUnit(7);
    EXPECT_EQ(list.GetUnit(), 2);
}

TEST(SegmentArray, AddScalesCoordinatesButNotTheAxis) {
    CMWZORSegmentArray list;
    list.m_scale = 25.4;
    list.AddPoint(1, 2, 3);
    list.AddArc(0, 0, 0, 1, 0, 0, IO_CLW);
    list.AddArc(1, 1, 0, 2, 2, 0, IO_CCLW);
    ASSERT_EQ(list.m_segments.GetSize(), 3);
    EXPECT_EQ(list.m_segments[0]->m_type, IO_LINE);
    ASSERT_EQ(list.m_segments[0]->m_points.GetSize(), 1);
    expect_point(list.m_segments[0]->m_points[0], 25.4, 50.8, 76.2);
    const CMWZORSegment* clw = list.m_segments[1];
    ASSERT_EQ(clw->m_points.GetSize(), 3);
    expect_point(clw->m_points[0], 0, 0, 0);
    expect_point(clw->m_points[1], 0, 0, -1);
    expect_point(clw->m_points[2], 25.4, 0, 0);
    expect_point(list.m_segments[2]->m_points[1], 0, 0, 1);
    EXPECT_EQ(list.m_cursor, 0);
}

TEST(SegmentArray, UnknownArcTypeIsStoredButInvisible) {
    CMWZORSegmentArray list;
    list.AddArc(0, 0, 0, 1, 0, 0, static_cast<m_IOenumType>(7));
    m_IOenumType type = IO_LINE;
    double v = 0;
    ASSERT_TRUE(list.GetType(&type));
    EXPECT_EQ(static_cast<int>(type), 7);
    expect_point(list.m_segments[0]->m_points[1], 0, 0, -1);
    EXPECT_FALSE(list.GetArc(&v, &v, &v, &v, &v, &v, &type));
    EXPECT_FALSE(list.GetLine(&v, &v, &v));
    EXPECT_EQ(written([&](std::FILE* f) { list.m_segments[0]->WriteText(f); }), "");
}

TEST(SegmentArray, WalkVisitsSegmentsInOrder) {
    CMWZORSegmentArray list;
    list.AddPoint(1, 0, 0);
    list.AddArc(1, 1, 0, 1, 2, 0, IO_CCLW);
    list.AddPoint(0, 2, 0);
    std::string trace;
    list.SetStart();
    m_IOenumType type;
    while (list.GetType(&type)) {
        double a[6];
        if (type == IO_LINE) {
            ASSERT_TRUE(list.GetLine(&a[0], &a[1], &a[2]));
            trace += "L" + std::to_string(static_cast<int>(a[0])) + std::to_string(static_cast<int>(a[1]));
        } else {
            m_IOenumType arcType = IO_LINE;
            ASSERT_TRUE(list.GetArc(&a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &arcType));
            EXPECT_EQ(arcType, IO_CCLW);
            trace += "A" + std::to_string(static_cast<int>(a[1])) + std::to_string(static_cast<int>(a[4]));
        }
        CMWZORSegment* before = list.m_segments[list.m_cursor];
        ASSERT_EQ(list.GetNext(), before);
    }
    EXPECT_EQ(trace, "L10A12L02");
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.m_cursor, 3);
    list.SetStart();
    ASSERT_TRUE(list.GetType(&type));
    EXPECT_EQ(type, IO_LINE);
}

TEST(SegmentArray, NullSlotStopsTheWalkWithoutMoving) {
    CMWZORSegmentArray list;
    list.AddPoint(1, 0, 0);
    list.m_segments.Add(nullptr);
    ASSERT_NE(list.GetNext(), nullptr);
    m_IOenumType type;
    double v;
    EXPECT_FALSE(list.GetType(&type));
    EXPECT_FALSE(list.GetLine(&v, &v, &v));
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.m_cursor, 1);
}

TEST(SegmentArray, BoundsViolationsThrowInvalidArgument) {
    CMWZORSegmentArray list;
    list.AddPoint(1, 0, 0);
    list.m_cursor = -1;
    m_IOenumType type;
    double v;
    EXPECT_THROW(list.GetNext(), CInvalidArgException*);
    EXPECT_THROW(list.GetType(&type), CInvalidArgException*);
    // A line without its point and an arc short of points.
    list.m_cursor = 0;
    list.m_segments.Add(new CMWZORSegment);
    CMWZORSegment* arc = new CMWZORSegment;
    arc->m_type = IO_CLW;
    arc->m_points.Add(new CMWZORPoint(0, 0, 0));
    list.m_segments.Add(arc);
    list.GetNext();
    EXPECT_THROW(list.GetLine(&v, &v, &v), CInvalidArgException*);
    list.GetNext();
    EXPECT_THROW(list.GetArc(&v, &v, &v, &v, &v, &v, &type), CInvalidArgException*);
}

TEST(SegmentArray, SegmentAccessorsAreStubs) {
    CMWZORSegment segment;
    segment.m_type = IO_CLW;
    segment.m_points.Add(new CMWZORPoint(1, 2, 3));
    double a = -1, b = -2, c = -3, d = -4;
    m_IOenumType type = IO_LINE;
    EXPECT_TRUE(segment.GetType(&type));
    EXPECT_TRUE(segment.GetLine(&a, &b));
    EXPECT_TRUE(segment.GetArc(&a, &b, &c, &d, &type));
    EXPECT_TRUE(segment.GetArcStep(&a, &b));
    EXPECT_EQ(type, IO_LINE);
    EXPECT_EQ(a + b + c + d, -10);
}

TEST(SegmentArray, TextLinesHaveTheExactFormats) {
    CMWZORSegmentArray list;
    list.m_unit = 2;
    list.m_tolerance = 0.01;
    list.AddPoint(1.5, -2, 1e-7);
    list.AddArc(1, 2, 0, 3, 4, 0, IO_CCLW);
    list.AddArc(-1, 0, 0, 0, 1, 0, IO_CLW);
    list.m_segments.Add(nullptr);
    EXPECT_EQ(written([&](std::FILE* f) { list.m_segments[1]->WriteText(f); }),
              "CCLW < 1.000000 2.000000 0.000000 0.000000 0.000000 1.000000 3.000000 4.000000 0.000000>\n");
    EXPECT_EQ(written([&](std::FILE* f) { list.WriteBody(f); }),
              "Unit < 2 >\n"
              "Toler < 0.010000 >\n"
              "LINE < 1.500000 -2.000000 0.000000 >\n"
              "CCLW < 1.000000 2.000000 0.000000 0.000000 0.000000 1.000000 3.000000 4.000000 0.000000>\n"
              "CLW < -1.000000 0.000000 0.000000 0.000000 0.000000 -1.000000 0.000000 1.000000 0.000000>\n");
    // Null streams are ignored.
    list.WriteBody(nullptr);
    list.m_segments[0]->WriteText(nullptr);
}

TEST(SegmentArray, TextLineOfHugeCoordinatesIsWhole) {
    CMWZORSegmentArray list;
    list.AddPoint(1e300, 0, 0);
    std::string text = written([&](std::FILE* f) { list.m_segments[0]->WriteText(f); });
    EXPECT_GT(text.size(), 300u);
    EXPECT_EQ(text.rfind("LINE < 1000", 0), 0u);
    EXPECT_EQ(text.substr(text.size() - 21), " 0.000000 0.000000 >\n");
}

}  // namespace
