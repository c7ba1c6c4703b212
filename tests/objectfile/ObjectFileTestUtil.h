// Opens object files built by the test-side writer, reads any record into one
// set of outputs and exposes the reader's internal steps to the tests.
#pragma once

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "objectfile/MWZORFile.h"
#include "objectfile/ObjectFileState.h"
#include "profile/MWZORSegment.h"
#include "support/ObjectFileWriter.h"
#include "support/TempDir.h"

namespace zortest {

class TestFile : public CMWZORFile {
public:
    using CMWZORFile::CMWZORFile;
    using CMWZORFile::ReadDoubleField;
    using CMWZORFile::ReadField;
    using CMWZORFile::ReadFloatField;
    using CMWZORFile::ReadIntField;
    using CMWZORFile::ReadLine;
};

// Every output of the record readers; frees what they hand out. Engines use
// u[i] and p[i] for their outputs pi (p6..p9 adjacent, as a host holds them).
struct Outputs {
    double d[3] = {-1, -1, -1}, vector[4] = {-1, -1, -1, -1}, matrix[4][4] = {}, direction[4] = {-1, -1, -1, -1};
    double value = -7, axis[3] = {9, 9, 9}, p[26] = {}, p20[4] = {9, 9, 9, 9};
    CString texts[6], name = "unset", tailText, attachName, attachKey = "unset", reference;
    CMWZORPointArray list1, list2;
    CMWZORSegmentPtrArray segments;
    float quad[4] = {};
    unsigned int attachIndex = 99, count = 77, vertexCount = 77, first = 0, flag = 9, u[26];
    bool withP5 = true;
    double (*vertices)[4] = nullptr;
    double (*corners)[4] = nullptr;

    Outputs() { std::fill(std::begin(u), std::end(u), 99u); }
    Outputs(const Outputs&) = delete;
    ~Outputs() {
        for (long long i = 0; i < segments.GetSize(); ++i) delete segments[i];
        for (CMWZORPointArray* list : {&list1, &list2})
            for (long long i = 0; i < list->GetSize(); ++i) delete list->GetAt(i);
        delete[] vertices;
        delete[] corners;
    }
};

// Reads a record of the given type (unknown ones skipped) into o.
inline bool read_record(CMWZORFile& f, unsigned int type, Outputs& o) {
    auto solid = [&](auto read, auto... dims) {
        return (f.*read)(dims..., o.vector, &o.texts[0], &o.texts[1], &o.texts[2], &o.texts[3], &o.texts[4],
                         &o.texts[5], o.matrix, &o.list1, &o.list2, o.quad, &o.name, &o.tailText, &o.attachName,
                         &o.attachKey, &o.attachIndex);
    };
    auto part = [&](auto read) {
        return (f.*read)(o.vector, &o.texts[0], &o.texts[1], &o.texts[2], o.matrix, &o.list1, &o.list2, o.quad, &o.name,
                         &o.tailText, &o.attachName, &o.attachKey, &o.attachIndex);
    };
    auto profile = [&](auto read) {
        return (f.*read)(o.vector, &o.count, &o.segments, &o.texts[0], &o.texts[1], &o.texts[2], o.matrix, &o.list1,
                         &o.list2, o.quad, o.direction, &o.value, &o.name, &o.tailText, &o.attachName, &o.attachKey,
                         &o.attachIndex);
    };
    unsigned int* u = o.u;
    double* p = o.p;
    if (type == ZOR_RECORD_CUBE) return solid(&CMWZORFile::ReadCube, &o.d[0], &o.d[1], &o.d[2]);
    if (type == ZOR_RECORD_CYLINDER) return solid(&CMWZORFile::ReadCylinder, &o.d[0], &o.d[1], &o.d[2]);
    if (type == ZOR_RECORD_CONE) return solid(&CMWZORFile::ReadCone, &o.d[0], &o.d[1]);
    if (type == ZOR_RECORD_TORUS) return solid(&CMWZORFile::ReadTorus, &o.d[0], &o.d[1]);
    if (type == ZOR_RECORD_SPHERE) return solid(&CMWZORFile::ReadSphere, &o.d[0]);
    if (type == ZOR_RECORD_PART) return part(&CMWZORFile::ReadPart);
    if (type == ZOR_RECORD_TOOL) return part(&CMWZORFile::ReadTool);
    if (type == ZOR_RECORD_EXTRUSION) return profile(&CMWZORFile::ReadExtrusion);
    if (type == ZOR_RECORD_REVOLUTION) return profile(&CMWZORFile::ReadRevolution);
    if (type == ZOR_RECORD_CONTAINER) return true;
    if (type == ZOR_RECORD_MESH)
        return f.ReadMesh(o.vector, &o.vertexCount, &o.vertices, &o.texts[0], &o.texts[1], &o.texts[2], &o.count,
                          &o.corners, o.matrix, &o.list1, &o.list2, o.quad, &o.name, &o.tailText, &o.attachName,
                          &o.attachKey, &o.attachIndex);
    if (type == ZOR_RECORD_FILE)
        return f.ReadObjectFile(&o.first, &o.reference, &o.texts[0], o.vector, &o.texts[1], &o.texts[2], &o.texts[3],
                                o.matrix, &o.list1, &o.list2, o.quad, &o.name, &o.tailText, &o.attachName, &o.attachKey,
                                &o.attachIndex, &o.flag);
    if (type == ZOR_RECORD_ENGINE)
        return f.ReadEngin(&o.name, &u[1], o.axis, &u[4], o.withP5 ? &u[5] : nullptr, &p[6], &p[7], &p[8], &p[9],
                           &u[10], &p[11], &p[12], &u[13], &u[14], &p[15], &p[16], &u[17], &u[18], &p[19], o.p20,
                           &u[21], &u[22], &u[23], &o.attachKey, &u[25]);
    return f.ReadDummy();
}

// Writes bytes into a file of its own and opens them as an object file.
struct OpenedFile {
    std::string path;
    std::unique_ptr<TestFile> file;
    unsigned int type = 0;

    explicit OpenedFile(const std::string& bytes, unsigned int units = 1, int matrixConvention = 1) {
        static const TempDir dir;  // one folder: truncation sweeps open thousands of files
        static int serial = 0;
        zor::reset_object_file_state();
        path = dir.write(std::to_string(++serial) + ".obj", bytes);
        file = std::make_unique<TestFile>(path.c_str(), 0, units, matrixConvention);
    }
    ~OpenedFile() { std::remove(path.c_str()); }
    TestFile* operator->() { return file.get(); }
    // Reads the next record into o; false if there is none or it fails.
    bool next(Outputs& o) { return file->ReadType(&type) && read_record(*file, type, o); }
};

// n doubles from p, for one comparison that prints them all.
inline std::vector<double> vec(const double* p, int n) { return {p, p + n}; }

// Reads every record as a host does: their codes, "!" after a failed one.
inline std::string walk(CMWZORFile& f) {
    std::string codes;
    unsigned int type = 0;
    while (f.ReadType(&type)) {
        Outputs o;
        codes += std::to_string(type);
        if (!read_record(f, type, o)) return codes + "!";
        codes += " ";
    }
    return codes;
}

}  // namespace zortest
