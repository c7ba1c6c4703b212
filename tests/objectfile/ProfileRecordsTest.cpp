#include <gtest/gtest.h>

#include <cstdio>
#include <tuple>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;
using zortest::Outputs;
using Outline = ObjectFileWriter::Outline;
using V = std::vector<double>;

Outline sample_outline(int closed = 0) {
    Outline o;
    o.closed = closed;
    o.segments = {
        {"LINE", {0, 0, 0}}, {"LINE", {10, 0, 0}}, {"CCLW", {10, 5, 0, 10, 10, 0}}, {"CLW", {5, 10, 0, 0, 10, 0}}};
    return o;
}

// The segments as "TYPE x,y,z ..." joined by " | ", "null" for an empty slot.
std::string segments(const Outputs& o) {
    std::string out;
    for (long long i = 0; i < o.segments.GetSize(); ++i) {
        const CMWZORSegment* s = o.segments[i];
        out += i > 0 ? " | " : "";
        out += s == nullptr ? "null" : s->m_type == IO_LINE ? "LINE" : s->m_type == IO_CLW ? "CLW" : "CCLW";
        for (long long k = 0; s != nullptr && k < s->m_points.GetSize(); ++k) {
            char text[100];
            std::snprintf(text, sizeof text, " %g,%g,%g", s->m_points[k]->x, s->m_points[k]->y, s->m_points[k]->z);
            out += text;
        }
    }
    return out;
}

// The sample outline as read: arcs hold centre, axis and end point.
const char* const kSample = "LINE 0,0,0 | LINE 10,0,0 | CCLW 10,5,0 0,0,1 10,10,0 | CLW 5,10,0 0,0,-1 0,10,0";

TEST(ProfileRecordsTest, ReadsExtrusionsAndRevolutionsAcrossVersions) {
    for (int version : {105, 113, 114, 115}) {
        for (bool revolution : {false, true}) {
            SCOPED_TRACE(std::to_string(version) + (revolution ? " revolution" : " extrusion"));
            ObjectFileWriter w(version);
            revolution ? w.revolution(90, sample_outline(), "p") : w.extrusion({0, 0.5, 1}, 25, sample_outline(), "p");
            OpenedFile f(w.sphere(2, "after").plain());
            Outputs o;
            ASSERT_TRUE(f.next(o));
            EXPECT_EQ(f.type, revolution ? ZOR_RECORD_REVOLUTION : ZOR_RECORD_EXTRUSION);
            EXPECT_EQ(segments(o), kSample);
            // A revolution turns about Z, by an angle read only before 1.14.
            EXPECT_EQ(std::make_tuple(o.count, o.value, std::string(o.name)),
                      std::make_tuple(4u, revolution ? (version < 114 ? 90 : -7) : 25.0, std::string("p")));
            EXPECT_EQ(zortest::vec(o.direction, 4), (revolution ? V{0, 0, 1, 0} : V{0, 0.5, 1, 0}));
            ASSERT_TRUE(f->ReadType(&f.type));  // the reader stopped exactly at the record's end
            EXPECT_EQ(f.type, ZOR_RECORD_SPHERE);
        }
    }
}

TEST(ProfileRecordsTest, KeywordsArePrefixesInAnyCaseAndValuesSinglePrecision) {
    Outline o;
    o.segments = {{"LINES", {0.1, 1e-3, 123456.789}}, {"   cclw", {0, 0, 0, 1, 0, 0}}, {"Clw", {0, 0, 0, 0, 1, 0}}};
    OpenedFile f(ObjectFileWriter(115).extrusion({0, 0, 1}, 1, o, "x").plain());
    Outputs out;
    ASSERT_TRUE(f.next(out));
    EXPECT_EQ(segments(out), "LINE 0.1,0.001,123457 | CCLW 0,0,0 0,0,1 1,0,0 | CLW 0,0,0 0,0,-1 0,1,0");
    const CMWZORPoint* p = out.segments[0]->m_points[0];
    EXPECT_EQ(p->x, static_cast<double>(0.1f));
    EXPECT_EQ(p->y, static_cast<double>(1e-3f));
    EXPECT_EQ(p->z, static_cast<double>(123456.789f));
}

TEST(ProfileRecordsTest, ClosedOutlinesReportACountAndAnEmptySlot) {
    // Before 1.14 a closed outline whose ends differ (compared on absolute
    // values, within 0.0001) counts N + 1 segments; the list gets an empty slot.
    const std::tuple<int, int, V, V, unsigned int, long long> cases[] = {{113, 1, {0, 0, 0}, {5, 0, 0}, 4, 4},
                                                                         {113, 1, {-5, 0, 0}, {5, 0, 0}, 3, 4},
                                                                         {113, 1, {1, 2, 3}, {1.00005, -2, 3}, 3, 4},
                                                                         {113, 0, {0, 0, 0}, {5, 0, 0}, 3, 3},
                                                                         {114, 1, {0, 0, 0}, {5, 0, 0}, 3, 3}};
    for (const auto& [version, closed, first, last, count, slots] : cases) {
        SCOPED_TRACE(std::to_string(version) + " " + std::to_string(closed) + " " + std::to_string(first[0]));
        Outline o;
        o.closed = closed;
        o.segments = {{"LINE", first}, {"CCLW", {1, 1, 0, 2, 2, 0}}, {"LINE", last}};
        Outputs out;
        ASSERT_TRUE(OpenedFile(ObjectFileWriter(version).revolution(90, o, "r").plain()).next(out));
        EXPECT_EQ(std::make_pair(out.count, out.segments.GetSize()), std::make_pair(count, slots));
        EXPECT_EQ(segments(out).find("null") != std::string::npos, slots == 4);

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

// An outline whose file ends inside its segment lines: the list is sized for
// the count first (N + 1 when closed) and keeps the segments read.
TEST(ProfileRecordsTest, OutlineCutShortKeepsItsSizeAndTheSegmentsRead) {
    for (const auto& [version, closed, slots] : {std::make_tuple(115, 0, 10), std::make_tuple(113, 1, 11)}) {
        Outline o = sample_outline(closed);
        o.count = 10;
        std::string text = ObjectFileWriter(version).revolution(90, o, "r").plain();
        text.resize(text.find("CCLW"));  // the file ends after two segment lines
        Outputs out;
        EXPECT_FALSE(OpenedFile(text).next(out));
        std::string expected = "LINE 0,0,0 | LINE 10,0,0";
        for (int i = 2; i < slots; ++i) expected += " | null";
        EXPECT_EQ(segments(out), expected);
        EXPECT_EQ(out.count, 77u);  // reported only for a whole outline
    }
}

TEST(ProfileRecordsTest, OutlineWithoutListStillReportsTheCount) {
    OpenedFile f(ObjectFileWriter(113).extrusion({0, 0, 1}, 1, sample_outline(1), "x").sphere(1, "after").plain());
    unsigned int count = 0;
    ASSERT_TRUE(f->ReadType(&f.type));
    ASSERT_TRUE(f->ReadExtrusion(nullptr, &count, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(count, 4u);
    ASSERT_TRUE(f->ReadType(&f.type));
    EXPECT_EQ(f.type, ZOR_RECORD_SPHERE);
}

TEST(ProfileRecordsTest, UnitConversionScalesEverySegmentPointButNotDirectionOrLength) {
    zortest::Tail t;
    t.unit = 2;
    Outline o = sample_outline(1);
    o.segments.push_back({"LINE", {3, 0, 0}});  // not closed: an empty slot follows
    OpenedFile f(ObjectFileWriter(113).extrusion({0, 0, 1}, 2, o, "x", t).plain(), 1);
    Outputs out;
    ASSERT_TRUE(f.next(out));
    EXPECT_EQ(segments(out),
              "LINE 0,0,0 | LINE 254,0,0 | CCLW 254,127,0 0,0,25.4 254,254,0 | "
              "CLW 127,254,0 0,0,-25.4 0,254,0 | LINE 76.2,0,0 | null");
    EXPECT_EQ(out.count, 6u);
    EXPECT_DOUBLE_EQ(out.matrix[3][3], 25.4);
    EXPECT_EQ(out.direction[2], 1);
    EXPECT_EQ(out.value, 2);
}

TEST(ProfileRecordsTest, MalformedOutlinesFail) {
    using Segments = std::vector<ObjectFileWriter::ProfileSegment>;
    // Segments, count line, segments kept.
    const std::tuple<Segments, std::optional<int>, long long> cases[] = {
        {{{"LINE", {1, 2, 3}}, {"ARC", {1, 2, 3}}}, std::nullopt, 1},  // unknown keyword after a line
        {{{"LINE", {1, 2, 3}}, {"CLW", {1, 2, 3, 4, 5}}}, std::nullopt, 1},
        {{{"LINE", {1, 2}}}, std::nullopt, 0},
        {{{"LINE", {1, 2, 3}}}, 5, 1},  // count past the lines
        {{}, -3, 0}};
    for (const auto& [segments, count, kept] : cases) {
        Outline o;
        std::tie(o.segments, o.count, o.trailingLines) = std::make_tuple(segments, count, 0);
        Outputs out;
        EXPECT_FALSE(OpenedFile(ObjectFileWriter(115).extrusion({0, 0, 1}, 1, o, "x").plain()).next(out));
        long long n = 0;
        for (long long i = 0; i < out.segments.GetSize(); ++i) n += out.segments[i] != nullptr;
        EXPECT_EQ(n, kept) << segments.size();
    }
}

}  // namespace
