// STL: the same bytes read with every pair of units, the arrays freed.
#include <cstdint>
#include <cstdlib>

#include "FuzzSupport.h"
#include "ZORModelIo.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = zorfuzz::write_input(data, size, "input.stl");
    unsigned int np = 0, nv = 0, nf = 0;
    double *points = nullptr, *vectors = nullptr;
    unsigned int* faces = nullptr;
    const int wanted = size > 0 ? 1 + data[0] % 2 : 1;
    if (StlFile(const_cast<char*>(path.c_str()), &np, &points, &nv, &vectors, &nf, &faces, wanted, 3 - wanted)) {
        std::free(points);
        std::free(vectors);
        std::free(faces);
    }
    return 0;
}
