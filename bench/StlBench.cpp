// Google Benchmark of StlFile on the torus meshes (binary and ASCII, 200,000
// facets), written once into a temporary folder.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "StlInputs.h"
#include "ZORModelIo.h"

namespace {

const std::string& input(bool ascii) {
    static const std::string dir = [] {
        std::string d = (std::filesystem::temp_directory_path() / "zormodel-stl-bench-XXXXXX").string();
        if (mkdtemp(d.data()) == nullptr) std::abort();
        return d;
    }();
    static const std::string binary = dir + "/torus-200k-binary.stl";
    static const std::string text = dir + "/torus-200k-ascii.stl";
    static const bool written =
        zorbench::write_torus(binary, 400, 250, false) && zorbench::write_torus(text, 400, 250, true);
    if (!written) std::abort();
    return ascii ? text : binary;
}

void read_stl(benchmark::State& state, bool ascii) {
    std::string name = input(ascii);
    for (auto _ : state) {
        unsigned int np = 0, nv = 0, nf = 0;
        double *p = nullptr, *v = nullptr;
        unsigned int* f = nullptr;
        if (StlFile(name.data(), &np, &p, &nv, &v, &nf, &f, 1, 1) != 1) state.SkipWithError("read failed");
        benchmark::DoNotOptimize(f);
        std::free(p);
        std::free(v);
        std::free(f);
        state.counters["vertices"] = np;
    }
    state.SetItemsProcessed(state.iterations() * 200000);
}

void BM_StlBinary200k(benchmark::State& state) { read_stl(state, false); }
void BM_StlAscii200k(benchmark::State& state) { read_stl(state, true); }

}  // namespace

BENCHMARK(BM_StlBinary200k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StlAscii200k)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
