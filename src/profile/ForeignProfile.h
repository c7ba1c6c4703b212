// Internals of the foreign profile readers (Vericut, MachineWorks, Sirius),
// shared by the two profile classes and open to tests.
#pragma once

#include "profile/MWZORSegment.h"

namespace zor {

// Holder names under which the readers keep their XML document while reading.
constexpr char kVericutHolder[] = "Start";
constexpr char kMachineWorksHolder[] = "num_2";

// "CW" or "CCW" for an arc about (cx, cy) from (sx, sy) to (ex, ey): the
// shorter turn when at least one end angle is non-negative, the reverse when
// both are negative (files in use were written against that rule).
const char* DirectionOf(double cx, double cy, double sx, double sy, double ex, double ey);

// What a Vericut profile carries besides its chain.
struct VericutFields {
    bool turned = false;          // "Sor" document (else "Sweep")
    double* zRange = nullptr;     // extrusion: zMin, zMax, overwritten where the file gives them
    double* tolerance = nullptr;  // turned profile: overwritten where the file gives it
};

// The Vericut reader after the unit conversion is set on list: the XML path,
// or the plain-text path when the file is not XML. Appends to list.
bool read_vericut(CMWZORSegmentArray& list, const char* path, const VericutFields& fields);

// One field of a Vericut plain-text line stored into target: "%lf" for plain
// decimals; with an exponent ("e", else "E") the value is read in single
// precision and its four bytes replace the low-order four bytes of target,
// which keeps its high-order four bytes. A field that does not convert leaves
// target as it was.
void read_vericut_field(const char* field, double* target);

// The Sirius reader after the unit conversion is set on list (one body for
// both profile classes); false only when the file cannot be opened.
bool read_sirius(CMWZORSegmentArray& list, const char* path);
// True for a line of the Sirius grammar with the keyword LINE or ARC.
bool is_sirius_segment_line(const char* line);

}  // namespace zor
