// The benchmark meshes: a finely tessellated torus, written as binary STL and
// as its ASCII twin. u x v quads give 2 u v facets and u v distinct vertices.
#pragma once

#include <string>

namespace zorbench {

// Writes path as binary (ascii false) or ASCII STL; false when it cannot.
bool write_torus(const std::string& path, int u, int v, bool ascii);

}  // namespace zorbench
