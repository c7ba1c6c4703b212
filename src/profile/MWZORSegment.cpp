// Segments, the segment list and its text form.
#include "profile/MWZORSegment.h"

#include <string>

#include "profile/NativeProfileText.h"
#include "profile/NewSegment.h"

IMPLEMENT_DYNAMIC(CMWZORSegment, CObject)
IMPLEMENT_DYNAMIC(CMWZORSegmentArray, CObject)

CMWZORSegment::CMWZORSegment() : m_type(IO_LINE) {}

CMWZORSegment::~CMWZORSegment() {
    for (long long i = 0; i < m_points.GetSize(); ++i) delete m_points[i];
    m_points.RemoveAll();
}

// The segment's own accessors were never filled in by the application; hosts
// read segments through the list. They stay empty on purpose.
bool CMWZORSegment::GetType(m_IOenumType*) { return true; }
bool CMWZORSegment::GetLine(double*, double*) { return true; }
bool CMWZORSegment::GetArc(double*, double*, double*, double*, m_IOenumType*) { return true; }
bool CMWZORSegment::GetArcStep(double*, double*) { return true; }

namespace {

// The segment's text line; nothing for another type or a missing point.
void write_segment(zor::NativeProfileText& text, const CMWZORSegment& segment) {
    const CMWZORPointArray& points = segment.m_points;
    auto coordinates = [](const CMWZORPoint& p, double* out) {
        out[0] = p.x;
        out[1] = p.y;
        out[2] = p.z;
    };
    if (segment.m_type == IO_LINE) {
        if (points.GetSize() < 1 || points[0] == nullptr) return;
        text.Line(points[0]->x, points[0]->y, points[0]->z);
    } else if (segment.m_type == IO_CLW || segment.m_type == IO_CCLW) {
        if (points.GetSize() < 3) return;
        if (points[0] == nullptr || points[1] == nullptr || points[2] == nullptr) return;
        double centre[3], axis[3], end[3];
        coordinates(*points[0], centre);
        coordinates(*points[1], axis);
        coordinates(*points[2], end);
        text.Arc(segment.m_type, centre, axis, end);
    }
}

}  // namespace

void CMWZORSegment::WriteText(std::FILE* stream) const {
    if (stream == nullptr) return;
    zor::NativeProfileText text(stream);
    write_segment(text, *this);
}

CMWZORSegmentArray::CMWZORSegmentArray() : m_version(1), m_tolerance(0.005), m_unit(1), m_scale(1.0), m_cursor(0) {}

CMWZORSegmentArray::~CMWZORSegmentArray() {
    for (long long i = 0; i < m_segments.GetSize(); ++i) delete m_segments[i];
    m_segments.RemoveAll();
    for (long long i = 0; i < m_abandoned.GetSize(); ++i) delete m_abandoned[i];
    m_abandoned.RemoveAll();
}

void CMWZORSegmentArray::SetStart() { m_cursor = 0; }

int CMWZORSegmentArray::GetUnit() { return m_unit; }

void CMWZORSegmentArray::SetUnit(int unit) {
    if (unit == 1 || unit == 2) m_unit = unit;
}

// A negative cursor reaches the bounds-checked access below and throws.
CMWZORSegment* CMWZORSegmentArray::GetNext() {
    if (m_cursor >= m_segments.GetSize()) return nullptr;
    CMWZORSegment* segment = m_segments[m_cursor];
    if (segment != nullptr) ++m_cursor;
    return segment;
}

bool CMWZORSegmentArray::GetType(m_IOenumType* type) {
    if (m_cursor >= m_segments.GetSize()) return false;
    const CMWZORSegment* segment = m_segments[m_cursor];
    if (segment == nullptr) return false;
    if (type != nullptr) *type = segment->m_type;
    return true;
}

bool CMWZORSegmentArray::GetLine(double* x, double* y, double* z) {
    if (m_cursor >= m_segments.GetSize()) return false;
    const CMWZORSegment* segment = m_segments[m_cursor];
    if (segment == nullptr || segment->m_type != IO_LINE) return false;
    const CMWZORPoint* end = segment->m_points[0];
    if (end == nullptr) return false;
    if (x != nullptr) *x = end->x;
    if (y != nullptr) *y = end->y;
    if (z != nullptr) *z = end->z;
    return true;
}

bool CMWZORSegmentArray::GetArc(double* cx, double* cy, double* cz, double* ex, double* ey, double* ez,
                                m_IOenumType* type) {
    if (m_cursor >= m_segments.GetSize()) return false;
    const CMWZORSegment* segment = m_segments[m_cursor];
    if (segment == nullptr || (segment->m_type != IO_CLW && segment->m_type != IO_CCLW)) return false;
    const CMWZORPoint* centre = segment->m_points[0];
    const CMWZORPoint* axis = segment->m_points[1];
    const CMWZORPoint* end = segment->m_points[2];
    if (centre == nullptr || axis == nullptr || end == nullptr) return false;
    if (cx != nullptr) *cx = centre->x;
    if (cy != nullptr) *cy = centre->y;
    if (cz != nullptr) *cz = centre->z;
    if (ex != nullptr) *ex = end->x;
    if (ey != nullptr) *ey = end->y;
    if (ez != nullptr) *ez = end->z;
    if (type != nullptr) *type = segment->m_type;
    return true;
}

namespace zor {

namespace {

void add_point(CMWZORSegment& segment, double x, double y, double z) {
    // Room first, so that the new point always finds its place.
    segment.m_points.SetSize(segment.m_points.GetSize() + 1);
    segment.m_points[segment.m_points.GetSize() - 1] = new CMWZORPoint(x, y, z);
}

}  // namespace

std::unique_ptr<CMWZORSegment> new_line_segment(double x, double y, double z) {
    auto segment = std::make_unique<CMWZORSegment>();
    segment->m_type = IO_LINE;
    add_point(*segment, x, y, z);
    return segment;
}

std::unique_ptr<CMWZORSegment> new_arc_segment(double cx, double cy, double cz, double ex, double ey, double ez,
                                               m_IOenumType type) {
    auto segment = std::make_unique<CMWZORSegment>();
    segment->m_type = type;
    add_point(*segment, cx, cy, cz);
    add_point(*segment, 0.0, 0.0, type == IO_CCLW ? 1.0 : -1.0);
    add_point(*segment, ex, ey, ez);
    return segment;
}

void append_segment(CMWZORSegmentPtrArray& list, std::unique_ptr<CMWZORSegment> segment) {
    list.Add(segment.get());
    segment.release();
}

}  // namespace zor

void CMWZORSegmentArray::AddPoint(double x, double y, double z) {
    zor::append_segment(m_segments, zor::new_line_segment(x * m_scale, y * m_scale, z * m_scale));
}

void CMWZORSegmentArray::AddArc(double cx, double cy, double cz, double ex, double ey, double ez, m_IOenumType type) {
    zor::append_segment(m_segments, zor::new_arc_segment(cx * m_scale, cy * m_scale, cz * m_scale, ex * m_scale,
                                                         ey * m_scale, ez * m_scale, type));
}

void CMWZORSegmentArray::WriteBody(std::FILE* stream) const {
    if (stream == nullptr) return;
    zor::NativeProfileText text(stream);
    WriteBody(text);
}

void CMWZORSegmentArray::WriteBody(zor::NativeProfileText& text) const {
    text.Body(m_unit, m_tolerance);
    for (long long i = 0; i < m_segments.GetSize(); ++i)
        if (m_segments[i] != nullptr) write_segment(text, *m_segments[i]);
}

void CMWZORSegmentArray::SetUnitConversion(int wanted, int fileUnit) {
    m_unit = wanted;
    if (wanted == fileUnit || wanted == 0 || fileUnit == 0) return;
    if (fileUnit == 1) {
        m_scale = 1.0 / 25.4;
    } else if (fileUnit == 2) {
        m_scale = 25.4;
    }
}

void CMWZORSegmentArray::AbandonSegments() {
    // Room first: when memory runs out both lists stay as they were, and no
    // segment is ever in both.
    const long long kept = m_abandoned.GetSize();
    m_abandoned.SetSize(kept + m_segments.GetSize());
    for (long long i = 0; i < m_segments.GetSize(); ++i) m_abandoned[kept + i] = m_segments[i];
    m_segments.RemoveAll();
}
