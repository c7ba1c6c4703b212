// The DXF reader on a drawing of 200,000 LINE and ARC entities on 10 layers,
// each layer one closed chain, the entities shuffled across the file.
//   zormodel_dxf_bench [benchmark options]
//   zormodel_dxf_bench --write-drawing=PATH   (the same drawing, for the peers)
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "ZORModelIo.h"
#include "dxf/DxfParse.h"
#include "support/DxfWriter.h"

namespace {

constexpr int kLayers = 10;
constexpr int kPerLayer = 20000;

// The reader's arc end point: the cosine and sine rounded to float, so that
// the lines written here meet the arcs exactly.
double single(double v) {
    volatile float f = static_cast<float>(v);
    return f;
}

std::string make_drawing() {
    struct Entity {
        bool arc;
        double a, b, c, d;  // line: x0 y0 x1 y1; arc: cx cy start end (radius 100)
        int layer;
    };
    const double k = 0.0174532925199433, radius = 100.0;
    std::vector<Entity> entities;
    std::uint64_t state = 0x2545F4914F6CDD1DULL;
    auto next = [&state] {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return state;
    };
    for (int layer = 0; layer < kLayers; ++layer) {
        const double cx = 300.0 * layer, cy = 50.0 * layer;
        auto angle = [](int i) { return 360.0 * i / kPerLayer; };
        auto point = [&](int i, double* x, double* y) {
            if (i == kPerLayer) i = 0;
            *x = single(std::cos(angle(i) * k)) * radius + cx;
            *y = single(std::sin(angle(i) * k)) * radius + cy;
        };
        for (int i = 0; i < kPerLayer; ++i) {
            if (i % 3 == 0 && i + 1 < kPerLayer) {
                entities.push_back({true, cx, cy, angle(i), angle(i + 1), layer});
                continue;
            }
            double x0, y0, x1, y1;
            point(i, &x0, &y0);
            point(i + 1, &x1, &y1);
            if (next() & 1)
                entities.push_back({false, x0, y0, x1, y1, layer});
            else
                entities.push_back({false, x1, y1, x0, y0, layer});
        }
    }
    for (size_t i = entities.size() - 1; i > 0; --i) std::swap(entities[i], entities[next() % (i + 1)]);
    zortest::DxfWriter w({true, true, true});
    for (const Entity& e : entities) {
        const std::string layer = "Layer" + std::to_string(e.layer);
        if (e.arc)
            w.Arc(e.a, e.b, radius, e.c, e.d, layer);
        else
            w.Line(e.a, e.b, e.c, e.d, layer);
    }
    return w.Text();
}

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
            std::ofstream(argv[i] + 16, std::ios::binary) << make_drawing();
            return 0;
        }
    }
    const auto dir = std::filesystem::temp_directory_path() / "zormodel-dxf-bench";
    std::filesystem::create_directories(dir);
    g_outDir = dir.string();
    g_drawing = (dir / "drawing.dxf").string();
    std::ofstream(g_drawing, std::ios::binary) << make_drawing();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::filesystem::remove_all(dir);
    return 0;
}
