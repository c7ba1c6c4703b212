#include "StlInputs.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace zorbench {

namespace {

struct V3 {
    float x, y, z;
};

V3 normal_of(const V3& a, const V3& b, const V3& c) {
    const float ux = b.x - a.x, uy = b.y - a.y, uz = b.z - a.z;
    const float vx = c.x - a.x, vy = c.y - a.y, vz = c.z - a.z;
    V3 n{uy * vz - uz * vy, uz * vx - ux * vz, ux * vy - uy * vx};
    const float len = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
    if (len > 0) n = V3{n.x / len, n.y / len, n.z / len};
    return n;
}

}  // namespace

bool write_torus(const std::string& path, int u, int v, bool ascii) {
    const double kPi = 3.14159265358979323846;
    const double R = 100.0, r = 30.0;
    std::vector<V3> grid(static_cast<std::size_t>(u) * v);
    for (int i = 0; i < u; ++i)
        for (int j = 0; j < v; ++j) {
            const double a = 2 * kPi * i / u, b = 2 * kPi * j / v;
            grid[static_cast<std::size_t>(i) * v + j] =
                V3{static_cast<float>((R + r * std::cos(b)) * std::cos(a)),
                   static_cast<float>((R + r * std::cos(b)) * std::sin(a)), static_cast<float>(r * std::sin(b))};
        }
    std::FILE* f = std::fopen(path.c_str(), ascii ? "w" : "wb");
    if (f == nullptr) return false;
    const std::uint32_t facets = 2u * static_cast<std::uint32_t>(u) * static_cast<std::uint32_t>(v);
    if (ascii) {
        std::fprintf(f, "solid torus\n");
    } else {
        char header[80] = "binary torus";
        std::fwrite(header, 1, 80, f);
        std::fwrite(&facets, 4, 1, f);
    }
    auto put = [&](const V3& a, const V3& b, const V3& c) {
        const V3 n = normal_of(a, b, c);
        if (ascii) {
            std::fprintf(f, "  facet normal %e %e %e\n    outer loop\n", n.x, n.y, n.z);
            for (const V3* p : {&a, &b, &c}) std::fprintf(f, "      vertex %e %e %e\n", p->x, p->y, p->z);
            std::fprintf(f, "    endloop\n  endfacet\n");
        } else {
            unsigned char rec[50] = {};
            const V3 all[4] = {n, a, b, c};
            std::memcpy(rec, all, 48);
            std::fwrite(rec, 1, 50, f);
        }
    };
    // Ring by ring, as exporters write meshes.
    for (int i = 0; i < u; ++i)
        for (int j = 0; j < v; ++j) {
            const V3& p00 = grid[static_cast<std::size_t>(i) * v + j];
            const V3& p10 = grid[static_cast<std::size_t>((i + 1) % u) * v + j];
            const V3& p01 = grid[static_cast<std::size_t>(i) * v + (j + 1) % v];
            const V3& p11 = grid[static_cast<std::size_t>((i + 1) % u) * v + (j + 1) % v];
            put(p00, p10, p11);
            put(p00, p11, p01);
        }
    if (ascii) std::fprintf(f, "endsolid torus\n");
    return std::fclose(f) == 0;
}

}  // namespace zorbench
