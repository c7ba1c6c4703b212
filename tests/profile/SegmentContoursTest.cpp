#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

#include "profile/SegmentContours.h"

namespace {

struct Seg {
    double x0, y0, x1, y1;
    int direction = 0;
};

// The caller's records for segments chained in input order, and the builder's result for them.
struct Contours {
    std::vector<Segment_end> ends;
    std::vector<Segment_ord> segs;
    Segment_settings settings{};
    Segment_result* result;

    Contours(const std::vector<Seg>& input, double tolerance = 0.0001) : ends(2 * input.size()), segs(input.size()) {
        for (size_t i = 0; i < input.size(); ++i) {
            ends[2 * i] = Segment_end{input[i].x0, input[i].y0, 0, 0, 0, 0, 0, {7, 7}, 0, 0, nullptr, nullptr, nullptr};
            ends[2 * i + 1] = ends[2 * i];
            ends[2 * i + 1].x = input[i].x1;
            ends[2 * i + 1].y = input[i].y1;
            segs[i] = Segment_ord{};
            segs[i].end[0] = &ends[2 * i];
            segs[i].end[1] = &ends[2 * i + 1];
            segs[i].kind = 1;
            segs[i].direction = input[i].direction;
            segs[i].next = i + 1 < input.size() ? &segs[i + 1] : nullptr;
        }
        settings.tolerance = tolerance;
        result = static_cast<Segment_result*>(API_GetSegmentContours(&settings, segs.empty() ? nullptr : &segs[0]));
    }
    ~Contours() { API_ReleaseSegmentContours(result); }
    std::vector<const Segment_contour*> contours() const {
        std::vector<const Segment_contour*> out;
        for (const Segment_contour* c = result->first; c != nullptr; c = c->next) out.push_back(c);
        return out;
    }
};

TEST(SegmentContours, QuantisationFactorHasFloorOfTenAndRoundsHalfUp) {
    const double tolerances[] = {0.0001, 0.001, 0.05, 0.2, 1, 100, -1};
    const int factors[] = {10000, 1000, 20, 10, 10, 10, 10};
    for (int i = 0; i < 7; ++i) EXPECT_EQ(Contours({{0, 0, 1, 0}}, tolerances[i]).settings.factor, factors[i]);
    // Factor 10: -0.25 -> -2.5 -> -2, 0.25 -> 3, 0.24 -> 2, -0.26 -> -3.
    Contours c({{-0.25, 0.25, 0.24, -0.26}}, 1.0);
    const Segment_end &a = c.ends[0], &b = c.ends[1];
    EXPECT_EQ(std::vector<int>({a.qx, a.qy, a.qz, a.extra[0], a.extra[1], a.segment, a.end}),
              std::vector<int>({-2, 3, 0, 0, 0, 0, 0}));
    EXPECT_EQ(std::vector<int>({b.qx, b.qy, b.segment, b.end}), std::vector<int>({2, -3, 0, 1}));
    EXPECT_EQ(a.owner, &c.segs[0]);
    // Joined at 0.0001: 0.4 rounds to 0, -0.5 half up to 0; not joined: 0.6 to 1, -0.6 to -1.
    for (double x : {0.00004, -0.00005, 0.00006, -0.00006}) {
        Contours j({{-1, 0, 0, 0}, {x, 0, 1, 1}});
        EXPECT_EQ(j.segs[0].neighbour[1] == &j.segs[1], x > -0.00006 && x < 0.00006) << x;
    }
}

TEST(SegmentContours, ClosedAndOpenChains) {
    Contours closed({{0, 0, 1, 0}, {1, 0, 0, 0}});
    auto cs = closed.contours();
    ASSERT_EQ(cs.size(), 1u);
    EXPECT_EQ(std::vector<int>({cs[0]->closed, cs[0]->segmentCount, cs[0]->endCount, closed.segs[1].sense}),
              std::vector<int>({1, 2, 4, 1}));
    EXPECT_EQ(std::vector<int>({closed.result->walked, closed.result->segmentCount, closed.segs[0].neighbourIndex[1],
                                closed.segs[0].neighbourEnd[1]}),
              std::vector<int>({2, 2, 1, 0}));
    EXPECT_EQ(cs[0]->startSegment, &closed.segs[0]);
    EXPECT_EQ(cs[0]->start, &closed.ends[0]);
    EXPECT_EQ(closed.segs[0].nextInContour, &closed.segs[1]);
    EXPECT_EQ(closed.segs[1].nextInContour, nullptr);
    EXPECT_EQ(closed.result->input, &closed.segs[0]);

    // The second segment is turned round: ends exchanged, direction negated.
    Contours open({{0, 0, 1, 0, 1}, {2, 0, 1, 0, 1}});
    ASSERT_EQ(open.contours().size(), 1u);
    EXPECT_EQ(open.contours()[0]->closed, 0);
    EXPECT_EQ(
        std::vector<int>({open.segs[0].direction, open.segs[1].sense, open.segs[1].direction, open.segs[1].state}),
        std::vector<int>({1, -1, -1, 2}));
    EXPECT_EQ(open.segs[1].end[1], &open.ends[2]);

    // Started inside an open chain, the walk goes forward only: the rest is a second contour.
    Contours inside({{1, 0, 2, 0}, {0, 0, 1, 0}});
    cs = inside.contours();
    ASSERT_EQ(cs.size(), 2u);
    EXPECT_EQ(std::vector<int>({cs[0]->segmentCount, cs[1]->segmentCount, cs[1]->number, cs[1]->closed}),
              std::vector<int>({1, 1, 1, 0}));
    EXPECT_EQ(cs[1]->startSegment, &inside.segs[1]);

    // Three ends at one point: only the first two are joined.
    Contours three({{0, 0, 1, 1}, {1, 1, 2, 0}, {1, 1, 1, 5}});
    EXPECT_EQ(three.segs[0].neighbour[1], &three.segs[1]);
    EXPECT_EQ(three.segs[1].neighbour[0], &three.segs[0]);
    EXPECT_EQ(std::vector<int>({three.segs[2].neighbourIndex[0], three.segs[2].neighbourEnd[0]}),
              std::vector<int>({-1, -1}));
    EXPECT_EQ(three.segs[2].neighbour[0], nullptr);
    EXPECT_EQ(three.contours().size(), 2u);

    Contours none({});
    ASSERT_NE(none.result, nullptr);
    EXPECT_EQ(none.result->first, nullptr);
    EXPECT_EQ(API_GetSegmentContours(nullptr, nullptr), nullptr);
    API_ReleaseSegmentContours(nullptr);
}

// Random drawings on a coarse grid, where many ends coincide: each point with k free ends joins the first
// 2 * (k / 2) of them in pairs in (segment, end) order, every segment is in exactly one contour, and each contour
// runs head to tail.
TEST(SegmentContours, RandomDrawingsKeepTheInvariants) {
    std::mt19937 rng(12345);
    std::uniform_int_distribution<int> coord(0, 4);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        std::vector<Seg> input(1 + round % 30);
        std::map<std::pair<int, int>, std::vector<std::pair<int, int>>> atPoint;  // before anything is turned
        for (size_t i = 0; i < input.size(); ++i) {
            int p[4] = {coord(rng), coord(rng), coord(rng), coord(rng)};
            input[i] = {p[0] * 0.5, p[1] * 0.5, p[2] * 0.5, p[3] * 0.5, 1};
            atPoint[{p[0], p[1]}].push_back({static_cast<int>(i), 0});
            atPoint[{p[2], p[3]}].push_back({static_cast<int>(i), 1});
        }
        Contours c(input);
        for (const auto& [point, ends] : atPoint) {
            for (size_t k = 0; k < ends.size(); ++k) {
                const Segment_ord& s = c.segs[static_cast<size_t>(ends[k].first)];
                const bool paired = k < ends.size() - ends.size() % 2;
                EXPECT_EQ(s.neighbourIndex[ends[k].second], paired ? ends[k ^ 1].first : -1);
                EXPECT_EQ(s.neighbourEnd[ends[k].second], paired ? ends[k ^ 1].second : -1);
            }
        }
        std::vector<int> seen(input.size(), 0);
        int total = 0;
        for (const Segment_contour* contour : c.contours()) {
            const Segment_ord* s = contour->startSegment;
            for (int k = 0; k < contour->segmentCount; ++k, s = s->nextInContour) {
                ASSERT_NE(s, nullptr);
                ++seen[static_cast<size_t>(s->sequence)];
                EXPECT_EQ(s->state, 2);
                const bool last = k + 1 == contour->segmentCount;
                ASSERT_TRUE(last || s->nextInContour != nullptr);
                const Segment_end* following =
                    last ? (contour->closed ? contour->start : s->end[1]) : s->nextInContour->end[0];
                EXPECT_EQ(std::make_pair(s->end[1]->qx, s->end[1]->qy), std::make_pair(following->qx, following->qy));
                EXPECT_TRUE(!last || s->nextInContour == nullptr);
            }
            total += contour->segmentCount;
        }
        EXPECT_EQ(total, static_cast<int>(input.size()));
        EXPECT_EQ(c.result->walked, total);
        EXPECT_EQ(seen, std::vector<int>(input.size(), 1));
    }
}

}  // namespace
