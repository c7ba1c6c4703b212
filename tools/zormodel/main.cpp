// zormodel: inspect, dump and convert every file the ZORModelIo library reads.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Commands.h"

namespace zormodel {

bool readable_file(const std::string& path) {
    struct stat info;
    if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return false;
    std::fclose(f);
    return true;
}

int fail_unreadable(const std::string& path) {
    struct stat info;
    const char* why = stat(path.c_str(), &info) != 0 ? std::strerror(errno)
                      : S_ISDIR(info.st_mode)        ? "is a directory"
                                                     : "cannot be read";
    std::fprintf(stderr, "zormodel: %s: %s\n", path.c_str(), why);
    return 2;
}

int unit_code(const std::string& name) { return name == "in" ? 2 : 1; }

}  // namespace zormodel

int main(int argc, char** argv) {
    CLI::App app{"zormodel: inspect, dump and convert the files that the ZORModelIo library reads."};
    app.require_subcommand(1);
    zormodel::add_objects_command(app);
    zormodel::add_descramble_command(app);
    zormodel::add_stl_command(app);
    CLI11_PARSE(app, argc, argv);
    return 0;
}
