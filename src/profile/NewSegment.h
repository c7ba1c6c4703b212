// Segments made whole or not at all: a new segment and its points stay owned
// here until a list takes the segment, so that running out of memory half-way
// leaks nothing.
#pragma once

#include <memory>

#include "profile/MWZORSegment.h"

namespace zor {

// An IO_LINE ending at (x, y, z).
std::unique_ptr<CMWZORSegment> new_line_segment(double x, double y, double z);
// An arc of the given type (stored unchecked): centre, axis (0, 0, 1) for
// IO_CCLW and (0, 0, -1) otherwise, end.
std::unique_ptr<CMWZORSegment> new_arc_segment(double cx, double cy, double cz, double ex, double ey, double ez,
                                               m_IOenumType type);
// Appends segment to list, which owns it from then on; when the list cannot
// grow, the segment is deleted and std::bad_alloc thrown.
void append_segment(CMWZORSegmentPtrArray& list, std::unique_ptr<CMWZORSegment> segment);

}  // namespace zor
