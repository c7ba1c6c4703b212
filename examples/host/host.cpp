// A host reading the cubes and spheres of an object file through the
// library's exported interface only.
#include <cstdio>

#include "ZORModelIo.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: zormodel_host FILE\n");
        return 2;
    }
    CMWZORFile file(argv[1], 0, 1 /* millimetres */, 1 /* matrices as stored */);
    unsigned int type = 0;
    int records = 0;
    while (file.ReadType(&type)) {
        double matrix[4][4], vector[4];
        float quad[4];
        CString name, tail, attachName, attachKey;
        unsigned int attachIndex = 0;
        if (type == ZOR_RECORD_CUBE) {
            double d1, d2, d3;
            if (!file.ReadCube(&d1, &d2, &d3, vector, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, matrix,
                               nullptr, nullptr, quad, &name, &tail, &attachName, &attachKey, &attachIndex))
                return 1;
            std::printf("cube %s: %g x %g x %g mm\n", name.GetString(), d1, d2, d3);
        } else if (type == ZOR_RECORD_SPHERE) {
            double radius;
            if (!file.ReadSphere(&radius, vector, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, matrix,
                                 nullptr, nullptr, quad, &name, &tail, &attachName, &attachKey, &attachIndex))
                return 1;
            std::printf("sphere %s: radius %g mm\n", name.GetString(), radius);
        } else if (type != ZOR_RECORD_CONTAINER) {
            file.ReadDummy();
        }
        ++records;
    }
    std::printf("%d records\n", records);
    return 0;
}
