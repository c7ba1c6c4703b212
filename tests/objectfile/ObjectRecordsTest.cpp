// Solid primitives, the common object tail and file references.
#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

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
        ObjectFileWriter w(version);
        w.cube(1, 2, 3, "obj", {}, {}, {"one", "two", "three"}).cylinder(1, 2, 3, "obj").cone(1, 2, "obj");
        OpenedFile f(w.sphere(1, "obj").torus(1, 2, "obj").plain());
        for (int dims : {3, 3, 2, 1, 2}) {
            Outputs o;
            o.texts[3] = "kept";
            ASSERT_TRUE(f.next(o));
            SCOPED_TRACE(std::to_string(version) + " record " + std::to_string(f.type));
            for (int i = 0; i < 3; ++i) EXPECT_EQ(o.d[i], i < dims ? i + 1 : -1) << "dimension " << i + 1;
            EXPECT_STREQ(o.name, "obj");
            // Only the cube fills the dimension texts, in its rotated order.
            const bool cube = f.type == ZOR_RECORD_CUBE;
            EXPECT_EQ(std::string(o.texts[3]) + "," + std::string(o.texts[5]), cube ? "one,three" : "kept,");
        }
        EXPECT_FALSE(f->ReadType(&f.type));
    }
}

TEST(PrimitiveRecordsTest, LengthsConvertOnlyBetweenMillimetresAndInches) {
    const std::tuple<unsigned int, int, double> cases[] = {{1, 2, 25.4}, {1, 1, 1.0}, {1, 3, 1.0}, {2, 1, 1 / 25.4},
                                                           {2, 2, 1.0},  {3, 2, 1.0}, {0, 1, 1.0}};
    for (const auto& [callerUnits, recordUnits, f] : cases) {
        SCOPED_TRACE(std::to_string(callerUnits) + " <- " + std::to_string(recordUnits));
        Tail t;
        t.unit = recordUnits;
        t.vector = t.quad = {1, 2, 3, 4};
        t.matrix[0][3] = 1;
        t.matrix[3][0] = 5;  // not a translation: unscaled
        Outputs o;
        ASSERT_TRUE(read_back(115, t, o, callerUnits));
        // The homogeneous element [3][3] is scaled too; the colour never.
        const std::vector<double> expected = {f, 4 * f, f, f, 5, 4};
        EXPECT_EQ(std::vector<double>({o.d[0], o.vector[3], o.matrix[0][3], o.matrix[3][3], o.matrix[3][0], o.quad[3]}),
                  expected);
    }
}

TEST(ObjectTailTest, EveryVersionFrom101To115ReadsItsOwnLayout) {
    Tail t;
    std::tie(t.flag, t.attachName, t.attachKey, t.attachIndex, t.furtherLines, t.nestedBlock) =
        std::make_tuple(7, "Spindle", "KEY", 4, 2, true);
    for (int version = 101; version <= 115; ++version) {
        for (int extra : {0, 1}) {
            SCOPED_TRACE("version " + std::to_string(version) + " extra " + std::to_string(extra));
            t.extra = extra;
            Outputs o;
            ASSERT_TRUE(read_back(version, t, o));
            EXPECT_EQ(std::string(o.tailText) + "," + std::string(o.attachName) + "," + std::string(o.attachKey),
                      version < 103 ? "tail,Spindle,1" : "tail,Spindle,KEY");
            EXPECT_EQ(o.attachIndex, version < 106 ? 0u : 4u);
        }
    }
}

TEST(ObjectTailTest, AttachmentRulesAndTheMatrixConvention) {
    // "None" becomes empty, an empty name becomes the object's.
    for (const auto& [written, read] :
         {std::pair<const char*, const char*>{"None", ""}, {"", "ball"}, {"Table", "Table"}, {"none", "none"}}) {
        Tail t;
        t.attachName = written;
        Outputs o;
        ASSERT_TRUE(read_back(115, t, o));
        EXPECT_STREQ(o.attachName, read) << written;
    }
    // Convention 0 transposes and keeps the translation column.
    Tail t;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) t.matrix[r][c] = 10 * r + c;
    Outputs asRead, converted;
    ASSERT_TRUE(read_back(115, t, asRead, 1, 1));
    ASSERT_TRUE(read_back(115, t, converted, 1, 0));
    EXPECT_EQ(zortest::vec(asRead.matrix[0], 16), zortest::vec(t.matrix[0], 16));
    EXPECT_EQ(zortest::vec(converted.matrix[0], 16),
              (std::vector<double>{0, 10, 20, 3, 1, 11, 21, 13, 2, 12, 22, 23, 0, 0, 0, 33}));
}

TEST(ObjectTailTest, ObjectNamesAreRecordedFrom113AndCappedAt300) {
    for (int version : {112, 113}) {
        ObjectFileWriter w(version);
        for (int i = 0; i < 305; ++i) w.sphere(1, "s" + std::to_string(i));
        EXPECT_EQ(zortest::walk(*OpenedFile(w.plain()).file).size(), 305 * 3u);
        const auto& names = zor::object_file_state().objectNames;
        EXPECT_EQ(names.empty() ? "" : names.front() + "-" + names.back() + "-" + std::to_string(names.size()),
                  version == 112 ? "" : "s0-s299-300");
    }
}

TEST(ObjectTailTest, ARecordWithoutClosingBraceLeavesTheLineForReadType) {
    std::string text = ObjectFileWriter(115).sphere(1, "first").plain();
    const std::string second = ObjectFileWriter(115).sphere(2, "second").plain();
    text.erase(text.rfind("}\n")) += second.substr(second.find('\n') + 1);  // without the first's "}"
    OpenedFile f(text);
    Outputs a, b;
    ASSERT_TRUE(f.next(a) && f.next(b));
    EXPECT_EQ(b.d[0], 2);
}

TEST(MakeFullPathNameTest, JoinsWithABackslashUnlessTheNameStandsAlone) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"C:\\models", "part.obj", "C:\\models\\part.obj"},
        {"C:\\models\\", "part.obj", "C:\\models\\part.obj"},
        {"/data/", "part.obj", "/data/part.obj"},
        {"/data", "part.obj", "/data\\part.obj"},
        {"/data", "./part.obj", "./part.obj"},
        {"/data", "\\abs.obj", "\\abs.obj"},
        {"/data", "/abs.obj", "/abs.obj"},
        {"", "part.obj", "part.obj"},
        {nullptr, "part.obj", "part.obj"},
        {"/data", nullptr, "old"}};
    for (const auto& [folder, name, expected] : cases) {
        CString result("old");
        MakeFullPathName(const_cast<char*>(folder), const_cast<char*>(name), result);
        EXPECT_STREQ(result, expected);
    }
}

TEST(ObjectFileReferenceTest, ResolvesAgainstTheFolderOfTheFileChangesDirectoryAndConvertsTheMatrix) {
    const std::string cwd = std::filesystem::canonical(std::filesystem::current_path()).string();
    // Reference, opened by a path with Windows separators, resolved name and new directory below the root.
    const std::tuple<std::string, bool, std::string, std::string> cases[] = {
        {"../other/part.obj", false, "/other/part.obj", "/sub"},
        {"parts\\part.obj", true, "/sub/parts/part.obj", "/sub"},
        {"", false, "", ""},
        {std::string(300, 'n'), false, "", "/sub"}};
    Tail t;
    t.unit = 2;
    t.vector = {1, 1, 1, 1};
    t.matrix[0][3] = 1;
    for (const auto& [reference, backslashes, resolved, folder] : cases) {
        SCOPED_TRACE(reference);
        zortest::TempDir dir;
        zor::reset_object_file_state();
        std::filesystem::create_directories(dir.file("sub"));
        const std::string path =
            dir.write("sub/scene.obj", ObjectFileWriter(115).fileReference(reference, "ref", t).plain());
        zortest::TestFile f((backslashes ? dir.path() + "\\sub\\scene.obj" : path).c_str(), 0, 1, 1);
        unsigned int type = 0;
        Outputs o;
        ASSERT_TRUE(f.ReadType(&type) && zortest::read_record(f, type, o));
        EXPECT_EQ(std::make_pair(o.first, std::string(o.name)), std::make_pair(3u, std::string("ref")));
        // Only the matrix is converted; no extra lines, so the flag is 0.
        EXPECT_EQ(std::make_tuple(o.matrix[0][3], o.vector[0], o.flag), std::make_tuple(25.4, 1.0, 0u));
        const std::string root = std::filesystem::canonical(dir.path()).string();
        EXPECT_STREQ(o.reference, resolved.empty() ? "" : (root + resolved).c_str());
        EXPECT_EQ(std::filesystem::canonical(std::filesystem::current_path()).string(),
                  folder.empty() ? cwd : root + folder);
        std::filesystem::current_path(cwd);
    }
}

}  // namespace
