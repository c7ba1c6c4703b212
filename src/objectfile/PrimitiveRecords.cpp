// The five analytic solids: type-specific lines, then the geometry block and
// the common tail, then unit conversion of a complete read.
#include "objectfile/MWZORFile.h"
#include "objectfile/ReadGuard.h"

bool CMWZORFile::ReadSolid(const char* layout, double* const dims[3], CString* const texts[3], double vector[4],
                           double matrix[4][4], CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4],
                           CString* name, CString* tailText, CString* attachName, CString* attachKey,
                           unsigned int* attachIndex) {
    return zor::contain_allocation_failure(m_stream, false, [&] {
        for (const char* step = layout; *step != '\0'; ++step) {
            bool ok;
            if (*step >= 'a' && *step <= 'c') {
                ok = ReadDoubleField(1, dims[*step - 'a']);
            } else if (*step >= 'D' && *step <= 'F') {
                CString scratch;
                CString* text = texts[*step - 'D'];
                ok = ReadField(text != nullptr ? text : &scratch);
            } else {
                ok = SkipLines(1);
            }
            if (!ok) return false;
        }
        CString nameValue;
        CString* nameOut = name != nullptr ? name : &nameValue;
        if (!ReadGeometryBlock(list1, list2, nameOut, nullptr, nullptr, nullptr, nullptr)) return false;
        int recordUnits = 0, flag = 0;
        if (!ReadObjectTail(vector, matrix, quad, nameOut, tailText, attachName, attachKey, attachIndex, &recordUnits,
                            &flag))
            return false;
        ScaleRecord(recordUnits, vector, matrix, dims, 3);
        return true;
    });
}

// The cube's file order is d2, d3, d1 and their texts in the same rotation:
// the application writes it so.
bool CMWZORFile::ReadCube(double* d1, double* d2, double* d3, double vector[4], CString*, CString*, CString*,
                          CString* text4, CString* text5, CString* text6, double matrix[4][4],
                          CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4], CString* name,
                          CString* tailText, CString* attachName, CString* attachKey, unsigned int* attachIndex) {
    double* const dims[3] = {d1, d2, d3};
    CString* const texts[3] = {text4, text5, text6};
    return ReadSolid("bcaEFD", dims, texts, vector, matrix, list1, list2, quad, name, tailText, attachName,
                     attachKey, attachIndex);
}

bool CMWZORFile::ReadCylinder(double* d1, double* d2, double* d3, double vector[4], CString*, CString*, CString*,
                              CString*, CString*, CString*, double matrix[4][4], CMWZORPointArray* list1,
                              CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText,
                              CString* attachName, CString* attachKey, unsigned int* attachIndex) {
    double* const dims[3] = {d1, d2, d3};
    CString* const texts[3] = {nullptr, nullptr, nullptr};
    return ReadSolid("ssabcssssss", dims, texts, vector, matrix, list1, list2, quad, name, tailText, attachName,
                     attachKey, attachIndex);
}

bool CMWZORFile::ReadCone(double* d1, double* d2, double vector[4], CString*, CString*, CString*, CString*,
                          CString*, CString*, double matrix[4][4], CMWZORPointArray* list1, CMWZORPointArray* list2,
                          float quad[4], CString* name, CString* tailText, CString* attachName, CString* attachKey,
                          unsigned int* attachIndex) {
    double* const dims[3] = {d1, d2, nullptr};
    CString* const texts[3] = {nullptr, nullptr, nullptr};
    return ReadSolid("sabssss", dims, texts, vector, matrix, list1, list2, quad, name, tailText, attachName,
                     attachKey, attachIndex);
}

bool CMWZORFile::ReadSphere(double* d1, double vector[4], CString*, CString*, CString*, CString*, CString*,
                            CString*, double matrix[4][4], CMWZORPointArray* list1, CMWZORPointArray* list2,
                            float quad[4], CString* name, CString* tailText, CString* attachName, CString* attachKey,
                            unsigned int* attachIndex) {
    double* const dims[3] = {d1, nullptr, nullptr};
    CString* const texts[3] = {nullptr, nullptr, nullptr};
    return ReadSolid("asssss", dims, texts, vector, matrix, list1, list2, quad, name, tailText, attachName,
                     attachKey, attachIndex);
}

bool CMWZORFile::ReadTorus(double* d1, double* d2, double vector[4], CString*, CString*, CString*, CString*,
                           CString*, CString*, double matrix[4][4], CMWZORPointArray* list1, CMWZORPointArray* list2,
                           float quad[4], CString* name, CString* tailText, CString* attachName, CString* attachKey,
                           unsigned int* attachIndex) {
    double* const dims[3] = {d1, d2, nullptr};
    CString* const texts[3] = {nullptr, nullptr, nullptr};
    return ReadSolid("asbsssss", dims, texts, vector, matrix, list1, list2, quad, name, tailText, attachName,
                     attachKey, attachIndex);
}
