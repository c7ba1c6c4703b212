// Shared helpers of the mesh tests: StlFile into vectors, and comparison of
// meshes bit for bit (NaN payloads and -0 included).
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "ZORModelIo.h"
#include "mesh/StlOracle.h"

namespace zortest {

struct StlResult {
    int result = -1;
    oracle::Mesh mesh;
};

inline StlResult read_stl(const std::string& path, int wanted = 1, int fileUnit = 1) {
    StlResult r;
    unsigned int np = 99, nv = 99, nf = 99;
    double* p = nullptr;
    double* v = nullptr;
    unsigned int* f = nullptr;
    std::string name = path;
    r.result = StlFile(name.data(), &np, &p, &nv, &v, &nf, &f, wanted, fileUnit);
    if (r.result == 1) {
        r.mesh.points.assign(p, p + 3 * np);
        r.mesh.vectors.assign(v, v + 3 * nv);
        r.mesh.faces.assign(f, f + 4 * nf);
    } else {
        EXPECT_EQ(np + nv + nf, 0u);
        EXPECT_TRUE(p == nullptr && v == nullptr && f == nullptr);
    }
    std::free(p);
    std::free(v);
    std::free(f);
    return r;
}

inline bool same_bits(const std::vector<double>& a, const std::vector<double>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

// First difference of two meshes, or "" when they are identical.
inline std::string mesh_difference(const oracle::Mesh& a, const oracle::Mesh& b) {
    if (a.points.size() != b.points.size())
        return "points " + std::to_string(a.points.size() / 3) + " vs " + std::to_string(b.points.size() / 3);
    if (a.vectors.size() != b.vectors.size())
        return "vectors " + std::to_string(a.vectors.size() / 3) + " vs " + std::to_string(b.vectors.size() / 3);
    if (a.faces.size() != b.faces.size()) return "face count";
    if (!same_bits(a.points, b.points)) return "point values";
    if (!same_bits(a.vectors, b.vectors)) return "vector values";
    for (std::size_t i = 0; i < a.faces.size(); ++i)
        if (a.faces[i] != b.faces[i]) return "face index at " + std::to_string(i);
    return "";
}

}  // namespace zortest
