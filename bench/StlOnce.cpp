// zormodel_stl_once FILE: one StlFile call (the unit of bench/stl-compare);
// prints the seconds it took and the counts.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "ZORModelIo.h"

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    std::string name = argv[1];
    unsigned int np = 0, nv = 0, nf = 0;
    double *p = nullptr, *v = nullptr;
    unsigned int* f = nullptr;
    const auto t0 = std::chrono::steady_clock::now();
    const int ok = StlFile(name.data(), &np, &p, &nv, &v, &nf, &f, 1, 1);
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::printf("%.4f s  vertices %u  normals %u  faces %u\n", s, np, nv, nf);
    std::free(p);
    std::free(v);
    std::free(f);
    return ok == 1 ? 0 : 1;
}
