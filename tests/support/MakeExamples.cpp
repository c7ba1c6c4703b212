// Writes the sample files of examples/ with the test-side writers:
//   zormodel_make_examples EXAMPLES_DIR
#include <cstdio>
#include <fstream>
#include <string>

#include "support/ObjectFileWriter.h"
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
    const zortest::StlWriter cube = zortest::stl_cube(10.0f);
    save(dir + "/stl/cube-ascii.stl", cube.ascii("cube"));
    save(dir + "/stl/cube-binary.stl", cube.binary("binary cube, 10 mm"));
    return 0;
}
