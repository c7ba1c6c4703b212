// zorbench_inputs DIR NAME=KIND:SIZE...: writes the benchmark inputs into DIR
// and prints one line per input:
//   zorbench input=NAME path=PATH bytes=B items=N detail=D
// Kinds and their size: objectfile (bytes), dxf (entities, on 10 layers),
// extrusion (segments), arcs (arcs, tolerance 0.001), tools (tools),
// stl-binary and stl-ascii (facets), stl-hostile-KIND (facets of the torus
// it is made from; see write_adversarial_stl).
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "BenchInputs.h"

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: zorbench_inputs DIR NAME=KIND:SIZE...\n");
        return 2;
    }
    const std::string dir = argv[1];
    try {
        for (int i = 2; i < argc; ++i) {
            const std::string request = argv[i];
            const auto equals = request.find('='), colon = request.rfind(':');
            if (equals == std::string::npos || colon == std::string::npos || colon < equals) {
                std::fprintf(stderr, "zorbench_inputs: bad input %s\n", argv[i]);
                return 2;
            }
            const std::string name = request.substr(0, equals), kind = request.substr(equals + 1, colon - equals - 1);
            const long long size = std::atoll(request.c_str() + colon + 1);
            std::string path = dir + "/" + name;
            zorbench::InputStats stats;
            if (kind == "objectfile") {
                stats = zorbench::write_mesh_object_file(path += ".obj", size);
            } else if (kind == "dxf") {
                stats = zorbench::write_dxf_drawing(path += ".dxf", 10, static_cast<int>(size / 10));
            } else if (kind == "extrusion") {
                stats = zorbench::write_extrusion_file(path += ".ext", static_cast<int>(size));
            } else if (kind == "arcs") {
                stats = zorbench::write_arc_profile(path += ".ext", static_cast<int>(size), 0.001);
            } else if (kind == "tools") {
                stats = zorbench::write_tool_library(path += ".xml", static_cast<int>(size));
            } else if (kind == "stl-binary" || kind == "stl-ascii") {
                stats = zorbench::write_torus_stl(path += ".stl", size, kind == "stl-binary");
            } else if (kind.rfind("stl-hostile-", 0) == 0) {
                stats = zorbench::write_adversarial_stl(path += ".stl", kind.substr(12), size);
            } else {
                std::fprintf(stderr, "zorbench_inputs: unknown kind %s\n", kind.c_str());
                return 2;
            }
            std::printf("zorbench input=%s path=%s bytes=%lld items=%lld detail=%lld\n", name.c_str(), path.c_str(),
                        stats.bytes, stats.items, stats.detail);
            std::fflush(stdout);
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zorbench_inputs: %s\n", e.what());
        return 1;
    }
    return 0;
}
