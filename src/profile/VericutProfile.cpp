// Vericut extrusion ("Sweep") and turned ("Sor") profiles: the XML documents
// and the older plain-text point lists.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "module/Allocation.h"
#include "platform/crtpath.h"
#include "profile/ForeignProfile.h"
#include "profile/MWZORProfile.h"
#include "zorapi/XmlHolder.h"

namespace zor {

namespace {

constexpr double kPi = 3.141592653589793;
// Closing tolerance, compared with the file's values before scaling.
constexpr double kCloseTolerance = 1e-5;
// Plain-text lines are read with an 81-byte buffer: fgets hands out at most
// 80 characters, a longer line arrives in pieces that are read as lines.
constexpr int kPlainLineBuffer = 81;

// Frees the holder on every way out of the XML path.
struct HolderGuard {
    ~HolderGuard() { ZORAPI_XmlFreeHolder(kVericutHolder); }
};

// Value of child element name of tag (ignoring case), if there is one.
bool child_value(ZORAPI_XmlTag tag, const char* name, double* value) {
    ZORAPI_XmlTag child = ZORAPI_Get_Xml_Tag_By_Name(tag, name);
    if (child == nullptr) return false;
    *value = std::atof(ZORAPI_Get_Xml_Tag_Val(child));
    return true;
}

// Value of the element's first attribute called name (ignoring case).
bool attribute_value(ZORAPI_XmlTag tag, const char* name, const char** value) {
    const int count = ZORAPI_Get_Xml_Attrib_Amount(tag);
    for (int i = 0; i < count; ++i) {
        ZORAPI_XmlAttrib attrib = ZORAPI_Get_Xml_Tag_Attrib(tag, i);
        if (equal_no_case(ZORAPI_Get_Xml_Attrib_Name(attrib), name)) {
            *value = ZORAPI_Get_Xml_Attrib_Val(attrib);
            return true;
        }
    }
    return false;
}

// First coordinate from "X", second from "Y" and then "Z" (read last, so it
// wins); a missing child leaves its coordinate as it was.
void read_plane_point(ZORAPI_XmlTag tag, double* x, double* y) {
    child_value(tag, "X", x);
    child_value(tag, "Y", y);
    child_value(tag, "Z", y);
}

// The XML path; the document is held under kVericutHolder.
bool read_vericut_xml(CMWZORSegmentArray& list, const VericutFields& fields) {
    HolderGuard guard;
    ZORAPI_XmlTag root = ZORAPI_Get_Xml_Hold_Tag(ZORAPI_Get_Xml_Hold_By_Name(kVericutHolder));
    ZORAPI_XmlTag profile = ZORAPI_Get_Xml_Tag_By_Name(root, fields.turned ? "Sor" : "Sweep");
    if (!equal_no_case(ZORAPI_Get_Xml_Tag_Name(profile), fields.turned ? "SOR" : "SWEEP")) return false;

    const char* text = nullptr;
    if (fields.turned) {
        if (fields.tolerance != nullptr && attribute_value(profile, "Tolerance", &text))
            *fields.tolerance = std::atof(text);
    } else if (fields.zRange != nullptr) {
        if (attribute_value(profile, "Zmin", &text)) fields.zRange[0] = std::atof(text);
        if (attribute_value(profile, "Zmax", &text)) fields.zRange[1] = std::atof(text);
    }

    // An "ARC" before any "PT" starts at (0, 0): the file gives it no start.
    double x = 0.0, y = 0.0;
    double firstX = 0.0, firstY = 0.0;
    long long vertices = 0;
    bool arcPending = false;
    double cx = 0.0, cy = 0.0, sx = 0.0, sy = 0.0;
    // Never cleared during the walk: an arc without a direction of its own
    // takes the previous arc's (given or computed). Files rely on this.
    std::string direction;

    const int count = ZORAPI_Get_Xml_Child_Amount(profile);
    for (int i = 0; i < count; ++i) {
        ZORAPI_XmlTag child = ZORAPI_Get_Xml_Tag_Child(profile, i);
        const char* name = ZORAPI_Get_Xml_Tag_Name(child);
        if (equal_no_case(name, "ARC")) {
            sx = x;
            sy = y;
            read_plane_point(child, &cx, &cy);
            if (attribute_value(child, "DIRECTION", &text)) direction = text;
            ZORAPI_XmlTag given = ZORAPI_Get_Xml_Tag_By_Name(child, "DIRECTION");
            if (given != nullptr) direction = ZORAPI_Get_Xml_Tag_Val(given);
            arcPending = true;
        } else if (equal_no_case(name, "PT")) {
            read_plane_point(child, &x, &y);
            if (!arcPending) {
                if (vertices == 0) {
                    firstX = x;
                    firstY = y;
                }
                ++vertices;
                list.AddPoint(x, y, 0.0);
                continue;
            }
            arcPending = false;
            if (!equal_no_case(direction.c_str(), "CW") && !equal_no_case(direction.c_str(), "CCW"))
                direction = DirectionOf(cx, cy, sx, sy, x, y);
            const m_IOenumType type = equal_no_case(direction.c_str(), "CW") ? IO_CLW : IO_CCLW;
            list.AddArc(cx, cy, 0.0, x, y, 0.0, type);
        }
    }

    // Without a first vertex there is nothing to close to.
    if (vertices > 0 && (std::fabs(firstX - x) > kCloseTolerance || std::fabs(firstY - y) > kCloseTolerance))
        list.AddPoint(firstX, firstY, 0.0);
    return true;
}

// Splits line in place into at most two leading fields separated by blanks
// and tabs; the line end is not part of the line. Returns the number found.
int leading_fields(char* line, char* fields[2]) {
    size_t length = std::strlen(line);
    while (length > 0 && (line[length - 1] == '\n' || line[length - 1] == '\r')) line[--length] = '\0';
    int found = 0;
    char* p = line;
    while (found < 2) {
        p += std::strspn(p, " \t");
        if (*p == '\0') break;
        fields[found++] = p;
        p += std::strcspn(p, " \t");
        if (*p == '\0') break;
        *p++ = '\0';
    }
    return found;
}

class PlainFile {
public:
    explicit PlainFile(const char* path) : m_file(open_file(path, "r")) {
        if (m_file != nullptr) std::rewind(m_file);
    }
    ~PlainFile() {
        if (m_file != nullptr) std::fclose(m_file);
    }
    PlainFile(const PlainFile&) = delete;
    PlainFile& operator=(const PlainFile&) = delete;

    bool open() const { return m_file != nullptr; }
    bool next() { return std::fgets(m_line, sizeof m_line, m_file) != nullptr; }
    char* line() { return m_line; }

private:
    std::FILE* m_file;
    char m_line[kPlainLineBuffer] = {};
};

// The plain-text path: header lines by position, then one point a line.
bool read_vericut_plain(CMWZORSegmentArray& list, const char* path, const VericutFields& fields) {
    PlainFile file(path);
    if (!file.open()) return false;
    for (int i = 0; i < 4; ++i)
        if (!file.next()) return false;
    char* field[2] = {nullptr, nullptr};
    const bool line4 = leading_fields(file.line(), field) >= 1;
    if (fields.turned) {
        if (line4 && fields.tolerance != nullptr) read_vericut_field(field[0], fields.tolerance);
    } else {
        if (line4 && fields.zRange != nullptr) read_vericut_field(field[0], &fields.zRange[0]);
        if (!file.next()) return false;
        if (leading_fields(file.line(), field) >= 1 && fields.zRange != nullptr)
            read_vericut_field(field[0], &fields.zRange[1]);
    }

    // Fields that do not convert keep the value of the line before.
    double x = 0.0, y = 0.0;
    double firstX = 0.0, firstY = 0.0;
    bool havePoint = false;
    while (file.next()) {
        if (leading_fields(file.line(), field) < 2) continue;
        read_vericut_field(field[0], &x);
        read_vericut_field(field[1], &y);
        if (!havePoint) {
            firstX = x;
            firstY = y;
            havePoint = true;
        }
        list.AddPoint(x, y, 0.0);
    }
    if (havePoint && (std::fabs(firstX - x) > kCloseTolerance || std::fabs(firstY - y) > kCloseTolerance))
        list.AddPoint(firstX, firstY, 0.0);
    return true;
}

void store_single_over_low_half(double* target, float value) {
    std::uint64_t bits;
    std::memcpy(&bits, target, sizeof bits);
    std::uint32_t single;
    std::memcpy(&single, &value, sizeof single);
    bits = (bits & 0xFFFFFFFF00000000ull) | single;
    std::memcpy(target, &bits, sizeof bits);
}

}  // namespace

const char* DirectionOf(double cx, double cy, double sx, double sy, double ex, double ey) {
    const double a1 = std::atan2(sy - cy, sx - cx);
    const double a2 = std::atan2(ey - cy, ex - cx);
    // The grouping of the sums decides the exact half turn ("CW" in the
    // second branch, "CCW" in the third); keep it as written.
    if (a1 >= 0.0 && a2 >= 0.0) return a2 > a1 ? "CCW" : "CW";
    if (a1 >= 0.0 && a2 < 0.0) return kPi > (a2 + kPi) + (kPi - a1) ? "CCW" : "CW";
    if (a1 < 0.0 && a2 >= 0.0) return kPi > (a1 + kPi) + (kPi - a2) ? "CW" : "CCW";
    // Both negative: the reverse of the first branch, on purpose.
    return (a1 - a2) > (a2 - a1) ? "CCW" : "CW";
}

void read_vericut_field(const char* field, double* target) {
    // Exponent fields go through single precision into half of the double:
    // how the format has always been read, so the values files hold this way
    // are the ones their users know.
    float single = 0.0f;
    if (std::strchr(field, 'e') != nullptr) {
        if (std::sscanf(field, "%e", &single) == 1) store_single_over_low_half(target, single);
    } else if (std::strchr(field, 'E') != nullptr) {
        if (std::sscanf(field, "%E", &single) == 1) store_single_over_low_half(target, single);
    } else {
        std::sscanf(field, "%lf", target);
    }
}

bool read_vericut(CMWZORSegmentArray& list, const char* path, const VericutFields& fields) {
    if (ZORAPI_LoadXmlFile(path, kVericutHolder) == 0) return read_vericut_plain(list, path, fields);
    return read_vericut_xml(list, fields);
}

}  // namespace zor

bool CMWZORExtrude::ReadVericut(CString path, unsigned int unit, unsigned int fileUnit) {
    SetUnitConversion(static_cast<int>(unit), static_cast<int>(fileUnit));
    zor::VericutFields fields;
    double zRange[2] = {m_zMin, m_zMax};
    fields.zRange = zRange;
    const bool read =
        zor::failure_on_bad_alloc(false, [&] { return zor::read_vericut(*this, path.GetString(), fields); });
    // The Z range is scaled on every way out, also after a failed read.
    m_zMin = zRange[0] * m_scale;
    m_zMax = zRange[1] * m_scale;
    return read;
}

bool CMWZORSweep::ReadVericut(CString path, unsigned int unit, unsigned int fileUnit) {
    SetUnitConversion(static_cast<int>(unit), static_cast<int>(fileUnit));
    zor::VericutFields fields;
    fields.turned = true;
    fields.tolerance = &m_tolerance;
    return zor::failure_on_bad_alloc(false, [&] { return zor::read_vericut(*this, path.GetString(), fields); });
}
