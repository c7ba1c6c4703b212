// zormodel info FILE|FOLDER...: tells each file's kind by its content and
// summarises it; goes on after a file that fails and exits 1 if any did.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <pugixml.hpp>
#include <sstream>
#include <vector>

#include "Commands.h"
#include "Detect.h"
#include "ForeignProfiles.h"
#include "Info.h"
#include "Report.h"
#include "ZORModelIo.h"
#include "dxf/DxfParse.h"
#include "mesh/VericutReaders.h"
#include "objectfile/LineReader.h"
#include "platform/crtpath.h"

namespace zormodel {

namespace {}  // namespace

std::string read_whole_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

namespace {

struct Box {
    double lo[3] = {0, 0, 0}, hi[3] = {0, 0, 0};
    bool empty = true;
    void add(const double* p, int n) {
        for (int a = 0; a < n; ++a) {
            if (empty || p[a] < lo[a]) lo[a] = p[a];
            if (empty || p[a] > hi[a]) hi[a] = p[a];
        }
        empty = false;
    }
    void addTo(Report& r, const std::string& unit, int n) const {
        if (empty) return;
        r.numbers("min_" + unit, std::vector<double>(lo, lo + n))
            .numbers("max_" + unit, std::vector<double>(hi, hi + n));
    }
};

std::string unit_name(int unit) { return unit == 2 ? "in" : "mm"; }

// Throws std::runtime_error with the reason when the file cannot be summarised.
struct Failure {
    std::string why;
};

void summarise_stl(const std::string& path, const Detection& d, Report& r) {
    unsigned int numPoints = 0, numVectors = 0, numFaces = 0;
    double *points = nullptr, *vectors = nullptr;
    unsigned int* faces = nullptr;
    std::string name = path;
    const int ok = StlFile(name.data(), &numPoints, &points, &numVectors, &vectors, &numFaces, &faces, 1, 1);
    Box box;
    for (unsigned int i = 0; i < numPoints; ++i) box.add(points + 3 * i, 3);
    std::free(points);
    std::free(vectors);
    std::free(faces);
    if (d.stlTextReadAsBinary) r.text("readAsBinaryBecause", d.binaryReason);
    if (ok != 1) throw Failure{"the STL read failed (see above)"};
    r.integer("points", numPoints).integer("normals", numVectors).integer("faces", numFaces);
    box.addTo(r, "mm", 3);  // an STL file names no unit: its numbers taken as millimetres
}

void summarise_object_file(const std::string& path, Report& r) {
    CMWZORFile file(path.c_str(), 0, 1, 1);
    std::map<unsigned int, long long> counts;
    unsigned int type = 0;
    while (file.ReadType(&type)) {
        ++counts[type];
        if (type != ZOR_RECORD_CONTAINER) file.ReadDummy();
    }
    static const std::map<unsigned int, const char*> names = {
        {ZOR_RECORD_CUBE, "cube"},           {ZOR_RECORD_CYLINDER, "cylinder"},
        {ZOR_RECORD_CONE, "cone"},           {ZOR_RECORD_SPHERE, "sphere"},
        {ZOR_RECORD_TORUS, "torus"},         {ZOR_RECORD_FILE, "file"},
        {ZOR_RECORD_EXTRUSION, "extrusion"}, {ZOR_RECORD_REVOLUTION, "revolution"},
        {ZOR_RECORD_MESH, "mesh"},           {ZOR_RECORD_PART, "part"},
        {ZOR_RECORD_TOOL, "tool"},           {ZOR_RECORD_ENGINE, "engine"},
        {ZOR_RECORD_CONTAINER, "container"}};
    Report records("records");
    long long total = 0;
    for (const auto& [code, count] : counts) {
        auto name = names.find(code);
        records.integer(name != names.end() ? name->second : "unknown" + std::to_string(code), count);
        total += count;
    }
    r.text("version", std::to_string(file.m_version / 100) + "." + (file.m_version % 100 < 10 ? "0" : "") +
                          std::to_string(file.m_version % 100));
    r.integer("recordCount", total).list("records", {std::move(records)});
}

void summarise_profile(CMWZORSegmentArray& list, Report& r) {
    Box box;
    for (long long i = 0; i < list.m_segments.GetSize(); ++i) {
        const CMWZORSegment* s = list.m_segments[i];
        for (long long k = 0; k < s->m_points.GetSize(); ++k) {
            const double p[2] = {s->m_points[k]->x, s->m_points[k]->y};
            box.add(p, 2);
        }
    }
    r.integer("segments", list.m_segments.GetSize()).number("tolerance", list.m_tolerance);
    box.addTo(r, unit_name(static_cast<int>(list.GetUnit())), 2);  // every reader here is asked for mm
}

void summarise_native(const std::string& path, bool extrusion, Report& r) {
    std::unique_ptr<CMWZORSegmentArray> list;
    bool ok;
    if (extrusion) {
        auto p = std::make_unique<CMWZORExtrude>();
        ok = p->ResadFile(path.c_str(), 1);
        list = std::move(p);
    } else {
        auto p = std::make_unique<CMWZORSweep>();
        ok = p->ResadFile(path.c_str(), 1);
        list = std::move(p);
    }
    if (!ok) throw Failure{"the profile could not be read"};
    summarise_profile(*list, r);
}

void summarise_foreign(const std::string& path, Report& r) {
    std::string kind, error;
    auto list = read_foreign_profile(path, "", 1, 1, &kind, &error);
    if (list == nullptr) throw Failure{error};
    r.text("source", kind);
    summarise_profile(*list, r);
}

void summarise_dxf(const std::string& path, Report& r, bool warn) {
    const std::string bytes = read_whole_file(path);
    const DxfSurvey survey = survey_dxf(bytes);
    Report types("entityTypes");
    for (const auto& [type, count] : survey.entityTypes) types.integer(type, count);
    zor::DxfDrawing drawing;
    if (!zor::parse_dxf(bytes, drawing)) throw Failure{"no ENTITIES section"};
    std::vector<Report> layers;
    for (const auto& layer : drawing.layers) {
        zor::LayerContours contours(*layer);
        long long count = 0, closed = 0;
        for (const Segment_contour* c = contours.result().first; c != nullptr; c = c->next) {
            ++count;
            closed += c->closed != 0;
        }
        Report l("layer");
        l.text("name", layer->m_name.GetString()).integer("entities", layer->GetCount());
        l.integer("contours", count).integer("closed", closed);
        layers.push_back(std::move(l));
    }
    r.list("entityTypes", {std::move(types)}).text("used", "LINE, ARC").list("layers", std::move(layers));
    if (warn) warn_dxf_omissions(path, survey);
}

void summarise_tools(const std::string& path, Report& r) {
    pugi::xml_document doc;
    if (!doc.load_file(path.c_str(), pugi::parse_default & ~pugi::parse_doctype)) throw Failure{"not well-formed XML"};
    struct Counter : pugi::xml_tree_walker {
        long long tools = 0;
        bool for_each(pugi::xml_node& node) override {
            std::string name = node.name();
            std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::toupper(c); });
            tools += node.type() == pugi::node_element && name == "TOOL";
            return true;
        }
    } counter;
    doc.traverse(counter);
    const long long tools = counter.tools;
    r.text("root", doc.document_element().name()).integer("tools", tools);
}

void summarise_polygon(const std::string& path, Report& r) {
    std::FILE* stream = zor::open_file(path.c_str(), "r");
    if (stream == nullptr) throw Failure{"cannot be opened"};
    long long triangles = 0;
    const bool wellFormed = zor::VP_scan(stream, &triangles) != 0;
    std::fclose(stream);
    if (!wellFormed) throw Failure{"not a well-formed polygon file"};
    r.integer("triangles", triangles);
}

const char* kind_key(FileKind k) {
    switch (k) {
        case FileKind::ObjectFile:
            return "objectFile";
        case FileKind::Extrusion:
            return "extrusion";
        case FileKind::Sweep:
            return "sweep";
        case FileKind::ForeignProfile:
            return "foreignProfile";
        case FileKind::StlAscii:
            return "stlAscii";
        case FileKind::StlBinary:
            return "stlBinary";
        case FileKind::Dxf:
            return "dxf";
        case FileKind::Polygon:
            return "polygon";
        case FileKind::ToolLibrary:
            return "toolLibrary";
        default:
            return "unknown";
    }
}

// One file's report; false when it failed.
bool summarise(const std::string& path, Report& r, bool warn) {
    const Detection d = detect_file(path);
    r = Report(kind_key(d.kind));
    r.text("file", path).text("looksLike", describe(d));
    try {
        switch (d.kind) {
            case FileKind::StlAscii:
            case FileKind::StlBinary:
                summarise_stl(path, d, r);
                break;
            case FileKind::ObjectFile:
                summarise_object_file(path, r);
                break;
            case FileKind::Extrusion:
                summarise_native(path, true, r);
                break;
            case FileKind::Sweep:
                summarise_native(path, false, r);
                break;
            case FileKind::ForeignProfile:
                summarise_foreign(path, r);
                break;
            case FileKind::Dxf:
                summarise_dxf(path, r, warn);
                break;
            case FileKind::ToolLibrary:
                summarise_tools(path, r);
                break;
            case FileKind::Polygon:
                summarise_polygon(path, r);
                break;
            default:
                throw Failure{d.kind == FileKind::Missing ? "not a readable file" : "no kind zormodel reads"};
        }
    } catch (const Failure& f) {
        r.text("status", "failed").text("error", f.why);
        return false;
    }
    r.text("status", "ok");
    return true;
}

// Regular files under path in name order; path itself when it is not a folder.
void collect(const std::string& path, std::vector<std::string>& files) {
    struct stat info;
    if (stat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        files.push_back(path);
        return;
    }
    std::vector<std::string> names;
    if (DIR* dir = opendir(path.c_str())) {
        while (dirent* e = readdir(dir))
            if (e->d_name[0] != '.') names.emplace_back(e->d_name);
        closedir(dir);
    }
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) collect(path + (path.back() == '/' ? "" : "/") + name, files);
}

}  // namespace

DxfSurvey survey_dxf(const std::string& bytes) {
    DxfSurvey s;
    std::istringstream in(bytes);
    std::string code, value;
    bool inEntities = false, sectionName = false;
    std::string type;
    bool sawZ = false;
    auto close = [&] {
        if (type == "LINE" && !sawZ) ++s.linesWithoutZ;
        type.clear();
    };
    while (std::getline(in, code) && std::getline(in, value)) {
        const std::string c(zor::trim_white_space(code)), v(zor::trim_white_space(value));
        if (c == "0") {
            if (inEntities) close();
            sectionName = v == "SECTION";
            if (v == "ENDSEC") inEntities = false;
            if (inEntities) {
                type = v;
                sawZ = false;
                ++s.entityTypes[v];
            }
        } else if (c == "2" && sectionName) {
            inEntities = v == "ENTITIES";
            sectionName = false;
        } else if (inEntities && !type.empty()) {
            if (c == "31") sawZ = true;
            if (c == "8" && v.find_first_of(" \t") != std::string::npos) ++s.layerNamesWithBlank;
        }
    }
    if (inEntities) close();
    return s;
}

void warn_unwritten_contours(const std::string& path, const std::string& bytes) {
    zor::DxfDrawing drawing;
    if (!zor::parse_dxf(bytes, drawing)) return;
    long long unwritten = 0, layers = 0;
    for (const auto& layer : drawing.layers) {
        zor::LayerContours contours(*layer);
        long long here = 0;
        for (const Segment_contour* c = contours.result().first; c != nullptr; c = c->next)
            here += c->startSegment != contours.first();
        unwritten += here;
        layers += here > 0;
    }
    if (unwritten == 0) return;
    finish_progress();
    std::fprintf(stderr,
                 "zormodel: warning: %s: %lld contour%s in %lld layer%s not written (only the chain through each "
                 "layer's first entity is)\n",
                 path.c_str(), unwritten, unwritten == 1 ? "" : "s", layers, layers == 1 ? "" : "s");
}

int warn_dxf_omissions(const std::string& path, const DxfSurvey& survey) {
    int lines = 0;
    finish_progress();
    for (const auto& [type, count] : survey.entityTypes) {
        if (type == "LINE" || type == "ARC") continue;
        std::fprintf(stderr, "zormodel: warning: %s: %lld %s entit%s left out (only LINE and ARC are read)\n",
                     path.c_str(), count, type.c_str(), count == 1 ? "y" : "ies");
        ++lines;
    }
    if (survey.linesWithoutZ > 0) {
        std::fprintf(stderr, "zormodel: warning: %s: %lld LINE%s without group 31 (end Z) left out\n", path.c_str(),
                     survey.linesWithoutZ, survey.linesWithoutZ == 1 ? "" : "s");
        ++lines;
    }
    if (survey.layerNamesWithBlank > 0) {
        std::fprintf(stderr, "zormodel: warning: %s: %lld layer name%s cut at a blank\n", path.c_str(),
                     survey.layerNamesWithBlank, survey.layerNamesWithBlank == 1 ? "" : "s");
        ++lines;
    }
    return lines;
}

void add_info_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("info", "Tell each file's kind by its content and summarise it");
    static std::vector<std::string> paths;
    static bool json = false;
    cmd->add_option("PATH", paths, "Files, or folders to walk")->required();
    cmd->add_flag("--json", json, "Print a JSON array, one object per file");
    cmd->callback([] {
        std::vector<std::string> files;
        for (const std::string& p : paths) collect(p, files);
        std::vector<Report> reports;
        long long failed = 0;
        for (const std::string& file : files) {
            Report r("");
            if (!summarise(file, r, !json)) ++failed;
            if (!json) r.printText(stdout);
            reports.push_back(std::move(r));
        }
        if (json) {
            print_json_array(stdout, reports);
            std::fputs("\n", stdout);
        }
        if (failed > 0) {
            std::fprintf(stderr, "zormodel: %lld of %zu files failed\n", failed, files.size());
            throw CLI::RuntimeError(kExitRead);
        }
    });
}

}  // namespace zormodel
