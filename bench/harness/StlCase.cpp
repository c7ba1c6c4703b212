// The STL reader as a host uses it: StlFile into flat arrays, freed with
// free(). Returns the distinct vertices. Built when mesh/MeshImport.h
// declares StlFile (see bench/CMakeLists.txt).
#include <cstdlib>
#include <cstring>
#include <vector>

#include "Cases.h"
#include "ZORModelIo.h"

namespace {

long long read_stl(const char* path) {
    std::vector<char> name(path, path + std::strlen(path) + 1);
    unsigned int pointCount = 0, vectorCount = 0, faceCount = 0;
    double* points = nullptr;
    double* vectors = nullptr;
    unsigned int* faces = nullptr;
    const int ok = StlFile(name.data(), &pointCount, &points, &vectorCount, &vectors, &faceCount, &faces, 1, 1);
    std::free(points);
    std::free(vectors);
    std::free(faces);
    return ok == 1 ? static_cast<long long>(pointCount) : -1;
}
ZORBENCH_CASE("stl", read_stl);

}  // namespace
