#include <gtest/gtest.h>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;
using zortest::SolidOutputs;
using zortest::Tail;

bool read_part(CMWZORFile& f, SolidOutputs& o) {
    return f.ReadPart(o.vector, &o.texts[0], &o.texts[1], &o.texts[2], o.matrix, &o.list1, &o.list2, o.quad, &o.name,
                      &o.tailText, &o.attachName, &o.attachKey, &o.attachIndex);
}

bool read_tool(CMWZORFile& f, SolidOutputs& o) {
    return f.ReadTool(o.vector, &o.texts[0], &o.texts[1], &o.texts[2], o.matrix, &o.list1, &o.list2, o.quad, &o.name,
                      &o.tailText, &o.attachName, &o.attachKey, &o.attachIndex);
}

// Reads the only record of text with reader; false also when the file does
// not end right after it.
bool read_one(const std::string& text, bool (*reader)(CMWZORFile&, SolidOutputs&), SolidOutputs& o,
              unsigned int units = 1) {
    OpenedFile f(text, units);
    unsigned int type = 0;
    if (!f->ReadType(&type) || !reader(*f.file, o)) return false;
    return !f->ReadType(&type);
}

TEST(PartToolRecordsTest, BothReadGeometryAndTailAtEveryVersion) {
    zortest::Geometry g;
    g.present = true;
    g.list2 = {{1, 2, 3}};
    Tail t;
    t.attachName = "Head";
    t.attachKey = "K";
    for (int version : {101, 107, 108, 115}) {
        for (bool tool : {false, true}) {
            SCOPED_TRACE(std::to_string(version) + (tool ? " tool" : " part"));
            ObjectFileWriter w(version);
            tool ? w.tool("Cutter", t, g) : w.part("Blank", t, g);
            SolidOutputs o;
            o.texts[0] = "kept";
            ASSERT_TRUE(read_one(w.plain(), tool ? read_tool : read_part, o));
            EXPECT_STREQ(o.name, tool ? "Cutter" : "Blank");
            ASSERT_EQ(o.list2.GetSize(), 1);
            EXPECT_EQ(o.list2[0]->z, 3);
            EXPECT_STREQ(o.attachName, "Head");
            EXPECT_STREQ(o.texts[0], "kept");
        }
    }
}

TEST(PartToolRecordsTest, ToolBefore108NeedsBracketsOnItsNumericLines) {
    // A 1.08 tool's third line is plain text: consumed at 1.08, a missing
    // value at 1.07.
    ObjectFileWriter w(108);
    w.tool("Cutter");
    const std::string text = w.plain();
    SolidOutputs at108, at107;
    EXPECT_TRUE(read_one(text, read_tool, at108));
    std::string older = text;
    older.replace(0, older.find('\n'), "// Version: 1.07");
    EXPECT_FALSE(read_one(older, read_tool, at107));
}

TEST(PartToolRecordsTest, ConversionScalesVectorAndTranslationOnly) {
    Tail t;
    t.unit = 1;
    t.matrix[0][3] = 25.4;
    t.matrix[0][1] = 25.4;
    t.vector = {25.4f, 0, 0, 0};
    for (bool tool : {false, true}) {
        SCOPED_TRACE(tool ? "tool" : "part");
        ObjectFileWriter w(115);
        tool ? w.tool("x", t) : w.part("x", t);
        SolidOutputs o;
        ASSERT_TRUE(read_one(w.plain(), tool ? read_tool : read_part, o, 2));
        EXPECT_DOUBLE_EQ(o.matrix[0][3], 1);
        EXPECT_DOUBLE_EQ(o.matrix[3][3], 1 / 25.4);
        EXPECT_EQ(o.matrix[0][1], 25.4);
        EXPECT_NEAR(o.vector[0], 1, 1e-6);  // the 4-vector is read as floats
    }
}

}  // namespace
