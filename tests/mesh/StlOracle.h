// The STL reader and the triangle mesh index done the plain way, straight
// from their description: records linked one by one, a search list walked
// from its head with every node at the level the family's word gives, stdio
// reads of 80 characters, strtok and sscanf. Quadratic, and the reference
// the library's reader is compared with.
#pragma once

#include <string>
#include <vector>

namespace oracle {

struct Mesh {
    std::vector<double> points, vectors;
    std::vector<unsigned int> faces;
};

// StlFile: 1 with the mesh filled, or 0 (after printing the error lines).
int stl_file(const char* fileName, Mesh& mesh, int wantedUnit, int fileUnit);

// The index alone: facets as 12 floats each (normal, then three vertices).
void index_facets(const std::vector<float>& facets, Mesh& mesh);

// Forgets the error text (as in a fresh process).
void reset();

}  // namespace oracle
