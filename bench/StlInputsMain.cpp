// zormodel_stl_inputs DIR: writes the benchmark meshes into DIR.
#include <cstdio>
#include <string>

#include "StlInputs.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: zormodel_stl_inputs DIR\n");
        return 2;
    }
    const std::string dir = argv[1];
    struct Input {
        const char* name;
        int u, v;
        bool ascii;
    };
    const Input inputs[] = {{"torus-1m-binary.stl", 1000, 500, false},
                            {"torus-1m-ascii.stl", 1000, 500, true},
                            {"torus-200k-binary.stl", 400, 250, false},
                            {"torus-200k-ascii.stl", 400, 250, true}};
    for (const Input& in : inputs) {
        const std::string path = dir + "/" + in.name;
        if (!zorbench::write_torus(path, in.u, in.v, in.ascii)) {
            std::fprintf(stderr, "cannot write %s\n", path.c_str());
            return 1;
        }
        std::printf("wrote %s\n", path.c_str());
    }
    return 0;
}
