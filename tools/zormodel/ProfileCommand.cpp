// zormodel profile FILE: reads a native extrusion or sweep profile file, or a
// foreign one (Vericut, MachineWorks, Sirius), and prints its header and
// segments, or draws it as an SVG picture.
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "Detect.h"
#include "ForeignProfiles.h"
#include "ProfileSvg.h"
#include "Report.h"
#include "ZORModelIo.h"

namespace zormodel {

namespace {

// The first and third lines of the file, trimmed and upper-cased as the
// reader sees them.
std::vector<std::string> head_lines(const std::string& path) {
    std::vector<std::string> lines;
    std::FILE* f = std::fopen(path.c_str(), "r");
    if (f == nullptr) return lines;
    char buffer[100];
    while (lines.size() < 3 && std::fgets(buffer, sizeof buffer, f) != nullptr) {
        CString line(buffer);
        lines.push_back(line.Trim().MakeUpper().GetString());
    }
    std::fclose(f);
    return lines;
}

// An extrusion file by its magic, else by a Z line in third place.
bool looks_like_extrusion(const std::string& path) {
    std::vector<std::string> lines = head_lines(path);
    if (!lines.empty() && lines[0].rfind("KOLP EXTRUDE FILE", 0) == 0) return true;
    if (!lines.empty() && lines[0].rfind("KOLP SWEEP FILE", 0) == 0) return false;
    return lines.size() >= 3 && lines[2].rfind("Z", 0) == 0;
}

std::unique_ptr<CMWZORSegmentArray> make_profile(bool extrusion) {
    if (extrusion) return std::make_unique<CMWZORExtrude>();
    return std::make_unique<CMWZORSweep>();
}

bool read_profile(CMWZORSegmentArray& list, bool extrusion, const std::string& path, unsigned int unit) {
    if (extrusion) return static_cast<CMWZORExtrude&>(list).ResadFile(path.c_str(), unit);
    return static_cast<CMWZORSweep&>(list).ResadFile(path.c_str(), unit);
}

// The unit the file is written in: reading it into the other unit shows
// which conversion the reader chose. 0 when the file names neither.
unsigned int file_unit(bool extrusion, const std::string& path) {
    auto probe = make_profile(extrusion);
    read_profile(*probe, extrusion, path, 1);
    if (probe->m_scale == 25.4) return 2;
    probe = make_profile(extrusion);
    read_profile(*probe, extrusion, path, 2);
    return probe->m_scale != 1.0 ? 1 : 0;
}

std::string unit_name(int unit) { return unit == 1 ? "mm" : unit == 2 ? "in" : "unit " + std::to_string(unit); }

}  // namespace

void add_profile_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("profile", "Print or draw an extrusion or sweep profile (native or foreign)");
    static std::string path, units, svg, from, fileUnits = "mm";
    static bool json = false;
    cmd->add_option("FILE", path, "Profile file (KOLP EXTRUDE FILE, KOLP SWEEP FILE or a foreign profile)")->required();
    cmd->add_option("--from", from, "Foreign source of the file (default: native, else detected)")
        ->check(CLI::IsMember(foreign_profile_sources()));
    cmd->add_option("--file-units", fileUnits, "Unit of a Vericut or Sirius file's numbers")
        ->check(CLI::IsMember({"mm", "in"}));
    cmd->add_option("--units", units, "Unit to convert coordinates to (default: the file's)")
        ->check(CLI::IsMember({"mm", "in"}));
    cmd->add_option("--svg", svg, "Draw the profile into this SVG file");
    cmd->add_flag("--json", json, "Print the profile as JSON");
    cmd->callback([] {
        if (from.empty())
            require_kind(path, {FileKind::Extrusion, FileKind::Sweep, FileKind::ForeignProfile}, "a profile");
        else if (!readable_file(path))
            throw CLI::RuntimeError(fail_unreadable(path));
        std::vector<std::string> head = head_lines(path);
        const bool native = from.empty() && !head.empty() && head[0].rfind("KOLP", 0) == 0;
        std::unique_ptr<CMWZORSegmentArray> list;
        std::string kind;
        if (!native) {
            // Foreign sources carry no unit: the numbers are in --file-units.
            const int fileUnit = unit_code(fileUnits);
            std::string error;
            list = read_foreign_profile(path, from, units.empty() ? fileUnit : unit_code(units), fileUnit, &kind,
                                        &error);
            if (list == nullptr && !from.empty()) {
                std::fprintf(stderr, "zormodel: %s: %s\n", path.c_str(), error.c_str());
                throw CLI::RuntimeError(kExitRead);
            }
        }
        const bool extrusion = list != nullptr ? list->IsKindOf(RUNTIME_CLASS(CMWZORExtrude)) : looks_like_extrusion(path);
        if (list == nullptr) {
            // Native, or nothing foreign recognised: read it as a native file.
            const unsigned int unit =
                units.empty() ? file_unit(extrusion, path) : static_cast<unsigned int>(unit_code(units));
            list = make_profile(extrusion);
            if (!read_profile(*list, extrusion, path, unit)) throw CLI::RuntimeError(fail_unreadable(path));
        }

        std::vector<Report> segments;
        for (long long i = 0; i < list->m_segments.GetSize(); ++i)
            segments.push_back(segment_report(list->m_segments[i]));
        Report report(extrusion ? "extrusion" : "sweep");
        report.text("file", path);
        if (!kind.empty()) report.text("source", kind);
        report.text("unit", unit_name(list->GetUnit())).number("tolerance", list->m_tolerance);
        report.integer("version", list->m_version);
        if (extrusion) {
            double zMin = 0, zMax = 0;
            static_cast<CMWZORExtrude&>(*list).GetZValues(&zMin, &zMax);
            report.numbers("z", {zMin, zMax});
        }
        report.integer("count", static_cast<long long>(segments.size()));

        if (!svg.empty()) {
            const std::string title = path.substr(path.find_last_of('/') + 1) + "  (" +
                                      (extrusion ? "extrusion" : "sweep") + ", " + unit_name(list->GetUnit()) +
                                      ", tolerance " + format_double(list->m_tolerance) + ")";
            if (!write_profile_svg(*list, svg, title)) fail_unwritable(svg);
        }
        report.list("segments", std::move(segments));
        // With the picture on standard output the listing goes to standard error.
        std::FILE* out = svg == "-" ? stderr : stdout;
        if (json) {
            report.printJson(out);
            std::fputs("\n", out);
        } else {
            report.printText(out);
            if (!svg.empty() && svg != "-") std::fprintf(out, "wrote %s\n", svg.c_str());
        }
    });
}

}  // namespace zormodel
