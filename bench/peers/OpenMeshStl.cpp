// zorbench_openmesh PATH: OpenMesh reading an STL file (binary or ASCII) into
// a triangle mesh, which joins identical vertices. Checks: vertices.
#include <OpenMesh/Core/IO/MeshIO.hh>
#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>
#include <cstdio>

#include "../harness/Measure.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: zorbench_openmesh PATH\n");
        return 2;
    }
    const char* path = argv[1];
    return zorbench::measure("openmesh", [path] {
        OpenMesh::TriMesh_ArrayKernelT<> mesh;
        if (!OpenMesh::IO::read_mesh(mesh, path)) return -1LL;
        return static_cast<long long>(mesh.n_vertices());
    });
}
