// The TMT_ records and texts: what the index keeps besides the numbers that
// StlOracleTest compares.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "mesh/MeshIndex.h"

namespace {

std::string read_all(std::FILE* f) {
    std::rewind(f);
    std::string out;
    char buf[256];
    while (std::fgets(buf, sizeof buf, f) != nullptr) out += buf;
    return out;
}

class MeshIndexTest : public testing::Test {
protected:
    void SetUp() override {
        zor::reset_mesh_index_state();
        zor::TMT_init(&points, &vectors);
    }
    void TearDown() override {
        zor::TMT_free(points, vectors);
        zor::reset_mesh_index_state();
    }
    int face(float x1, float y1, float x2, float y2, float x3, float y3, float nz = 1.0f) {
        return zor::TMT_add_face(x1, y1, 0, x2, y2, 0, x3, y3, 0, 0, 0, nz, &points, &vectors);
    }
    zor::SL_List* points = nullptr;
    zor::SL_List* vectors = nullptr;
};

TEST_F(MeshIndexTest, FacesLinkRecordsOfFirstAppearance) {
    ASSERT_EQ(face(0, 0, 1, 0, 0, 1), 1);
    ASSERT_EQ(face(1, 0, 1, 1, 0, 1), 1);             // shares an edge
    ASSERT_EQ(face(0, 0, 1e-6f, 0, 1, 1, -1.0f), 1);  // 1e-6 apart stays apart
    zor::MeshIndexState& s = zor::mesh_index_state();
    EXPECT_EQ(s.points.count, 5u);
    EXPECT_EQ(s.vectors.count, 2u);
    EXPECT_EQ(s.faceCount, 3u);
    const zor::TMTFace* f = s.faceHead;
    ASSERT_NE(f, nullptr);
    EXPECT_EQ((std::vector<unsigned int>{f->p1, f->p2, f->p3, f->n}), (std::vector<unsigned int>{1, 2, 3, 1}));
    f = f->next;
    EXPECT_EQ((std::vector<unsigned int>{f->p1, f->p2, f->p3, f->n}), (std::vector<unsigned int>{2, 4, 3, 1}));
    EXPECT_EQ(f->r2->x, 1.0f);
    f = f->next;
    EXPECT_EQ((std::vector<unsigned int>{f->p1, f->p2, f->p3, f->n}), (std::vector<unsigned int>{1, 5, 4, 2}));
    EXPECT_EQ(f->next, nullptr);
    // The point list runs in index order.
    unsigned int expected = 1;
    for (const zor::TMTPoint* p = s.points.head; p != nullptr; p = p->next) EXPECT_EQ(p->index, expected++);
    EXPECT_EQ(s.points.tail->index, 5u);
}

TEST_F(MeshIndexTest, InitForgetsThePreviousMesh) {
    ASSERT_EQ(face(5, 5, 6, 5, 5, 6), 1);
    zor::TMT_free(points, vectors);
    zor::TMT_init(&points, &vectors);
    EXPECT_EQ(points, nullptr);
    ASSERT_EQ(face(7, 7, 8, 7, 7, 8), 1);
    const zor::TMTFace* f = zor::mesh_index_state().faceHead;
    EXPECT_EQ((std::vector<unsigned int>{f->p1, f->p2, f->p3, f->n}), (std::vector<unsigned int>{1, 2, 3, 1}));
    EXPECT_EQ(zor::mesh_index_state().faceCount, 1u);
}

TEST_F(MeshIndexTest, ComparisonOrdersByFirstUnequalAxis) {
    struct Case {
        zor::TMTPoint stored, searched;
        int expected;
    };
    const Case cases[] = {
        {{1, 2, 3, 0, nullptr}, {1, 2, 3, 0, nullptr}, 0},
        {{0, 0, 0, 0, nullptr}, {5e-9f, -0.0f, 3e-15f, 0, nullptr}, 0},
        {{1, 9, 9, 0, nullptr}, {2, 0, 0, 0, nullptr}, -1},
        {{1, 0, 0, 0, nullptr}, {1, -1, 5, 0, nullptr}, 1},
        {{0, 0, 0, 0, nullptr}, {0, 0, 2e-8f, 0, nullptr}, -1},
        {{NAN, 0, 0, 0, nullptr}, {1, 0, 0, 0, nullptr}, 1},
        {{INFINITY, 0, 0, 0, nullptr}, {INFINITY, 0, 0, 0, nullptr}, 1},
    };
    for (const Case& k : cases) {
        zor::TMTPoint a = k.stored, b = k.searched;
        EXPECT_EQ(zor::TMT_compare_points(&a, &b), k.expected) << a.x << " " << b.x;
    }
}

TEST_F(MeshIndexTest, TraceLinesGoToTheTraceStreamWhenEnabled) {
    std::FILE* trace = std::tmpfile();
    ASSERT_NE(trace, nullptr);
    zor::mesh_index_state().trace = 1;
    zor::mesh_index_state().traceStream = trace;
    ASSERT_EQ(face(0, 0, 1, 0, 0, 1), 1);
    ASSERT_EQ(face(0, 0, 1, 0, 2, 2), 1);
    zor::TMT_free(points, vectors);
    points = vectors = nullptr;
    EXPECT_EQ(read_all(trace),
              "TMT_add_face: TMTFirstFace allocated\n"
              "TMT_point_index: TMTFirst allocated\n"
              "TMT_point_index: next point allocated\n"
              "TMT_point_index: next point allocated\n"
              "TMT_point_index: TMTFirst allocated\n"
              "TMT_add_face: next face allocated\n"
              "TMT_point_index: next point allocated\n"
              "TMT_free: freeing facets\n"
              "TMT_free: freeing points\n"
              "TMT_free: freeing points\n");
    // The fixture's TearDown frees again: it must not write to a closed stream.
    zor::reset_mesh_index_state();
    std::fclose(trace);
}

TEST_F(MeshIndexTest, FirstRecordOfEitherKindResetsTheBoundingBox) {
    ASSERT_EQ(face(-2, 0, 3, 0, 0, 4, 1.0f), 1);
    const zor::MeshIndexState& s = zor::mesh_index_state();
    // The first normal reset the box, which then holds the normal only.
    EXPECT_EQ(s.bboxMin[0], 0.0f);
    EXPECT_EQ(s.bboxMax[1], 0.0f);
    EXPECT_EQ(s.bboxMax[2], 1.0f);
    ASSERT_EQ(face(-2, 0, 3, 0, 0, 9, 1.0f), 1);  // a new point widens it
    EXPECT_EQ(s.bboxMax[1], 9.0f);
}

}  // namespace
