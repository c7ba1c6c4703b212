// zormodel objects FILE: walks an object file with ReadType and the record
// readers and prints every record.
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Commands.h"
#include "ProfileSvg.h"
#include "Report.h"
#include "ZORModelIo.h"

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
    };
    return kinds;
}

}  // namespace

void add_objects_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("objects", "Print every record of an object file");
    static std::string path, units = "mm";
    static bool matrixAsRead = false, json = false;
    cmd->add_option("FILE", path, "Object file")->required();
    cmd->add_option("--units", units, "Unit to convert lengths to")->check(CLI::IsMember({"mm", "in"}));
    cmd->add_flag("--matrix-as-read", matrixAsRead, "Keep matrices as stored instead of converting them");
    cmd->add_flag("--json", json, "Print the records as a JSON array");
    cmd->callback([] {
        if (!readable_file(path)) throw CLI::RuntimeError(fail_unreadable(path));
        CMWZORFile file(path.c_str(), 0, static_cast<unsigned int>(unit_code(units)), matrixAsRead ? 1 : 0);
        std::vector<Report> records;
        bool failed = false;
        unsigned int type = 0;
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
        }
        if (json) {
            Report document("objectFile");
            document.text("file", path).integer("version", file.m_version).list("records", std::move(records));
            document.printJson(stdout);
            std::fputs("\n", stdout);
        } else {
            std::printf("object file %s, version %u.%02u\n", path.c_str(), file.m_version / 100,
                        file.m_version % 100);
            for (const Report& record : records) record.printText(stdout, 2);
        }
        if (failed) throw CLI::RuntimeError(1);
    });
}

}  // namespace zormodel
