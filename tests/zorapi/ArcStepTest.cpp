#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "zorapi/ArcStep.h"

namespace {

using P = std::array<double, 3>;
constexpr double kPi = 3.14159265358979323846;

struct Arc {
    const char* name;
    P start, centre, end, axis;
    double tolerance, sweepDegrees;  // for degenerate arcs: the largest acceptable step count
    double maxStep = kArcMaxStepDegrees;
    int n = 0;  // expected step count, 0 for any
};

double dot(const P& a, const P& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
P sub(const P& a, const P& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double norm(const P& a) { return std::sqrt(dot(a, a)); }
P unit_circle(double degrees) { return {std::cos(degrees * kPi / 180), std::sin(degrees * kPi / 180), 0}; }

// The plain arc: start turned by angle about the axis through the centre, by the right-hand rule.
P on_arc(const Arc& a, double angle) {
    const double length = norm(a.axis), c = std::cos(angle), s = std::sin(angle);
    const P k{a.axis[0] / length, a.axis[1] / length, a.axis[2] / length}, v = sub(a.start, a.centre);
    const P kv{k[1] * v[2] - k[2] * v[1], k[2] * v[0] - k[0] * v[2], k[0] * v[1] - k[1] * v[0]};
    P out;
    for (int i = 0; i < 3; ++i) out[i] = a.centre[i] + v[i] * c + kv[i] * s + k[i] * dot(k, v) * (1 - c);
    return out;
}

// The first point, then steps 1..n.
std::vector<P> plan(const Arc& a) {
    int n = -1;
    double first = 0, second = 0, third = 0, vector[3];
    P point{};
    ZORAPI_GetArcStepInfo(a.start.data(), a.centre.data(), a.end.data(), a.axis.data(), a.maxStep, a.tolerance, &n,
                          &first, point.data(), &second, &third, vector);
    std::vector<P> out{point};
    for (int i = 1; i <= n && i <= 200000; ++i) {
        ZORAPI_GetArcStep(a.axis.data(), second, third, vector, a.centre.data(), first, i, point.data());
        out.push_back(point);
    }
    return out;
}

// Each step lies on the arc, its chord deviates by at most the tolerance, no step is longer than maxStep degrees,
// and one step fewer would break one of these.
TEST(ArcStep, PointsFollowTheArcWithinToleranceAndTheirCountIsMinimal) {
    const Arc arcs[] = {
        {"quarter ccw", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}, 0.005, 90},
        {"quarter cw goes the long way", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, -1}, 0.005, 270},
        {"half ccw", {10, 0, 0}, {0, 0, 0}, {-10, 0, 0}, {0, 0, 1}, 0.01, 180},
        {"full circle cw off origin", {103, -50, 7}, {100, -50, 7}, {103, -50, 7}, {0, 0, -1}, 0.001, 360},
        {"tiny radius under the tolerance", {0.001, 0, 0}, {0, 0, 0}, {0, 0.001, 0}, {0, 0, 1}, 0.005, 90},
        {"tolerance equal to the radius", {2, 0, 0}, {0, 0, 0}, {2, 0, 0}, {0, 0, 1}, 2, 360},
        {"huge radius", {1e4, 0, 0}, {0, 0, 0}, {0, 1e4, 0}, {0, 0, 1}, 0.005, 90},
        {"fine tolerance", {50, 0, 0}, {0, 0, 0}, {-50, 0, 0}, {0, 0, 1}, 1e-6, 180},
        {"tilted plane, scaled axis", {1, 0, 0}, {0, 0, 0}, {0, 0.6, 0.8}, {0, -8, 6}, 0.003, 90},
        {"sliver", {1, 0, 0}, {0, 0, 0}, unit_circle(0.01), {0, 0, 1}, 0.005, 0.01},
        // A coarse tolerance leaves the 100-degree step bound in charge; without the bound one chord does.
        {"100 degrees", {1, 0, 0}, {0, 0, 0}, unit_circle(100), {0, 0, 1}, 100, 100, kArcMaxStepDegrees, 1},
        {"101 degrees", {1, 0, 0}, {0, 0, 0}, unit_circle(101), {0, 0, 1}, 100, 101, kArcMaxStepDegrees, 2},
        {"full turn, bound", {1, 0, 0}, {0, 0, 0}, {1, 0, 0}, {0, 0, 1}, 100, 360, kArcMaxStepDegrees, 4},
        {"full turn, no bound", {1, 0, 0}, {0, 0, 0}, {1, 0, 0}, {0, 0, 1}, 100, 360, 360, 1},
    };
    for (const Arc& arc : arcs) {
        SCOPED_TRACE(arc.name);
        const std::vector<P> p = plan(arc);
        const int n = static_cast<int>(p.size()) - 1;
        ASSERT_GE(n, 1);
        EXPECT_TRUE(arc.n == 0 || n == arc.n) << n;
        EXPECT_EQ(p.front(), arc.start);
        EXPECT_EQ(p.back(), arc.end);  // exactly
        const double r = norm(sub(arc.start, arc.centre)), sweep = arc.sweepDegrees * kPi / 180;
        const double bound = arc.maxStep * kPi / 180;
        for (int i = 1; i <= n; ++i) ASSERT_LE(norm(sub(p[i], on_arc(arc, i * sweep / n))), 1e-9 * (r + 1)) << i;
        // A chord of angle a deviates from its arc by r (1 - cos(a / 2)).
        EXPECT_LE(r * (1 - std::cos(sweep / n / 2)), arc.tolerance * (1 + 1e-9));
        EXPECT_LE(sweep / n, bound * (1 + 1e-12));
        EXPECT_TRUE(n == 1 || sweep / (n - 1) > bound || r * (1 - std::cos(sweep / (n - 1) / 2)) > arc.tolerance);
    }
}

TEST(ArcStep, DegenerateArcsGiveFiniteSmallPlans) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Arc arcs[] = {
        {"zero radius", {1, 1, 0}, {1, 1, 0}, {1, 1, 0}, {0, 0, 1}, 0.005, 1},
        {"start at the centre", {0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {0, 0, 1}, 0.005, 1},
        {"zero axis", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 0}, 0.005, 1},
        {"axis in the plane of the points", {1, 0, 0}, {0, 0, 0}, {2, 0, 0}, {1, 0, 0}, 0.005, 1},
        {"zero tolerance", {1, 0, 0}, {0, 0, 0}, {1, 0, 0}, {0, 0, 1}, 0, 80000},
        {"NaN tolerance", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}, nan, 80000},
        {"infinite tolerance", {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}, 1e308 * 10, 1},
        {"different radii and heights", {1, 0, 0}, {0, 0, 0}, {0, 2, 3}, {0, 0, 1}, 0.005, 100},
        {"NaN start: one step to the end", {nan, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}, 0.005, 1},
        // The end's radial part is rounding noise along the axis: no spiral to it.
        {"end on a tilted axis", {0, 0, 41.5}, {41.5, 41.5, 41.5}, {0, 0, 0}, {1, 1, 1}, 0, 1},
    };
    for (const Arc& arc : arcs) {
        SCOPED_TRACE(arc.name);
        const std::vector<P> p = plan(arc);
        ASSERT_GE(p.size(), 2u);
        EXPECT_LE(p.size(), arc.sweepDegrees + 1);
        EXPECT_EQ(p.back(), arc.end);
        EXPECT_TRUE(std::isnan(arc.start[0]) || p.front() == arc.start);
        // No point lies farther from the centre than the start or the end (fmax passes over a NaN).
        const double reach = std::fmax(norm(sub(arc.start, arc.centre)), norm(sub(arc.end, arc.centre)));
        for (size_t i = std::isnan(arc.start[0]) ? 1 : 0; i < p.size(); ++i) {
            EXPECT_TRUE(std::isfinite(p[i][0]) && std::isfinite(p[i][1]) && std::isfinite(p[i][2])) << i;
            EXPECT_LE(norm(sub(p[i], arc.centre)), reach * (1 + 1e-9)) << i;
        }
    }
}

}  // namespace
