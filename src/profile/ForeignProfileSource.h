// Tells which foreign source a profile file comes from, for tools that are
// given a file without being told (zormodel profile).
#pragma once

#include <string>

namespace zor {

// "vericut" (Vericut extrusion), "vericut-sor" (Vericut turned profile),
// "machineworks-ext", "machineworks-rot", "sirius", or "" when none fits:
//  - a file that loads as XML: an element "Sweep" at or below the root gives
//    "vericut", else "Sor" gives "vericut-sor", else "profile" gives
//    "machineworks-rot" when one of its child elements has other than two
//    attributes (an arc) and "machineworks-ext" otherwise (a rotation made of
//    points only reads as an extrusion: say so with --from);
//  - a text file with a "LINE = ... ( ... )" or "ARC = ... ( ... )" line is
//    "sirius";
//  - a text file of at least five lines whose line 4 holds one field (zMin or
//    the tolerance) and which does not start with "KOLP" (the native profile
//    files) is Vericut plain text: "vericut" when line 5 holds one field
//    (zMax), "vericut-sor" otherwise (the first point).
std::string detect_profile_source(const char* path);

}  // namespace zor
