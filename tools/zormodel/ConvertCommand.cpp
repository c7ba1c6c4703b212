// zormodel convert IN OUT: meshes (STL, object-file meshes) to OBJ, binary STL
// or PLY, and profiles (native, foreign, DXF layers) to SVG or native profile
// files, chosen by OUT's extension.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "Commands.h"
#include "Detect.h"
#include "ForeignProfiles.h"
#include "Info.h"
#include "ObjWriter.h"
#include "ProfileSvg.h"
#include "Report.h"
#include "ZORModelIo.h"
#include "dxf/DxfParse.h"

namespace zormodel {

namespace {

std::string extension_of(const std::string& path) {
    const std::size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || path.find('/', dot) != std::string::npos) return "";
    std::string ext = path.substr(dot + 1);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

std::vector<ObjMesh> stl_meshes(const std::string& path) {
    unsigned int numPoints = 0, numVectors = 0, numFaces = 0;
    double *points = nullptr, *vectors = nullptr;
    unsigned int* faces = nullptr;
    std::string name = path;
    const int ok = StlFile(name.data(), &numPoints, &points, &numVectors, &vectors, &numFaces, &faces, 1, 1);
    std::vector<ObjMesh> meshes;
    if (ok == 1) {
        ObjMesh m;
        m.name = path.substr(path.find_last_of('/') + 1);
        m.positions.assign(points, points + 3 * static_cast<std::size_t>(numPoints));
        for (unsigned int i = 0; i < numFaces; ++i)
            m.triangles.insert(m.triangles.end(), {faces[4 * i], faces[4 * i + 1], faces[4 * i + 2]});
        meshes.push_back(std::move(m));
    }
    std::free(points);
    std::free(vectors);
    std::free(faces);
    if (ok != 1) {
        std::fprintf(stderr, "zormodel: %s: the STL read failed (see above)\n", path.c_str());
        throw CLI::RuntimeError(kExitRead);
    }
    return meshes;
}

std::unique_ptr<CMWZORSegmentArray> read_profile_file(const std::string& path, const Detection& d) {
    std::unique_ptr<CMWZORSegmentArray> list;
    bool ok = false;
    if (d.kind == FileKind::Extrusion) {
        auto p = std::make_unique<CMWZORExtrude>();
        ok = p->ResadFile(path.c_str(), 1);
        list = std::move(p);
    } else if (d.kind == FileKind::Sweep) {
        auto p = std::make_unique<CMWZORSweep>();
        ok = p->ResadFile(path.c_str(), 1);
        list = std::move(p);
    } else {
        std::string kind, error;
        list = read_foreign_profile(path, "", 1, 1, &kind, &error);
        ok = list != nullptr;
    }
    if (!ok) {
        std::fprintf(stderr, "zormodel: %s: the profile could not be read\n", path.c_str());
        throw CLI::RuntimeError(kExitRead);
    }
    return list;
}

// Writes list as a native file of its own kind (an extrusion keeps its Z range).
bool write_native(CMWZORSegmentArray& list, const std::string& out) {
    if (auto* e = dynamic_cast<CMWZORExtrude*>(&list)) {
        double zMin = 0, zMax = 0;
        e->GetZValues(&zMin, &zMax);
        return e->WriteFile(out.c_str(), zMin, zMax);
    }
    return static_cast<CMWZORSweep&>(list).WriteFile(out.c_str());
}

[[noreturn]] void refuse(const std::string& in, const Detection& d, const std::string& ext, const char* outputs) {
    std::fprintf(stderr, "zormodel: %s: %s converts to %s, not .%s\n", in.c_str(), describe(d).c_str(), outputs,
                 ext.c_str());
    throw CLI::RuntimeError(kExitUsage);
}

}  // namespace

void add_convert_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("convert", "Convert a mesh to OBJ, STL or PLY, a profile to SVG, .ext or .swp");
    static std::string in, out;
    cmd->add_option("IN", in, "Mesh (STL, object file) or profile (native, foreign, DXF)")->required();
    cmd->add_option("OUT", out, "Output file; its extension picks the format")->required();
    cmd->callback([] {
        const Detection d =
            require_kind(in,
                         {FileKind::StlAscii, FileKind::StlBinary, FileKind::ObjectFile, FileKind::Extrusion,
                          FileKind::Sweep, FileKind::ForeignProfile, FileKind::Dxf},
                         "a mesh or a profile");
        const std::string ext = extension_of(out);
        const bool mesh =
            d.kind == FileKind::StlAscii || d.kind == FileKind::StlBinary || d.kind == FileKind::ObjectFile;
        if (mesh) {
            if (ext != "obj" && ext != "stl" && ext != "ply") refuse(in, d, ext, ".obj, .stl or .ply");
            std::vector<ObjMesh> meshes;
            if (d.kind == FileKind::ObjectFile) {
                if (!read_object_meshes(in, meshes)) {
                    std::fprintf(stderr, "zormodel: %s: a mesh record could not be read\n", in.c_str());
                    throw CLI::RuntimeError(kExitRead);
                }
            } else {
                meshes = stl_meshes(in);
            }
            std::size_t vertices = 0, triangles = 0;
            for (const ObjMesh& m : meshes) vertices += m.positions.size() / 3, triangles += m.triangles.size() / 3;
            if (triangles == 0) {
                std::fprintf(stderr, "zormodel: %s: no mesh to convert\n", in.c_str());
                throw CLI::RuntimeError(kExitRead);
            }
            const bool ok = ext == "obj"   ? write_obj(out, meshes)
                            : ext == "stl" ? write_binary_stl(out, meshes)
                                           : write_ply(out, meshes);
            if (!ok) fail_unwritable(out);
            std::fprintf(out == "-" ? stderr : stdout, "wrote %s  meshes=%zu  vertices=%zu  triangles=%zu\n",
                         out.c_str(), meshes.size(), vertices, triangles);
            return;
        }
        if (d.kind == FileKind::Dxf) {
            // One native file per layer, as the dxf subcommand writes them.
            if (ext != "ext" && ext != "swp") refuse(in, d, ext, ".ext or .swp (or `zormodel dxf --svg`)");
            const std::string bytes = read_whole_file(in);
            warn_dxf_omissions(in, survey_dxf(bytes));
            warn_unwritten_contours(in, bytes);
            zor::DxfDrawing drawing;
            zor::parse_dxf(bytes, drawing);
            CString* names = ReadDxf(in.c_str(), out.c_str(), 1, 0, ext == "swp");
            if (names == nullptr || drawing.layers.empty()) {
                std::fprintf(stderr, "zormodel: %s: no LINE or ARC names a layer: nothing written\n", in.c_str());
                Delete_Names(names, 0);
                throw CLI::RuntimeError(kExitRead);
            }
            for (std::size_t i = 0; i < drawing.layers.size(); ++i)
                std::printf("wrote %s  layer=%s\n", names[i].GetString(),
                            json_quote(drawing.layers[i]->m_name.GetString()).c_str());
            Delete_Names(names, 0);
            return;
        }
        auto list = read_profile_file(in, d);
        const bool extrusion = dynamic_cast<CMWZORExtrude*>(list.get()) != nullptr;
        if (ext != "svg" && ext != (extrusion ? "ext" : "swp"))
            refuse(in, d, ext, extrusion ? ".svg or .ext" : ".svg or .swp");
        bool ok;
        if (ext == "svg") {
            const std::string title = in.substr(in.find_last_of('/') + 1);
            ok = write_profile_svg(*list, out, title);
        } else {
            ok = write_native(*list, out);
        }
        if (!ok) fail_unwritable(out);
        std::fprintf(out == "-" ? stderr : stdout, "wrote %s  segments=%lld\n", out.c_str(),
                     static_cast<long long>(list->m_segments.GetSize()));
    });
}

}  // namespace zormodel
