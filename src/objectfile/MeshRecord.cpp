// The triangle mesh record: its vertices and triangles are the geometry block,
// followed by the common tail.
#include "objectfile/FieldScan.h"
#include "objectfile/MWZORFile.h"
#include "objectfile/ReadGuard.h"

bool CMWZORFile::ReadMesh(double vector[4], unsigned int* vertexCount, double (**vertices)[4], CString*, CString*,
                          CString*, unsigned int* cornerCount, double (**corners)[4], double matrix[4][4],
                          CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4], CString* name,
                          CString* tailText, CString* attachName, CString* attachKey, unsigned int* attachIndex) {
    return zor::contain_allocation_failure(m_stream, false, [&] {
        // The block stores the counts (the triangle count where the corner
        // count goes) and hands out the arrays the moment it has them, so
        // that a read that fails later leaves them with the caller.
        unsigned int vertexScratch = 0, cornerScratch = 0;
        unsigned int* vertexOut = vertexCount != nullptr ? vertexCount : &vertexScratch;
        unsigned int* cornerOut = cornerCount != nullptr ? cornerCount : &cornerScratch;
        CString nameValue;
        CString* nameOut = name != nullptr ? name : &nameValue;
        bool vertexList = false;
        if (!ReadGeometryBlock(list1, list2, nameOut, vertexOut, vertices, cornerOut, corners, &vertexList))
            return false;

        // A record without a vertex list reports 0 and 0 and never has the
        // caller's arrays scaled.
        const unsigned int vertexTotal = vertexList ? *vertexOut : 0;
        const unsigned int cornerTotal = vertexList ? 3 * *cornerOut : 0;  // triangles bounded by the file: no wrap
        *vertexOut = vertexTotal;
        *cornerOut = cornerTotal;

        int recordUnits = 0, flag = 0;
        if (!ReadObjectTail(vector, matrix, quad, nameOut, tailText, attachName, attachKey, attachIndex, &recordUnits,
                            &flag))
            return false;
        ScaleRecord(recordUnits, vector, matrix, nullptr, 0);
        double factor;
        if (vertexList && GetUnitFactor(recordUnits, &factor)) {
            // All four values of every entry; the fourth is 0 and stays 0.
            if (vertices != nullptr)
                for (unsigned int i = 0; i < vertexTotal; ++i) zor::ScaleValues((*vertices)[i], 4, factor);
            if (corners != nullptr)
                for (unsigned int i = 0; i < cornerTotal; ++i) zor::ScaleValues((*corners)[i], 4, factor);
        }
        return true;
    });
}
