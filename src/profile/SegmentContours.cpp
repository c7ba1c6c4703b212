// The contour builder: quantise end points, pair coincident ends,
// walk the pairs into chains and turn segments round to run one way.
#include "profile/SegmentContours.h"

#include <climits>
#include <cmath>
#include <cstddef>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "module/Allocation.h"
#include "profile/SegmentContoursInternal.h"

// Callers build these records themselves: keep the 64-bit layout fixed.
static_assert(sizeof(void*) != 8 || (offsetof(Segment_settings, tolerance) == 8 &&
                                     offsetof(Segment_settings, factor) == 16 && sizeof(Segment_settings) == 24),
              "Segment_settings layout");
static_assert(sizeof(void*) != 8 || (offsetof(Segment_end, reserved0) == 24 && offsetof(Segment_end, qx) == 28 &&
                                     offsetof(Segment_end, extra) == 40 && offsetof(Segment_end, segment) == 48 &&
                                     offsetof(Segment_end, end) == 52 && offsetof(Segment_end, owner) == 56 &&
                                     offsetof(Segment_end, reserved1) == 64 && offsetof(Segment_end, next) == 72 &&
                                     sizeof(Segment_end) == 80),
              "Segment_end layout");
static_assert(sizeof(void*) != 8 ||
                  (offsetof(Segment_ord, centre) == 16 && offsetof(Segment_ord, kind) == 24 &&
                   offsetof(Segment_ord, neighbour) == 32 && offsetof(Segment_ord, neighbourIndex) == 48 &&
                   offsetof(Segment_ord, neighbourEnd) == 56 && offsetof(Segment_ord, sense) == 64 &&
                   offsetof(Segment_ord, inputNumber) == 68 && offsetof(Segment_ord, sequence) == 72 &&
                   offsetof(Segment_ord, state) == 76 && offsetof(Segment_ord, direction) == 80 &&
                   offsetof(Segment_ord, nextInContour) == 88 && offsetof(Segment_ord, next) == 96 &&
                   offsetof(Segment_ord, previous) == 104 && sizeof(Segment_ord) == 112),
              "Segment_ord layout");
static_assert(sizeof(void*) != 8 ||
                  (offsetof(Segment_contour, endCount) == 16 && offsetof(Segment_contour, number) == 24 &&
                   offsetof(Segment_contour, next) == 32 && sizeof(Segment_contour) == 40),
              "Segment_contour layout");
static_assert(sizeof(void*) != 8 || (offsetof(Segment_result, walked) == 8 && offsetof(Segment_result, zero) == 12 &&
                                     offsetof(Segment_result, segmentCount) == 16 &&
                                     offsetof(Segment_result, input) == 24 && sizeof(Segment_result) == 32),
              "Segment_result layout");

namespace zor {

namespace {

bool operator==(const ContourKey& a, const ContourKey& b) {
    return a.q[0] == b.q[0] && a.q[1] == b.q[1] && a.q[2] == b.q[2];
}

// v times factor, rounded half up: the floor when the fraction is below 0.5,
// else the ceiling (-2.5 gives -2).
long long quantise(double v, int factor) {
    double t = v * factor;
    if (std::isnan(t)) return 0;
    constexpr double kLimit = 4.0e18;  // inside long long, far beyond any drawing
    if (t >= kLimit) return static_cast<long long>(kLimit);
    if (t <= -kLimit) return -static_cast<long long>(kLimit);
    double low = std::floor(t);
    return static_cast<long long>(t - low < 0.5 ? low : low + 1.0);
}

int saturate(long long v) { return v > INT_MAX ? INT_MAX : v < INT_MIN ? INT_MIN : static_cast<int>(v); }

template <class T>
T* allocate() {
    void* p = zor::allocate(sizeof(T));
    if (p == nullptr) throw std::bad_alloc();
    return static_cast<T*>(p);
}

struct ResultRelease {
    void operator()(Segment_result* result) const { release_segment_contours(result); }
};

// Seeded per process, so that a drawing cannot be made to pile its points
// into one run of the table (which would make the pairing quadratic); the
// pairs do not depend on it.
std::uint64_t hash_seed() {
    static const std::uint64_t seed = [] {
        static const char here = 0;
        const auto now = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
        return (reinterpret_cast<std::uintptr_t>(&here) * 0x9E3779B97F4A7C15ULL) ^ now;
    }();
    return seed;
}

std::size_t hash(const ContourKey& key, std::uint64_t seed) {
    std::uint64_t h = seed;
    for (long long q : key.q) {
        h ^= static_cast<std::uint64_t>(q);
        h *= 0xBF58476D1CE4E5B9ULL;
        h ^= h >> 31;
    }
    return static_cast<std::size_t>(h ^ (h >> 29));
}

}  // namespace

int contour_factor(double tolerance) {
    double f = 1.00000000001 / tolerance;
    // Also catches a zero, negative or NaN tolerance, whose quotient is not a
    // usable int (the old builder's conversion was undefined there).
    if (!(f > 10.0)) return 10;
    if (f >= static_cast<double>(INT_MAX)) return INT_MAX;
    int factor = static_cast<int>(f);
    return factor <= 10 ? 10 : factor;
}

Segment_result* build_segment_contours(Segment_settings& settings, Segment_ord* first, ContourScratch* scratch) {
    const int factor = contour_factor(settings.tolerance);
    settings.factor = factor;

    ContourScratch own;
    ContourScratch& w = scratch != nullptr ? *scratch : own;
    std::vector<Segment_ord*>& segments = w.segments;
    segments.clear();
    for (Segment_ord* s = first; s != nullptr; s = s->next) {
        const int index = static_cast<int>(segments.size());
        s->inputNumber = index;
        s->sequence = index;
        segments.push_back(s);
    }
    const std::size_t n = segments.size();

    // keys[2 * i + e]: end e of segment i as given. Walking and comparing go
    // through the ends' numbers, so a segment turned round by an earlier
    // contour still shows the point at which it was joined.
    std::vector<ContourKey>& keys = w.keys;
    keys.resize(2 * n);
    for (std::size_t i = 0; i < n; ++i) {
        Segment_ord* s = segments[i];
        for (int e = 0; e < 2; ++e) {
            Segment_end* p = s->end[e];
            ContourKey& k = keys[2 * i + static_cast<std::size_t>(e)];
            k = {{quantise(p->x, factor), quantise(p->y, factor), quantise(p->z, factor)}};
            p->owner = s;
            p->qx = saturate(k.q[0]);
            p->qy = saturate(k.q[1]);
            p->qz = saturate(k.q[2]);
            p->extra[0] = p->extra[1] = 0;
            p->segment = static_cast<int>(i);
            p->end = e;
        }
    }

    // The old builder sorted the ends (a stable merge sort) and joined
    // neighbours with equal keys two by two: within a point, first with
    // second, third with fourth, in input order (segment, then end 0 before
    // end 1), and an odd one out stays free. Going through the ends in input
    // order with a hash table of the points met so far joins the same pairs
    // in linear time. partner[end]: the end joined to it, -1 for none;
    // point[end]: its point's slot, which tells coincident ends.
    std::size_t size = 16;
    while (size < 4 * n) size *= 2;
    const std::size_t mask = size - 1;
    w.slots.assign(size, ContourScratch::Slot{});
    w.partner.assign(2 * n, -1);
    w.point.resize(2 * n);
    const std::uint64_t seed = hash_seed();
    for (std::size_t end = 0; end < 2 * n; ++end) {
        const ContourKey& key = keys[end];
        std::size_t i = hash(key, seed) & mask;
        while (w.slots[i].anyEnd >= 0 && !(keys[static_cast<std::size_t>(w.slots[i].anyEnd)] == key)) i = (i + 1) & mask;
        ContourScratch::Slot& slot = w.slots[i];
        w.point[end] = static_cast<int>(i);
        if (slot.anyEnd < 0) slot.anyEnd = static_cast<int>(end);
        if (slot.waiting < 0) {
            slot.waiting = static_cast<int>(end);
        } else {
            w.partner[end] = slot.waiting;
            w.partner[static_cast<std::size_t>(slot.waiting)] = static_cast<int>(end);
            slot.waiting = -1;
        }
    }

    // Released again when memory runs out half-way through the contours.
    std::unique_ptr<Segment_result, ResultRelease> owner(allocate<Segment_result>());
    Segment_result* result = owner.get();
    result->first = nullptr;
    result->walked = 0;
    result->zero = 0;
    result->segmentCount = static_cast<int>(n);
    result->input = first;

    // The walk runs on the small arrays (state 0 free, 1 walked, 2 done;
    // sense +1 or -1 as entered; next segment in the contour, -1 for none);
    // the records get the outcome afterwards, in one pass in input order.
    std::vector<signed char>& state = w.state;
    std::vector<signed char>& sense = w.sense;
    std::vector<int>& next = w.next;
    state.assign(n, 0);
    sense.assign(n, 1);
    next.assign(n, -1);
    Segment_contour** tail = &result->first;
    long long walkedTotal = 0;
    int contourNumber = 0;
    std::size_t nextFree = 0;  // states only grow, so the search for a start is linear overall
    for (std::size_t startIndex = 0; startIndex < n;) {
        const int startPoint = w.point[2 * startIndex];
        int walked = 0;
        bool closed = false;
        std::size_t current = startIndex;
        int entered = 0;
        for (;;) {
            ++walked;
            state[current] = 1;
            if (entered == 1) sense[current] = -1;
            const int joined = w.partner[2 * current + static_cast<std::size_t>(1 - entered)];
            if (joined < 0) break;  // open
            const auto neighbour = static_cast<std::size_t>(joined / 2);
            next[current] = static_cast<int>(neighbour);
            const bool atStart = w.point[static_cast<std::size_t>(joined)] == startPoint;
            if (state[neighbour] != 0 || atStart) {
                closed = atStart;
                break;
            }
            current = neighbour;
            entered = joined % 2;
        }

        // The last segment walked ends the contour, whatever it was joined to.
        std::size_t s = startIndex;
        for (int k = 0; k < walked; ++k) {
            state[s] = 2;
            const int following = next[s];
            if (k == walked - 1 || following == static_cast<int>(startIndex)) {
                next[s] = -1;
                break;
            }
            s = static_cast<std::size_t>(following);
        }

        Segment_ord* start = segments[startIndex];
        Segment_contour* contour = allocate<Segment_contour>();
        contour->start = start->end[0];  // a start is never turned
        contour->startSegment = start;
        contour->endCount = 2 * walked;
        contour->segmentCount = walked;
        contour->number = contourNumber++;
        contour->closed = closed ? 1 : 0;
        contour->next = nullptr;
        *tail = contour;
        tail = &contour->next;

        walkedTotal += walked;
        if (walkedTotal >= static_cast<long long>(n) + 1) break;
        while (nextFree < n && state[nextFree] != 0) ++nextFree;
        startIndex = nextFree < n ? nextFree : n;
    }
    result->walked = static_cast<int>(walkedTotal);

    for (std::size_t i = 0; i < n; ++i) {
        Segment_ord* s = segments[i];
        for (std::size_t e = 0; e < 2; ++e) {
            // A reused record must not keep an old join: the unjoined end is cleared.
            const int joined = w.partner[2 * i + e];
            s->neighbour[e] = joined >= 0 ? segments[static_cast<std::size_t>(joined / 2)] : nullptr;
            s->neighbourIndex[e] = joined >= 0 ? joined / 2 : -1;
            s->neighbourEnd[e] = joined >= 0 ? joined % 2 : -1;
        }
        s->state = state[i];
        s->sense = sense[i];
        s->nextInContour = next[i] >= 0 ? segments[static_cast<std::size_t>(next[i])] : nullptr;
        if (state[i] == 2 && sense[i] == -1) {
            // Walked from its end: turned round to run with the contour.
            std::swap(s->end[0], s->end[1]);
            s->direction = -s->direction;
        }
    }
    return owner.release();
}

void release_segment_contours(Segment_result* result) {
    if (result == nullptr) return;
    for (Segment_contour* c = result->first; c != nullptr;) {
        Segment_contour* next = c->next;
        std::free(c);
        c = next;
    }
    std::free(result);
}

}  // namespace zor

void* API_GetSegmentContours(void* settings, Segment_ord* first) {
    if (settings == nullptr) return nullptr;
    // Out of memory: null, as for no settings.
    return zor::failure_on_bad_alloc<void*>(
        nullptr, [&] { return zor::build_segment_contours(*static_cast<Segment_settings*>(settings), first); });
}

void API_ReleaseSegmentContours(void* result) { zor::release_segment_contours(static_cast<Segment_result*>(result)); }
