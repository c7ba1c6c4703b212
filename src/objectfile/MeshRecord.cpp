// The triangle mesh record: its vertices and triangles are the geometry block,
// followed by the common tail.
#include "objectfile/FieldScan.h"
#include "objectfile/MWZORFile.h"

bool CMWZORFile::ReadMesh(double vector[4], unsigned int* vertexCount, double (**vertices)[4], CString*, CString*,
                          CString*, unsigned int* cornerCount, double (**corners)[4], double matrix[4][4],
                          CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4], CString* name,
                          CString* tailText, CString* attachName, CString* attachKey, unsigned int* attachIndex) {
    // Locals first, so that a record without a vertex list reports 0 and 0
    // and never has the caller's arrays scaled.
    unsigned int vertexTotal = 0, triangles = 0;
    double(*vertexArray)[4] = nullptr;
    double(*cornerArray)[4] = nullptr;
    CString nameValue;
    CString* nameOut = name != nullptr ? name : &nameValue;

    const bool block =
        ReadGeometryBlock(list1, list2, nameOut, &vertexTotal, vertices != nullptr ? &vertexArray : nullptr, &triangles,
                          corners != nullptr ? &cornerArray : nullptr);
    // Arrays made before a failure are handed out all the same: the caller
    // frees them in every case.
    if (vertices != nullptr && vertexArray != nullptr) *vertices = vertexArray;
    if (corners != nullptr && cornerArray != nullptr) *corners = cornerArray;
    // The vertex count is known as soon as its line is read (it sizes the
    // array handed out); the corner count only on success.
    if (vertexCount != nullptr && (block || vertexTotal != 0)) *vertexCount = vertexTotal;
    if (!block) return false;
    const unsigned int cornerTotal = 3 * triangles;  // triangles <= file size: no wrap for any real file
    if (cornerCount != nullptr) *cornerCount = cornerTotal;

    int recordUnits = 0, flag = 0;
    if (!ReadObjectTail(vector, matrix, quad, nameOut, tailText, attachName, attachKey, attachIndex, &recordUnits,
                        &flag))
        return false;
    ScaleRecord(recordUnits, vector, matrix, nullptr, 0);
    double factor;
    if (GetUnitFactor(recordUnits, &factor)) {
        // All four values of every entry; the fourth is 0 and stays 0.
        if (vertexArray != nullptr)
            for (unsigned int i = 0; i < vertexTotal; ++i) zor::ScaleValues(vertexArray[i], 4, factor);
        if (cornerArray != nullptr)
            for (unsigned int i = 0; i < cornerTotal; ++i) zor::ScaleValues(cornerArray[i], 4, factor);
    }
    return true;
}
