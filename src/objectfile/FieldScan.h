// Number lists of object-file fields: the value is split like strtok on a
// separator set and token t is scanned into element t with "%d", "%f" or
// "%lf". A token that does not scan leaves its element unchanged; too few
// tokens fail; surplus tokens are ignored.
#pragma once

#include <string_view>

namespace zor {

bool ScanInts(std::string_view text, int n, int* dest, const char* separators);
bool ScanFloats(std::string_view text, int n, float* dest, const char* separators);
bool ScanDoubles(std::string_view text, int n, double* dest, const char* separators);

inline bool ScanInts(const char* text, int n, int* dest, const char* separators) {
    return ScanInts(std::string_view(text != nullptr ? text : ""), n, dest, separators);
}
inline bool ScanFloats(const char* text, int n, float* dest, const char* separators) {
    return ScanFloats(std::string_view(text != nullptr ? text : ""), n, dest, separators);
}
inline bool ScanDoubles(const char* text, int n, double* dest, const char* separators) {
    return ScanDoubles(std::string_view(text != nullptr ? text : ""), n, dest, separators);
}

// One token scanned as sscanf(token, "%d" / "%f" / "%lf") would: true and
// *value set when a number was converted, false and *value unchanged when not.
// dotLocale: decimal_point_is_dot(), asked once per list.
bool ScanIntToken(std::string_view token, int* value);
bool ScanFloatToken(std::string_view token, float* value);
bool ScanDoubleToken(std::string_view token, double* value, bool dotLocale);
bool decimal_point_is_dot();

// n integers separated by blanks (the object file's ParseIntList).
inline bool ParseIntList(const char* text, int n, int* dest) { return ScanInts(text, n, dest, " "); }

// Multiplies n values by factor.
inline void ScaleValues(double* values, int n, double factor) {
    for (int i = 0; i < n; ++i) values[i] *= factor;
}

}  // namespace zor
