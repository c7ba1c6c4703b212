// The DXF reader on a drawing of 200,000 LINE and ARC entities on 10 layers,
// each layer one closed chain, the entities shuffled across the file.
//   zormodel_dxf_bench [benchmark options]
//   zormodel_dxf_bench --write-drawing=PATH   (the same drawing, for the peers)
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "BenchInputs.h"
#include "ZORModelIo.h"
#include "dxf/DxfParse.h"

namespace {

constexpr int kLayers = 10;
constexpr int kPerLayer = 20000;

std::string g_drawing;  // path of the drawing
std::string g_outDir;

std::string load(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

// What the host does: ReadDxf reads, chains and writes 10 profile files.
void BM_ReadDxf_ReadChainWrite(benchmark::State& state) {
    const std::string out = g_outDir + "/profile.ext";
    for (auto _ : state) {
        CString* names = ReadDxf(g_drawing.c_str(), out.c_str(), 1, 0, false);
        benchmark::DoNotOptimize(names);
        Delete_Names(names, 0);
    }
    state.SetItemsProcessed(state.iterations() * kLayers * kPerLayer);
}

// Like the peers: load, parse and chain every layer, nothing written.
void BM_Dxf_ReadChain(benchmark::State& state) {
    for (auto _ : state) {
        const std::string bytes = load(g_drawing);
        zor::DxfDrawing drawing;
        zor::parse_dxf(bytes, drawing);
        for (const auto& layer : drawing.layers) {
            zor::LayerContours contours(*layer);
            benchmark::DoNotOptimize(contours.result().walked);
        }
    }
    state.SetItemsProcessed(state.iterations() * kLayers * kPerLayer);
}

// The parts, on a drawing already in memory.
void BM_Dxf_ParseOnly(benchmark::State& state) {
    const std::string bytes = load(g_drawing);
    for (auto _ : state) {
        zor::DxfDrawing drawing;
        zor::parse_dxf(bytes, drawing);
        benchmark::DoNotOptimize(drawing.layers.size());
    }
    state.SetItemsProcessed(state.iterations() * kLayers * kPerLayer);
}

void BM_Dxf_ContoursOnly(benchmark::State& state) {
    const std::string bytes = load(g_drawing);
    zor::DxfDrawing drawing;
    zor::parse_dxf(bytes, drawing);
    for (auto _ : state) {
        for (const auto& layer : drawing.layers) {
            zor::LayerContours contours(*layer);
            benchmark::DoNotOptimize(contours.result().walked);
        }
    }
    state.SetItemsProcessed(state.iterations() * kLayers * kPerLayer);
}

void BM_Dxf_WriteOnly(benchmark::State& state) {
    const std::string bytes = load(g_drawing);
    zor::DxfDrawing drawing;
    zor::parse_dxf(bytes, drawing);
    for (auto _ : state) {
        for (size_t i = 0; i < drawing.layers.size(); ++i) {
            zor::write_dxf_layer(*drawing.layers[i], (g_outDir + "/w" + std::to_string(i) + ".ext").c_str(), 1, false);
        }
    }
    state.SetItemsProcessed(state.iterations() * kLayers * kPerLayer);
}

}  // namespace

BENCHMARK(BM_ReadDxf_ReadChainWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Dxf_ReadChain)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Dxf_ParseOnly)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Dxf_ContoursOnly)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Dxf_WriteOnly)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--write-drawing=", 16) == 0) {
            std::ofstream(argv[i] + 16, std::ios::binary) << zorbench::make_dxf_drawing(kLayers, kPerLayer);
            return 0;
        }
    }
    const auto dir = std::filesystem::temp_directory_path() / "zormodel-dxf-bench";
    std::filesystem::create_directories(dir);
    g_outDir = dir.string();
    g_drawing = (dir / "drawing.dxf").string();
    std::ofstream(g_drawing, std::ios::binary) << zorbench::make_dxf_drawing(kLayers, kPerLayer);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::filesystem::remove_all(dir);
    return 0;
}
