// The object file: a whole walk with ReadType and every record reader, as a
// host does it, then the collision section after the last record. Each input
// is walked twice: millimetres with matrices converted, old-form collision
// entry and unknown records skipped; then inches with matrices as read,
// ReadCollisionNew called directly and unknown records read as outlines.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "FuzzSupport.h"
#include "ZORModelIo.h"

namespace {

struct Pass {
    unsigned int units;
    int convention;
    bool newCollisionForm;
    bool unknownAsOutline;
};

// Reads every value the reader says it handed out, so that AddressSanitizer
// sees a count that is larger than its array.
volatile double g_sink;

void touch(const double (*rows)[4], unsigned int count) {
    if (rows == nullptr || count == 0) return;
    g_sink = rows[0][0] + rows[count - 1][3];
}

struct Outputs {
    double d[3] = {}, vector[4] = {}, matrix[4][4] = {};
    CString texts[6], name, tailText, attachName, attachKey;
    CMWZORPointArray list1, list2;
    CMWZORSegmentPtrArray segments;
    float quad[4] = {};
    unsigned int attachIndex = 0;
    ~Outputs() {
        for (CMWZORPointArray* list : {&list1, &list2})
            for (long long i = 0; i < list->GetSize(); ++i) delete list->GetAt(i);
        for (long long i = 0; i < segments.GetSize(); ++i) delete segments.GetAt(i);
    }
};

// A profile record read successfully reports no more segments than its list
// holds (a closed outline's last slot may be empty), and every segment has
// the points of its type.
void check_segments(const CMWZORSegmentPtrArray& segments, unsigned int reported) {
    if (reported > static_cast<unsigned long long>(segments.GetSize())) __builtin_trap();
    for (long long i = 0; i < segments.GetSize(); ++i) {
        const CMWZORSegment* s = segments.GetAt(i);
        if (s == nullptr) continue;
        if (s->m_points.GetSize() != (s->m_type == IO_LINE ? 1 : 3)) __builtin_trap();
    }
}

bool read_mesh(CMWZORFile& f, Outputs& o) {
    unsigned int vertexCount = 0, cornerCount = 0;
    double(*vertices)[4] = nullptr;
    double(*corners)[4] = nullptr;
    const bool ok = f.ReadMesh(o.vector, &vertexCount, &vertices, &o.texts[0], &o.texts[1], &o.texts[2], &cornerCount,
                               &corners, o.matrix, &o.list1, &o.list2, o.quad, &o.name, &o.tailText, &o.attachName,
                               &o.attachKey, &o.attachIndex);
    touch(vertices, vertexCount);
    if (ok) touch(corners, cornerCount);
    // Ours after a failed read too.
    delete[] vertices;
    delete[] corners;
    return ok;
}

bool read_engine(CMWZORFile& f, Outputs& o) {
    unsigned int kind = 0, p4 = 0, p5 = 0, p10 = 0, p13 = 0, p14 = 0, p17 = 0, p18 = 0, p21 = 0, p22 = 0, p23 = 0,
                 p25 = 0;
    // p6 to p9 adjacent: a conversion scales the four together.
    double axis[3] = {}, p6to9[4] = {}, p11 = 0, p12 = 0, p15 = 0, p16 = 0, p19 = 0, p20[4] = {};
    return f.ReadEngin(&o.name, &kind, axis, &p4, &p5, &p6to9[0], &p6to9[1], &p6to9[2], &p6to9[3], &p10, &p11, &p12,
                       &p13, &p14, &p15, &p16, &p17, &p18, &p19, p20, &p21, &p22, &p23, &o.attachKey, &p25);
}

bool read_profile(CMWZORFile& f, Outputs& o, unsigned int type) {
    unsigned int count = 0;
    double direction[4] = {}, value = 0;
    bool ok = false;
    if (type == ZOR_RECORD_EXTRUSION)
        ok = f.ReadExtrusion(o.vector, &count, &o.segments, &o.texts[0], &o.texts[1], &o.texts[2], o.matrix, &o.list1,
                             &o.list2, o.quad, direction, &value, &o.name, &o.tailText, &o.attachName, &o.attachKey,
                             &o.attachIndex);
    else if (type == ZOR_RECORD_REVOLUTION)
        ok = f.ReadRevolution(o.vector, &count, &o.segments, &o.texts[0], &o.texts[1], &o.texts[2], o.matrix, &o.list1,
                              &o.list2, o.quad, direction, &value, &o.name, &o.tailText, &o.attachName, &o.attachKey,
                              &o.attachIndex);
    else
        ok = f.ReadOutline(o.vector, &count, &o.segments, &o.texts[0], &o.texts[1], &o.texts[2], o.matrix, o.quad,
                           &o.texts[3], &o.texts[4]);
    if (ok) check_segments(o.segments, count);
    return ok;
}

bool read_record(CMWZORFile& f, unsigned int type, const Pass& pass) {
    Outputs o;
    switch (type) {
        case ZOR_RECORD_CUBE:
            return f.ReadCube(&o.d[0], &o.d[1], &o.d[2], o.vector, &o.texts[0], &o.texts[1], &o.texts[2], &o.texts[3],
                              &o.texts[4], &o.texts[5], o.matrix, &o.list1, &o.list2, o.quad, &o.name, &o.tailText,
                              &o.attachName, &o.attachKey, &o.attachIndex);
        case ZOR_RECORD_CYLINDER:
            return f.ReadCylinder(&o.d[0], &o.d[1], &o.d[2], o.vector, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, o.matrix, &o.list1, nullptr, o.quad, &o.name, &o.tailText, &o.attachName,
                                  &o.attachKey, &o.attachIndex);
        case ZOR_RECORD_CONE:
            return f.ReadCone(&o.d[0], &o.d[1], o.vector, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                              o.matrix, nullptr, &o.list2, o.quad, &o.name, &o.tailText, &o.attachName, &o.attachKey,
                              &o.attachIndex);
        case ZOR_RECORD_SPHERE:
            return f.ReadSphere(&o.d[0], o.vector, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, o.matrix,
                                &o.list1, &o.list2, o.quad, &o.name, &o.tailText, &o.attachName, &o.attachKey,
                                &o.attachIndex);
        case ZOR_RECORD_TORUS:
            return f.ReadTorus(&o.d[0], &o.d[1], nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               o.matrix, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        case ZOR_RECORD_FILE: {
            unsigned int first = 0, flag = 0;
            CString reference, text2;
            // A relative reference resolves against the input's own folder.
            return f.ReadObjectFile(&first, &reference, &text2, o.vector, nullptr, nullptr, nullptr, o.matrix, nullptr,
                                    nullptr, o.quad, &o.name, &o.tailText, &o.attachName, &o.attachKey, &o.attachIndex,
                                    &flag);
        }
        case ZOR_RECORD_MESH:
            return read_mesh(f, o);
        case ZOR_RECORD_PART:
            return f.ReadPart(o.vector, &o.texts[0], &o.texts[1], &o.texts[2], o.matrix, &o.list1, &o.list2, o.quad,
                              &o.name, &o.tailText, &o.attachName, &o.attachKey, &o.attachIndex);
        case ZOR_RECORD_TOOL:
            return f.ReadTool(o.vector, nullptr, nullptr, nullptr, o.matrix, &o.list1, &o.list2, o.quad, &o.name,
                              &o.tailText, &o.attachName, &o.attachKey, &o.attachIndex);
        case ZOR_RECORD_ENGINE:
            return read_engine(f, o);
        case ZOR_RECORD_EXTRUSION:
        case ZOR_RECORD_REVOLUTION:
            return read_profile(f, o, type);
        case ZOR_RECORD_CONTAINER:
            return true;
        default:
            return pass.unknownAsOutline ? read_profile(f, o, type) : f.ReadDummy();
    }
}

// The collision section is read from where the last ReadType began (that
// call ran to the end of the file), past the "}" lines closing containers.
class SceneFile : public CMWZORFile {
public:
    using CMWZORFile::CMWZORFile;

    void ReadTrailingCollisions(const std::string& path, long start, bool newForm) {
        if (!SeekCollisionSection(path.c_str(), start)) return;
        void** first = nullptr;
        void** second = nullptr;
        unsigned int* codes = nullptr;
        double* values = nullptr;
        unsigned int count = 0;
        const bool ok = newForm ? ReadCollisionNew(&first, &second, &codes, &values, &count)
                                : ReadCollision(&first, &second, &codes, &values, &count);
        // A success hands out count filled entries; a failure may leave
        // arrays (of count zeroed entries) or none.
        if (ok && (first == nullptr || second == nullptr || codes == nullptr || values == nullptr || count == 0))
            __builtin_trap();
        if (codes != nullptr && values != nullptr && count > 0) g_sink = values[count - 1] + codes[count - 1];
        for (void** names : {first, second})
            for (unsigned int i = 0; names != nullptr && i < count; ++i) {
                if (ok && names[i] == nullptr) __builtin_trap();
                if (names[i] != nullptr) g_sink = static_cast<double>(std::strlen(static_cast<char*>(names[i])));
            }
        FreeCollision(first, second, codes, values, count);
    }
};

void walk(const std::string& path, const Pass& pass) {
    SceneFile file(path.c_str(), 0, pass.units, pass.convention);
    // The stubs: nothing to read, nothing written.
    CString a, b, c;
    file.ReadVariable(&a, &b, &c);
    file.ReadLight();
    file.ReadWorld();
    file.ReadCamera();

    unsigned int type = 0;
    long lastStart = file.m_stream != nullptr ? std::ftell(file.m_stream) : -1;
    bool failed = false;
    while (file.ReadType(&type)) {
        if (!read_record(file, type, pass)) {
            failed = true;
            break;
        }
        lastStart = file.m_stream != nullptr ? std::ftell(file.m_stream) : -1;
    }
    if (!failed && lastStart >= 0) file.ReadTrailingCollisions(path, lastStart, pass.newCollisionForm);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = zorfuzz::write_input(data, size, "input.obj");
    walk(path, {1, 0, false, false});
    walk(path, {2, 1, true, true});
    return 0;
}
