#include <gtest/gtest.h>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::Geometry;
using zortest::ObjectFileWriter;
using zortest::OpenedFile;
using zortest::Tail;

Geometry two_triangles() {
    Geometry g;
    g.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 2, 0}, {0, 2, 3}};
    g.list1 = {{5, 6, 7}};
    g.triangles = {{0, 1, 2}, {3, 2, 1}};
    return g;
}

struct MeshOutputs : zortest::SolidOutputs {
    unsigned int vertexCount = 77, cornerCount = 77;
    double (*vertices)[4] = nullptr;
    double (*corners)[4] = nullptr;
    ~MeshOutputs() {
        delete[] vertices;
        delete[] corners;
    }
};

bool read_mesh(CMWZORFile& f, MeshOutputs& o) {
    return f.ReadMesh(o.vector, &o.vertexCount, &o.vertices, &o.texts[0], &o.texts[1], &o.texts[2], &o.cornerCount,
                      &o.corners, o.matrix, &o.list1, &o.list2, o.quad, &o.name, &o.tailText, &o.attachName,
                      &o.attachKey, &o.attachIndex);
}

// Opens text, expects one mesh record and reads it.
bool read_only_mesh(const std::string& text, MeshOutputs& o, unsigned int units = 1) {
    OpenedFile f(text, units);
    unsigned int type = 0;
    if (!f->ReadType(&type) || type != ZOR_RECORD_MESH) return false;
    return read_mesh(*f.file, o);
}

TEST(MeshRecordTest, CountsAndCornerCopiesOfEveryTriangle) {
    for (int version : {101, 108, 115}) {
        SCOPED_TRACE(version);
        ObjectFileWriter w(version);
        w.mesh("Mesh", two_triangles());
        MeshOutputs o;
        ASSERT_TRUE(read_only_mesh(w.plain(), o));
        EXPECT_EQ(o.vertexCount, 4u);
        EXPECT_EQ(o.cornerCount, 6u);
        EXPECT_STREQ(o.name, "Mesh");
        ASSERT_EQ(o.list1.GetSize(), 1);
        // Corner 3 is the second triangle's first vertex (vertex 3).
        const double expected[6][3] = {{0, 0, 0}, {1, 0, 0}, {1, 2, 0}, {0, 2, 3}, {1, 2, 0}, {1, 0, 0}};
        for (int c = 0; c < 6; ++c) {
            for (int k = 0; k < 3; ++k) EXPECT_EQ(o.corners[c][k], expected[c][k]) << "corner " << c;
            EXPECT_EQ(o.corners[c][3], 0);
        }
        EXPECT_EQ(o.vertices[3][2], 3);
        EXPECT_EQ(o.vertices[3][3], 0);
    }
}

TEST(MeshRecordTest, ConversionScalesEveryVertexAndCornerButNotTheFourthValue) {
    struct Case {
        unsigned int callerUnits;
        int recordUnit;
        double factor;
    } cases[] = {{1, 2, 25.4}, {2, 1, 1 / 25.4}, {1, 1, 1}, {1, 3, 1}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.callerUnits) + " from " + std::to_string(c.recordUnit));
        Tail t;
        t.unit = c.recordUnit;
        t.vector = {1, 2, 3, 4};
        t.matrix[0][3] = 2;
        ObjectFileWriter w(115);
        w.mesh("m", two_triangles(), t);
        MeshOutputs o;
        ASSERT_TRUE(read_only_mesh(w.plain(), o, c.callerUnits));
        EXPECT_DOUBLE_EQ(o.vertices[2][1], 2 * c.factor);
        EXPECT_DOUBLE_EQ(o.corners[3][2], 3 * c.factor);
        EXPECT_DOUBLE_EQ(o.vector[3], 4 * c.factor);
        EXPECT_DOUBLE_EQ(o.matrix[0][3], 2 * c.factor);
        EXPECT_DOUBLE_EQ(o.matrix[3][3], 1 * c.factor);
        for (int i = 0; i < 4; ++i) EXPECT_EQ(o.vertices[i][3], 0);
        for (int i = 0; i < 6; ++i) EXPECT_EQ(o.corners[i][3], 0);
        EXPECT_EQ(o.list1[0]->x, 5);  // point lists are never scaled
    }
}

TEST(MeshRecordTest, GeometryFlagZeroGivesNoArraysAndZeroCounts) {
    ObjectFileWriter w(102);
    w.open("C3dObjectMesh").geometry(Geometry(), "empty").tail({});
    MeshOutputs o;
    ASSERT_TRUE(read_only_mesh(w.plain(), o));
    EXPECT_EQ(o.vertexCount, 0u);
    EXPECT_EQ(o.cornerCount, 0u);
    EXPECT_EQ(o.vertices, nullptr);
    EXPECT_EQ(o.corners, nullptr);
    EXPECT_STREQ(o.name, "empty");
}

TEST(MeshRecordTest, BadTriangleOrCountFailsAndHandsOutWhatWasMade) {
    Geometry g = two_triangles();
    g.triangles[1][0] = 4;
    ObjectFileWriter w(115);
    w.mesh("m", g);
    MeshOutputs o;
    EXPECT_FALSE(read_only_mesh(w.plain(), o));
    EXPECT_EQ(o.vertexCount, 4u);
    EXPECT_NE(o.vertices, nullptr);  // freed by the caller (the destructor here; ASan checks)
    EXPECT_NE(o.corners, nullptr);
    EXPECT_EQ(o.cornerCount, 77u);

    ObjectFileWriter big(115);
    big.mesh("m", two_triangles());
    std::string text = big.plain();
    text.replace(text.find("Num Triangles < 2 >"), 19, "Num Triangles < 1500000000 >");
    MeshOutputs refused;
    EXPECT_FALSE(read_only_mesh(text, refused));
    EXPECT_EQ(refused.corners, nullptr);
}

TEST(MeshRecordTest, EveryTruncationFailsWithoutLeaking) {
    ObjectFileWriter w(115);
    w.mesh("m", two_triangles());
    const std::string text = w.plain();
    for (std::size_t n = 0; n + 1 < text.size(); ++n) {
        MeshOutputs o;
        ASSERT_FALSE(read_only_mesh(text.substr(0, n), o)) << n;
    }
}

TEST(MeshRecordTest, NullOutputsStillConsumeTheRecord) {
    ObjectFileWriter w(115);
    w.mesh("m", two_triangles()).sphere(2, "after");
    OpenedFile f(w.plain());
    unsigned int type = 0;
    ASSERT_TRUE(f->ReadType(&type));
    double matrix[4][4];
    ASSERT_TRUE(f->ReadMesh(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, matrix, nullptr,
                            nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    ASSERT_TRUE(f->ReadType(&type));
    EXPECT_EQ(type, ZOR_RECORD_SPHERE);
}

}  // namespace
