// Number lists of object-file fields: the value is split like strtok on a
// separator set and token t is scanned into element t with "%d", "%f" or
// "%lf". A token that does not scan leaves its element unchanged; too few
// tokens fail; surplus tokens are ignored.
#pragma once

namespace zor {

bool ScanInts(const char* text, int n, int* dest, const char* separators);
bool ScanFloats(const char* text, int n, float* dest, const char* separators);
bool ScanDoubles(const char* text, int n, double* dest, const char* separators);

// n integers separated by blanks (the object file's ParseIntList).
inline bool ParseIntList(const char* text, int n, int* dest) { return ScanInts(text, n, dest, " "); }

// Multiplies n values by factor.
inline void ScaleValues(double* values, int n, double factor) {
    for (int i = 0; i < n; ++i) values[i] *= factor;
}

}  // namespace zor
