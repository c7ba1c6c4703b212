// The benchmark inputs, generated deterministically (fixed seeds, no clock):
// every run of every benchmark reads the same bytes.
#pragma once

#include <string>

namespace zorbench {

// What a generator wrote: the file's size and the number of items a reader
// goes through (meshes' triangles, entities, segments, tools, facets).
struct InputStats {
    long long bytes = 0;
    long long items = 0;
    long long detail = 0;  // a second count a reader can be checked against (meshes, arcs, ...)
};

// An object file of mesh records until it reaches targetBytes: eight
// different meshes of 1000 vertices and 2000 triangles, repeated. items:
// triangles; detail: mesh records.
InputStats write_mesh_object_file(const std::string& path, long long targetBytes);

// A DXF drawing of layers x perLayer LINE and ARC entities (one in three an
// arc), each layer one closed chain, the entities shuffled across the file.
// items: entities; detail: layers.
std::string make_dxf_drawing(int layers, int perLayer);
InputStats write_dxf_drawing(const std::string& path, int layers, int perLayer);

// A native extrusion file ("KOLP EXTRUDE FILE") of one closed chain of
// segments round a circle, two lines then one arc. items: segments; detail: arcs.
InputStats write_extrusion_file(const std::string& path, int segments);

// A native extrusion file of one LINE to the start and then arcs along one
// circle (sweeps of 5 to 175 degrees, either direction), with the given
// tolerance. items: arcs.
InputStats write_arc_profile(const std::string& path, int arcs, double tolerance);

// A tool library of tools with attributes, values and a nested holder.
// items: tools.
InputStats write_tool_library(const std::string& path, int tools);

// A torus tessellated into a grid of facets (every vertex shared by six
// facets), as binary or ASCII STL. facets is rounded to 2 x rings x sides.
// items: facets; detail: distinct vertices.
InputStats write_torus_stl(const std::string& path, long long facets, bool binary);

// Hostile binary STL files beside the torus of the same size (kind:
// nan-vertex, nan-normal, nan-1pct, inf-third: the torus with NaN or
// infinite values put in; chained-tiny: near-zero x values about 1e-9 apart,
// chaining within the index's 1e-8 tolerance, y keeping every vertex
// distinct; random-bytes: as many random bytes as the torus file).
// items: facets the file claims to hold.
InputStats write_adversarial_stl(const std::string& path, const std::string& kind, long long facets);

}  // namespace zorbench
