// The module-wide arc-stepping state of CMWZORSegmentArray::GetArcStep: one
// arc is stepped at a time in the process.
#pragma once

namespace zor {

struct ArcStepState {
    bool haveStart = false;  // an initialisation found a start point
    // Copies of the arc's points taken at initialisation: stepping never
    // reads the list again, so a list changed or freed meanwhile cannot be
    // read through stale pointers.
    double start[3] = {0, 0, 0};
    double centre[3] = {0, 0, 0};
    double axis[3] = {0, 0, 0};
    double end[3] = {0, 0, 0};
    int count = 0;
    double first = 0, second = 0, third = 0;
    double vector[3] = {0, 0, 0};
    double point[3] = {0, 0, 0};  // the last point the stepping functions wrote
};

ArcStepState& arc_step_state();

// Back to the state at load (used by tests).
void reset_arc_step_state();

}  // namespace zor
