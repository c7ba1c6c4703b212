#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;

TEST(MakeFullPathNameTest, JoinsWithABackslashUnlessTheNameStandsAlone) {
    struct Case {
        const char* folder;
        const char* name;
        const char* result;
    } cases[] = {
        {"C:\\models", "part.obj", "C:\\models\\part.obj"},
        {"C:\\models\\", "part.obj", "C:\\models\\part.obj"},
        {"/data/", "part.obj", "/data/part.obj"},
        {"/data", "part.obj", "/data\\part.obj"},
        {"/data", "./part.obj", "./part.obj"},
        {"/data", "\\abs.obj", "\\abs.obj"},
        {"/data", "/abs.obj", "/abs.obj"},
        {"", "part.obj", "part.obj"},
        {nullptr, "part.obj", "part.obj"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        CString result("old");
        MakeFullPathName(const_cast<char*>(c.folder), const_cast<char*>(c.name), result);
        EXPECT_STREQ(result, c.result);
    }
    CString untouched("old");
    MakeFullPathName(const_cast<char*>("/data"), nullptr, untouched);
    EXPECT_STREQ(untouched, "old");
}

class ObjectFileReferenceTest : public ::testing::Test {
protected:
    void SetUp() override { m_cwd = std::filesystem::current_path(); }
    void TearDown() override { std::filesystem::current_path(m_cwd); }

    // Reads the first record of text (a file reference) stored as sub/scene.obj.
    CString read_reference(const std::string& text, const std::string& openAs = "") {
        zor::reset_object_file_state();
        std::filesystem::create_directories(m_dir.file("sub"));
        std::string path = m_dir.write("sub/scene.obj", text);
        zortest::TestFile f((openAs.empty() ? path : openAs).c_str(), 0, 1, 1);
        unsigned int type = 0, first = 0, flag = 9;
        EXPECT_TRUE(f.ReadType(&type));
        EXPECT_EQ(type, 15u);
        CString reference("untouched"), text2, name;
        double vector[4], matrix[4][4];
        float quad[4];
        EXPECT_TRUE(f.ReadObjectFile(&first, &reference, &text2, vector, nullptr, nullptr, nullptr, matrix, nullptr,
                                     nullptr, quad, &name, nullptr, nullptr, nullptr, nullptr, &flag));
        EXPECT_EQ(first, 3u);
        EXPECT_STREQ(name, "ref");
        return reference;
    }

    zortest::TempDir m_dir;
    std::filesystem::path m_cwd;
};

TEST_F(ObjectFileReferenceTest, ResolvesAgainstTheFolderOfTheFileAndChangesDirectory) {
    ObjectFileWriter w(115);
    w.fileReference("../other/part.obj", "ref");
    CString resolved = read_reference(w.plain());
    const std::string root = std::filesystem::canonical(m_dir.path()).string();
    EXPECT_EQ(std::string(resolved.GetString()), root + "/other/part.obj");
    EXPECT_EQ(std::filesystem::canonical(std::filesystem::current_path()).string(), root + "/sub");
}

TEST_F(ObjectFileReferenceTest, AcceptsWindowsSeparators) {
    ObjectFileWriter w(115);
    w.fileReference("parts\\part.obj", "ref");
    std::string backslashed = m_dir.path() + "\\sub\\scene.obj";
    CString resolved = read_reference(w.plain(), backslashed);
    const std::string root = std::filesystem::canonical(m_dir.path()).string();
    EXPECT_EQ(std::string(resolved.GetString()), root + "/sub/parts/part.obj");
}

TEST_F(ObjectFileReferenceTest, EmptyNameStaysEmptyAndDirectoryIsUnchanged) {
    ObjectFileWriter w(115);
    w.fileReference("", "ref");
    EXPECT_STREQ(read_reference(w.plain()), "");
    EXPECT_EQ(std::filesystem::current_path(), m_cwd);
}

TEST_F(ObjectFileReferenceTest, TooLongAPathGivesAnEmptyName) {
    ObjectFileWriter w(115);
    w.fileReference(std::string(300, 'n'), "ref");
    EXPECT_STREQ(read_reference(w.plain()), "");
}

TEST_F(ObjectFileReferenceTest, OnlyTheMatrixIsConverted) {
    zortest::Tail t;
    t.unit = 2;
    t.vector = {1, 1, 1, 1};
    t.matrix[0][3] = 1;
    ObjectFileWriter w(115);
    w.fileReference("x.obj", "ref", t);
    OpenedFile f(w.plain(), 1);
    unsigned int type = 0, first = 0, flag = 0;
    ASSERT_TRUE(f->ReadType(&type));
    CString reference, text2, name;
    double vector[4], matrix[4][4];
    float quad[4];
    ASSERT_TRUE(f->ReadObjectFile(&first, &reference, &text2, vector, nullptr, nullptr, nullptr, matrix, nullptr,
                                  nullptr, quad, &name, nullptr, nullptr, nullptr, nullptr, &flag));
    EXPECT_DOUBLE_EQ(matrix[0][3], 25.4);
    EXPECT_DOUBLE_EQ(vector[0], 1.0);
    EXPECT_EQ(flag, 0u);  // no extra lines: the tail read no flag
}

}  // namespace
