#include "support/StlWriter.h"

#include <cstdio>
#include <cstring>

namespace zortest {

namespace {

void put_float(std::string& out, float v) {
    char b[4];
    std::memcpy(b, &v, 4);
    out.append(b, 4);
}

std::string numbers(const char* format, const float* v) {
    std::string out;
    char buf[64];
    for (int i = 0; i < 3; ++i) {
        std::snprintf(buf, sizeof buf, format, static_cast<double>(v[i]));
        out += ' ';
        out += buf;
    }
    return out;
}

}  // namespace

std::string StlWriter::binary(const std::string& header, std::optional<std::uint32_t> count) const {
    std::string out = header.substr(0, 80);
    out.resize(80, '\0');
    const std::uint32_t n = count ? *count : static_cast<std::uint32_t>(facets.size());
    char c[4];
    std::memcpy(c, &n, 4);
    out.append(c, 4);
    for (const StlFacet& f : facets) {
        for (float v : f.normal) put_float(out, v);
        for (const auto& vertex : f.v)
            for (float v : vertex) put_float(out, v);
        out.append(2, '\0');
    }
    return out;
}

std::string StlWriter::ascii(const std::string& name, const char* numberFormat, const std::string& lineEnd) const {
    std::string out = "solid " + name + lineEnd;
    for (const StlFacet& f : facets) {
        out += "  facet normal" + numbers(numberFormat, f.normal) + lineEnd;
        out += "    outer loop" + lineEnd;
        for (const auto& vertex : f.v) out += "      vertex" + numbers(numberFormat, vertex) + lineEnd;
        out += "    endloop" + lineEnd;
        out += "  endfacet" + lineEnd;
    }
    out += "endsolid " + name + lineEnd;
    return out;
}

StlWriter stl_cube(float s) {
    StlWriter w;
    // Two triangles per side, outward normals.
    w.facet(0, 0, -1, 0, 0, 0, 0, s, 0, s, s, 0).facet(0, 0, -1, 0, 0, 0, s, s, 0, s, 0, 0);
    w.facet(0, 0, 1, 0, 0, s, s, 0, s, s, s, s).facet(0, 0, 1, 0, 0, s, s, s, s, 0, s, s);
    w.facet(0, -1, 0, 0, 0, 0, s, 0, 0, s, 0, s).facet(0, -1, 0, 0, 0, 0, s, 0, s, 0, 0, s);
    w.facet(0, 1, 0, 0, s, 0, 0, s, s, s, s, s).facet(0, 1, 0, 0, s, 0, s, s, s, s, s, 0);
    w.facet(-1, 0, 0, 0, 0, 0, 0, 0, s, 0, s, s).facet(-1, 0, 0, 0, 0, 0, 0, s, s, 0, s, 0);
    w.facet(1, 0, 0, s, 0, 0, s, s, 0, s, s, s).facet(1, 0, 0, s, 0, 0, s, s, s, s, 0, s);
    return w;
}

}  // namespace zortest
