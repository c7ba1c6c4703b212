#include "objectfile/FieldScan.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace zor {

namespace {

template <class T>
bool scan_list(const char* text, int n, T* dest, const char* separators, const char* format) {
    std::string copy(text != nullptr ? text : "");
    char* save = nullptr;
    char* token = strtok_r(copy.data(), separators, &save);
    for (int i = 0; i < n; ++i) {
        if (token == nullptr) return false;
        std::sscanf(token, format, &dest[i]);
        token = strtok_r(nullptr, separators, &save);
    }
    return true;
}

}  // namespace

bool ScanInts(const char* text, int n, int* dest, const char* separators) {
    return scan_list(text, n, dest, separators, "%d");
}

bool ScanFloats(const char* text, int n, float* dest, const char* separators) {
    return scan_list(text, n, dest, separators, "%f");
}

bool ScanDoubles(const char* text, int n, double* dest, const char* separators) {
    return scan_list(text, n, dest, separators, "%lf");
}

}  // namespace zor
