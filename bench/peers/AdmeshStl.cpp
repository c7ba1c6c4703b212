// zorbench_admesh PATH: admesh opening an STL file (binary or ASCII), finding
// the facets' neighbours by exact matching (which shared vertices need) and
// building its shared vertices. Checks: shared vertices.
#include <admesh/stl.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "../harness/Measure.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: zorbench_admesh PATH\n");
        return 2;
    }
    std::vector<char> path(argv[1], argv[1] + std::strlen(argv[1]) + 1);
    return zorbench::measure("admesh", [&path] {
        stl_file stl;
        std::memset(&stl, 0, sizeof stl);
        stl_open(&stl, path.data());
        if (stl_get_error(&stl)) return -1LL;
        stl_check_facets_exact(&stl);
        stl_generate_shared_vertices(&stl);
        const long long vertices = stl.stats.shared_vertices;
        stl_close(&stl);
        return vertices;
    });
}
