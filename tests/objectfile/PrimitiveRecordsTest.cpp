#include <gtest/gtest.h>

#include <functional>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;
using zortest::SolidOutputs;

struct Kind {
    const char* name;
    int dims;
    std::function<void(ObjectFileWriter&, const zortest::Tail&)> write;  // dimensions 1, 2, 3
    std::function<bool(CMWZORFile&, SolidOutputs&)> read;
};

std::vector<Kind> kinds() {
    return {
        {"cube", 3, [](ObjectFileWriter& w, const zortest::Tail& t) { w.cube(1, 2, 3, "obj", t); },
         zortest::read_cube},
        {"cylinder", 3, [](ObjectFileWriter& w, const zortest::Tail& t) { w.cylinder(1, 2, 3, "obj", t); },
         [](CMWZORFile& f, SolidOutputs& o) {
             return f.ReadCylinder(&o.d[0], &o.d[1], &o.d[2], o.vector, &o.texts[0], &o.texts[1], &o.texts[2],
                                   &o.texts[3], &o.texts[4], &o.texts[5], o.matrix, &o.list1, &o.list2, o.quad,
                                   &o.name, &o.tailText, &o.attachName, &o.attachKey, &o.attachIndex);
         }},
        {"cone", 2, [](ObjectFileWriter& w, const zortest::Tail& t) { w.cone(1, 2, "obj", t); },
         [](CMWZORFile& f, SolidOutputs& o) {
             return f.ReadCone(&o.d[0], &o.d[1], o.vector, &o.texts[0], &o.texts[1], &o.texts[2], &o.texts[3],
                               &o.texts[4], &o.texts[5], o.matrix, &o.list1, &o.list2, o.quad, &o.name,
                               &o.tailText, &o.attachName, &o.attachKey, &o.attachIndex);
         }},
        {"sphere", 1, [](ObjectFileWriter& w, const zortest::Tail& t) { w.sphere(1, "obj", t); },
         zortest::read_sphere},
        {"torus", 2, [](ObjectFileWriter& w, const zortest::Tail& t) { w.torus(1, 2, "obj", t); },
         [](CMWZORFile& f, SolidOutputs& o) {
             return f.ReadTorus(&o.d[0], &o.d[1], o.vector, &o.texts[0], &o.texts[1], &o.texts[2], &o.texts[3],
                                &o.texts[4], &o.texts[5], o.matrix, &o.list1, &o.list2, o.quad, &o.name,
                                &o.tailText, &o.attachName, &o.attachKey, &o.attachIndex);
         }},
    };
}

TEST(PrimitiveRecordsTest, EachSolidReadsItsDimensionsInArgumentOrder) {
    for (const Kind& kind : kinds()) {
        for (int version : {101, 105, 115}) {
            SCOPED_TRACE(std::string(kind.name) + " " + std::to_string(version));
            ObjectFileWriter w(version);
            kind.write(w, {});
            OpenedFile f(w.plain());
            unsigned int type = 0;
            ASSERT_TRUE(f->ReadType(&type));
            SolidOutputs o;
            ASSERT_TRUE(kind.read(*f.file, o));
            for (int i = 0; i < 3; ++i) EXPECT_EQ(o.d[i], i < kind.dims ? i + 1 : -1) << "dimension " << i + 1;
            EXPECT_STREQ(o.name, "obj");
            EXPECT_FALSE(f->ReadType(&type));
        }
    }
}

TEST(PrimitiveRecordsTest, OnlyTheCubeFillsTheDimensionTextsInItsRotatedOrder) {
    ObjectFileWriter w(115);
    w.cube(1, 2, 3, "box", {}, {}, {"one", "two", "three"});
    w.cylinder(1, 2, 3, "pin");
    OpenedFile f(w.plain());
    unsigned int type = 0;
    SolidOutputs cube;
    ASSERT_TRUE(f->ReadType(&type));
    ASSERT_TRUE(zortest::read_cube(*f.file, cube));
    EXPECT_STREQ(cube.texts[3], "one");
    EXPECT_STREQ(cube.texts[4], "two");
    EXPECT_STREQ(cube.texts[5], "three");
    EXPECT_TRUE(cube.texts[0].IsEmpty());

    SolidOutputs cylinder;
    cylinder.texts[3] = "kept";
    ASSERT_TRUE(f->ReadType(&type));
    ASSERT_TRUE(kinds()[1].read(*f.file, cylinder));
    EXPECT_STREQ(cylinder.texts[3], "kept");
}

TEST(PrimitiveRecordsTest, CubeLinesAreTakenInFileOrderTwoThreeOne) {
    // The first three lines hold 2, 3 and 1: d1 = 1, d2 = 2, d3 = 3.
    OpenedFile f("// Version: 1.15\nC3dObjectCube {\na <2>\nb <3>\nc <1>\n");
    unsigned int type = 0;
    ASSERT_TRUE(f->ReadType(&type));
    SolidOutputs o;
    EXPECT_FALSE(zortest::read_cube(*f.file, o));  // ends after the dimensions
    EXPECT_EQ(o.d[0], 1);
    EXPECT_EQ(o.d[1], 2);
    EXPECT_EQ(o.d[2], 3);
}

TEST(PrimitiveRecordsTest, LengthsConvertOnlyBetweenMillimetresAndInches) {
    struct Case {
        unsigned int callerUnits;
        int recordUnits;
        double radius;
    } cases[] = {{1, 2, 25.4}, {1, 1, 1.0}, {1, 3, 1.0}, {2, 1, 0.03937007874015748}, {2, 2, 1.0}, {3, 2, 1.0},
                 {0, 1, 1.0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.callerUnits) + " <- " + std::to_string(c.recordUnits));
        zortest::Tail t;
        t.unit = c.recordUnits;
        t.vector = {1, 2, 3, 4};
        t.quad = {1, 2, 3, 4};
        t.matrix[0][3] = 1;
        t.matrix[3][3] = 1;
        t.matrix[3][0] = 5;
        ObjectFileWriter w(115);
        w.sphere(1, "ball", t);
        OpenedFile f(w.plain(), c.callerUnits);
        unsigned int type = 0;
        ASSERT_TRUE(f->ReadType(&type));
        SolidOutputs o;
        ASSERT_TRUE(zortest::read_sphere(*f.file, o));
        EXPECT_DOUBLE_EQ(o.d[0], c.radius);
        EXPECT_DOUBLE_EQ(o.vector[3], 4 * c.radius);
        EXPECT_DOUBLE_EQ(o.matrix[0][3], c.radius);
        EXPECT_DOUBLE_EQ(o.matrix[3][3], c.radius);  // the homogeneous element too
        EXPECT_DOUBLE_EQ(o.matrix[3][0], 5);         // not a translation: unscaled
        EXPECT_EQ(o.quad[3], 4.0f);                  // never scaled
    }
}

}  // namespace
