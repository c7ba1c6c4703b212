#include <gtest/gtest.h>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::OpenedFile;

std::string plain_file(const std::string& body) { return "// Version: 1.15\n" + body; }

TEST(FieldSyntaxTest, ValueIsBetweenTheLastAngleBracketsTrimmed) {
    struct Case {
        const char* line;
        bool ok;
        const char* value;
    } cases[] = {
        {"Radius <<12.5>>", true, "12.5"},
        {"Radius < 12.5 >", true, "12.5"},
        {"a <1> <2>", true, "2"},
        {"Name < two words >", true, "two words"},
        {"Empty <>", true, ""},
        {"  Indented\t<x>\t ", true, "x"},
        {"Trailing <x> junk", true, "x"},
        {"Radius 12.5", false, ""},
        {"Radius 12.5>", false, ""},
        {"Radius <12.5", false, ""},
        {"Radius >12.5<", false, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        OpenedFile f(plain_file(std::string(c.line) + "\n"));
        CString value("untouched"), whole;
        EXPECT_EQ(f->ReadField(&value, &whole), c.ok);
        if (c.ok) {
            EXPECT_STREQ(value, c.value);
        }
        EXPECT_STREQ(whole, CString(c.line).Trim());
    }
}

TEST(FieldSyntaxTest, AFieldWithoutValueOutputNeedsNoBrackets) {
    OpenedFile f(plain_file("no brackets here\n"));
    EXPECT_TRUE(f->ReadField(nullptr));
}

TEST(FieldSyntaxTest, NumberListsSplitOnSeparatorRunsAndIgnoreSurplus) {
    OpenedFile f(plain_file("v < 1,,2 , 3,4 >\ni < 1/2,3 >\nf < 1.5   -2e3 >\n"));
    double d[3] = {};
    ASSERT_TRUE(f->ReadDoubleField(3, d, ","));
    EXPECT_DOUBLE_EQ(d[0], 1);
    EXPECT_DOUBLE_EQ(d[1], 2);
    EXPECT_DOUBLE_EQ(d[2], 3);
    int i[3] = {};
    ASSERT_TRUE(f->ReadIntField(3, i, "/,"));
    EXPECT_EQ(i[2], 3);
    float x[2] = {};
    ASSERT_TRUE(f->ReadFloatField(2, x));
    EXPECT_FLOAT_EQ(x[1], -2000.0f);
}

TEST(FieldSyntaxTest, TooFewNumbersFailButUnscannableTokensAreKept) {
    OpenedFile f(plain_file("v < 1 2 >\nv < 1 abc 3 >\n"));
    double d[3] = {7, 7, 7};
    EXPECT_FALSE(f->ReadDoubleField(3, d));
    double e[3] = {7, 7, 7};
    EXPECT_TRUE(f->ReadDoubleField(3, e));
    EXPECT_EQ(e[0], 1);
    EXPECT_EQ(e[1], 7);  // "abc" does not scan: unchanged, not an error
    EXPECT_EQ(e[2], 3);
}

TEST(FieldSyntaxTest, EmptyValueFailsOnlyTheIntegerFormWithADestination) {
    struct Case {
        const char* name;
        bool (*read)(zortest::TestFile&);
        bool ok;
    } cases[] = {
        {"int with destination, n = 0",
         [](zortest::TestFile& f) {
             int v = 0;
             return f.ReadIntField(0, &v);
         },
         false},
        {"int without destination", [](zortest::TestFile& f) { return f.ReadIntField(1, nullptr); }, true},
        {"double with destination, n = 0",
         [](zortest::TestFile& f) {
             double v = 0;
             return f.ReadDoubleField(0, &v);
         },
         true},
        {"double with destination, n = 1",
         [](zortest::TestFile& f) {
             double v = 0;
             return f.ReadDoubleField(1, &v);
         },
         false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        OpenedFile f(plain_file("Empty < >\n"));
        EXPECT_EQ(c.read(*f.file), c.ok);
    }
}

TEST(FieldSyntaxTest, LinesAreTrimmedAndBlankLinesSkipped) {
    OpenedFile f(plain_file("\n   \n\t line one \r\n\r\nline two\n"));
    CString line;
    ASSERT_TRUE(f->ReadLine(line));
    EXPECT_STREQ(line, "line one");
    ASSERT_TRUE(f->ReadLine(line));
    EXPECT_STREQ(line, "line two");
    EXPECT_FALSE(f->ReadLine(line));
    EXPECT_EQ(f->m_stream, nullptr);
    EXPECT_FALSE(f->ReadLine(line));
}

TEST(FieldSyntaxTest, LongLinesArriveInPiecesOf511Characters) {
    std::string longLine(1200, 'x');
    OpenedFile f(plain_file(longLine + "\n"));
    CString line;
    std::vector<int> pieces;
    while (f->ReadLine(line)) pieces.push_back(line.GetLength());
    EXPECT_EQ(pieces, (std::vector<int>{511, 511, 178}));
}

TEST(FieldSyntaxTest, VersionLineIsReadAsVersionTimesHundred) {
    struct Case {
        const char* line;
        unsigned int version;
    } cases[] = {{"// Version: 1.15", 115},   {"// Version: 1.1499", 115}, {"// Version: 1.05", 105},
                 {"// Version:1.10", 110},    {"// Version: 1e30", 0},     {"// Version: -1", 0},
                 {"// Version: nan", 0},      {"// Version: abc", 0},      {"C3dObjectCube {", 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        OpenedFile f(std::string(c.line) + "\n");
        EXPECT_EQ(f->m_version, c.version);
    }
}

TEST(FieldSyntaxTest, ScrambledFileHasItsVersionOnTheSeventhLine) {
    zortest::ObjectFileWriter w(113);
    w.field("Value", "hello world");
    OpenedFile f(w.scrambled());
    EXPECT_EQ(f->m_version, 113u);
    CString value;
    ASSERT_TRUE(f->ReadField(&value));
    EXPECT_STREQ(value, "hello world");
}

}  // namespace
