// zorbench_pugixml PATH: pugixml parsing the file into a document and nothing
// else, the lower bound of any walk over it. Checks: children of the root's
// first child (the tools of a tool library).
#include <cstdio>
#include <pugixml.hpp>

#include "../harness/Measure.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: zorbench_pugixml PATH\n");
        return 2;
    }
    const char* path = argv[1];
    return zorbench::measure("pugixml", [path] {
        pugi::xml_document document;
        if (!document.load_file(path)) return -1LL;
        long long children = 0;
        for (pugi::xml_node n = document.document_element().first_child().first_child(); n; n = n.next_sibling())
            ++children;
        return children;
    });
}
