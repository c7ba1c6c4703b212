// Vericut model files as flat arrays: polygon meshes, and surface-of-revolution
// and sweep profiles as the end points of their straight segments.
//
// Units: 1 millimetres, 2 inches; the last two arguments are the wanted unit
// and the file's unit. Arrays are allocated with malloc and released by the
// caller with free. Output pointers other than those named may be null.
#pragma once

#include "module/ZORModelIoExport.h"

// Outputs as StlFile's; the polygon data is not handed out, so a file that
// opens gives 1 with all counts 0 and all arrays null. 0 if the file cannot
// be opened.
ZORMODELIO_API int VericutPolygon(char* fileName, unsigned int* numPoints, double** points, unsigned int* numVectors,
                                  double** vectors, unsigned int* numFaces, unsigned int** faces, int wantedUnit,
                                  int fileUnit);

// A Vericut "Sor" profile: *points gets the x, y, z of each line segment's end
// point (arcs are left out), *numPoints their number, *tolerance the profile's
// tolerance. Inch files read as millimetres are scaled by 24.5 (and the other
// way by 1/24.5), the factor this format has always used. 1 on success, 0 for
// a null fileName, numPoints or points, a file that is not a profile, or when
// memory runs out.
ZORMODELIO_API int VericutSor(char* fileName, int* numPoints, double** points, double* tolerance, int wantedUnit,
                              int fileUnit);

// A Vericut "Sweep" profile: as VericutSor, with the factor 25.4, and
// zRange[0], zRange[1] the scaled Z range instead of a tolerance.
ZORMODELIO_API int VericutSweep(char* fileName, int* numPoints, double** points, double* zRange, int wantedUnit,
                                int fileUnit);
