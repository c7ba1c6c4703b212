#include <gtest/gtest.h>

#include <cmath>

#include "profile/ArcStepState.h"
#include "profile/MWZORSegment.h"

namespace {

class GetArcStep : public ::testing::Test {
protected:
    void SetUp() override { zor::reset_arc_step_state(); }
    void TearDown() override { zor::reset_arc_step_state(); }
};

TEST_F(GetArcStep, StepsEachArcOfAWalkFromThePreviousEnd) {
    CMWZORSegmentArray list;
    list.m_tolerance = 0.01;
    list.AddPoint(1, 0, 0);
    list.AddArc(0, 0, 0, 0, 1, 0, IO_CCLW);  // quarter, from the line's end
    list.AddArc(0, 2, 0, 0, 3, 0, IO_CLW);   // half, from the arc's end
    list.AddPoint(0, 0, 0);
    list.SetStart();
    m_IOenumType type;
    int arcs = 0;
    while (list.GetType(&type)) {
        if (type != IO_LINE) {
            double x = 0, y = 0, z = 0;
            const int n = list.GetArcStep(&x, &y, &z, 0);
            ASSERT_GE(n, 1);
            const double cy = arcs == 0 ? 0 : 2, r = 1;
            EXPECT_EQ(x, arcs == 0 ? 1 : 0);
            EXPECT_EQ(y, arcs == 0 ? 0 : 1);
            double lastAngle = std::atan2(y - cy, x);
            for (int i = 1; i <= n; ++i) {
                ASSERT_EQ(list.GetArcStep(&x, &y, &z, i), i);
                EXPECT_NEAR(std::hypot(x, y - cy), r, 1e-9);
                double angle = std::atan2(y - cy, x);
                // Counter-clockwise first, then clockwise.
                const double turn = std::remainder(angle - lastAngle, 2 * M_PI);
                EXPECT_TRUE(arcs == 0 ? turn > 0 : turn < 0) << turn;
                lastAngle = angle;
            }
            EXPECT_EQ(x, 0);
            EXPECT_EQ(y, arcs == 0 ? 1 : 3);
            // Past the end: 0, outputs untouched.
            double keep = -5;
            EXPECT_EQ(list.GetArcStep(&keep, &keep, &keep, n + 1), 0);
            EXPECT_EQ(keep, -5);
            ++arcs;
        }
        list.GetNext();
    }
    EXPECT_EQ(arcs, 2);
}

TEST_F(GetArcStep, RefusesWhatCannotBeStepped) {
    CMWZORSegmentArray list;
    list.AddArc(0, 0, 0, 1, 0, 0, IO_CLW);  // an arc in first place has no start
    list.AddPoint(1, 1, 0);
    list.AddArc(0, 0, 0, 1, 0, 0, static_cast<m_IOenumType>(7));
    double x = 9, y = 9, z = 9;
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 1), 0) << "step before any initialisation";
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 0), 0) << "cursor 0";
    list.GetNext();
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 0), 0) << "cursor on a line";
    list.GetNext();
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 0), 0) << "unknown type";
    list.m_cursor = 3;
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 0), 0) << "past the end";
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, -1), 0);
    EXPECT_EQ(x, 9);
    EXPECT_EQ(y, 9);
}

TEST_F(GetArcStep, FailedInitialisationAfterTheStartKeepsThePreviousPlan) {
    CMWZORSegmentArray list;
    list.m_tolerance = 1;
    list.AddPoint(1, 0, 0);
    list.AddArc(0, 0, 0, -1, 0, 0, IO_CCLW);
    list.AddPoint(5, 5, 0);
    list.GetNext();
    double x, y, z;
    const int n = list.GetArcStep(&x, &y, &z, 0);
    ASSERT_EQ(n, 2);  // a half turn with the 100-degree step bound
    list.GetNext();
    // The previous segment (the arc) gives a start, the line is no arc.
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 0), 0);
    ASSERT_EQ(list.GetArcStep(&x, &y, &z, n), n);
    EXPECT_EQ(x, -1);
    // A failure before the start is found disables stepping.
    list.m_cursor = 0;
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 0), 0);
    EXPECT_EQ(list.GetArcStep(&x, &y, &z, 1), 0);
}

TEST_F(GetArcStep, ShortPointListThrows) {
    CMWZORSegmentArray list;
    list.AddPoint(1, 0, 0);
    CMWZORSegment* arc = new CMWZORSegment;
    arc->m_type = IO_CLW;
    arc->m_points.Add(new CMWZORPoint(0, 0, 0));
    list.m_segments.Add(arc);
    list.GetNext();
    double x, y, z;
    EXPECT_THROW(list.GetArcStep(&x, &y, &z, 0), CInvalidArgException*);
}

}  // namespace
