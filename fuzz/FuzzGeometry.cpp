// Arbitrary lines and arcs, given to the two geometry engines that never see
// a file: arc stepping through a segment list, and the contour builder on
// loose segment records. Coordinates come from a small alphabet that makes
// NaN, infinities, huge and tiny values, zero-length segments and shared end
// points likely; the checks trap when a result breaks its contract, and every
// walk over the results is bounded so that a cycle traps instead of hanging.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "ZORModelIo.h"

namespace {

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    bool empty() const { return at_ >= size_; }
    std::uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
    template <class T>
    T raw() {
        T v{};
        unsigned char bytes[sizeof(T)] = {};
        for (unsigned char& b : bytes) b = byte();
        std::memcpy(&v, bytes, sizeof v);
        return v;
    }
    // One coordinate: mostly small grid values (so ends coincide and
    // segments have zero length), sometimes a value no drawing holds.
    double value() {
        const std::uint8_t kind = byte();
        const double sign = (kind & 0x80) ? -1.0 : 1.0;
        if (kind % 16 < 6) return static_cast<std::int8_t>(byte()) * 0.5;
        switch (kind % 16) {
            case 6:
                return std::numeric_limits<double>::quiet_NaN();
            case 7:
                return sign * std::numeric_limits<double>::infinity();
            case 8:
                return sign * 1e300;
            case 9:
                return sign * std::numeric_limits<double>::max();
            case 10:
                return sign * std::numeric_limits<double>::denorm_min();
            case 11:
                return -0.0;
            case 12:
                return raw<double>();
            case 13:
                return raw<float>();
            case 14:
                return static_cast<std::int8_t>(byte()) * 1e-9;  // around a fine tolerance
            default:
                return raw<std::int16_t>() * 1e6;  // far out: quantised beyond 32 bits
        }
    }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

struct Point {
    double x, y, z;
};

struct Segment {
    bool arc;
    m_IOenumType type;
    int end[2];  // indices into the point table
    Point centre;
    bool ownAxis;  // the arc's axis replaced by axis after AddArc: the points are public, a host may set any
    Point axis;
};

constexpr std::size_t kMaxSegments = 4096;

// ---- Arc stepping ---------------------------------------------------------

// Upper bound of the step count: a tolerance finer than 1e-9 of the radius
// counts as 1e-9 of it, about 70 250 steps a full turn.
constexpr int kMaxArcSteps = 70300;
constexpr double kPi = 3.14159265358979323846;

struct Vec {
    double v[3];
    double operator[](int i) const { return v[i]; }
};

Vec vec(const CMWZORPoint* p) { return {{p->x, p->y, p->z}}; }
Vec minus(const Vec& a, const Vec& b) { return {{a[0] - b[0], a[1] - b[1], a[2] - b[2]}}; }
double dot(const Vec& a, const Vec& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
double length(const Vec& a) { return std::sqrt(dot(a, a)); }
Vec cross(const Vec& a, const Vec& b) {
    return {{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]}};
}
bool moderate(const Vec& p) {
    for (double c : p.v)
        if (!(std::fabs(c) <= 1e100)) return false;
    return true;
}

// One arc as the list hands it to the stepping: where the check can measure
// (every value of a size a drawing holds), each point lies between the radii
// of start and end (a spiral when they differ) at the end's height, turns the
// right way about the axis by at most 100 degrees a step, and its chord stays
// within the tolerance (never finer than 1e-9 of the radius).
class ArcCheck {
public:
    ArcCheck(const Vec& start, const Vec& centre, const Vec& axis, const Vec& end, double tolerance)
        : centre_(centre), axis_(axis) {
        const double axisLength = length(axis);
        measurable_ = moderate(start) && moderate(centre) && moderate(end) && moderate(axis) && axisLength > 1e-100;
        if (!measurable_) return;
        for (double& c : axis_.v) c /= axisLength;
        double h0 = 0;
        cylindrical(start, &r0_, &h0, &previous_);
        cylindrical(end, &r1_, &h1_, nullptr);
        // Rounding of the coordinates, with a wide margin. A point far along
        // the axis has a radial part of rounding noise only (the stepping
        // takes it as on the axis): its distance counts too.
        slack_ = 1e-12 * (length(centre) + length(start) + length(end) + std::fmax(r0_, r1_) + std::fabs(h1_) +
                          std::fabs(h0));
        measurable_ = r0_ > 0 && r1_ > 0;
        angular_ = std::fmin(r0_, r1_) > 1e6 * slack_;
        const double r = std::fmax(r0_, r1_);
        allowed_ = tolerance >= 1e-9 * r ? tolerance : 1e-9 * r;
    }

    // Point number step, in order from 1.
    void next(const double* point) {
        if (!measurable_) return;
        const Vec p = {{point[0], point[1], point[2]}};
        double r = 0, h = 0;
        Vec radial;
        cylindrical(p, &r, &h, &radial);
        if (!(r >= std::fmin(r0_, r1_) - slack_ && r <= std::fmax(r0_, r1_) + slack_)) __builtin_trap();
        if (!(std::fabs(h - h1_) <= slack_ + 1e-12 * std::fabs(h))) __builtin_trap();
        if (angular_) {
            const double angle = std::atan2(dot(axis_, cross(previous_, radial)), dot(previous_, radial));
            if (!(angle >= -1e-6 && angle <= 100.0 * kPi / 180.0 + 1e-6)) __builtin_trap();
            const double rMax = std::fmax(r0_, r1_);
            const double s = std::sin(angle / 4.0);
            if (!(2.0 * rMax * s * s <= 1.01 * allowed_ + rMax * std::fabs(angle) * 1e-6)) __builtin_trap();
        }
        previous_ = radial;
    }

private:
    void cylindrical(const Vec& p, double* radius, double* height, Vec* radial) const {
        const Vec w = minus(p, centre_);
        *height = dot(w, axis_);
        const Vec r = {{w[0] - *height * axis_[0], w[1] - *height * axis_[1], w[2] - *height * axis_[2]}};
        *radius = length(r);
        if (radial != nullptr) *radial = r;
    }

    Vec centre_, axis_, previous_{};
    bool measurable_ = false, angular_ = false;
    double r0_ = 0, r1_ = 0, h1_ = 0, slack_ = 0, allowed_ = 0;
};

bool is_arc(m_IOenumType t) { return t == IO_CLW || t == IO_CCLW; }

// Steps every arc of the list; at most budget points are checked in all, and
// past that only each arc's end.
void step_arcs(CMWZORSegmentArray& list, std::size_t budget) {
    list.SetStart();
    m_IOenumType type;
    for (long long guard = 0; list.GetType(&type); ++guard) {
        if (guard > list.m_segments.GetSize()) __builtin_trap();
        const long long k = list.m_cursor;
        double x, y, z;
        const int n = list.GetArcStep(&x, &y, &z, 0);
        // An arc steps from the end of a line or an arc before it.
        const CMWZORSegment* previous = k > 0 ? list.m_segments[k - 1] : nullptr;
        if (previous == nullptr || !is_arc(type) || (previous->m_type != IO_LINE && !is_arc(previous->m_type))) {
            if (n != 0) __builtin_trap();
        } else {
            if (n < 1 || n > kMaxArcSteps) __builtin_trap();
            const CMWZORSegment* arc = list.m_segments[k];
            const Vec start = vec(previous->m_points[previous->m_type == IO_LINE ? 0 : 2]);
            const Vec end = vec(arc->m_points[2]);
            if (std::memcmp(&x, &start.v[0], sizeof x) != 0) __builtin_trap();  // step 0 writes the start
            ArcCheck check(start, vec(arc->m_points[0]), vec(arc->m_points[1]), end, list.m_tolerance);
            const bool all = budget >= static_cast<std::size_t>(n);
            for (int i = all ? 1 : n; i <= n; ++i) {
                if (budget > 0) --budget;
                double p[3];
                if (list.GetArcStep(&p[0], &p[1], &p[2], i) != i) __builtin_trap();
                if (i == n && std::memcmp(p, end.v, sizeof p) != 0) __builtin_trap();  // the end point exactly
                if (all) check.next(p);
            }
            if (list.GetArcStep(&x, &y, &z, n + 1) != 0) __builtin_trap();
        }
        if (list.GetNext() == nullptr) break;
    }
}

void run_arc_stepping(const std::vector<Segment>& segments, const std::vector<Point>& points, double tolerance) {
    CMWZORSegmentArray list;
    list.m_tolerance = tolerance;
    for (const Segment& s : segments) {
        const Point& e = points[static_cast<std::size_t>(s.end[1])];
        if (!s.arc) {
            list.AddPoint(e.x, e.y, e.z);
            continue;
        }
        list.AddArc(s.centre.x, s.centre.y, s.centre.z, e.x, e.y, e.z, s.type);
        if (s.ownAxis) {
            CMWZORPoint* axis = list.m_segments[list.m_segments.GetSize() - 1]->m_points[1];
            axis->x = s.axis.x;
            axis->y = s.axis.y;
            axis->z = s.axis.z;
        }
    }
    step_arcs(list, 100000);
}

// ---- Contours -------------------------------------------------------------

bool same_point(const Segment_end* a, const Segment_end* b) {
    return a->qx == b->qx && a->qy == b->qy && a->qz == b->qz;
}

// The contours partition the input: each segment in exactly one, the walk of
// a contour (bounded by the input's size) meets exactly its segmentCount
// segments, each entered where the one before it left, and a closed contour
// returns to its start. The joins pair ends one to one.
void check_contours(const Segment_result* result, std::vector<Segment_ord>& records, Segment_ord* first) {
    const std::size_t n = records.size();
    if (result == nullptr || result->segmentCount != static_cast<int>(n) || result->input != first || result->zero != 0)
        __builtin_trap();
    std::vector<bool> seen(n, false);
    std::size_t walked = 0, contours = 0;
    for (const Segment_contour* c = result->first; c != nullptr; c = c->next, ++contours) {
        if (contours >= n || c->number != static_cast<int>(contours) || c->segmentCount < 1 ||
            c->endCount != 2 * c->segmentCount || c->startSegment == nullptr || c->start != c->startSegment->end[0])
            __builtin_trap();
        const Segment_ord* last = nullptr;
        int count = 0;
        for (const Segment_ord* s = c->startSegment; s != nullptr; s = s->nextInContour, ++count) {
            const std::size_t index = static_cast<std::size_t>(s - records.data());
            if (index >= n || seen[index] || count >= c->segmentCount) __builtin_trap();
            seen[index] = true;
            if (s->state != 2) __builtin_trap();
            if (last != nullptr && !same_point(last->end[1], s->end[0])) __builtin_trap();
            last = s;
        }
        if (count != c->segmentCount) __builtin_trap();
        if (c->closed && !same_point(last->end[1], c->startSegment->end[0])) __builtin_trap();
        walked += static_cast<std::size_t>(count);
    }
    if (walked != n || result->walked != static_cast<int>(n)) __builtin_trap();
    for (std::size_t i = 0; i < n; ++i) {
        const Segment_ord& s = records[i];
        for (int e = 0; e < 2; ++e) {
            const Segment_ord* t = s.neighbour[e];
            if (t == nullptr) {
                if (s.neighbourIndex[e] != -1 || s.neighbourEnd[e] != -1) __builtin_trap();
                continue;
            }
            const int f = s.neighbourEnd[e];
            if (t != &records[static_cast<std::size_t>(s.neighbourIndex[e])] || (f != 0 && f != 1) ||
                t->neighbour[f] != &s || t->neighbourEnd[f] != e)
                __builtin_trap();
        }
    }
}

void run_contours(const std::vector<Segment>& segments, const std::vector<Point>& points, const std::vector<int>& alias,
                  const double tolerance[2]) {
    // One record per point; an aliased point shares the record of the one it
    // copies, as a caller that links its segments through common ends would.
    std::vector<Segment_end> ends(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        std::memset(&ends[i], 0, sizeof ends[i]);
        ends[i].x = points[i].x;
        ends[i].y = points[i].y;
        ends[i].z = points[i].z;
    }
    const auto end_record = [&](int point) {
        return &ends[static_cast<std::size_t>(alias[static_cast<std::size_t>(point)])];
    };
    std::vector<Segment_end> centres(segments.size());
    std::vector<Segment_ord> records(segments.size());
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const Segment& s = segments[i];
        Segment_ord& r = records[i];
        std::memset(&r, 0, sizeof r);
        std::memset(&centres[i], 0, sizeof centres[i]);
        r.end[0] = end_record(s.end[0]);
        r.end[1] = end_record(s.end[1]);
        r.kind = s.arc ? 2 : 1;
        if (s.arc) {
            centres[i].x = s.centre.x;
            centres[i].y = s.centre.y;
            centres[i].z = s.centre.z;
            r.centre = &centres[i];
            r.direction = s.type == IO_CCLW ? 1 : -1;
        }
        r.next = i + 1 < segments.size() ? &records[i + 1] : nullptr;
        r.previous = i > 0 ? &records[i - 1] : nullptr;
    }
    Segment_ord* first = records.empty() ? nullptr : &records[0];
    // Twice over the same records: a second build sees segments the first
    // turned round and joins it made.
    for (int pass = 0; pass < 2; ++pass) {
        Segment_settings settings;
        std::memset(&settings, 0, sizeof settings);
        settings.tolerance = tolerance[pass];
        auto* result = static_cast<Segment_result*>(API_GetSegmentContours(&settings, first));
        check_contours(result, records, first);
        API_ReleaseSegmentContours(result);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const double tolerance[2] = {in.value(), in.value()};
    std::vector<Point> points;
    std::vector<int> alias;  // point -> the point whose record it shares
    std::vector<Segment> segments;
    const auto new_point = [&] {
        const double x = in.value(), y = in.value(), z = in.value();
        points.push_back({x, y, z});
        alias.push_back(static_cast<int>(points.size() - 1));
        return static_cast<int>(points.size() - 1);
    };
    // An end: a new point, a copy of the previous segment's second end (the
    // chain as drawn), a copy of one of the first 256 points, or that point's
    // very record.
    const auto end_point = [&](int how) {
        if (points.empty() || how == 0) return new_point();
        const int previous = segments.empty() ? static_cast<int>(points.size() - 1) : segments.back().end[1];
        const int copied = how == 1 ? previous : static_cast<int>(in.byte() % points.size());
        points.push_back(points[static_cast<std::size_t>(copied)]);
        alias.push_back(how == 3 ? alias[static_cast<std::size_t>(copied)] : static_cast<int>(points.size() - 1));
        return static_cast<int>(points.size() - 1);
    };
    while (!in.empty() && segments.size() < kMaxSegments) {
        const std::uint8_t op = in.byte();
        Segment s{};
        s.arc = (op & 1) != 0;
        s.end[0] = end_point((op >> 1) & 3);
        s.end[1] = end_point((op >> 3) & 3);
        if (s.arc) {
            s.centre = {in.value(), in.value(), in.value()};
            // Any stored type: AddArc keeps what it is given.
            s.type = (op & 0x80) ? static_cast<m_IOenumType>(in.raw<std::int32_t>()) : ((op & 0x20) ? IO_CCLW : IO_CLW);
            s.ownAxis = (op & 0x40) != 0;
            if (s.ownAxis) s.axis = {in.value(), in.value(), in.value()};
        } else {
            s.type = IO_LINE;
        }
        segments.push_back(s);
    }
    run_arc_stepping(segments, points, tolerance[0]);
    run_contours(segments, points, alias, tolerance);
    return 0;
}
