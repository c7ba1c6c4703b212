// Exported flat-array mesh readers: STL and the Vericut polygon, SOR and
// sweep files. Arrays are allocated with the runtime allocator (malloc) and
// owned by the caller, who releases them with free(). Units: 1 = millimetres,
// 2 = inches; the last two arguments are the wanted unit, then the file's.
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

// Vericut polygon file: the outputs of StlFile. Returns 0 if the file cannot
// be opened, else 1.
ZORMODELIO_API int VericutPolygon(char* fileName, unsigned int* numPoints, double** points, unsigned int* numVectors,
                                  double** vectors, unsigned int* numFaces, unsigned int** faces, int wantedUnit,
                                  int fileUnit);

// Vericut surface-of-revolution profile: the end points of its lines as x, y,
// z triples, and its tolerance. 1 on success, 0 on failure.
ZORMODELIO_API int VericutSor(char* fileName, int* numPoints, double** points, double* tolerance, int wantedUnit,
                              int fileUnit);

// Vericut sweep profile: the end points of its lines as x, y, z triples and
// its Z range (lower, upper). 1 on success, 0 on failure.
ZORMODELIO_API int VericutSweep(char* fileName, int* numPoints, double** points, double* zRange, int wantedUnit,
                                int fileUnit);
