// zormodel descramble FILE: the plain text of an object file, line by line as
// the reader sees it (non-empty, descrambled, trimmed).
#include <cstdio>

#include "Commands.h"
#include "Detect.h"
#include "objectfile/LineReader.h"
#include "objectfile/ObjectFileState.h"
#include "platform/crtpath.h"

namespace zormodel {

void add_descramble_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("descramble", "Write the plain text of a scrambled (or plain) object file");
    static std::string path;
    cmd->add_option("FILE", path, "Object file")->required();
    cmd->callback([] {
        require_kind(path, {FileKind::ObjectFile}, "an object file");
        std::FILE* stream = zor::open_file(path.c_str(), "r");
        zor::object_file_state().firstLinePending = true;
        zor::object_file_state().fileIsPlain = false;
        CString line;
        while (zor::read_object_line(stream, line)) std::printf("%s\n", line.GetString());
        if (std::fflush(stdout) != 0) fail_unwritable("-");
    });
}

}  // namespace zormodel
