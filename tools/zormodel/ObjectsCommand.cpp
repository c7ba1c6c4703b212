// zormodel objects FILE: walks an object file with ReadType and the record
// readers and prints every record.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Commands.h"
#include "Detect.h"
#include "ProfileSvg.h"
#include "ObjWriter.h"
#include "Report.h"
#include "ZORModelIo.h"
#include "platform/crtpath.h"

namespace zormodel {

namespace {

// The outputs every object record shares, released with the object.
struct SharedGroup {
    double vector[4] = {0, 0, 0, 0};
    CString texts[6];
    double matrix[4][4] = {};
    CMWZORPointArray list1, list2;
    float quad[4] = {0, 0, 0, 0};
    CString name, tailText, attachName, attachKey;
    unsigned int attachIndex = 0;

    ~SharedGroup() {
        for (CMWZORPointArray* list : {&list1, &list2})
            for (long long i = 0; i < list->GetSize(); ++i) delete list->GetAt(i);
    }

    void addTo(Report& report) const {
        report.numbers("vector", {vector[0], vector[1], vector[2], vector[3]});
        report.matrix("matrix", matrix);
        report.numbers("quad", {quad[0], quad[1], quad[2], quad[3]});
        report.text("attachment", attachName.GetString());
        report.text("attachmentKey", attachKey.GetString());
        report.integer("attachmentIndex", attachIndex);
        if (list1.GetSize() > 0 || list2.GetSize() > 0) {
            report.integer("points1", list1.GetSize());
            report.integer("points2", list2.GetSize());
        }
    }
};

using Reader = std::function<bool(CMWZORFile&, Report&)>;

bool read_cube(CMWZORFile& f, Report& r) {
    SharedGroup g;
    double d[3] = {0, 0, 0};
    if (!f.ReadCube(&d[0], &d[1], &d[2], g.vector, &g.texts[0], &g.texts[1], &g.texts[2], &g.texts[3],
                    &g.texts[4], &g.texts[5], g.matrix, &g.list1, &g.list2, g.quad, &g.name, &g.tailText,
                    &g.attachName, &g.attachKey, &g.attachIndex))
        return false;
    r.text("name", g.name.GetString()).numbers("dimensions", {d[0], d[1], d[2]});
    r.text("texts", (g.texts[3] + " " + g.texts[4] + " " + g.texts[5]).GetString());
    g.addTo(r);
    return true;
}

bool read_cylinder(CMWZORFile& f, Report& r) {
    SharedGroup g;
    double d[3] = {0, 0, 0};
    if (!f.ReadCylinder(&d[0], &d[1], &d[2], g.vector, &g.texts[0], &g.texts[1], &g.texts[2], &g.texts[3],
                        &g.texts[4], &g.texts[5], g.matrix, &g.list1, &g.list2, g.quad, &g.name, &g.tailText,
                        &g.attachName, &g.attachKey, &g.attachIndex))
        return false;
    r.text("name", g.name.GetString()).numbers("dimensions", {d[0], d[1], d[2]});
    g.addTo(r);
    return true;
}

bool read_cone(CMWZORFile& f, Report& r) {
    SharedGroup g;
    double d[2] = {0, 0};
    if (!f.ReadCone(&d[0], &d[1], g.vector, &g.texts[0], &g.texts[1], &g.texts[2], &g.texts[3], &g.texts[4],
                    &g.texts[5], g.matrix, &g.list1, &g.list2, g.quad, &g.name, &g.tailText, &g.attachName,
                    &g.attachKey, &g.attachIndex))
        return false;
    r.text("name", g.name.GetString()).numbers("dimensions", {d[0], d[1]});
    g.addTo(r);
    return true;
}

bool read_sphere(CMWZORFile& f, Report& r) {
    SharedGroup g;
    double d = 0;
    if (!f.ReadSphere(&d, g.vector, &g.texts[0], &g.texts[1], &g.texts[2], &g.texts[3], &g.texts[4], &g.texts[5],
                      g.matrix, &g.list1, &g.list2, g.quad, &g.name, &g.tailText, &g.attachName, &g.attachKey,
                      &g.attachIndex))
        return false;
    r.text("name", g.name.GetString()).numbers("dimensions", {d});
    g.addTo(r);
    return true;
}

bool read_torus(CMWZORFile& f, Report& r) {
    SharedGroup g;
    double d[2] = {0, 0};
    if (!f.ReadTorus(&d[0], &d[1], g.vector, &g.texts[0], &g.texts[1], &g.texts[2], &g.texts[3], &g.texts[4],
                     &g.texts[5], g.matrix, &g.list1, &g.list2, g.quad, &g.name, &g.tailText, &g.attachName,
                     &g.attachKey, &g.attachIndex))
        return false;
    r.text("name", g.name.GetString()).numbers("dimensions", {d[0], d[1]});
    g.addTo(r);
    return true;
}

bool read_file_reference(CMWZORFile& f, Report& r) {
    SharedGroup g;
    unsigned int first = 0, flag = 0;
    CString reference, text2;
    if (!f.ReadObjectFile(&first, &reference, &text2, g.vector, &g.texts[0], &g.texts[1], &g.texts[2], g.matrix,
                          &g.list1, &g.list2, g.quad, &g.name, &g.tailText, &g.attachName, &g.attachKey,
                          &g.attachIndex, &flag))
        return false;
    r.text("name", g.name.GetString()).text("file", reference.GetString()).integer("flag", flag);
    g.addTo(r);
    return true;
}

// Extrusion and revolution records: the profile's segments (a closed
// outline may end in an empty slot) and the record's own values.
bool read_profile_record(CMWZORFile& f, Report& r, bool extrusion) {
    SharedGroup g;
    unsigned int count = 0;
    CMWZORSegmentPtrArray segments;
    double direction[4] = {0, 0, 0, 0};
    double value = 0;
    const bool ok =
        extrusion ? f.ReadExtrusion(g.vector, &count, &segments, &g.texts[0], &g.texts[1], &g.texts[2], g.matrix,
                                    &g.list1, &g.list2, g.quad, direction, &value, &g.name, &g.tailText,
                                    &g.attachName, &g.attachKey, &g.attachIndex)
                  : f.ReadRevolution(g.vector, &count, &segments, &g.texts[0], &g.texts[1], &g.texts[2], g.matrix,
                                     &g.list1, &g.list2, g.quad, direction, &value, &g.name, &g.tailText,
                                     &g.attachName, &g.attachKey, &g.attachIndex);
    std::vector<Report> items;
    for (long long i = 0; i < segments.GetSize(); ++i) {
        items.push_back(segment_report(segments[i]));
        delete segments[i];
    }
    if (!ok) return false;
    r.text("name", g.name.GetString());
    r.numbers(extrusion ? "direction" : "axis", {direction[0], direction[1], direction[2]});
    r.number(extrusion ? "length" : "angle", value);
    r.integer("count", count);
    g.addTo(r);
    r.list("segments", std::move(items));
    return true;
}

bool read_extrusion(CMWZORFile& f, Report& r) { return read_profile_record(f, r, true); }
bool read_revolution(CMWZORFile& f, Report& r) { return read_profile_record(f, r, false); }
// Meshes kept for --obj (only while it was asked for).
std::vector<ObjMesh>* g_objMeshes = nullptr;

bool read_mesh(CMWZORFile& f, Report& r) {
    SharedGroup g;
    unsigned int vertexCount = 0, cornerCount = 0;
    double(*vertices)[4] = nullptr;
    double(*corners)[4] = nullptr;
    const bool ok = f.ReadMesh(g.vector, &vertexCount, &vertices, &g.texts[0], &g.texts[1], &g.texts[2],
                               &cornerCount, &corners, g.matrix, &g.list1, &g.list2, g.quad, &g.name, &g.tailText,
                               &g.attachName, &g.attachKey, &g.attachIndex);
    if (ok) {
        r.text("name", g.name.GetString()).integer("vertices", vertexCount).integer("triangles", cornerCount / 3);
        if (vertexCount > 0) {
            double low[3], high[3];
            for (int k = 0; k < 3; ++k) low[k] = high[k] = vertices[0][k];
            for (unsigned int v = 1; v < vertexCount; ++v)
                for (int k = 0; k < 3; ++k) {
                    if (vertices[v][k] < low[k]) low[k] = vertices[v][k];
                    if (vertices[v][k] > high[k]) high[k] = vertices[v][k];
                }
            r.numbers("min", {low[0], low[1], low[2]}).numbers("max", {high[0], high[1], high[2]});
        }
        g.addTo(r);
        if (g_objMeshes != nullptr && corners != nullptr)
            g_objMeshes->push_back(obj_mesh_from_corners(g.name.GetString(), corners, cornerCount));
    }
    // The arrays are ours after a failed read too.
    delete[] vertices;
    delete[] corners;
    return ok;
}

bool read_part(CMWZORFile& f, Report& r) {
    SharedGroup g;
    if (!f.ReadPart(g.vector, &g.texts[0], &g.texts[1], &g.texts[2], g.matrix, &g.list1, &g.list2, g.quad, &g.name,
                    &g.tailText, &g.attachName, &g.attachKey, &g.attachIndex))
        return false;
    r.text("name", g.name.GetString());
    g.addTo(r);
    return true;
}

bool read_tool(CMWZORFile& f, Report& r) {
    SharedGroup g;
    if (!f.ReadTool(g.vector, &g.texts[0], &g.texts[1], &g.texts[2], g.matrix, &g.list1, &g.list2, g.quad, &g.name,
                    &g.tailText, &g.attachName, &g.attachKey, &g.attachIndex))
        return false;
    r.text("name", g.name.GetString());
    g.addTo(r);
    return true;
}

bool read_engine(CMWZORFile& f, Report& r) {
    CString name, key;
    unsigned int kind = 0, p4 = 0, flag = 0, p10 = 0, p13 = 0, p14 = 0, p17 = 0, p18 = 0, p21 = 0, p22 = 0, p23 = 0,
                 index = 0;
    double axis[3] = {0, 0, 0}, p20[4] = {0, 0, 0, 0};
    // p6 to p9 adjacent: the reader scales them as four neighbours.
    double p6to9[4] = {0, 0, 0, 0};
    double p11 = 0, p12 = 0, p15 = 0, p16 = 0, p19 = 0;
    if (!f.ReadEngin(&name, &kind, axis, &p4, &flag, &p6to9[0], &p6to9[1], &p6to9[2], &p6to9[3], &p10, &p11, &p12,
                     &p13, &p14, &p15, &p16, &p17, &p18, &p19, p20, &p21, &p22, &p23, &key, &index))
        return false;
    r.text("name", name.GetString());
    r.text("element", kind == 1 ? "axis" : kind == 2 ? "spindle" : std::to_string(kind));
    r.numbers("axis", {axis[0], axis[1], axis[2]}).integer("directionFlag", flag);
    r.numbers("p6-p9", {p6to9[0], p6to9[1], p6to9[2], p6to9[3]});
    if (kind == 2) r.numbers("spindleVector", {p20[0], p20[1], p20[2]});
    r.text("spindleKey", key.GetString()).integer("attachmentIndex", index);
    return true;
}

// Reads the collision section that follows the last record. ReadType runs to
// the end of the file looking for another record, so the section is read
// again from where that last ReadType began, past the "}" lines that close
// containers.
class SceneFile : public CMWZORFile {
public:
    using CMWZORFile::CMWZORFile;

    // true: the section's count and the pairs read; false: there is no
    // section (nothing but closing braces after the last record). *failed: a
    // section that does not read.
    bool ReadTrailingCollisions(const std::string& path, long start, unsigned int* count, std::vector<Report>* pairs,
                                bool* failed) {
        *failed = false;
        if (!SeekCollisionSection(path.c_str(), start)) return false;
        void** first = nullptr;
        void** second = nullptr;
        unsigned int* codes = nullptr;
        double* values = nullptr;
        *failed = !ReadCollision(&first, &second, &codes, &values, count);
        // The arrays are zeroed: after a failure the pairs not read have no names.
        for (unsigned int i = 0; first != nullptr && i < *count && first[i] != nullptr; ++i)
            pairs->push_back(Report("pair")
                                .text("first", static_cast<const char*>(first[i]))
                                .text("second", second[i] != nullptr ? static_cast<const char*>(second[i]) : "")
                                .integer("code", codes[i])
                                .number("value", values[i]));
        FreeCollision(first, second, codes, values, first != nullptr ? *count : 0);
        return true;
    }
};

std::string absolute_path(const std::string& path) {
    if (!path.empty() && path[0] == '/') return path;
    char cwd[4096];
    return getcwd(cwd, sizeof cwd) != nullptr ? std::string(cwd) + "/" + path : path;
}

struct RecordKind {
    const char* name;
    Reader read;  // null: the record is skipped with ReadDummy
};

const std::map<unsigned int, RecordKind>& record_kinds() {
    static const std::map<unsigned int, RecordKind> kinds = {
        {ZOR_RECORD_CUBE, {"cube", read_cube}},
        {ZOR_RECORD_CYLINDER, {"cylinder", read_cylinder}},
        {ZOR_RECORD_CONE, {"cone", read_cone}},
        {ZOR_RECORD_SPHERE, {"sphere", read_sphere}},
        {ZOR_RECORD_TORUS, {"torus", read_torus}},
        {ZOR_RECORD_FILE, {"file", read_file_reference}},
        {ZOR_RECORD_EXTRUSION, {"extrusion", read_extrusion}},
        {ZOR_RECORD_REVOLUTION, {"revolution", read_revolution}},
        {ZOR_RECORD_MESH, {"mesh", read_mesh}},
        {ZOR_RECORD_PART, {"part", read_part}},
        {ZOR_RECORD_TOOL, {"tool", read_tool}},
        {ZOR_RECORD_ENGINE, {"engine", read_engine}},
    };
    return kinds;
}

}  // namespace

void add_objects_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("objects", "Print every record of an object file, then its collision pairs");
    static std::string path, units = "mm", objPath;
    static bool matrixAsRead = false, json = false;
    cmd->add_option("FILE", path, "Object file")->required();
    cmd->add_option("--units", units, "Unit to convert lengths to")->check(CLI::IsMember({"mm", "in"}));
    cmd->add_flag("--matrix-as-read", matrixAsRead, "Keep matrices as stored instead of converting them");
    cmd->add_flag("--json", json, "Print the records as a JSON array");
    cmd->add_option("--obj", objPath, "Also write the meshes of the file as Wavefront OBJ (in their own coordinates)");
    cmd->callback([] {
        require_kind(path, {FileKind::ObjectFile}, "an object file");
        // A file reference changes the working directory to the file's
        // folder: open and write through absolute paths.
        const std::string absolute = absolute_path(path);
        const std::string objAbsolute = objPath.empty() || objPath == "-" ? objPath : absolute_path(objPath);
        SceneFile file(absolute.c_str(), 0, static_cast<unsigned int>(unit_code(units)), matrixAsRead ? 1 : 0);
        std::vector<ObjMesh> meshes;
        g_objMeshes = objPath.empty() ? nullptr : &meshes;
        std::vector<Report> records;
        bool failed = false;
        unsigned int type = 0;
        long lastStart = file.m_stream != nullptr ? std::ftell(file.m_stream) : -1;
        while (file.ReadType(&type)) {
            auto kind = record_kinds().find(type);
            if (type == ZOR_RECORD_CONTAINER) {
                records.emplace_back("container");
            } else if (kind == record_kinds().end() || !kind->second.read) {
                file.ReadDummy();
                records.emplace_back(Report("skipped").integer("code", type));
            } else {
                Report report(kind->second.name);
                if (!kind->second.read(file, report)) {
                    std::fprintf(stderr, "zormodel: %s: a %s record could not be read\n", path.c_str(),
                                 kind->second.name);
                    failed = true;
                    break;
                }
                records.push_back(std::move(report));
            }
            lastStart = file.m_stream != nullptr ? std::ftell(file.m_stream) : -1;
        }
        g_objMeshes = nullptr;

        unsigned int pairCount = 0;
        std::vector<Report> pairs;
        bool hasCollisions = false;
        if (!failed && lastStart >= 0) {
            bool collisionFailed = false;
            hasCollisions = file.ReadTrailingCollisions(absolute, lastStart, &pairCount, &pairs, &collisionFailed);
            if (collisionFailed) {
                std::fprintf(stderr, "zormodel: %s: the collision section could not be read\n", path.c_str());
                failed = true;
            }
        }

        // With the meshes on standard output the listing goes to standard error.
        std::FILE* out = objPath == "-" ? stderr : stdout;
        finish_progress();
        if (json) {
            Report document("objectFile");
            document.text("file", path).integer("version", file.m_version).list("records", std::move(records));
            if (hasCollisions) document.list("collisions", std::move(pairs));
            document.printJson(out);
            std::fputs("\n", out);
        } else {
            std::fprintf(out, "object file %s, version %u.%02u\n", path.c_str(), file.m_version / 100,
                         file.m_version % 100);
            for (const Report& record : records) record.printText(out, 2);
            if (hasCollisions)
                Report("collisions").integer("count", pairCount).list("pairs", std::move(pairs)).printText(out, 2);
        }
        if (!objPath.empty() && !write_obj(objAbsolute, meshes)) fail_unwritable(objPath);
        if (failed) throw CLI::RuntimeError(kExitRead);
    });
}

}  // namespace zormodel

namespace zormodel {

bool read_object_meshes(const std::string& path, std::vector<ObjMesh>& meshes) {
    CMWZORFile file(absolute_path(path).c_str(), 0, 1, 0);
    g_objMeshes = &meshes;
    bool ok = true;
    unsigned int type = 0;
    while (ok && file.ReadType(&type)) {
        Report unused;
        if (type == ZOR_RECORD_MESH)
            ok = read_mesh(file, unused);
        else if (type != ZOR_RECORD_CONTAINER)
            file.ReadDummy();
    }
    g_objMeshes = nullptr;
    return ok;
}

}  // namespace zormodel
