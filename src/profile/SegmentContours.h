// Segment contours: joins loose lines and arcs into chains by matching end
// points within a tolerance, turns segments round so that each chain runs one
// way, and reports every chain with a flag saying whether it closes.
//
// The records below are shared with the caller field by field (64-bit layout
// checked in SegmentContours.cpp): the caller fills the marked fields, the
// builder writes the others.
#pragma once

#include "module/ZORModelIoExport.h"

struct Segment_ord;

// Settings of one build.
struct Segment_settings {
    char reserved[8];  // not used
    double tolerance;  // end points closer than this (model units) are joined
    int factor;        // written by the builder: the quantisation factor used
};

// One end point (or an arc's centre) of a segment.
struct Segment_end {
    double x, y, z;      // caller
    int reserved0;       // not used
    int qx, qy, qz;      // builder: coordinates times the factor, rounded half up
    int extra[2];        // builder: set to 0
    int segment;         // builder: index of the owning segment in input order
    int end;             // builder: 0 for the segment's first end, 1 for its second
    Segment_ord* owner;  // builder
    void* reserved1;     // not used
    Segment_end* next;   // caller's chaining of a segment's points; not used
};

// One segment: a line or an arc given by its two ends.
struct Segment_ord {
    Segment_end* end[2];         // caller; the builder exchanges them when it turns the segment round
    Segment_end* centre;         // caller: an arc's centre, or null; not used
    int kind;                    // caller: 1 line, 2 arc; not used
    Segment_ord* neighbour[2];   // builder: the segment joined at end 0 / end 1, or null
    int neighbourIndex[2];       // builder: input index of those segments, -1 for none
    int neighbourEnd[2];         // builder: which end of the neighbour is joined, -1 for none
    int sense;                   // builder: 1 as entered, -1 when the walk entered at end 1
    int inputNumber;             // builder: set to the input index
    int sequence;                // builder: input index
    int state;                   // builder: 0 not visited, 1 visited, 2 oriented
    int direction;               // caller's arc direction sign; negated when the segment is turned
    Segment_ord* nextInContour;  // builder: the following segment of the contour, null at its end
    Segment_ord* next;           // caller: the input list, null at the end
    Segment_ord* previous;       // caller; not used
};

// One contour (chain) of the result.
struct Segment_contour {
    Segment_end* start;         // end point where the walk began
    Segment_ord* startSegment;  // first segment; follow nextInContour from it
    int endCount;               // twice segmentCount
    int segmentCount;
    int number;             // from 0
    int closed;             // 1 when the chain returns to its start point
    Segment_contour* next;  // null at the last contour
};

// The result of a build.
struct Segment_result {
    Segment_contour* first;  // null when there is no contour
    int walked;              // segments walked in all contours
    int zero;                // always 0
    int segmentCount;        // records in the input list
    Segment_ord* input;      // the input list's first record
};

// Builds the contours of the list that starts at first (null: an empty list)
// with the tolerance of settings (a Segment_settings) and returns a
// Segment_result, or null when settings is null or memory runs out. The input records are
// updated in place. Release the result with API_ReleaseSegmentContours; the
// input records stay the caller's.
ZORMODELIO_API void* API_GetSegmentContours(void* settings, Segment_ord* first);

// Frees a result of API_GetSegmentContours (its header and contour records);
// null is ignored.
ZORMODELIO_API void API_ReleaseSegmentContours(void* result);
