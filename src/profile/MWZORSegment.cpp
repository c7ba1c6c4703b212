// Segments, the segment list and its text form.
#include "profile/MWZORSegment.h"

#include <string>

#include "profile/FixedText.h"
#include "profile/TextFormat.h"

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

void append_numbers(std::string& out, const CMWZORPoint& p, bool direct) {
    zor::append_fixed6(out, p.x, direct);
    out += ' ';
    zor::append_fixed6(out, p.y, direct);
    out += ' ';
    zor::append_fixed6(out, p.z, direct);
}

// Appends the segment's text line: "LINE < %lf %lf %lf >\n", or for an arc
// "CLW < " / "CCLW < " and nine "%lf" numbers (centre, axis, end) separated
// by blanks, then ">\n". Nothing for another type or a missing point.
void append_segment_text(std::string& out, const CMWZORSegment& segment, bool direct) {
    const CMWZORPointArray& points = segment.m_points;
    if (segment.m_type == IO_LINE) {
        if (points.GetSize() < 1 || points[0] == nullptr) return;
        out += "LINE < ";
        append_numbers(out, *points[0], direct);
        out += " >\n";
    } else if (segment.m_type == IO_CLW || segment.m_type == IO_CCLW) {
        if (points.GetSize() < 3) return;
        const CMWZORPoint* c = points[0];
        const CMWZORPoint* a = points[1];
        const CMWZORPoint* e = points[2];
        if (c == nullptr || a == nullptr || e == nullptr) return;
        out += segment.m_type == IO_CLW ? "CLW < " : "CCLW < ";
        append_numbers(out, *c, direct);
        out += ' ';
        append_numbers(out, *a, direct);
        out += ' ';
        append_numbers(out, *e, direct);
        // No blank before ">" in the arc lines: the files in use look so.
        out += ">\n";
    }
}

void write_text(std::FILE* stream, const std::string& text) {
    if (!text.empty()) std::fwrite(text.data(), 1, text.size(), stream);
}

}  // namespace

void CMWZORSegment::WriteText(std::FILE* stream) const {
    if (stream == nullptr) return;
    std::string line;
    append_segment_text(line, *this, zor::fixed6_direct());
    write_text(stream, line);
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

void CMWZORSegmentArray::AddPoint(double x, double y, double z) {
    CMWZORSegment* segment = new CMWZORSegment;
    segment->m_type = IO_LINE;
    segment->m_points.Add(new CMWZORPoint(x * m_scale, y * m_scale, z * m_scale));
    m_segments.Add(segment);
}

void CMWZORSegmentArray::AddArc(double cx, double cy, double cz, double ex, double ey, double ez, m_IOenumType type) {
    CMWZORSegment* segment = new CMWZORSegment;
    segment->m_type = type;
    segment->m_points.Add(new CMWZORPoint(cx * m_scale, cy * m_scale, cz * m_scale));
    segment->m_points.Add(new CMWZORPoint(0.0, 0.0, type == IO_CCLW ? 1.0 : -1.0));
    segment->m_points.Add(new CMWZORPoint(ex * m_scale, ey * m_scale, ez * m_scale));
    m_segments.Add(segment);
}

void CMWZORSegmentArray::WriteBody(std::FILE* stream) const {
    if (stream == nullptr) return;
    const bool direct = zor::fixed6_direct();
    std::string text = zor::format_text("Unit < %d >\n", m_unit);
    text += "Toler < ";
    zor::append_fixed6(text, m_tolerance, direct);
    text += " >\n";
    // Written in pieces of about 64 KiB: one write per piece.
    constexpr std::size_t kPiece = 1 << 16;
    text.reserve(kPiece + 1024);
    for (long long i = 0; i < m_segments.GetSize(); ++i) {
        if (m_segments[i] != nullptr) append_segment_text(text, *m_segments[i], direct);
        if (text.size() >= kPiece) {
            write_text(stream, text);
            text.clear();
        }
    }
    write_text(stream, text);
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
    for (long long i = 0; i < m_segments.GetSize(); ++i) m_abandoned.Add(m_segments[i]);
    m_segments.RemoveAll();
}
