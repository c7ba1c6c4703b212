// CMWZORFile reads the application's object file, record by record, and
// CMWZORPoint is the point type of its point lists.
//
// A host constructs one CMWZORFile per file, repeats ReadType and calls the
// Read... method for the returned code (or ReadDummy to skip the record) until
// ReadType returns false. Readers return false at the first missing or
// malformed line; values already stored stay. A reader that runs out of
// memory returns false too and ends the file (every later read fails).
// Output pointers may be null: the line is read and its value dropped. Only
// one object file may be read at a time in the process (module-wide tables
// and line buffer).
#pragma once

#include "module/ZORModelIoExport.h"
#include "platform/afx.h"
#include "platform/afxtempl.h"

class ZORMODELIO_API CMWZORPoint : public CObject {
    DECLARE_DYNAMIC(CMWZORPoint)
public:
    CMWZORPoint();
    CMWZORPoint(double x, double y, double z);
    ~CMWZORPoint() override;

    double x;
    double y;
    double z;
};

class CMWZORSegment;

// A list of points; the points belong to whoever holds the list.
typedef CArray<CMWZORPoint*, CMWZORPoint*> CMWZORPointArray;
// A list of profile segments; the segments belong to whoever holds the list.
typedef CArray<CMWZORSegment*, CMWZORSegment*> CMWZORSegmentPtrArray;

// Record type codes stored by CMWZORFile::ReadType.
enum : unsigned int {
    ZOR_RECORD_UNKNOWN = 0,
    ZOR_RECORD_CUBE = 1,
    ZOR_RECORD_CYLINDER = 2,
    ZOR_RECORD_ENGINE = 4,
    ZOR_RECORD_CONE = 6,
    ZOR_RECORD_EXTRUSION = 7,
    ZOR_RECORD_REVOLUTION = 8,
    ZOR_RECORD_MESH = 9,
    ZOR_RECORD_SPHERE = 11,
    ZOR_RECORD_TORUS = 12,
    ZOR_RECORD_PART = 13,
    ZOR_RECORD_TOOL = 14,
    ZOR_RECORD_FILE = 15,
    ZOR_RECORD_CONTAINER = 16,
    ZOR_RECORD_END = 0xFFFFFFFFu,
};

class ZORMODELIO_API CMWZORFile : public CObject {
    DECLARE_DYNAMIC(CMWZORFile)
public:
    // Opens fileName and reads its version line; a file that does not open
    // leaves the stream null and every read fails. units: 1 millimetres,
    // 2 inches, anything else disables conversion. matrixConvention 0 converts
    // every matrix read (and then needs the matrix argument of every reader).
    CMWZORFile(CString fileName, unsigned int reserved, unsigned int units, int matrixConvention);
    // Closes the file if it is still open.
    ~CMWZORFile() override;

    // Finds the next record opener and stores its code (0 unknown,
    // ZOR_RECORD_END and false at the end of the file).
    bool ReadType(unsigned int* type);
    // Skips the record just opened up to its closing "}"; always true.
    bool ReadDummy();

    // A "C3dObjectFile" record: a reference to another object file, its name
    // made absolute against the folder of this file (the working directory
    // changes to that folder).
    bool ReadObjectFile(unsigned int* first, CString* fileName, CString* text2, double vector[4], CString* text3,
                        CString* text4, CString* text5, double matrix[4][4], CMWZORPointArray* list1,
                        CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText,
                        CString* attachName, CString* attachKey, unsigned int* attachIndex, unsigned int* flag);

    // Solid primitives: dimensions, then the shared group. Texts 1 to 3 are
    // never filled; texts 4 to 6 only by the cube. Lengths, the 4-vector and
    // the matrix's fourth column and [3][3] are converted to the caller's unit.
    bool ReadCube(double* d1, double* d2, double* d3, double vector[4], CString* text1, CString* text2,
                  CString* text3, CString* text4, CString* text5, CString* text6, double matrix[4][4],
                  CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText,
                  CString* attachName, CString* attachKey, unsigned int* attachIndex);
    bool ReadCylinder(double* d1, double* d2, double* d3, double vector[4], CString* text1, CString* text2,
                      CString* text3, CString* text4, CString* text5, CString* text6, double matrix[4][4],
                      CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4], CString* name,
                      CString* tailText, CString* attachName, CString* attachKey, unsigned int* attachIndex);
    bool ReadCone(double* d1, double* d2, double vector[4], CString* text1, CString* text2, CString* text3,
                  CString* text4, CString* text5, CString* text6, double matrix[4][4], CMWZORPointArray* list1,
                  CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText, CString* attachName,
                  CString* attachKey, unsigned int* attachIndex);
    bool ReadSphere(double* d1, double vector[4], CString* text1, CString* text2, CString* text3, CString* text4,
                    CString* text5, CString* text6, double matrix[4][4], CMWZORPointArray* list1,
                    CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText, CString* attachName,
                    CString* attachKey, unsigned int* attachIndex);
    bool ReadTorus(double* d1, double* d2, double vector[4], CString* text1, CString* text2, CString* text3,
                   CString* text4, CString* text5, CString* text6, double matrix[4][4], CMWZORPointArray* list1,
                   CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText, CString* attachName,
                   CString* attachKey, unsigned int* attachIndex);

    // A triangle mesh: vertices (x, y, z, 0 each) and the three corners of
    // every triangle as coordinates. Both arrays are new[] and belong to the
    // caller (delete[]), also after a failed read. Counts are 0 and no array
    // is made when the record has no vertex list; with a unit conversion every
    // vertex and corner value is scaled. Counts are stored as soon as they are
    // read: after a failed read the vertex count holds the file's count and
    // the corner count the file's triangle count (three times that only once
    // the record is read), and the arrays are made for the whole count, with
    // the entries that were not read zero.
    bool ReadMesh(double vector[4], unsigned int* vertexCount, double (**vertices)[4], CString* text1,
                  CString* text2, CString* text3, unsigned int* cornerCount, double (**corners)[4],
                  double matrix[4][4], CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4],
                  CString* name, CString* tailText, CString* attachName, CString* attachKey,
                  unsigned int* attachIndex);
    // A workpiece and a cutting tool: no dimensions of their own; only the
    // 4-vector and the matrix's fourth column (and [3][3]) are converted.
    bool ReadPart(double vector[4], CString* text1, CString* text2, CString* text3, double matrix[4][4],
                  CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText,
                  CString* attachName, CString* attachKey, unsigned int* attachIndex);
    bool ReadTool(double vector[4], CString* text1, CString* text2, CString* text3, double matrix[4][4],
                  CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText,
                  CString* attachName, CString* attachKey, unsigned int* attachIndex);
    // A machine-kinematics element (kind 1 axis, 2 spindle). p6 must be null
    // or point to four adjacent doubles (p6 to p9 of the host's engine data):
    // a conversion scales all four, so p7 (and p8, p9 of an axis) twice.
    // Files before 1.09 number their elements in the spindle table and return
    // that number in p25.
    bool ReadEngin(CString* name, unsigned int* kind, double axis[3], unsigned int* p4, unsigned int* p5, double* p6,
                   double* p7, double* p8, double* p9, unsigned int* p10, double* p11, double* p12,
                   unsigned int* p13, unsigned int* p14, double* p15, double* p16, unsigned int* p17,
                   unsigned int* p18, double* p19, double p20[4], unsigned int* p21, unsigned int* p22,
                   unsigned int* p23, CString* p24, unsigned int* p25);

    // Profile records. The segments belong to the caller; an outline that the
    // reader closed reports N + 1 segments with an empty last slot.
    bool ReadOutline(double vector[4], unsigned int* segmentCount, CMWZORSegmentPtrArray* segments, CString* text1,
                     CString* text2, CString* text3, double matrix[4][4], float quad[4], CString* text4,
                     CString* text5);
    bool ReadExtrusion(double vector[4], unsigned int* segmentCount, CMWZORSegmentPtrArray* segments,
                       CString* text1, CString* text2, CString* text3, double matrix[4][4], CMWZORPointArray* list1,
                       CMWZORPointArray* list2, float quad[4], double direction[4], double* length, CString* name,
                       CString* tailText, CString* attachName, CString* attachKey, unsigned int* attachIndex);
    bool ReadRevolution(double vector[4], unsigned int* segmentCount, CMWZORSegmentPtrArray* segments,
                        CString* text1, CString* text2, CString* text3, double matrix[4][4],
                        CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4], double axis[4],
                        double* angle, CString* name, CString* tailText, CString* attachName, CString* attachKey,
                        unsigned int* attachIndex);

    // The collision section after the last record: count pairs of object
    // names, each with a code and a value. The arrays (malloc, zeroed) and the
    // names they hold belong to the caller, also after a failed read, and are
    // released with FreeCollision. Files after 1.12 name the objects by their
    // position among the objects read so far (ReadCollisionNew), and reading
    // the section empties that table.
    bool ReadCollision(void*** firstNames, void*** secondNames, unsigned int** codes, double** values,
                       unsigned int* count);
    bool ReadCollisionNew(void*** firstNames, void*** secondNames, unsigned int** codes, double** values,
                          unsigned int* count);
    void FreeCollision(void** firstNames, void** secondNames, unsigned int* codes, double* values,
                       unsigned int count);

    // Stubs kept for the host: they return true and touch nothing.
    bool ReadVariable(CString* name, CString* type, CString* value);
    bool WriteVariable(CString name, CString type, CString value);
    bool ReadLight();
    bool WriteLight();
    bool ReadWorld();
    bool WriteWorld();
    bool ReadCamera();
    bool WriteCamera();

    // The module has no object-file writer: every Write... returns true and
    // writes nothing.
    bool WriteCube(double vector[4], double d1, double d2, double d3, CString text1, CString text2, CString text3,
                   CString text4, CString text5, CString text6, double matrix[4][4], const CMWZORPointArray& list1,
                   const CMWZORPointArray& list2, float quad[4], CString name, CString tailText, CString attachName,
                   CString attachKey, unsigned int attachIndex);
    bool WriteCylinder(double vector[4], double d1, double d2, double d3, CString text1, CString text2,
                       CString text3, CString text4, CString text5, CString text6, double matrix[4][4],
                       const CMWZORPointArray& list1, const CMWZORPointArray& list2, float quad[4], CString name,
                       CString tailText, CString attachName, CString attachKey, unsigned int attachIndex);
    bool WriteCone(double vector[4], double d1, double d2, CString text1, CString text2, CString text3,
                   CString text4, CString text5, CString text6, double matrix[4][4], const CMWZORPointArray& list1,
                   const CMWZORPointArray& list2, float quad[4], CString name, CString tailText, CString attachName,
                   CString attachKey, unsigned int attachIndex);
    bool WriteTorus(double vector[4], double d1, double d2, CString text1, CString text2, CString text3,
                    CString text4, CString text5, CString text6, double matrix[4][4], const CMWZORPointArray& list1,
                    const CMWZORPointArray& list2, float quad[4], CString name, CString tailText,
                    CString attachName, CString attachKey, unsigned int attachIndex);
    bool WriteSphere(double vector[4], double d1, CString text1, CString text2, CString text3, CString text4,
                     CString text5, CString text6, double matrix[4][4], const CMWZORPointArray& list1,
                     const CMWZORPointArray& list2, float quad[4], CString name, CString tailText,
                     CString attachName, CString attachKey, unsigned int attachIndex);
    bool WriteMesh(double vector[4], unsigned int vertexCount, double (*vertices)[4], CString text1, CString text2,
                   CString text3, unsigned int cornerCount, double (*corners)[4], double matrix[4][4],
                   const CMWZORPointArray& list1, const CMWZORPointArray& list2, float quad[4], CString name,
                   CString tailText, CString attachName, CString attachKey, unsigned int attachIndex);
    bool WritePart(double vector[4], CString text1, CString text2, CString text3, CString text4, CString text5,
                   CString text6, double matrix[4][4], const CMWZORPointArray& list1, const CMWZORPointArray& list2,
                   float quad[4], CString name, CString tailText, CString attachName, CString attachKey,
                   unsigned int attachIndex);
    bool WriteTool(double vector[4], CString text1, CString text2, CString text3, double matrix[4][4],
                   const CMWZORPointArray& list1, const CMWZORPointArray& list2, float quad[4], CString name,
                   CString tailText, CString attachName, CString attachKey, unsigned int attachIndex);
    bool WriteEngin(CString name, unsigned int kind, double axis[3], unsigned int p4, unsigned int p5, double p6,
                    double p7, double p8, double p9, unsigned int p10, double p11, double p12, unsigned int p13,
                    unsigned int p14, double p15, double p16, unsigned int p17, unsigned int p18, double p19,
                    double p20[4], unsigned int p21, unsigned int p22, unsigned int p23, CString p24,
                    unsigned int p25);
    bool WriteOutline(double vector[4], unsigned int segmentCount, const CMWZORSegmentPtrArray& segments,
                      CString text1, CString text2, CString text3, double matrix[4][4], float quad[4],
                      CString text4, CString text5);
    bool WriteExtrusion(double vector[4], unsigned int segmentCount, const CMWZORSegmentPtrArray& segments,
                        CString text1, CString text2, CString text3, double matrix[4][4],
                        const CMWZORPointArray& list1, const CMWZORPointArray& list2, float quad[4],
                        double direction[4], double length, CString name, CString tailText, CString attachName,
                        CString attachKey, unsigned int attachIndex);

    unsigned int m_depth;        // brace depth of the lines read so far
    unsigned int m_version;      // file version x 100, 0 until read
    unsigned int m_recordDepth;  // depth at which the record being read closes
    unsigned int m_units;        // the caller's unit code
    std::FILE* m_stream;         // null once the file is exhausted or did not open

protected:
    // For hosts that read the collision section after the last record: the
    // last ReadType ran to the end of the file looking for another record, so
    // the file is opened again at start (where that call began) and the "}"
    // lines closing containers are passed. true: a section's first line is
    // next; false: nothing but closing braces follows (or the file is gone).
    ZOR_INTERNAL bool SeekCollisionSection(const char* path, long start);
    // Next non-empty line, descrambled and trimmed; false (and the file
    // closed) at its end.
    ZOR_INTERNAL bool ReadLine(CString& line);
    // ReadLine, then the text between the last "<" and the last ">" into value;
    // whole receives the whole line. With a null value no brackets are needed.
    ZOR_INTERNAL bool ReadField(CString* value, CString* whole = nullptr);
    // ReadField, then n numbers split on separators into dest (null: the line
    // is only consumed, but its brackets are still required).
    ZOR_INTERNAL bool ReadIntField(int n, int* dest, const char* separators = " ");
    ZOR_INTERNAL bool ReadFloatField(int n, float* dest, const char* separators = " ");
    ZOR_INTERNAL bool ReadDoubleField(int n, double* dest, const char* separators = " ");
    ZOR_INTERNAL bool SkipToRecordDepth();
    ZOR_INTERNAL void ReadVersion();
    // Factor from a record's unit code to the caller's; false when no
    // conversion applies.
    ZOR_INTERNAL bool GetUnitFactor(int recordUnits, double* factor) const;
    // Multiplies the 4-vector, matrix [0..3][3] and every given length by the
    // factor of recordUnits, when a conversion applies.
    ZOR_INTERNAL void ScaleRecord(int recordUnits, double vector[4], double matrix[4][4], double* const* lengths,
                                  int lengthCount) const;
    // The block shared by all solid records. Counts are stored and arrays
    // handed out as soon as they are read or made; *vertexList tells whether
    // the block held a vertex list.
    ZOR_INTERNAL bool ReadGeometryBlock(CMWZORPointArray* list1, CMWZORPointArray* list2, CString* name,
                                        unsigned int* vertexCount, double (**vertices)[4],
                                        unsigned int* triangleCount, double (**corners)[4],
                                        bool* vertexList = nullptr);
    ZOR_INTERNAL bool ReadPointList(CMWZORPointArray* list);
    ZOR_INTERNAL bool ReadObjectTail(double vector[4], double matrix[4][4], float quad[4], const CString* name,
                                     CString* tailText, CString* attachName, CString* attachKey,
                                     unsigned int* attachIndex, int* recordUnits, int* flag);
    ZOR_INTERNAL bool SkipLines(int count);
    // Profile records: count integer fields consumed; the old files' lines
    // after an outline block; geometry block, tail and unit conversion.
    ZOR_INTERNAL bool SkipIntLines(int count);
    ZOR_INTERNAL bool SkipProfileTrailer();
    ZOR_INTERNAL bool ReadProfileTail(double vector[4], CMWZORSegmentPtrArray* segments, double matrix[4][4],
                                      CMWZORPointArray* list1, CMWZORPointArray* list2, float quad[4],
                                      CString* name, CString* tailText, CString* attachName, CString* attachKey,
                                      unsigned int* attachIndex);
    // A solid record: layout lists its type-specific lines in file order, one
    // character a line: 'a' 'b' 'c' a double into dims[0..2], 'D' 'E' 'F' a
    // text into texts[0..2], 's' a line consumed.
    ZOR_INTERNAL bool ReadSolid(const char* layout, double* const dims[3], CString* const texts[3],
                                double vector[4], double matrix[4][4], CMWZORPointArray* list1,
                                CMWZORPointArray* list2, float quad[4], CString* name, CString* tailText,
                                CString* attachName, CString* attachKey, unsigned int* attachIndex);
    ZOR_INTERNAL void ResolveObjectPath(CString& name) const;
    // Bytes of the file after the read position.
    ZOR_INTERNAL long long RemainingBytes() const;
    // Whether arrays of count items of itemBytes each may be made for a count
    // read from the file (false for a negative count).
    ZOR_INTERNAL bool CountAffordable(long long count, std::size_t itemBytes) const;
};

// Joins folder and name with a backslash (none when folder already ends in a
// separator); name alone when folder is null or empty or name starts with ".",
// "\" or "/". A null name leaves result unchanged.
ZORMODELIO_API void MakeFullPathName(char* folder, char* name, CString& result);

// The module has no object-file writer: returns true and writes nothing.
ZORMODELIO_API bool WriteRevolution(double vector[4], unsigned int segmentCount, const CMWZORSegmentPtrArray& segments,
                                    CString text1, CString text2, CString text3, double matrix[4][4],
                                    const CMWZORPointArray& list1, const CMWZORPointArray& list2, float quad[4],
                                    double axis[4], double angle, CString name, CString tailText,
                                    CString attachName, CString attachKey, unsigned int attachIndex);
