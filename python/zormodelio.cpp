// zormodelio: the readers of ZORModelIo for Python, arrays as numpy arrays.
//
// Every function keeps the GIL for its whole call: the module keeps
// module-wide reader state (one read at a time in the process), and the GIL
// is what serialises Python threads onto it.
#include "ZORModelIo.h"

#include <fcntl.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include "dxf/DxfParse.h"
#include "mesh/StlReader.h"
#include "objectfile/LineReader.h"
#include "objectfile/ObjectFileState.h"
#include "platform/crtpath.h"
#include "profile/ForeignProfileSource.h"
#include "xml/ToolList.h"
#include "xml/XmlDocument.h"

namespace py = pybind11;

namespace {

// --- arguments and errors -------------------------------------------------

// str, bytes or os.PathLike to the 8-bit path the readers take.
std::string fs_path(const py::handle& path) {
    py::object fs = py::reinterpret_steal<py::object>(PyOS_FSPath(path.ptr()));
    if (!fs) throw py::error_already_set();
    if (py::isinstance<py::bytes>(fs)) return fs.cast<std::string>();
    py::object encoded = py::reinterpret_steal<py::object>(PyUnicode_EncodeFSDefault(fs.ptr()));
    if (!encoded) throw py::error_already_set();
    return encoded.cast<std::string>();
}

[[noreturn]] void raise_errno(int error, const std::string& path) {
    errno = error;
    // Picks the OSError subclass by errno (FileNotFoundError, IsADirectoryError, ...).
    PyErr_SetFromErrnoWithFilename(PyExc_OSError, path.c_str());
    throw py::error_already_set();
}

// The readers answer a missing file like a wrong one; ask the system first so
// each gets its own exception.
void require_readable(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) raise_errno(errno, path);
    if (S_ISDIR(info.st_mode)) raise_errno(EISDIR, path);
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) raise_errno(errno, path);
    std::fclose(f);
}

[[noreturn]] void raise_value(const std::string& path, const std::string& reason) {
    throw py::value_error(path + ": " + reason);
}

[[noreturn]] void raise_memory(const std::string& path, const std::string& reason) {
    PyErr_SetString(PyExc_MemoryError, (path + ": " + reason).c_str());
    throw py::error_already_set();
}

int unit_code(const std::string& unit, const char* argument) {
    if (unit == "mm") return 1;
    if (unit == "in") return 2;
    throw py::value_error(std::string(argument) + " must be \"mm\" or \"in\", not \"" + unit + "\"");
}

// Names and tokens come from the file's bytes, which need not be UTF-8:
// undecodable bytes survive as surrogates, as os.fsdecode keeps them.
py::str text(const std::string& bytes) {
    py::object s = py::reinterpret_steal<py::object>(
        PyUnicode_DecodeUTF8(bytes.data(), static_cast<py::ssize_t>(bytes.size()), "surrogateescape"));
    if (!s) throw py::error_already_set();
    return s;
}

std::string unit_name(int unit) { return unit == 1 ? "mm" : unit == 2 ? "in" : "unit " + std::to_string(unit); }

std::string load_bytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

// A numpy array over a buffer from malloc, which it frees with free when the
// last array using it goes. shape and strides are in elements of T.
template <class T>
py::array_t<T> adopt(T* data, std::vector<py::ssize_t> shape, std::vector<py::ssize_t> strides,
                     const py::object& owner) {
    for (auto& s : strides) s *= static_cast<py::ssize_t>(sizeof(T));
    if (data == nullptr) return py::array_t<T>(shape);  // an empty result may come without a buffer
    return py::array_t<T>(std::move(shape), std::move(strides), data, owner);
}

// None for a null buffer: a capsule cannot hold one, and there is nothing to free.
py::object free_on_release(void* data) {
    if (data == nullptr) return py::none();
    return py::capsule(data, [](void* p) { std::free(p); });
}

// --- STL ------------------------------------------------------------------

py::object read_stl(const py::object& pathArg, const std::string& units, const std::string& fileUnits) {
    const std::string path = fs_path(pathArg);
    const int wanted = unit_code(units, "units"), given = unit_code(fileUnits, "file_units");
    require_readable(path);
    const int type = zor::stl_file_type_of(path.c_str());
    zor::stl_reader_state().error[0] = '\0';  // the reader never clears it

    unsigned int numPoints = 0, numVectors = 0, numFaces = 0;
    double *points = nullptr, *vectors = nullptr;
    unsigned int* faces = nullptr;
    std::string name = path;
    if (StlFile(name.data(), &numPoints, &points, &numVectors, &vectors, &numFaces, &faces, wanted, given) != 1) {
        const std::string reason = zor::stl_reader_state().error;
        // A failing allocation inside the index ends with this text.
        if (reason == "Error adding the facet") raise_memory(path, "the STL index ran out of memory");
        raise_value(path, "not a readable STL file" + (reason.empty() ? std::string() : " (" + reason + ")"));
    }
    // Capsules first, so every buffer is freed even if making an array throws.
    py::object pointsOwner = free_on_release(points), vectorsOwner = free_on_release(vectors),
               facesOwner = free_on_release(faces);
    const auto n = static_cast<py::ssize_t>(numPoints), m = static_cast<py::ssize_t>(numVectors),
               f = static_cast<py::ssize_t>(numFaces);
    py::module_ types = py::module_::import("types");
    py::dict mesh;
    mesh["points"] = adopt(points, {n, 3}, {3, 1}, pointsOwner);
    mesh["normals"] = adopt(vectors, {m, 3}, {3, 1}, vectorsOwner);
    // One buffer of four per face: the vertex columns and the normal column
    // are two strided views of it, not copies.
    mesh["faces"] = adopt(faces, {f, 3}, {4, 1}, facesOwner);
    mesh["face_normals"] = adopt(f == 0 ? nullptr : faces + 3, {f}, {4}, facesOwner);
    mesh["form"] = type == 1 ? "ascii" : "binary";
    return types.attr("SimpleNamespace")(**mesh);
}

// --- profiles -------------------------------------------------------------

py::tuple xyz(const CMWZORPoint* p) {
    if (p == nullptr) return py::make_tuple(0.0, 0.0, 0.0);
    return py::make_tuple(p->x, p->y, p->z);
}

class Profile {
public:
    Profile(std::unique_ptr<CMWZORSegmentArray> list, std::string source)
        : m_list(std::move(list)), m_source(std::move(source)) {}

    bool extrusion() const { return m_list->IsKindOf(RUNTIME_CLASS(CMWZORExtrude)); }
    std::string kind() const { return extrusion() ? "extrusion" : "sweep"; }
    const std::string& source() const { return m_source; }
    std::string unit() const { return unit_name(m_list->GetUnit()); }
    double tolerance() const { return m_list->m_tolerance; }
    py::object z() const {
        if (!extrusion()) return py::none();
        double zMin = 0, zMax = 0;
        static_cast<CMWZORExtrude&>(*m_list).GetZValues(&zMin, &zMax);
        return py::make_tuple(zMin, zMax);
    }

    py::list segments() const {
        py::list out;
        for (long long i = 0; i < m_list->m_segments.GetSize(); ++i) {
            const CMWZORSegment* s = m_list->m_segments[i];
            if (s == nullptr) continue;  // the empty last slot of some closed outlines
            const CMWZORPointArray& p = s->m_points;
            if (s->m_type == IO_LINE) {
                out.append(py::make_tuple("line", xyz(p.GetSize() > 0 ? p[0] : nullptr), py::none()));
            } else {
                const char* type = s->m_type == IO_CLW ? "clw" : s->m_type == IO_CCLW ? "cclw" : "unknown";
                out.append(
                    py::make_tuple(type, xyz(p.GetSize() > 2 ? p[2] : nullptr), xyz(p.GetSize() > 0 ? p[0] : nullptr)));
            }
        }
        return out;
    }

    py::array_t<double> polyline() {
        std::vector<double> points;
        auto add = [&](double x, double y, double z) { points.insert(points.end(), {x, y, z}); };
        CMWZORSegmentArray& list = *m_list;
        m_IOenumType type;
        list.SetStart();
        while (list.GetType(&type)) {
            double x = 0, y = 0, z = 0;
            if (type == IO_LINE) {
                if (list.GetLine(&x, &y, &z)) add(x, y, z);
            } else {
                double cx, cy, cz;
                m_IOenumType arcType;
                const bool arc = list.GetArc(&cx, &cy, &cz, &x, &y, &z, &arcType);
                // An arc with nothing before it cannot be stepped: its end point stands for it.
                const int n = list.GetArcStep(&cx, &cy, &cz, 0);
                if (n > 0) {
                    for (int i = 1; i <= n; ++i)
                        if (list.GetArcStep(&x, &y, &z, i) == i) add(x, y, z);
                } else if (arc) {
                    add(x, y, z);
                }
            }
            if (list.GetNext() == nullptr) break;
        }
        const auto rows = static_cast<py::ssize_t>(points.size() / 3);
        py::array_t<double> out({rows, py::ssize_t{3}});
        if (!points.empty()) std::memcpy(out.mutable_data(), points.data(), points.size() * sizeof(double));
        return out;
    }

private:
    std::unique_ptr<CMWZORSegmentArray> m_list;
    std::string m_source;
};

std::string first_line(const std::string& path) {
    std::FILE* f = std::fopen(path.c_str(), "r");
    if (f == nullptr) return "";
    char buffer[100] = {};
    const bool got = std::fgets(buffer, sizeof buffer, f) != nullptr;
    std::fclose(f);
    return got ? CString(buffer).Trim().MakeUpper().GetString() : "";
}

std::unique_ptr<CMWZORSegmentArray> native_list(bool extrusion, const std::string& path, unsigned int unit) {
    std::unique_ptr<CMWZORSegmentArray> list;
    if (extrusion) {
        auto e = std::make_unique<CMWZORExtrude>();
        if (!e->ResadFile(path.c_str(), unit)) return nullptr;
        list = std::move(e);
    } else {
        auto s = std::make_unique<CMWZORSweep>();
        if (!s->ResadFile(path.c_str(), unit)) return nullptr;
        list = std::move(s);
    }
    return list;
}

// The unit a native file is written in, seen from the conversion the reader
// picks when asked for the other one; 0 when the file names neither.
unsigned int native_file_unit(bool extrusion, const std::string& path) {
    auto probe = native_list(extrusion, path, 1);
    if (probe != nullptr && probe->m_scale == 25.4) return 2;
    probe = native_list(extrusion, path, 2);
    return probe != nullptr && probe->m_scale != 1.0 ? 1 : 0;
}

Profile read_profile(const py::object& pathArg, const py::object& sourceArg, const py::object& unitsArg,
                     const py::object& fileUnitsArg) {
    const std::string path = fs_path(pathArg);
    std::string source = sourceArg.is_none() ? "" : sourceArg.cast<std::string>();
    const int units = unitsArg.is_none() ? 0 : unit_code(unitsArg.cast<std::string>(), "units");
    const int fileUnit = fileUnitsArg.is_none() ? 1 : unit_code(fileUnitsArg.cast<std::string>(), "file_units");
    require_readable(path);

    const std::string head = first_line(path);
    if (source.empty() || source == "native") {
        const bool extrusion = head.rfind("KOLP EXTRUDE FILE", 0) == 0;
        if (extrusion || head.rfind("KOLP SWEEP FILE", 0) == 0) {
            const unsigned int unit = units != 0 ? static_cast<unsigned int>(units) : native_file_unit(extrusion, path);
            auto list = native_list(extrusion, path, unit);
            if (list == nullptr) raise_value(path, "not a readable profile");
            return Profile(std::move(list), "native");
        }
        if (source == "native") raise_value(path, "not a native profile file (no KOLP EXTRUDE or SWEEP line)");
        source = zor::detect_profile_source(path.c_str());
        if (source.empty()) raise_value(path, "not a profile file of any known source");
    }
    // Foreign files carry no unit: their numbers are in file_units.
    const auto wanted = static_cast<unsigned int>(units != 0 ? units : fileUnit);
    const auto given = static_cast<unsigned int>(fileUnit);
    const CString file(path.c_str());
    std::unique_ptr<CMWZORSegmentArray> list;
    bool read = false;
    if (source == "vericut" || source == "machineworks-ext" || source == "sirius") {
        auto e = std::make_unique<CMWZORExtrude>();
        read = source == "vericut"            ? e->ReadVericut(file, wanted, given)
               : source == "machineworks-ext" ? e->ReadMachineWorksExt(file)
                                              : e->ReadSirius(file, wanted, given);
        list = std::move(e);
    } else if (source == "vericut-sor" || source == "machineworks-rot") {
        auto s = std::make_unique<CMWZORSweep>();
        read = source == "vericut-sor" ? s->ReadVericut(file, wanted, given) : s->ReadMachineWorksRot(file);
        list = std::move(s);
    } else {
        throw py::value_error("unknown profile source \"" + source +
                              "\" (native, vericut, vericut-sor, machineworks-ext, machineworks-rot, sirius)");
    }
    // A foreign reader fails only on a file it cannot open; one of another kind reads as no segments.
    if (!read || list->m_segments.GetSize() == 0) raise_value(path, "not a readable " + source + " profile");
    return Profile(std::move(list), source);
}

// --- DXF ------------------------------------------------------------------

struct DxfNames {
    CString* names = nullptr;
    ~DxfNames() { Delete_Names(names, 0); }
};

py::list read_dxf(const py::object& pathArg, const py::object& outArg, bool sweep, const std::string& units) {
    const std::string path = fs_path(pathArg), out = fs_path(outArg);
    const auto unit = static_cast<unsigned int>(unit_code(units, "units"));
    if (out.size() < 4) throw py::value_error("out_path must end in a four-character extension such as \".ext\"");
    require_readable(path);
    // The reader does not report a file it could not write: check the folder first.
    const std::string::size_type slash = out.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : out.substr(0, slash);
    if (::access(folder.c_str(), W_OK | X_OK) != 0) raise_errno(errno, folder);
    DxfNames result;
    result.names = ReadDxf(path.c_str(), out.c_str(), unit, 0, sweep);
    if (result.names == nullptr) raise_value(path, "not a DXF drawing (no ENTITIES section)");
    // The result has no count: a drawing without layers gives one name that is
    // no path, and no terminator. The layer count settles it.
    zor::DxfDrawing drawing;
    zor::parse_dxf(load_bytes(path), drawing);
    py::list written;
    for (size_t i = 0; i < drawing.layers.size(); ++i) {
        const CString& name = result.names[i];
        written.append(py::reinterpret_steal<py::object>(
            PyUnicode_DecodeFSDefaultAndSize(name.GetString(), static_cast<py::ssize_t>(name.GetLength()))));
    }
    return written;
}

py::list dxf_contours(const py::object& pathArg) {
    const std::string path = fs_path(pathArg);
    require_readable(path);
    zor::DxfDrawing drawing;
    if (!zor::parse_dxf(load_bytes(path), drawing)) raise_value(path, "not a DXF drawing (no ENTITIES section)");
    py::list layers;
    for (const auto& layer : drawing.layers) {
        zor::LayerContours contours(*layer);
        py::list list;
        for (const Segment_contour* c = contours.result().first; c != nullptr; c = c->next) {
            py::list members;
            const Segment_ord* s = c->startSegment;
            for (int k = 0; k < c->segmentCount && s != nullptr; ++k, s = s->nextInContour)
                members.append(py::make_tuple(contours.position(s), s->sense == -1));
            py::dict contour;
            contour["closed"] = c->closed != 0;
            contour["segments"] = c->segmentCount;
            contour["written"] = c->startSegment == contours.first();
            contour["entities"] = members;
            list.append(contour);
        }
        py::dict entry;
        entry["layer"] = text(layer->m_name.GetString());
        entry["entities"] = layer->GetCount();
        entry["contours"] = list;
        layers.append(entry);
    }
    return layers;
}

// --- tool libraries -------------------------------------------------------

// Holds the library's one document for a walk and lets it go afterwards,
// also when the walk throws.
class ToolWalk {
public:
    explicit ToolWalk(const std::string& path) {
        require_readable(path);
        zor::XmlDom check;
        if (!check.load(path.c_str())) {
            std::string reason = check.parse_error_reason();
            while (!reason.empty() && (reason.back() == '\n' || reason.back() == '\r')) reason.pop_back();
            raise_value(path, "not a well-formed XML document" + (reason.empty() ? "" : ": " + reason));
        }
        std::string name = path;
        int answer = 0;
        API_IsXml(name.data(), &answer);
        // It parsed above: only memory can fail it now.
        if (answer != 1) raise_memory(path, "out of memory loading the tool library");
        m_path = path;
        // A document whose walk comes back to elements it left never ends; a
        // walk that ends gives a few tokens per node and attribute at most.
        m_limit = 4 * zor::g_xmlDocument->item_count() + 16;
    }
    ~ToolWalk() {
        API_ReleaseXml(true);
        API_ResetXmlDoc();
        // The library keeps every document it loaded until it is unloaded, so
        // that nodes a host still holds never dangle. This copy of the library
        // is the module's own (the static core) and no node outlives the
        // walk, so they go now: otherwise every read would keep its document.
        zor::reset_xml_document_state();
    }
    ToolWalk(const ToolWalk&) = delete;
    ToolWalk& operator=(const ToolWalk&) = delete;

    // The next token ("" at the end) and what it is.
    std::string next(zor::ListToken* info) {
        if (m_count++ == m_limit) raise_value(m_path, "the tool list's walk does not end");
        try {
            return zor::read_list_token(info);
        } catch (const _com_error& e) {
            raise_value(m_path, std::string("the tool list's walk failed: ") + e.ErrorMessage());
        }
    }

private:
    std::string m_path;
    std::size_t m_limit = 0, m_count = 0;
};

py::list tool_tokens(const py::object& pathArg) {
    ToolWalk walk(fs_path(pathArg));
    py::list tokens;
    for (std::string token = walk.next(nullptr); !token.empty(); token = walk.next(nullptr)) tokens.append(text(token));
    return tokens;
}

bool is_tool(const zor::XmlNode& node) {
    return node.is_element() && CString(node.base_name().c_str()).MakeUpper() == "TOOL";
}

// Each TOOL element the walk names, as {"name", "attributes", "value"?,
// "children"} with the children the walk reports inside it, nested alike.
py::list read_tool_library(const py::object& pathArg) {
    ToolWalk walk(fs_path(pathArg));
    py::list tools;
    std::unordered_map<const void*, py::object> entries;  // None for nodes outside any tool
    auto make = [](const zor::XmlNode& node) {
        py::dict entry;
        entry["name"] = text(node.base_name());
        entry["attributes"] = py::dict();
        entry["children"] = py::list();
        return entry;
    };
    // The entry of node, made with those of its ancestors up to the tool.
    auto entry_of = [&](const zor::XmlNode& node) -> py::object {
        std::vector<zor::XmlNode> chain;
        py::object base = py::none();
        bool startsTool = false;
        for (zor::XmlNode n = node; n && !n.is_document(); n = n.parent()) {
            auto found = entries.find(n.key());
            if (found != entries.end()) {
                base = found->second;
                break;
            }
            chain.push_back(n);
            if (is_tool(n)) {
                startsTool = true;
                break;
            }
        }
        for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
            py::object entry = py::none();
            if (startsTool) {
                entry = make(*it);
                tools.append(entry);
                startsTool = false;
            } else if (!base.is_none()) {
                entry = make(*it);
                base["children"].cast<py::list>().append(entry);
            }
            entries[it->key()] = entry;
            base = entry;
        }
        return base;
    };
    std::string attribute;
    zor::ListToken info;
    for (std::string token = walk.next(&info); !token.empty(); token = walk.next(&info)) {
        if (info.leaves && !token.empty()) token.pop_back();  // the "!" mark is no part of the text
        if (info.kind == zor::TokenKind::Element) {
            entry_of(info.node);
        } else if (info.kind == zor::TokenKind::AttributeName) {
            attribute = token;
        } else if (info.kind == zor::TokenKind::AttributeValue || info.kind == zor::TokenKind::Value) {
            py::object entry = entry_of(info.node);
            if (entry.is_none()) continue;
            if (info.kind == zor::TokenKind::Value)
                entry["value"] = text(token);
            else
                entry["attributes"][text(attribute)] = text(token);
        }
    }
    return tools;
}

// --- object files ---------------------------------------------------------

py::str descramble(const py::object& pathArg) {
    const std::string path = fs_path(pathArg);
    require_readable(path);
    std::FILE* stream = zor::open_file(path.c_str(), "r");
    if (stream == nullptr) raise_errno(EIO, path);
    zor::object_file_state().firstLinePending = true;
    zor::object_file_state().fileIsPlain = false;
    std::string plain;
    CString line;
    while (zor::read_object_line(stream, line)) {  // closes the stream at the end
        plain += line.GetString();
        plain += '\n';
    }
    return text(plain);  // scrambled lines may decode to any byte
}

// Object files: every record as a dict, then the collision pairs.

// The outputs every object record shares.
struct Shared {
    double vector[4] = {0, 0, 0, 0};
    CString texts[6];
    double matrix[4][4] = {};
    CMWZORPointArray list1, list2;
    float quad[4] = {0, 0, 0, 0};
    CString name, tailText, attachName, attachKey;
    unsigned int attachIndex = 0;

    ~Shared() {
        for (CMWZORPointArray* list : {&list1, &list2})
            for (long long i = 0; i < list->GetSize(); ++i) delete list->GetAt(i);
    }

    py::dict record(const char* kind) const {
        py::dict r;
        r["kind"] = kind;
        r["name"] = text(name.GetString());
        py::array_t<double> m({4, 4});
        std::memcpy(m.mutable_data(), matrix, sizeof matrix);
        r["matrix"] = m;
        r["vector"] = py::make_tuple(vector[0], vector[1], vector[2], vector[3]);
        r["colour"] = py::make_tuple(quad[0], quad[1], quad[2], quad[3]);
        r["attachment"] = py::make_tuple(text(attachName.GetString()), text(attachKey.GetString()), attachIndex);
        return r;
    }
};

py::dict dimensions(std::initializer_list<std::pair<const char*, double>> values) {
    py::dict d;
    for (const auto& v : values) d[v.first] = v.second;
    return d;
}

// Reads the collision section after the last record: ReadType ran to the end
// of the file looking for another record, so the section is read again from
// where that search began, past the "}" lines that close containers.
class SceneFile : public CMWZORFile {
public:
    using CMWZORFile::CMWZORFile;

    // The pairs, or None when there is no section; false when it does not read.
    bool ReadTrailingCollisions(const std::string& path, long start, py::object* pairs) {
        *pairs = py::none();
        if (!SeekCollisionSection(path.c_str(), start)) return true;
        void** first = nullptr;
        void** second = nullptr;
        unsigned int* codes = nullptr;
        double* values = nullptr;
        unsigned int count = 0;
        const bool ok = ReadCollision(&first, &second, &codes, &values, &count);
        py::list list;
        // The arrays are zeroed: after a failure the pairs not read have no names.
        for (unsigned int i = 0; ok && first != nullptr && i < count && first[i] != nullptr; ++i)
            list.append(py::make_tuple(text(static_cast<const char*>(first[i])),
                                       text(second[i] != nullptr ? static_cast<const char*>(second[i]) : ""), codes[i],
                                       values[i]));
        FreeCollision(first, second, codes, values, first != nullptr ? count : 0);
        *pairs = list;
        return ok;
    }
};

// A new[] array of four doubles per entry as an N x 3 view (the fourth is 0).
py::array_t<double> xyz_view(double (*data)[4], unsigned int count) {
    py::object owner = py::none();
    if (data != nullptr) owner = py::capsule(data, [](void* p) { delete[] static_cast<double(*)[4]>(p); });
    return adopt(data == nullptr ? nullptr : &data[0][0], {static_cast<py::ssize_t>(count), 3}, {4, 1}, owner);
}

py::list segment_list(CMWZORSegmentPtrArray& segments) {
    py::list out;
    for (long long i = 0; i < segments.GetSize(); ++i) {
        const CMWZORSegment* s = segments[i];
        if (s == nullptr) continue;
        const CMWZORPointArray& p = s->m_points;
        if (s->m_type == IO_LINE)
            out.append(py::make_tuple("line", xyz(p.GetSize() > 0 ? p[0] : nullptr), py::none()));
        else
            out.append(py::make_tuple(s->m_type == IO_CLW    ? "clw"
                                      : s->m_type == IO_CCLW ? "cclw"
                                                             : "unknown",
                                      xyz(p.GetSize() > 2 ? p[2] : nullptr), xyz(p.GetSize() > 0 ? p[0] : nullptr)));
    }
    return out;
}

bool known_record(unsigned int type) {
    for (unsigned int known : {ZOR_RECORD_CUBE, ZOR_RECORD_CYLINDER, ZOR_RECORD_CONE, ZOR_RECORD_SPHERE,
                               ZOR_RECORD_TORUS, ZOR_RECORD_FILE, ZOR_RECORD_EXTRUSION, ZOR_RECORD_REVOLUTION,
                               ZOR_RECORD_MESH, ZOR_RECORD_PART, ZOR_RECORD_TOOL, ZOR_RECORD_ENGINE})
        if (type == known) return true;
    return false;
}

// One record of the type ReadType found, or None when its reader fails.
py::object read_record(SceneFile& f, unsigned int type) {
    Shared g;
#define ZOR_SHARED_TAIL \
    g.matrix, &g.list1, &g.list2, g.quad, &g.name, &g.tailText, &g.attachName, &g.attachKey, &g.attachIndex
#define ZOR_SIX_TEXTS &g.texts[0], &g.texts[1], &g.texts[2], &g.texts[3], &g.texts[4], &g.texts[5]
    double d[3] = {0, 0, 0};
    switch (type) {
        case ZOR_RECORD_CUBE: {
            if (!f.ReadCube(&d[0], &d[1], &d[2], g.vector, ZOR_SIX_TEXTS, ZOR_SHARED_TAIL)) return py::none();
            py::dict r = g.record("cube");
            r["dimensions"] = dimensions({{"width", d[0]}, {"depth", d[1]}, {"height", d[2]}});
            return r;
        }
        case ZOR_RECORD_CYLINDER: {
            if (!f.ReadCylinder(&d[0], &d[1], &d[2], g.vector, ZOR_SIX_TEXTS, ZOR_SHARED_TAIL)) return py::none();
            py::dict r = g.record("cylinder");
            r["dimensions"] = dimensions({{"radius", d[0]}, {"height", d[1]}, {"top_radius", d[2]}});
            return r;
        }
        case ZOR_RECORD_CONE: {
            if (!f.ReadCone(&d[0], &d[1], g.vector, ZOR_SIX_TEXTS, ZOR_SHARED_TAIL)) return py::none();
            py::dict r = g.record("cone");
            r["dimensions"] = dimensions({{"radius", d[0]}, {"height", d[1]}});
            return r;
        }
        case ZOR_RECORD_SPHERE: {
            if (!f.ReadSphere(&d[0], g.vector, ZOR_SIX_TEXTS, ZOR_SHARED_TAIL)) return py::none();
            py::dict r = g.record("sphere");
            r["dimensions"] = dimensions({{"radius", d[0]}});
            return r;
        }
        case ZOR_RECORD_TORUS: {
            if (!f.ReadTorus(&d[0], &d[1], g.vector, ZOR_SIX_TEXTS, ZOR_SHARED_TAIL)) return py::none();
            py::dict r = g.record("torus");
            r["dimensions"] = dimensions({{"major_radius", d[0]}, {"minor_radius", d[1]}});
            return r;
        }
        case ZOR_RECORD_FILE: {
            unsigned int first = 0, flag = 0;
            CString reference, text2;
            if (!f.ReadObjectFile(&first, &reference, &text2, g.vector, &g.texts[0], &g.texts[1], &g.texts[2],
                                  ZOR_SHARED_TAIL, &flag))
                return py::none();
            py::dict r = g.record("file");
            r["file"] = text(reference.GetString());
            r["flag"] = flag;
            return r;
        }
        case ZOR_RECORD_EXTRUSION:
        case ZOR_RECORD_REVOLUTION: {
            const bool extrusion = type == ZOR_RECORD_EXTRUSION;
            unsigned int count = 0;
            CMWZORSegmentPtrArray segments;
            double direction[4] = {0, 0, 0, 0};
            double value = 0;
            const bool ok = extrusion
                                ? f.ReadExtrusion(g.vector, &count, &segments, &g.texts[0], &g.texts[1], &g.texts[2],
                                                  g.matrix, &g.list1, &g.list2, g.quad, direction, &value, &g.name,
                                                  &g.tailText, &g.attachName, &g.attachKey, &g.attachIndex)
                                : f.ReadRevolution(g.vector, &count, &segments, &g.texts[0], &g.texts[1], &g.texts[2],
                                                   g.matrix, &g.list1, &g.list2, g.quad, direction, &value, &g.name,
                                                   &g.tailText, &g.attachName, &g.attachKey, &g.attachIndex);
            struct Owned {  // the segments are ours, also after a failed read
                CMWZORSegmentPtrArray& s;
                ~Owned() {
                    for (long long i = 0; i < s.GetSize(); ++i) delete s[i];
                }
            } owned{segments};
            if (!ok) return py::none();
            py::dict r = g.record(extrusion ? "extrusion" : "revolution");
            r["dimensions"] = dimensions({{extrusion ? "length" : "angle", value}});
            r[extrusion ? "direction" : "axis"] = py::make_tuple(direction[0], direction[1], direction[2]);
            r["segments"] = segment_list(segments);
            return r;
        }
        case ZOR_RECORD_MESH: {
            unsigned int vertexCount = 0, cornerCount = 0;
            double(*vertices)[4] = nullptr;
            double(*corners)[4] = nullptr;
            const bool ok = f.ReadMesh(g.vector, &vertexCount, &vertices, &g.texts[0], &g.texts[1], &g.texts[2],
                                       &cornerCount, &corners, ZOR_SHARED_TAIL);
            // The arrays are ours after a failed read too: the views free them.
            py::array_t<double> v = xyz_view(vertices, ok ? vertexCount : 0);
            py::array_t<double> c = xyz_view(corners, ok ? cornerCount : 0);
            if (!ok) return py::none();
            py::dict r = g.record("mesh");
            r["dimensions"] = py::dict();
            r["vertices"] = v;
            r["corners"] = c;
            return r;
        }
        case ZOR_RECORD_PART:
        case ZOR_RECORD_TOOL: {
            const bool part = type == ZOR_RECORD_PART;
            const bool ok = part ? f.ReadPart(g.vector, &g.texts[0], &g.texts[1], &g.texts[2], ZOR_SHARED_TAIL)
                                 : f.ReadTool(g.vector, &g.texts[0], &g.texts[1], &g.texts[2], ZOR_SHARED_TAIL);
            if (!ok) return py::none();
            py::dict r = g.record(part ? "part" : "tool");
            r["dimensions"] = py::dict();
            return r;
        }
        case ZOR_RECORD_ENGINE: {
            CString name, key;
            unsigned int kind = 0, p4 = 0, flag = 0, p10 = 0, p13 = 0, p14 = 0, p17 = 0, p18 = 0, p21 = 0, p22 = 0,
                         p23 = 0, index = 0;
            double axis[3] = {0, 0, 0}, p20[4] = {0, 0, 0, 0};
            double p6to9[4] = {0, 0, 0, 0};  // adjacent: a unit conversion scales all four
            double p11 = 0, p12 = 0, p15 = 0, p16 = 0, p19 = 0;
            if (!f.ReadEngin(&name, &kind, axis, &p4, &flag, &p6to9[0], &p6to9[1], &p6to9[2], &p6to9[3], &p10, &p11,
                             &p12, &p13, &p14, &p15, &p16, &p17, &p18, &p19, p20, &p21, &p22, &p23, &key, &index))
                return py::none();
            py::dict r;
            r["kind"] = "engine";
            r["name"] = text(name.GetString());
            r["element"] = kind == 1 ? "axis" : kind == 2 ? "spindle" : std::to_string(kind);
            r["axis"] = py::make_tuple(axis[0], axis[1], axis[2]);
            r["direction_flag"] = flag;
            r["values"] = py::make_tuple(p6to9[0], p6to9[1], p6to9[2], p6to9[3]);
            if (kind == 2) r["spindle_vector"] = py::make_tuple(p20[0], p20[1], p20[2]);
            r["spindle_key"] = text(key.GetString());
            r["attachment_index"] = index;
            return r;
        }
        default:
            break;
    }
#undef ZOR_SHARED_TAIL
#undef ZOR_SIX_TEXTS
    return py::none();
}

// A file reference changes the working directory to the file's folder; the
// interpreter's stays where it was.
class KeepWorkingDirectory {
public:
    KeepWorkingDirectory() : m_fd(::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
    ~KeepWorkingDirectory() {
        if (m_fd >= 0) {
            if (::fchdir(m_fd) != 0) PyErr_WarnEx(PyExc_RuntimeWarning, "working directory not restored", 1);
            ::close(m_fd);
        }
    }
    KeepWorkingDirectory(const KeepWorkingDirectory&) = delete;
    KeepWorkingDirectory& operator=(const KeepWorkingDirectory&) = delete;

private:
    int m_fd;
};

py::object read_objects(const py::object& pathArg, const std::string& units, bool matrixAsRead) {
    std::string path = fs_path(pathArg);
    const auto unit = static_cast<unsigned int>(unit_code(units, "units"));
    require_readable(path);
    KeepWorkingDirectory keep;
    std::string absolute = path;
    if (absolute[0] != '/') {
        char cwd[4096];
        if (getcwd(cwd, sizeof cwd) != nullptr) absolute = std::string(cwd) + "/" + path;
    }
    SceneFile file(absolute.c_str(), 0, unit, matrixAsRead ? 1 : 0);
    if (file.m_stream == nullptr) raise_errno(EIO, path);
    py::list records;
    unsigned int type = 0;
    long lastStart = std::ftell(file.m_stream);
    while (file.ReadType(&type)) {
        if (type == ZOR_RECORD_CONTAINER) {
            py::dict r;
            r["kind"] = "container";
            records.append(r);
        } else if (!known_record(type)) {
            file.ReadDummy();
            py::dict r;
            r["kind"] = "skipped";
            r["code"] = type;
            records.append(r);
        } else {
            py::object record = read_record(file, type);
            if (record.is_none()) raise_value(path, "a record of type " + std::to_string(type) + " could not be read");
            records.append(record);
        }
        lastStart = file.m_stream != nullptr ? std::ftell(file.m_stream) : -1;
    }
    if (file.m_version == 0) raise_value(path, "not an object file (no version line)");
    py::object pairs = py::none();
    if (lastStart >= 0 && !file.ReadTrailingCollisions(absolute, lastStart, &pairs))
        raise_value(path, "the collision section could not be read");
    py::module_ types = py::module_::import("types");
    return types.attr("SimpleNamespace")(py::arg("version") = file.m_version / 100.0, py::arg("records") = records,
                                         py::arg("collisions") = pairs);
}

}  // namespace

PYBIND11_MODULE(zormodelio, m) {
    m.doc() =
        "Readers for the machining simulation's model files: STL, profiles, DXF drawings, tool libraries and "
        "object files, with arrays as numpy arrays.\n\n"
        "Every call holds the GIL until it returns: the library keeps module-wide reader state, so one read runs "
        "at a time in the process.\n"
        "Errors: FileNotFoundError (and the other OSError kinds) for a file that cannot be opened, ValueError "
        "naming the file and the reason for a file of the wrong kind, MemoryError when memory runs out.";

    m.def("read_stl", &read_stl, py::arg("path"), py::arg("units") = "mm", py::arg("file_units") = "mm",
          R"(Read an ASCII or binary STL file.

Returns a namespace with points (N x 3 float64, distinct vertices in order of
first appearance, converted from file_units to units), normals (M x 3 float64,
distinct facet normals), faces (F x 3 uint32, vertex indices), face_normals
(F uint32, normal indices) and form ("ascii" or "binary"). faces and
face_normals are views of one buffer handed over by the library.
units, file_units: "mm" or "in". Holds the GIL for the whole call.)");

    py::class_<Profile>(m, "Profile", "An extrusion or sweep profile: a chain of lines and arcs.")
        .def_property_readonly("kind", &Profile::kind, "\"extrusion\" or \"sweep\".")
        .def_property_readonly("source", &Profile::source,
                               "\"native\", \"vericut\", \"vericut-sor\", \"machineworks-ext\", "
                               "\"machineworks-rot\" or \"sirius\".")
        .def_property_readonly("unit", &Profile::unit, "\"mm\" or \"in\" (\"unit N\" for another code).")
        .def_property_readonly("tolerance", &Profile::tolerance, "Chordal tolerance used to step arcs.")
        .def_property_readonly("z", &Profile::z, "(z_min, z_max) of an extrusion, None for a sweep.")
        .def_property_readonly(
            "segments", &Profile::segments,
            "List of (type, end, centre): type \"line\", \"clw\" or \"cclw\"; end and centre (x, y, z) tuples, "
            "centre None for a line. A segment starts where the one before it ends.")
        .def("polyline", &Profile::polyline,
             "The chain as an N x 3 float64 array: line end points, arcs stepped at the tolerance (at most 100 "
             "degrees a step). Holds the GIL for the whole call.");

    m.def("read_profile", &read_profile, py::arg("path"), py::arg("source") = py::none(), py::arg("units") = py::none(),
          py::arg("file_units") = py::none(),
          R"(Read a native (KOLP EXTRUDE / KOLP SWEEP FILE) or foreign profile.

source: None to detect, or "native", "vericut", "vericut-sor",
"machineworks-ext", "machineworks-rot", "sirius". units: "mm", "in" or None
(a native file keeps its own unit, a foreign one its file_units). file_units:
unit of a Vericut or Sirius file's numbers (default "mm"). Returns a Profile.
Holds the GIL for the whole call.)");

    m.def("read_dxf", &read_dxf, py::arg("path"), py::arg("out_path"), py::arg("sweep") = false,
          py::arg("units") = "mm",
          R"(Write each layer of a DXF drawing as a native profile file.

The chain through each layer's first LINE or ARC is written to out_path (one
layer) or to out_path with "_Layer_Name_<layer>" before its extension, as an
extrusion or (sweep=True) a sweep profile marked with units ("mm" or "in";
coordinates are not converted). Returns the paths written, [] when no entity
names a layer. Holds the GIL for the whole call.)");

    m.def("dxf_contours", &dxf_contours, py::arg("path"),
          R"(The contours of every layer of a DXF drawing.

A list of {"layer", "entities" (count), "contours"}, each contour a dict
{"closed", "segments", "written" (the chain read_dxf writes), "entities": list
of (position in the layer, turned round)}. Holds the GIL for the whole call.)");

    m.def("tool_tokens", &tool_tokens, py::arg("path"),
          R"(The raw token stream of a tool library's walk: element names, attribute
names and values, text values, "!" marking a token after which the walk leaves
elements, "OptiPath" at the end. Holds the GIL for the whole call.)");

    m.def("read_tool_library", &read_tool_library, py::arg("path"),
          R"(The tools of a tool library: one dict per TOOL element,
{"name", "attributes": {name: value}, "children": [...], "value" when it has
text}, children nested alike. Holds the GIL for the whole call.)");

    m.def("read_objects", &read_objects, py::arg("path"), py::arg("units") = "mm", py::arg("matrix_as_read") = true,
          R"(Read every record of an object file, then its collision section.

Returns a namespace with version (e.g. 1.15), records and collisions. Each
record is a dict with "kind" (cube, cylinder, cone, sphere, torus, file,
extrusion, revolution, mesh, part, tool, engine, container, skipped), and for
objects "name", "dimensions" (by name), "matrix" (4 x 4), "vector", "colour"
and "attachment" (name, key, index); meshes add "vertices" (N x 3) and
"corners" (3 per triangle, x 3), profile records "segments" as in Profile.
collisions: list of (first, second, code, value), or None without a section.
units: "mm" or "in"; matrix_as_read=False converts the matrices. Holds the GIL
for the whole call.)");

    m.def("descramble", &descramble, py::arg("path"),
          R"(The plain text of an object file (scrambled or plain), one line per
non-empty line as the reader sees it. Holds the GIL for the whole call.)");
}
