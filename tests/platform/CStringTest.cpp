#include <gtest/gtest.h>

#include "platform/afx.h"

namespace {

TEST(CStringTest, TrimmingTakesWhiteSpaceOrTheGivenCharacters) {
    struct Case {
        const char* in;
        CString (*op)(CString);
        const char* out;
    } cases[] = {
        {" \t a b \r\n", [](CString s) { return s.Trim(); }, "a b"},
        {"  a ", [](CString s) { return s.TrimLeft(); }, "a "},
        {"  a ", [](CString s) { return s.TrimRight(); }, "  a"},
        {"<<x>>", [](CString s) { return s.TrimLeft('<'); }, "x>>"},
        {"x{{ {", [](CString s) { return s.TrimRight("{ "); }, "x"},
        {"   ", [](CString s) { return s.Trim(); }, ""},
        {"\xa0x\xa0", [](CString s) { return s.Trim(); }, "\xa0x\xa0"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.in);
        EXPECT_STREQ(c.op(c.in), c.out);
    }
}

TEST(CStringTest, FindAndSubstrings) {
    CString s("a<b<c>d");
    EXPECT_EQ(s.Find('<'), 1);
    EXPECT_EQ(s.Find('<', 2), 3);
    EXPECT_EQ(s.Find("c>"), 4);
    EXPECT_EQ(s.Find('z'), -1);
    EXPECT_EQ(s.Find('a', 99), -1);
    EXPECT_EQ(s.ReverseFind('<'), 3);
    EXPECT_STREQ(s.Left(3), "a<b");
    EXPECT_STREQ(s.Left(99), "a<b<c>d");
    EXPECT_STREQ(s.Right(2), ">d");
    EXPECT_STREQ(s.Mid(2), "b<c>d");
    EXPECT_STREQ(s.Mid(2, 3), "b<c");
    EXPECT_STREQ(s.Mid(99), "");
    EXPECT_STREQ(s.Left(-1), "");
}

TEST(CStringTest, ComparisonWithAndWithoutCase) {
    CString s("Tools");
    EXPECT_TRUE(s == "Tools");
    EXPECT_FALSE(s == "TOOLS");
    EXPECT_EQ(s.CompareNoCase("tOOLS"), 0);
    EXPECT_LT(s.CompareNoCase("tool"), 1000);
    EXPECT_GT(s.CompareNoCase("tool"), 0);
    EXPECT_LT(CString("a").Compare("b"), 0);
    EXPECT_STREQ(CString("mIxEd\xe9").MakeUpper(), "MIXED\xe9");
}

TEST(CStringTest, FormatAndBoundsCheckedAccess) {
    CString s;
    s.Format("%s\\%s %d", "dir", "name", 42);
    EXPECT_STREQ(s, "dir\\name 42");
    EXPECT_EQ(s.GetLength(), 11);
    EXPECT_EQ(s.GetAt(0), 'd');
    EXPECT_THROW(s.GetAt(11), CInvalidArgException*);
    EXPECT_THROW(s.SetAt(-1, 'x'), CInvalidArgException*);
    try {
        s.GetAt(100);
    } catch (CException* e) {
        EXPECT_TRUE(e->IsKindOf(RUNTIME_CLASS(CInvalidArgException)));
        EXPECT_TRUE(e->IsKindOf(RUNTIME_CLASS(CObject)));
        EXPECT_FALSE(e->IsKindOf(RUNTIME_CLASS(CMemoryException)));
        e->Delete();  // static: stays valid
    }
}

}  // namespace
