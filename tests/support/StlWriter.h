// Builds STL files for tests: the same facets as binary or as ASCII text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zortest {

struct StlFacet {
    float normal[3];
    float v[3][3];
};

class StlWriter {
public:
    StlWriter& facet(const StlFacet& f) {
        facets.push_back(f);
        return *this;
    }
    StlWriter& facet(float nx, float ny, float nz, float x1, float y1, float z1, float x2, float y2, float z2, float x3,
                     float y3, float z3) {
        return facet(StlFacet{{nx, ny, nz}, {{x1, y1, z1}, {x2, y2, z2}, {x3, y3, z3}}});
    }

    // Binary STL: 80-byte header (header padded with NULs), the facet count
    // (or count when given), 50 bytes per facet with attribute 0.
    std::string binary(const std::string& header = "", std::optional<std::uint32_t> count = std::nullopt) const;
    // ASCII STL: "solid NAME", facets with numbers in numberFormat (the
    // default prints every float so that it reads back exactly), "endsolid".
    std::string ascii(const std::string& name = "mesh", const char* numberFormat = "%.9g",
                      const std::string& lineEnd = "\n") const;

    std::vector<StlFacet> facets;
};

// The 12 facets of an axis-aligned cube from (0,0,0) to (size,size,size).
StlWriter stl_cube(float size = 1.0f);

}  // namespace zortest
