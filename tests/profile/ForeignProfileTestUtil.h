// What the foreign profile tests compare: a segment list as plain values.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

#include "profile/MWZORSegment.h"

namespace zortest {

// A line (type 1) and its end, or an arc (2, 3) with its centre and end.
struct Seg {
    int type;
    double x, y, z;                 // end point
    double cx = 0, cy = 0, cz = 0;  // arc centre

    bool operator==(const Seg& o) const {
        return type == o.type && x == o.x && y == o.y && z == o.z && cx == o.cx && cy == o.cy && cz == o.cz;
    }
};

inline Seg L(double x, double y, double z = 0) { return Seg{IO_LINE, x, y, z}; }
inline Seg A(int type, double cx, double cy, double x, double y, double cz = 0, double z = 0) {
    return Seg{type, x, y, z, cx, cy, cz};
}

inline std::ostream& operator<<(std::ostream& out, const Seg& s) {
    out << (s.type == IO_LINE   ? "L"
            : s.type == IO_CLW  ? "CLW"
            : s.type == IO_CCLW ? "CCLW"
                                : "?")
        << "(" << s.x << ", " << s.y << ", " << s.z << ")";
    if (s.type != IO_LINE) out << " about (" << s.cx << ", " << s.cy << ", " << s.cz << ")";
    return out;
}

// The list's segments; also checks each arc's axis against its type.
inline std::vector<Seg> segments_of(const CMWZORSegmentArray& list) {
    std::vector<Seg> out;
    for (long long i = 0; i < list.m_segments.GetSize(); ++i) {
        const CMWZORSegment* s = list.m_segments[i];
        if (s->m_type == IO_LINE) {
            out.push_back(L(s->m_points[0]->x, s->m_points[0]->y, s->m_points[0]->z));
        } else {
            EXPECT_EQ(s->m_points[1]->z, s->m_type == IO_CCLW ? 1.0 : -1.0);
            out.push_back(A(s->m_type, s->m_points[0]->x, s->m_points[0]->y, s->m_points[2]->x, s->m_points[2]->y,
                            s->m_points[0]->z, s->m_points[2]->z));
        }
    }
    return out;
}

}  // namespace zortest
