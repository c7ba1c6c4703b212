// CMWZORSegmentArray::GetArcStep: gathers the arc at the cursor and hands it
// to the arc-stepping functions, keeping their plan between calls.
#include "profile/ArcStepState.h"
#include "profile/MWZORSegment.h"
#include "zorapi/ArcStep.h"

namespace zor {

ArcStepState& arc_step_state() {
    static ArcStepState state;
    return state;
}

void reset_arc_step_state() { arc_step_state() = ArcStepState(); }

}  // namespace zor

namespace {

void copy_point(const CMWZORPoint& from, double* to) {
    to[0] = from.x;
    to[1] = from.y;
    to[2] = from.z;
}

void write_out(const double* point, double* x, double* y, double* z) {
    if (x != nullptr) *x = point[0];
    if (y != nullptr) *y = point[1];
    if (z != nullptr) *z = point[2];
}

}  // namespace

int CMWZORSegmentArray::GetArcStep(double* x, double* y, double* z, int step) {
    zor::ArcStepState& state = zor::arc_step_state();
    if (step < 0) return 0;
    if (step > 0) {
        if (!state.haveStart || step > state.count) return 0;
        ZORAPI_GetArcStep(state.axis, state.second, state.third, state.vector, state.centre, state.first, step,
                          state.point);
        write_out(state.point, x, y, z);
        return step;
    }

    // A failure before the start is found disables stepping until the next
    // good initialisation.
    state.haveStart = false;
    const long long k = m_cursor;
    if (k >= m_segments.GetSize() || k < 1) return 0;
    const CMWZORSegment* previous = m_segments[k - 1];
    if (previous == nullptr) return 0;
    const CMWZORPoint* start = nullptr;
    if (previous->m_type == IO_LINE) {
        start = previous->m_points[0];
    } else if (previous->m_type == IO_CLW || previous->m_type == IO_CCLW) {
        start = previous->m_points[2];
    } else {
        return 0;
    }
    if (start == nullptr) return 0;
    copy_point(*start, state.start);
    state.haveStart = true;

    // From here a failure keeps the previous arc's plan with the new start:
    // later steps still step the previous arc. Clients do not step after a
    // failed initialisation.
    const CMWZORSegment* arc = m_segments[k];
    if (arc == nullptr || (arc->m_type != IO_CLW && arc->m_type != IO_CCLW)) return 0;
    const CMWZORPoint* centre = arc->m_points[0];
    const CMWZORPoint* axis = arc->m_points[1];
    const CMWZORPoint* end = arc->m_points[2];
    if (centre == nullptr || axis == nullptr || end == nullptr) return 0;
    copy_point(*centre, state.centre);
    copy_point(*axis, state.axis);
    copy_point(*end, state.end);

    state.count = 0;
    write_out(state.start, x, y, z);
    ZORAPI_GetArcStepInfo(state.start, state.centre, state.end, state.axis, kArcMaxStepDegrees, m_tolerance,
                          &state.count, &state.first, state.point, &state.second, &state.third, state.vector);
    write_out(state.point, x, y, z);
    return state.count;
}
