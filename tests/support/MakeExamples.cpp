// Writes the sample files of examples/ with the test-side writers:
//   zormodel_make_examples EXAMPLES_DIR
#include <cstdio>
#include <fstream>
#include <string>

#include "support/DxfWriter.h"
#include "support/ObjectFileWriter.h"

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
    save(dir + "/dxf/bracket.dxf", bracket_dxf());
    save(dir + "/dxf/shaft.dxf", shaft_dxf());
    return 0;
}
