// A segment list as plain values, for comparing whole profiles in one assertion.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

#include "profile/MWZORSegment.h"

namespace zortest {

// A line (IO_LINE) and its end, or an arc (IO_CLW, IO_CCLW) with its end and centre.
struct Seg {
    int type;
    double x, y, z, cx = 0, cy = 0, cz = 0;
    bool operator==(const Seg& o) const {
        return type == o.type && x == o.x && y == o.y && z == o.z && cx == o.cx && cy == o.cy && cz == o.cz;
    }
};
using Segs = std::vector<Seg>;

inline Seg L(double x, double y, double z = 0) { return Seg{IO_LINE, x, y, z}; }
inline Seg A(int type, double cx, double cy, double x, double y, double cz = 0, double z = 0) {
    return Seg{type, x, y, z, cx, cy, cz};
}
inline void PrintTo(const Seg& s, std::ostream* out) {
    *out << s.type << "(" << s.x << " " << s.y << " " << s.z << " about " << s.cx << " " << s.cy << " " << s.cz << ")";
}

// The list's segments; also checks each arc's axis against its type.
inline Segs segments_of(const CMWZORSegmentArray& list) {
    Segs out;
    for (long long i = 0; i < list.m_segments.GetSize(); ++i) {
        const CMWZORSegment* s = list.m_segments[i];
        const CMWZORPoint* e = s->m_points[s->m_type == IO_LINE ? 0 : 2];
        out.push_back(Seg{s->m_type, e->x, e->y, e->z});
        if (s->m_type == IO_LINE) continue;
        EXPECT_EQ(s->m_points[1]->z, s->m_type == IO_CCLW ? 1.0 : -1.0);
        const CMWZORPoint* c = s->m_points[0];
        out.back() = Seg{s->m_type, e->x, e->y, e->z, c->x, c->y, c->z};
    }
    return out;
}

}  // namespace zortest
