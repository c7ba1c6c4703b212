// OpenMesh: read_mesh into a triangle mesh.
#include <OpenMesh/Core/IO/MeshIO.hh>
#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>
#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const auto t0 = std::chrono::steady_clock::now();
    OpenMesh::TriMesh_ArrayKernelT<> mesh;
    const bool ok = OpenMesh::IO::read_mesh(mesh, argv[1]);
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::printf("%.4f s  vertices %zu  faces %zu\n", s, mesh.n_vertices(), mesh.n_faces());
    return ok ? 0 : 1;
}
