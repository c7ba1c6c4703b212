// zormodel stl FILE: reads an STL file with StlFile and prints the counts of
// distinct vertices, normals and faces, the bounding box and the file's form;
// --obj writes the de-duplicated mesh as Wavefront OBJ.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Commands.h"
#include "Detect.h"
#include "Report.h"
#include "ZORModelIo.h"
#include "mesh/StlReader.h"

namespace zormodel {

namespace {

struct StlMesh {
    unsigned int numPoints = 0, numVectors = 0, numFaces = 0;
    double* points = nullptr;
    double* vectors = nullptr;
    unsigned int* faces = nullptr;
    ~StlMesh() {
        std::free(points);
        std::free(vectors);
        std::free(faces);
    }
};

// OBJ of the mesh: "v" per vertex, "vn" per normal, "f a//n b//n c//n" per
// face (1-based). Returns false when the file cannot be written.
bool write_obj(const std::string& path, const StlMesh& m) {
    std::FILE* out = open_output(path);
    if (out == nullptr) return false;
    std::fprintf(out, "# %u vertices, %u normals, %u faces\n", m.numPoints, m.numVectors, m.numFaces);
    for (unsigned int i = 0; i < m.numPoints; ++i)
        std::fprintf(out, "v %s %s %s\n", format_double(m.points[3 * i]).c_str(),
                     format_double(m.points[3 * i + 1]).c_str(), format_double(m.points[3 * i + 2]).c_str());
    for (unsigned int i = 0; i < m.numVectors; ++i)
        std::fprintf(out, "vn %s %s %s\n", format_double(m.vectors[3 * i]).c_str(),
                     format_double(m.vectors[3 * i + 1]).c_str(), format_double(m.vectors[3 * i + 2]).c_str());
    for (unsigned int i = 0; i < m.numFaces; ++i) {
        const unsigned int* f = m.faces + 4 * i;
        std::fprintf(out, "f %u//%u %u//%u %u//%u\n", f[0] + 1, f[3] + 1, f[1] + 1, f[3] + 1, f[2] + 1, f[3] + 1);
    }
    return close_output(out);
}

}  // namespace

void add_stl_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("stl", "Read an STL file (ASCII or binary) into a de-duplicated mesh");
    static std::string path, units = "mm", fileUnits = "mm", objPath;
    static bool json = false;
    cmd->add_option("FILE", path, "STL file")->required();
    cmd->add_option("--units", units, "Unit wanted for the vertices")->check(CLI::IsMember({"mm", "in"}));
    cmd->add_option("--file-units", fileUnits, "Unit of the file's coordinates")->check(CLI::IsMember({"mm", "in"}));
    cmd->add_option("--obj", objPath, "Write the mesh as Wavefront OBJ to this file");
    cmd->add_flag("--json", json, "Print the result as JSON");
    cmd->callback([] {
        // Bytes of no known kind go to the reader all the same: a binary STL
        // cut short, or text the reader may still take, is worth its messages.
        const Detection detected = require_kind(
            path, {FileKind::StlAscii, FileKind::StlBinary, FileKind::Binary, FileKind::Text}, "an STL file");
        const int type = zor::stl_file_type_of(path.c_str());
        StlMesh m;
        std::string name = path;
        const int ok = StlFile(name.data(), &m.numPoints, &m.points, &m.numVectors, &m.vectors, &m.numFaces, &m.faces,
                               unit_code(units), unit_code(fileUnits));
        if (detected.stlTextReadAsBinary)
            std::fprintf(stderr, "zormodel: warning: %s: starts as ASCII STL but is read as binary (%s)\n",
                         path.c_str(), detected.binaryReason.c_str());
        if (ok != 1) {
            std::fprintf(stderr, "zormodel: %s: the %s STL read failed (see above)\n", path.c_str(),
                         type == 1 ? "ASCII" : "binary");
            throw CLI::RuntimeError(kExitRead);
        }
        double lo[3] = {0, 0, 0}, hi[3] = {0, 0, 0};
        for (unsigned int i = 0; i < m.numPoints; ++i)
            for (int a = 0; a < 3; ++a) {
                const double v = m.points[3 * i + a];
                if (i == 0 || v < lo[a]) lo[a] = v;
                if (i == 0 || v > hi[a]) hi[a] = v;
            }
        Report r("stl");
        r.text("file", path).text("form", type == 1 ? "ascii" : "binary");
        r.integer("points", m.numPoints).integer("normals", m.numVectors).integer("faces", m.numFaces);
        r.numbers("min", {lo[0], lo[1], lo[2]}).numbers("max", {hi[0], hi[1], hi[2]});
        // With the mesh on standard output the summary goes to standard error.
        std::FILE* out = objPath == "-" ? stderr : stdout;
        if (json) {
            r.printJson(out);
            std::fputs("\n", out);
        } else {
            r.printText(out);
        }
        if (!objPath.empty() && !write_obj(objPath, m)) fail_unwritable(objPath);
    });
}

}  // namespace zormodel
