// The object file is read only: the host's writer entry points exist, accept
// their arguments and write nothing.
#include "objectfile/MWZORFile.h"

bool CMWZORFile::ReadVariable(CString*, CString*, CString*) { return true; }
bool CMWZORFile::WriteVariable(CString, CString, CString) { return true; }
bool CMWZORFile::ReadLight() { return true; }
bool CMWZORFile::WriteLight() { return true; }
bool CMWZORFile::ReadWorld() { return true; }
bool CMWZORFile::WriteWorld() { return true; }
bool CMWZORFile::ReadCamera() { return true; }
bool CMWZORFile::WriteCamera() { return true; }

bool CMWZORFile::WriteCube(double[4], double, double, double, CString, CString, CString, CString, CString, CString,
                           double[4][4], const CMWZORPointArray&, const CMWZORPointArray&, float[4], CString, CString,
                           CString, CString, unsigned int) {
    return true;
}

bool CMWZORFile::WriteCylinder(double vector[4], double d1, double d2, double d3, CString text1, CString text2,
                               CString text3, CString text4, CString text5, CString text6, double matrix[4][4],
                               const CMWZORPointArray& list1, const CMWZORPointArray& list2, float quad[4],
                               CString name, CString tailText, CString attachName, CString attachKey,
                               unsigned int attachIndex) {
    return WriteCube(vector, d1, d2, d3, text1, text2, text3, text4, text5, text6, matrix, list1, list2, quad, name,
                     tailText, attachName, attachKey, attachIndex);
}

bool CMWZORFile::WriteCone(double[4], double, double, CString, CString, CString, CString, CString, CString,
                           double[4][4], const CMWZORPointArray&, const CMWZORPointArray&, float[4], CString, CString,
                           CString, CString, unsigned int) {
    return true;
}

bool CMWZORFile::WriteTorus(double vector[4], double d1, double d2, CString text1, CString text2, CString text3,
                            CString text4, CString text5, CString text6, double matrix[4][4],
                            const CMWZORPointArray& list1, const CMWZORPointArray& list2, float quad[4], CString name,
                            CString tailText, CString attachName, CString attachKey, unsigned int attachIndex) {
    return WriteCone(vector, d1, d2, text1, text2, text3, text4, text5, text6, matrix, list1, list2, quad, name,
                     tailText, attachName, attachKey, attachIndex);
}

bool CMWZORFile::WriteSphere(double[4], double, CString, CString, CString, CString, CString, CString, double[4][4],
                             const CMWZORPointArray&, const CMWZORPointArray&, float[4], CString, CString, CString,
                             CString, unsigned int) {
    return true;
}

bool CMWZORFile::WriteMesh(double[4], unsigned int, double (*)[4], CString, CString, CString, unsigned int,
                           double (*)[4], double[4][4], const CMWZORPointArray&, const CMWZORPointArray&, float[4],
                           CString, CString, CString, CString, unsigned int) {
    return true;
}

bool CMWZORFile::WritePart(double[4], CString, CString, CString, CString, CString, CString, double[4][4],
                           const CMWZORPointArray&, const CMWZORPointArray&, float[4], CString, CString, CString,
                           CString, unsigned int) {
    return true;
}

bool CMWZORFile::WriteTool(double[4], CString, CString, CString, double[4][4], const CMWZORPointArray&,
                           const CMWZORPointArray&, float[4], CString, CString, CString, CString, unsigned int) {
    return true;
}

bool CMWZORFile::WriteEngin(CString, unsigned int, double[3], unsigned int, unsigned int, double, double, double,
                            double, unsigned int, double, double, unsigned int, unsigned int, double, double,
                            unsigned int, unsigned int, double, double[4], unsigned int, unsigned int, unsigned int,
                            CString, unsigned int) {
    return true;
}

bool CMWZORFile::WriteOutline(double[4], unsigned int, const CMWZORSegmentPtrArray&, CString, CString, CString,
                              double[4][4], float[4], CString, CString) {
    return true;
}

bool CMWZORFile::WriteExtrusion(double[4], unsigned int, const CMWZORSegmentPtrArray&, CString, CString, CString,
                                double[4][4], const CMWZORPointArray&, const CMWZORPointArray&, float[4], double[4],
                                double, CString, CString, CString, CString, unsigned int) {
    return true;
}

bool WriteRevolution(double[4], unsigned int, const CMWZORSegmentPtrArray&, CString, CString, CString, double[4][4],
                     const CMWZORPointArray&, const CMWZORPointArray&, float[4], double[4], double, CString, CString,
                     CString, CString, unsigned int) {
    return true;
}
