// assimp's DXF importer on a drawing, for bench/dxf-compare: prints the best
// of N reads in CPU milliseconds (and that run's wall time). assimp keeps LINE entities as line meshes and
// drops ARC entities; it does not chain anything.
//   zormodel_dxf_assimp DRAWING [N]
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <assimp/Importer.hpp>
#include <chrono>
#include <ctime>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: zormodel_dxf_assimp DRAWING [N]\n");
        return 2;
    }
    const int runs = argc > 2 ? std::atoi(argv[2]) : 3;
    double best = 1e300, bestWall = 0;
    unsigned meshes = 0, vertices = 0;
    for (int r = 0; r < runs; ++r) {
        const std::clock_t c0 = std::clock();
        auto t0 = std::chrono::steady_clock::now();
        Assimp::Importer importer;
        const aiScene* scene = importer.ReadFile(argv[1], 0);
        auto t1 = std::chrono::steady_clock::now();
        const double cpu = 1000.0 * static_cast<double>(std::clock() - c0) / CLOCKS_PER_SEC;
        if (scene == nullptr) {
            std::fprintf(stderr, "assimp: %s\n", importer.GetErrorString());
            return 1;
        }
        meshes = scene->mNumMeshes;
        vertices = 0;
        for (unsigned m = 0; m < scene->mNumMeshes; ++m) vertices += scene->mMeshes[m]->mNumVertices;
        const double ms = std::chrono::duration<double, std::milli>(t1 - t0).count();
        if (cpu < best) {
            best = cpu;
            bestWall = ms;
        }
    }
    std::printf("assimp %.1f ms CPU, %.1f ms wall (%u meshes, %u vertices)\n", best, bestWall, meshes, vertices);
    return 0;
}
