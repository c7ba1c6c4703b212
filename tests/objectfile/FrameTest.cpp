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

// Descrambles line as the first line of a file (first) or a later one.
std::string descramble(std::string line, bool first = false, bool* plain = nullptr) {
    zor::ObjectFileState state;
    state.firstLinePending = first;
    zor::DescrambleLine(line, state);
    if (plain != nullptr) *plain = state.fileIsPlain && !state.firstLinePending;
    return line;
}

std::string plain_file(const std::string& body) { return "// Version: 1.15\n" + body; }

TEST(DescramblerTest, InvertsTheScramblerOnRandomPrintableAndHighBytes) {
    std::mt19937 rng(12345);
    for (int key : {6, 7, 8, 9, 42, 123, 500, 999}) {
        SCOPED_TRACE(key);
        for (int trial = 0; trial < 200; ++trial) {
            std::string plain(rng() % 300, ' ');
            for (char& c : plain) c = static_cast<char>(rng() % 2 ? rng() % 95 + 32 : rng() % 95 + 161);
            EXPECT_EQ(descramble(zortest::ScrambleLine(plain, key)), plain);
        }
    }
}

TEST(DescramblerTest, ShortLinesControlCharactersOddKeysAndThePlainFileTest) {
    // Key 6 gives k = 0 (position j shifted by j * j); key 0 gives k = -2, and
    // 126 + 2 is not reduced; a control character keeps the byte already at
    // its target.
    const std::pair<const char*, std::string> cases[] = {
        {"0123456789", ""}, {"abc", ""}, {"xxxxxx006xAAA", "A@="}, {"012345006xA\tB", "A1>"}, {"xxxxxx000x~", "\x80"},
    };
    for (const auto& [line, expected] : cases) EXPECT_EQ(descramble(line), expected) << line;
    for (const char* key : {"inf", "nan", "abc", "-99", "1e9"}) {
        const std::string line = std::string("xxxxxx") + key + "x" + std::string(100, 'Q') + "\xff\x80";
        EXPECT_EQ(descramble(line).size(), line.size() - 10) << key;
    }
    // Only a version line at column one makes the file plain.
    const std::pair<const char*, bool> firstLines[] = {
        {"// Version: 1.15", true},  {"// Version:", true}, {" // Version: 1.15", false}, {"", false},
        {"// version: 1.15", false},
    };
    for (const auto& [line, isPlain] : firstLines) {
        bool plain = !isPlain;
        descramble(line, true, &plain);
        EXPECT_EQ(plain, isPlain) << line;
    }
}

TEST(FieldSyntaxTest, ValueIsBetweenTheLastAngleBracketsTrimmed) {
    const std::pair<const char*, const char*> cases[] = {{"Radius <<12.5>>", "12.5"},
                                                         {"Radius < 12.5 >", "12.5"},
                                                         {"a <1> <2>", "2"},
                                                         {"Name < two words >", "two words"},
                                                         {"Empty <>", ""},
                                                         {"  Indented <x>  ", "x"},
                                                         {"Trailing <x> junk", "x"},
                                                         {"x<y>", "y"},
                                                         {"Radius 12.5", nullptr},
                                                         {"Radius 12.5>", nullptr},
                                                         {"Radius <12.5", nullptr},
                                                         {"Radius >12.5<", nullptr}};
    for (const auto& [line, value] : cases) {
        SCOPED_TRACE(line);
        OpenedFile f(plain_file(std::string(line) + "\n"));
        CString read("untouched"), whole;
        EXPECT_EQ(f->ReadField(&read, &whole), value != nullptr);
        EXPECT_STREQ(read, value != nullptr ? value : "untouched");
        EXPECT_STREQ(whole, CString(line).Trim());
    }
    // Without a value output, brackets are not needed.
    EXPECT_TRUE(OpenedFile(plain_file("no brackets here\n"))->ReadField(nullptr));
}

TEST(FieldSyntaxTest, NumberListsSplitOnSeparatorRunsAndEmptyValues) {
    OpenedFile f(plain_file("v < 1,,2 , 3,4 >\ni < 1/2,3 >\nf < 1.5   -2e3 >\nv < 1 2 >\nv < 1 abc 3 >\n"));
    double d[3] = {}, e[3] = {7, 7, 7};
    int i[3] = {};
    float x[2] = {};
    ASSERT_TRUE(f->ReadDoubleField(3, d, ","));
    EXPECT_EQ(zortest::vec(d, 3), (std::vector<double>{1, 2, 3}));
    ASSERT_TRUE(f->ReadIntField(3, i, "/,"));
    EXPECT_EQ(i[2], 3);
    ASSERT_TRUE(f->ReadFloatField(2, x));
    EXPECT_FLOAT_EQ(x[1], -2000.0f);
    EXPECT_FALSE(f->ReadDoubleField(3, d));  // too few numbers
    ASSERT_TRUE(f->ReadDoubleField(3, e));
    EXPECT_EQ(zortest::vec(e, 3), (std::vector<double>{1, 7, 3}));  // "abc" leaves its slot

    // An empty value fails only the integer form with a destination and
    // the double form that needs a number.
    const std::string empty = plain_file("Empty < >\n");
    EXPECT_FALSE(OpenedFile(empty)->ReadIntField(0, i));
    EXPECT_TRUE(OpenedFile(empty)->ReadIntField(1, nullptr));
    EXPECT_TRUE(OpenedFile(empty)->ReadDoubleField(0, d));
    EXPECT_FALSE(OpenedFile(empty)->ReadDoubleField(1, d));
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
    for (const auto& [line, version] : cases)
        EXPECT_EQ(OpenedFile(line + std::string("\n"))->m_version, version) << line;
    // A scrambled file has its version on the seventh line.
    OpenedFile f(ObjectFileWriter(113).field("Value", "hello world").scrambled());
    EXPECT_EQ(f->m_version, 113u);
    CString value;
    ASSERT_TRUE(f->ReadField(&value));
    EXPECT_STREQ(value, "hello world");
}

TEST(RecordTypeTest, KeywordLinesGiveTheirCodesAndDepths) {
    const std::pair<const char*, unsigned int> cases[] = {
        {"C3dObjectCube {", 1},          {"C3dObjectCube{", 1},         {"C3dObjectCube    {{", 1},
        {"C3dObjectCylinder {", 2},      {"C3dObjectEngin {", 4},       {"C3dObjectCone {", 6},
        {"C3dObjectSplineExtrude {", 7}, {"C3dObjectSplineLathe {", 8}, {"C3dObjectMesh {", 9},
        {"C3dObjectSphere {", 11},       {"C3dObjectTorus {", 12},      {"C3dObjectPart {", 13},
        {"C3dObjectTool {", 14},         {"C3dObjectFile {", 15},       {"C3dPairCompArray {", 16},
        {"c3dobjectcube {", 0},          {"C3dObjectCubes {", 0},       {"Something else {", 0}};
    for (const auto& [line, code] : cases) {
        SCOPED_TRACE(line);
        OpenedFile f(plain_file("not an opener\n" + std::string(line) + "\n"));
        f.type = 1234;
        EXPECT_TRUE(f->ReadType(&f.type));
        EXPECT_EQ(f.type, code);
        EXPECT_EQ(std::make_pair(f->m_depth, f->m_recordDepth), std::make_pair(1u, 1u));
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
    OpenedFile f(
        ObjectFileWriter(115).line("C3dPairCompArray").line("{").sphere(1, "in").close().sphere(2, "out").plain());
    zortest::Outputs inner;
    ASSERT_TRUE(f->ReadType(&f.type));
    EXPECT_EQ(f.type, 0u);
    ASSERT_TRUE(f.next(inner));
    EXPECT_EQ(f->m_depth, 1u);
    ASSERT_TRUE(f->ReadType(&f.type));  // takes the container's "}" on its way
    EXPECT_EQ(f.type, ZOR_RECORD_SPHERE);
    EXPECT_EQ(std::make_pair(f->m_depth, f->m_recordDepth), std::make_pair(1u, 1u));
}

}  // namespace
