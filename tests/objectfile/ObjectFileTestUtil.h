// Opens object files built by the test-side writer and exposes the reader's
// internal steps to the tests.
#pragma once

#include <memory>
#include <string>

#include "objectfile/MWZORFile.h"
#include "objectfile/ObjectFileState.h"
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
    using CMWZORFile::ReadGeometryBlock;
    using CMWZORFile::ReadLine;
};

// Writes bytes into a fresh folder and opens them as an object file.
struct OpenedFile {
    TempDir dir;
    std::string path;
    std::unique_ptr<TestFile> file;

    explicit OpenedFile(const std::string& bytes, unsigned int units = 1, int matrixConvention = 1,
                        const std::string& name = "test.obj") {
        zor::reset_object_file_state();
        path = dir.write(name, bytes);
        file = std::make_unique<TestFile>(path.c_str(), 0, units, matrixConvention);
    }
    TestFile* operator->() { return file.get(); }
};

// The outputs of a solid record.
struct SolidOutputs {
    double d[3] = {-1, -1, -1};
    double vector[4] = {-1, -1, -1, -1};
    CString texts[6];
    double matrix[4][4] = {};
    CMWZORPointArray list1, list2;
    float quad[4] = {};
    CString name, tailText, attachName, attachKey;
    unsigned int attachIndex = 99;

    ~SolidOutputs() {
        for (CMWZORPointArray* list : {&list1, &list2})
            for (long long i = 0; i < list->GetSize(); ++i) delete list->GetAt(i);
    }
};

inline bool read_cube(CMWZORFile& f, SolidOutputs& o) {
    return f.ReadCube(&o.d[0], &o.d[1], &o.d[2], o.vector, &o.texts[0], &o.texts[1], &o.texts[2], &o.texts[3],
                      &o.texts[4], &o.texts[5], o.matrix, &o.list1, &o.list2, o.quad, &o.name, &o.tailText,
                      &o.attachName, &o.attachKey, &o.attachIndex);
}

inline bool read_sphere(CMWZORFile& f, SolidOutputs& o) {
    return f.ReadSphere(&o.d[0], o.vector, &o.texts[0], &o.texts[1], &o.texts[2], &o.texts[3], &o.texts[4],
                        &o.texts[5], o.matrix, &o.list1, &o.list2, o.quad, &o.name, &o.tailText, &o.attachName,
                        &o.attachKey, &o.attachIndex);
}

}  // namespace zortest
