#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ObjectFileTestUtil.h"
#include "profile/MWZORSegment.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;
using Outline = ObjectFileWriter::Outline;

// The outputs of a profile record; the segments belong to the test.
struct ProfileOutputs {
    double vector[4] = {-1, -1, -1, -1};
    unsigned int count = 999;
    CMWZORSegmentPtrArray segments;
    double matrix[4][4] = {};
    CMWZORPointArray list1, list2;
    float quad[4] = {};
    double direction[4] = {-1, -1, -1, -1};
    double value = -7;  // length or angle
    CString name, tailText, attachName, attachKey;
    unsigned int attachIndex = 99;

    ~ProfileOutputs() {
        for (long long i = 0; i < segments.GetSize(); ++i) delete segments[i];
        for (CMWZORPointArray* list : {&list1, &list2})
            for (long long i = 0; i < list->GetSize(); ++i) delete list->GetAt(i);
    }
};

bool read_extrusion(CMWZORFile& f, ProfileOutputs& o) {
    return f.ReadExtrusion(o.vector, &o.count, &o.segments, nullptr, nullptr, nullptr, o.matrix, &o.list1, &o.list2,
                           o.quad, o.direction, &o.value, &o.name, &o.tailText, &o.attachName, &o.attachKey,
                           &o.attachIndex);
}

bool read_revolution(CMWZORFile& f, ProfileOutputs& o) {
    return f.ReadRevolution(o.vector, &o.count, &o.segments, nullptr, nullptr, nullptr, o.matrix, &o.list1, &o.list2,
                            o.quad, o.direction, &o.value, &o.name, &o.tailText, &o.attachName, &o.attachKey,
                            &o.attachIndex);
}

Outline sample_outline() {
    Outline o;
    o.segments = {
        {"LINE", {0, 0, 0}}, {"LINE", {10, 0, 0}}, {"CCLW", {10, 5, 0, 10, 10, 0}}, {"CLW", {5, 10, 0, 0, 10, 0}}};
    return o;
}

void expect_point(const CMWZORPoint* p, double x, double y, double z) {
    ASSERT_NE(p, nullptr);
    EXPECT_DOUBLE_EQ(p->x, x);
    EXPECT_DOUBLE_EQ(p->y, y);
    EXPECT_DOUBLE_EQ(p->z, z);
}

void expect_sample(const ProfileOutputs& o, double f = 1.0) {
    ASSERT_EQ(o.segments.GetSize(), 4);
    EXPECT_EQ(o.count, 4u);
    EXPECT_EQ(o.segments[0]->m_type, IO_LINE);
    ASSERT_EQ(o.segments[1]->m_points.GetSize(), 1);
    expect_point(o.segments[1]->m_points[0], 10 * f, 0, 0);
    const CMWZORSegment* ccw = o.segments[2];
    EXPECT_EQ(ccw->m_type, IO_CCLW);
    ASSERT_EQ(ccw->m_points.GetSize(), 3);
    expect_point(ccw->m_points[0], 10 * f, 5 * f, 0);
    expect_point(ccw->m_points[1], 0, 0, f);  // the axis is scaled too
    expect_point(ccw->m_points[2], 10 * f, 10 * f, 0);
    EXPECT_EQ(o.segments[3]->m_type, IO_CLW);
    expect_point(o.segments[3]->m_points[1], 0, 0, -f);
}

TEST(ProfileRecordsTest, ReadsExtrusionsAcrossVersions) {
    for (int version : {105, 113, 114, 115}) {
        SCOPED_TRACE(version);
        ObjectFileWriter w(version);
        w.extrusion({0, 0.5, 1}, 25, sample_outline(), "bar").sphere(2, "after");
        OpenedFile f(w.plain());
        unsigned int type = 0;
        ASSERT_TRUE(f->ReadType(&type));
        ASSERT_EQ(type, ZOR_RECORD_EXTRUSION);
        ProfileOutputs o;
        ASSERT_TRUE(read_extrusion(*f.file, o));
        expect_sample(o);
        EXPECT_EQ(o.direction[0], 0);
        EXPECT_EQ(o.direction[1], 0.5);
        EXPECT_EQ(o.direction[2], 1);
        EXPECT_EQ(o.direction[3], 0);
        EXPECT_EQ(o.value, 25);
        EXPECT_STREQ(o.name, "bar");
        // The reader stopped exactly at the record's end.
        ASSERT_TRUE(f->ReadType(&type));
        EXPECT_EQ(type, ZOR_RECORD_SPHERE);
    }
}

TEST(ProfileRecordsTest, RevolutionReadsItsAngleOnlyFromOldFilesAndTurnsAboutZ) {
    const struct {
        int version;
        double angle;
    } cases[] = {{105, 90}, {113, 90}, {114, -7}, {115, -7}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.version);
        ObjectFileWriter w(c.version);
        w.revolution(90, sample_outline(), "lathe").sphere(2, "after");
        OpenedFile f(w.plain());
        unsigned int type = 0;
        ASSERT_TRUE(f->ReadType(&type));
        ASSERT_EQ(type, ZOR_RECORD_REVOLUTION);
        ProfileOutputs o;
        ASSERT_TRUE(read_revolution(*f.file, o));
        expect_sample(o);
        EXPECT_EQ(o.value, c.angle);
        EXPECT_EQ(o.direction[0], 0);
        EXPECT_EQ(o.direction[1], 0);
        EXPECT_EQ(o.direction[2], 1);
        EXPECT_EQ(o.direction[3], 0);
        EXPECT_STREQ(o.name, "lathe");
        ASSERT_TRUE(f->ReadType(&type));
        EXPECT_EQ(type, ZOR_RECORD_SPHERE);
    }
}

TEST(ProfileRecordsTest, SegmentKeywordsArePrefixesInAnyCase) {
    Outline o;
    o.segments = {{"LINES", {1, 2, 3}}, {"   cclw", {0, 0, 0, 1, 0, 0}}, {"Clw", {0, 0, 0, 0, 1, 0}}};
    ObjectFileWriter w(115);
    w.extrusion({0, 0, 1}, 1, o, "x");
    OpenedFile f(w.plain());
    unsigned int type;
    ASSERT_TRUE(f->ReadType(&type));
    ProfileOutputs out;
    ASSERT_TRUE(read_extrusion(*f.file, out));
    ASSERT_EQ(out.segments.GetSize(), 3);
    EXPECT_EQ(out.segments[0]->m_type, IO_LINE);
    EXPECT_EQ(out.segments[1]->m_type, IO_CCLW);
    expect_point(out.segments[1]->m_points[2], 1, 0, 0);
    EXPECT_EQ(out.segments[2]->m_type, IO_CLW);
}

TEST(ProfileRecordsTest, ValuesPassThroughSinglePrecision) {
    Outline o;
    o.segments = {{"LINE", {0.1, 1e-3, 123456.789}}};
    ObjectFileWriter w(115);
    w.extrusion({0, 0, 1}, 1, o, "x");
    OpenedFile f(w.plain());
    unsigned int type;
    ASSERT_TRUE(f->ReadType(&type));
    ProfileOutputs out;
    ASSERT_TRUE(read_extrusion(*f.file, out));
    const CMWZORPoint* p = out.segments[0]->m_points[0];
    EXPECT_EQ(p->x, static_cast<double>(0.1f));
    EXPECT_NE(p->x, 0.1);
    EXPECT_EQ(p->y, static_cast<double>(1e-3f));
    EXPECT_EQ(p->z, static_cast<double>(123456.789f));
}

TEST(ProfileRecordsTest, ClosedOutlinesReportACountAndAnEmptySlot) {
    const struct {
        const char* name;
        int version;
        int closed;
        std::vector<double> first, last;
        unsigned int count;
        long long slots;
    } cases[] = {
        {"open ends, closed flag", 113, 1, {0, 0, 0}, {5, 0, 0}, 4, 4},
        {"mirrored ends count as equal", 113, 1, {-5, 0, 0}, {5, 0, 0}, 3, 4},
        {"equal within 0.0001", 113, 1, {1, 2, 3}, {1.00005, -2, 3}, 3, 4},
        {"not closed", 113, 0, {0, 0, 0}, {5, 0, 0}, 3, 3},
        {"no closed flag from 1.14", 114, 1, {0, 0, 0}, {5, 0, 0}, 3, 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Outline o;
        o.closed = c.closed;
        o.segments = {{"LINE", c.first}, {"CCLW", {1, 1, 0, 2, 2, 0}}, {"LINE", c.last}};
        ObjectFileWriter w(c.version);
        w.revolution(90, o, "r");
        OpenedFile f(w.plain());
        unsigned int type;
        ASSERT_TRUE(f->ReadType(&type));
        ProfileOutputs out;
        ASSERT_TRUE(read_revolution(*f.file, out));
        EXPECT_EQ(out.count, c.count);
        ASSERT_EQ(out.segments.GetSize(), c.slots);
        for (long long i = 0; i < 3; ++i) EXPECT_NE(out.segments[i], nullptr);
        if (c.slots == 4) {
            EXPECT_EQ(out.segments[3], nullptr);
        }

        // A consumer walking the list stops at the empty slot.
        CMWZORSegmentArray walk;
        for (long long i = 0; i < out.segments.GetSize(); ++i) walk.m_segments.Add(out.segments[i]);
        int visited = 0;
        m_IOenumType t;
        while (walk.GetType(&t) && walk.GetNext() != nullptr) ++visited;
        EXPECT_EQ(visited, 3);
        walk.m_segments.RemoveAll();  // the segments stay with out
    }
}

TEST(ProfileRecordsTest, OutlineWithoutListStillReportsTheCount) {
    ObjectFileWriter w(113);
    Outline o = sample_outline();
    o.closed = 1;
    w.extrusion({0, 0, 1}, 1, o, "x").sphere(1, "after");
    OpenedFile f(w.plain());
    unsigned int type, count = 0;
    ASSERT_TRUE(f->ReadType(&type));
    ASSERT_TRUE(f->ReadExtrusion(nullptr, &count, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(count, 4u);
    ASSERT_TRUE(f->ReadType(&type));
    EXPECT_EQ(type, ZOR_RECORD_SPHERE);
}

TEST(ProfileRecordsTest, UnitConversionScalesEverySegmentPointButNotDirectionOrLength) {
    for (bool closedWithGap : {false, true}) {
        SCOPED_TRACE(closedWithGap);
        zortest::Tail t;
        t.unit = 2;
        t.vector = {1, 2, 3, 4};
        t.matrix[0][3] = 1;
        t.matrix[2][3] = 2;
        Outline o = sample_outline();
        if (closedWithGap) {
            o.closed = 1;
            o.segments.push_back({"LINE", {3, 0, 0}});
        }
        ObjectFileWriter w(113);
        w.extrusion({0, 0, 1}, 2, o, "x", t);
        OpenedFile f(w.plain(), 1);
        unsigned int type;
        ASSERT_TRUE(f->ReadType(&type));
        ProfileOutputs out;
        ASSERT_TRUE(read_extrusion(*f.file, out));
        if (closedWithGap) {
            EXPECT_EQ(out.count, 6u);
            ASSERT_EQ(out.segments.GetSize(), 6);
            EXPECT_EQ(out.segments[5], nullptr);
            delete out.segments.GetAt(4);
            out.segments.SetSize(4);  // the sample part
            out.count = 4;
        }
        expect_sample(out, 25.4);
        EXPECT_DOUBLE_EQ(out.vector[3], 4 * 25.4);
        EXPECT_DOUBLE_EQ(out.matrix[0][3], 25.4);
        EXPECT_DOUBLE_EQ(out.matrix[2][3], 50.8);
        EXPECT_DOUBLE_EQ(out.matrix[3][3], 25.4);
        EXPECT_DOUBLE_EQ(out.matrix[0][0], 1);
        EXPECT_EQ(out.direction[2], 1);
        EXPECT_EQ(out.value, 2);
    }
}

TEST(ProfileRecordsTest, MalformedOutlinesFail) {
    const struct {
        const char* name;
        std::vector<ObjectFileWriter::ProfileSegment> segments;
        std::optional<int> count;
        long long keptSegments;
    } cases[] = {
        {"unknown keyword after a line", {{"LINE", {1, 2, 3}}, {"ARC", {1, 2, 3}}}, std::nullopt, 1},
        {"arc with five numbers", {{"LINE", {1, 2, 3}}, {"CLW", {1, 2, 3, 4, 5}}}, std::nullopt, 1},
        {"line with two numbers", {{"LINE", {1, 2}}}, std::nullopt, 0},
        {"count past the lines", {{"LINE", {1, 2, 3}}}, 5, 1},
        {"negative count", {}, -3, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Outline o;
        o.segments = c.segments;
        o.count = c.count;
        o.trailingLines = 0;
        ObjectFileWriter w(115);
        w.extrusion({0, 0, 1}, 1, o, "x");
        OpenedFile f(w.plain());
        unsigned int type;
        ASSERT_TRUE(f->ReadType(&type));
        ProfileOutputs out;
        EXPECT_FALSE(read_extrusion(*f.file, out));
        long long kept = 0;
        for (long long i = 0; i < out.segments.GetSize(); ++i) kept += out.segments[i] != nullptr;
        EXPECT_EQ(kept, c.keptSegments);
    }
}

TEST(ProfileRecordsTest, EveryTruncationFailsCleanly) {
    for (int version : {113, 115}) {
        ObjectFileWriter w(version);
        Outline o = sample_outline();
        o.closed = 1;
        w.revolution(45, o, "r");
        const std::string text = w.plain();
        for (size_t n = 0; n + 1 < text.size(); n += 3) {
            SCOPED_TRACE(n);
            OpenedFile f(text.substr(0, n));
            unsigned int type;
            if (!f->ReadType(&type)) continue;
            ProfileOutputs out;
            EXPECT_FALSE(read_revolution(*f.file, out));
        }
    }
}

}  // namespace
