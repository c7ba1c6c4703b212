// Vericut polygon, SOR and sweep files as flat arrays.
#include "mesh/VericutReaders.h"

#include <cstdlib>

#include "mesh/VericutImport.h"
#include "module/Allocation.h"
#include "platform/crtpath.h"
#include "profile/MWZORProfile.h"

namespace zor {

namespace {

// Header lines are read with an 81-byte buffer (at most 80 characters a read).
constexpr int kPolygonLineBuffer = 81;

// Hands out the end points of the profile's line segments, times factor, as
// malloc'ed x, y, z triples; arcs are left out. False if the array cannot be
// allocated.
bool line_points(CMWZORSegmentArray& profile, double factor, int* numPoints, double** points) {
    const long long segments = profile.m_segments.GetSize();
    // Room for every segment; only the lines fill it.
    double* out =
        static_cast<double*>(zor::allocate(static_cast<size_t>(segments > 0 ? segments : 1) * 3 * sizeof(double)));
    if (out == nullptr) return false;
    int written = 0;
    profile.SetStart();
    m_IOenumType type;
    while (profile.GetType(&type)) {
        if (type == IO_LINE) {
            double* triple = out + 3 * written;
            profile.GetLine(&triple[0], &triple[1], &triple[2]);
            for (int i = 0; i < 3; ++i) triple[i] *= factor;
            ++written;
        }
        if (profile.GetNext() == nullptr) break;
    }
    *numPoints = written;
    *points = out;
    return true;
}

}  // namespace

int VP_scan(std::FILE* stream, long long* triangles) {
    long long count = 0;
    auto finish = [&](int result) {
        if (triangles != nullptr) *triangles = count;
        return result;
    };
    if (stream == nullptr) return finish(0);

    char line[kPolygonLineBuffer];
    // Lines 1 and 2 are not interpreted.
    for (int i = 0; i < 2; ++i)
        if (std::fgets(line, sizeof line, stream) == nullptr) return finish(0);
    int format = 0;
    if (std::fgets(line, sizeof line, stream) == nullptr || std::sscanf(line, "%d", &format) != 1 || format != 1)
        return finish(0);
    int perVertexNormals = 0, orientation = 0, third = 0;
    if (std::fgets(line, sizeof line, stream) == nullptr ||
        std::sscanf(line, "%d %d %d", &perVertexNormals, &orientation, &third) != 3 || third == 0 || orientation == 2)
        return finish(0);

    // The points and normals are only checked and counted here: the face
    // normal they imply (and its flip for orientation 1) changes nothing in
    // the result, so they are not kept. Not keeping them also lifts the old
    // limit of four points a polygon, past which the original overran its
    // buffer; polygons of up to four points read exactly as before.
    bool failed = false;
    int n = 0;
    while (std::fscanf(stream, "%d", &n) == 1) {
        double v[3];
        for (int i = 0; i < n; ++i)
            if (std::fscanf(stream, "%lf %lf %lf", &v[0], &v[1], &v[2]) != 3) return finish(0);
        const int normals = perVertexNormals != 0 ? n : 1;
        for (int i = 0; i < normals; ++i) {
            if (std::fscanf(stream, "%lf %lf %lf", &v[0], &v[1], &v[2]) != 3) {
                failed = true;
                break;
            }
        }
        count += static_cast<long long>(n) - 2;  // a fan
    }
    return finish(failed || count < 1 ? 0 : 1);
}

}  // namespace zor

int VericutPolygon(char* fileName, unsigned int* numPoints, double** points, unsigned int* numVectors, double** vectors,
                   unsigned int* numFaces, unsigned int** faces, int /*wantedUnit*/, int /*fileUnit*/) {
    if (numPoints != nullptr) *numPoints = 0;
    if (numVectors != nullptr) *numVectors = 0;
    if (numFaces != nullptr) *numFaces = 0;
    if (points != nullptr) *points = nullptr;
    if (vectors != nullptr) *vectors = nullptr;
    if (faces != nullptr) *faces = nullptr;

    std::FILE* file = zor::failure_on_bad_alloc<std::FILE*>(nullptr, [&] { return zor::open_file(fileName, "r"); });
    if (file == nullptr) return 0;
    // The module has always closed the file before scanning it, so the scan's
    // first read failed, nothing was filled and the outputs stayed empty.
    // That result is kept without reading from a closed stream.
    std::fclose(file);
    return 1;
}

int VericutSor(char* fileName, int* numPoints, double** points, double* tolerance, int wantedUnit, int fileUnit) {
    // 24.5, not 25.4: the factor this reader has always applied; hosts
    // compensate for it, so it stays.
    double factor = 1.0;
    if (wantedUnit != fileUnit) {
        if (wantedUnit == 1 && fileUnit == 2) factor = 24.5;
        if (wantedUnit == 2 && fileUnit == 1) factor = 0.04081632653061224;
    }
    if (fileName == nullptr || numPoints == nullptr || points == nullptr) return 0;
    *numPoints = 0;
    // Out of memory (the file name's copy included): 0.
    return zor::failure_on_bad_alloc(0, [&] {
        CMWZORSweep sweep;
        if (!sweep.ReadVericut(fileName, 1, 1)) return 0;
        if (tolerance != nullptr) *tolerance = sweep.m_tolerance;
        return zor::line_points(sweep, factor, numPoints, points) ? 1 : 0;
    });
}

int VericutSweep(char* fileName, int* numPoints, double** points, double* zRange, int wantedUnit, int fileUnit) {
    if (fileName == nullptr || numPoints == nullptr || points == nullptr) return 0;
    *numPoints = 0;
    return zor::failure_on_bad_alloc(0, [&] {
        CMWZORExtrude extrude;
        if (!extrude.ReadVericut(fileName, 1, 1)) return 0;
        double factor = 1.0;
        if (wantedUnit != fileUnit) {
            if (wantedUnit == 1 && fileUnit == 2) factor = 25.4;
            if (wantedUnit == 2 && fileUnit == 1) factor = 0.03937007874015748;
        }
        if (zRange != nullptr) {
            extrude.GetZValues(&zRange[0], &zRange[1]);
            zRange[0] *= factor;
            zRange[1] *= factor;
        }
        return zor::line_points(extrude, factor, numPoints, points) ? 1 : 0;
    });
}
