// Writes the sample files of examples/ with the test-side writers:
//   zormodel_make_examples EXAMPLES_DIR
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "profile/MWZORProfile.h"
#include "support/ForeignProfileWriter.h"
#include "support/DxfWriter.h"
#include "support/ObjectFileWriter.h"
#include "support/ToolLibraryWriter.h"
#include "support/StlWriter.h"

namespace {

void save(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
    std::printf("wrote %s\n", path.c_str());
}

zortest::ObjectFileWriter primitives(int version, int unit) {
    zortest::ObjectFileWriter w(version);
    zortest::Tail t;
    t.unit = unit;
    t.vector = {1.0f, 2.0f, 3.0f, 1.0f};
    t.matrix[0][3] = 10.0;
    t.matrix[1][3] = 20.0;
    t.matrix[2][3] = 30.0;
    w.cube(10, 20, 30, "Block", t, {}, {"10 mm", "20 mm", "30 mm"});
    t.attachName = "Block";
    w.cylinder(5, 40, 5, "Pin", t);
    w.cone(8, 12, "Tip", t);
    t.attachName = "";
    w.sphere(6.5, "Ball", t);
    w.torus(20, 2.5, "Ring", t);
    zortest::Geometry g;
    g.present = true;
    g.list1 = {{0, 0, 0}, {1, 0, 0}};
    w.cube(1, 1, 1, "Marked", t, g);
    w.open("C3dObjectLight").field("Intensity", "0.5").close();
    return w;
}

// Profiles: a plate with rounded corners (counter-clockwise), a keyhole in
// inches (clockwise arcs) and the half section of a turned pin (both).
void rounded_plate(CMWZORSegmentArray& p) {
    const double w = 60, h = 30, r = 5;
    p.AddPoint(r, 0, 0);
    p.AddPoint(w - r, 0, 0);
    p.AddArc(w - r, r, 0, w, r, 0, IO_CCLW);
    p.AddPoint(w, h - r, 0);
    p.AddArc(w - r, h - r, 0, w - r, h, 0, IO_CCLW);
    p.AddPoint(r, h, 0);
    p.AddArc(r, h - r, 0, 0, h - r, 0, IO_CCLW);
    p.AddPoint(0, r, 0);
    p.AddArc(r, r, 0, r, 0, 0, IO_CCLW);
}

void keyhole(CMWZORSegmentArray& p) {
    const double y = -0.4330127018922193;  // where the slot meets the round
    p.AddPoint(-0.25, -1.5, 0);
    p.AddPoint(-0.25, y, 0);
    p.AddArc(0, 0, 0, 0.25, y, 0, IO_CLW);
    p.AddPoint(0.25, -1.5, 0);
    p.AddArc(0, -1.5, 0, -0.25, -1.5, 0, IO_CLW);
}

void turned_pin(CMWZORSegmentArray& p) {
    p.AddPoint(0, 0, 0);
    p.AddPoint(8, 0, 0);
    p.AddArc(8, 2, 0, 10, 2, 0, IO_CCLW);    // fillet
    p.AddPoint(10, 25, 0);
    p.AddArc(10, 28, 0, 10, 31, 0, IO_CLW);  // groove
    p.AddPoint(10, 40, 0);
    p.AddPoint(6, 44, 0);                    // chamfer
    p.AddArc(0, 44, 0, 0, 50, 0, IO_CCLW);   // dome
    p.AddPoint(0, 0, 0);
}

void save_extrusion(const std::string& path, void (*shape)(CMWZORSegmentArray&), int unit, double z0, double z1) {
    CMWZORExtrude e;
    e.SetUnit(unit);
    if (unit == 2) e.m_tolerance = 0.0002;
    shape(e);
    if (e.WriteFile(path.c_str(), z0, z1)) std::printf("wrote %s\n", path.c_str());
}

void save_sweep(const std::string& path, void (*shape)(CMWZORSegmentArray&)) {
    CMWZORSweep s;
    s.m_tolerance = 0.01;
    shape(s);
    if (s.WriteFile(path.c_str())) std::printf("wrote %s\n", path.c_str());
}

zortest::ObjectFileWriter::Outline outline_of(void (*shape)(CMWZORSegmentArray&), int closed) {
    CMWZORSegmentArray list;
    shape(list);
    zortest::ObjectFileWriter::Outline o;
    o.closed = closed;
    for (long long i = 0; i < list.m_segments.GetSize(); ++i) {
        const CMWZORSegment* s = list.m_segments[i];
        const CMWZORPoint* end = s->m_points[s->m_points.GetSize() - 1];
        if (s->m_type == IO_LINE) {
            o.segments.push_back({"LINE", {end->x, end->y, end->z}});
        } else {
            const CMWZORPoint* c = s->m_points[0];
            o.segments.push_back({s->m_type == IO_CLW ? "CLW" : "CCLW", {c->x, c->y, c->z, end->x, end->y, end->z}});
        }
    }
    return o;
}

zortest::ObjectFileWriter profile_records(int version) {
    zortest::ObjectFileWriter w(version);
    zortest::Tail t;
    t.matrix[2][3] = 5.0;
    w.extrusion({0, 0, 1}, 10, outline_of(rounded_plate, 1), "Plate", t);
    w.revolution(360, outline_of(turned_pin, 0), "Pin", t);
    return w;
}

// Three tools: attributes, nested values and a nested holder group.
std::string tool_library() {
    using zortest::XmlElement;
    XmlElement holder("Holder");
    holder.add(XmlElement("Type", "HSK63")).add(XmlElement("Gauge", "120"));
    XmlElement drill("TOOL");
    drill.attr("Name", "Drill 8").attr("Number", "1");
    drill.add(XmlElement("Diameter", "8")).add(XmlElement("Length", "95")).add(holder);
    XmlElement mill("TOOL");
    mill.attr("Name", "End mill 12").attr("Number", "2");
    mill.add(holder).add(XmlElement("Diameter", "12")).add(XmlElement("Flutes", "4"));
    XmlElement ball("TOOL");
    ball.attr("Name", "Ball mill 6").attr("Number", "3").attr("Radius", "3");
    return zortest::tool_library({drill, mill, ball});
}

// A machine scene: every record kind, a container, a file reference and an
// unknown record, followed by the collision section (compact form from 1.13
// on, named pairs before).
zortest::ObjectFileWriter scene(int version) {
    zortest::ObjectFileWriter w(version);
    zortest::Tail t;
    t.matrix[2][3] = 5.0;
    w.cube(100, 60, 10, "Base", t, {}, {"100 mm", "60 mm", "10 mm"});
    w.open("C3dPairCompArray");
    w.cylinder(8, 80, 8, "Column", t).cone(8, 12, "Tip", t);
    w.close();
    w.sphere(6, "Ball", t).torus(30, 3, "Ring", t);

    zortest::ObjectFileWriter::Engine axis, spindle;
    axis.name = "X axis";
    axis.axis = {1, 0, 0};
    axis.key = "X";
    axis.index = 1;
    spindle.name = "Spindle S1";
    spindle.kind = 2;
    spindle.key = "S1";
    spindle.index = 2;
    w.engine(axis).engine(spindle);

    zortest::Geometry pyramid;
    pyramid.vertices = {{0, 0, 0}, {20, 0, 0}, {20, 20, 0}, {0, 20, 0}, {10, 10, 15}};
    pyramid.triangles = {{0, 2, 1}, {0, 3, 2}, {0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}};
    w.mesh("Pyramid", pyramid, t);
    w.part("Blank", t);
    zortest::Tail carried = t;
    carried.attachName = "Spindle S1";
    carried.attachKey = "S1";
    carried.attachIndex = 2;
    w.tool("Cutter", carried);
    if (version >= 115) w.fileReference("fixture.obj", "Fixture", t);
    w.open("C3dObjectLight").field("Intensity", "0.5").close();
    if (version >= 115) {
        // Last, so that the collision indices above stay put whether or not
        // a reader takes them.
        w.extrusion({0, 0, 1}, 15, outline_of(rounded_plate, 1), "Profile", t);
        w.revolution(360, outline_of(turned_pin, 0), "Lathe", t);
    }
    if (version > 112) {
        // Base 0, Column 1, Tip 2, Ball 3, Ring 4, Pyramid 5, Blank 6, Cutter 7.
        w.collisionNew(0.5, 4, {"0:5,1,6,2", "7:6,3,5,4"});
    } else {
        w.collisionOld({{"Base", "Pyramid", 1, 0.5}, {"Base", "Blank", 2, 0.5}, {"Cutter", "Blank", 3, 0.25}});
    }
    return w;
}

// One profile of each foreign source, and a Vericut polygon file: a cube of
// six quadrilaterals with face normals (12 triangles).
void foreign_examples(const std::string& dir) {
    std::filesystem::create_directories(dir);
    using namespace zortest;
    save(dir + "/vericut-sweep.xml", VericutXmlWriter::Sweep(0, 15)
                                         .Pt(0, 0)
                                         .Pt(40, 0)
                                         .Pt(40, 20)
                                         .Arc(30, 20, "CCW", "", 10)
                                         .Pt(30, 30)
                                         .Pt(0, 30)
                                         .Text());
    save(dir + "/vericut-sor.xml", VericutXmlWriter::Sor(0.01)
                                       .Pt(0, 0)
                                       .Pt(10, 0)
                                       .Pt(10, 20)
                                       .Arc(15, 20, "", "", 5)
                                       .Pt(15, 25)
                                       .Pt(15, 40)
                                       .Pt(0, 40)
                                       .Text());
    save(dir + "/vericut-sweep.txt",
         VericutTextWriter::Extrusion("0", "12.5").Point(0, 0).Point(30, 0).Point(30, 10).Point(0, 10).Text());
    save(dir + "/machineworks-ext.xml", MachineWorksWriter(0, 0).Point(50, 0).Point(50, 25).Point(0, 25).Text());
    save(dir + "/machineworks-rot.xml",
         MachineWorksWriter(0, 0).Point(20, 0).Arc(30, 0, 30, 10).Point(30, 40).Point(0, 40).Text());
    save(dir + "/sirius.txt", SiriusWriter()
                                  .Line({0, 0, 0}, {20, 0, 0})
                                  .Line({20, 0, 0}, {20, 10, 0})
                                  .Arc({20, 10, 0}, {10, 20, 0}, {10, 10, 0}, "CCLW")
                                  .Line({10, 20, 0}, {0, 20, 0})
                                  .Text());
    VericutPolygonWriter cube(0, 0);
    const Point3 c[8] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
    cube.Polygon({c[0], c[3], c[2], c[1]}, {{0, 0, -1}})
        .Polygon({c[4], c[5], c[6], c[7]}, {{0, 0, 1}})
        .Polygon({c[0], c[1], c[5], c[4]}, {{0, -1, 0}})
        .Polygon({c[2], c[3], c[7], c[6]}, {{0, 1, 0}})
        .Polygon({c[1], c[2], c[6], c[5]}, {{1, 0, 0}})
        .Polygon({c[0], c[4], c[7], c[3]}, {{-1, 0, 0}});
    save(dir + "/vericut-cube.pol", cube.Text());
}

// A plate with a rounded outline (entities out of order, some reversed), a
// slot, and two holes on one layer, of which only the first is written.
std::string bracket_dxf() {
    zortest::DxfWriter w({true, true, true});
    w.Line(75, 0, 5, 0, "Outline");
    w.Arc(75, 45, 5, 0, 90, "Outline");
    w.Line(80, 5, 80, 45, "Outline");
    w.Arc(5, 5, 5, 180, 270, "Outline");
    w.Line(5, 50, 75, 50, "Outline");
    w.Arc(75, 5, 5, 270, 360, "Outline");
    w.Line(0, 45, 0, 5, "Outline");
    w.Arc(5, 45, 5, 90, 180, "Outline");
    w.Line(30, 20, 50, 20, "Slot").Arc(50, 25, 5, -90, 90, "Slot");
    w.Line(50, 30, 30, 30, "Slot").Arc(30, 25, 5, 90, 270, "Slot");
    w.Arc(12, 38, 4, 0, 180, "Holes").Arc(68, 38, 4, 0, 180, "Holes");
    w.Arc(12, 38, 4, 180, 360, "Holes").Arc(68, 38, 4, 180, 360, "Holes");
    w.Circle(40, 42, 2, "Outline");  // not a LINE or ARC: left out
    return w.Text();
}

// The half profile of a turned shaft on one layer, for a sweep.
std::string shaft_dxf() {
    zortest::DxfWriter w;
    w.Line(0, 0, 0, 8, "Profile").Line(0, 8, 25, 8, "Profile").Line(25, 8, 25, 10, "Profile");
    w.Line(25, 10, 52, 10, "Profile").Arc(52, 7, 3, 0, 90, "Profile").Line(55, 7, 55, 0, "Profile");
    w.Line(55, 0, 0, 0, "Profile");
    return w.Text();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: zormodel_make_examples EXAMPLES_DIR\n");
        return 2;
    }
    const std::string dir = argv[1];
    save(dir + "/objects/primitives-1.15.obj", primitives(115, 1).plain());
    save(dir + "/objects/primitives-1.05-inch.obj", primitives(105, 2).plain());
    save(dir + "/objects/primitives-1.01.obj", primitives(101, 1).plain());
    save(dir + "/objects/scrambled-1.13.obj", primitives(113, 2).scrambled());
    save_extrusion(dir + "/profiles/rounded-plate.ext", rounded_plate, 1, 0, 10);
    save_extrusion(dir + "/profiles/keyhole-inch.ext", keyhole, 2, 0, 0.25);
    save_sweep(dir + "/profiles/turned-pin.swp", turned_pin);
    save(dir + "/objects/profiles-1.13.obj", profile_records(113).plain());
    save(dir + "/objects/profiles-1.15.obj", profile_records(115).plain());
    save(dir + "/tools/tool-library.xml", tool_library());
    save(dir + "/objects/scene-1.15.obj", scene(115).plain());
    save(dir + "/objects/machine-1.08.obj", scene(108).plain());
    save(dir + "/objects/fixture.obj", primitives(115, 1).plain());
    foreign_examples(dir + "/foreign");
    save(dir + "/dxf/bracket.dxf", bracket_dxf());
    save(dir + "/dxf/shaft.dxf", shaft_dxf());
    const zortest::StlWriter cube = zortest::stl_cube(10.0f);
    save(dir + "/stl/cube-ascii.stl", cube.ascii("cube"));
    save(dir + "/stl/cube-binary.stl", cube.binary("binary cube, 10 mm"));
    return 0;
}
