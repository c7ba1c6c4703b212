// The contour builder behind API_GetSegmentContours, for the module's own
// callers (the DXF reader) and tests.
#pragma once

#include <vector>

#include "profile/SegmentContours.h"

namespace zor {

// The quantisation factor for a tolerance: 1.00000000001 / tolerance
// truncated, at least 10.
int contour_factor(double tolerance);

// An end point quantised: x, y and z times the factor, rounded. The records
// hold 32-bit values, which coordinates far from the origin would overflow
// (undefined in the old builder): the records get the value saturated, while
// matching uses the full 64-bit key, so every drawing whose keys fit in 32
// bits is joined exactly as before.
struct ContourKey {
    long long q[3];
};

// The builder's working memory. A caller that joins many lists in a row (the
// DXF reader, layer after layer) keeps one and hands it to every call, so
// that the memory is taken once.
struct ContourScratch {
    struct Slot {
        int anyEnd = -1;   // an end at this point, for its key
        int waiting = -1;  // the end waiting there for a partner, -1 for none
    };
    std::vector<Segment_ord*> segments;
    std::vector<ContourKey> keys;
    std::vector<Slot> slots;
    std::vector<int> partner;
    std::vector<int> point;
    std::vector<signed char> state;
    std::vector<signed char> sense;
    std::vector<int> next;
};

// API_GetSegmentContours with a settings record that is known to be there.
// Every record of the list must have both ends set.
Segment_result* build_segment_contours(Segment_settings& settings, Segment_ord* first,
                                       ContourScratch* scratch = nullptr);

// Frees a result (null is ignored).
void release_segment_contours(Segment_result* result);

}  // namespace zor
