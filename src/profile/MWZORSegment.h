// Profile segments and the segment list. A profile is a planar chain of lines
// and arcs; each segment stores only where it ends (an arc also its centre and
// axis), and starts where the segment before it ends.
//
// Walking a list: SetStart(); then repeat GetType (stop on false), GetLine or
// GetArc (or GetArcStep) as the type says, GetNext (stop on null).
#pragma once

#include <cstddef>
#include <cstdio>

#include "module/ZORModelIoExport.h"
#include "objectfile/MWZORFile.h"
#include "platform/afx.h"
#include "platform/afxtempl.h"

// Kind of a segment. The underlying type is fixed so that any 32-bit value
// (AddArc stores what it is given) is a valid value of the type.
enum m_IOenumType : int {
    IO_LINE = 1,  // straight, from the previous end point to point 0
    IO_CLW = 2,   // arc, clockwise seen from +Z
    IO_CCLW = 3,  // arc, counter-clockwise seen from +Z
};

// One segment. Points are new'd and owned by the segment:
// IO_LINE: [end]; IO_CLW / IO_CCLW: [centre, axis (0, 0, -1 or +1), end].
class ZORMODELIO_API CMWZORSegment : public CObject {
    DECLARE_DYNAMIC(CMWZORSegment)
public:
    // An IO_LINE segment without points.
    CMWZORSegment();
    // Deletes every point held.
    ~CMWZORSegment() override;

    // Empty stubs kept for the host: they return true and write nothing. Use
    // the CMWZORSegmentArray members of the same names to read a segment.
    bool GetType(m_IOenumType* type);
    bool GetLine(double* x, double* y);
    bool GetArc(double* cx, double* cy, double* ex, double* ey, m_IOenumType* type);
    bool GetArcStep(double* x, double* y);

    // Writes the segment's text line ("LINE < x y z >\n", "CLW < 9 numbers>\n",
    // "CCLW < 9 numbers>\n") to stream; nothing for a null stream, another
    // type or a missing point.
    ZOR_INTERNAL void WriteText(std::FILE* stream) const;

    m_IOenumType m_type;
    CMWZORPointArray m_points;
};

namespace zor {
class NativeProfileText;
}

// An ordered list of segments that owns them, with a cursor for walking it,
// the unit of its coordinates, the scale applied to every coordinate added and
// the chordal tolerance used to step arcs.
class ZORMODELIO_API CMWZORSegmentArray : public CObject {
    DECLARE_DYNAMIC(CMWZORSegmentArray)
public:
    // Empty; version 1, tolerance 0.005, unit 1 (mm), scale 1, cursor 0.
    CMWZORSegmentArray();
    // Deletes every segment (and so every point).
    ~CMWZORSegmentArray() override;

    // Cursor back to the first segment.
    void SetStart();
    // 1 millimetres, 2 inches (other values only after a foreign read).
    int GetUnit();
    // Stores 1 or 2; any other value is ignored. The scale is not touched.
    void SetUnit(int unit);
    // The segment at the cursor (null past the end), moving past it when it
    // is not null.
    CMWZORSegment* GetNext();
    // Type of the segment at the cursor; false past the end or on a null slot.
    bool GetType(m_IOenumType* type);
    // End point of the IO_LINE at the cursor; false if it is not one.
    bool GetLine(double* x, double* y, double* z);
    // Centre, end point and type of the arc at the cursor; false if it is not one.
    bool GetArc(double* cx, double* cy, double* cz, double* ex, double* ey, double* ez, m_IOenumType* type);
    // Points of the arc at the cursor: step 0 starts the arc, writes its start
    // point and returns the number of further steps n (0 on failure); steps 1
    // to n write point number step (n is the end point) and return step;
    // anything else returns 0 and writes nothing. The stepping state is one
    // for the whole module and points into this list: keep the list unchanged
    // while stepping.
    int GetArcStep(double* x, double* y, double* z, int step);
    // Appends an IO_LINE ending at (x, y, z) times the scale. When memory
    // runs out std::bad_alloc is thrown and the list stays as it was (as the
    // framework throws its memory exception).
    void AddPoint(double x, double y, double z);
    // Appends an arc of the given type (stored unchecked): centre and end times
    // the scale; axis (0, 0, 1) for IO_CCLW, else (0, 0, -1). Out of memory:
    // as AddPoint.
    void AddArc(double cx, double cy, double cz, double ex, double ey, double ez, m_IOenumType type);

    // Writes "Unit < u >\n", "Toler < t >\n" and the text line of every
    // non-null segment to stream (nothing for a null stream).
    ZOR_INTERNAL void WriteBody(std::FILE* stream) const;
    ZOR_INTERNAL void WriteBody(zor::NativeProfileText& text) const;

    CMWZORSegmentPtrArray m_segments;  // the chain, owned
    int m_version;                     // version read from a native profile file
    double m_tolerance;                // chordal tolerance for arc stepping
    int m_unit;                        // 1 millimetres, 2 inches
    double m_scale;                    // factor applied by AddPoint and AddArc
    int m_cursor;                      // index of the current segment

protected:
    // Shared by every reader of a profile file: unit becomes wanted (unfiltered)
    // and, when both codes are non-zero and differ, the scale converts from
    // fileUnit (1 or 2) to it. The scale is never reset to 1.
    ZOR_INTERNAL void SetUnitConversion(int wanted, int fileUnit);
    // Keeps segments that Copy took out of this list alive until the list goes,
    // so pointers a client got from it before stay valid.
    ZOR_INTERNAL void AbandonSegments();
    // The native profile file shared by extrusions and sweeps: magic line,
    // version, the Z range when zRange is given, then the body.
    ZOR_INTERNAL bool WriteNativeFile(const CString& path, const char* magic, const double* zRange) const;
    // Reads a native profile file's text (fgets lines of at most 99 bytes),
    // appending its segments; zRange (two doubles) is given for extrusions.
    ZOR_INTERNAL void ReadNativeText(const char* text, size_t size, unsigned int unit, double* zRange);
    // Copy's common part: list fields and segments into target.
    ZOR_INTERNAL void CopyList(CMWZORSegmentArray* target) const;

private:
    CMWZORSegmentPtrArray m_abandoned;
};
