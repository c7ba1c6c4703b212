// The contour builder: quantise end points, sort them, pair coincident ends,
// walk the pairs into chains and turn segments round to run one way.
#include "profile/SegmentContours.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>
#include <vector>

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

// Quantised coordinates. The records hold 32-bit values, which coordinates
// far from the origin would overflow (undefined in the old builder): the
// records get the value saturated, while matching uses the full 64-bit key,
// so every drawing whose keys fit in 32 bits is joined exactly as before.
struct Key {
    long long q[3];
};

bool operator==(const Key& a, const Key& b) { return a.q[0] == b.q[0] && a.q[1] == b.q[1] && a.q[2] == b.q[2]; }
bool operator<(const Key& a, const Key& b) {
    if (a.q[0] != b.q[0]) return a.q[0] < b.q[0];
    if (a.q[1] != b.q[1]) return a.q[1] < b.q[1];
    return a.q[2] < b.q[2];
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
    void* p = std::malloc(sizeof(T));
    if (p == nullptr) throw std::bad_alloc();
    return static_cast<T*>(p);
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

Segment_result* build_segment_contours(Segment_settings& settings, Segment_ord* first) {
    const int factor = contour_factor(settings.tolerance);
    settings.factor = factor;

    std::vector<Segment_ord*> segments;
    for (Segment_ord* s = first; s != nullptr; s = s->next) {
        const int index = static_cast<int>(segments.size());
        s->nextInContour = nullptr;
        s->sense = 1;
        s->inputNumber = index;
        s->sequence = index;
        segments.push_back(s);
    }
    const std::size_t n = segments.size();

    // keys[2 * i + e]: end e of segment i as given. Walking and comparing go
    // through these, so a segment turned round by an earlier contour still
    // shows the point at which it was joined.
    std::vector<Key> keys(2 * n);
    struct Sorted {
        Key key;
        int end;  // 2 * segment + end number
    };
    std::vector<Sorted> order(2 * n);
    for (std::size_t i = 0; i < n; ++i) {
        Segment_ord* s = segments[i];
        for (int e = 0; e < 2; ++e) {
            Segment_end* p = s->end[e];
            Key& k = keys[2 * i + static_cast<std::size_t>(e)];
            k = {{quantise(p->x, factor), quantise(p->y, factor), quantise(p->z, factor)}};
            p->owner = s;
            p->qx = saturate(k.q[0]);
            p->qy = saturate(k.q[1]);
            p->qz = saturate(k.q[2]);
            p->extra[0] = p->extra[1] = 0;
            p->segment = static_cast<int>(i);
            p->end = e;
            order[2 * i + static_cast<std::size_t>(e)] = {k, static_cast<int>(2 * i) + e};
        }
        s->state = 0;
        s->neighbourIndex[0] = s->neighbourIndex[1] = -1;
        s->neighbourEnd[0] = s->neighbourEnd[1] = -1;
        // The neighbours are written only when joined; clear them so that a
        // reused record does not keep an old join.
        s->neighbour[0] = s->neighbour[1] = nullptr;
    }

    // The order of the old stable top-down merge sort: equal keys keep input
    // order (segment, then end 0 before end 1). Breaking ties by that input
    // position gives the same order with an unstable sort, which is faster.
    std::sort(order.begin(), order.end(), [](const Sorted& a, const Sorted& b) {
        if (a.key == b.key) return a.end < b.end;
        return a.key < b.key;
    });

    // Only pairs are joined: of three coincident ends the third stays free.
    for (std::size_t i = 0; i + 1 < order.size();) {
        const int a = order[i].end, b = order[i + 1].end;
        if (!(order[i].key == order[i + 1].key)) {
            ++i;
            continue;
        }
        Segment_ord* sa = segments[a / 2];
        Segment_ord* sb = segments[b / 2];
        sa->neighbour[a % 2] = sb;
        sa->neighbourIndex[a % 2] = b / 2;
        sa->neighbourEnd[a % 2] = b % 2;
        sb->neighbour[b % 2] = sa;
        sb->neighbourIndex[b % 2] = a / 2;
        sb->neighbourEnd[b % 2] = a % 2;
        i += 2;
    }

    Segment_result* result = allocate<Segment_result>();
    result->first = nullptr;
    result->walked = 0;
    result->zero = 0;
    result->segmentCount = static_cast<int>(n);
    result->input = first;

    Segment_contour** tail = &result->first;
    long long walkedTotal = 0;
    int contourNumber = 0;
    std::size_t nextFree = 0;  // states only grow, so the search for a start is linear overall
    for (std::size_t startIndex = 0; startIndex < n;) {
        Segment_ord* start = segments[startIndex];
        Segment_end* startEnd = start->end[0];
        const Key& startKey = keys[2 * startIndex];

        int walked = 0;
        bool closed = false;
        std::size_t current = startIndex;
        int entered = 0;
        for (;;) {
            Segment_ord* s = segments[current];
            ++walked;
            s->state = 1;
            if (entered == 1) s->sense = -1;
            const int other = 1 - entered;
            Segment_ord* neighbour = s->neighbour[other];
            if (neighbour == nullptr) break;  // open
            const std::size_t neighbourIndex = static_cast<std::size_t>(s->neighbourIndex[other]);
            const int joinedEnd = s->neighbourEnd[other];
            s->nextInContour = neighbour;
            const bool atStart = keys[2 * neighbourIndex + static_cast<std::size_t>(joinedEnd)] == startKey;
            if (neighbour->state != 0 || atStart) {
                closed = atStart;
                break;
            }
            current = neighbourIndex;
            entered = joinedEnd;
        }

        Segment_ord* s = start;
        for (int k = 0; k < walked && s != nullptr; ++k) {
            if (s->state != 2 && s->sense == -1) {
                std::swap(s->end[0], s->end[1]);
                s->direction = -s->direction;
            }
            s->state = 2;
            Segment_ord* next = s->nextInContour;
            if (k == walked - 1 || next == start) {
                s->nextInContour = nullptr;
                break;
            }
            s = next;
        }

        Segment_contour* contour = allocate<Segment_contour>();
        contour->start = startEnd;
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
        while (nextFree < n && segments[nextFree]->state != 0) ++nextFree;
        startIndex = nextFree < n ? nextFree : n;
    }
    result->walked = static_cast<int>(walkedTotal);
    return result;
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
    return zor::build_segment_contours(*static_cast<Segment_settings*>(settings), first);
}

void API_ReleaseSegmentContours(void* result) { zor::release_segment_contours(static_cast<Segment_result*>(result)); }
