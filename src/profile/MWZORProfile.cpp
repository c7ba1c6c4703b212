// The native extrusion and sweep profile files, and Copy.
#include "profile/MWZORProfile.h"

#include <cstring>
#include <string>

#include "module/Allocation.h"
#include "platform/crtpath.h"
#include "profile/NativeProfileText.h"
#include "profile/TextFormat.h"

IMPLEMENT_DYNAMIC(CMWZORExtrude, CMWZORSegmentArray)
IMPLEMENT_DYNAMIC(CMWZORSweep, CMWZORSegmentArray)

namespace {

// The files are read with a 100-byte line buffer: fgets hands out at most 99
// bytes, so a longer line arrives in pieces. The pieces after the first
// cannot start with a keyword and are skipped, which files in use rely on
// being harmless; keep the limit.
constexpr size_t kLineBufferSize = 100;

// fgets(buffer, kLineBufferSize, file) over text in memory.
class FgetsLines {
public:
    FgetsLines(const char* text, size_t size) : m_rest(text, size) {}

    // The next piece, trimmed and upper-cased as every reader of the format
    // wants it; false at the end of the text. Like the C string fgets leaves,
    // a piece ends at its first NUL byte.
    bool Next(CString& line) {
        if (m_rest.empty()) return false;
        size_t n = m_rest.size() < kLineBufferSize - 1 ? m_rest.size() : kLineBufferSize - 1;
        size_t newline = m_rest.substr(0, n).find('\n');
        if (newline != std::string_view::npos) n = newline + 1;
        std::string_view piece = m_rest.substr(0, n);
        m_rest.remove_prefix(n);
        line = CString(piece.substr(0, strnlen(piece.data(), piece.size())));
        line.Trim();
        line.MakeUpper();
        return true;
    }

    // As Next, but a header line that is missing (end of text) reads as an
    // empty line: it matches no pattern and so leaves its field unchanged.
    CString Header() {
        CString line;
        if (!Next(line)) line.Empty();
        return line;
    }

private:
    std::string_view m_rest;
};

bool starts_with(const CString& line, const char* prefix) {
    return std::strncmp(line.GetString(), prefix, std::strlen(prefix)) == 0;
}

}  // namespace

bool CMWZORSegmentArray::WriteNativeFile(const CString& path, const char* magic, const double* zRange) const {
    // Out of memory: false, with the file closed (it may hold a part).
    return zor::failure_on_bad_alloc(false, [&] {
        zor::NativeProfileText text(path.GetString(), magic, zRange);
        if (!text.ok()) return false;
        WriteBody(text);
        return true;
    });
}

void CMWZORSegmentArray::ReadNativeText(const char* text, size_t size, unsigned int unit, double* zRange) {
    FgetsLines lines(text, size);
    CString line;
    lines.Next(line);  // the magic is not checked: any first line will do

    // Header lines are taken by position, not by keyword.
    std::sscanf(lines.Header().GetString(), "VERSION < %d >", &m_version);
    if (zRange != nullptr) std::sscanf(lines.Header().GetString(), "Z < %lf %lf >", &zRange[0], &zRange[1]);
    int fileUnit = m_unit;
    std::sscanf(lines.Header().GetString(), "UNIT < %d >", &fileUnit);
    SetUnitConversion(static_cast<int>(unit), fileUnit);
    if (zRange != nullptr) {
        zRange[0] *= m_scale;
        zRange[1] *= m_scale;
    }
    std::sscanf(lines.Header().GetString(), "TOLER < %lf >", &m_tolerance);

    // Numbers a short line does not supply keep the last values read into
    // the same place; the end of a line and of an arc share their storage.
    double centre[3] = {0.0, 0.0, 0.0};
    double axis[3] = {0.0, 0.0, 0.0};
    double end[3] = {0.0, 0.0, 0.0};
    while (lines.Next(line)) {
        // Prefix tests in this order: "LINEAR" is a line, "CLWX" a clockwise arc.
        if (starts_with(line, "LINE")) {
            std::sscanf(line.GetString(), "LINE < %lf %lf %lf >", &end[0], &end[1], &end[2]);
            AddPoint(end[0], end[1], end[2]);
        } else if (starts_with(line, "CLW") || starts_with(line, "CCLW")) {
            const bool clockwise = starts_with(line, "CLW");
            // The axis is rebuilt from the keyword by AddArc; the file's is dropped.
            std::sscanf(line.GetString(),
                        clockwise ? "CLW < %lf %lf %lf %lf %lf %lf %lf %lf %lf >"
                                  : "CCLW < %lf %lf %lf %lf %lf %lf %lf %lf %lf >",
                        &centre[0], &centre[1], &centre[2], &axis[0], &axis[1], &axis[2], &end[0], &end[1], &end[2]);
            AddArc(centre[0], centre[1], centre[2], end[0], end[1], end[2], clockwise ? IO_CLW : IO_CCLW);
        }
    }
}

void CMWZORSegmentArray::CopyList(CMWZORSegmentArray* target) const {
    target->m_tolerance = m_tolerance;
    target->m_scale = m_scale;
    target->m_unit = m_unit;
    target->m_version = m_version;

    // The target's old segments leave its list (the cursor steps back with
    // each) but are kept until the target goes, so no pointer a client took
    // from it dangles.
    for (long long i = target->m_segments.GetSize(); i > 0; --i) {
        if (target->m_cursor > 0) --target->m_cursor;
    }
    // Out of memory: the target gets none of the segments (rather than a part
    // of the chain that would pass for the whole).
    const int cursor = target->m_cursor;
    try {
        target->AbandonSegments();
        for (long long i = 0; i < m_segments.GetSize(); ++i) {
            // Leaves the target's cursor on its last segment.
            if (i > 0) target->GetNext();
            const CMWZORSegment* segment = m_segments[i];
            // A null slot (an outline list's empty last slot) has nothing to copy.
            if (segment == nullptr) continue;
            // Added through the target's scale, which is now the source's: a
            // converted profile is scaled again. Clients copy unscaled objects.
            if (segment->m_type == IO_LINE) {
                const CMWZORPoint* end = segment->m_points[0];
                if (end != nullptr) target->AddPoint(end->x, end->y, end->z);
            } else if (segment->m_type == IO_CLW || segment->m_type == IO_CCLW) {
                const CMWZORPoint* centre = segment->m_points[0];
                const CMWZORPoint* end = segment->m_points[2];
                if (centre != nullptr && end != nullptr)
                    target->AddArc(centre->x, centre->y, centre->z, end->x, end->y, end->z, segment->m_type);
            }
        }
    } catch (const std::bad_alloc&) {
        // Only segments made by this copy are in the list (no client holds
        // them yet); the target's own went to its kept ones first.
        for (long long i = 0; i < target->m_segments.GetSize(); ++i) delete target->m_segments[i];
        target->m_segments.RemoveAll();
        target->m_cursor = cursor;
    }
}

CMWZORExtrude::CMWZORExtrude() : m_zMin(0.0), m_zMax(0.0) {}

CMWZORExtrude::~CMWZORExtrude() = default;

bool CMWZORExtrude::WriteFile(CString path, double zMin, double zMax) {
    const double zRange[2] = {zMin, zMax};
    // The Z range is stored only when the file could be created.
    if (!WriteNativeFile(path, zor::kExtrudeMagic, zRange)) return false;
    m_zMin = zMin;
    m_zMax = zMax;
    return true;
}

bool CMWZORExtrude::ResadFile(CString path, unsigned int unit) {
    // Out of memory: false, with the segments read so far in the list.
    return zor::failure_on_bad_alloc(false, [&] {
        std::string bytes;
        if (!zor::read_whole_file(path.GetString(), bytes)) return false;
        double zRange[2] = {m_zMin, m_zMax};
        ReadNativeText(bytes.data(), bytes.size(), unit, zRange);
        m_zMin = zRange[0];
        m_zMax = zRange[1];
        return true;
    });
}

void CMWZORExtrude::Copy(CMWZORExtrude* target) {
    if (target == nullptr) return;
    target->m_zMin = m_zMin;
    target->m_zMax = m_zMax;
    CopyList(target);
}

void CMWZORExtrude::GetZValues(double* zMin, double* zMax) {
    if (zMin != nullptr) *zMin = m_zMin;
    if (zMax != nullptr) *zMax = m_zMax;
}

void CMWZORExtrude::SetZValues(double zMin, double zMax) {
    m_zMin = zMin;
    m_zMax = zMax;
}

CMWZORSweep::CMWZORSweep() = default;

CMWZORSweep::~CMWZORSweep() = default;

bool CMWZORSweep::WriteFile(CString path) { return WriteNativeFile(path, zor::kSweepMagic, nullptr); }

bool CMWZORSweep::ResadFile(CString path, unsigned int unit) {
    return zor::failure_on_bad_alloc(false, [&] {
        std::string bytes;
        if (!zor::read_whole_file(path.GetString(), bytes)) return false;
        ReadNativeText(bytes.data(), bytes.size(), unit, nullptr);
        return true;
    });
}

void CMWZORSweep::Copy(CMWZORSweep* target) {
    if (target == nullptr) return;
    CopyList(target);
}
