// The frame of the object file: descrambling, lines, fields, the version line
// and record openers.
#include <gtest/gtest.h>

#include <random>

#include "ObjectFileTestUtil.h"
#include "objectfile/LineReader.h"
#include "support/Scrambler.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;

std::string descramble(std::string line) {
    zor::ObjectFileState state;
    state.firstLinePending = false;
    zor::DescrambleLine(line, state);
    return line;
}

std::string plain_file(const std::string& body) { return "// Version: 1.15\n" + body; }

TEST(DescramblerTest, InvertsTheScramblerOnRandomPrintableAndHighBytes) {
    std::mt19937 rng(12345);
    for (int key : {6, 7, 8, 9, 42, 123, 500, 999}) {
        SCOPED_TRACE(key);
        for (int trial = 0; trial < 200; ++trial) {
            std::string plain(rng() % 300, ' ');
            for (char& c : plain) {
                const int b = static_cast<int>(rng() % 190);
                c = static_cast<char>(b < 95 ? b + 32 : b - 95 + 128 + 33);
            }
            EXPECT_EQ(descramble(zortest::ScrambleLine(plain, key)), plain);
        }
    }
}

TEST(DescramblerTest, ShortLinesControlCharactersAndOddKeys) {
    const std::pair<const char*, std::string> cases[] = {
        {"0123456789", ""}, {"abc", ""}, {"", ""},
        {"xxxxxx006xAAA", "A@="},   // key 6: k = 0, position j shifted by j * j
        {"012345006xA\tB", "A1>"},  // a control character keeps the byte already at its target
        {"xxxxxx000x~", "\x80"},    // key 0: k = -2, and 126 + 2 is not reduced
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        EXPECT_EQ(descramble(c.first), c.second);
    }
    for (const char* key : {"inf", "nan", "abc", "-99", "1e9"}) {
        SCOPED_TRACE(key);
        const std::string line = std::string("xxxxxx") + key + "x" + std::string(100, 'Q') + "\xff\x80";
        EXPECT_EQ(descramble(line).size(), line.size() - 10);
    }
}

TEST(DescramblerTest, PlainFileIsRecognisedOnlyByAVersionLineAtColumnOne) {
    for (const auto& c : {std::pair<const char*, bool>{"// Version: 1.15", true}, {"// Version:", true},
                          {" // Version: 1.15", false}, {"", false}, {"// version: 1.15", false}}) {
        SCOPED_TRACE(c.first);
        zor::ObjectFileState state;
        state.firstLinePending = true;
        std::string line = c.first;
        zor::DescrambleLine(line, state);
        EXPECT_EQ(state.fileIsPlain, c.second);
        EXPECT_FALSE(state.firstLinePending);
    }
}

TEST(FieldSyntaxTest, ValueIsBetweenTheLastAngleBracketsTrimmed) {
    const std::pair<const char*, const char*> cases[] = {
        {"Radius <<12.5>>", "12.5"}, {"Radius < 12.5 >", "12.5"},    {"a <1> <2>", "2"},
        {"Name < two words >", "two words"}, {"Empty <>", ""},       {"  Indented\t<x>\t ", "x"},
        {"Trailing <x> junk", "x"},  {"Radius 12.5", nullptr},       {"Radius 12.5>", nullptr},
        {"Radius <12.5", nullptr},   {"Radius >12.5<", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        OpenedFile f(plain_file(std::string(c.first) + "\n"));
        CString value("untouched"), whole;
        EXPECT_EQ(f->ReadField(&value, &whole), c.second != nullptr);
        EXPECT_STREQ(value, c.second != nullptr ? c.second : "untouched");
        EXPECT_STREQ(whole, CString(c.first).Trim());
    }
    // Without a value output, brackets are not needed.
    EXPECT_TRUE(OpenedFile(plain_file("no brackets here\n"))->ReadField(nullptr));
}

TEST(FieldSyntaxTest, NumberListsSplitOnSeparatorRuns) {
    OpenedFile f(plain_file("v < 1,,2 , 3,4 >\ni < 1/2,3 >\nf < 1.5   -2e3 >\nv < 1 2 >\nv < 1 abc 3 >\n"));
    double d[3] = {};
    ASSERT_TRUE(f->ReadDoubleField(3, d, ","));
    EXPECT_EQ(std::vector<double>(d, d + 3), (std::vector<double>{1, 2, 3}));
    int i[3] = {};
    ASSERT_TRUE(f->ReadIntField(3, i, "/,"));
    EXPECT_EQ(i[2], 3);
    float x[2] = {};
    ASSERT_TRUE(f->ReadFloatField(2, x));
    EXPECT_FLOAT_EQ(x[1], -2000.0f);
    EXPECT_FALSE(f->ReadDoubleField(3, d));  // too few numbers
    double e[3] = {7, 7, 7};
    ASSERT_TRUE(f->ReadDoubleField(3, e));
    EXPECT_EQ(std::vector<double>(e, e + 3), (std::vector<double>{1, 7, 3}));  // "abc" leaves its slot
}

TEST(FieldSyntaxTest, EmptyValueFailsOnlyTheIntegerFormWithADestination) {
    const std::string empty = plain_file("Empty < >\n");
    int i = 0;
    double d = 0;
    EXPECT_FALSE(OpenedFile(empty)->ReadIntField(0, &i));
    EXPECT_TRUE(OpenedFile(empty)->ReadIntField(1, nullptr));
    EXPECT_TRUE(OpenedFile(empty)->ReadDoubleField(0, &d));
    EXPECT_FALSE(OpenedFile(empty)->ReadDoubleField(1, &d));
}

TEST(FieldSyntaxTest, LinesAreTrimmedBlankLinesSkippedAndLongLinesSplit) {
    OpenedFile f(plain_file("\n   \n\t line one \r\n\r\n" + std::string(1200, 'x') + "\n"));
    CString line;
    ASSERT_TRUE(f->ReadLine(line));
    EXPECT_STREQ(line, "line one");
    std::vector<int> pieces;
    while (f->ReadLine(line)) pieces.push_back(line.GetLength());
    EXPECT_EQ(pieces, (std::vector<int>{511, 511, 178}));
    EXPECT_EQ(f->m_stream, nullptr);
    EXPECT_FALSE(f->ReadLine(line));
}

TEST(FieldSyntaxTest, VersionLineIsReadAsVersionTimesHundred) {
    const std::pair<const char*, unsigned int> cases[] = {
        {"// Version: 1.15", 115}, {"// Version: 1.1499", 115}, {"// Version: 1.05", 105},
        {"// Version:1.10", 110},  {"// Version: 1e30", 0},     {"// Version: -1", 0},
        {"// Version: nan", 0},    {"// Version: abc", 0},      {"C3dObjectCube {", 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        EXPECT_EQ(OpenedFile(std::string(c.first) + "\n")->m_version, c.second);
    }
    // A scrambled file has its version on the seventh line.
    OpenedFile f(ObjectFileWriter(113).field("Value", "hello world").scrambled());
    EXPECT_EQ(f->m_version, 113u);
    CString value;
    ASSERT_TRUE(f->ReadField(&value));
    EXPECT_STREQ(value, "hello world");
}

TEST(RecordTypeTest, KeywordLinesGiveTheirCodes) {
    const std::pair<const char*, unsigned int> cases[] = {
        {"C3dObjectCube {", 1},          {"C3dObjectCube{", 1},         {"C3dObjectCube  \t {{", 1},
        {"C3dObjectCylinder {", 2},      {"C3dObjectEngin {", 4},       {"C3dObjectCone {", 6},
        {"C3dObjectSplineExtrude {", 7}, {"C3dObjectSplineLathe {", 8}, {"C3dObjectMesh {", 9},
        {"C3dObjectSphere {", 11},       {"C3dObjectTorus {", 12},      {"C3dObjectPart {", 13},
        {"C3dObjectTool {", 14},         {"C3dObjectFile {", 15},       {"C3dPairCompArray {", 16},
        {"c3dobjectcube {", 0},          {"C3dObjectCubes {", 0},       {"Something else {", 0},
        {"{", 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        OpenedFile f(plain_file("not an opener\n" + std::string(c.first) + "\n"));
        unsigned int type = 1234;
        EXPECT_TRUE(f->ReadType(&type));
        EXPECT_EQ(type, c.second);
        EXPECT_EQ(f->m_depth, 1u);
        EXPECT_EQ(f->m_recordDepth, 1u);
    }
    OpenedFile end(plain_file("no record here\n"));
    EXPECT_FALSE(end->ReadType(&end.type));
    EXPECT_EQ(end.type, 0xFFFFFFFFu);
}

TEST(RecordTypeTest, ContainersAreClosedByTheNextReadTypeAndUnknownRecordsSkipped) {
    ObjectFileWriter w(115);
    w.open("C3dPairCompArray").sphere(1, "inner").close();
    w.open("C3dObjectLight").field("a", "1").open("Inner").open("Deeper").close().close().close().sphere(2, "s");
    EXPECT_EQ(zortest::walk(*OpenedFile(w.plain()).file), "16 11 0 11 ");

    // Keyword and brace on separate lines: the "{" alone opens an unknown record.
    ObjectFileWriter split(115);
    split.line("C3dPairCompArray").line("{").sphere(1, "inner").close().sphere(2, "outer");
    OpenedFile f(split.plain());
    zortest::Outputs inner;
    ASSERT_TRUE(f->ReadType(&f.type));
    EXPECT_EQ(f.type, 0u);
    ASSERT_TRUE(f.next(inner));
    EXPECT_EQ(f->m_depth, 1u);
    ASSERT_TRUE(f->ReadType(&f.type));  // takes the container's "}" on its way
    EXPECT_EQ(f.type, ZOR_RECORD_SPHERE);
    EXPECT_EQ(f->m_depth, 1u);
    EXPECT_EQ(f->m_recordDepth, 1u);
}

}  // namespace
