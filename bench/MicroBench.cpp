// Inner loops of the readers, one Google Benchmark each: descrambling a line,
// scanning the numbers of a field, building contours from loose segments,
// stepping arcs and walking a tool library.
//   zorbench_micro [benchmark options]
// Another inner loop goes in a file of its own, added to zorbench_micro's
// sources in bench/CMakeLists.txt.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "BenchInputs.h"
#include "ZORModelIo.h"
#include "objectfile/FieldScan.h"
#include "objectfile/LineReader.h"
#include "objectfile/ObjectFileState.h"
#include "support/Scrambler.h"
#include "support/TempDir.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

// Lines of a mesh record as an application writes them.
std::vector<std::string> mesh_lines(int count) {
    std::vector<std::string> lines;
    std::uint32_t seed = 12345;
    auto next = [&seed] { return (seed = seed * 1664525u + 1013904223u) >> 8; };
    for (int i = 0; i < count; ++i) {
        char text[128];
        if (i % 3 == 2)
            std::snprintf(text, sizeof text, "Triangle < %u/%u/%u >", next() % 5000, next() % 5000, next() % 5000);
        else
            std::snprintf(text, sizeof text, "Vertex < %.6f,%.6f,%.6f >", (next() % 1000000) / 1e3 - 500.0,
                          (next() % 1000000) / 1e3 - 500.0, (next() % 1000000) / 1e3 - 500.0);
        lines.emplace_back(text);
    }
    return lines;
}

void BM_DescrambleLine(benchmark::State& state) {
    std::vector<std::string> lines;
    long long bytes = 0;
    int key = 6;
    for (const std::string& plain : mesh_lines(10000)) {
        lines.push_back(zortest::ScrambleLine(plain, key));
        key = key % 990 + 7;
        bytes += static_cast<long long>(lines.back().size());
    }
    zor::ObjectFileState descrambler;  // not plain: every line is descrambled
    std::string work;
    for (auto _ : state) {
        for (const std::string& line : lines) {
            work.assign(line);
            zor::DescrambleLine(work, descrambler);
            benchmark::DoNotOptimize(work.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(lines.size()));
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_DescrambleLine);

// The values of the fields above: three doubles split on "," and three
// indices split on "/" or ",".
void BM_FieldScan(benchmark::State& state) {
    std::vector<std::string> values;
    long long bytes = 0;
    for (const std::string& line : mesh_lines(10000)) {
        const auto open = line.rfind('<'), close = line.rfind('>');
        values.push_back(line.substr(open + 1, close - open - 1));
        bytes += static_cast<long long>(values.back().size());
    }
    double point[3];
    int corner[3];
    for (auto _ : state) {
        for (size_t i = 0; i < values.size(); ++i) {
            if (i % 3 == 2) {
                zor::ScanInts(values[i], 3, corner, "/,");
                benchmark::DoNotOptimize(corner);
            } else {
                zor::ScanDoubles(values[i], 3, point, ",");
                benchmark::DoNotOptimize(point);
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(values.size()));
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_FieldScan);

// Ten closed chains of lines round circles, shuffled, joined with the DXF
// reader's tolerance. The records are restored before every build: the
// builder turns segments round in place.
void BM_GetSegmentContours(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0)), chains = 10, perChain = count / chains;
    std::vector<Segment_end> ends(static_cast<size_t>(2 * chains * perChain));
    std::vector<Segment_ord> records(static_cast<size_t>(chains * perChain));
    std::vector<int> order(records.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = static_cast<int>(i);
    std::uint64_t rng = 0x2545F4914F6CDD1DULL;
    for (size_t i = order.size() - 1; i > 0; --i) {
        rng ^= rng << 13;
        rng ^= rng >> 7;
        rng ^= rng << 17;
        std::swap(order[i], order[rng % (i + 1)]);
    }
    for (int c = 0; c < chains; ++c) {
        for (int i = 0; i < perChain; ++i) {
            const size_t r = static_cast<size_t>(order[static_cast<size_t>(c * perChain + i)]);
            for (int e = 0; e < 2; ++e) {
                const double a = 2.0 * kPi * ((i + e) % perChain) / perChain;
                Segment_end& end = ends[2 * r + static_cast<size_t>(e)];
                end.x = 300.0 * c + 100.0 * std::cos(a);
                end.y = 100.0 * std::sin(a);
                records[r].end[e] = &end;
            }
            records[r].kind = 1;
        }
    }
    for (size_t r = 0; r + 1 < records.size(); ++r) records[r].next = &records[r + 1];
    const std::vector<Segment_end> pristineEnds = ends;
    const std::vector<Segment_ord> pristineRecords = records;
    Segment_settings settings{};
    settings.tolerance = 0.0001;
    for (auto _ : state) {
        state.PauseTiming();
        std::copy(pristineEnds.begin(), pristineEnds.end(), ends.begin());
        std::copy(pristineRecords.begin(), pristineRecords.end(), records.begin());
        state.ResumeTiming();
        void* result = API_GetSegmentContours(&settings, records.data());
        benchmark::DoNotOptimize(static_cast<Segment_result*>(result)->walked);
        API_ReleaseSegmentContours(result);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(records.size()));
}
BENCHMARK(BM_GetSegmentContours)->Arg(20000)->Arg(200000)->Unit(benchmark::kMillisecond);

// Arcs along one circle of radius 20, sweeps of 5 to 175 degrees, stepped at
// tolerance 0.001 (about 60 points an arc).
void BM_GetArcStep(benchmark::State& state) {
    const int arcs = 10000;
    CMWZORExtrude profile;
    profile.m_tolerance = 0.001;
    profile.AddPoint(20.0, 0.0, 0.0);
    std::uint32_t seed = 7;
    double angle = 0.0;
    for (int i = 0; i < arcs; ++i) {
        seed = seed * 1664525u + 1013904223u;
        const double sweep = (5.0 + 170.0 * ((seed >> 8) % 10000) / 10000.0) * kPi / 180.0;
        const bool clockwise = (seed >> 20) & 1;
        angle += clockwise ? -sweep : sweep;
        profile.AddArc(0.0, 0.0, 0.0, 20.0 * std::cos(angle), 20.0 * std::sin(angle), 0.0,
                       clockwise ? IO_CLW : IO_CCLW);
    }
    long long points = 0;
    for (auto _ : state) {
        double x, y, z;
        m_IOenumType type;
        points = 0;
        profile.SetStart();
        while (profile.GetType(&type)) {
            if (type != IO_LINE) {
                const int n = profile.GetArcStep(&x, &y, &z, 0);
                for (int s = 1; s <= n; ++s) profile.GetArcStep(&x, &y, &z, s);
                benchmark::DoNotOptimize(x);
                points += n;
            }
            if (profile.GetNext() == nullptr) break;
        }
    }
    state.SetItemsProcessed(state.iterations() * arcs);
    state.counters["points/arc"] = static_cast<double>(points) / arcs;
}
BENCHMARK(BM_GetArcStep)->Unit(benchmark::kMillisecond);

// The walk over a library of 10,000 tools already loaded: API_ReadList until
// the empty token.
void BM_ToolListWalk(benchmark::State& state) {
    zortest::TempDir dir;
    std::string path = dir.file("tools.xml");
    zorbench::write_tool_library(path, 10000);
    int answer = 0;
    API_IsXml(path.data(), &answer);
    if (answer != 1) {
        state.SkipWithError("the tool library did not load");
        return;
    }
    long long tokens = 0;
    for (auto _ : state) {
        API_ReleaseXml(true);
        tokens = 0;
        while (*API_ReadList() != '\0') ++tokens;
    }
    API_ResetXmlDoc();
    state.SetItemsProcessed(state.iterations() * tokens);
    state.counters["tokens"] = static_cast<double>(tokens);
}
BENCHMARK(BM_ToolListWalk)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
