#include "Commands.h"
#include "ObjWriter.h"

#include <cstdio>

#include "Report.h"

namespace zormodel {

ObjMesh obj_mesh_from_corners(const std::string& name, const double (*corners)[4], unsigned int cornerCount) {
    ObjMesh mesh;
    mesh.name = name;
    const unsigned int used = cornerCount - cornerCount % 3;
    mesh.positions.reserve(3 * static_cast<std::size_t>(used));
    mesh.triangles.reserve(used);
    for (unsigned int i = 0; i < used; ++i) {
        mesh.positions.insert(mesh.positions.end(), corners[i], corners[i] + 3);
        mesh.triangles.push_back(i);
    }
    return mesh;
}

namespace {

void write_triples(std::FILE* out, const char* tag, const std::vector<double>& values) {
    for (std::size_t i = 0; i + 2 < values.size(); i += 3)
        std::fprintf(out, "%s %s %s %s\n", tag, format_double(values[i]).c_str(), format_double(values[i + 1]).c_str(),
                     format_double(values[i + 2]).c_str());
}

}  // namespace

bool write_obj(const std::string& path, const std::vector<ObjMesh>& meshes) {
    std::FILE* out = open_output(path);
    if (out == nullptr) return false;
    std::fputs("# written by zormodel\n", out);
    // OBJ indices are 1-based and count across the whole file.
    unsigned long long base = 1;
    for (const ObjMesh& mesh : meshes) {
        std::string name = mesh.name.empty() ? "mesh" : mesh.name;
        for (char& c : name)
            if (c == ' ' || c == '\t' || c == '\n' || c == '\r') c = '_';
        std::fprintf(out, "o %s\n", name.c_str());
        write_triples(out, "v", mesh.positions);
        const bool withNormals = !mesh.normals.empty();
        write_triples(out, "vn", mesh.normals);
        for (std::size_t t = 0; t + 2 < mesh.triangles.size(); t += 3) {
            std::fputs("f", out);
            for (std::size_t c = 0; c < 3; ++c) {
                const unsigned long long index = base + mesh.triangles[t + c];
                if (withNormals)
                    std::fprintf(out, " %llu//%llu", index, index);
                else
                    std::fprintf(out, " %llu", index);
            }
            std::fputs("\n", out);
        }
        base += mesh.positions.size() / 3;
    }
    return close_output(out);
}

}  // namespace zormodel
