#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "zorapi/ArcStep.h"

namespace {

using P = std::array<double, 3>;
constexpr double kPi = 3.14159265358979323846;

P sub(const P& a, const P& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double dot(const P& a, const P& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
P cross(const P& a, const P& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double norm(const P& a) { return std::sqrt(dot(a, a)); }
P unit(const P& a) {
    double n = norm(a);
    return {a[0] / n, a[1] / n, a[2] / n};
}

// The arc as a plain function of the angle from the start (planar arcs with
// equal radii only): start turned about the axis through the centre.
P on_arc(const P& start, const P& centre, const P& axis, double angle) {
    P k = unit(axis), v = sub(start, centre), kv = cross(k, v);
    double c = std::cos(angle), s = std::sin(angle), kd = dot(k, v) * (1 - c);
    return {centre[0] + v[0] * c + kv[0] * s + k[0] * kd, centre[1] + v[1] * c + kv[1] * s + k[1] * kd,
            centre[2] + v[2] * c + kv[2] * s + k[2] * kd};
}

double distance_to_segment(const P& p, const P& a, const P& b) {
    P ab = sub(b, a), ap = sub(p, a);
    double len2 = dot(ab, ab);
    double t = len2 > 0 ? dot(ap, ab) / len2 : 0;
    t = t < 0 ? 0 : (t > 1 ? 1 : t);
    P q = {a[0] + t * ab[0], a[1] + t * ab[1], a[2] + t * ab[2]};
    return norm(sub(p, q));
}

// Largest distance from the arc between angles a0 and a1 to the chord of
// its ends, by sampling (the midpoint included).
double sampled_deviation(const P& start, const P& centre, const P& axis, double a0, double a1) {
    P from = on_arc(start, centre, axis, a0), to = on_arc(start, centre, axis, a1);
    double worst = 0;
    for (int k = 0; k <= 64; ++k) {
        double d = distance_to_segment(on_arc(start, centre, axis, a0 + (a1 - a0) * k / 64), from, to);
        worst = d > worst ? d : worst;
    }
    return worst;
}

struct Plan {
    int n = -1;
    std::vector<P> points;  // points[0] is the first point, then steps 1..n
};

Plan plan(const P& start, const P& centre, const P& end, const P& axis, double tolerance,
          double maxStep = kArcMaxStepDegrees) {
    Plan out;
    double first = 0, second = 0, third = 0, vector[3], point[3];
    ZORAPI_GetArcStepInfo(start.data(), centre.data(), end.data(), axis.data(), maxStep, tolerance, &out.n, &first,
                          point, &second, &third, vector);
    out.points.push_back({point[0], point[1], point[2]});
    for (int i = 1; i <= out.n && i <= 200000; ++i) {
        ZORAPI_GetArcStep(axis.data(), second, third, vector, centre.data(), first, i, point);
        out.points.push_back({point[0], point[1], point[2]});
    }
    return out;
}

struct Arc {
    const char* name;
    P start, centre, end, axis;
    double tolerance;
    double sweepDegrees;
};

const Arc kArcs[] = {
    {"quarter ccw", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}, 0.005, 90},
    {"quarter cw goes the long way", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, -1}, 0.005, 270},
    {"half ccw", {10, 0, 0}, {0, 0, 0}, {-10, 0, 0}, {0, 0, 1}, 0.01, 180},
    {"half cw", {10, 0, 0}, {0, 0, 0}, {-10, 0, 0}, {0, 0, -1}, 0.01, 180},
    {"full circle", {5, 0, 0}, {0, 0, 0}, {5, 0, 0}, {0, 0, 1}, 0.005, 360},
    {"full circle cw off origin", {103, -50, 7}, {100, -50, 7}, {103, -50, 7}, {0, 0, -1}, 0.001, 360},
    {"three quarters off origin", {100, -47, 7}, {100, -50, 7}, {97, -50, 7}, {0, 0, -1}, 0.002, 270},
    {"tiny radius under the tolerance", {0.001, 0, 0}, {0, 0, 0}, {0, 0.001, 0}, {0, 0, 1}, 0.005, 90},
    {"tolerance equal to the radius", {2, 0, 0}, {0, 0, 0}, {2, 0, 0}, {0, 0, 1}, 2, 360},
    {"huge radius", {1e4, 0, 0}, {0, 0, 0}, {0, 1e4, 0}, {0, 0, 1}, 0.005, 90},
    {"fine tolerance", {50, 0, 0}, {0, 0, 0}, {-50, 0, 0}, {0, 0, 1}, 1e-6, 180},
    {"scaled axis", {0, 3, 1}, {0, 0, 1}, {3, 0, 1}, {0, 0, -25.4}, 0.005, 90},
    {"tilted plane", {1, 0, 0}, {0, 0, 0}, {0, 0.6, 0.8}, {0, -0.8, 0.6}, 0.003, 90},
    {"sliver", {1, 0, 0}, {0, 0, 0}, {std::cos(1e-4), std::sin(1e-4), 0}, {0, 0, 1}, 0.005, 1e-4 * 180 / kPi},
};

TEST(ArcStep, PointsFollowTheArcWithinToleranceAndNIsMinimal) {
    for (const Arc& arc : kArcs) {
        SCOPED_TRACE(arc.name);
        Plan p = plan(arc.start, arc.centre, arc.end, arc.axis, arc.tolerance);
        ASSERT_GE(p.n, 1);
        ASSERT_EQ(static_cast<int>(p.points.size()), p.n + 1);
        EXPECT_EQ(p.points.front(), arc.start);
        EXPECT_EQ(p.points.back(), arc.end);  // exactly, not nearly

        const double r = norm(sub(arc.start, arc.centre));
        const double sweep = arc.sweepDegrees * kPi / 180;
        const double step = sweep / p.n;
        for (int i = 1; i <= p.n; ++i) {
            SCOPED_TRACE(i);
            P want = on_arc(arc.start, arc.centre, arc.axis, i * step);
            EXPECT_LE(norm(sub(p.points[static_cast<size_t>(i)], want)), 1e-9 * (r + 1)) << "not on the arc";
            EXPECT_LE(sampled_deviation(arc.start, arc.centre, arc.axis, (i - 1) * step, i * step),
                      arc.tolerance * (1 + 1e-9));
            if (HasFailure()) break;
        }
        EXPECT_LE(step, kArcMaxStepDegrees * kPi / 180 * (1 + 1e-12));
        if (p.n > 1) {
            // One step fewer breaks the tolerance or the step bound.
            const double wider = sweep / (p.n - 1);
            const bool tooWide = wider > kArcMaxStepDegrees * kPi / 180;
            EXPECT_TRUE(tooWide || sampled_deviation(arc.start, arc.centre, arc.axis, 0, wider) > arc.tolerance)
                << "n = " << p.n << " is not minimal";
        }
    }
}

TEST(ArcStep, CoarseToleranceLeavesTheStepBoundInCharge) {
    const struct {
        double sweepDegrees;
        int n;
    } cases[] = {{30, 1}, {90, 1}, {100, 1}, {101, 2}, {180, 2}, {270, 3}, {300, 3}, {360, 4}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sweepDegrees);
        const double a = c.sweepDegrees * kPi / 180;
        P end = {std::cos(a), std::sin(a), 0};
        if (c.sweepDegrees == 360) end = {1, 0, 0};
        EXPECT_EQ(plan({1, 0, 0}, {0, 0, 0}, end, {0, 0, 1}, 100).n, c.n);
        // Without the bound one chord would do (a full turn needs two).
        EXPECT_EQ(plan({1, 0, 0}, {0, 0, 0}, end, {0, 0, 1}, 100, 360).n, 1);
    }
}

TEST(ArcStep, FullTurnWhenStartEqualsEnd) {
    Plan p = plan({0, -2, 0}, {0, 0, 0}, {0, -2, 0}, {0, 0, 1}, 0.01);
    double turned = 0;
    for (size_t i = 1; i < p.points.size(); ++i)
        turned += std::atan2(cross(p.points[i - 1], p.points[i])[2], dot(p.points[i - 1], p.points[i]));
    EXPECT_NEAR(turned, 2 * kPi, 1e-9);
}

TEST(ArcStep, DegenerateArcsGiveFiniteSmallPlans) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* name;
        P start, centre, end, axis;
        double tolerance;
        int maxN;
    } cases[] = {
        {"zero radius", {1, 1, 0}, {1, 1, 0}, {1, 1, 0}, {0, 0, 1}, 0.005, 1},
        {"start at the centre", {0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {0, 0, 1}, 0.005, 1},
        {"end at the centre", {1, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 1}, 0.005, 1},
        {"zero axis", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 0}, 0.005, 1},
        {"axis in the plane of the points", {1, 0, 0}, {0, 0, 0}, {2, 0, 0}, {1, 0, 0}, 0.005, 1},
        {"zero tolerance", {1, 0, 0}, {0, 0, 0}, {1, 0, 0}, {0, 0, 1}, 0, 80000},
        {"negative tolerance", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}, -1, 80000},
        {"NaN tolerance", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}, nan, 80000},
        {"infinite tolerance", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}, 1e308 * 10, 1},
        {"different radii", {1, 0, 0}, {0, 0, 0}, {0, 2, 0}, {0, 0, 1}, 0.005, 100},
        {"different heights", {1, 0, 0}, {0, 0, 0}, {0, 1, 3}, {0, 0, 1}, 0.005, 100},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Plan p = plan(c.start, c.centre, c.end, c.axis, c.tolerance);
        ASSERT_GE(p.n, 1);
        EXPECT_LE(p.n, c.maxN);
        EXPECT_EQ(p.points.front(), c.start);
        EXPECT_EQ(p.points.back(), c.end);
        for (const P& q : p.points)
            for (double v : q) ASSERT_TRUE(std::isfinite(v));
    }
    // A non-finite point gets one step: the end as given.
    Plan bad = plan({nan, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}, 0.005);
    EXPECT_EQ(bad.n, 1);
    EXPECT_EQ(bad.points.back(), (P{0, 1, 0}));
}

TEST(ArcStep, SpiralRadiusMovesSteadilyFromStartToEnd) {
    Plan p = plan({1, 0, 0}, {0, 0, 0}, {0, 2, 0}, {0, 0, 1}, 0.005);
    ASSERT_GT(p.n, 2);
    double lastRadius = 1, lastAngle = 0;
    for (size_t i = 1; i < p.points.size(); ++i) {
        double radius = norm(p.points[i]);
        double angle = std::atan2(p.points[i][1], p.points[i][0]);
        EXPECT_GT(radius, lastRadius);
        EXPECT_GT(angle, lastAngle);
        EXPECT_NEAR(radius, 1 + static_cast<double>(i) / p.n, 1e-9);
        lastRadius = radius;
        lastAngle = angle;
    }
}

}  // namespace
