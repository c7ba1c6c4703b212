// Mesh, part, tool and engine records.
#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

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

const Geometry kTwoTriangles{
    false, {{0, 0, 0}, {1, 0, 0}, {1, 2, 0}, {0, 2, 3}}, {{5, 6, 7}}, {}, {{0, 1, 2}, {3, 2, 1}}};

TEST(MeshRecordTest, CountsCornerCopiesAndScaling) {
    const std::tuple<int, unsigned int, int, double> cases[] = {
        {101, 1, 1, 1}, {108, 1, 1, 1}, {115, 1, 2, 25.4}, {115, 2, 1, 1 / 25.4}, {115, 1, 3, 1}};
    for (const auto& [version, callerUnits, recordUnit, f1] : cases) {
        SCOPED_TRACE(std::to_string(version) + " " + std::to_string(callerUnits) + " from " +
                     std::to_string(recordUnit));
        Tail t;
        t.unit = recordUnit;
        Outputs o;
        ASSERT_TRUE(OpenedFile(ObjectFileWriter(version).mesh("Mesh", kTwoTriangles, t).plain(), callerUnits).next(o));
        EXPECT_EQ(std::make_pair(o.vertexCount, o.count), std::make_pair(4u, 6u));
        EXPECT_STREQ(o.name, "Mesh");
        const double f2 = 2 * f1, f3 = 3 * f1;
        EXPECT_EQ(vec(o.vertices[0], 16), (V{0, 0, 0, 0, f1, 0, 0, 0, f1, f2, 0, 0, 0, f2, f3, 0}));
        // Corner 3 is the second triangle's first vertex; every fourth value stays 0.
        EXPECT_EQ(vec(o.corners[0], 24),
                  (V{0, 0, 0, 0, f1, 0, 0, 0, f1, f2, 0, 0, 0, f2, f3, 0, f1, f2, 0, 0, f1, 0, 0, 0}));
        EXPECT_DOUBLE_EQ(o.matrix[3][3], f1);
        EXPECT_EQ(vec(&o.list1[0]->x, 3), (V{5, 6, 7}));  // point lists are never scaled
    }
    // Geometry flag 0 (from 1.02): no arrays and zero counts.
    ObjectFileWriter w(102);
    Outputs o;
    ASSERT_TRUE(OpenedFile(w.open("C3dObjectMesh").geometry(Geometry(), "empty").tail({}).plain()).next(o));
    EXPECT_EQ(std::make_pair(o.vertexCount, o.count), std::make_pair(0u, 0u));
    EXPECT_EQ(o.vertices, nullptr);
    EXPECT_EQ(o.corners, nullptr);
}

TEST(MeshRecordTest, RefusesBadIndicesAndHugeCountsTheFileCannotHold) {
    // A refused count allocates nothing; arrays already handed out (vertices, corners) are freed by the caller
    // (ASan checks). The corner count holds the file's triangle count once read.
    const std::tuple<const char*, const char*, int, unsigned int> cases[] = {
        {"Triangle < 3/2/1 >", "Triangle < 4/2/1 >", 2, 2},
        {"Triangle < 3/2/1 >", "Triangle < 3/-1/1 >", 2, 2},
        {"Triangle < 3/2/1 >", "Triangle < 3/2/1000000 >", 2, 2},
        {"Num Vertices < 4 >", "Num Vertices < 2000000000 >", 0, 77},
        {"Num Vertices < 4 >", "Num Vertices < -5 >", 0, 77},
        {"Num Points < 1 >", "Num Points < 900000000 >", 1, 77},
        {"Num Triangles < 2 >", "Num Triangles < 1500000000 >", 1, 1500000000}};
    const std::string text = ObjectFileWriter(115).mesh("m", kTwoTriangles).plain();
    for (const auto& [from, to, arraysHandedOut, cornerCount] : cases) {
        std::string bad = text;
        Outputs o;
        EXPECT_FALSE(OpenedFile(bad.replace(bad.find(from), std::strlen(from), to)).next(o)) << to;
        EXPECT_EQ((o.vertices != nullptr) + (o.corners != nullptr), arraysHandedOut) << to;
        EXPECT_EQ(o.count, cornerCount) << to;
    }
    // Null outputs still consume the record.
    OpenedFile f(ObjectFileWriter(115).mesh("m", kTwoTriangles).sphere(2, "after").plain());
    double matrix[4][4];
    ASSERT_TRUE(f->ReadType(&f.type));
    ASSERT_TRUE(f->ReadMesh(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, matrix, nullptr,
                            nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    ASSERT_TRUE(f->ReadType(&f.type));
    EXPECT_EQ(f.type, ZOR_RECORD_SPHERE);
}

// "Num Vertices < 100 >" followed by 3 vertex lines and the end of the file:
// the count and an array for all 100 reach the caller with the 3 read, and
// the read fails. The same for the triangles and the point lists; a count is
// stored as soon as it is read. Only a count whose array passes 64 MiB and
// that the rest of the file cannot fill is refused before allocating.
TEST(MeshRecordTest, FileEndingInsideACountedListKeepsTheCountAndTheLinesRead) {
    // Counts | third and last vertex | corner 3 and the last | list 1's points of its size.
    const auto summary = [](const Outputs& o) {
        const auto entry = [](const double* e) {
            return zortest::format_number(e[0]) + "," + zortest::format_number(e[1]) + "," +
                   zortest::format_number(e[2]) + "," + zortest::format_number(e[3]);
        };
        std::string out = std::to_string(o.vertexCount) + " " + std::to_string(o.count) + " | ";
        out += o.vertices == nullptr ? "-"
               : o.vertexCount < 3   ? "made"
                                     : entry(o.vertices[2]) + " .. " + entry(o.vertices[o.vertexCount - 1]);
        out += " | ";
        out += o.corners == nullptr ? "-" : entry(o.corners[3]) + " .. " + entry(o.corners[3 * o.count - 1]);
        long long points = 0;
        for (long long i = 0; i < o.list1.GetSize(); ++i) points += o.list1[i] != nullptr;
        return out + " | " + std::to_string(points) + "/" + std::to_string(o.list1.GetSize());
    };
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        // Count line as written, as changed, the last line kept, the outcome.
        {"Num Vertices < 4 >", "Num Vertices < 100 >", "1,2,0 >", "100 77 | 1,2,0,0 .. 0,0,0,0 | - | 0/0"},
        {"Num Triangles < 2 >", "Num Triangles < 50 >", "3/2/1 >",
         "4 50 | 1,2,0,0 .. 0,2,3,0 | 0,2,3,0 .. 0,0,0,0 | 1/1"},
        {"Num Points < 1 >", "Num Points < 10 >", "5,6,7 >", "4 77 | 1,2,0,0 .. 0,2,3,0 | - | 1/10"},
        {"Num Vertices < 4 >", "Num Vertices < 0 >", "Num Vertices < 0 >", "0 77 | made | - | 0/0"},
        // 64,000,000 bytes of vertices are made; 67,200,000 are more than the budget.
        {"Num Vertices < 4 >", "Num Vertices < 2000000 >", "1,2,0 >", "2000000 77 | 1,2,0,0 .. 0,0,0,0 | - | 0/0"},
        {"Num Vertices < 4 >", "Num Vertices < 2100000 >", "1,2,0 >", "2100000 77 | - | - | 0/0"}};
    const std::string text = ObjectFileWriter(115).mesh("m", kTwoTriangles).plain();
    for (const auto& [from, to, last, outcome] : cases) {
        std::string cut = text;
        cut.replace(cut.find(from), std::strlen(from), to);
        cut.resize(cut.find(last) + std::strlen(last) + 1);
        Outputs o;
        EXPECT_FALSE(OpenedFile(cut).next(o)) << to;
        EXPECT_EQ(summary(o), outcome) << to;
    }
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
            EXPECT_EQ(std::string(o.name) + " " + std::string(o.attachName), name + std::string(" Head"));
            ASSERT_EQ(o.list2.GetSize(), 1);
            EXPECT_EQ(o.list2[0]->z, 3);
        }
        EXPECT_FALSE(f->ReadType(&f.type));
    }
    // A 1.08 tool's third line is plain text: consumed at 1.08, a missing value at 1.07.
    std::string text = ObjectFileWriter(108).tool("Cutter").plain();
    Outputs at108, at107;
    EXPECT_TRUE(OpenedFile(text).next(at108));
    EXPECT_FALSE(OpenedFile(text.replace(0, text.find('\n'), "// Version: 1.07")).next(at107));
}

Engine engine(int kind, const std::string& name = "X", int unit = 1) {
    Engine e;
    e.kind = kind;
    e.name = name;
    e.unit = unit;
    return e;
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
            Engine e = engine(static_cast<int>(kind), "Axis");
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

TEST(EngineRecordTest, DirectionFlagUnnamedSpindleAndScaling) {
    // The flag goes to p5 when the host asks for it, else a non-zero flag reverses the axis.
    const std::tuple<int, bool, double> cases[] = {{0, true, 1}, {0, false, 1}, {3, true, 1}, {3, false, -1}};
    for (const auto& [flag, withP5, axisY] : cases) {
        Engine e = engine(1);
        e.axis = {0, 1, 0};
        e.flag = flag;
        const std::vector<Outputs> o = read_engines(115, {e}, withP5);
        EXPECT_EQ(o[0].axis[1], axisY) << flag << withP5;
        EXPECT_EQ(o[0].u[5], withP5 ? static_cast<unsigned int>(flag) : 99u) << flag << withP5;
    }
    const std::vector<Outputs> named = read_engines(115, {engine(1, ""), engine(2, "")});
    EXPECT_EQ(std::string(named[0].name) + "/" + std::string(named[1].name), "/Spindle");

    // p6 is the first of four adjacent doubles: p7 is scaled as its neighbour and on its own, p8 and p9 too for
    // kind 1.
    const double f = 25.4;
    const std::vector<Outputs> out = read_engines(115, {engine(1, "X", 2), engine(2, "X", 2)});
    for (int kind : {1, 2}) {
        const double* p = out[kind - 1].p;
        const V expected = kind == 1 ? V{6 * f, 7 * f * f, 8 * f * f, 9 * f * f, 11 * f, 12 * f, 15 * f, 16 * f, 19, 0}
                                     : V{6 * f, 7 * f * f, 8 * f, 9 * f, 11, 12, 15 * f, 16 * f, 19, 2 * f};
        EXPECT_EQ(V({p[6], p[7], p[8], p[9], p[11], p[12], p[15], p[16], p[19], out[kind - 1].p20[1]}), expected);
    }
    // A null p6 scales none of the four; p7 and p8 are still scaled once.
    OpenedFile file(ObjectFileWriter(115).engine(engine(1, "X", 2)).plain());
    double p7 = 0, p8 = 0;
    ASSERT_TRUE(file->ReadType(&file.type));
    ASSERT_TRUE(file->ReadEngin(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &p7, &p8, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(V({p7, p8}), V({7 * f, 8 * f}));
}

// Before 1.09 engines are numbered and stored in the spindle table (ten
// slots), where later objects find their attachment index.
TEST(EngineRecordTest, OldFilesNumberElementsAndLaterObjectsFindThem) {
    for (int version : {108, 109}) {
        SCOPED_TRACE(version);
        ObjectFileWriter w(version);
        for (int i = 1; i <= 11; ++i) {
            Engine e = engine(1, "Element" + std::to_string(i));  // keys: first 5 characters, "Eleme"
            e.key = "K" + std::to_string(i) + "xxxx";
            w.engine(e);
        }
        Tail second, eleventh;
        std::tie(second.attachName, second.attachKey) = std::make_pair("Eleme", "K2xxxxyy");
        std::tie(eleventh.attachName, eleventh.attachKey) = std::make_pair("Element11", "K11xxxx");
        OpenedFile f(w.sphere(1, "carried", second).sphere(1, "unmatched", eleventh).plain());
        Outputs engines[11], carried, unmatched;
        for (unsigned int i = 0; i < 11; ++i) ASSERT_TRUE(f.next(engines[i]));
        EXPECT_EQ(std::make_pair(engines[0].u[25], engines[10].u[25]),
                  version < 109 ? std::make_pair(1u, 11u) : std::make_pair(0u, 0u));
        ASSERT_TRUE(f.next(carried) && f.next(unmatched));
        EXPECT_EQ(std::make_pair(carried.attachIndex, unmatched.attachIndex),
                  std::make_pair(version < 109 ? 2u : 0u, 0u));
        const zor::ObjectFileState& state = zor::object_file_state();
        if (version < 109) {
            EXPECT_EQ(std::make_pair(state.spindleCount, state.spindles[9].spindleKey),
                      std::make_pair(11, std::string("K10xx")));
        }
    }
}

}  // namespace
