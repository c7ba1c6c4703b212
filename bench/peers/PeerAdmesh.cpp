// admesh: stl_open + stl_generate_shared_vertices, with the exact facet
// check admesh's own tool runs first (the shared-vertex pass walks the
// neighbours it finds; without them it takes minutes on a million facets).
#include <admesh/stl.h>

#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const auto t0 = std::chrono::steady_clock::now();
    stl_file stl;
    stl_open(&stl, argv[1]);
    stl_check_facets_exact(&stl);
    stl_generate_shared_vertices(&stl);
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::printf("%.4f s  vertices %d  faces %d\n", s, stl.stats.shared_vertices, stl.stats.number_of_facets);
    stl_close(&stl);
    return 0;
}
