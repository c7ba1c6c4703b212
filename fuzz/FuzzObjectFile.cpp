// The object file: a whole walk with ReadType and every record reader, as a
// host does it, with both matrix conventions and both caller units.
#include <cstdint>

#include "FuzzSupport.h"
#include "ZORModelIo.h"

namespace {

struct Outputs {
    double d[3] = {}, vector[4] = {}, matrix[4][4] = {};
    CString texts[6], name, tailText, attachName, attachKey;
    CMWZORPointArray list1, list2;
    float quad[4] = {};
    unsigned int attachIndex = 0;
    ~Outputs() {
        for (CMWZORPointArray* list : {&list1, &list2})
            for (long long i = 0; i < list->GetSize(); ++i) delete list->GetAt(i);
    }
};

bool read_record(CMWZORFile& f, unsigned int type) {
    Outputs o;
    switch (type) {
        case ZOR_RECORD_CUBE:
            return f.ReadCube(&o.d[0], &o.d[1], &o.d[2], o.vector, &o.texts[0], &o.texts[1], &o.texts[2],
                              &o.texts[3], &o.texts[4], &o.texts[5], o.matrix, &o.list1, &o.list2, o.quad, &o.name,
                              &o.tailText, &o.attachName, &o.attachKey, &o.attachIndex);
        case ZOR_RECORD_CYLINDER:
            return f.ReadCylinder(&o.d[0], &o.d[1], &o.d[2], o.vector, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, o.matrix, &o.list1, nullptr, o.quad, &o.name, &o.tailText,
                                  &o.attachName, &o.attachKey, &o.attachIndex);
        case ZOR_RECORD_CONE:
            return f.ReadCone(&o.d[0], &o.d[1], o.vector, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                              o.matrix, nullptr, &o.list2, o.quad, &o.name, &o.tailText, &o.attachName,
                              &o.attachKey, &o.attachIndex);
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
            return f.ReadObjectFile(&first, &reference, &text2, o.vector, nullptr, nullptr, nullptr, o.matrix,
                                    nullptr, nullptr, o.quad, &o.name, &o.tailText, &o.attachName, &o.attachKey,
                                    &o.attachIndex, &flag);
        }
        case ZOR_RECORD_CONTAINER:
            return true;
        default:
            return f.ReadDummy();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = zorfuzz::write_input(data, size, "input.obj");
    const unsigned int units = size > 0 && (data[0] & 1) ? 2 : 1;
    const int convention = size > 1 && (data[1] & 1) ? 1 : 0;
    CMWZORFile file(path.c_str(), 0, units, convention);
    unsigned int type = 0;
    while (file.ReadType(&type))
        if (!read_record(file, type)) break;
    return 0;
}
