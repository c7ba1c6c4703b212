// zormodel: inspect, dump and convert every file the ZORModelIo library reads.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <chrono>
#include <cstring>

#include "Commands.h"
#include "RunStats.h"

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
    zormodel::add_profile_command(app);
    zormodel::add_tools_command(app);
    zormodel::add_polygon_command(app);
    zormodel::add_dxf_command(app);
    zormodel::add_contours_command(app);
    zormodel::add_stl_command(app);
    bool stats = false;
    app.add_flag("--stats", stats, "Print wall time and peak memory on standard error");
    const auto start = std::chrono::steady_clock::now();
    int status = 0;
    {
        // The input is the first argument that names an existing file.
        std::string input;
        for (int i = 1; i < argc && input.empty(); ++i)
            if (argv[i][0] != '-' && zormodel::readable_file(argv[i])) input = argv[i];
        zormodel::ProgressBar progress(input);
        try {
            app.parse(argc, argv);
        } catch (const CLI::Error& e) {
            status = app.exit(e);
        }
    }
    if (stats) zormodel::print_run_stats(start);
    return status;
}
