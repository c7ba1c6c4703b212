#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "profile/SegmentContours.h"

namespace {

struct Seg {
    double x0, y0, x1, y1;
    int direction = 0;
};

// The caller's side: records for a list of segments, chained in order.
class Input {
public:
    explicit Input(const std::vector<Seg>& segs) : m_ends(2 * segs.size()), m_segs(segs.size()) {
        for (size_t i = 0; i < segs.size(); ++i) {
            m_ends[2 * i] =
                Segment_end{segs[i].x0, segs[i].y0, 0.0, 0, 0, 0, 0, {7, 7}, 0, 0, nullptr, nullptr, nullptr};
            m_ends[2 * i + 1] =
                Segment_end{segs[i].x1, segs[i].y1, 0.0, 0, 0, 0, 0, {7, 7}, 0, 0, nullptr, nullptr, nullptr};
            Segment_ord& s = m_segs[i];
            s = Segment_ord{};
            s.end[0] = &m_ends[2 * i];
            s.end[1] = &m_ends[2 * i + 1];
            s.kind = 1;
            s.direction = segs[i].direction;
            s.next = i + 1 < segs.size() ? &m_segs[i + 1] : nullptr;
        }
    }
    Segment_ord* first() { return m_segs.empty() ? nullptr : &m_segs[0]; }
    Segment_ord& operator[](size_t i) { return m_segs[i]; }
    Segment_end* end(size_t i, int e) { return &m_ends[2 * i + static_cast<size_t>(e)]; }
    size_t size() const { return m_segs.size(); }

private:
    std::vector<Segment_end> m_ends;
    std::vector<Segment_ord> m_segs;
};

struct Result {
    Segment_result* r = nullptr;
    explicit Result(void* p) : r(static_cast<Segment_result*>(p)) {}
    ~Result() { API_ReleaseSegmentContours(r); }
    std::vector<const Segment_contour*> contours() const {
        std::vector<const Segment_contour*> out;
        for (const Segment_contour* c = r->first; c != nullptr; c = c->next) out.push_back(c);
        return out;
    }
};

Segment_settings settings(double tolerance) {
    Segment_settings s{};
    s.tolerance = tolerance;
    return s;
}

Result build(Input& in, double tolerance = 0.0001) {
    Segment_settings s = settings(tolerance);
    return Result(API_GetSegmentContours(&s, in.first()));
}

TEST(SegmentContours, QuantisationFactorHasFloorOfTen) {
    const struct {
        double tolerance;
        int factor;
    } cases[] = {{0.0001, 10000}, {0.001, 1000}, {0.05, 20}, {0.2, 10}, {1, 10}, {100, 10}, {-1, 10}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tolerance);
        Input in({{0, 0, 1, 0}});
        Segment_settings s = settings(c.tolerance);
        Result r(API_GetSegmentContours(&s, in.first()));
        EXPECT_EQ(s.factor, c.factor);
    }
}

TEST(SegmentContours, QuantisesHalfUpAndFillsEndRecords) {
    // Factor 10: -0.25 -> -2.5 -> -2, 0.25 -> 3, 0.24 -> 2, -0.26 -> -3.
    Input in({{-0.25, 0.25, 0.24, -0.26}});
    Result r = build(in, 1.0);
    const Segment_end* a = in.end(0, 0);
    const Segment_end* b = in.end(0, 1);
    EXPECT_EQ(std::make_tuple(a->qx, a->qy, a->qz), std::make_tuple(-2, 3, 0));
    EXPECT_EQ(std::make_tuple(b->qx, b->qy, b->qz), std::make_tuple(2, -3, 0));
    EXPECT_EQ(std::make_tuple(a->extra[0], a->extra[1], a->segment, a->end), std::make_tuple(0, 0, 0, 0));
    EXPECT_EQ(std::make_tuple(b->segment, b->end), std::make_tuple(0, 1));
    EXPECT_EQ(a->owner, &in[0]);
}

TEST(SegmentContours, ClosedPairOfLines) {
    Input in({{0, 0, 1, 0}, {1, 0, 0, 0}});
    Result r = build(in);
    auto cs = r.contours();
    ASSERT_EQ(cs.size(), 1u);
    EXPECT_EQ(cs[0]->closed, 1);
    EXPECT_EQ(cs[0]->segmentCount, 2);
    EXPECT_EQ(cs[0]->endCount, 4);
    EXPECT_EQ(cs[0]->startSegment, &in[0]);
    EXPECT_EQ(cs[0]->start, in.end(0, 0));
    EXPECT_EQ(in[0].nextInContour, &in[1]);
    EXPECT_EQ(in[1].nextInContour, nullptr);
    EXPECT_EQ(in[1].sense, 1);
    EXPECT_EQ(r.r->walked, 2);
    EXPECT_EQ(r.r->segmentCount, 2);
    EXPECT_EQ(r.r->input, &in[0]);
    EXPECT_EQ(in[0].neighbourIndex[1], 1);
    EXPECT_EQ(in[0].neighbourEnd[1], 0);
}

TEST(SegmentContours, OpenChainTurnsSegmentAndNegatesDirection) {
    Input in({{0, 0, 1, 0, 1}, {2, 0, 1, 0, 1}});
    Segment_end* origEnd0 = in.end(1, 0);
    Result r = build(in);
    auto cs = r.contours();
    ASSERT_EQ(cs.size(), 1u);
    EXPECT_EQ(cs[0]->closed, 0);
    EXPECT_EQ(cs[0]->segmentCount, 2);
    EXPECT_EQ(in[1].sense, -1);
    EXPECT_EQ(in[1].direction, -1);
    EXPECT_EQ(in[1].end[1], origEnd0);  // ends exchanged
    EXPECT_EQ(in[1].end[0]->x, 1.0);
    EXPECT_EQ(in[0].direction, 1);
    EXPECT_EQ(in[1].state, 2);
}

TEST(SegmentContours, OpenChainStartedInsideIsPickedUpAsSecondContour) {
    // Segment 0 is the inner one: the walk goes forward from its end 0 only,
    // and segment 1 becomes a contour of its own that stops at segment 0.
    Input in({{1, 0, 2, 0}, {0, 0, 1, 0}});
    Result r = build(in);
    auto cs = r.contours();
    ASSERT_EQ(cs.size(), 2u);
    EXPECT_EQ(cs[0]->segmentCount, 1);
    EXPECT_EQ(cs[1]->segmentCount, 1);
    EXPECT_EQ(cs[1]->startSegment, &in[1]);
    EXPECT_EQ(cs[1]->number, 1);
    EXPECT_EQ(cs[1]->closed, 0);
    EXPECT_EQ(in[1].nextInContour, nullptr);
}

TEST(SegmentContours, ThreeEndsAtOnePointJoinOnlyTheFirstTwo) {
    Input in({{0, 0, 1, 1}, {1, 1, 2, 0}, {1, 1, 1, 5}});
    Result r = build(in);
    EXPECT_EQ(in[0].neighbour[1], &in[1]);
    EXPECT_EQ(in[1].neighbour[0], &in[0]);
    EXPECT_EQ(in[2].neighbour[0], nullptr);
    EXPECT_EQ(in[2].neighbourIndex[0], -1);
    EXPECT_EQ(in[2].neighbourEnd[0], -1);
    EXPECT_EQ(r.contours().size(), 2u);
}

TEST(SegmentContours, QuantisationBoundaries) {
    const struct {
        double x;
        bool joined;
    } cases[] = {
        {0.00004, true},    // 0.4 rounds to 0
        {0.00006, false},   // 0.6 rounds to 1
        {-0.00005, true},   // -0.5 rounds half up to 0
        {-0.00006, false},  // -0.6 rounds to -1
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.x);
        Input in({{-1, 0, 0, 0}, {c.x, 0, 1, 1}});
        Result r = build(in);
        EXPECT_EQ(in[0].neighbour[1] == &in[1], c.joined);
    }
}

TEST(SegmentContours, EmptyListAndNullSettings) {
    Input in({});
    Result r = build(in);
    ASSERT_NE(r.r, nullptr);
    EXPECT_EQ(r.r->first, nullptr);
    EXPECT_EQ(r.r->segmentCount, 0);
    EXPECT_EQ(API_GetSegmentContours(nullptr, nullptr), nullptr);
    API_ReleaseSegmentContours(nullptr);
}

// Invariants on random drawings on a coarse grid, where many ends coincide:
// joins are symmetric and between equal points, each point with k free ends
// joins the first 2 * (k / 2) of them in (segment, end) order, every
// segment is in exactly one contour, and each contour runs head to tail.
TEST(SegmentContours, RandomDrawingsKeepTheInvariants) {
    std::mt19937 rng(12345);
    std::uniform_int_distribution<int> coord(0, 4);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        std::vector<Seg> segs(1 + round % 30);
        for (Seg& s : segs) s = {coord(rng) * 0.5, coord(rng) * 0.5, coord(rng) * 0.5, coord(rng) * 0.5, 1};
        Input in(segs);
        // Before the builder turns anything: which ends share a point.
        std::map<std::pair<double, double>, std::vector<std::pair<size_t, int>>> atPoint;
        for (size_t i = 0; i < segs.size(); ++i) {
            atPoint[{segs[i].x0, segs[i].y0}].push_back({i, 0});
            atPoint[{segs[i].x1, segs[i].y1}].push_back({i, 1});
        }
        Result r = build(in);

        for (const auto& [point, ends] : atPoint) {
            for (size_t k = 0; k < ends.size(); ++k) {
                const Segment_ord& s = in[ends[k].first];
                const int e = ends[k].second;
                if (k < ends.size() - ends.size() % 2) {
                    const auto& other = ends[k ^ 1];
                    EXPECT_EQ(s.neighbourIndex[e], static_cast<int>(other.first));
                    EXPECT_EQ(s.neighbourEnd[e], other.second);
                } else {
                    EXPECT_EQ(s.neighbourIndex[e], -1);
                }
            }
        }

        std::vector<int> seen(segs.size(), 0);
        int total = 0;
        for (const Segment_contour* c : r.contours()) {
            const Segment_ord* s = c->startSegment;
            for (int k = 0; k < c->segmentCount; ++k) {
                ASSERT_NE(s, nullptr);
                ++seen[static_cast<size_t>(s->sequence)];
                EXPECT_EQ(s->state, 2);
                const Segment_ord* next = s->nextInContour;
                if (k + 1 < c->segmentCount) {
                    ASSERT_NE(next, nullptr);
                    EXPECT_EQ(s->end[1]->qx, next->end[0]->qx);
                    EXPECT_EQ(s->end[1]->qy, next->end[0]->qy);
                } else {
                    EXPECT_EQ(next, nullptr);
                    if (c->closed) {
                        EXPECT_EQ(s->end[1]->qx, c->start->qx);
                        EXPECT_EQ(s->end[1]->qy, c->start->qy);
                    }
                }
                if (next != nullptr) s = next;
            }
            total += c->segmentCount;
        }
        EXPECT_EQ(total, static_cast<int>(segs.size()));
        EXPECT_EQ(r.r->walked, total);
        for (size_t i = 0; i < segs.size(); ++i) EXPECT_EQ(seen[i], 1) << i;
    }
}

}  // namespace
