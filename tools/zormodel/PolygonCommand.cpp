// zormodel polygon FILE: runs the scan of a Vericut polygon file and says
// whether the file is well formed and how many triangles it holds.
#include <cstdio>

#include "Commands.h"
#include "Detect.h"
#include "Report.h"
#include "mesh/VericutReaders.h"
#include "platform/crtpath.h"

namespace zormodel {

void add_polygon_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("polygon", "Check a Vericut polygon file and count its triangles");
    static std::string path;
    static bool json = false;
    cmd->add_option("FILE", path, "Vericut polygon file")->required();
    cmd->add_flag("--json", json, "Print the result as JSON");
    cmd->callback([] {
        require_kind(path, {FileKind::Polygon}, "a Vericut polygon file");
        std::FILE* stream = zor::open_file(path.c_str(), "r");
        if (stream == nullptr) throw CLI::RuntimeError(fail_unreadable(path));
        long long triangles = 0;
        const bool wellFormed = zor::VP_scan(stream, &triangles) != 0;
        std::fclose(stream);
        if (json) {
            Report report("polygon");
            report.text("file", path).flag("wellFormed", wellFormed).integer("triangles", wellFormed ? triangles : 0);
            report.printJson(stdout);
            std::fputs("\n", stdout);
        } else if (wellFormed) {
            std::printf("polygon file %s: well formed, %lld triangle%s\n", path.c_str(), triangles,
                        triangles == 1 ? "" : "s");
        } else {
            std::printf("polygon file %s: not well formed\n", path.c_str());
        }
        // Not well formed: exit 1, so scripts can test the file.
        if (!wellFormed) throw CLI::RuntimeError(1);
    });
}

}  // namespace zormodel
