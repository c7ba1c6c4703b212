// Writes the sample files of examples/ with the test-side writers:
//   zormodel_make_examples EXAMPLES_DIR
#include <cstdio>
#include <fstream>
#include <string>

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

// Profile records written line by line (version 1.15 layout): the scene
// shows every record kind.
void profile_record(zortest::ObjectFileWriter& w, bool extrusion, const std::string& name,
                    const zortest::Tail& t) {
    if (extrusion) {
        w.open("C3dObjectSplineExtrude");
        w.field("Direction", "0 0 1").field("Length", 15.0).field("Reserved", "0 0");
    } else {
        w.open("C3dObjectSplineLathe");
    }
    w.open("Outline").field("Num Segments", "4");
    w.field("LINE", "20,0,0").field("LINE", "20,10,0").field("CCLW", "10,10,0,0,10,0").field("LINE", "0,0,0");
    w.close();
    w.geometry({}, name).tail(t);
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
        profile_record(w, true, "Profile", t);
        profile_record(w, false, "Lathe", t);
    }
    if (version > 112) {
        // Base 0, Column 1, Tip 2, Ball 3, Ring 4, Pyramid 5, Blank 6, Cutter 7.
        w.collisionNew(0.5, 4, {"0:5,1,6,2", "7:6,3,5,4"});
    } else {
        w.collisionOld({{"Base", "Pyramid", 1, 0.5}, {"Base", "Blank", 2, 0.5}, {"Cutter", "Blank", 3, 0.25}});
    }
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
    save(dir + "/objects/scene-1.15.obj", scene(115).plain());
    save(dir + "/objects/machine-1.08.obj", scene(108).plain());
    save(dir + "/objects/fixture.obj", primitives(115, 1).plain());
    return 0;
}
