#include <gtest/gtest.h>

#include <memory>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::Geometry;
using zortest::ObjectFileWriter;
using zortest::OpenedFile;

Geometry square() {
    Geometry g;
    g.present = true;
    g.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    g.list1 = {{5, 6, 7}};
    g.list2 = {{1, 2, 3}, {4, 5, 6}};
    g.triangles = {{0, 1, 2}, {0, 2, 3}};
    return g;
}

struct BlockOutputs {
    CMWZORPointArray list1, list2;
    CString name;
    unsigned int vertexCount = 77, triangleCount = 77;
    double (*vertices)[4] = nullptr;
    double (*corners)[4] = nullptr;
    ~BlockOutputs() {
        for (CMWZORPointArray* list : {&list1, &list2})
            for (long long i = 0; i < list->GetSize(); ++i) delete list->GetAt(i);
        delete[] vertices;
        delete[] corners;
    }
};

bool read_block(const std::string& text, BlockOutputs& o, bool wantArrays = true) {
    OpenedFile f(text);
    return f->ReadGeometryBlock(&o.list1, &o.list2, &o.name, &o.vertexCount, wantArrays ? &o.vertices : nullptr,
                                &o.triangleCount, wantArrays ? &o.corners : nullptr);
}

std::string block_file(int version, const Geometry& g) {
    ObjectFileWriter w(version);
    w.geometry(g, "mesh");
    return w.plain();
}

TEST(GeometryBlockTest, VerticesPointListsAndCornerCopies) {
    BlockOutputs o;
    ASSERT_TRUE(read_block(block_file(115, square()), o));
    EXPECT_EQ(o.vertexCount, 4u);
    EXPECT_EQ(o.triangleCount, 2u);
    EXPECT_STREQ(o.name, "mesh");
    ASSERT_EQ(o.list1.GetSize(), 1);
    EXPECT_EQ(o.list1[0]->z, 7);
    ASSERT_EQ(o.list2.GetSize(), 2);
    EXPECT_EQ(o.list2[1]->x, 4);
    // Corner 3 is the second triangle's first vertex; every fourth value is 0.
    EXPECT_EQ(o.corners[3][0], 0);
    EXPECT_EQ(o.corners[5][0], 0);
    EXPECT_EQ(o.corners[5][1], 1);
    EXPECT_EQ(o.corners[2][0], 1);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(o.corners[i][3], 0);
    EXPECT_EQ(o.vertices[2][1], 1);
}

TEST(GeometryBlockTest, FlagZeroFrom102HasNoVertexList) {
    Geometry none;
    BlockOutputs o;
    ASSERT_TRUE(read_block(block_file(102, none), o));
    EXPECT_EQ(o.vertexCount, 77u);  // not set by the block
    EXPECT_EQ(o.vertices, nullptr);
    EXPECT_STREQ(o.name, "mesh");
}

TEST(GeometryBlockTest, OldFilesWithoutFlagTellByTheNumVerticesLabel) {
    BlockOutputs withList, without;
    ASSERT_TRUE(read_block(block_file(101, square()), withList));
    EXPECT_EQ(withList.vertexCount, 4u);
    ASSERT_TRUE(read_block(block_file(101, Geometry()), without));
    EXPECT_EQ(without.vertexCount, 77u);
    EXPECT_STREQ(without.name, "mesh");
}

TEST(GeometryBlockTest, TrianglesAreReadWithoutArraysToo) {
    BlockOutputs o;
    ASSERT_TRUE(read_block(block_file(115, square()), o, false));
    EXPECT_EQ(o.vertexCount, 4u);
    EXPECT_EQ(o.triangleCount, 2u);
    EXPECT_EQ(o.vertices, nullptr);
}

TEST(GeometryBlockTest, RefusesTriangleIndexBeyondVertexCount) {
    for (int bad : {4, -1, 1000000}) {
        SCOPED_TRACE(bad);
        Geometry g = square();
        g.triangles[1][2] = bad;
        BlockOutputs o;
        EXPECT_FALSE(read_block(block_file(115, g), o));
        EXPECT_NE(o.vertices, nullptr);  // handed out before the failure: the caller frees it
    }
}

TEST(GeometryBlockTest, RefusesCountsTheFileCannotHold) {
    const char* counts[] = {"Num Vertices < 2000000000 >", "Num Vertices < -5 >"};
    for (const char* line : counts) {
        SCOPED_TRACE(line);
        std::string text = "// Version: 1.15\nflag <1>\na <0>\nb <0>\n" + std::string(line) + "\n";
        BlockOutputs o;
        EXPECT_FALSE(read_block(text, o));
        EXPECT_EQ(o.vertices, nullptr);
    }
    Geometry g = square();
    std::string text = block_file(115, g);
    text.replace(text.find("Num Points < 1 >"), 16, "Num Points < 900000000 >");
    BlockOutputs o;
    EXPECT_FALSE(read_block(text, o));
}

}  // namespace
