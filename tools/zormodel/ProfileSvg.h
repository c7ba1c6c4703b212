// Pictures of profiles: the chain drawn as an SVG polyline, arcs stepped at
// the list's tolerance, with the start point marked, an arrow on every
// segment showing the direction of travel and a cross on every arc centre.
#pragma once

#include <string>

#include "Report.h"
#include "ZORModelIo.h"

namespace zormodel {

// Writes the picture of list (its X and Y; +Y up) to path; false if the file
// cannot be created. title is printed above the drawing. Walks the list with
// its cursor and uses the module's arc stepping.
bool write_profile_svg(CMWZORSegmentArray& list, const std::string& path, const std::string& title);

// One segment for printing: "line" with its end, "clw"/"cclw" with centre,
// axis and end, "empty" for a null slot, "type N" for anything else.
Report segment_report(const CMWZORSegment* segment);

}  // namespace zormodel
