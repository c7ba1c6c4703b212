// Internals of the Vericut flat-array readers, open to tests and tools.
#pragma once

#include <cstdio>

namespace zor {

// Scans a Vericut polygon file from the current position of an open stream:
// 1 if it is well formed and holds at least one triangle, else 0. triangles,
// when given, receives the number counted (n - 2 for a polygon of n points),
// also when the scan fails part way.
int VP_scan(std::FILE* stream, long long* triangles = nullptr);

}  // namespace zor
