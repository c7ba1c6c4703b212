// Arc stepping. The plan walks back from the end point: point i is the end
// turned back about the axis by (n - i) steps, so point n needs no rounding
// and is returned as the end itself.
#include "zorapi/ArcStep.h"

#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;
// Tolerances finer than this share of the radius are taken as this share:
// about 70 000 steps a full turn, the most any arc gets.
constexpr double kMinRelativeTolerance = 1e-9;
// A radial part this small beside the point's distance from the centre is
// rounding noise, not a direction: the point lies on the axis.
constexpr double kOnAxis = 1e-12;

struct Vec {
    double x, y, z;
};

Vec load(const double* p) { return {p[0], p[1], p[2]}; }
void store(const Vec& v, double* p) {
    p[0] = v.x;
    p[1] = v.y;
    p[2] = v.z;
}
Vec operator-(const Vec& a, const Vec& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Vec operator+(const Vec& a, const Vec& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Vec operator*(double s, const Vec& v) { return {s * v.x, s * v.y, s * v.z}; }
double dot(const Vec& a, const Vec& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vec cross(const Vec& a, const Vec& b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
bool finite(const Vec& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

// The unit axis, or false when axis is zero or not finite.
bool unit_axis(const double* axis, Vec& unit) {
    Vec a = load(axis);
    double length = std::sqrt(dot(a, a));
    if (!std::isfinite(length) || length <= 0.0) return false;
    unit = (1.0 / length) * a;
    return true;
}

// The part of v square to the unit axis a, projected twice: one pass leaves
// a rounding residue along the axis of the size of v's axial part, which a
// spiral to an end near the axis scales up by r0 / r1; the second leaves one
// of the size of the radial part. For an axis along x, y or z the second
// pass changes nothing.
Vec radial_part(const Vec& v, const Vec& a) {
    const Vec once = v - dot(a, v) * a;
    return once - dot(a, once) * a;
}

// Largest distance between an arc of radius r spanning angle and its chord.
double chord_deviation(double r, double angle) {
    double s = std::sin(angle / 4.0);
    return 2.0 * r * s * s;
}

}  // namespace

int ZORAPI_GetArcStepInfo(const double* start, const double* centre, const double* end, const double* axis,
                          double maxStepDegrees, double tolerance, int* count, double* first, double* point,
                          double* second, double* third, double* vector) {
    // The degenerate plan: one step, straight to the end.
    int n = 1;
    double stepAngle = 0.0, ratioStep = 0.0;

    const Vec s = load(start), c = load(centre), e = load(end);
    Vec a;
    if (finite(s) && finite(c) && finite(e) && unit_axis(axis, a)) {
        const Vec u0 = radial_part(s - c, a), u1 = radial_part(e - c, a);
        const double r0 = std::sqrt(dot(u0, u0)), r1 = std::sqrt(dot(u1, u1));
        if (r0 > kOnAxis * std::sqrt(dot(s - c, s - c)) && r1 > kOnAxis * std::sqrt(dot(e - c, e - c)) &&
            std::isfinite(r0) && std::isfinite(r1)) {
            double sweep = std::atan2(dot(a, cross(u0, u1)), dot(u0, u1));
            if (sweep <= 0.0) sweep += 2.0 * kPi;  // equal directions make a full turn
            const double r = r0 > r1 ? r0 : r1;
            double relative = tolerance / r;
            if (!(relative >= kMinRelativeTolerance)) relative = kMinRelativeTolerance;
            const double allowed = r * relative;
            double maxStep = maxStepDegrees * kPi / 180.0;
            if (!(maxStep > 0.0)) maxStep = 2.0 * kPi;
            // Widest step the tolerance allows; the loops below settle the
            // rounding of the estimate so that n is the least count that works.
            const double byTolerance = relative >= 2.0 ? 2.0 * kPi : 4.0 * std::asin(std::sqrt(relative / 2.0));
            const double widest = byTolerance < maxStep ? byTolerance : maxStep;
            const auto fits = [&](int k) { return sweep / k <= maxStep && chord_deviation(r, sweep / k) <= allowed; };
            n = static_cast<int>(std::ceil(sweep / widest));
            if (n < 1) n = 1;
            while (n > 1 && fits(n - 1)) --n;
            while (!fits(n)) ++n;
            stepAngle = sweep / n;
            ratioStep = (r0 / r1 - 1.0) / n;
        }
    }

    if (count != nullptr) *count = n;
    if (first != nullptr) *first = stepAngle;
    if (second != nullptr) *second = n;
    if (third != nullptr) *third = ratioStep;
    if (vector != nullptr) store(e, vector);
    if (point != nullptr) store(s, point);
    return 1;
}

int ZORAPI_GetArcStep(const double* axis, double second, double third, const double* vector, const double* centre,
                      double first, int step, double* point) {
    if (point == nullptr) return 1;
    const Vec e = load(vector);
    const double remaining = second - step;
    Vec a;
    if (!(remaining > 0.0) || !unit_axis(axis, a)) {
        store(e, point);
        return 1;
    }
    const Vec c = load(centre);
    const Vec w = e - c;
    const double height = dot(a, w);
    const Vec radial = radial_part(w, a);
    const double angle = -remaining * first;
    const double ratio = 1.0 + remaining * third;
    // Intermediate points keep the end's height along the axis.
    const Vec turned = std::cos(angle) * radial + std::sin(angle) * cross(a, radial);
    store(c + height * a + ratio * turned, point);
    return 1;
}
