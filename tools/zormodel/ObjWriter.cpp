#include "Commands.h"
#include "ObjWriter.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

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

namespace zormodel {

namespace {

void put_float(std::FILE* out, double value) {
    const float f = static_cast<float>(value);
    unsigned char bytes[4];
    std::uint32_t bits;
    std::memcpy(&bits, &f, 4);
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>(bits >> (8 * i));  // little-endian
    std::fwrite(bytes, 1, 4, out);
}

}  // namespace

bool write_binary_stl(const std::string& path, const std::vector<ObjMesh>& meshes) {
    std::FILE* out = open_output(path, "wb");
    if (out == nullptr) return false;
    std::uint32_t count = 0;
    for (const ObjMesh& m : meshes) count += static_cast<std::uint32_t>(m.triangles.size() / 3);
    char header[80] = "binary STL written by zormodel";
    std::fwrite(header, 1, sizeof header, out);
    const unsigned char countBytes[4] = {static_cast<unsigned char>(count), static_cast<unsigned char>(count >> 8),
                                         static_cast<unsigned char>(count >> 16),
                                         static_cast<unsigned char>(count >> 24)};
    std::fwrite(countBytes, 1, 4, out);
    for (const ObjMesh& m : meshes) {
        for (std::size_t t = 0; t + 2 < m.triangles.size(); t += 3) {
            const double* p[3];
            for (int k = 0; k < 3; ++k) p[k] = &m.positions[3 * static_cast<std::size_t>(m.triangles[t + k])];
            const double u[3] = {p[1][0] - p[0][0], p[1][1] - p[0][1], p[1][2] - p[0][2]};
            const double v[3] = {p[2][0] - p[0][0], p[2][1] - p[0][1], p[2][2] - p[0][2]};
            double n[3] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
            const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
            for (double& c : n) c = length > 0 ? c / length : 0;
            for (double c : n) put_float(out, c);
            for (int k = 0; k < 3; ++k)
                for (int a = 0; a < 3; ++a) put_float(out, p[k][a]);
            std::fwrite("\0\0", 1, 2, out);
        }
    }
    return close_output(out);
}

bool write_ply(const std::string& path, const std::vector<ObjMesh>& meshes) {
    std::FILE* out = open_output(path);
    if (out == nullptr) return false;
    std::size_t vertices = 0, faces = 0;
    for (const ObjMesh& m : meshes) vertices += m.positions.size() / 3, faces += m.triangles.size() / 3;
    std::fprintf(out,
                 "ply\nformat ascii 1.0\ncomment written by zormodel\nelement vertex %zu\nproperty double x\n"
                 "property double y\nproperty double z\nelement face %zu\nproperty list uchar uint vertex_indices\n"
                 "end_header\n",
                 vertices, faces);
    for (const ObjMesh& m : meshes)
        for (std::size_t i = 0; i + 2 < m.positions.size(); i += 3)
            std::fprintf(out, "%s %s %s\n", format_double(m.positions[i]).c_str(),
                         format_double(m.positions[i + 1]).c_str(), format_double(m.positions[i + 2]).c_str());
    std::size_t base = 0;
    for (const ObjMesh& m : meshes) {
        for (std::size_t t = 0; t + 2 < m.triangles.size(); t += 3)
            std::fprintf(out, "3 %zu %zu %zu\n", base + m.triangles[t], base + m.triangles[t + 1],
                         base + m.triangles[t + 2]);
        base += m.positions.size() / 3;
    }
    return close_output(out);
}

}  // namespace zormodel
