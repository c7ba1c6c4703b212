// Wavefront OBJ output for any command that has triangle meshes to show: one
// "o" group per mesh, positions, optional normals and triangular faces.
#pragma once

#include <string>
#include <vector>

namespace zormodel {

struct ObjMesh {
    std::string name;
    std::vector<double> positions;        // x, y, z per vertex
    std::vector<double> normals;          // x, y, z per vertex, or empty
    std::vector<unsigned int> triangles;  // three 0-based indices into positions each
};

// The three corners of every triangle as positions of their own (corner
// copies, as object-file meshes hold them): triangle t is corners 3t..3t+2.
ObjMesh obj_mesh_from_corners(const std::string& name, const double (*corners)[4], unsigned int cornerCount);

// Writes the meshes to path; false when the file cannot be written (errno
// tells why). Indices out of range are not checked: the caller builds them.
bool write_obj(const std::string& path, const std::vector<ObjMesh>& meshes);

}  // namespace zormodel

namespace zormodel {

// Every mesh record of an object file, in millimetres; false when a mesh
// record cannot be read.
bool read_object_meshes(const std::string& path, std::vector<ObjMesh>& meshes);

// The meshes as one binary STL file (facet normals from the corners), or as
// one ASCII PLY file; false when the file cannot be written.
bool write_binary_stl(const std::string& path, const std::vector<ObjMesh>& meshes);
bool write_ply(const std::string& path, const std::vector<ObjMesh>& meshes);

}  // namespace zormodel
