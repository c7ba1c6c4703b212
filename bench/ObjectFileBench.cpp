// Reading an object file of mesh records (about 100 MB, generated once into a
// temporary folder) with ReadType and ReadMesh, next to the raw speed of
// reading the same file line by line with fgets and in large chunks.
//   zormodel_bench [--benchmark_filter=...]   (ZOR_BENCH_MB sets the size)
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "BenchInputs.h"
#include "MeshRecordRead.h"
#include "RawRead.h"
#include "objectfile/MWZORFile.h"
#include "objectfile/ObjectFileState.h"
#include "support/TempDir.h"

namespace {

// The object file of BenchInputs.h, written once into a temporary folder.
struct MeshFile {
    zortest::TempDir dir;
    std::string path;
    long long bytes = 0;
    long long meshes = 0;
    long long corners = 0;

    MeshFile() {
        const char* mb = std::getenv("ZOR_BENCH_MB");
        path = dir.file("meshes.obj");
        const zorbench::InputStats stats =
            zorbench::write_mesh_object_file(path, (mb != nullptr ? std::atoll(mb) : 100) * 1000 * 1000);
        bytes = stats.bytes;
        meshes = stats.detail;
        corners = stats.items * 3;
    }
};

const MeshFile& mesh_file() {
    static const MeshFile file;
    return file;
}

void BM_ReadMeshRecords(benchmark::State& state) {
    const MeshFile& file = mesh_file();
    for (auto _ : state) {
        zor::reset_object_file_state();
        long long meshes = 0;
        const long long corners = zorbench::read_mesh_records(file.path.c_str(), &meshes);
        benchmark::DoNotOptimize(corners);
        if (meshes != file.meshes || corners != file.corners) state.SkipWithError("wrong mesh or corner count");
    }
    state.SetBytesProcessed(state.iterations() * file.bytes);
    state.counters["meshes"] = static_cast<double>(file.meshes);
}
BENCHMARK(BM_ReadMeshRecords)->Unit(benchmark::kMillisecond);

// The same file through fgets with the reader's 512-byte buffer.
void BM_RawFgetsLines(benchmark::State& state) {
    const MeshFile& file = mesh_file();
    for (auto _ : state) {
        std::FILE* f = std::fopen(file.path.c_str(), "r");
        char line[512];
        long long lines = 0;
        while (std::fgets(line, sizeof line, f) != nullptr) ++lines;
        std::fclose(f);
        benchmark::DoNotOptimize(lines);
    }
    state.SetBytesProcessed(state.iterations() * file.bytes);
}
BENCHMARK(BM_RawFgetsLines)->Unit(benchmark::kMillisecond);

// The same file in 1 MiB chunks, counting line ends: the ceiling for any
// reader that looks at every byte.
void BM_RawChunksCountingNewlines(benchmark::State& state) {
    const MeshFile& file = mesh_file();
    for (auto _ : state) benchmark::DoNotOptimize(zorbench::count_lines_in_chunks(file.path.c_str()));
    state.SetBytesProcessed(state.iterations() * file.bytes);
}
BENCHMARK(BM_RawChunksCountingNewlines)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
