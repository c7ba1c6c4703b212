#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "mesh/VericutImport.h"
#include "mesh/VericutReaders.h"
#include "support/ForeignProfileWriter.h"
#include "support/TempDir.h"
#include "zorapi/XmlHolder.h"

namespace {

using zortest::Point3;
using zortest::TempDir;
using zortest::VericutPolygonWriter;
using zortest::VericutXmlWriter;

// Scans text from an open stream; returns the scan's result and count.
std::pair<int, long long> scan(const std::string& text) {
    std::FILE* stream = std::tmpfile();
    std::fwrite(text.data(), 1, text.size(), stream);
    std::rewind(stream);
    long long triangles = -1;
    int result = zor::VP_scan(stream, &triangles);
    std::fclose(stream);
    return {result, triangles};
}

const std::vector<Point3> kTriangle = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
const std::vector<Point3> kQuad = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
const Point3 kUp = {0, 0, 1};

TEST(VericutPolygonScan, AcceptsWellFormedFilesAndCountsTriangles) {
    const struct {
        const char* what;
        std::string text;
        long long triangles;
    } cases[] = {
        {"one triangle, face normals", VericutPolygonWriter(0, 0).Polygon(kTriangle, {kUp}).Text(), 1},
        {"triangle and quad, vertex normals",
         VericutPolygonWriter(1, 1).Polygon(kTriangle, {kUp, kUp, kUp}).Polygon(kQuad, {kUp, kUp, kUp, kUp}).Text(), 3},
        {"any third value but 0", VericutPolygonWriter(0, 3, -7).Polygon(kQuad, {kUp}).Text(), 2},
        {"free layout of the body", VericutPolygonWriter(0, 0).Raw("3 0 0 0  1 0 0").Raw("0 1 0 0 0 1").Text(), 1},
        {"pentagon",
         VericutPolygonWriter(0, 0).Polygon({{0, 0, 0}, {1, 0, 0}, {2, 1, 0}, {1, 2, 0}, {0, 1, 0}}, {kUp}).Text(), 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(scan(c.text), std::make_pair(1, c.triangles));
    }
}

TEST(VericutPolygonScan, RefusesMalformedFiles) {
    const VericutPolygonWriter good = VericutPolygonWriter(0, 0).Polygon(kTriangle, {kUp});
    const struct {
        const char* what;
        std::string text;
    } cases[] = {
        {"format not 1", VericutPolygonWriter(good).Header(2, "2").Text()},
        {"format missing", VericutPolygonWriter(good).Header(2, "one").Text()},
        {"orientation 2", VericutPolygonWriter(0, 2).Polygon(kTriangle, {kUp}).Text()},
        {"third value 0", VericutPolygonWriter(0, 0, 0).Polygon(kTriangle, {kUp}).Text()},
        {"two flags only", VericutPolygonWriter(good).Header(3, "0 0").Text()},
        {"no polygon", VericutPolygonWriter(0, 0).Text()},
        {"point cut short", VericutPolygonWriter(0, 0).Raw("3").Raw("0 0 0").Raw("1 0").Text()},
        {"normal missing", VericutPolygonWriter(0, 0).Polygon(kTriangle, {}).Text()},
        {"vertex normal missing", VericutPolygonWriter(1, 0).Polygon(kTriangle, {kUp, kUp}).Text()},
        {"degenerate polygons only", VericutPolygonWriter(0, 0).Polygon({{0, 0, 0}, {1, 0, 0}}, {kUp}).Text()},
        {"header lines only", "title\ntitle\n"},
        {"empty", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(scan(c.text).first, 0);
    }
    EXPECT_EQ(zor::VP_scan(nullptr), 0);
}

TEST(VericutPolygonScan, EveryPrefixOfAFileScansCleanly) {
    const std::string text =
        VericutPolygonWriter(1, 1).Polygon(kTriangle, {kUp, kUp, kUp}).Polygon(kQuad, {kUp, kUp, kUp, kUp}).Text();
    for (size_t n = 0; n < text.size(); ++n) {
        SCOPED_TRACE(n);
        auto [result, triangles] = scan(text.substr(0, n));
        // A cut inside the second polygon fails; before it, one triangle is
        // whole. Only the final newline can go without losing the quad.
        EXPECT_LE(triangles, 3);
        if (result == 1) {
            EXPECT_EQ(triangles, n + 1 == text.size() ? 3 : 1);
        }
    }
    // Huge point counts end with the input.
    EXPECT_EQ(scan(VericutPolygonWriter(1, 0).Raw("2000000000").Raw("0 0 0").Text()).first, 0);
}

TEST(VericutPolygon, OpensTheFileAndHandsOutNothing) {
    TempDir dir;
    std::string path = dir.write("mesh.ply", VericutPolygonWriter(0, 0).Polygon(kTriangle, {kUp}).Text());
    std::string missing = dir.file("missing.ply");
    unsigned int numPoints = 9, numVectors = 9, numFaces = 9;
    double* points = reinterpret_cast<double*>(&numPoints);
    double* vectors = points;
    unsigned int* faces = &numFaces;
    EXPECT_EQ(VericutPolygon(path.data(), &numPoints, &points, &numVectors, &vectors, &numFaces, &faces, 1, 2), 1);
    EXPECT_EQ(numPoints + numVectors + numFaces, 0u);
    EXPECT_TRUE(points == nullptr && vectors == nullptr && faces == nullptr);
    numPoints = 9;
    EXPECT_EQ(VericutPolygon(missing.data(), &numPoints, &points, &numVectors, &vectors, &numFaces, &faces, 1, 1), 0);
    EXPECT_EQ(numPoints, 0u);
    EXPECT_EQ(VericutPolygon(path.data(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 1, 1), 1);
    EXPECT_EQ(VericutPolygon(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 1, 1), 0);
}

class VericutFlatArrays : public ::testing::Test {
protected:
    void TearDown() override {
        std::free(points);
        zor::reset_xml_holders();
    }
    std::vector<double> got() const { return std::vector<double>(points, points + 3 * numPoints); }

    TempDir dir;
    int numPoints = -1;
    double* points = nullptr;
};

TEST_F(VericutFlatArrays, SorHandsOutLineEndsScaledBy24Point5) {
    std::string path = dir.write("p.sor", VericutXmlWriter::Sor(0.04).Pt(0, 0).Pt(10, 0).Arc(10, 5).Pt(10, 10).Text());
    const struct {
        int wanted, file;
        double factor;
    } cases[] = {{1, 2, 24.5}, {2, 1, 0.04081632653061224}, {1, 1, 1.0}, {2, 2, 1.0}, {3, 1, 1.0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.factor);
        double tolerance = -1;
        std::free(points);
        points = nullptr;
        ASSERT_EQ(VericutSor(path.data(), &numPoints, &points, &tolerance, c.wanted, c.file), 1);
        EXPECT_EQ(tolerance, 0.04);
        // The arc's end is left out; the closing line is a line.
        EXPECT_EQ(got(), (std::vector<double>{0, 0, 0, 10 * c.factor, 0, 0, 0, 0, 0}));
    }
}

TEST_F(VericutFlatArrays, SweepHandsOutLineEndsAndZRangeScaledBy25Point4) {
    std::string path =
        dir.write("p.swp", VericutXmlWriter::Sweep(1, 2).Pt(0, 0).Pt(10, 0).Arc(10, 5, "CW").Pt(10, 10).Text());
    double zRange[2] = {-1, -1};
    ASSERT_EQ(VericutSweep(path.data(), &numPoints, &points, zRange, 1, 2), 1);
    EXPECT_EQ(zRange[0], 25.4);
    EXPECT_EQ(zRange[1], 2 * 25.4);
    EXPECT_EQ(got(), (std::vector<double>{0, 0, 0, 10 * 25.4, 0, 0, 0, 0, 0}));

    std::free(points);
    points = nullptr;
    ASSERT_EQ(VericutSweep(path.data(), &numPoints, &points, nullptr, 2, 1), 1);
    EXPECT_EQ(got(), (std::vector<double>{0, 0, 0, 10 * 0.03937007874015748, 0, 0, 0, 0, 0}));
}

TEST_F(VericutFlatArrays, RefusalsLeaveOutputsAloneButTheCount) {
    std::string wrongKind = dir.write("wrong.xml", VericutXmlWriter::Sweep(0, 1).Pt(1, 1).Text());
    double tolerance = -1, zRange[2] = {-1, -1};
    EXPECT_EQ(VericutSor(wrongKind.data(), &numPoints, &points, &tolerance, 1, 1), 0);
    EXPECT_EQ(numPoints, 0);
    EXPECT_EQ(points, nullptr);
    EXPECT_EQ(tolerance, -1);
    std::string missing = dir.file("missing");
    numPoints = -1;
    EXPECT_EQ(VericutSweep(missing.data(), &numPoints, &points, zRange, 1, 1), 0);
    EXPECT_EQ(numPoints, 0);
    EXPECT_EQ(zRange[0], -1);

    EXPECT_EQ(VericutSor(nullptr, &numPoints, &points, &tolerance, 1, 1), 0);
    EXPECT_EQ(VericutSor(wrongKind.data(), nullptr, &points, &tolerance, 1, 1), 0);
    EXPECT_EQ(VericutSweep(wrongKind.data(), &numPoints, nullptr, zRange, 1, 1), 0);
    EXPECT_EQ(points, nullptr);
}

}  // namespace
