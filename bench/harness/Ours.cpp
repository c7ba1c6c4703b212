// zorbench_ours CASE PATH: one timed read of PATH by our reader for CASE,
// printed as one line (see Measure.h). A case this build lacks prints
// "zorbench tool=ours unsupported=1" and exits with 3.
#include <cstdio>
#include <cstring>
#include <map>
#include <string>

#include "Cases.h"
#include "Measure.h"

namespace zorbench {

namespace {

std::map<std::string, CaseFunction>& cases() {
    static std::map<std::string, CaseFunction> all;
    return all;
}

}  // namespace

bool register_case(const char* name, CaseFunction run) {
    cases()[name] = run;
    return true;
}

}  // namespace zorbench

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: zorbench_ours CASE PATH\ncases:");
        for (const auto& c : zorbench::cases()) std::fprintf(stderr, " %s", c.first.c_str());
        std::fprintf(stderr, "\n");
        return 2;
    }
    const auto found = zorbench::cases().find(argv[1]);
    if (found == zorbench::cases().end()) {
        std::printf("zorbench tool=ours unsupported=1\n");
        return 3;
    }
    const zorbench::CaseFunction run = found->second;
    const char* path = argv[2];
    return zorbench::measure("ours", [run, path] { return run(path); });
}
