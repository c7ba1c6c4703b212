#include <gtest/gtest.h>

#include "ZORModelIo.h"

#include <filesystem>
#include <string>
#include <vector>

#include "platform/afx.h"
#include "platform/afxtempl.h"
#include "platform/crtpath.h"
#include "support/TempDir.h"

namespace {

using Doubles = CArray<double, double>;

TEST(CArrayTest, SetSizeInsertAndRemoveKeepOrder) {
    CArray<int, int> a;
    a.SetSize(2, 8);  // value-initialised
    EXPECT_EQ(a.Add(7), 2);
    a.InsertAt(1, 9, 2);
    a.RemoveAt(0);
    a.InsertAt(6, 1);  // past the end: grows first
    std::vector<int> items;
    for (long long i = 0; i < a.GetSize(); ++i) items.push_back(a[i]);
    EXPECT_EQ(items, (std::vector<int>{9, 9, 0, 7, 0, 0, 1}));
    a.RemoveAll();
    EXPECT_TRUE(a.IsEmpty());
}

TEST(CArrayTest, OutOfRangeAccessThrowsInvalidArgument) {
    Doubles a;
    a.Add(1.0);
    a.Add(2.0);
    void (*const ops[])(Doubles&) = {
        [](Doubles& v) { v.GetAt(2); },     [](Doubles& v) { v.GetAt(-1); }, [](Doubles& v) { v.SetAt(2, 0); },
        [](Doubles& v) { v.ElementAt(5); }, [](Doubles& v) { v[2] = 1; },    [](Doubles& v) { v.RemoveAt(1, 2); },
        [](Doubles& v) { v.SetSize(-1); },
    };
    for (auto op : ops) EXPECT_THROW(op(a), CInvalidArgException*);
    EXPECT_EQ(a.GetSize(), 2);
}

TEST(CStringTest, TrimmingTakesWhiteSpaceOrTheGivenCharacters) {
    EXPECT_STREQ(CString(" \t a b \r\n").Trim(), "a b");
    EXPECT_STREQ(CString("  a ").TrimLeft(), "a ");
    EXPECT_STREQ(CString("  a ").TrimRight(), "  a");
    EXPECT_STREQ(CString("<<x>>").TrimLeft('<'), "x>>");
    EXPECT_STREQ(CString("x{{ {").TrimRight("{ "), "x");
    EXPECT_STREQ(CString("   ").Trim(), "");
    EXPECT_STREQ(CString("\xa0x\xa0").Trim(), "\xa0x\xa0");  // not white space here
}

TEST(CStringTest, FindSubstringsAndComparison) {
    const CString s("a<b<c>d");
    EXPECT_EQ(s.Find('<'), 1);
    EXPECT_EQ(s.Find('<', 2), 3);
    EXPECT_EQ(s.Find("c>"), 4);
    EXPECT_EQ(s.Find('a', 99), -1);
    EXPECT_EQ(s.ReverseFind('<'), 3);
    EXPECT_STREQ(s.Left(3) + "|" + s.Right(2) + "|" + s.Mid(2) + "|" + s.Mid(2, 3), "a<b|>d|b<c>d|b<c");
    EXPECT_STREQ(s.Left(99) + "|" + s.Mid(99) + "|" + s.Left(-1), "a<b<c>d||");
    const CString tools("Tools");
    EXPECT_TRUE(tools == "Tools");
    EXPECT_FALSE(tools == "TOOLS");
    EXPECT_EQ(tools.CompareNoCase("tOOLS"), 0);
    EXPECT_GT(tools.CompareNoCase("tool"), 0);
    EXPECT_LT(CString("a").Compare("b"), 0);
    EXPECT_STREQ(CString("mIxEd\xe9").MakeUpper(), "MIXED\xe9");
}

TEST(CStringTest, FormatAndBoundsCheckedAccess) {
    CString s;
    s.Format("%s\\%s %d", "dir", "name", 42);
    EXPECT_STREQ(s, "dir\\name 42");
    EXPECT_EQ(s.GetAt(10), '2');
    EXPECT_THROW(s.SetAt(-1, 'x'), CInvalidArgException*);
    try {
        s.GetAt(11);
        ADD_FAILURE() << "no exception";
    } catch (CException* e) {
        EXPECT_TRUE(e->IsKindOf(RUNTIME_CLASS(CInvalidArgException)));
        EXPECT_FALSE(e->IsKindOf(RUNTIME_CLASS(CMemoryException)));
        e->Delete();  // static: stays valid
    }
}

TEST(PathTest, FullPathIsLexicalAndAcceptsBothSeparators) {
    const std::string here = std::filesystem::current_path().string();
    const std::pair<const char*, std::string> cases[] = {
        {"/a/b/../c/./d", "/a/c/d"},
        {"\\a\\b\\..\\c", "/a/c"},
        {"/../x", "/x"},
        {"/", "/"},
        {"rel/file.obj", here + "/rel/file.obj"},
        {"rel\\..\\file.obj", here + "/file.obj"},
    };
    for (const auto& c : cases) {
        char out[_MAX_PATH];
        ASSERT_NE(_fullpath(out, c.first, sizeof out), nullptr) << c.first;
        EXPECT_EQ(std::string(out), c.second);
    }
    char small[8];
    EXPECT_EQ(_fullpath(small, "/abcdefgh", sizeof small), nullptr);
}

TEST(PathTest, SplitPathAndOpenFile) {
    char drive[_MAX_DRIVE], dir[_MAX_DIR], name[_MAX_FNAME], ext[_MAX_EXT];
    _splitpath("C:\\data\\models/part.v2.obj", drive, dir, name, ext);
    EXPECT_EQ(std::string(drive) + "|" + dir + "|" + name + "|" + ext, "|C:\\data\\models/|part.v2|.obj");
    _splitpath("plain", nullptr, dir, name, ext);
    EXPECT_EQ(std::string(dir) + "|" + name + "|" + ext, "|plain|");
    // A Windows path is tried with forward slashes.
    zortest::TempDir temp;
    temp.write("f.txt", "x");
    std::FILE* f = zor::open_file((temp.path() + "\\f.txt").c_str(), "r");
    ASSERT_NE(f, nullptr);
    std::fclose(f);
    EXPECT_EQ(zor::open_file((temp.path() + "\\missing").c_str(), "r"), nullptr);
    // A folder is no file, as on Windows: every reader then fails cleanly
    // instead of taking a huge length from it.
    EXPECT_EQ(zor::open_file(temp.path().c_str(), "rb"), nullptr);
    EXPECT_EQ(ReadDxf(temp.path().c_str(), (temp.path() + "/p.ext").c_str(), 1, 0, false), nullptr);
}

}  // namespace
