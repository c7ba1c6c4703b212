// The frame of the object-file reader: opening, the line reader, the field
// syntax (label < value >), brace depth, record typing and unit factors.
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "objectfile/FieldScan.h"
#include "objectfile/LineReader.h"
#include "objectfile/MWZORFile.h"
#include "objectfile/ObjectFileState.h"
#include "objectfile/ReadGuard.h"
#include "platform/crtpath.h"

IMPLEMENT_DYNAMIC(CMWZORPoint, CObject)
IMPLEMENT_DYNAMIC(CMWZORFile, CObject)

CMWZORPoint::CMWZORPoint() : x(0.0), y(0.0), z(0.0) {}
CMWZORPoint::CMWZORPoint(double px, double py, double pz) : x(px), y(py), z(pz) {}
CMWZORPoint::~CMWZORPoint() = default;

namespace {

constexpr double kInchesToMillimetres = 25.4;
constexpr double kMillimetresToInches = 0.03937007874015748;

struct RecordKeyword {
    const char* keyword;
    unsigned int code;
};

constexpr RecordKeyword kRecordKeywords[] = {
    {"C3dObjectCube", ZOR_RECORD_CUBE},
    {"C3dObjectCylinder", ZOR_RECORD_CYLINDER},
    {"C3dObjectEngin", ZOR_RECORD_ENGINE},
    {"C3dObjectCone", ZOR_RECORD_CONE},
    {"C3dObjectSplineExtrude", ZOR_RECORD_EXTRUSION},
    {"C3dObjectSplineLathe", ZOR_RECORD_REVOLUTION},
    {"C3dObjectMesh", ZOR_RECORD_MESH},
    {"C3dObjectSphere", ZOR_RECORD_SPHERE},
    {"C3dObjectTorus", ZOR_RECORD_TORUS},
    {"C3dObjectPart", ZOR_RECORD_PART},
    {"C3dObjectTool", ZOR_RECORD_TOOL},
    {"C3dObjectFile", ZOR_RECORD_FILE},
    {"C3dPairCompArray", ZOR_RECORD_CONTAINER},
};

unsigned int record_code(std::string_view keyword) {
    for (const RecordKeyword& entry : kRecordKeywords)
        if (keyword == entry.keyword) return entry.code;
    return ZOR_RECORD_UNKNOWN;
}

}  // namespace

CMWZORFile::CMWZORFile(CString fileName, unsigned int /*reserved*/, unsigned int units, int matrixConvention)
    : m_depth(0), m_version(0), m_recordDepth(0), m_units(units), m_stream(nullptr) {
    zor::ObjectFileState& state = zor::object_file_state();
    state.matrixConvention = matrixConvention;
    state.spindleCount = 0;
    state.objectNames.clear();
    // Out of memory here leaves the file closed: every read fails, as for a
    // file that does not open.
    zor::contain_allocation_failure(m_stream, false, [&] {
        state.currentPath = fileName.GetString();
        m_stream = zor::open_file(fileName, "r");
        if (m_stream == nullptr) return false;
        // Fewer, larger reads; what each read returns is unchanged.
        std::setvbuf(m_stream, nullptr, _IOFBF, 1 << 16);
        ReadVersion();
        return true;
    });
}

CMWZORFile::~CMWZORFile() {
    if (m_stream != nullptr) std::fclose(m_stream);
}

bool CMWZORFile::ReadLine(CString& line) { return zor::read_object_line(m_stream, line); }

namespace {

// The value of a field line: the text between the last "<" and the last ">",
// with white space, "<" and ">" trimmed as CString's TrimLeft(), TrimLeft('<'),
// TrimLeft() and TrimRight(), TrimRight('>'), TrimRight() would. False when
// the brackets are missing.
bool field_value(std::string_view line, std::string_view* value) {
    const char* text = line.data();
    // A trimmed field line mostly ends in its ">".
    const void* close = !line.empty() && line.back() == '>' ? &text[line.size() - 1] : memrchr(text, '>', line.size());
    if (close == nullptr) return false;
    const auto closeAt = static_cast<std::size_t>(static_cast<const char*>(close) - text);
    const void* open = memrchr(text, '<', closeAt);
    if (open == nullptr) return false;
    const auto openAt = static_cast<std::size_t>(static_cast<const char*>(open) - text);
    std::string_view inner = line.substr(openAt, closeAt + 1 - openAt);  // starts with "<", ends with ">"
    while (!inner.empty() && inner.front() == '<') inner.remove_prefix(1);
    inner = zor::trim_white_space(inner);
    while (!inner.empty() && inner.back() == '>') inner.remove_suffix(1);
    *value = zor::trim_white_space(inner);
    return true;
}

// The next line's field value, as a view into the module's line text: the
// numeric fields parse it in place.
bool read_field_value(std::FILE*& stream, std::string_view* value) {
    std::string_view line;
    return zor::read_object_line(stream, line) && field_value(line, value);
}

}  // namespace

bool CMWZORFile::ReadField(CString* value, CString* whole) {
    std::string_view line;
    if (!zor::read_object_line(m_stream, line)) return false;
    if (whole != nullptr) *whole = CString(line);
    if (value == nullptr) return true;
    std::string_view inner;
    if (!field_value(line, &inner)) return false;
    *value = CString(inner);
    return true;
}

bool CMWZORFile::ReadIntField(int n, int* dest, const char* separators) {
    std::string_view value;
    if (!read_field_value(m_stream, &value)) return false;
    if (dest != nullptr && value.empty()) return false;
    if (dest == nullptr || n <= 0) return true;
    return zor::ScanInts(value, n, dest, separators);
}

bool CMWZORFile::ReadFloatField(int n, float* dest, const char* separators) {
    std::string_view value;
    if (!read_field_value(m_stream, &value)) return false;
    if (dest == nullptr || n <= 0) return true;
    return zor::ScanFloats(value, n, dest, separators);
}

bool CMWZORFile::ReadDoubleField(int n, double* dest, const char* separators) {
    std::string_view value;
    if (!read_field_value(m_stream, &value)) return false;
    if (dest == nullptr || n <= 0) return true;
    return zor::ScanDoubles(value, n, dest, separators);
}

bool CMWZORFile::SkipLines(int count) {
    std::string_view line;
    for (int i = 0; i < count; ++i)
        if (!zor::read_object_line(m_stream, line)) return false;
    return true;
}

bool CMWZORFile::SkipToRecordDepth() {
    if (m_depth == 0) return true;
    std::string_view line;
    while (m_depth > m_recordDepth) {
        if (!zor::read_object_line(m_stream, line)) return false;
        if (line.find('{') != std::string_view::npos) ++m_depth;
        if (line.find('}') != std::string_view::npos) --m_depth;
    }
    return true;
}

bool CMWZORFile::ReadType(unsigned int* type) {
    if (type != nullptr) *type = ZOR_RECORD_UNKNOWN;
    const bool found = zor::contain_allocation_failure(m_stream, false, [&] {
        std::string_view line;
        while (zor::read_object_line(m_stream, line)) {
            if (line.find('}') != std::string_view::npos) {
                if (m_depth > 0) --m_depth;
                if (m_recordDepth > 0) --m_recordDepth;
            }
            if (line.find('{') != std::string_view::npos) {
                // The keyword: trailing "{" and white space removed.
                while (!line.empty() && (line.back() == '{' || zor::is_white_space(line.back()))) line.remove_suffix(1);
                if (type != nullptr) *type = record_code(line);
                ++m_depth;
                ++m_recordDepth;
                return true;
            }
        }
        return false;
    });
    if (!found && type != nullptr) *type = ZOR_RECORD_END;
    return found;
}

bool CMWZORFile::ReadDummy() {
    if (m_recordDepth > 0) --m_recordDepth;
    zor::contain_allocation_failure(m_stream, false, [this] { return SkipToRecordDepth(); });
    return true;
}

void CMWZORFile::ReadVersion() {
    zor::ObjectFileState& state = zor::object_file_state();
    state.firstLinePending = true;
    state.fileIsPlain = false;
    CString value, whole;
    // A version line has no brackets, so ReadField fails on it; the whole
    // line is kept all the same.
    ReadField(&value, &whole);
    if (!state.fileIsPlain)
        for (int i = 0; i < 6; ++i) ReadField(&value, &whole);
    float version = 0.0f;
    if (std::sscanf(whole, "// Version: %f\r\n", &version) != 1) return;
    const double rounded = std::round(version * 100.0f);
    // A version that does not fit the field (negative, huge, NaN) is taken as
    // unread rather than converted with undefined behaviour.
    if (std::isfinite(rounded) && rounded >= 0.0 && rounded <= 4294967295.0)
        m_version = static_cast<unsigned int>(rounded);
}

bool CMWZORFile::GetUnitFactor(int recordUnits, double* factor) const {
    *factor = 1.0;
    if (m_units == 1 && recordUnits == 2) {
        *factor = kInchesToMillimetres;
        return true;
    }
    if (m_units == 2 && recordUnits == 1) {
        *factor = kMillimetresToInches;
        return true;
    }
    return false;
}

void CMWZORFile::ScaleRecord(int recordUnits, double vector[4], double matrix[4][4], double* const* lengths,
                             int lengthCount) const {
    double factor;
    if (!GetUnitFactor(recordUnits, &factor)) return;
    if (vector != nullptr) zor::ScaleValues(vector, 4, factor);
    for (int i = 0; i < lengthCount; ++i)
        if (lengths[i] != nullptr) *lengths[i] *= factor;
    // The translation column and, deliberately, the homogeneous [3][3].
    if (matrix != nullptr)
        for (int row = 0; row < 4; ++row) matrix[row][3] *= factor;
}

bool CMWZORFile::CountAffordable(long long count, std::size_t itemBytes) const {
    // 64 MiB of arrays are made for any count, so that a file cut short keeps
    // its count and what it holds; past that a count must be one the rest of
    // the file could fill (a line a count at the very least), or a damaged
    // count would exhaust memory before its first missing line is noticed.
    constexpr unsigned long long kCountBudget = 64ull << 20;
    if (count < 0) return false;
    if (static_cast<unsigned long long>(count) * itemBytes <= kCountBudget) return true;
    return count <= RemainingBytes();
}

long long CMWZORFile::RemainingBytes() const {
    if (m_stream == nullptr) return 0;
    struct stat info;
    long here = std::ftell(m_stream);
    if (here < 0 || fstat(fileno(m_stream), &info) != 0) return 0;
    return info.st_size > here ? static_cast<long long>(info.st_size) - here : 0;
}
