// The STL reader behind StlFile: decides ASCII or binary, feeds every facet
// to the triangle mesh index and reports errors on standard error.
//
// Module state (one read at a time): the file name, the open stream and the
// error text, which each error overwrites and nothing clears.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "mesh/MeshIndex.h"

namespace zor {

struct StlReaderState {
    static constexpr int kErrorSize = 256;
    std::string fileName;
    std::FILE* stream = nullptr;
    char error[kErrorSize] = {};
};

StlReaderState& stl_reader_state();
// Back to the state at load: no error text, no stream (used by tests).
void reset_stl_reader_state();

// Faces as StlFile hands them out: four unsigned per face (three 0-based
// vertex indices, the 0-based normal index), in a runtime-allocated array.
class FaceArray {
public:
    FaceArray() = default;
    FaceArray(const FaceArray&) = delete;
    FaceArray& operator=(const FaceArray&) = delete;
    ~FaceArray();

    // Room for at least faces faces; false when it cannot be had.
    bool reserve(std::size_t faces);
    // The slot of one more face, or null when memory runs out.
    unsigned int* add();
    std::size_t size() const { return m_count; }
    // Hands the array over (trimmed to size; never null) and empties this.
    unsigned int* release();

private:
    unsigned int* m_data = nullptr;
    std::size_t m_count = 0;
    std::size_t m_capacity = 0;
};

// Reads fileName into the index (lists created on first use) and faces.
// 1 on success; 0 after printing the error text.
int STL_read(const char* fileName, SL_List** points, SL_List** vectors, FaceArray& faces);

// 1 (ASCII) or 2 (binary) by the first 150 bytes of the module's file; 0 when
// it cannot be opened (the error text is set).
int STL_file_type();

// STL_file_type for fileName (sets the module's file name): 1, 2 or 0.
int stl_file_type_of(const char* fileName);

// Prints the error text as "%s\n" on standard error.
void STL_print_error();

// The float the "%f" conversion makes of a token (no blanks or tabs in it);
// false when the conversion fails. Lower and upper case give the same value.
bool scan_float(const char* token, std::size_t length, float& value);

// The unit factor of StlFile for (wantedUnit, fileUnit).
double stl_unit_factor(int wantedUnit, int fileUnit);

}  // namespace zor
