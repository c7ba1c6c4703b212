// The reader against the plain transcription (StlOracle.cpp): same arrays
// bit for bit, same lines on standard error, same use of rand(), on random,
// noisy and adversarial meshes and on every corpus file.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <random>

#include "mesh/MeshIndex.h"
#include "mesh/MeshTestUtil.h"
#include "mesh/StlReader.h"
#include "support/StlWriter.h"
#include "support/TempDir.h"

namespace {

using zortest::StlWriter;

// Seeds whose first rand() word makes every search-list node of a read
// level 0, 1, 2 and 3 (the level changes how the walk descends).
std::vector<unsigned int> seeds_by_level() {
    std::vector<unsigned int> seeds(4, 0);
    int found = 0;
    for (unsigned int s = 1; found < 4 && s < 100000; ++s) {
        std::srand(s);
        unsigned int w = static_cast<unsigned int>(std::rand());
        int level = 0;
        while ((w & 3u) == 0 && level < 15) {
            ++level;
            w >>= 2;
        }
        if (level < 4 && seeds[level] == 0) {
            seeds[level] = s;
            ++found;
        }
    }
    return seeds;
}

// Runs the library and the oracle on one file with the same rand() state and
// compares results, error output and the rand() state afterwards.
void expect_same(const std::string& path, unsigned int seed, int wanted = 1, int fileUnit = 1) {
    zor::reset_stl_reader_state();
    oracle::reset();
    std::srand(seed);
    testing::internal::CaptureStderr();
    zortest::StlResult ours = zortest::read_stl(path, wanted, fileUnit);
    const std::string ourErrors = testing::internal::GetCapturedStderr();
    const int ourNext = std::rand();

    std::srand(seed);
    oracle::Mesh expected;
    testing::internal::CaptureStderr();
    const int result = oracle::stl_file(path.c_str(), expected, wanted, fileUnit);
    const std::string expectedErrors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(ours.result, result);
    EXPECT_EQ(ourErrors, expectedErrors);
    EXPECT_EQ(zortest::mesh_difference(ours.mesh, expected), "");
    EXPECT_EQ(ourNext, std::rand()) << "rand() was used differently";
}

float pick(std::mt19937& rng, const std::vector<float>& values) {
    return values[std::uniform_int_distribution<std::size_t>(0, values.size() - 1)(rng)];
}

// Facets whose coordinates come from values; vertices are reused from the
// ones made so far half of the time, as in a real mesh.
StlWriter mesh_from(std::mt19937& rng, const std::vector<float>& values, int facets) {
    StlWriter w;
    std::vector<std::array<float, 3>> made;
    auto vertex = [&]() {
        if (!made.empty() && rng() % 2 == 0) return made[rng() % made.size()];
        std::array<float, 3> v{pick(rng, values), pick(rng, values), pick(rng, values)};
        made.push_back(v);
        return v;
    };
    for (int i = 0; i < facets; ++i) {
        zortest::StlFacet f;
        for (auto& c : f.normal) c = pick(rng, values);
        for (auto& v : f.v) {
            const auto p = vertex();
            std::copy(p.begin(), p.end(), v);
        }
        w.facet(f);
    }
    return w;
}

const float kInf = std::numeric_limits<float>::infinity();
const float kNaN = std::numeric_limits<float>::quiet_NaN();

struct Family {
    const char* name;
    std::vector<float> values;
};

std::vector<Family> families() {
    const float tiny = std::nextafter(0.125f, 0.0f);
    return {
        {"plain", {-3, -2.5f, -1, 1, 1.5f, 2, 7.25f, 100, 1e6f}},
        {"near-zero noise and -0",
         {0.0f, -0.0f, 5.5e-15f, -1.7e-15f, 3.3e-33f, 1e-38f, 1.0f, 2.0f, -1.0f, 4e-9f, -4e-9f}},
        {"tolerance edges",
         {0.125f, tiny, 0.25f, std::nextafter(0.25f, 0.0f), 0.1f, std::nextafter(0.1f, 1.0f), 1e-8f, 2e-8f, -1e-8f,
          0.0f, 1.0f}},
        {"chained cluster", {0.0f, 6e-9f, 1.2e-8f, 1.8e-8f, -6e-9f, 1.0f, 2.0f}},
        {"bridged clusters", {0.0f, 8e-9f, 1.6e-8f, 3.0f, -8e-9f}},
        {"infinities", {kInf, -kInf, 0.0f, 1.0f, -1.0f, 2.0f}},
        {"NaN", {kNaN, 0.0f, 1.0f, 2.0f, -1.0f}},
        {"everything", {kNaN, kInf, -kInf, 0.0f, -0.0f, 6e-9f, 1.2e-8f, 1e-30f, 1.0f, 2.0f, 0.125f, tiny}},
    };
}

TEST(StlOracleTest, RandomAndAdversarialMeshesMatchThePlainIndex) {
    zortest::TempDir dir;
    const std::vector<unsigned int> seeds = seeds_by_level();
    std::mt19937 rng(12345);
    for (const Family& family : families()) {
        for (unsigned int seed : seeds) {
            for (int round = 0; round < 4; ++round) {
                SCOPED_TRACE(std::string(family.name) + " seed " + std::to_string(seed) + " round " +
                             std::to_string(round));
                const StlWriter w = mesh_from(rng, family.values, 20 + 60 * round);
                expect_same(dir.write("m.stl", w.binary()), seed);
                // The same values as ASCII tokens ("nan", "inf", "-inf" included).
                expect_same(dir.write("a.stl", w.ascii("twin", "%.9g")), seed);
                if (HasFailure()) return;
            }
        }
    }
}

TEST(StlOracleTest, LateIrregularValueSwitchesWithTheSameResult) {
    // Hundreds of clean points first, then a value that breaks the order: the
    // search list built at that moment must be the one the walk had built.
    zortest::TempDir dir;
    std::mt19937 rng(7);
    const std::vector<float> clean = {-2, -1, 0, 1, 2, 3, 5e-15f, 4e-9f};
    for (float breaker : {kNaN, kInf, -kInf, 1.2e-8f, -8e-9f}) {
        for (unsigned int seed : seeds_by_level()) {
            SCOPED_TRACE("breaker " + std::to_string(breaker) + " seed " + std::to_string(seed));
            StlWriter w = mesh_from(rng, clean, 300);
            const StlWriter tail = mesh_from(rng, {breaker, 0.0f, 1.0f, 4e-9f, -1.0f}, 100);
            w.facets.insert(w.facets.end(), tail.facets.begin(), tail.facets.end());
            expect_same(dir.write("late.stl", w.binary()), seed);
        }
    }
}

// The index alone (no files), both ways, on the same facets.
oracle::Mesh index_ours(const std::vector<float>& facets) {
    zor::SL_List* points = nullptr;
    zor::SL_List* vectors = nullptr;
    zor::TMT_init(&points, &vectors);
    oracle::Mesh m;
    unsigned int face[4];
    for (std::size_t i = 0; i + 12 <= facets.size(); i += 12) {
        EXPECT_EQ(zor::tmt_add_face_indices(&facets[i + 3], &facets[i], &points, &vectors, face), 1);
        m.faces.insert(m.faces.end(), face, face + 4);
    }
    zor::tmt_release_lookup();
    for (unsigned int kind : {zor::kPointKind, zor::kVectorKind}) {
        const unsigned int n = zor::mesh_index_state().kind(kind).count;
        double* p = zor::tmt_take_points(kind, 1.0);
        (kind == zor::kPointKind ? m.points : m.vectors).assign(p, p + 3 * n);
        std::free(p);
    }
    zor::TMT_free(points, vectors);
    return m;
}

std::string index_difference(const std::vector<float>& facets, unsigned int seed) {
    std::srand(seed);
    const oracle::Mesh ours = index_ours(facets);
    std::srand(seed);
    oracle::Mesh expected;
    oracle::index_facets(facets, expected);
    return zortest::mesh_difference(ours, expected);
}

// Random facets over small alphabets, so that NaN walls, infinities, near-zero
// chains that merge and the few first nodes of a higher level meet often;
// then long mixes, which move large groups into blocks.
TEST(StlOracleTest, HostileKeysMatchThePlainIndexAtEveryLevel) {
    const float chain[] = {0.0f, 6e-9f, 1.2e-8f, 1.8e-8f, -6e-9f, 2.4e-8f};
    const std::vector<std::vector<float>> alphabets = {
        {kNaN, kInf, -kInf, 0.0f, -0.0f, 6e-9f, 1.2e-8f, 1e-30f, 1.0f, 2.0f},
        {kNaN, 0.0f, 6e-9f, 1.2e-8f, 1.8e-8f, -6e-9f, 1.0f},
        {kInf, -kInf, 0.0f, 6e-9f, 1.2e-8f, 1.0f},
        {kNaN, kInf, -kInf, 0.0f, 1.0f, 2.0f},
        {0.0f, 6e-9f, 1.2e-8f, 1.8e-8f, -6e-9f, 1.0f, 2.0f},
    };
    std::mt19937 rng(2024);
    const std::vector<unsigned int> seeds = seeds_by_level();
    auto facets_from = [&rng](const std::vector<float>& values, int count, int reuse) {
        std::vector<float> out;
        std::vector<std::array<float, 3>> made;
        for (int f = 0; f < count; ++f) {
            for (int k = 0; k < 3; ++k) out.push_back(pick(rng, values));
            for (int k = 0; k < 3; ++k) {
                std::array<float, 3> p{};
                if (!made.empty() && static_cast<int>(rng() % 4) < reuse) {
                    p = made[rng() % made.size()];
                } else {
                    for (float& c : p) c = pick(rng, values);
                    made.push_back(p);
                }
                out.insert(out.end(), p.begin(), p.end());
            }
        }
        return out;
    };
    for (int round = 0; round < 3000; ++round) {
        const std::size_t a = static_cast<std::size_t>(round) % alphabets.size();
        const unsigned int seed = seeds[static_cast<std::size_t>(round / 5) % seeds.size()];
        const std::vector<float> facets = facets_from(alphabets[a], 1 + static_cast<int>(rng() % 16), 2);
        const std::string diff = index_difference(facets, seed);
        ASSERT_EQ(diff, "") << "alphabet " << a << " seed " << seed << " round " << round;
    }
    // Long mixes: a chained axis of many values with the hostile ones.
    std::vector<float> mix(std::begin(chain), std::end(chain));
    for (int i = 0; i < 60; ++i) mix.push_back(static_cast<float>(i) * 3e-9f);
    mix.insert(mix.end(), {kNaN, kInf, -kInf, 1.0f, 2.0f, 3.0f});
    for (unsigned int seed : seeds) {
        SCOPED_TRACE("long mix, seed " + std::to_string(seed));
        EXPECT_EQ(index_difference(facets_from(mix, 1500, 3), seed), "");
    }
}

TEST(StlOracleTest, AsciiTwinsAndOddNumberTextsMatch) {
    zortest::TempDir dir;
    std::mt19937 rng(99);
    const std::vector<float> values = {0.0f, -0.0f, 1.5f, -2.25f, 1e-20f, 3.3e-33f, 12345.678f, 0.1f};
    const StlWriter w = mesh_from(rng, values, 200);
    // Numbers printed so that they read back exactly: twins give the same arrays.
    const zortest::StlResult binary = zortest::read_stl(dir.write("b.stl", w.binary()));
    const zortest::StlResult ascii = zortest::read_stl(dir.write("a.stl", w.ascii("twin", "%.9g")));
    EXPECT_EQ(binary.result, 1);
    EXPECT_EQ(zortest::mesh_difference(binary.mesh, ascii.mesh), "");
    for (const char* format : {"%.9g", "%e", "%f", "%+.3E", "%a", "%.12f"}) {
        SCOPED_TRACE(format);
        expect_same(dir.write("a.stl", w.ascii("twin", format)), 1);
        expect_same(dir.write("a.stl", w.ascii("twin", format, "\r\n")), 1);
    }
}

TEST(StlOracleTest, EveryPrefixOfAFileFailsOrReadsAsThePlainReader) {
    // Truncation sweep with trailing garbage: the results and the error
    // lines (three of them for ASCII facet errors) must be the plain ones.
    zortest::TempDir dir;
    const StlWriter cube = zortest::stl_cube(2.0f);
    for (const std::string& full : {cube.ascii("cube"), cube.binary("solid cube")}) {
        for (std::size_t n = 0; n <= full.size(); n += (n < 160 || full.size() - n < 100) ? 1 : 53) {
            SCOPED_TRACE("prefix " + std::to_string(n));
            expect_same(dir.write("t.stl", full.substr(0, n)), 3);
            expect_same(dir.write("g.stl", full.substr(0, n) + "garbage\x01\xff line\n"), 3);
            if (HasFailure()) return;
        }
    }
}

TEST(StlOracleTest, UnitFactorsMatch) {
    zortest::TempDir dir;
    const std::string path = dir.write("u.stl", zortest::stl_cube(3.0f).binary());
    for (int wanted : {0, 1, 2, 3})
        for (int file : {0, 1, 2, 3}) {
            SCOPED_TRACE(std::to_string(wanted) + "/" + std::to_string(file));
            expect_same(path, 1, wanted, file);
        }
}

std::uint64_t digest(const oracle::Mesh& m) {
    std::uint64_t h = 1469598103934665603ull;
    auto add = [&h](const void* data, std::size_t n) {
        const unsigned char* p = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < n; ++i) h = (h ^ p[i]) * 1099511628211ull;
    };
    add(m.points.data(), m.points.size() * sizeof(double));
    add(m.vectors.data(), m.vectors.size() * sizeof(double));
    add(m.faces.data(), m.faces.size() * sizeof(unsigned int));
    return h;
}

// The plain reader needs seconds to minutes for these files (its walk is
// quadratic); its results were recorded by DISABLED_LargeCorpusFilesMatchLive.
struct Recorded {
    const char* file;
    std::uint64_t digest;
};
const Recorded kRecorded[] = {
    {"trimesh_counter.unitsmm.STL", 0x2158c5fe1cbe43acull},
    {"numpy-stl_rear_case.stl", 0xd9107f2f9206bf7dull},
};

std::filesystem::path corpus_dir() { return std::filesystem::path(ZOR_CORPUS_DIR) / "stl"; }

TEST(StlOracleTest, EveryCorpusFileMatches) {
    if (!std::filesystem::is_directory(corpus_dir())) GTEST_SKIP() << "no corpus at " << corpus_dir();
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(corpus_dir())) {
        SCOPED_TRACE(entry.path().filename().string());
        ++files;
        const Recorded* recorded = nullptr;
        for (const Recorded& r : kRecorded)
            if (entry.path().filename() == r.file) recorded = &r;
        if (recorded != nullptr) {
            std::srand(17);
            const zortest::StlResult ours = zortest::read_stl(entry.path().string());
            EXPECT_EQ(ours.result, 1);
            EXPECT_EQ(digest(ours.mesh), recorded->digest);
            continue;
        }
        expect_same(entry.path().string(), 17);
    }
    EXPECT_GE(files, 20);
}

TEST(StlOracleTest, DISABLED_LargeCorpusFilesMatchLive) {
    for (const Recorded& r : kRecorded) {
        SCOPED_TRACE(r.file);
        const std::string path = (corpus_dir() / r.file).string();
        expect_same(path, 17);
        std::srand(17);
        oracle::Mesh expected;
        ASSERT_EQ(oracle::stl_file(path.c_str(), expected, 1, 1), 1);
        EXPECT_EQ(digest(expected), r.digest);
    }
}

}  // namespace
