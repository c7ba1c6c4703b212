#include <gtest/gtest.h>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;
using zortest::SolidOutputs;
using zortest::Tail;

// Writes one sphere with the tail, reads it back at the given version.
bool read_back(int version, const Tail& tail, SolidOutputs& o, int matrixConvention = 1) {
    ObjectFileWriter w(version);
    w.sphere(1, "ball", tail);
    OpenedFile f(w.plain(), 1, matrixConvention);
    unsigned int type = 0;
    if (!f->ReadType(&type)) return false;
    return zortest::read_sphere(*f.file, o) && !f->ReadType(&type) && type == 0xFFFFFFFFu;
}

TEST(ObjectTailTest, EveryVersionFrom101To115ReadsItsOwnLayout) {
    for (int version = 101; version <= 115; ++version) {
        for (int extra : {0, 1}) {
            SCOPED_TRACE("version " + std::to_string(version) + " extra " + std::to_string(extra));
            Tail t;
            t.extra = extra;
            t.flag = 7;
            t.attachName = "Spindle";
            t.attachKey = "KEY";
            t.attachIndex = 4;
            t.furtherLines = 2;
            t.nestedBlock = true;
            t.text = "the tail";
            SolidOutputs o;
            ASSERT_TRUE(read_back(version, t, o));
            EXPECT_STREQ(o.tailText, "the tail");
            EXPECT_STREQ(o.attachName, "Spindle");
            EXPECT_STREQ(o.attachKey, version < 103 ? "1" : "KEY");
            EXPECT_EQ(o.attachIndex, version < 106 ? 0u : 4u);
        }
    }
}

TEST(ObjectTailTest, ObjectNamesAreRecordedFrom113AndCappedAt300) {
    for (int version : {112, 113}) {
        SCOPED_TRACE(version);
        ObjectFileWriter w(version);
        for (int i = 0; i < 305; ++i) w.sphere(1, "s" + std::to_string(i));
        OpenedFile f(w.plain());
        unsigned int type = 0;
        int read = 0;
        while (f->ReadType(&type)) {
            SolidOutputs o;
            ASSERT_TRUE(zortest::read_sphere(*f.file, o));
            ++read;
        }
        EXPECT_EQ(read, 305);
        const auto& names = zor::object_file_state().objectNames;
        if (version == 112) {
            EXPECT_TRUE(names.empty());
        } else {
            ASSERT_EQ(names.size(), 300u);
            EXPECT_EQ(names.front(), "s0");
            EXPECT_EQ(names.back(), "s299");
        }
    }
}

TEST(ObjectTailTest, AttachmentNoneBecomesEmptyAndEmptyBecomesTheName) {
    struct Case {
        const char* written;
        const char* read;
    } cases[] = {{"None", ""}, {"", "ball"}, {"Table", "Table"}, {"none", "none"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.written);
        Tail t;
        t.attachName = c.written;
        SolidOutputs o;
        ASSERT_TRUE(read_back(115, t, o));
        EXPECT_STREQ(o.attachName, c.read);
    }
}

TEST(ObjectTailTest, MatrixConventionZeroTransposesAndKeepsTheTranslationColumn) {
    Tail t;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) t.matrix[r][c] = 10 * r + c;
    SolidOutputs asRead, converted;
    ASSERT_TRUE(read_back(115, t, asRead, 1));
    ASSERT_TRUE(read_back(115, t, converted, 0));
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) EXPECT_EQ(asRead.matrix[r][c], 10 * r + c);
    const double expected[4][4] = {{0, 10, 20, 3}, {1, 11, 21, 13}, {2, 12, 22, 23}, {0, 0, 0, 33}};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) EXPECT_EQ(converted.matrix[r][c], expected[r][c]) << r << "," << c;
}

TEST(ObjectTailTest, SpindleTableGivesTheAttachmentIndexBefore109) {
    for (int version : {105, 108, 109}) {
        SCOPED_TRACE(version);
        Tail t;
        t.attachName = "HeadSpindle";  // compared on its first 5 characters
        t.attachKey = "S2xyz";
        t.attachIndex = 0;
        ObjectFileWriter w(version);
        w.sphere(1, "ball", t);
        OpenedFile f(w.plain());
        auto& state = zor::object_file_state();
        state.spindles[0] = {"Table", "S1"};
        state.spindles[1] = {"HeadS", "S2xyz"};
        state.spindleCount = 2;
        unsigned int type = 0;
        ASSERT_TRUE(f->ReadType(&type));
        SolidOutputs o;
        ASSERT_TRUE(zortest::read_sphere(*f.file, o));
        EXPECT_EQ(o.attachIndex, version < 109 ? 2u : 0u);
    }
}

TEST(ObjectTailTest, ASpindleLookupConsidersOnlyStoredEntries) {
    Tail t;
    t.attachName = "Ghost";
    t.attachKey = "G";
    t.attachIndex = 0;
    ObjectFileWriter w(105);
    w.sphere(1, "ball", t);
    OpenedFile f(w.plain());
    auto& state = zor::object_file_state();
    state.spindleCount = 12;  // two counted past the ten slots, none stored
    unsigned int type = 0;
    ASSERT_TRUE(f->ReadType(&type));
    SolidOutputs o;
    ASSERT_TRUE(zortest::read_sphere(*f.file, o));
    EXPECT_EQ(o.attachIndex, 0u);
}

TEST(ObjectTailTest, ARecordWithoutClosingBraceLeavesTheLineForReadType) {
    ObjectFileWriter w(115);
    w.sphere(1, "first");
    std::vector<std::string> lines = w.body();
    lines.pop_back();  // drop the sphere's "}"
    std::string text = w.versionLine() + "\n";
    for (const auto& l : lines) text += l + "\n";
    ObjectFileWriter second(115);
    second.sphere(2, "second");
    for (const auto& l : second.body()) text += l + "\n";
    OpenedFile f(text);
    unsigned int type = 0;
    SolidOutputs a, b;
    ASSERT_TRUE(f->ReadType(&type));
    ASSERT_TRUE(zortest::read_sphere(*f.file, a));
    ASSERT_TRUE(f->ReadType(&type));
    EXPECT_EQ(type, 11u);
    ASSERT_TRUE(zortest::read_sphere(*f.file, b));
    EXPECT_EQ(b.d[0], 2);
}

}  // namespace
