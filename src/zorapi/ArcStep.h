// Arc stepping: turns a circular arc into points whose chords stay within a
// tolerance of the arc. These two functions stand in for the maker's utility
// library and keep its argument lists; they are internal (not exported).
//
// Every point is a pointer to three doubles x, y, z. The arc runs from start
// to end turning about axis by the right-hand rule; start equal to end is a
// full turn.
#pragma once

// The largest angle, in degrees, that one step may span; the module passes
// this value as maxStepDegrees. It keeps every chord shorter than a half turn,
// so even a coarse tolerance leaves at least two chords on a semicircle and
// four on a full circle, and the polyline still shows which side the arc
// bulges to and which way it turns.
constexpr double kArcMaxStepDegrees = 100.0;

// Plans the steps of an arc. count receives n >= 1: the smallest number of
// equal steps whose chords deviate from the arc by no more than tolerance and
// span no more than maxStepDegrees each. point receives the start. first,
// second, third and vector receive what ZORAPI_GetArcStep needs. Degenerate
// arcs (zero radius, start or end on the axis within rounding, zero axis,
// non-finite input) get one step straight to the end; a tolerance below 1e-9
// of the radius (zero, negative or NaN included) counts as 1e-9 of the
// radius, so n stays finite. Start and end
// at different radii step along a spiral between the two, planned for the
// larger radius. Null outputs are skipped. Returns 1.
int ZORAPI_GetArcStepInfo(const double* start, const double* centre, const double* end, const double* axis,
                          double maxStepDegrees, double tolerance, int* count, double* first, double* point,
                          double* second, double* third, double* vector);

// Point number step (1..n) of the arc planned by ZORAPI_GetArcStepInfo;
// step n (and beyond) is the end point exactly. Returns 1.
int ZORAPI_GetArcStep(const double* axis, double second, double third, const double* vector, const double* centre,
                      double first, int step, double* point);
