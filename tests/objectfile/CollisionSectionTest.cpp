#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "ObjectFileTestUtil.h"

namespace {

using Pair = zortest::ObjectFileWriter::Pair;
using zortest::ObjectFileWriter;
using zortest::OpenedFile;

// The outputs of a collision read, released with FreeCollision.
struct Section {
    CMWZORFile* file;
    void** first = reinterpret_cast<void**>(1);  // not null: the reader must clear them
    void** second = reinterpret_cast<void**>(1);
    unsigned int* codes = reinterpret_cast<unsigned int*>(1);
    double* values = reinterpret_cast<double*>(1);
    unsigned int count = 99;
    bool ok = false;

    explicit Section(CMWZORFile& f) : file(&f) { ok = f.ReadCollision(&first, &second, &codes, &values, &count); }
    ~Section() { file->FreeCollision(first, second, codes, values, count); }
    std::string pair(unsigned int i) const {
        auto text = [](void* p) { return p != nullptr ? std::string(static_cast<const char*>(p)) : "(null)"; };
        return text(first[i]) + "-" + text(second[i]) + ":" + std::to_string(codes[i]) + "/" +
               zortest::format_number(values[i]);
    }
};

}  // namespace

namespace zortest {
std::FILE* open_stream(const std::string& path, long offset) {
    std::FILE* stream = std::fopen(path.c_str(), "r");
    if (stream != nullptr) std::fseek(stream, offset, SEEK_SET);
    return stream;
}
}  // namespace zortest

namespace {

// Reads the spheres in front of the section, which fill the name table.
void read_spheres(zortest::TestFile& f, int n) {
    for (int i = 0; i < n; ++i) {
        unsigned int type = 0;
        zortest::SolidOutputs o;
        ASSERT_TRUE(f.ReadType(&type));
        ASSERT_TRUE(zortest::read_sphere(f, o));
    }
}

// A file with spheres "s0".."s{n-1}" and a new-form section.
std::string new_form(int objects, double value, int count, const std::vector<std::string>& lines) {
    ObjectFileWriter w(115);
    for (int i = 0; i < objects; ++i) w.sphere(1, "s" + std::to_string(i));
    w.collisionNew(value, count, lines);
    return w.plain();
}

TEST(CollisionSectionTest, OldFormReadsSixLinesAPair) {
    ObjectFileWriter w(112);
    w.collisionOld({{"Spindle head", "Table", 3, 0.5}, {"Tool", "Vice", 4, 1.25}}).line("after");
    OpenedFile f(w.plain());
    {
        Section s(*f.file);
        ASSERT_TRUE(s.ok);
        ASSERT_EQ(s.count, 2u);
        EXPECT_EQ(s.pair(0), "Spindle head-Table:3/0.5");
        EXPECT_EQ(s.pair(1), "Tool-Vice:4/1.25");
    }
    CString line;
    ASSERT_TRUE(f->ReadLine(line));
    EXPECT_STREQ(line, "after");
}

TEST(CollisionSectionTest, NewFormResolvesIndicesThroughTheNameTable) {
    OpenedFile f(new_form(3, 0.75, 3, {"0:1,5,2,7", "2:1,9"}));
    read_spheres(*f.file, 3);
    ASSERT_EQ(zor::object_file_state().objectNames.size(), 3u);
    {
        Section s(*f.file);
        ASSERT_TRUE(s.ok);
        ASSERT_EQ(s.count, 3u);
        EXPECT_EQ(s.pair(0), "s0-s1:5/0.75");
        EXPECT_EQ(s.pair(1), "s0-s2:7/0.75");
        EXPECT_EQ(s.pair(2), "s2-s1:9/0.75");
    }
    EXPECT_TRUE(zor::object_file_state().objectNames.empty());
}

TEST(CollisionSectionTest, NewFormStopsStoringAtTheCount) {
    OpenedFile f(new_form(3, 1, 1, {"0:1,5,2,7"}));
    read_spheres(*f.file, 3);
    Section s(*f.file);
    ASSERT_TRUE(s.ok);
    ASSERT_EQ(s.count, 1u);
    EXPECT_EQ(s.pair(0), "s0-s1:5/1");
}

TEST(CollisionSectionTest, BadPairLinesFailAndEmptyTheTable) {
    const char* lines[] = {"0:3,5", "3:0,5", "0:-1,5", "-1:0,5", "0;1,5", "0:1,,5", ":1,5", "0:x,5", "0:1,5x"};
    for (const char* line : lines) {
        SCOPED_TRACE(line);
        OpenedFile f(new_form(3, 1, 2, {"1:2,4", line}));
        read_spheres(*f.file, 3);
        {
            Section s(*f.file);
            EXPECT_FALSE(s.ok);
            EXPECT_EQ(s.count, 2u);  // the file's count, with the arrays that go with it
            EXPECT_EQ(s.pair(0), "s1-s2:4/1");
            EXPECT_EQ(s.pair(1), "(null)-(null):0/0");
        }
        EXPECT_TRUE(zor::object_file_state().objectNames.empty());
    }
}

TEST(CollisionSectionTest, RefusedCountsAndEarlyFailuresKeepOutputsEmpty) {
    struct Case {
        std::string text;
        unsigned int count;
    };
    const Case cases[] = {
        {new_form(3, 1, 0, {"0:1,2"}), 0},
        {new_form(3, 1, -4, {"0:1,2"}), 0xFFFFFFFCu},
        {new_form(3, 1, 2000000000, {"0:1,2"}), 2000000000u},
        {ObjectFileWriter(110).collisionOld({}).plain(), 0},
        {ObjectFileWriter(110).field("Num Pairs", "2000000000").plain(), 2000000000u},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.substr(c.text.size() > 40 ? c.text.size() - 40 : 0));
        OpenedFile f(c.text);
        if (f->m_version > 112) read_spheres(*f.file, 3);
        const std::size_t names = zor::object_file_state().objectNames.size();
        Section s(*f.file);
        EXPECT_FALSE(s.ok);
        EXPECT_EQ(s.count, c.count);
        EXPECT_EQ(s.first, nullptr);
        EXPECT_EQ(s.values, nullptr);
        EXPECT_EQ(zor::object_file_state().objectNames.size(), names);  // not consumed
    }
}

TEST(CollisionSectionTest, SectionCutShortKeepsWhatWasStored) {
    {
        // New form: the name table survives a missing line.
        OpenedFile f(new_form(3, 1, 3, {"0:1,5"}));
        read_spheres(*f.file, 3);
        Section s(*f.file);
        EXPECT_FALSE(s.ok);
        EXPECT_EQ(s.pair(0), "s0-s1:5/1");
        EXPECT_EQ(s.pair(1), "(null)-(null):0/0");
        EXPECT_EQ(zor::object_file_state().objectNames.size(), 3u);
    }
    // Old form: every prefix of the section fails, and the entries not yet
    // read are zero (FreeCollision over the whole count is safe).
    const std::string text = ObjectFileWriter(112).collisionOld({{"a", "b", 1, 2}, {"c", "d", 3, 4}}).plain();
    for (std::size_t n = 0; n <= text.rfind("End Pair"); ++n) {
        OpenedFile f(text.substr(0, n));
        Section s(*f.file);
        EXPECT_FALSE(s.ok) << n;
    }
}

// The bundled scene: every record kind, then its collision section, which a
// host reads from where the walk's last ReadType began.
TEST(CollisionSectionTest, SceneExampleIsReadInFull) {
    zor::reset_object_file_state();
    const std::string path = std::string(ZOR_EXAMPLES_DIR) + "/objects/scene-1.15.obj";
    zortest::TestFile f(path.c_str(), 0, 1, 1);
    ASSERT_NE(f.m_stream, nullptr);
    std::string kinds;
    unsigned int type = 0;
    long start = std::ftell(f.m_stream);
    while (f.ReadType(&type)) {
        zortest::SolidOutputs o;
        bool ok = true;
        double d[3];
        switch (type) {
            case ZOR_RECORD_CUBE:
                ok = zortest::read_cube(f, o);
                break;
            case ZOR_RECORD_SPHERE:
                ok = zortest::read_sphere(f, o);
                break;
            case ZOR_RECORD_CYLINDER:
                ok = f.ReadCylinder(&d[0], &d[1], &d[2], o.vector, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    o.matrix, &o.list1, &o.list2, o.quad, &o.name, nullptr, nullptr, nullptr, nullptr);
                break;
            case ZOR_RECORD_CONE:
            case ZOR_RECORD_TORUS:
                ok = std::invoke(type == ZOR_RECORD_CONE ? &CMWZORFile::ReadCone : &CMWZORFile::ReadTorus, f, &d[0],
                                 &d[1], o.vector, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, o.matrix,
                                 &o.list1, &o.list2, o.quad, &o.name, nullptr, nullptr, nullptr, nullptr);
                break;
            case ZOR_RECORD_MESH:
                ok = f.ReadMesh(o.vector, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, o.matrix,
                                nullptr, nullptr, o.quad, &o.name, nullptr, nullptr, nullptr, nullptr);
                break;
            case ZOR_RECORD_PART:
            case ZOR_RECORD_TOOL:
                ok = std::invoke(type == ZOR_RECORD_PART ? &CMWZORFile::ReadPart : &CMWZORFile::ReadTool, f, o.vector,
                                 nullptr, nullptr, nullptr, o.matrix, nullptr, nullptr, o.quad, &o.name, nullptr,
                                 nullptr, nullptr, nullptr);
                break;
            case ZOR_RECORD_ENGINE: {
                double p6to9[4];
                ok = f.ReadEngin(&o.name, nullptr, nullptr, nullptr, nullptr, p6to9, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
                break;
            }
            case ZOR_RECORD_FILE:
                ok = f.ReadObjectFile(nullptr, nullptr, nullptr, o.vector, nullptr, nullptr, nullptr, o.matrix, nullptr,
                                      nullptr, o.quad, &o.name, nullptr, nullptr, nullptr, nullptr, nullptr);
                break;
            case ZOR_RECORD_CONTAINER:
                break;
            default:
                f.ReadDummy();
        }
        ASSERT_TRUE(ok) << "record " << type;
        kinds += std::to_string(type) + " ";
        start = std::ftell(f.m_stream);
    }
    EXPECT_EQ(kinds, "1 16 2 6 11 12 4 4 9 13 14 15 0 7 8 ");
    f.m_stream = zortest::open_stream(path, start);
    Section s(f);
    ASSERT_TRUE(s.ok);
    ASSERT_EQ(s.count, 4u);
    EXPECT_EQ(s.pair(0), "Base-Pyramid:1/0.5");
    EXPECT_EQ(s.pair(3), "Cutter-Pyramid:4/0.5");
}

}  // namespace
