#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "dxf/DxfEntities.h"
#include "dxf/DxfParse.h"
#include "dxf/DxfReader.h"
#include "profile/MWZORProfile.h"
#include "support/DxfWriter.h"
#include "support/TempDir.h"

namespace {

using zortest::DxfWriter;
using zortest::TempDir;
using Strings = std::vector<std::string>;
using Layers = std::vector<std::pair<std::string, int>>;

// ReadDxf's result as paths, "null" for a null result. The one-element result
// (a layer name, not a path under out's folder) has no terminator.
Strings read_dxf(const std::string& drawing, const std::string& out, unsigned unit = 1, bool sweep = false) {
    CString* names = ReadDxf(drawing.c_str(), out.c_str(), unit, 0, sweep);
    if (names == nullptr) return {"null"};
    Strings paths{names[0].GetString()};
    for (int i = 1; paths[0][0] == '/' && !names[i].IsEmpty(); ++i) paths.push_back(names[i].GetString());
    Delete_Names(names, 0);
    return paths;
}

// One line on each layer given, in order.
std::string on(std::initializer_list<std::string> layers) {
    DxfWriter w;
    for (const std::string& layer : layers) w.Line(0, 0, 1, 0, layer);
    return w.Text();
}

// Layer names and entity counts of a parse.
Layers layers_of(const std::string& text) {
    zor::DxfDrawing drawing;
    zor::parse_dxf(text, drawing);
    Layers out;
    for (const auto& layer : drawing.layers) out.emplace_back(layer->m_name.GetString(), layer->GetCount());
    return out;
}

// A written extrusion's segment types ("1" line, "2" CLW, "3" CCLW), with
// points each type and end point, and an arc's centre after "c".
std::string profile_of(const std::string& path, bool points = false) {
    CMWZORExtrude p;
    if (!p.ResadFile(path.c_str(), 1)) return "unreadable";
    auto xy = [](const CMWZORPoint* q) {
        char text[64];
        std::snprintf(text, sizeof text, "%g,%g", std::round(q->x * 1e6) / 1e6 + 0.0,
                      std::round(q->y * 1e6) / 1e6 + 0.0);
        return std::string(text);
    };
    std::string out;
    for (long long i = 0; i < p.m_segments.GetSize(); ++i) {
        const CMWZORSegment& s = *p.m_segments[i];
        out += std::to_string(s.m_type);
        if (points)
            out += " " + xy(s.m_points[s.m_points.GetSize() - 1]) +
                   (s.m_type == IO_LINE ? "" : " c" + xy(s.m_points[0])) + "|";
    }
    return out;
}

// Lines from x0 y0 x1 y1 quadruples.
DxfWriter lines(std::vector<double> v) {
    DxfWriter w;
    for (size_t i = 0; i + 3 < v.size(); i += 4) w.Line(v[i], v[i + 1], v[i + 2], v[i + 3]);
    return w;
}

void make_arc(zor::Dxf_Arc& arc, double radius, double start, double end) {
    arc.SetFirst(1, 2, 0);
    arc.SetRadius(radius);
    arc.SetStartAngle(start);
    arc.SetEndAngle(end);
    arc.ComputeEndPoints();
}

TEST(DxfEntities, ArcEndPointsUseSinglePrecisionTrigAndDirectionFollowsTheLargerAngle) {
    zor::Dxf_Arc arc;
    make_arc(arc, 10, 0, 90);
    EXPECT_EQ(std::vector<double>(arc.GetStart(), arc.GetStart() + 3), std::vector<double>({11, 2, 0}));
    // 1 + 10 * float(cos 90 degrees)
    EXPECT_EQ(std::vector<double>(arc.GetEnd(), arc.GetEnd() + 3), std::vector<double>({0.9999999999999962, 12, 0}));
    make_arc(arc, 1000, 30, 30);
    EXPECT_EQ(arc.GetStart()[0], 1 + 866.0253882408142);  // not 866.0254037844386
    EXPECT_EQ(arc.GetDirection(), 1);                     // equal angles leave it
    const double cases[][3] = {{350, 10, -1}, {10, 350, 1}, {-90, 0, 1}, {0, -0.5, -1}, {7, 7, 0}};
    for (const auto& c : cases) {
        zor::Dxf_Arc fresh;
        make_arc(fresh, 1, c[0], c[1]);
        EXPECT_EQ(fresh.GetDirection(), c[2]) << c[0] << " to " << c[1];
    }
}

// Entities come from pools that reuse freed places: live ones never share
// memory, through frees in any order and a pool emptied and started again.
TEST(DxfEntities, PooledEntitiesKeepTheirOwnValues) {
    std::mt19937 rng(3);
    std::vector<std::pair<CObject*, double>> live;
    using zor::Dxf_Line;
    auto value_of = [](const CObject* e) {
        return e->IsKindOf(RUNTIME_CLASS(Dxf_Line)) ? static_cast<const Dxf_Line*>(e)->m_end[2]
                                                    : static_cast<const zor::Dxf_Arc*>(e)->m_endAngle;
    };
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 20000; ++i) {
            const double v = i + 0.25 * round;
            if (rng() % 2) {
                auto* line = new zor::Dxf_Line;
                line->SetSecond(0, 0, v);
                live.emplace_back(line, v);
            } else {
                auto* arc = new zor::Dxf_Arc;
                arc->SetEndAngle(v);
                live.emplace_back(arc, v);
            }
            if (rng() % 3 == 0) {  // free one at random
                const size_t k = rng() % live.size();
                delete live[k].first;
                live[k] = live.back();
                live.pop_back();
            }
        }
        for (const auto& [entity, v] : live) ASSERT_EQ(value_of(entity), v);
        for (const auto& entry : live) delete entry.first;
        live.clear();
    }
}

TEST(DxfReader, WritesOneFileForEachLayerOrOutPathItselfForOne) {
    TempDir dir;
    const std::string longName(10000, 'n');
    const struct {
        std::string drawing;
        Strings files;
        std::string firstProfile;
    } cases[] = {
        {on({"A", "B", "A", "C"}), {"p_Layer_Name_A.ext", "p_Layer_Name_B.ext", "p_Layer_Name_C.ext"}, "111"},
        // The long name's file cannot be made, which fails quietly.
        {on({longName, "B"}), {"p_Layer_Name_" + longName + ".ext", "p_Layer_Name_B.ext"}, "unreadable"},
        {on({"Only", "only"}), {"p.ext"}, "111"},
    };
    for (const auto& c : cases) {
        Strings paths;
        for (const std::string& file : c.files) paths.push_back(dir.file(file));
        EXPECT_EQ(read_dxf(dir.write("d.dxf", c.drawing), dir.file("p.ext")), paths);
        EXPECT_EQ(profile_of(paths[0]), c.firstProfile);
        EXPECT_EQ(std::filesystem::exists(dir.file("p.ext")), paths.size() == 1);
    }
    // Layer names never take a file out of out's folder, even where the
    // folder that "p_Layer_Name_/../../escaped.ext" needs exists.
    std::filesystem::create_directories(dir.file("a/b/p_Layer_Name_"));
    EXPECT_EQ(read_dxf(dir.write("d.dxf", on({"/../../escaped", "..\\x", "B"})), dir.file("a/b/p.ext")),
              Strings({dir.file("a/b/p_Layer_Name__.._.._escaped.ext"), dir.file("a/b/p_Layer_Name_.._x.ext"),
                       dir.file("a/b/p_Layer_Name_B.ext")}));
    EXPECT_FALSE(std::filesystem::exists(dir.file("a/escaped.ext")));
    EXPECT_EQ(profile_of(dir.file("a/b/p_Layer_Name__.._.._escaped.ext")), "11");
    for (bool sweep : {false, true}) {
        read_dxf(dir.write("d.dxf", on({"Only"})), dir.file("p.ext"), 2, sweep);
        const std::string text = zortest::read_file(dir.file("p.ext"));
        EXPECT_EQ(text.substr(0, 12), sweep ? "KOLP SWEEP F" : "KOLP EXTRUDE");
        EXPECT_NE(text.find("\nUnit < 2 >\n"), std::string::npos);
    }
}

TEST(DxfReader, WritesTheChainThroughTheFirstEntityWithArcsBySense) {
    TempDir dir;
    const struct {
        DxfWriter drawing;
        std::string profile;
    } cases[] = {
        // Two loops, an edge of the second one first.
        {lines({6, 6, 5, 6, 0, 0, 1, 0, 1, 0, 1, 1, 1, 1, 0, 1, 0, 1, 0, 0, 5, 5, 6, 5, 5, 6, 5, 5, 6, 5, 6, 6}),
         "1 6,6|1 5,6|1 5,5|1 6,5|1 6,6|"},
        // Entered from its end point (0, 10): clockwise back to (10, 0).
        {DxfWriter().Line(0, 0, 0, 10).Arc(0, 0, 10, 0, 90).Line(10, 0, 0, 0), "1 0,0|1 0,10|2 10,0 c0,0|1 0,0|"},
        // Entered from its start point (10, 0): counter-clockwise.
        {DxfWriter().Line(0, 0, 10, 0).Arc(0, 0, 10, 0, 90).Line(0, 10, 0, 0), "1 0,0|1 10,0|3 0,10 c0,0|1 0,0|"},
        // A chain that begins with an arc keeps only its arcs.
        {DxfWriter().Arc(0, 0, 10, 0, 90).Line(0, 10, 0, 0).Line(0, 0, 10, 0), "1 10,0|3 0,10 c0,0|"},
    };
    for (const auto& c : cases) {
        read_dxf(dir.write("d.dxf", c.drawing.Text()), dir.file("p.ext"));
        EXPECT_EQ(profile_of(dir.file("p.ext"), true), c.profile);
    }
}

TEST(DxfReader, LayerFileNamesStayInTheOutputFolder) {
    const char* cases[][3] = {
        // outPath, layer name, file written
        {"/o/prof.ext", "L1", "/o/prof_Layer_Name_L1.ext"},
        {"/o/p.ext", "Sketch 2-a_b", "/o/p_Layer_Name_Sketch 2-a_b.ext"},
        {"/o/p.ext", "Layer.1", "/o/p_Layer_Name_Layer.1.ext"},
        {"/o/p.ext", "..", "/o/p_Layer_Name_...ext"},
        {"/o/p.ext", "/../../x", "/o/p_Layer_Name__.._.._x.ext"},
        {"C:\\o\\p.ext", "a\\..\\b/", "C:\\o\\p_Layer_Name_a_.._b_.ext"},
        // Without an extension the name would go into a folder's name.
        {"/o/a/b", "L", "/o/a/_Layer_Name_Lb"},
        {"o\\..", "L", "o\\_Layer_Name_L.."},
        {"ab", "L", "_Layer_Name_Lab"},
    };
    for (const auto& c : cases) EXPECT_EQ(zor::layer_path(c[0], c[1]).GetString(), std::string(c[2])) << c[1];
}

// Layers and entity counts a drawing's text gives, and for those without
// layers, ReadDxf's one name ("none" or the last group 8 value) or its null.
TEST(DxfReader, TokensGroupCodesAndLayerRules) {
    TempDir dir;
    const struct {
        const char* name;
        std::string text;
        Layers layers;
        const char* result = nullptr;
    } cases[] = {
        {"no group 8", DxfWriter().Line(0, 0, 1, 0, "").Arc(0, 0, 1, 0, 90, "").Text(), {}, "none"},
        {"layer none in capitals", on({"NONE"}), {}, "NONE"},
        {"only circles", DxfWriter().Circle(0, 0, 1, "A").Text(), {}, "none"},
        {"ENTITIES at the very end", "0\nSECTION\n2\nENTITIES", {}, "none"},
        {"group code without value", "0\nSECTION\n2\nENTITIES\n0\nLINE\n8", {}, "none"},
        {"empty file", "", {}, "null"},
        {"no ENTITIES", "0\nSECTION\n2\nHEADER\n0\nENDSEC\n0\nEOF\n", {}, "null"},
        {"NUL byte before ENTITIES", std::string("0\nSECTION\n2\n\0ENTITIES\n0\nLINE\n", 27), {}, "null"},
        {"names folded to the first spelling", on({"Alpha", "Beta", "ALPHA"}), {{"Alpha", 2}, {"Beta", 1}}},
        {"entities before any 8 join the first layer", on({"", "", "First"}), {{"First", 3}}},
        // A layer called "none" takes the next name met, or joins the layer of
        // that name; it stays itself only when the drawing ends on it.
        {"a layer named none after a named one", on({"A", "none", "B"}), {{"A", 1}, {"B", 2}}},
        {"none between two of the same name", on({"A", "B", "none", "None", "a", "B"}), {{"A", 4}, {"B", 2}}},
        {"none renamed, then none again", on({"A", "none", "B", "none"}), {{"A", 1}, {"B", 2}, {"none", 1}}},
        {"value with blanks is cut", on({"Sketch Geometry (ANSI)"}), {{"Sketch", 1}}},
        {"tab before a value, CR LF", DxfWriter({true}).Raw("0\r\nLINE\r\n8\r\n\tT\r\n10\r\n\t1").Text(), {{"T", 0}}},
        {"sections, handles",
         DxfWriter({false, true, true}).Line(0, 0, 1, 0, "E").Arc(0, 0, 1, 0, 9, "E").Text(),
         {{"E", 2}}},
        {"handle value 8 is skipped", DxfWriter().Raw("0\nLINE\n5\n8\n8\nH").Text(), {{"H", 0}}},
        {"unknown code's value read as a code", DxfWriter().Raw("0\nLINE\n62\n8\nV").Text(), {{"V", 0}}},
        {"lower-case or longer keywords", DxfWriter().Raw("line\n8\nA\narc\n8\nB\nLINEAR\n8\nC\nLINE").Text(), {}},
        {"LINE without 31", DxfWriter().Raw("0\nLINE\n8\nA\n10\n1").Line(0, 0, 1, 0, "A").Text(), {{"A", 1}}},
        {"ARC without 51", DxfWriter().Raw("0\nARC\n8\nA\n40\n1\n50\n0").Text(), {{"A", 0}}},
        {"non-numeric codes", DxfWriter().Raw("0\nLINE\nx8\n8\nN").Text(), {{"N", 0}}},
        {"NUL byte ends the drawing", on({"A"}) + std::string(1, '\0') + on({"B"}), {{"A", 1}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(layers_of(c.text), c.layers);
        if (c.result == nullptr) continue;
        EXPECT_EQ(read_dxf(dir.write("d.dxf", c.text), dir.file("p.ext")), Strings{c.result});
        EXPECT_FALSE(std::filesystem::exists(dir.file("p.ext")));
    }
    EXPECT_EQ(read_dxf(dir.file("missing.dxf"), dir.file("p.ext")), Strings{"null"});
    Delete_Names(nullptr, 0);
}

// Every prefix of a drawing, at the end of its own allocation, parses, chains
// and builds its profile without reading past it; entities only ever appear
// as the prefix grows.
TEST(DxfReader, TruncationSweep) {
    DxfWriter w({true, true, true});
    w.Line(0, 0, 10, 0, "A").Arc(10, 5, 5, -90, 90, "A").Line(10, 10, 0, 10, "B").Line(10, 10, 0, 0, "A");
    const std::string full = w.Text();
    int previous = 0;
    for (size_t n = 0; n <= full.size(); ++n) {
        std::vector<char> bytes(full.begin(), full.begin() + static_cast<long>(n));
        zor::DxfDrawing drawing;
        zor::parse_dxf(std::string_view(bytes.data(), bytes.size()), drawing);
        int entities = 0;
        for (const auto& layer : drawing.layers) {
            entities += layer->GetCount();
            CMWZORSweep profile;
            zor::LayerContours(*layer).AppendFirstChain(profile);
        }
        ASSERT_GE(entities, previous) << n;
        previous = entities;
    }
    EXPECT_EQ(previous, 4);
}

// ReadDxf writes each layer's text without building the profile: the files
// are byte for byte what the profile classes write from the same chain.
TEST(DxfReader, WritesWhatTheProfileClassesWrite) {
    DxfWriter mixed({true, true, true});
    mixed.Line(0, 0, 10, 0, "A").Arc(10, 5, 5, -90, 90, "A").Line(0, 10, 10, 10, "A").Line(0, 0, 0, 10, "A");
    mixed.Arc(0, 0, 1e7, 0, 45, "B").Line(-3.25e-7, 1.5, 2, 2, "B").Arc(1, 1, 0.5, 180, 0, "C");
    std::vector<std::string> drawings = {mixed.Text()};
    const std::string folder = std::string(ZOR_CORPUS_DIR) + "/dxf/";
    for (const char* file : {"trimesh_wrench.dxf", "trimesh_1002_tray_bottom.DXF", "ezdxf_empty_handles.dxf"})
        if (std::filesystem::exists(folder + file)) drawings.push_back(zortest::read_file(folder + file));
    TempDir dir;
    for (const std::string& text : drawings) {
        zor::DxfDrawing drawing;
        ASSERT_TRUE(zor::parse_dxf(text, drawing));
        for (unsigned unit : {1u, 2u, 7u}) {
            for (bool sweep : {false, true}) {
                SCOPED_TRACE(std::to_string(unit) + (sweep ? " sweep" : " extrude"));
                for (const auto& layer : drawing.layers) {
                    zor::write_dxf_layer(*layer, dir.file("direct.ext").c_str(), unit, sweep);
                    zor::LayerContours contours(*layer);
                    if (sweep) {
                        CMWZORSweep profile;
                        profile.SetUnit(static_cast<int>(unit));
                        contours.AppendFirstChain(profile);
                        profile.WriteFile(dir.file("list.ext").c_str());
                    } else {
                        CMWZORExtrude profile;
                        profile.SetUnit(static_cast<int>(unit));
                        contours.AppendFirstChain(profile);
                        profile.WriteFile(dir.file("list.ext").c_str(), 0.0, 1.0);
                    }
                    ASSERT_EQ(zortest::read_file(dir.file("direct.ext")), zortest::read_file(dir.file("list.ext")));
                }
            }
        }
    }
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
        {"ixmilia_bare.dxf", {}, "none"},
        {"cadquery_three_layers.dxf", {}, "none"},
    };
    TempDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        EXPECT_EQ(layers_of(zortest::read_file(folder + c.file)), c.layers);
        const Strings names = read_dxf(folder + c.file, dir.file("p.ext"));
        EXPECT_EQ(c.layers.empty() ? names[0] : profile_of(names[0]), c.firstProfile);
    }
    // A binary drawing has a NUL byte before any ENTITIES token.
    EXPECT_EQ(read_dxf(folder + "ezdxf_bin_dxf_r12.dxf", dir.file("p.ext")), Strings{"null"});
}

}  // namespace
