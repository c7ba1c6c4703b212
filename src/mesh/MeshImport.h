// Exported flat-array mesh reader for STL files. Arrays are allocated with the
// runtime allocator (malloc) and owned by the caller, who releases them with
// free(). Units: 1 = millimetres, 2 = inches; the last two arguments are the
// wanted unit, then the file's.
#pragma once

#include "module/ZORModelIoExport.h"

// Reads an ASCII or binary STL file into distinct vertices (x, y, z doubles,
// in order of first appearance, converted to the wanted unit), distinct
// facet normals (x, y, z doubles, as read) and faces (per face the 0-based
// indices of its three vertices, then of its normal). Returns 1 on success;
// 0 on failure, with an error line on standard error. All outputs are
// cleared first and only set by a successful read.
ZORMODELIO_API int StlFile(char* fileName, unsigned int* numPoints, double** points, unsigned int* numVectors,
                           double** vectors, unsigned int* numFaces, unsigned int** faces, int wantedUnit,
                           int fileUnit);

// The Vericut polygon, SOR and sweep readers are declared in VericutImport.h.
