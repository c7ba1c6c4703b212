#include <gtest/gtest.h>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::OpenedFile;

TEST(RecordTypeTest, KeywordLinesGiveTheirCodes) {
    struct Case {
        const char* line;
        unsigned int code;
    } cases[] = {
        {"C3dObjectCube {", 1},          {"C3dObjectCube{", 1},           {"C3dObjectCube  \t {{", 1},
        {"C3dObjectCylinder {", 2},      {"C3dObjectEngin {", 4},         {"C3dObjectCone {", 6},
        {"C3dObjectSplineExtrude {", 7}, {"C3dObjectSplineLathe {", 8},   {"C3dObjectMesh {", 9},
        {"C3dObjectSphere {", 11},       {"C3dObjectTorus {", 12},        {"C3dObjectPart {", 13},
        {"C3dObjectTool {", 14},         {"C3dObjectFile {", 15},         {"C3dPairCompArray {", 16},
        {"c3dobjectcube {", 0},          {"C3dObjectCubes {", 0},         {"Something else {", 0},
        {"{", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        OpenedFile f("// Version: 1.15\nnot an opener\n" + std::string(c.line) + "\n");
        unsigned int type = 1234;
        EXPECT_TRUE(f->ReadType(&type));
        EXPECT_EQ(type, c.code);
        EXPECT_EQ(f->m_depth, 1u);
        EXPECT_EQ(f->m_recordDepth, 1u);
    }
}

TEST(RecordTypeTest, EndOfFileGivesTheEndCode) {
    OpenedFile f("// Version: 1.15\nno record here\n");
    unsigned int type = 0;
    EXPECT_FALSE(f->ReadType(&type));
    EXPECT_EQ(type, 0xFFFFFFFFu);
    EXPECT_FALSE(f->ReadType(&type));
}

TEST(RecordTypeTest, ContainerIsClosedByTheNextReadType) {
    zortest::ObjectFileWriter w(115);
    w.line("C3dPairCompArray").line("{");  // keyword and brace on separate lines
    w.sphere(1, "inner");
    w.close();
    w.sphere(2, "outer");
    OpenedFile f(w.plain());
    unsigned int type = 0;
    ASSERT_TRUE(f->ReadType(&type));
    // The line "{" alone opens a record of unknown kind: the keyword is on
    // the line before.
    EXPECT_EQ(type, 0u);
    EXPECT_EQ(f->m_depth, 1u);
    ASSERT_TRUE(f->ReadType(&type));
    EXPECT_EQ(type, 11u);
    EXPECT_EQ(f->m_depth, 2u);
    zortest::SolidOutputs o;
    ASSERT_TRUE(zortest::read_sphere(*f.file, o));
    EXPECT_EQ(o.d[0], 1);
    EXPECT_EQ(f->m_depth, 1u);
    ASSERT_TRUE(f->ReadType(&type));  // takes the container's "}" on its way
    EXPECT_EQ(type, 11u);
    EXPECT_EQ(f->m_depth, 1u);
    EXPECT_EQ(f->m_recordDepth, 1u);
}

TEST(RecordTypeTest, ContainerOnOneLineGivesSixteen) {
    zortest::ObjectFileWriter w(115);
    w.open("C3dPairCompArray").sphere(1, "inner").close().sphere(2, "outer");
    OpenedFile f(w.plain());
    unsigned int type = 0;
    std::vector<unsigned int> codes;
    zortest::SolidOutputs o;
    while (f->ReadType(&type)) {
        codes.push_back(type);
        if (type == 11) {
            ASSERT_TRUE(zortest::read_sphere(*f.file, o));
        }
    }
    EXPECT_EQ(codes, (std::vector<unsigned int>{16, 11, 11}));
    EXPECT_EQ(o.d[0], 2);
}

TEST(RecordTypeTest, ReadDummySkipsAnUnknownRecordWithNestedBlocks) {
    zortest::ObjectFileWriter w(115);
    w.open("C3dObjectLight").field("a", "1").open("Inner").open("Deeper").close().close().field("b", "2").close();
    w.sphere(3, "after");
    OpenedFile f(w.plain());
    unsigned int type = 99;
    ASSERT_TRUE(f->ReadType(&type));
    EXPECT_EQ(type, 0u);
    EXPECT_TRUE(f->ReadDummy());
    EXPECT_EQ(f->m_depth, 0u);
    ASSERT_TRUE(f->ReadType(&type));
    EXPECT_EQ(type, 11u);
}

}  // namespace
