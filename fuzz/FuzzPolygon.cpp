// The Vericut polygon scan on an open stream, and the entry point.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "FuzzSupport.h"
#include "ZORModelIo.h"
#include "mesh/VericutReaders.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = zorfuzz::write_input(data, size, "input.pol");
    if (std::FILE* f = std::fopen(path.c_str(), "r")) {
        long long triangles = 0;
        zor::VP_scan(f, &triangles);
        std::fclose(f);
    }
    unsigned int np = 0, nv = 0, nf = 0;
    double *points = nullptr, *vectors = nullptr;
    unsigned int* faces = nullptr;
    VericutPolygon(const_cast<char*>(path.c_str()), &np, &points, &nv, &vectors, &nf, &faces, 1, 2);
    std::free(points);
    std::free(vectors);
    std::free(faces);
    return 0;
}
