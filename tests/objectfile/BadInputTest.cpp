#include <gtest/gtest.h>

#include <random>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;
using zortest::SolidOutputs;

// Walks a whole file the way a host does; returns the number of records read.
int walk(zortest::TestFile& f) {
    unsigned int type = 0;
    int records = 0;
    while (f.ReadType(&type)) {
        SolidOutputs o;
        bool ok = true;
        if (type == 1)
            ok = zortest::read_cube(f, o);
        else if (type == 11)
            ok = zortest::read_sphere(f, o);
        else
            f.ReadDummy();
        if (!ok) break;
        ++records;
    }
    return records;
}

std::string scene() {
    ObjectFileWriter w(115);
    zortest::Geometry g;
    g.present = true;
    g.list1 = {{1, 2, 3}};
    w.cube(1, 2, 3, "a", {}, g).sphere(4, "b").open("Unknown").field("x", "1").close();
    return w.plain();
}

TEST(BadInputTest, MissingAndEmptyFilesFailEveryRead) {
    zortest::TempDir dir;
    for (const std::string& path : {dir.file("missing.obj"), dir.write("empty.obj", ""), dir.path()}) {
        SCOPED_TRACE(path);
        zortest::TestFile f(path.c_str(), 0, 1, 1);
        EXPECT_EQ(f.m_version, 0u);
        unsigned int type = 0;
        EXPECT_FALSE(f.ReadType(&type));
        EXPECT_EQ(type, 0xFFFFFFFFu);
        SolidOutputs o;
        EXPECT_FALSE(zortest::read_cube(f, o));
    }
}

TEST(BadInputTest, EveryTruncationOfAValidFileFailsCleanly) {
    const std::string text = scene();
    {
        OpenedFile whole(text);
        EXPECT_EQ(walk(*whole.file), 3);
    }
    for (std::size_t n = 0; n < text.size(); ++n) {
        OpenedFile f(text.substr(0, n));
        EXPECT_LE(walk(*f.file), 3);
    }
}

TEST(BadInputTest, TrailingGarbageAndCorruptHeaders) {
    for (const std::string& text :
         {scene() + "\x01\x02garbage {{{ }}} < > <<", "// Version: 1e30\n" + scene().substr(17),
          std::string("\xff\xfe\x00\x01", 4) + scene(), scene() + std::string(100000, 'x') + "\n"}) {
        OpenedFile f(text);
        EXPECT_LE(walk(*f.file), 4);  // the garbage line holds "{": one more (unknown) record
    }
}

TEST(BadInputTest, FieldWithoutBracketsFailsTheRecordAndKeepsEarlierValues) {
    OpenedFile f("// Version: 1.15\nC3dObjectCube {\nw <2>\nd 3\n");
    unsigned int type = 0;
    ASSERT_TRUE(f->ReadType(&type));
    SolidOutputs o;
    EXPECT_FALSE(zortest::read_cube(*f.file, o));
    EXPECT_EQ(o.d[1], 2);
    EXPECT_EQ(o.d[2], -1);
}

TEST(BadInputTest, RandomBytesNeverCrash) {
    std::mt19937 rng(7);
    const std::string base = scene();
    for (int trial = 0; trial < 300; ++trial) {
        std::string text = base;
        for (int flips = 0; flips < 8; ++flips) text[rng() % text.size()] = static_cast<char>(rng() % 256);
        OpenedFile f(text);
        walk(*f.file);
    }
    std::string noise(20000, '\0');
    for (char& c : noise) c = static_cast<char>(rng() % 256);
    OpenedFile f(noise);
    walk(*f.file);  // under the sanitizers: no read out of bounds
}

}  // namespace
