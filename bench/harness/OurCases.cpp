// Our readers as a host uses them, one case per benchmark input.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Cases.h"
#include "MeshRecordRead.h"
#include "ZORModelIo.h"
#include "dxf/DxfParse.h"

namespace {

// Mesh records through ReadType and ReadMesh, everything else skipped.
// Returns the triangles read.
long long read_object_file(const char* path) {
    long long meshes = 0;
    const long long corners = zorbench::read_mesh_records(path, &meshes);
    return corners < 0 ? -1 : corners / 3;
}
ZORBENCH_CASE("objectfile", read_object_file);

// A native extrusion file into a list. Returns the segments read.
long long read_extrusion(const char* path) {
    CMWZORExtrude profile;
    if (!profile.ResadFile(path, 1)) return -1;
    return profile.m_segments.GetSize();
}
ZORBENCH_CASE("extrusion", read_extrusion);

// A native profile read, then every arc stepped at the file's tolerance, as a
// host draws it. Returns the points stepped.
long long step_arcs(const char* path) {
    CMWZORExtrude profile;
    if (!profile.ResadFile(path, 1)) return -1;
    long long points = 0;
    double x, y, z;
    m_IOenumType type;
    profile.SetStart();
    while (profile.GetType(&type)) {
        if (type == IO_CLW || type == IO_CCLW) {
            const int n = profile.GetArcStep(&x, &y, &z, 0);
            for (int s = 1; s <= n; ++s) profile.GetArcStep(&x, &y, &z, s);
            points += n;
        }
        if (profile.GetNext() == nullptr) break;
    }
    return points;
}
ZORBENCH_CASE("arcsteps", step_arcs);

// The tool-library walk: load the document, take tokens until the empty one.
// Returns the tokens.
long long walk_tool_list(const char* path) {
    std::vector<char> name(path, path + std::strlen(path) + 1);
    int answer = 0;
    API_IsXml(name.data(), &answer);
    if (answer != 1) return -1;
    long long tokens = 0;
    while (*API_ReadList() != '\0') ++tokens;
    API_ReleaseXml(true);
    API_ResetXmlDoc();
    return tokens;
}
ZORBENCH_CASE("toollist", walk_tool_list);

// What a host calls: read, chain and write one profile file per layer into a
// fresh folder, removed at exit, after the timing. Returns the files written.
struct OutputFolder {
    char path[32] = "/tmp/zorbench-dxf-XXXXXX";
    bool made = mkdtemp(path) != nullptr;
    ~OutputFolder() {
        if (made) std::filesystem::remove_all(path);
    }
};

long long read_dxf(const char* path) {
    static OutputFolder folder;
    if (!folder.made) return -1;
    CString* names = ReadDxf(path, (std::string(folder.path) + "/profile.ext").c_str(), 1, 0, false);
    long long written = -1;
    if (names != nullptr)
        for (written = 0; !names[written].IsEmpty();) ++written;
    Delete_Names(names, 0);
    return written;
}
ZORBENCH_CASE("dxf", read_dxf);

// What the peers do: load, parse and chain every layer, nothing written.
// Returns the segments walked.
long long chain_dxf(const char* path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    const std::string bytes = text.str();
    zor::DxfDrawing drawing;
    if (!zor::parse_dxf(bytes, drawing)) return -1;
    long long walked = 0;
    for (const auto& layer : drawing.layers) {
        zor::LayerContours contours(*layer);
        walked += contours.result().walked;
    }
    return walked;
}
ZORBENCH_CASE("dxf-chain", chain_dxf);

}  // namespace
