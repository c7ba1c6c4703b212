#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "platform/crtpath.h"
#include "support/TempDir.h"

namespace {

TEST(PathTest, FullPathIsLexicalAndAcceptsBothSeparators) {
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    const std::string here = cwd;
    struct Case {
        const char* in;
        std::string out;
    } cases[] = {
        {"/a/b/../c/./d", "/a/c/d"},
        {"\\a\\b\\..\\c", "/a/c"},
        {"/../x", "/x"},
        {"rel/file.obj", here + "/rel/file.obj"},
        {"rel\\..\\file.obj", here + "/file.obj"},
        {"/", "/"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.in);
        char out[_MAX_PATH];
        ASSERT_NE(_fullpath(out, c.in, sizeof out), nullptr);
        EXPECT_EQ(std::string(out), c.out);
    }
    char small[8];
    EXPECT_EQ(_fullpath(small, "/abcdefgh", sizeof small), nullptr);
}

TEST(PathTest, SplitPathGivesFolderNameAndExtension) {
    char drive[_MAX_DRIVE], dir[_MAX_DIR], name[_MAX_FNAME], ext[_MAX_EXT];
    _splitpath("C:\\data\\models/part.v2.obj", drive, dir, name, ext);
    EXPECT_STREQ(drive, "");
    EXPECT_STREQ(dir, "C:\\data\\models/");
    EXPECT_STREQ(name, "part.v2");
    EXPECT_STREQ(ext, ".obj");
    _splitpath("plain", nullptr, dir, name, ext);
    EXPECT_STREQ(dir, "");
    EXPECT_STREQ(name, "plain");
    EXPECT_STREQ(ext, "");
}

TEST(PathTest, OpenFileTriesForwardSlashesForWindowsPaths) {
    zortest::TempDir dir;
    std::string path = dir.write("f.txt", "x");
    std::string windows = dir.path() + "\\f.txt";
    std::FILE* f = zor::open_file(windows.c_str(), "r");
    ASSERT_NE(f, nullptr);
    std::fclose(f);
    EXPECT_EQ(zor::open_file((dir.path() + "\\missing").c_str(), "r"), nullptr);
}

}  // namespace
