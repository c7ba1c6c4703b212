// The geometry block shared by all solid records: an optional vertex list, two
// point lists, a dropped third list, and the triangles, then the record's name.
#include <memory>

#include "objectfile/FieldScan.h"
#include "objectfile/MWZORFile.h"

bool CMWZORFile::ReadPointList(CMWZORPointArray* list) {
    int count = 0;
    if (!ReadIntField(1, &count)) return false;
    if (list == nullptr) return SkipLines(count);
    // A negative count would make the list's SetSize throw; refuse it instead.
    if (!CountAffordable(count, sizeof(CMWZORPoint*))) return false;
    // Sized to the count first: a list cut short keeps the points read and
    // empty slots after them.
    list->SetSize(count);
    for (int i = 0; i < count; ++i) {
        double xyz[3] = {0.0, 0.0, 0.0};
        if (!ReadDoubleField(3, xyz, ",")) return false;
        list->SetAt(i, new CMWZORPoint(xyz[0], xyz[1], xyz[2]));
    }
    return true;
}

bool CMWZORFile::ReadGeometryBlock(CMWZORPointArray* list1, CMWZORPointArray* list2, CString* name,
                                   unsigned int* vertexCount, double (**vertices)[4], unsigned int* triangleCount,
                                   double (**corners)[4], bool* vertexList) {
    CString nameValue;
    int hasGeometry = 0;
    if (vertexList != nullptr) *vertexList = false;
    if (m_version > 101 && !ReadIntField(1, &hasGeometry)) return false;
    if (!ReadIntField(0, nullptr) || !ReadDoubleField(0, nullptr)) return false;

    const bool readBlock = !(m_version >= 102 && hasGeometry == 0);
    if (readBlock) {
        CString value, whole;
        if (!ReadField(&value, &whole)) return false;
        whole.TrimLeft();
        if (whole.Find("Num Vertices") != 0) {
            // No vertex list: the value stands in for the name until the
            // name line below overwrites it.
            if (name != nullptr) *name = value;
        } else {
            int vertexTotal = 0;
            if (!zor::ParseIntList(value, 1, &vertexTotal)) return false;
            // Counts and arrays reach the caller as soon as they are known:
            // after a failed line they stay there.
            if (vertexCount != nullptr) *vertexCount = static_cast<unsigned int>(vertexTotal);
            if (vertexList != nullptr) *vertexList = true;

            const bool wantArray = vertices != nullptr || corners != nullptr;
            double(*vertexArray)[4] = nullptr;
            // Owns the vertex array only while nobody asked for it.
            std::unique_ptr<double[][4]> scratch;
            if (wantArray) {
                if (!CountAffordable(vertexTotal, sizeof(double[4]))) return false;
                // Zeroed: the entries a file cut short does not reach read 0.
                vertexArray = new double[static_cast<size_t>(vertexTotal)][4]();
                if (vertices != nullptr)
                    *vertices = vertexArray;
                else
                    scratch.reset(vertexArray);
            }
            for (int v = 0; v < vertexTotal; ++v) {
                if (vertexArray != nullptr) {
                    if (!ReadDoubleField(3, vertexArray[v], ",")) return false;
                } else if (!SkipLines(1)) {
                    return false;
                }
            }

            if (!ReadPointList(list1) || !ReadPointList(list2)) return false;

            int dropped = 0;
            if (!ReadIntField(1, &dropped) || !SkipLines(dropped)) return false;
            if (!ReadIntField(0, nullptr)) return false;
            int triangles = 0;
            if (!ReadIntField(1, &triangles)) return false;
            if (triangleCount != nullptr) *triangleCount = static_cast<unsigned int>(triangles);

            double(*cornerArray)[4] = nullptr;
            if (corners != nullptr) {
                if (!CountAffordable(triangles, 3 * sizeof(double[4]))) return false;
                cornerArray = new double[3 * static_cast<size_t>(triangles)][4]();
                *corners = cornerArray;
            }
            for (int t = 0; t < triangles; ++t) {
                int index[3] = {0, 0, 0};
                if (!ReadIntField(3, index, "/,")) return false;
                if (cornerArray == nullptr) continue;
                for (int c = 0; c < 3; ++c) {
                    // The file is trusted to name existing vertices; one that
                    // does not fails the read instead of reading past the array.
                    if (index[c] < 0 || index[c] >= vertexTotal) return false;
                    double* corner = cornerArray[3 * t + c];
                    const double* vertex = vertexArray[index[c]];
                    corner[0] = vertex[0];
                    corner[1] = vertex[1];
                    corner[2] = vertex[2];
                    corner[3] = 0.0;
                }
            }
            if (!SkipLines(1)) return false;
            ++m_depth;
            if (!SkipToRecordDepth()) return false;
        }
    }
    return ReadField(name != nullptr ? name : &nameValue);
}
