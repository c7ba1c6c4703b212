// StlFile: file type, grammar, units, error texts and their repetition, bad
// input, and the "%f" conversion of number tokens.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>

#include "mesh/MeshTestUtil.h"
#include "mesh/StlReader.h"
#include "support/StlWriter.h"
#include "support/TempDir.h"

namespace {

using zortest::StlWriter;

struct Captured {
    zortest::StlResult r;
    std::string err;
};

Captured read_captured(const std::string& path, int wanted = 1, int fileUnit = 1) {
    testing::internal::CaptureStderr();
    Captured c;
    c.r = zortest::read_stl(path, wanted, fileUnit);
    c.err = testing::internal::GetCapturedStderr();
    return c;
}

class StlReaderTest : public testing::Test {
protected:
    void SetUp() override { zor::reset_stl_reader_state(); }
    zortest::TempDir dir;
};

TEST_F(StlReaderTest, CubeHasEightPointsSixNormalsTwelveFacesInBothForms) {
    const StlWriter cube = zortest::stl_cube(10.0f);
    for (const std::string& bytes : {cube.binary(), cube.ascii("cube"), cube.ascii("cube", "%e", "\r\n")}) {
        const Captured c = read_captured(dir.write("cube.stl", bytes));
        ASSERT_EQ(c.r.result, 1);
        EXPECT_EQ(c.err, "");
        EXPECT_EQ(c.r.mesh.points.size(), 8u * 3);
        EXPECT_EQ(c.r.mesh.vectors.size(), 6u * 3);
        ASSERT_EQ(c.r.mesh.faces.size(), 12u * 4);
        // First appearance: the first facet's vertices are 0, 1, 2, its normal 0.
        EXPECT_EQ(std::vector<unsigned int>(c.r.mesh.faces.begin(), c.r.mesh.faces.begin() + 8),
                  (std::vector<unsigned int>{0, 1, 2, 0, 0, 2, 3, 0}));
        EXPECT_EQ(std::vector<double>(c.r.mesh.points.begin(), c.r.mesh.points.begin() + 6),
                  (std::vector<double>{0, 0, 0, 0, 10, 0}));
    }
}

TEST_F(StlReaderTest, UnitFactorScalesPointsOnly) {
    const std::string path = dir.write("u.stl", zortest::stl_cube(1.0f).binary());
    struct Case {
        int wanted, file;
        double factor;
    };
    for (const Case& k : {Case{1, 2, 25.4}, Case{2, 1, 0.03937007874015748}, Case{1, 1, 1.0}, Case{2, 2, 1.0},
                          Case{0, 2, 1.0}, Case{2, 3, 1.0}}) {
        SCOPED_TRACE(std::to_string(k.wanted) + "/" + std::to_string(k.file));
        const Captured c = read_captured(path, k.wanted, k.file);
        ASSERT_EQ(c.r.result, 1);
        EXPECT_EQ(c.r.mesh.points[4], 1.0 * k.factor);  // the second vertex's y
        EXPECT_EQ(c.r.mesh.vectors[2], -1.0);           // normals as read
    }
}

TEST_F(StlReaderTest, DecidesTheTypeByTheFirst150Bytes) {
    const StlWriter tri = StlWriter().facet(0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0);
    std::string ascii = tri.ascii("triangle-with-a-long-solid-name");
    ASSERT_GE(ascii.size(), 150u);
    struct Case {
        const char* name;
        std::string bytes;
        int result;
        const char* err;
        std::size_t points;
    };
    std::string accented = ascii;
    accented.replace(6, 1, "\xe9");  // a byte above 126 in the solid's name
    std::string late = ascii;
    late.insert(late.size() - 2, "\xe9");  // in the endsolid name, past byte 150
    const std::string shortAscii = "solid s\nendsolid s\n";
    std::string count84 = std::string(80, 'a') + std::string("\x01\x00\x00\x00", 4);
    const Case cases[] = {
        {"ascii", ascii, 1, "", 3},
        {"byte above 126 in the first 150", accented, 0, "Error reading a float\n", 0},
        {"byte above 126 after 150", late, 1, "", 3},
        {"short ascii read as binary", shortAscii, 0, "Error reading a long\n", 0},
        {"short ascii with a count of one and no facet", count84, 0, "Error reading a float\n", 0},
        {"binary header starting with solid", tri.binary("solid t"), 1, "", 3},
        {"count 0", StlWriter().binary(), 1, "", 0},
        {"empty file", "", 0, "Error reading a long\n", 0},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        const Captured c = read_captured(dir.write("t.stl", k.bytes));
        EXPECT_EQ(c.r.result, k.result);
        EXPECT_EQ(c.err, k.err);
        EXPECT_EQ(c.r.mesh.points.size(), 3 * k.points);
    }
}

std::string facet_text(const char* normal, const char* v1, const char* v2, const char* v3) {
    return std::string("facet normal ") + normal + "\nouter loop\nvertex " + v1 + "\nvertex " + v2 + "\nvertex " + v3 +
           "\nendloop\nendfacet\n";
}

TEST_F(StlReaderTest, AcceptsTheAsciiGrammarAsWritten) {
    const std::string pad(160, ' ');  // keeps every file above 150 bytes
    const std::string f1 = facet_text("0 0 1", "0 0 0", "1 0 0", "0 1 0");
    const std::string f2 = facet_text("0 0 -1", "5 5 5", "6 5 5", "5 6 5");
    struct Case {
        const char* name;
        std::string text;
        std::size_t points, faces;
    };
    std::string upper =
        "SOLID X\nFACET NORMAL 0 0 1\nOUTER LOOP\nVERTEX 0 0 0\nVeRtEx 1 0 0\nVERTEX 0 1 0\n"
        "ENDLOOP\nENDFACET\nENDSOLID\n";
    const Case cases[] = {
        {"plain", pad + "\nsolid a\n" + f1 + "endsolid a\n", 3, 1},
        {"keywords in capitals and mixed case", pad + "\n" + upper, 3, 1},
        {"end closes a solid; facets up to the next solid are ignored",
         pad + "\nsolid a\n" + f1 + "end\n" + f2 + "solid b\n" + f2 + "endsolid\n", 6, 2},
        {"lines before the solid and unknown lines inside are ignored",
         pad + "\nhello\nfacet normal 1 1 1\nsolid\ncolor red\n\n \t \n" + f1 + "endsolid\n", 3, 1},
        {"two solids read into one mesh", pad + "\nsolid a\n" + f1 + "endsolid\nsolid b\n" + f1 + f2 + "endsolid\n", 6,
         3},
        {"end of file inside a solid closes it", pad + "\nsolid a\n" + f1, 3, 1},
        {"keyword must be the whole first token", pad + "\nsolid a\nfacets normal 1 1 1\n" + f1 + "endsolidx\n", 3, 1},
        {"tabs and blanks separate tokens", pad + "\n\tsolid\ta\n" + f1 + "\tendsolid\n", 3, 1},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        const Captured c = read_captured(dir.write("g.stl", k.text));
        EXPECT_EQ(c.r.result, 1);
        EXPECT_EQ(c.err, "");
        EXPECT_EQ(c.r.mesh.points.size(), 3 * k.points);
        EXPECT_EQ(c.r.mesh.faces.size(), 4 * k.faces);
    }
}

TEST_F(StlReaderTest, MissingAndUnparsableNumbersAreZero) {
    const std::string text = std::string(160, ' ') + "\nsolid\nfacet normal\nouter\nvertex 1 x 3\nvertex 4\n" +
                             "vertex 7 8 9 10\nendloop\nendfacet\nendsolid\n";
    const Captured c = read_captured(dir.write("n.stl", text));
    ASSERT_EQ(c.r.result, 1);
    EXPECT_EQ(c.r.mesh.points, (std::vector<double>{1, 0, 3, 4, 0, 0, 7, 8, 9}));
    EXPECT_EQ(c.r.mesh.vectors, (std::vector<double>{0, 0, 0}));
}

TEST_F(StlReaderTest, LinesAreReadEightyCharactersAtATime) {
    // The 81st character starts a new line: here it is "vertex ...".
    const std::string pad(160, ' ');
    std::string outer = "outer loop" + std::string(70, ' ');
    ASSERT_EQ(outer.size(), 80u);
    const std::string text = pad + "\nsolid\nfacet normal 0 0 1\n" + outer + "vertex 1 2 3\nvertex 4 5 6\n" +
                             "vertex 7 8 9\nendloop\nendfacet\nendsolid\n";
    Captured c = read_captured(dir.write("l.stl", text));
    ASSERT_EQ(c.r.result, 1);
    EXPECT_EQ(c.r.mesh.points.size(), 9u);

    // A 10,000-character line is 125 lines; none of them is a keyword.
    const std::string longLine = pad + "\nsolid\n" + std::string(10000, 'x') + "\n" +
                                 facet_text("0 0 1", "0 0 0", "1 0 0", "0 1 0") + "endsolid\n";
    c = read_captured(dir.write("long.stl", longLine));
    EXPECT_EQ(c.r.result, 1);
    EXPECT_EQ(c.r.mesh.faces.size(), 4u);
}

TEST_F(StlReaderTest, AsciiErrorsArePrintedThreeTimes) {
    const std::string pad(160, ' ');
    const std::string head = pad + "\nsolid\nfacet normal 0 0 1\n";
    struct Case {
        const char* name;
        std::string rest;
        const char* text;
    };
    const Case cases[] = {
        {"end of file", "outer loop\nvertex 0 0 0\n", "Error reading the facet"},
        {"no outer", "vertex 0 0 0\n", "Error reading the facet - no outer"},
        {"first point", "outer loop\nvertex_ 0 0 0\n", "Error reading the first point of the facet"},
        {"second point", "outer loop\nvertex 0 0 0\n\n", "Error reading the second point of the facet"},
        {"third point", "outer loop\nvertex 0 0 0\nvertex 1 0 0\nendloop\n",
         "Error reading the third point of the facet"},
        {"no endloop", "outer\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendfacet\n",
         "Error reading the facet - no endloop"},
        {"end of file after endloop", "outer\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\n",
         "Error reading the facet"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        const Captured c = read_captured(dir.write("e.stl", head + k.rest));
        EXPECT_EQ(c.r.result, 0);
        const std::string line = std::string(k.text) + "\n";
        EXPECT_EQ(c.err, line + line + line);
    }
}

TEST_F(StlReaderTest, MissingEndfacetRepeatsTheLastErrorText) {
    const std::string text = std::string(160, ' ') + "\nsolid\n" +
                             "facet normal 0 0 1\nouter\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nend\n";
    // In a fresh process the text is empty: three empty lines.
    Captured c = read_captured(dir.write("f.stl", text));
    EXPECT_EQ(c.r.result, 0);
    EXPECT_EQ(c.err, "\n\n\n");
    // After another error its text is printed again.
    read_captured(dir.file("missing.stl"));
    c = read_captured(dir.write("f.stl", text));
    EXPECT_EQ(c.err, "Cannot open input file\nCannot open input file\nCannot open input file\n");
}

TEST_F(StlReaderTest, BadBinaryFilesFailOnceWithTheirText) {
    const StlWriter cube = zortest::stl_cube(1.0f);
    const std::string full = cube.binary();
    struct Case {
        const char* name;
        std::string bytes;
        int result;
        const char* err;
    };
    const Case cases[] = {
        {"count beyond the facets", cube.binary("", 13), 0, "Error reading a float\n"},
        {"last facet without its attribute", full.substr(0, full.size() - 1), 0, "Error reading a short\n"},
        {"last facet cut in a float", full.substr(0, full.size() - 7), 0, "Error reading a float\n"},
        {"header only", full.substr(0, 82), 0, "Error reading a long\n"},
        {"count 4,000,000,000 (negative as signed)", StlWriter().binary("", 4000000000u) + std::string(16, 'x'), 1, ""},
        {"count 2,000,000,000 in a 100-byte file", StlWriter().binary("", 2000000000u) + std::string(16, 'x'), 0,
         "Error reading a float\n"},
        {"bytes after the last facet", full + "trailing", 1, ""},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        const Captured c = read_captured(dir.write("b.stl", k.bytes));
        EXPECT_EQ(c.r.result, k.result);
        EXPECT_EQ(c.err, k.err);
    }
}

TEST_F(StlReaderTest, UnopenableFilesFailWithCannotOpen) {
    for (const std::string& path : {dir.file("absent.stl"), dir.path()}) {
        SCOPED_TRACE(path);
        const Captured c = read_captured(path);
        EXPECT_EQ(c.r.result, 0);
        EXPECT_EQ(c.err, "Cannot open input file\n");
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(StlFile(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 1, 1), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Cannot open input file\n");
}

TEST_F(StlReaderTest, NullOutputsAreReadAndDropped) {
    std::string path = dir.write("c.stl", zortest::stl_cube(1.0f).binary());
    unsigned int faces = 0;
    EXPECT_EQ(StlFile(path.data(), nullptr, nullptr, nullptr, nullptr, &faces, nullptr, 1, 1), 1);
    EXPECT_EQ(faces, 12u);
}

TEST_F(StlReaderTest, NanAndInfiniteCoordinatesAreKeptAndNeverMerged) {
    const float inf = INFINITY;
    const StlWriter w = StlWriter()
                            .facet(0, 0, 1, NAN, 0, 0, inf, 0, 0, -inf, 0, 0)
                            .facet(0, 0, 1, NAN, 0, 0, inf, 0, 0, 1, 2, 3)
                            .facet(0, 0, 1, 1, 2, 3, 4, 5, 6, 1, 2, 3);
    const Captured c = read_captured(dir.write("nan.stl", w.binary()));
    ASSERT_EQ(c.r.result, 1);
    // NaN and infinite points compare unequal even to themselves.
    EXPECT_EQ(c.r.mesh.points.size(), 3u * 7);
    EXPECT_TRUE(std::isnan(c.r.mesh.points[0]));
    EXPECT_EQ(std::vector<unsigned int>(c.r.mesh.faces.begin() + 8, c.r.mesh.faces.end()),
              (std::vector<unsigned int>{5, 6, 5, 0}));
}

std::string random_token(std::mt19937& rng) {
    static const std::vector<std::string> parts = {"",
                                                   "+",
                                                   "-",
                                                   "0",
                                                   "1",
                                                   "9",
                                                   "12345678901234567890",
                                                   ".",
                                                   "e",
                                                   "E",
                                                   "e+",
                                                   "e-",
                                                   "38",
                                                   "39",
                                                   "45",
                                                   "-46",
                                                   "x",
                                                   "0x",
                                                   "0X1.8p3",
                                                   "p",
                                                   "inf",
                                                   "INF",
                                                   "infinity",
                                                   "nan",
                                                   "NaN(12)",
                                                   "nan(",
                                                   "abc",
                                                   "\v",
                                                   "\f",
                                                   "1e",
                                                   "00",
                                                   "7e-39",
                                                   "3.4028235e38",
                                                   "3.4028236e38",
                                                   "1.17549435e-38",
                                                   "1.4e-45",
                                                   "0.1",
                                                   "2.5",
                                                   "1,5",
                                                   "f"};
    std::string t;
    const int n = 1 + static_cast<int>(rng() % 5);
    for (int i = 0; i < n; ++i) t += parts[rng() % parts.size()];
    return t;
}

TEST(StlNumberTest, TokensConvertAsPercentF) {
    std::mt19937 rng(2024);
    std::uniform_real_distribution<double> mag(-50, 50);
    auto check = [](const std::string& t) {
        float expected = 12345.0f, ours = 12345.0f;
        const bool ok = std::sscanf(t.c_str(), "%f", &expected) == 1;
        EXPECT_EQ(zor::scan_float(t.data(), t.size(), ours), ok) << "token " << t;
        if (ok) {
            EXPECT_EQ(std::memcmp(&expected, &ours, sizeof ours), 0) << "token " << t;
        }
    };
    for (int i = 0; i < 200000; ++i) check(random_token(rng));
    char buf[64];
    for (int i = 0; i < 200000; ++i) {
        const double v = std::pow(10.0, mag(rng)) * (rng() % 2 ? 1 : -1);
        std::snprintf(buf, sizeof buf, i % 3 == 0 ? "%.9e" : i % 3 == 1 ? "%.17g" : "%.6f", v);
        check(buf);
        // Halfway cases between two floats, written exactly.
        const float f = static_cast<float>(v);
        std::snprintf(buf, sizeof buf, "%.40g", (static_cast<double>(f) + std::nextafter(f, INFINITY)) / 2);
        check(buf);
    }
}

}  // namespace
