// Solid primitives, the common object tail and file references.
#include <gtest/gtest.h>

#include <filesystem>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;
using zortest::Outputs;
using zortest::Tail;

// Writes one sphere with the tail and reads it back, expecting the file to
// end right after it.
bool read_back(int version, const Tail& tail, Outputs& o, unsigned int units = 1, int matrixConvention = 1) {
    OpenedFile f(ObjectFileWriter(version).sphere(1, "ball", tail).plain(), units, matrixConvention);
    return f.next(o) && !f->ReadType(&f.type) && f.type == ZOR_RECORD_END;
}

TEST(PrimitiveRecordsTest, EachSolidReadsItsDimensionsInArgumentOrder) {
    for (int version : {101, 105, 115}) {
        SCOPED_TRACE(version);
        ObjectFileWriter w(version);
        w.cube(1, 2, 3, "obj", {}, {}, {"one", "two", "three"}).cylinder(1, 2, 3, "obj").cone(1, 2, "obj");
        w.sphere(1, "obj").torus(1, 2, "obj");
        OpenedFile f(w.plain());
        for (int dims : {3, 3, 2, 1, 2}) {
            Outputs o;
            o.texts[3] = "kept";
            ASSERT_TRUE(f.next(o));
            SCOPED_TRACE(f.type);
            for (int i = 0; i < 3; ++i) EXPECT_EQ(o.d[i], i < dims ? i + 1 : -1) << "dimension " << i + 1;
            EXPECT_STREQ(o.name, "obj");
            // Only the cube fills the dimension texts, in its rotated order.
            EXPECT_STREQ(o.texts[3], f.type == ZOR_RECORD_CUBE ? "one" : "kept");
            EXPECT_STREQ(o.texts[5], f.type == ZOR_RECORD_CUBE ? "three" : "");
        }
        EXPECT_FALSE(f->ReadType(&f.type));
    }
}

TEST(PrimitiveRecordsTest, LengthsConvertOnlyBetweenMillimetresAndInches) {
    const struct {
        unsigned int callerUnits;
        int recordUnits;
        double factor;
    } cases[] = {{1, 2, 25.4}, {1, 1, 1.0}, {1, 3, 1.0}, {2, 1, 1 / 25.4}, {2, 2, 1.0}, {3, 2, 1.0}, {0, 1, 1.0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.callerUnits) + " <- " + std::to_string(c.recordUnits));
        Tail t;
        t.unit = c.recordUnits;
        t.vector = t.quad = {1, 2, 3, 4};
        t.matrix[0][3] = 1;
        t.matrix[3][0] = 5;
        Outputs o;
        ASSERT_TRUE(read_back(115, t, o, c.callerUnits));
        EXPECT_DOUBLE_EQ(o.d[0], c.factor);
        EXPECT_DOUBLE_EQ(o.vector[3], 4 * c.factor);
        EXPECT_DOUBLE_EQ(o.matrix[0][3], c.factor);
        EXPECT_DOUBLE_EQ(o.matrix[3][3], c.factor);  // the homogeneous element too
        EXPECT_DOUBLE_EQ(o.matrix[3][0], 5);         // not a translation: unscaled
        EXPECT_EQ(o.quad[3], 4.0f);                  // never scaled
    }
}

TEST(ObjectTailTest, EveryVersionFrom101To115ReadsItsOwnLayout) {
    for (int version = 101; version <= 115; ++version) {
        for (int extra : {0, 1}) {
            SCOPED_TRACE("version " + std::to_string(version) + " extra " + std::to_string(extra));
            Tail t;
            t.extra = extra;
            t.flag = 7;
            t.attachName = "Spindle";
            t.attachKey = "KEY";
            t.attachIndex = 4;
            t.furtherLines = 2;
            t.nestedBlock = true;
            Outputs o;
            ASSERT_TRUE(read_back(version, t, o));
            EXPECT_STREQ(o.tailText, "tail");
            EXPECT_STREQ(o.attachName, "Spindle");
            EXPECT_STREQ(o.attachKey, version < 103 ? "1" : "KEY");
            EXPECT_EQ(o.attachIndex, version < 106 ? 0u : 4u);
        }
    }
}

TEST(ObjectTailTest, ObjectNamesAreRecordedFrom113AndCappedAt300) {
    for (int version : {112, 113}) {
        SCOPED_TRACE(version);
        ObjectFileWriter w(version);
        for (int i = 0; i < 305; ++i) w.sphere(1, "s" + std::to_string(i));
        OpenedFile f(w.plain());
        EXPECT_EQ(zortest::walk(*f.file).size(), 305 * 3u);
        const auto& names = zor::object_file_state().objectNames;
        ASSERT_EQ(names.size(), version == 112 ? 0u : 300u);
        if (version == 113) {
            EXPECT_EQ(names.front(), "s0");
            EXPECT_EQ(names.back(), "s299");
        }
    }
}

TEST(ObjectTailTest, AttachmentNoneBecomesEmptyAndEmptyBecomesTheName) {
    for (const auto& c :
         {std::pair<const char*, const char*>{"None", ""}, {"", "ball"}, {"Table", "Table"}, {"none", "none"}}) {
        SCOPED_TRACE(c.first);
        Tail t;
        t.attachName = c.first;
        Outputs o;
        ASSERT_TRUE(read_back(115, t, o));
        EXPECT_STREQ(o.attachName, c.second);
    }
}

TEST(ObjectTailTest, MatrixConventionZeroTransposesAndKeepsTheTranslationColumn) {
    Tail t;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) t.matrix[r][c] = 10 * r + c;
    Outputs asRead, converted;
    ASSERT_TRUE(read_back(115, t, asRead, 1, 1));
    ASSERT_TRUE(read_back(115, t, converted, 1, 0));
    const double expected[4][4] = {{0, 10, 20, 3}, {1, 11, 21, 13}, {2, 12, 22, 23}, {0, 0, 0, 33}};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            EXPECT_EQ(asRead.matrix[r][c], 10 * r + c);
            EXPECT_EQ(converted.matrix[r][c], expected[r][c]) << r << "," << c;
        }
}

TEST(ObjectTailTest, ARecordWithoutClosingBraceLeavesTheLineForReadType) {
    std::string text = ObjectFileWriter(115).sphere(1, "first").plain();
    text.erase(text.rfind("}\n"));  // the sphere's "}"
    const std::string second = ObjectFileWriter(115).sphere(2, "second").plain();
    text += second.substr(second.find('\n') + 1);
    OpenedFile f(text);
    Outputs a, b;
    ASSERT_TRUE(f.next(a));
    ASSERT_TRUE(f.next(b));
    EXPECT_EQ(f.type, ZOR_RECORD_SPHERE);
    EXPECT_EQ(b.d[0], 2);
}

TEST(MakeFullPathNameTest, JoinsWithABackslashUnlessTheNameStandsAlone) {
    const struct {
        const char *folder, *name, *result;
    } cases[] = {{"C:\\models", "part.obj", "C:\\models\\part.obj"},
                 {"C:\\models\\", "part.obj", "C:\\models\\part.obj"},
                 {"/data/", "part.obj", "/data/part.obj"},
                 {"/data", "part.obj", "/data\\part.obj"},
                 {"/data", "./part.obj", "./part.obj"},
                 {"/data", "\\abs.obj", "\\abs.obj"},
                 {"/data", "/abs.obj", "/abs.obj"},
                 {"", "part.obj", "part.obj"},
                 {nullptr, "part.obj", "part.obj"},
                 {"/data", nullptr, "old"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.result);
        CString result("old");
        MakeFullPathName(const_cast<char*>(c.folder), const_cast<char*>(c.name), result);
        EXPECT_STREQ(result, c.result);
    }
}

TEST(ObjectFileReferenceTest, ResolvesAgainstTheFolderOfTheFileChangesDirectoryAndConvertsTheMatrix) {
    const std::string cwd = std::filesystem::current_path().string();
    const struct {
        std::string reference;
        bool backslashes;  // open the file by a path with Windows separators
        const char *resolved, *folder;
    } cases[] = {{"../other/part.obj", false, "/other/part.obj", "/sub"},
                 {"parts\\part.obj", true, "/sub/parts/part.obj", "/sub"},
                 {"", false, "", nullptr},
                 {std::string(300, 'n'), false, "", "/sub"}};
    Tail t;
    t.unit = 2;
    t.vector = {1, 1, 1, 1};
    t.matrix[0][3] = 1;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reference);
        zortest::TempDir dir;
        zor::reset_object_file_state();
        std::filesystem::create_directories(dir.file("sub"));
        const std::string path =
            dir.write("sub/scene.obj", ObjectFileWriter(115).fileReference(c.reference, "ref", t).plain());
        zortest::TestFile f((c.backslashes ? dir.path() + "\\sub\\scene.obj" : path).c_str(), 0, 1, 1);
        unsigned int type = 0;
        Outputs o;
        ASSERT_TRUE(f.ReadType(&type) && zortest::read_record(f, type, o));
        EXPECT_EQ(o.first, 3u);
        EXPECT_STREQ(o.name, "ref");
        EXPECT_EQ(o.matrix[0][3], 25.4);  // only the matrix is converted
        EXPECT_EQ(o.vector[0], 1.0);
        EXPECT_EQ(o.flag, 0u);  // no extra lines: the tail read no flag
        const std::string root = std::filesystem::canonical(dir.path()).string();
        EXPECT_STREQ(o.reference, *c.resolved != 0 ? (root + c.resolved).c_str() : "");
        EXPECT_EQ(std::filesystem::canonical(std::filesystem::current_path()).string(),
                  c.folder != nullptr ? root + c.folder : cwd);
        std::filesystem::current_path(cwd);
    }
}

}  // namespace
