// Writes the sample files of examples/ with the test-side writers:
//   zormodel_make_examples EXAMPLES_DIR
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/ForeignProfileWriter.h"
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
    foreign_examples(dir + "/foreign");
    return 0;
}
