// Shared by the fuzz targets: the input is written to a file in a temporary
// folder that lives as long as the process, because every reader takes a path.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zorfuzz {

// Writes data to <temp folder>/<name> and returns the path.
std::string write_input(const std::uint8_t* data, std::size_t size, const char* name);

// The temporary folder of this process.
const std::string& temp_folder();

}  // namespace zorfuzz
