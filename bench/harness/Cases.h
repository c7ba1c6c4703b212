// The readers zorbench_ours can time, by name. A file defines a case with
// ZORBENCH_CASE("name", function) and is added to zorbench_ours's sources in
// bench/CMakeLists.txt; nothing else needs to change.
#pragma once

namespace zorbench {

// Reads the file at path once; returns a count the driver can check, or -1
// when the read failed.
using CaseFunction = long long (*)(const char* path);

bool register_case(const char* name, CaseFunction run);

}  // namespace zorbench

#define ZORBENCH_CASE_JOIN2(a, b) a##b
#define ZORBENCH_CASE_JOIN(a, b) ZORBENCH_CASE_JOIN2(a, b)
#define ZORBENCH_CASE(name, function) \
    static const bool ZORBENCH_CASE_JOIN(zorbench_case_, __LINE__) = zorbench::register_case(name, function)
