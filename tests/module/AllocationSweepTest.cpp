// Every reader run with its k-th allocation failing, for k = 1, 2, ... until a
// run makes fewer than k allocations. Each run must return (nothing thrown
// into the host), close every file it opened, and give either the reader's
// failure result or its whole result, never a part of it passed off as the
// whole; under AddressSanitizer nothing it took may leak.
//
// Allocations are counted in operator new (replaced below, so this is a
// program of its own), in pugixml (through its allocation hooks) and in the
// module's C allocator (through zor::g_allocationGate).
#include <dirent.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <type_traits>
#include <vector>

#include "dxf/DxfReader.h"
#include "mesh/MeshImport.h"
#include "mesh/VericutImport.h"
#include "module/Allocation.h"
#include "objectfile/ObjectFileTestUtil.h"
#include "profile/ArcStepState.h"
#include "profile/MWZORProfile.h"
#include "profile/SegmentContours.h"
#include "support/TempDir.h"
#include "xml/ToolLibrary.h"
#include "xml/XmlDocument.h"
#include "zorapi/XmlHolder.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZOR_SWEEP_LSAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZOR_SWEEP_LSAN 1
#endif
#endif
#ifdef ZOR_SWEEP_LSAN
#include <sanitizer/lsan_interface.h>
#endif

namespace {

// Allocations are counted only while armed; the failAt-th one fails.
struct Counter {
    bool armed = false;
    long long calls = 0;
    long long failAt = 0;
    bool failed = false;
} g_count;

bool next_allocation_allowed() {
    if (!g_count.armed || ++g_count.calls != g_count.failAt) return true;
    g_count.failed = true;
    return false;
}

void* counted_malloc(std::size_t size) {
    return next_allocation_allowed() ? std::malloc(size != 0 ? size : 1) : nullptr;
}

}  // namespace

// new and delete are malloc and free here; GCC takes the pair for a mismatch.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif

void* operator new(std::size_t size) {
    void* p = counted_malloc(size);
    if (p == nullptr) throw std::bad_alloc();
    return p;
}
void* operator new[](std::size_t size) { return ::operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return counted_malloc(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return counted_malloc(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }

namespace {

const bool g_hooked = [] {
    pugi::set_memory_management_functions(counted_malloc, std::free);
    zor::g_allocationGate = next_allocation_allowed;
    return true;
}();

// Runs f (calls into the library) with allocations counted. The test's own
// work between such calls is never made to fail.
template <class F>
auto library(F&& f) {
    struct Arm {
        Arm() { g_count.armed = true; }
        ~Arm() { g_count.armed = false; }
    } arm;
    return f();
}

// What one run gave: the reader's failure result, or its result written out.
struct Outcome {
    bool failed = false;
    std::string text;
};

int open_files() {
    int count = 0;
    if (DIR* dir = opendir("/proc/self/fd")) {
        while (readdir(dir) != nullptr) ++count;
        closedir(dir);
    }
    return count;
}

std::string number(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", v);
    return text;
}

// Runs run() without failures, then with the k-th allocation failing for
// every k it makes. endsEarly: the reader cannot tell running out of memory
// from the end of its input (ReadType, API_ReadList), so a failed run may
// also show as a whole result cut short.
void sweep(const std::function<Outcome()>& run, bool endsEarly = false) {
    g_count = Counter{};
    const Outcome whole = run();
    ASSERT_FALSE(whole.failed) << whole.text;
    long long k = 1;
    for (;; ++k) {
        const int files = open_files();
        g_count = Counter{false, 0, k, false};
        Outcome got;
        bool threw = false;
        try {
            got = run();
        } catch (...) {
            threw = true;
        }
        g_count.armed = false;
        ASSERT_FALSE(threw) << "allocation " << k << " threw into the host";
        ASSERT_EQ(open_files(), files) << "allocation " << k << " left a file open";
        if (!g_count.failed) {  // a run without an injected failure: the whole result
            EXPECT_FALSE(got.failed);
            EXPECT_EQ(got.text, whole.text);
            break;
        }
        if (got.failed) continue;
        if (got.text == whole.text) continue;  // an allocation the reader could do without (a reserve, a trim)
        if (endsEarly && whole.text.compare(0, got.text.size(), got.text) == 0) continue;
        ADD_FAILURE() << "allocation " << k << " failed, yet the read succeeded with\n"
                      << got.text << "\ninstead of\n"
                      << whole.text;
        return;
    }
    testing::Test::RecordProperty("allocations", std::to_string(k - 1));
#ifdef ZOR_SWEEP_LSAN
    EXPECT_EQ(__lsan_do_recoverable_leak_check(), 0) << "memory leaked";
#endif
}

std::string example(const char* name) { return std::string(ZOR_EXAMPLES_DIR) + "/" + name; }

std::string text_of(const CString& s) { return std::string(s.GetString()) + "|"; }

// The points of a point list, segment or profile folded into text.
std::string points_of(const CMWZORPointArray& list) {
    std::string out = std::to_string(list.GetSize()) + "[";
    for (long long i = 0; i < list.GetSize(); ++i)
        out += list[i] == nullptr ? "null "
                                  : number(list[i]->x) + "," + number(list[i]->y) + "," + number(list[i]->z) + " ";
    return out + "]";
}

std::string segments_of(const CMWZORSegmentPtrArray& segments) {
    std::string out;
    for (long long i = 0; i < segments.GetSize(); ++i)
        out +=
            segments[i] == nullptr ? "null " : std::to_string(segments[i]->m_type) + points_of(segments[i]->m_points);
    return out;
}

std::string profile_of(CMWZORSegmentArray& list) {
    return segments_of(list.m_segments) + " unit " + std::to_string(list.m_unit) + " toler " +
           number(list.m_tolerance) + " scale " + number(list.m_scale);
}

std::string numbers(const double* values, int n) {
    std::string out;
    for (int i = 0; i < n; ++i) out += number(values[i]) + " ";
    return out;
}

// Everything a record read handed out.
std::string record_of(unsigned int type, const zortest::Outputs& o) {
    std::string out = std::to_string(type) + ": " + text_of(o.name) + text_of(o.tailText) + text_of(o.attachName) +
                      text_of(o.attachKey) + text_of(o.reference) + std::to_string(o.attachIndex) + " " +
                      numbers(o.d, 3) + numbers(o.vector, 4) + numbers(&o.matrix[0][0], 16) + numbers(o.direction, 4) +
                      numbers(o.p, 26) + numbers(o.p20, 4) + number(o.value) + points_of(o.list1) + points_of(o.list2) +
                      segments_of(o.segments);
    for (unsigned int u : o.u) out += std::to_string(u) + " ";
    if (type == ZOR_RECORD_MESH && o.vertices != nullptr && o.corners != nullptr)
        out += std::to_string(o.vertexCount) + " " + std::to_string(o.count) + " " +
               numbers(o.vertices[0], 4 * static_cast<int>(o.vertexCount)) +
               numbers(o.corners[0], 4 * static_cast<int>(o.count));
    return out + "\n";
}

// A host's walk over an object file: every record read (unknown ones
// skipped), stopping at the first that fails.
Outcome walk_object_file(const std::string& path) {
    zor::reset_object_file_state();
    const auto cwd = std::filesystem::current_path();  // a file reference changes it
    Outcome r;
    CString name(path.c_str());
    std::optional<CMWZORFile> file;
    library([&] { file.emplace(std::move(name), 0, 1, 1); });
    unsigned int type = 0;
    while (library([&] { return file->ReadType(&type); })) {
        zortest::Outputs o;
        if (!library([&] { return zortest::read_record(*file, type, o); })) {
            r.failed = true;
            break;
        }
        r.text += record_of(type, o);
    }
    std::filesystem::current_path(cwd);
    return r;
}

class ObjectFileSweep : public testing::TestWithParam<const char*> {};

// ReadType cannot tell running out of memory from the end of the file: a
// failed run may look like a walk that ended early.
TEST_P(ObjectFileSweep, EveryRecordReader) {
    const std::string path = example(GetParam());
    sweep([&] { return walk_object_file(path); }, true);
}

INSTANTIATE_TEST_SUITE_P(Examples, ObjectFileSweep,
                         testing::Values("objects/scene-1.15.obj", "objects/machine-1.08.obj",
                                         "objects/scrambled-1.13.obj", "objects/profiles-1.13.obj"));

// The collision section, old form (1.08) and compact form (1.15), read after a
// whole walk from where the last ReadType began.
TEST(CollisionSweep, BothForms) {
    for (const char* name : {"objects/machine-1.08.obj", "objects/scene-1.15.obj"}) {
        SCOPED_TRACE(name);
        const std::string path = example(name);
        sweep([&] {
            // The walk fills the name table that the compact form refers to.
            zor::reset_object_file_state();
            const auto cwd = std::filesystem::current_path();
            zortest::TestFile f(path.c_str(), 0, 1, 1);
            unsigned int type = 0;
            long at = 0;
            while (f.ReadType(&type)) {
                zortest::Outputs o;
                EXPECT_TRUE(zortest::read_record(f, type, o));
                at = std::ftell(f.m_stream);
            }
            std::filesystem::current_path(cwd);
            f.m_stream = std::fopen(path.c_str(), "r");
            std::fseek(f.m_stream, at, SEEK_SET);
            void **first = nullptr, **second = nullptr;
            unsigned int* codes = nullptr;
            double* values = nullptr;
            unsigned int count = 0;
            Outcome r;
            r.failed = !library([&] { return f.ReadCollision(&first, &second, &codes, &values, &count); });
            for (unsigned int i = 0; !r.failed && i < count; ++i)
                r.text += std::string(static_cast<char*>(first[i])) + "-" + static_cast<char*>(second[i]) + ":" +
                          std::to_string(codes[i]) + "/" + number(values[i]) + " ";
            f.FreeCollision(first, second, codes, values, count);
            return r;
        });
    }
}

// Native profile files: read, written and copied.
template <class Profile>
void sweep_native_profile(const char* name) {
    SCOPED_TRACE(name);
    const std::string path = example(name);
    sweep([&] {
        Profile profile;
        CString file(path.c_str());
        Outcome r;
        r.failed = !library([&] { return profile.ResadFile(std::move(file), 1); });
        r.text = profile_of(profile);
        return r;
    });
    Profile source;
    ASSERT_TRUE(source.ResadFile(path.c_str(), 0));
    const zortest::TempDir dir;
    const std::string out = dir.file("written");
    sweep([&] {
        CString file(out.c_str());
        Outcome r;
        if constexpr (std::is_same_v<Profile, CMWZORExtrude>)
            r.failed = !library([&] { return source.WriteFile(std::move(file), -1, 2); });
        else
            r.failed = !library([&] { return source.WriteFile(std::move(file)); });
        r.text = zortest::read_file(out);
        return r;
    });
    // Copy has no result: running out of memory leaves the target empty.
    sweep([&] {
        Profile target;
        target.AddPoint(9, 9, 9);
        library([&] { source.Copy(&target); });
        return Outcome{target.m_segments.GetSize() == 0, profile_of(target)};
    });
}

TEST(ProfileSweep, NativeFiles) {
    sweep_native_profile<CMWZORExtrude>("profiles/rounded-plate.ext");
    sweep_native_profile<CMWZORExtrude>("profiles/keyhole-inch.ext");
    sweep_native_profile<CMWZORSweep>("profiles/turned-pin.swp");
}

// A foreign profile read into a fresh object: read(profile, path).
template <class Profile, class Read>
void sweep_foreign_profile(const char* name, Read read) {
    SCOPED_TRACE(name);
    const std::string path = example(name);
    sweep([&] {
        Profile profile;
        CString file(path.c_str());
        Outcome r;
        r.failed = !library([&] { return read(profile, std::move(file)); });
        r.text = profile_of(profile);
        if constexpr (std::is_same_v<Profile, CMWZORExtrude>)
            r.text += " z " + number(profile.m_zMin) + " " + number(profile.m_zMax);
        return r;
    });
}

TEST(ProfileSweep, ForeignFiles) {
    const auto vericut = [](auto& profile, CString file) { return profile.ReadVericut(std::move(file), 1, 2); };
    const auto sirius = [](auto& profile, CString file) { return profile.ReadSirius(std::move(file), 2, 1); };
    sweep_foreign_profile<CMWZORExtrude>("foreign/vericut-sweep.xml", vericut);
    sweep_foreign_profile<CMWZORExtrude>("foreign/vericut-sweep.txt", vericut);
    sweep_foreign_profile<CMWZORSweep>("foreign/vericut-sor.xml", vericut);
    sweep_foreign_profile<CMWZORExtrude>("foreign/sirius.txt", sirius);
    sweep_foreign_profile<CMWZORSweep>("foreign/sirius.txt", sirius);
    sweep_foreign_profile<CMWZORExtrude>("foreign/machineworks-ext.xml", [](CMWZORExtrude& p, CString f) {
        return p.ReadMachineWorksExt(std::move(f));
    });
    sweep_foreign_profile<CMWZORSweep>("foreign/machineworks-rot.xml",
                                       [](CMWZORSweep& p, CString f) { return p.ReadMachineWorksRot(std::move(f)); });
}

// The flat-array readers: read(path, &count, &array) returns 1 or 0; the
// array is malloc'ed.
template <class Count, class Read>
void sweep_flat_arrays(const char* name, Read read) {
    SCOPED_TRACE(name);
    std::string path = example(name);
    sweep([&] {
        Count count = 0;
        double* points = nullptr;
        Outcome r;
        r.failed = library([&] { return read(&path[0], &count, &points); }) != 1;
        r.text = std::to_string(count) + ": " + numbers(points, 3 * static_cast<int>(count));
        std::free(points);
        return r;
    });
}

TEST(FlatArraySweep, VericutReaders) {
    sweep_flat_arrays<int>("foreign/vericut-sor.xml", [](char* f, int* n, double** p) {
        double tolerance = 0;
        return VericutSor(f, n, p, &tolerance, 1, 2);
    });
    for (const char* name : {"foreign/vericut-sweep.xml", "foreign/vericut-sweep.txt"})
        sweep_flat_arrays<int>(name, [](char* f, int* n, double** p) {
            double z[2] = {0, 0};
            return VericutSweep(f, n, p, z, 1, 2);
        });
    sweep_flat_arrays<unsigned int>("foreign/vericut-cube.pol", [](char* f, unsigned int* n, double** p) {
        unsigned int vectors = 0, faces = 0;
        double* v = nullptr;
        unsigned int* fs = nullptr;
        return VericutPolygon(f, n, p, &vectors, &v, &faces, &fs, 1, 1);
    });
}

TEST(FlatArraySweep, StlFile) {
    for (const char* name : {"stl/cube-ascii.stl", "stl/cube-binary.stl"}) {
        SCOPED_TRACE(name);
        std::string path = example(name);
        sweep([&] {
            unsigned int counts[3] = {0, 0, 0};
            double* points = nullptr;
            double* vectors = nullptr;
            unsigned int* faces = nullptr;
            Outcome r;
            r.failed =
                library([&] {
                    return StlFile(&path[0], &counts[0], &points, &counts[1], &vectors, &counts[2], &faces, 1, 1);
                }) != 1;
            r.text =
                numbers(points, 3 * static_cast<int>(counts[0])) + numbers(vectors, 3 * static_cast<int>(counts[1]));
            for (unsigned int i = 0; i < 4 * counts[2]; ++i) r.text += std::to_string(faces[i]) + " ";
            std::free(points);
            std::free(vectors);
            std::free(faces);
            return r;
        });
    }
}

TEST(DxfSweep, ReadDxfAndDeleteNames) {
    const zortest::TempDir dir;
    for (const char* name : {"dxf/bracket.dxf", "dxf/shaft.dxf"}) {
        SCOPED_TRACE(name);
        const std::string path = example(name);
        sweep([&] {
            std::filesystem::remove_all(dir.path());
            std::filesystem::create_directory(dir.path());
            CString drawing(path.c_str()), out(dir.file("part.ext").c_str());
            CString* names = library([&] { return ReadDxf(std::move(drawing), std::move(out), 1, 0, false); });
            Outcome r{names == nullptr, ""};
            for (const CString* n = names; n != nullptr && !n->IsEmpty(); ++n)
                r.text += text_of(*n) + zortest::read_file(n->GetString());
            library([&] { Delete_Names(names, 0); });
            return r;
        });
    }
}

TEST(ContourSweep, LooseSegmentsToContours) {
    // A square given out of order and turned, and an open chain of two.
    const double ends[][4] = {{0, 0, 1, 0}, {1, 1, 0, 1}, {1, 1, 1, 0}, {0, 1, 0, 0}, {5, 5, 6, 5}, {7, 5, 6, 5}};
    constexpr int kCount = 6;
    sweep([&] {
        Segment_end points[2 * kCount] = {};
        Segment_ord records[kCount] = {};
        for (int i = 0; i < kCount; ++i) {
            points[2 * i].x = ends[i][0];
            points[2 * i].y = ends[i][1];
            points[2 * i + 1].x = ends[i][2];
            points[2 * i + 1].y = ends[i][3];
            records[i].end[0] = &points[2 * i];
            records[i].end[1] = &points[2 * i + 1];
            records[i].kind = 1;
            records[i].next = i + 1 < kCount ? &records[i + 1] : nullptr;
        }
        Segment_settings settings{};
        settings.tolerance = 0.001;
        void* result = library([&] { return API_GetSegmentContours(&settings, records); });
        Outcome r{result == nullptr, ""};
        for (const Segment_contour* c = result != nullptr ? static_cast<Segment_result*>(result)->first : nullptr;
             c != nullptr; c = c->next) {
            r.text += std::to_string(c->closed) + ":";
            for (const Segment_ord* s = c->startSegment; s != nullptr; s = s->nextInContour)
                r.text += std::to_string(s - records) + " ";
        }
        API_ReleaseSegmentContours(result);
        return r;
    });
}

TEST(ArcStepSweep, EveryArcOfAProfile) {
    CMWZORExtrude plate;
    ASSERT_TRUE(plate.ResadFile(example("profiles/rounded-plate.ext").c_str(), 1));
    sweep([&] {
        zor::reset_arc_step_state();
        Outcome r;
        plate.SetStart();
        m_IOenumType type;
        while (plate.GetType(&type)) {
            if (type != IO_LINE) {
                double p[3];
                const int n = library([&] { return plate.GetArcStep(&p[0], &p[1], &p[2], 0); });
                if (n == 0) r.failed = true;
                for (int step = 1; step <= n; ++step) {
                    library([&] { return plate.GetArcStep(&p[0], &p[1], &p[2], step); });
                    r.text += numbers(p, 3);
                }
            }
            if (plate.GetNext() == nullptr) break;
        }
        return r;
    });
}

// API_ReadList's "" also ends a walk that ran out of memory.
TEST(ToolLibrarySweep, IsXmlAndTheWalk) {
    std::string path = example("tools/tool-library.xml");
    sweep(
        [&] {
            zor::reset_xml_document_state();
            int answer = -1;
            library([&] { API_IsXml(&path[0], &answer); });
            Outcome r{answer != 1, ""};
            for (int i = 0; !r.failed && i < 10000; ++i) {
                const std::string token = library([] { return API_ReadList(); });
                if (token.empty()) break;
                r.text += token + "\n";
            }
            library([] { API_ResetXmlDoc(); });
            return r;
        },
        true);
}

}  // namespace
