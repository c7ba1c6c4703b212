// The profile solids of the object file: extrusions ("C3dObjectSplineExtrude")
// and revolutions ("C3dObjectSplineLathe"), each holding its profile as a
// nested outline block of LINE / CLW / CCLW lines.
#include <cmath>
#include <cstring>
#include <memory>

#include "objectfile/FieldScan.h"
#include "objectfile/MWZORFile.h"
#include "objectfile/ReadGuard.h"
#include "profile/MWZORSegment.h"
#include "profile/NewSegment.h"

namespace {

constexpr unsigned int kOutlineHeaderVersion = 114;  // outline and revolution headers end here
constexpr unsigned int kExtrusionHeaderVersion = 115;

// The keyword of a segment line (already upper-cased), by prefix in this
// order; 0 when none matches.
int segment_type(const CString& line) {
    if (std::strncmp(line.GetString(), "LINE", 4) == 0) return IO_LINE;
    if (std::strncmp(line.GetString(), "CLW", 3) == 0) return IO_CLW;
    if (std::strncmp(line.GetString(), "CCLW", 4) == 0) return IO_CCLW;
    return 0;
}

const CMWZORPoint* last_point(const CMWZORSegment* segment) {
    return segment->m_points[segment->m_points.GetSize() - 1];
}

// Outline points closer than this count as the same point.
constexpr double kClosingTolerance = 0.0001;

// The closing test compares absolute values, so (1, 0, 0) meets (-1, 0, 0).
// Files in use were written against this test; keep it.
bool same_closing_point(const CMWZORPoint& a, const CMWZORPoint& b) {
    return std::fabs(std::fabs(a.x) - std::fabs(b.x)) <= kClosingTolerance &&
           std::fabs(std::fabs(a.y) - std::fabs(b.y)) <= kClosingTolerance &&
           std::fabs(std::fabs(a.z) - std::fabs(b.z)) <= kClosingTolerance;
}

}  // namespace

bool CMWZORFile::ReadOutline(double vector[4], unsigned int* segmentCount, CMWZORSegmentPtrArray* segments, CString*,
                             CString*, CString*, double[4][4], float[4], CString*, CString*) {
    return zor::contain_allocation_failure(m_stream, false, [&] {
        if (vector != nullptr)
            for (int i = 0; i < 4; ++i) vector[i] = 0.0;
        if (!SkipLines(1)) return false;  // the block's opener

        int closed = 0;
        if (m_version < kOutlineHeaderVersion) {
            int flags[4] = {0, 0, 0, 0};
            for (int i = 0; i < 4; ++i)
                if (!ReadIntField(1, &flags[i])) return false;
            closed = flags[3];
            double dropped = 0.0;
            for (int i = 0; i < 11; ++i)
                if (!ReadDoubleField(1, &dropped)) return false;
            int droppedInt = 0;
            for (int i = 0; i < 3; ++i)
                if (!ReadIntField(1, &droppedInt)) return false;
        }

        int count = 0;
        if (!ReadIntField(1, &count)) return false;
        if (segments != nullptr) {
            // Sized first: an outline cut short keeps the segments read. A
            // negative count cannot size the list; a huge one that the rest of
            // the file cannot hold is refused before it is used.
            const long long slots = closed != 0 ? count + 1LL : count;
            if (!CountAffordable(slots, sizeof(CMWZORSegment*))) return false;
            segments->SetSize(slots);
        }

        unsigned int reported = static_cast<unsigned int>(count);
        if (segments != nullptr) {
            const CMWZORPoint* first = nullptr;
            for (int i = 0; i < count; ++i) {
                CString value, whole;
                if (!ReadField(&value, &whole)) return false;
                whole.TrimLeft();
                whole.MakeUpper();
                const int type = segment_type(whole);
                if (type == 0) return false;
                // Single precision is what the application's own reader keeps;
                // files compare equal to it only so.
                float v[6] = {0, 0, 0, 0, 0, 0};
                if (!zor::ScanFloats(value, type == IO_LINE ? 3 : 6, v, ",")) return false;

                std::unique_ptr<CMWZORSegment> made =
                    type == IO_LINE
                        ? zor::new_line_segment(v[0], v[1], v[2])
                        : zor::new_arc_segment(v[0], v[1], v[2], v[3], v[4], v[5], static_cast<m_IOenumType>(type));
                CMWZORSegment* segment = made.release();
                segments->SetAt(i, segment);

                if (closed == 0) continue;
                if (i == 0) first = last_point(segment);
                if (i == count - 1 && !same_closing_point(*first, *last_point(segment))) {
                    // The closing line goes to a list of its own that is dropped:
                    // the caller's list keeps its last slot empty while the count
                    // says N + 1. Hosts are written against exactly this.
                    CMWZORSegmentArray closing;
                    closing.AddPoint(first->x, first->y, first->z);
                    reported = static_cast<unsigned int>(count) + 1;
                }
            }
        }
        if (segmentCount != nullptr) *segmentCount = reported;

        ++m_depth;
        return SkipToRecordDepth();
    });
}

namespace {

// Multiplies every point of every segment, the arc axes included (an axis
// (0, 0, 1) becomes (0, 0, 25.4): hosts expect it so). An empty last slot
// of a closed outline is passed over instead of dereferenced.
void scale_segments(CMWZORSegmentPtrArray* segments, double factor) {
    if (segments == nullptr) return;
    for (long long i = 0; i < segments->GetSize(); ++i) {
        CMWZORSegment* segment = segments->GetAt(i);
        if (segment == nullptr) continue;
        for (long long p = 0; p < segment->m_points.GetSize(); ++p) {
            CMWZORPoint* point = segment->m_points[p];
            if (point == nullptr) continue;
            point->x *= factor;
            point->y *= factor;
            point->z *= factor;
        }
    }
}

}  // namespace

bool CMWZORFile::ReadExtrusion(double vector[4], unsigned int* segmentCount, CMWZORSegmentPtrArray* segments, CString*,
                               CString*, CString*, double matrix[4][4], CMWZORPointArray* list1,
                               CMWZORPointArray* list2, float quad[4], double direction[4], double* length,
                               CString* name, CString* tailText, CString* attachName, CString* attachKey,
                               unsigned int* attachIndex) {
    return zor::contain_allocation_failure(m_stream, false, [&] {
        if (vector != nullptr)
            for (int i = 0; i < 4; ++i) vector[i] = 0.0;
        if (direction != nullptr)
            for (int i = 0; i < 4; ++i) direction[i] = 0.0;

        // The extrusion's own header ends at 1.15, one version after the
        // outline's: that is how the application wrote them.
        const bool oldHeader = m_version < kExtrusionHeaderVersion;
        if (oldHeader && !SkipIntLines(2)) return false;
        if (!ReadDoubleField(3, direction)) return false;
        if (!ReadDoubleField(1, length)) return false;
        double dropped[2] = {0.0, 0.0};
        if (!ReadDoubleField(2, dropped)) return false;
        if (!ReadOutline(nullptr, segmentCount, segments, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr))
            return false;
        if (oldHeader && !SkipProfileTrailer()) return false;
        return ReadProfileTail(vector, segments, matrix, list1, list2, quad, name, tailText, attachName, attachKey,
                               attachIndex);
    });
}

bool CMWZORFile::ReadRevolution(double vector[4], unsigned int* segmentCount, CMWZORSegmentPtrArray* segments, CString*,
                                CString*, CString*, double matrix[4][4], CMWZORPointArray* list1,
                                CMWZORPointArray* list2, float quad[4], double axis[4], double* angle, CString* name,
                                CString* tailText, CString* attachName, CString* attachKey, unsigned int* attachIndex) {
    return zor::contain_allocation_failure(m_stream, false, [&] {
        if (vector != nullptr)
            for (int i = 0; i < 4; ++i) vector[i] = 0.0;
        if (axis != nullptr)
            for (int i = 0; i < 4; ++i) axis[i] = 0.0;

        const bool oldHeader = m_version < kOutlineHeaderVersion;
        if (oldHeader) {
            double dropped = 0.0;
            if (!ReadDoubleField(1, &dropped) || !SkipLines(1) || !ReadDoubleField(1, angle) || !SkipLines(1))
                return false;
        }
        // The file carries no axis: revolutions turn about Z.
        if (axis != nullptr) axis[2] = 1.0;
        if (!ReadOutline(nullptr, segmentCount, segments, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr))
            return false;
        if (oldHeader && !SkipProfileTrailer()) return false;
        return ReadProfileTail(vector, segments, matrix, list1, list2, quad, name, tailText, attachName, attachKey,
                               attachIndex);
    });
}

bool CMWZORFile::SkipIntLines(int count) {
    int dropped = 0;
    for (int i = 0; i < count; ++i)
        if (!ReadIntField(1, &dropped)) return false;
    return true;
}

// Lines after the outline block in old files: two triples and four integers.
bool CMWZORFile::SkipProfileTrailer() {
    double dropped[3] = {0.0, 0.0, 0.0};
    for (int i = 0; i < 2; ++i)
        if (!ReadDoubleField(3, dropped)) return false;
    return SkipIntLines(4);
}

// Geometry block, common tail, then unit conversion of the whole record. The
// direction, length, axis and angle stay as read.
bool CMWZORFile::ReadProfileTail(double vector[4], CMWZORSegmentPtrArray* segments, double matrix[4][4],
                                 CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4], CString* name,
                                 CString* tailText, CString* attachName, CString* attachKey,
                                 unsigned int* attachIndex) {
    CString nameValue;
    CString* nameOut = name != nullptr ? name : &nameValue;
    if (!ReadGeometryBlock(list1, list2, nameOut, nullptr, nullptr, nullptr, nullptr)) return false;
    int recordUnits = 0, flag = 0;
    if (!ReadObjectTail(vector, matrix, quad, nameOut, tailText, attachName, attachKey, attachIndex, &recordUnits,
                        &flag))
        return false;
    double factor;
    if (!GetUnitFactor(recordUnits, &factor)) return true;
    ScaleRecord(recordUnits, vector, matrix, nullptr, 0);
    scale_segments(segments, factor);
    return true;
}
