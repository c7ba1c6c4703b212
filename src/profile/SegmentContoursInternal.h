// The contour builder behind API_GetSegmentContours, for the module's own
// callers (the DXF reader) and tests.
#pragma once

#include "profile/SegmentContours.h"

namespace zor {

// The quantisation factor for a tolerance: 1.00000000001 / tolerance
// truncated, at least 10.
int contour_factor(double tolerance);

// API_GetSegmentContours with a settings record that is known to be there.
// Every record of the list must have both ends set.
Segment_result* build_segment_contours(Segment_settings& settings, Segment_ord* first);

// Frees a result (null is ignored).
void release_segment_contours(Segment_result* result);

}  // namespace zor
