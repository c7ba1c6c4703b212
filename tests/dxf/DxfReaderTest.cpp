#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "dxf/DxfParse.h"
#include "dxf/DxfReader.h"
#include "profile/MWZORProfile.h"
#include "support/DxfWriter.h"
#include "support/TempDir.h"

namespace {

using zortest::DxfWriter;
using zortest::TempDir;

// Paths of a ReadDxf result up to its empty terminator.
std::vector<std::string> names_of(const CString* names) {
    std::vector<std::string> out;
    for (int i = 0; !names[i].IsEmpty(); ++i) out.push_back(names[i].GetString());
    return out;
}

struct Names {
    CString* p;
    explicit Names(CString* names) : p(names) {}
    ~Names() { Delete_Names(p, 0); }
};

// Layer names and entity counts of a parse.
std::vector<std::pair<std::string, int>> layers_of(const std::string& text, bool* found = nullptr) {
    zor::DxfDrawing drawing;
    bool ok = zor::parse_dxf(text, drawing);
    if (found != nullptr) *found = ok;
    std::vector<std::pair<std::string, int>> out;
    for (const auto& layer : drawing.layers) out.emplace_back(layer->m_name.GetString(), layer->GetCount());
    return out;
}

// Type codes of a written profile ("1" line, "2" CLW, "3" CCLW) and its points.
std::string types_of(const CMWZORSegmentArray& p) {
    std::string out;
    for (long long i = 0; i < p.m_segments.GetSize(); ++i) out += std::to_string(p.m_segments[i]->m_type);
    return out;
}

const CMWZORPoint& end_of(const CMWZORSegmentArray& p, long long i) {
    const CMWZORSegment* s = p.m_segments[i];
    return *s->m_points[s->m_points.GetSize() - 1];
}

using Layers = std::vector<std::pair<std::string, int>>;

TEST(DxfReader, LayersInOrderOfFirstAppearanceGetTheirOwnFiles) {
    TempDir dir;
    std::string dxf = dir.write(
        "d.dxf",
        DxfWriter().Line(0, 0, 1, 0, "A").Line(0, 0, 1, 0, "B").Line(1, 0, 0, 0, "A").Line(0, 0, 1, 0, "C").Text());
    Names r(ReadDxf(dxf.c_str(), dir.file("prof.ext").c_str(), 1, 0, false));
    ASSERT_NE(r.p, nullptr);
    EXPECT_EQ(names_of(r.p),
              (std::vector<std::string>{dir.file("prof_Layer_Name_A.ext"), dir.file("prof_Layer_Name_B.ext"),
                                        dir.file("prof_Layer_Name_C.ext")}));
    CMWZORExtrude a;
    ASSERT_TRUE(a.ResadFile(dir.file("prof_Layer_Name_A.ext").c_str(), 1));
    EXPECT_EQ(types_of(a), "111");  // the two lines of A, closed
    EXPECT_FALSE(std::filesystem::exists(dir.file("prof.ext")));
}

TEST(DxfReader, OneLayerWritesOutPathItselfInTheGivenUnit) {
    TempDir dir;
    std::string dxf = dir.write("d.dxf", DxfWriter().Line(0, 0, 10, 0, "Only").Line(10, 0, 0, 0, "only").Text());
    for (bool sweep : {false, true}) {
        SCOPED_TRACE(sweep);
        std::string out = dir.file(sweep ? "p.swp" : "p.ext");
        Names r(ReadDxf(dxf.c_str(), out.c_str(), 2, 0, sweep));
        ASSERT_NE(r.p, nullptr);
        EXPECT_EQ(names_of(r.p), std::vector<std::string>{out});
        const std::string body =
            "Unit < 2 >\nToler < 0.005000 >\nLINE < 0.000000 0.000000 0.000000 >\n"
            "LINE < 10.000000 0.000000 0.000000 >\nLINE < 0.000000 0.000000 0.000000 >\n";
        EXPECT_EQ(zortest::read_file(out), sweep
                                               ? "KOLP SWEEP FILE\nVersion < 1 >\n" + body
                                               : "KOLP EXTRUDE FILE\nVersion < 1 >\nZ < 0.000000 1.000000 >\n" + body);
    }
}

TEST(DxfReader, NoLayerNamedWritesNothingAndReturnsNone) {
    TempDir dir;
    const struct {
        const char* name;
        std::string text;
        const char* result;
    } cases[] = {
        {"no group 8", DxfWriter().Line(0, 0, 1, 0, "").Arc(0, 0, 1, 0, 90, "").Text(), "none"},
        {"layer none in capitals", DxfWriter().Line(0, 0, 1, 0, "NONE").Text(), "NONE"},
        {"only circles", DxfWriter().Circle(0, 0, 1, "A").Text(), "none"},
        {"lower-case keywords", DxfWriter().Raw("  0").Raw("line").Group(8, "A").Text(), "none"},
        {"ENTITIES at the very end", "0\nSECTION\n2\nENTITIES", "none"},
        {"group code without value", "0\nSECTION\n2\nENTITIES\n0\nLINE\n8", "none"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string dxf = dir.write("d.dxf", c.text);
        Names r(ReadDxf(dxf.c_str(), dir.file("p.ext").c_str(), 1, 0, false));
        ASSERT_NE(r.p, nullptr);
        EXPECT_EQ(r.p[0], c.result);
        EXPECT_FALSE(std::filesystem::exists(dir.file("p.ext")));
    }
}

TEST(DxfReader, UnopenableDrawingOrNoEntitiesGivesNull) {
    TempDir dir;
    EXPECT_EQ(ReadDxf(dir.file("missing.dxf").c_str(), dir.file("p.ext").c_str(), 1, 0, false), nullptr);
    for (std::string text : {std::string(), std::string("0\nSECTION\n2\nHEADER\n0\nENDSEC\n0\nEOF\n"),
                             std::string("0\nSECTION\n2\n\0ENTITIES\n0\nLINE\n", 27)}) {
        std::string dxf = dir.write("d.dxf", text);
        EXPECT_EQ(ReadDxf(dxf.c_str(), dir.file("p.ext").c_str(), 1, 0, false), nullptr) << text.size();
    }
    Delete_Names(nullptr, 0);
}

TEST(DxfReader, TwoLoopsOnALayerWriteTheLoopThroughItsFirstEntity) {
    TempDir dir;
    DxfWriter w;
    w.Line(6, 6, 5, 6, "L");  // second loop's top edge comes first
    w.Line(0, 0, 1, 0, "L").Line(1, 0, 1, 1, "L").Line(1, 1, 0, 1, "L").Line(0, 1, 0, 0, "L");
    w.Line(5, 5, 6, 5, "L").Line(5, 6, 5, 5, "L").Line(6, 5, 6, 6, "L");
    std::string dxf = dir.write("d.dxf", w.Text());
    Names r(ReadDxf(dxf.c_str(), dir.file("p.ext").c_str(), 1, 0, false));
    CMWZORExtrude p;
    ASSERT_TRUE(p.ResadFile(dir.file("p.ext").c_str(), 1));
    ASSERT_EQ(types_of(p), "11111");
    const double want[5][2] = {{6, 6}, {5, 6}, {5, 5}, {6, 5}, {6, 6}};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(end_of(p, i).x, want[i][0]) << i;
        EXPECT_EQ(end_of(p, i).y, want[i][1]) << i;
    }
}

TEST(DxfReader, ArcsAreWrittenBySenseAndArcFirstChainsDropTheirLines) {
    TempDir dir;
    const struct {
        const char* name;
        DxfWriter drawing;
        std::string types;
        double arcEndX;  // end of the arc segment as written
    } cases[] = {
        // Entered from its end point (0, 10): clockwise back to (10, 0).
        {"entered at end", DxfWriter().Line(0, 0, 0, 10).Arc(0, 0, 10, 0, 90).Line(10, 0, 0, 0), "1121", 10.0},
        {"entered at start", DxfWriter().Line(0, 0, 10, 0).Arc(0, 0, 10, 0, 90).Line(0, 10, 0, 0), "1131", 0.0},
        // A chain that begins with an arc keeps only its arcs.
        {"arc first", DxfWriter().Arc(0, 0, 10, 0, 90).Line(0, 10, 0, 0).Line(0, 0, 10, 0), "13", 0.0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string dxf = dir.write("d.dxf", c.drawing.Text());
        Names r(ReadDxf(dxf.c_str(), dir.file("p.ext").c_str(), 1, 0, false));
        CMWZORExtrude p;
        ASSERT_TRUE(p.ResadFile(dir.file("p.ext").c_str(), 1));
        ASSERT_EQ(types_of(p), c.types);
        const long long arc = c.types.find_first_of("23");
        EXPECT_NEAR(end_of(p, arc).x, c.arcEndX, 1e-6);
        EXPECT_EQ(p.m_segments[arc]->m_points[0]->x, 0.0);  // centre
    }
}

TEST(DxfReader, TokensAndGroupCodes) {
    const struct {
        const char* name;
        std::string text;
        Layers layers;
    } cases[] = {
        {"case-folded names join the first spelling",
         DxfWriter().Line(0, 0, 1, 0, "Alpha").Line(0, 0, 1, 0, "Beta").Line(0, 0, 1, 0, "ALPHA").Text(),
         {{"Alpha", 2}, {"Beta", 1}}},
        {"entities before the first group 8 join the first named layer",
         DxfWriter().Line(0, 0, 1, 0, "").Arc(0, 0, 1, 0, 9, "").Line(0, 0, 1, 0, "First").Text(),
         {{"First", 3}}},
        {"a layer literally named none after a named one",
         DxfWriter().Line(0, 0, 1, 0, "A").Line(0, 0, 1, 0, "none").Line(0, 0, 1, 0, "B").Text(),
         {{"A", 1}, {"none", 1}, {"B", 1}}},
        {"value with blanks is cut", DxfWriter().Line(0, 0, 1, 0, "Sketch Geometry (ANSI)").Text(), {{"Sketch", 1}}},
        {"tab before a value and CR LF line ends",
         DxfWriter({true, false, false}).Group(0, "LINE").Group(8, "\tT").Group(10, "\t1").Text(),
         {{"T", 0}}},
        {"sections and handles before ENTITIES",
         DxfWriter({false, true, true}).Line(0, 0, 1, 0, "E").Arc(0, 0, 1, 0, 9, "E").Text(),
         {{"E", 2}}},
        {"handle value 8 is skipped", DxfWriter().Raw("0").Raw("LINE").Group(5, "8").Group(8, "H").Text(), {{"H", 0}}},
        {"an unknown code's value is read as a code",
         DxfWriter().Raw("0").Raw("LINE").Group(62, "8").Raw("V").Text(),
         {{"V", 0}}},
        {"lower-case and longer keywords are no entities",
         DxfWriter().Raw("line").Group(8, "A").Raw("arc").Group(8, "B").Raw("LINEAR").Group(8, "C").Raw("LINE").Text(),
         {}},
        {"LINE without 31 is dropped at the next entity",
         DxfWriter().Raw("0").Raw("LINE").Group(8, "A").Group(10, "1").Line(0, 0, 1, 0, "A").Text(),
         {{"A", 1}}},
        {"ARC without 51 is never added",
         DxfWriter().Raw("0").Raw("ARC").Group(8, "A").Group(40, "1").Group(50, "0").Text(),
         {{"A", 0}}},
        {"non-numeric codes", DxfWriter().Raw("0").Raw("LINE").Raw("x8").Raw("8").Raw("N").Text(), {{"N", 0}}},
        {"NUL byte ends the drawing",
         DxfWriter().Line(0, 0, 1, 0, "A").Text() + std::string(1, '\0') + DxfWriter().Line(0, 0, 1, 0, "B").Text(),
         {{"A", 1}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(layers_of(c.text), c.layers);
    }
}

TEST(DxfReader, LongLayerNameIsKeptAndItsFileFailsQuietly) {
    TempDir dir;
    const std::string name(10000, 'n');
    std::string dxf = dir.write("d.dxf", DxfWriter().Line(0, 0, 1, 0, name).Line(0, 0, 1, 0, "B").Text());
    Names r(ReadDxf(dxf.c_str(), dir.file("p.ext").c_str(), 1, 0, false));
    ASSERT_NE(r.p, nullptr);
    auto names = names_of(r.p);
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0], dir.file("p_Layer_Name_" + name + ".ext"));
    EXPECT_TRUE(std::filesystem::exists(dir.file("p_Layer_Name_B.ext")));
}

// Every prefix of a drawing, at the end of its own allocation, parses,
// chains and builds its profile without reading past it; entities only
// ever appear as the prefix grows.
TEST(DxfReader, TruncationSweep) {
    const std::string full = DxfWriter({true, true, true})
                                 .Line(0, 0, 10, 0, "A")
                                 .Arc(10, 5, 5, -90, 90, "A")
                                 .Line(10, 10, 0, 10, "B")
                                 .Line(10, 10, 0, 0, "A")
                                 .Text();
    int previous = 0;
    for (size_t n = 0; n <= full.size(); ++n) {
        std::vector<char> bytes(full.begin(), full.begin() + static_cast<long>(n));
        zor::DxfDrawing drawing;
        zor::parse_dxf(std::string_view(bytes.data(), bytes.size()), drawing);
        int entities = 0;
        for (const auto& layer : drawing.layers) {
            entities += layer->GetCount();
            zor::LayerContours contours(*layer);
            CMWZORSweep profile;
            contours.AppendFirstChain(profile);
        }
        ASSERT_GE(entities, previous) << n;
        previous = entities;
    }
    EXPECT_EQ(previous, 4);
}

// The third-party drawings that hold LINE or ARC entities: layers, entity
// counts and the profile written for the first layer.
TEST(DxfReader, CorpusDrawings) {
    const std::string folder = std::string(ZOR_CORPUS_DIR) + "/dxf/";
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no corpus at " << folder;
    const struct {
        const char* file;
        Layers layers;
        std::string firstProfile;
    } cases[] = {
        // Its LINEs give 11 and 21 before 20 and 30: both points come out equal.
        {"ezdxf_AC1003_LINE_Example.dxf", {{"1", 22}}, "11"},
        {"ezdxf_empty_handles.dxf", {{"GEOMETRY-CUTTING", 4}, {"GEOMETRY-ENGRAVING", 4}}, "11111"},
        {"ezdxf_issue1106.dxf", {{"0", 7}}, "133"},
        {"skymakerolof-dxf_issue42.dxf", {{"0", 16}}, "13"},
        // LINEs without 30 and 31 are never complete.
        {"skymakerolof-dxf_openscad_export.dxf", {{"0", 0}}, ""},
        {"cadquery_gear.dxf", {{"0", 32}}, "13"},
        {"trimesh_1002_tray_bottom.DXF", {{"0", 24}}, "13333"},
        {"trimesh_ae.r2010a.dxf", {{"0", 12}}, "13"},
        {"trimesh_single_arc.dxf", {{"0", 4}}, "13"},
        {"trimesh_wrench.dxf", {{"Sketch", 39}}, "111311311211311111111111"},
        {"ixmilia_bare.dxf", {}, ""},
        {"cadquery_three_layers.dxf", {}, ""},
    };
    TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string text = zortest::read_file(folder + c.file);
        ASSERT_FALSE(text.empty());
        bool found = false;
        EXPECT_EQ(layers_of(text, &found), c.layers);
        EXPECT_TRUE(found);
        Names r(ReadDxf((folder + c.file).c_str(), dir.file("p.ext").c_str(), 1, 0, false));
        ASSERT_NE(r.p, nullptr);
        if (c.layers.empty()) {
            EXPECT_EQ(r.p[0], "none");
            continue;
        }
        CMWZORExtrude p;
        ASSERT_TRUE(p.ResadFile(r.p[0], 1));
        EXPECT_EQ(types_of(p), c.firstProfile);
    }
    // A binary drawing has a NUL byte before any ENTITIES token.
    EXPECT_EQ(ReadDxf((folder + "ezdxf_bin_dxf_r12.dxf").c_str(), dir.file("p.ext").c_str(), 1, 0, false), nullptr);
}

}  // namespace
