#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <tuple>

#include "profile/ArcStepState.h"
#include "profile/MWZORSegment.h"
#include "profile/ProfileTestUtil.h"

namespace {

using namespace zortest;

TEST(SegmentArray, DefaultsAndUnitFilter) {
    CMWZORSegmentArray list;
    m_IOenumType type = IO_CCLW;
    double v = 7;
    EXPECT_FALSE(list.GetType(&type) || list.GetLine(&v, &v, &v) || list.GetArc(&v, &v, &v, &v, &v, &v, &type));
    EXPECT_EQ(type, IO_CCLW);
    EXPECT_EQ(std::make_tuple(list.GetNext(), list.m_version, list.m_tolerance, list.GetUnit()),
              std::make_tuple(nullptr, 1, 0.005, 1));
    // Only 1 (mm) and 2 (inch) are taken; the scale is not touched.
    const int given[] = {2, 0, 3, -1, 1, 7}, expected[] = {2, 2, 2, 2, 1, 1};
    for (int i = 0; i < 6; ++i) {
        list.SetUnit(given[i]);
        EXPECT_EQ(list.GetUnit(), expected[i]) << given[i];
    }
    EXPECT_EQ(list.m_scale, 1.0);
}

TEST(SegmentArray, AddScalesCoordinatesButNotTheAxisAndWalksInOrder) {
    CMWZORSegmentArray list;
    list.m_scale = 25.4;
    list.AddPoint(1, 2, 3);
    list.AddArc(1, 1, 0, 1, 2, 0, IO_CCLW);
    list.AddArc(0, 0, 0, 1, 0, 0, static_cast<m_IOenumType>(7));  // stored with a clockwise axis, but unreadable
    list.AddPoint(0, 2, 0);
    const double k = 25.4;
    EXPECT_EQ(segments_of(list), (Segs{L(k, 2 * k, 3 * k), A(IO_CCLW, k, k, k, 2 * k), A(7, 0, 0, k, 0), L(0, 2 * k)}));
    std::string trace;
    m_IOenumType type;
    double a[6];
    list.SetStart();
    while (list.GetType(&type)) {
        if (list.GetLine(&a[0], &a[1], &a[2])) trace += "L" + std::to_string(std::lround(a[1] / k));
        if (list.GetArc(&a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &type)) trace += type == IO_CCLW ? "A+" : "A-";
        if (static_cast<int>(type) == 7) trace += "?";
        const CMWZORSegment* current = list.m_segments[list.m_cursor];
        ASSERT_EQ(list.GetNext(), current);
    }
    EXPECT_EQ(trace, "L2A+?L2");
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.m_cursor, 4);
}

TEST(SegmentArray, NullSlotStopsTheWalkAndBadSlotsThrow) {
    CMWZORSegmentArray list;
    list.AddPoint(1, 0, 0);
    list.m_segments.Add(nullptr);
    m_IOenumType type;
    double v;
    ASSERT_NE(list.GetNext(), nullptr);
    EXPECT_FALSE(list.GetType(&type) || list.GetLine(&v, &v, &v));
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.m_cursor, 1);
    list.m_cursor = -1;
    EXPECT_THROW(list.GetNext(), CInvalidArgException*);
    EXPECT_THROW(list.GetType(&type), CInvalidArgException*);
    // A line without its point, an arc short of points.
    list.m_segments[1] = new CMWZORSegment;
    CMWZORSegment* arc = new CMWZORSegment;
    arc->m_type = IO_CLW;
    arc->m_points.Add(new CMWZORPoint(0, 0, 0));
    list.m_segments.Add(arc);
    list.m_cursor = 1;
    EXPECT_THROW(list.GetLine(&v, &v, &v), CInvalidArgException*);
    list.m_cursor = 2;
    EXPECT_THROW(list.GetArc(&v, &v, &v, &v, &v, &v, &type), CInvalidArgException*);
    zor::reset_arc_step_state();
    EXPECT_THROW(list.GetArcStep(&v, &v, &v, 0), CInvalidArgException*);
    // The accessors of a single segment are stubs.
    double b = -2;
    type = IO_LINE;
    EXPECT_TRUE(arc->GetType(&type) && arc->GetLine(&b, &b) && arc->GetArc(&b, &b, &b, &b, &type) &&
                arc->GetArcStep(&b, &b));
    EXPECT_EQ(type, IO_LINE);
    EXPECT_EQ(b, -2);
}

// The line formats themselves are checked by the native file round trip.
TEST(SegmentArray, WritesNoUnknownSegmentAndHugeNumbersWhole) {
    CMWZORSegmentArray list;
    list.AddArc(0, 0, 0, 1, 0, 0, static_cast<m_IOenumType>(7));
    list.AddPoint(1e300, 0, 0);
    list.m_segments.Add(nullptr);
    std::FILE* stream = std::tmpfile();
    list.WriteBody(stream);
    list.WriteBody(nullptr);
    list.m_segments[0]->WriteText(nullptr);
    std::string text(4096, '\0');
    std::rewind(stream);
    text.resize(std::fread(&text[0], 1, text.size(), stream));
    std::fclose(stream);
    EXPECT_EQ(text.substr(0, 41), "Unit < 1 >\nToler < 0.005000 >\nLINE < 1000");
    EXPECT_EQ(text.size(), 30u + 336u);  // the line has 301 digits before the point
}

TEST(GetArcStep, StepsEachArcOfAWalkFromThePreviousEndInItsDirection) {
    zor::reset_arc_step_state();
    CMWZORSegmentArray list;
    list.AddPoint(1, 0, 0);
    list.AddArc(0, 0, 0, 0, 1, 0, IO_CCLW);  // a quarter from the line's end: its first step has y > 0
    list.AddArc(0, 2, 0, 0, 3, 0, IO_CLW);   // a half from the arc's end: its first step has x < 0
    double x = 9, y = 9, z = 9;
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 1), 0) << "a step before any initialisation";
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 0), 0) << "cursor on a line";
    for (int arc = 0; arc < 2; ++arc) {
        list.GetNext();
        const int n = list.GetArcStep(&x, &y, &z, 0);
        ASSERT_GE(n, 2);
        EXPECT_EQ(std::make_pair(x, y), std::make_pair(1.0 - arc, 1.0 * arc));
        ASSERT_EQ(list.GetArcStep(&x, &y, &z, 1), 1);
        EXPECT_GT(arc == 0 ? y : -x, 0);
        ASSERT_EQ(list.GetArcStep(&x, &y, &z, n), n);
        EXPECT_EQ(list.GetArcStep(&x, &y, &z, n + 1) + list.GetArcStep(&x, &y, &z, -1), 0);
        EXPECT_EQ(std::make_pair(x, y), std::make_pair(0.0, 1.0 + 2 * arc));
    }
    zor::reset_arc_step_state();  // the plan points into this list
}

TEST(GetArcStep, RefusesArcsWithoutStartAndKeepsThePlanAfterALaterFailure) {
    zor::reset_arc_step_state();
    CMWZORSegmentArray list;
    list.m_tolerance = 1;
    list.AddArc(0, 0, 0, 1, 0, 0, IO_CLW);  // first: no start
    list.AddPoint(1, 0, 0);
    list.AddArc(0, 0, 0, -1, 0, 0, IO_CCLW);
    list.AddPoint(5, 5, 0);
    list.AddArc(0, 0, 0, 1, 0, 0, static_cast<m_IOenumType>(7));
    double x = 9, y, z;
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 0), 0);
    list.m_cursor = 2;
    ASSERT_EQ(list.GetArcStep(&x, &y, &z, 0), 2);  // a half turn, in steps of at most 100 degrees
    for (int cursor : {3, 4}) {                    // a line, an unknown type: each after a start
        list.m_cursor = cursor;
        EXPECT_EQ(list.GetArcStep(&x, &y, &z, 0), 0);
    }
    ASSERT_EQ(list.GetArcStep(&x, &y, &z, 2), 2);
    EXPECT_EQ(x, -1);
    // A failure before a start is found disables stepping.
    list.m_cursor = 0;
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 0) + list.GetArcStep(&x, &y, &z, 1), 0);
}

}  // namespace
