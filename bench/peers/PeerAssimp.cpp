// assimp: normals removed, then JoinIdenticalVertices (with normals kept,
// assimp merges nothing).
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <assimp/Importer.hpp>
#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const auto t0 = std::chrono::steady_clock::now();
    Assimp::Importer importer;
    importer.SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS, aiComponent_NORMALS);
    const aiScene* scene = importer.ReadFile(argv[1], aiProcess_RemoveComponent | aiProcess_JoinIdenticalVertices);
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    unsigned int vertices = 0, faces = 0;
    for (unsigned int m = 0; scene != nullptr && m < scene->mNumMeshes; ++m) {
        vertices += scene->mMeshes[m]->mNumVertices;
        faces += scene->mMeshes[m]->mNumFaces;
    }
    std::printf("%.4f s  vertices %u  faces %u\n", s, vertices, faces);
    return scene != nullptr ? 0 : 1;
}
