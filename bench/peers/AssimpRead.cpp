// zorbench_assimp dxf|stl PATH: assimp importing the file. A drawing is read
// as it comes (assimp keeps LINE entities and drops ARC entities; it chains
// nothing); an STL file with normals removed and identical vertices joined,
// so that it ends with an indexed mesh like the others. Checks: vertices.
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <assimp/Importer.hpp>
#include <cstdio>
#include <cstring>

#include "../harness/Measure.h"

int main(int argc, char** argv) {
    if (argc != 3 || (std::strcmp(argv[1], "dxf") != 0 && std::strcmp(argv[1], "stl") != 0)) {
        std::fprintf(stderr, "usage: zorbench_assimp dxf|stl PATH\n");
        return 2;
    }
    const bool stl = std::strcmp(argv[1], "stl") == 0;
    const char* path = argv[2];
    return zorbench::measure("assimp", [stl, path] {
        Assimp::Importer importer;
        unsigned int steps = 0;
        if (stl) {
            importer.SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS, aiComponent_NORMALS);
            steps = aiProcess_RemoveComponent | aiProcess_JoinIdenticalVertices;
        }
        const aiScene* scene = importer.ReadFile(path, steps);
        if (scene == nullptr) {
            std::fprintf(stderr, "assimp: %s\n", importer.GetErrorString());
            return -1LL;
        }
        long long vertices = 0;
        for (unsigned m = 0; m < scene->mNumMeshes; ++m) vertices += scene->mMeshes[m]->mNumVertices;
        return vertices;
    });
}
