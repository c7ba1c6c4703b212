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
    finish_progress();
    std::fprintf(stderr, "zormodel: %s: %s\n", path.c_str(), why);
    return kExitRead;
}

void fail_unwritable(const std::string& path) {
    const char* why = errno != 0 ? std::strerror(errno) : "write error";
    finish_progress();
    std::fprintf(stderr, "zormodel: %s: cannot be written (%s)\n", path.c_str(), why);
    throw CLI::RuntimeError(kExitWrite);
}

std::FILE* open_output(const std::string& path, const char* mode) {
    errno = 0;
    return path == "-" ? stdout : std::fopen(path.c_str(), mode);
}

bool close_output(std::FILE* out) {
    errno = 0;
    if (out == stdout) return std::fflush(out) == 0 && !std::ferror(out);
    const bool ok = !std::ferror(out);
    return std::fclose(out) == 0 && ok;
}

int unit_code(const std::string& name) { return name == "in" ? 2 : 1; }

}  // namespace zormodel

namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 success, 1 a file could not be read or was of the wrong kind,\n"
    "2 usage, 3 an output could not be written. JSON output is UTF-8: bytes of a\n"
    "name that are not UTF-8 are read as Latin-1 and written as \\u escapes.";

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"zormodel: inspect, dump and convert the files that the ZORModelIo library reads."};
    app.require_subcommand(1);
    app.set_version_flag("--version", "zormodel " ZOR_VERSION);
    app.footer(kExitCodes);
    zormodel::add_info_command(app);
    zormodel::add_convert_command(app);
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
    // The first word that is not an option must name a subcommand; say which
    // exist rather than that an argument was not expected.
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-') continue;
        std::string names;
        bool known = false;
        for (const CLI::App* sub : app.get_subcommands([](const CLI::App*) { return true; })) {
            names += (names.empty() ? "" : ", ") + sub->get_name();
            known = known || sub->get_name() == argv[i];
        }
        if (known) break;
        std::fprintf(stderr, "zormodel: unknown subcommand '%s' (choose from %s)\n", argv[i], names.c_str());
        return zormodel::kExitUsage;
    }
    int status = 0;
    {
        // The input is the first argument that names an existing file.
        std::string input;
        for (int i = 1; i < argc && input.empty(); ++i)
            if (argv[i][0] != '-' && zormodel::readable_file(argv[i])) input = argv[i];
        zormodel::start_progress(input);
        try {
            app.parse(argc, argv);
        } catch (const CLI::RuntimeError& e) {
            status = e.get_exit_code();
        } catch (const CLI::Error& e) {
            zormodel::finish_progress();
            status = app.exit(e) == 0 ? zormodel::kExitOk : zormodel::kExitUsage;
        }
        zormodel::finish_progress();
    }
    if (stats) zormodel::print_run_stats(start);
    return status;
}
