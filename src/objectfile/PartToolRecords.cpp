// Workpiece and cutting-tool records: lines of their own that are consumed
// without being kept, then the geometry block and the common tail.
#include "objectfile/MWZORFile.h"

namespace {

double* const kNoDimensions[3] = {nullptr, nullptr, nullptr};
CString* const kNoTexts[3] = {nullptr, nullptr, nullptr};

}  // namespace

bool CMWZORFile::ReadPart(double vector[4], CString*, CString*, CString*, double matrix[4][4], CMWZORPointArray* list1,
                          CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText, CString* attachName,
                          CString* attachKey, unsigned int* attachIndex) {
    return ReadSolid("ssssss", kNoDimensions, kNoTexts, vector, matrix, list1, list2, quad, name, tailText, attachName,
                     attachKey, attachIndex);
}

bool CMWZORFile::ReadTool(double vector[4], CString*, CString*, CString*, double matrix[4][4], CMWZORPointArray* list1,
                          CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText, CString* attachName,
                          CString* attachKey, unsigned int* attachIndex) {
    // Before 1.08 a tool carries three numeric lines after its first two; they
    // are dropped, but each must still hold a bracketed value.
    const char* layout = m_version >= 108 ? "ssssss" : "ssabcssssss";
    return ReadSolid(layout, kNoDimensions, kNoTexts, vector, matrix, list1, list2, quad, name, tailText, attachName,
                     attachKey, attachIndex);
}
