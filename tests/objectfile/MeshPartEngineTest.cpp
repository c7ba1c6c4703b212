// Mesh, part, tool and engine records.
#include <gtest/gtest.h>

#include <cstring>

#include "ObjectFileTestUtil.h"

namespace {

using Engine = zortest::ObjectFileWriter::Engine;
using zortest::Geometry;
using zortest::ObjectFileWriter;
using zortest::OpenedFile;
using zortest::Outputs;
using zortest::Tail;
using zortest::vec;
using V = std::vector<double>;

Geometry two_triangles() {
    Geometry g;
    g.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 2, 0}, {0, 2, 3}};
    g.list1 = {{5, 6, 7}};
    g.triangles = {{0, 1, 2}, {3, 2, 1}};
    return g;
}

TEST(MeshRecordTest, CountsCornerCopiesAndScaling) {
    const struct {
        int version;
        unsigned int callerUnits;
        int recordUnit;
        double f;
    } cases[] = {{101, 1, 1, 1}, {108, 1, 1, 1}, {115, 1, 2, 25.4}, {115, 2, 1, 1 / 25.4}, {115, 1, 3, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.version) + " " + std::to_string(c.callerUnits) + " from " +
                     std::to_string(c.recordUnit));
        Tail t;
        t.unit = c.recordUnit;
        OpenedFile f(ObjectFileWriter(c.version).mesh("Mesh", two_triangles(), t).plain(), c.callerUnits);
        Outputs o;
        ASSERT_TRUE(f.next(o));
        EXPECT_EQ(o.vertexCount, 4u);
        EXPECT_EQ(o.count, 6u);
        EXPECT_STREQ(o.name, "Mesh");
        const double f1 = c.f, f2 = 2 * c.f, f3 = 3 * c.f;
        EXPECT_EQ(vec(o.vertices[0], 16), (V{0, 0, 0, 0, f1, 0, 0, 0, f1, f2, 0, 0, 0, f2, f3, 0}));
        // Corner 3 is the second triangle's first vertex; every fourth value stays 0.
        EXPECT_EQ(vec(o.corners[0], 24),
                  (V{0, 0, 0, 0, f1, 0, 0, 0, f1, f2, 0, 0, 0, f2, f3, 0, f1, f2, 0, 0, f1, 0, 0, 0}));
        EXPECT_DOUBLE_EQ(o.matrix[3][3], c.f);
        EXPECT_EQ(vec(&o.list1[0]->x, 3), (V{5, 6, 7}));  // point lists are never scaled
    }
}

TEST(MeshRecordTest, GeometryFlagZeroGivesNoArraysAndZeroCounts) {
    ObjectFileWriter w(102);
    w.open("C3dObjectMesh").geometry(Geometry(), "empty").tail({});
    OpenedFile f(w.plain());
    Outputs o;
    ASSERT_TRUE(f.next(o));
    EXPECT_EQ(o.vertexCount + o.count, 0u);
    EXPECT_EQ(o.vertices, nullptr);
    EXPECT_EQ(o.corners, nullptr);
    EXPECT_STREQ(o.name, "empty");
}

TEST(MeshRecordTest, RefusesBadIndicesAndCountsTheFileCannotHold) {
    const struct {
        const char *from, *to;
        bool verticesHandedOut;  // then freed by the caller (ASan checks)
    } cases[] = {{"Triangle < 3/2/1 >", "Triangle < 4/2/1 >", true},
                 {"Triangle < 3/2/1 >", "Triangle < 3/-1/1 >", true},
                 {"Triangle < 3/2/1 >", "Triangle < 3/2/1000000 >", true},
                 {"Num Vertices < 4 >", "Num Vertices < 2000000000 >", false},
                 {"Num Vertices < 4 >", "Num Vertices < -5 >", false},
                 {"Num Points < 1 >", "Num Points < 900000000 >", true},
                 {"Num Triangles < 2 >", "Num Triangles < 1500000000 >", true}};
    const std::string text = ObjectFileWriter(115).mesh("m", two_triangles()).plain();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.to);
        std::string bad = text;
        Outputs o;
        EXPECT_FALSE(OpenedFile(bad.replace(bad.find(c.from), std::strlen(c.from), c.to)).next(o));
        EXPECT_EQ(o.vertices != nullptr, c.verticesHandedOut);
        EXPECT_EQ(o.count, 77u);  // no corner count without the corners
    }
}

TEST(MeshRecordTest, NullOutputsStillConsumeTheRecord) {
    OpenedFile f(ObjectFileWriter(115).mesh("m", two_triangles()).sphere(2, "after").plain());
    ASSERT_TRUE(f->ReadType(&f.type));
    double matrix[4][4];
    ASSERT_TRUE(f->ReadMesh(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, matrix, nullptr,
                            nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    ASSERT_TRUE(f->ReadType(&f.type));
    EXPECT_EQ(f.type, ZOR_RECORD_SPHERE);
}

TEST(PartToolRecordsTest, BothReadGeometryAndTailAtEveryVersion) {
    Tail t;
    t.attachName = "Head";
    for (int version : {101, 107, 108, 115}) {
        SCOPED_TRACE(version);
        const Geometry g{true, {}, {}, {{1, 2, 3}}, {}};
        OpenedFile f(ObjectFileWriter(version).part("Blank", t, g).tool("Cutter", t, g).plain());
        for (const char* name : {"Blank", "Cutter"}) {
            Outputs o;
            ASSERT_TRUE(f.next(o));
            EXPECT_STREQ(o.name, name);
            ASSERT_EQ(o.list2.GetSize(), 1);
            EXPECT_EQ(o.list2[0]->z, 3);
            EXPECT_STREQ(o.attachName, "Head");
        }
        EXPECT_FALSE(f->ReadType(&f.type));
    }
    // A 1.08 tool's third line is plain text: consumed at 1.08, a missing value at 1.07.
    std::string text = ObjectFileWriter(108).tool("Cutter").plain();
    Outputs at108, at107;
    EXPECT_TRUE(OpenedFile(text).next(at108));
    EXPECT_FALSE(OpenedFile(text.replace(0, text.find('\n'), "// Version: 1.07")).next(at107));
}

// Writes the engines and reads them back in order.
std::vector<Outputs> read_engines(int version, const std::vector<Engine>& engines, bool withP5 = true) {
    ObjectFileWriter w(version);
    for (const Engine& e : engines) w.engine(e);
    OpenedFile f(w.plain());
    std::vector<Outputs> out(engines.size());
    for (Outputs& o : out) {
        o.withP5 = withP5;
        EXPECT_TRUE(f.next(o));
        EXPECT_EQ(f.type, ZOR_RECORD_ENGINE);
    }
    EXPECT_FALSE(f->ReadType(&f.type));
    return out;
}

TEST(EngineRecordTest, EveryOutputAtEveryLayout) {
    for (int version : {101, 102, 105, 106, 109, 112, 115}) {
        for (unsigned int kind : {1u, 2u}) {
            SCOPED_TRACE(std::to_string(version) + " kind " + std::to_string(kind));
            Engine e;
            e.name = "Axis";
            e.kind = static_cast<int>(kind);
            e.axis = {1, 0, 0};
            e.index = 5;
            const std::vector<Outputs> out = read_engines(version, {e});
            const Outputs& o = out[0];
            EXPECT_STREQ(o.name, "Axis");
            EXPECT_EQ(vec(o.axis, 3), (V{1, 0, 0}));
            // p16 is written after p17: the order must not swap them.
            for (int i : {6, 7, 8, 9, 11, 12, 15, 16, 19}) EXPECT_EQ(o.p[i], i) << "p" << i;
            for (unsigned int i : {10u, 13u, 14u, 17u, 18u}) EXPECT_EQ(o.u[i], i) << "p" << i;
            EXPECT_EQ(vec(o.p20, 4), (kind == 2 ? V{1, 2, 3, 0} : V{0, 0, 0, 0}));
            const unsigned int old = version < 112;
            EXPECT_EQ(std::vector<unsigned int>({o.u[1], o.u[4], o.u[5], o.u[21], o.u[22], o.u[23], o.u[25]}),
                      std::vector<unsigned int>({kind, 99, 0, kind == 2 ? 21u : 99u, old ? 0 : 22u, old ? 1 : 23u,
                                                 version < 109 ? 1u : 5u}));  // old files number their elements
            EXPECT_STREQ(o.attachKey, version < 102 ? "1" : "KEY");
        }
    }
}

TEST(EngineRecordTest, DirectionFlagGoesToP5OrReversesTheAxis) {
    const struct {
        int flag;
        bool withP5;
        double axisY;
    } cases[] = {{0, true, 1}, {0, false, 1}, {3, true, 1}, {3, false, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.flag) + (c.withP5 ? " with p5" : " without p5"));
        Engine e;
        e.axis = {0, 1, 0};
        e.flag = c.flag;
        const std::vector<Outputs> o = read_engines(115, {e}, c.withP5);
        EXPECT_EQ(o[0].axis[1], c.axisY);
        EXPECT_EQ(o[0].u[5], c.withP5 ? static_cast<unsigned int>(c.flag) : 99u);
    }
}

TEST(EngineRecordTest, ConversionScalesP6AsFourAdjacentDoubles) {
    const double f = 25.4;
    for (int kind : {1, 2}) {
        SCOPED_TRACE(kind);
        Engine e;
        e.kind = kind;
        e.unit = 2;
        const std::vector<Outputs> out = read_engines(115, {e});
        const double* p = out[0].p;
        // p7 is scaled as p6's neighbour and on its own, p8 and p9 too for kind 1.
        const V expected = kind == 1 ? V{6 * f, 7 * f * f, 8 * f * f, 9 * f * f, 11 * f, 12 * f, 15 * f, 16 * f, 19, 0}
                                     : V{6 * f, 7 * f * f, 8 * f, 9 * f, 11, 12, 15 * f, 16 * f, 19, 2 * f};
        EXPECT_EQ(V({p[6], p[7], p[8], p[9], p[11], p[12], p[15], p[16], p[19], out[0].p20[1]}), expected);
    }
    // Without p6 the four are left alone; p7 and p8 are still scaled once.
    Engine e;
    e.unit = 2;
    OpenedFile file(ObjectFileWriter(115).engine(e).plain());
    ASSERT_TRUE(file->ReadType(&file.type));
    double p7 = 0, p8 = 0;
    ASSERT_TRUE(file->ReadEngin(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &p7, &p8, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(V({p7, p8}), V({7 * f, 8 * f}));
}

TEST(EngineRecordTest, UnnamedSpindleIsCalledSpindleAndAKeyWithoutBracketsIsSkipped) {
    Engine axis, spindle;
    axis.name = spindle.name = "";
    spindle.kind = 2;
    const std::vector<Outputs> o = read_engines(115, {axis, spindle});
    EXPECT_STREQ(o[0].name, "");
    EXPECT_STREQ(o[1].name, "Spindle");

    std::string text = ObjectFileWriter(115).engine(Engine()).plain();
    Outputs noKey;
    ASSERT_TRUE(OpenedFile(text.replace(text.find("Spindle Key < KEY >"), 19, "Spindle Key KEY")).next(noKey));
    EXPECT_STREQ(noKey.attachKey, "unset");
    EXPECT_EQ(noKey.u[22], 22u);
}

// Before 1.09 engines are numbered and stored in the spindle table, where
// later objects find their attachment index.
TEST(EngineRecordTest, OldFilesNumberElementsAndLaterObjectsFindThem) {
    for (int version : {108, 109}) {
        SCOPED_TRACE(version);
        ObjectFileWriter w(version);
        for (int i = 1; i <= 11; ++i) {
            Engine e;
            e.name = "Element" + std::to_string(i);  // keys: first 5 characters, "Eleme"
            e.key = "K" + std::to_string(i) + "xxxx";
            w.engine(e);
        }
        Tail second, eleventh;
        second.attachName = "Eleme";
        second.attachKey = "K2xxxxyy";
        eleventh.attachName = "Element11";
        eleventh.attachKey = "K11xxxx";
        OpenedFile f(w.sphere(1, "carried", second).sphere(1, "unmatched", eleventh).plain());
        for (unsigned int i = 1; i <= 11; ++i) {
            Outputs o;
            ASSERT_TRUE(f.next(o));
            EXPECT_EQ(o.u[25], version < 109 ? i : 0u);
        }
        if (version < 109) {
            EXPECT_EQ(zor::object_file_state().spindleCount, 11);
            EXPECT_EQ(zor::object_file_state().spindles[9].spindleKey, "K10xx");
        }
        for (unsigned int expected : {2u, 0u}) {  // the eleventh was never stored
            Outputs o;
            ASSERT_TRUE(f.next(o));
            EXPECT_EQ(o.attachIndex, version < 109 ? expected : 0u) << o.name;
        }
    }
}

}  // namespace
