#include <gtest/gtest.h>

#include <random>
#include <tuple>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;

const zortest::Geometry kMarked{true, {}, {{1, 2, 3}}, {}, {}};

std::string scene() {
    ObjectFileWriter w(115);
    return w.cube(1, 2, 3, "a", {}, kMarked).sphere(4, "b").open("Unknown").field("x", "1").close().plain();
}

TEST(BadInputTest, MissingAndEmptyFilesFailEveryRead) {
    zortest::TempDir dir;
    for (const std::string& path : {dir.file("missing.obj"), dir.write("empty.obj", ""), dir.path()}) {
        SCOPED_TRACE(path);
        zortest::TestFile f(path.c_str(), 0, 1, 1);
        unsigned int type = 0;
        zortest::Outputs o;
        EXPECT_FALSE(f.ReadType(&type));
        EXPECT_EQ(std::make_tuple(f.m_version, type, zortest::read_record(f, ZOR_RECORD_CUBE, o)),
                  std::make_tuple(0u, 0xFFFFFFFFu, false));
    }
}

// Every prefix of a record that ends before the marker (its last needed line)
// fails the read, without leaking what was handed out.
TEST(BadInputTest, EveryTruncationOfARecordFails) {
    ObjectFileWriter::Engine spindle;
    spindle.kind = 2;
    const zortest::Geometry mesh{false, {{0, 0, 0}, {1, 0, 0}, {1, 2, 0}}, {}, {}, {{0, 1, 2}}};
    const ObjectFileWriter::Outline outline{{{"LINE", {0, 0, 0}}, {"CCLW", {1, 1, 0, 2, 2, 0}}}, 1, {}, 1};
    const std::pair<std::string, const char*> cases[] = {
        {ObjectFileWriter(115).cube(1, 2, 3, "c", {}, kMarked).plain(), "}"},
        {ObjectFileWriter(101).cube(1, 2, 3, "c").plain(), "}"},
        {ObjectFileWriter(115).mesh("m", mesh).plain(), "}"},
        {ObjectFileWriter(107).tool("t").plain(), "}"},
        {ObjectFileWriter(115).engine(spindle).plain(), "P23"},
        {ObjectFileWriter(113).revolution(45, outline, "r").plain(), "}"},
        {ObjectFileWriter(115).extrusion({0, 0, 1}, 2, outline, "e").plain(), "}"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first.substr(17, 30));
        zortest::Outputs whole;
        ASSERT_TRUE(OpenedFile(c.first).next(whole));
        for (std::size_t n = 0; n <= c.first.rfind(c.second); ++n) {
            zortest::Outputs o;
            EXPECT_FALSE(OpenedFile(c.first.substr(0, n)).next(o)) << n;
        }
    }
    // A host's walk over every prefix of a scene stops cleanly.
    const std::string text = scene(), full = zortest::walk(*OpenedFile(text).file);
    EXPECT_EQ(full, "1 11 0 ");
    for (std::size_t n = 0; n < text.size(); ++n)
        EXPECT_LE(zortest::walk(*OpenedFile(text.substr(0, n)).file).size(), full.size());
}

TEST(BadInputTest, FieldWithoutBracketsFailsTheRecordAndKeepsEarlierValues) {
    OpenedFile f("// Version: 1.15\nC3dObjectCube {\nw <2>\nd 3\n");
    zortest::Outputs o;
    EXPECT_FALSE(f.next(o));
    EXPECT_EQ(o.d[1], 2);
    EXPECT_EQ(o.d[2], -1);
}

TEST(BadInputTest, GarbageCorruptHeadersAndRandomBytesNeverCrash) {
    const std::pair<std::string, const char*> cases[] = {
        {scene() + "\x01\x02garbage {{{ }}} < > <<\n", "1 11 0 0 "},  // the garbage holds "{": one more record
        {"// Version: 1e30\n" + scene().substr(17), "1!"},            // version 0: the cube's layout does not fit
        {std::string("\xff\xfe\x00\x01", 4) + scene(), ""},           // not plain: read as scrambled
        {scene() + std::string(100000, 'x') + "\n", "1 11 0 "}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.second);
        EXPECT_EQ(zortest::walk(*OpenedFile(c.first).file), c.second);
    }
    std::mt19937 rng(7);
    const std::string base = scene();
    for (int trial = 0; trial < 300; ++trial) {
        std::string text = base;
        for (int flips = 0; flips < 8; ++flips) text[rng() % text.size()] = static_cast<char>(rng() % 256);
        zortest::walk(*OpenedFile(text).file);
    }
    std::string noise(20000, '\0');
    for (char& c : noise) c = static_cast<char>(rng() % 256);
    zortest::walk(*OpenedFile(noise).file);  // under the sanitizers: no read out of bounds
}

}  // namespace
