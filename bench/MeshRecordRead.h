// What the object-file benchmarks time: the mesh records of a file read
// through ReadType and ReadMesh, every other record skipped.
#pragma once

#include "ZORModelIo.h"

namespace zorbench {

// The corners (three per triangle) of every mesh record, the records
// counted in meshes; -1 when a mesh record does not read.
inline long long read_mesh_records(const char* path, long long* meshes) {
    CMWZORFile f(path, 0, 1, 1);
    unsigned int type = 0;
    long long corners = 0;
    double matrix[4][4];
    *meshes = 0;
    while (f.ReadType(&type)) {
        if (type != ZOR_RECORD_MESH) {
            f.ReadDummy();
            continue;
        }
        unsigned int vertexCount = 0, cornerCount = 0;
        double(*vertices)[4] = nullptr;
        double(*cornerArray)[4] = nullptr;
        const bool ok =
            f.ReadMesh(nullptr, &vertexCount, &vertices, nullptr, nullptr, nullptr, &cornerCount, &cornerArray, matrix,
                       nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        delete[] vertices;
        delete[] cornerArray;
        if (!ok) return -1;
        ++*meshes;
        corners += cornerCount;
    }
    return corners;
}

}  // namespace zorbench
