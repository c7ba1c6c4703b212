// Sirius profiles: text lines "KEYWORD = anything ( parameters )" with the
// keywords LINE and ARC, read the same way into extrusions and sweeps.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "module/Allocation.h"
#include "platform/crtpath.h"
#include "profile/ForeignProfile.h"
#include "profile/MWZORProfile.h"
#include "zorapi/XmlHolder.h"

namespace zor {

namespace {

// Each read takes at most 80 characters; a longer line arrives in pieces,
// and a piece without "=" and "(...)" is skipped like any other odd line.
constexpr int kSiriusLineBuffer = 81;
constexpr double kCloseTolerance = 1e-5;
constexpr char kBlanks[] = " \t\r\n\v\f";

enum class SiriusKind { None, Line, Arc };

// Splits a line into its keyword and the text between the "(" and the ")"
// that follow the "="; None when it is not a LINE or ARC line of that form.
SiriusKind split_line(const char* line, std::string& parameters) {
    const char* equals = std::strchr(line, '=');
    if (equals == nullptr) return SiriusKind::None;
    const char* open = std::strchr(equals + 1, '(');
    if (open == nullptr) return SiriusKind::None;
    const char* close = std::strchr(open + 1, ')');
    if (close == nullptr) return SiriusKind::None;

    std::string keyword(line, static_cast<size_t>(equals - line));
    const size_t first = keyword.find_first_not_of(kBlanks);
    if (first == std::string::npos) return SiriusKind::None;
    keyword = keyword.substr(first, keyword.find_last_not_of(kBlanks) - first + 1);
    parameters.assign(open + 1, static_cast<size_t>(close - open - 1));
    if (equal_no_case(keyword.c_str(), "LINE")) return SiriusKind::Line;
    if (equal_no_case(keyword.c_str(), "ARC")) return SiriusKind::Arc;
    return SiriusKind::None;
}

bool differs(const double a[3], const double b[3]) {
    for (int i = 0; i < 3; ++i)
        if (std::fabs(a[i] - b[i]) > kCloseTolerance) return true;
    return false;
}

}  // namespace

bool is_sirius_segment_line(const char* line) {
    std::string parameters;
    return split_line(line, parameters) != SiriusKind::None;
}

bool read_sirius(CMWZORSegmentArray& list, const char* path) {
    // Closed on every way out, an exception's too.
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> owner(open_file(path, "r"), std::fclose);
    std::FILE* file = owner.get();
    if (file == nullptr) return false;

    char line[kSiriusLineBuffer];
    std::string parameters;
    // Values a line does not supply keep those of the line before.
    double start[3] = {0, 0, 0}, end[3] = {0, 0, 0}, centre[3] = {0, 0, 0};
    char word[kSiriusLineBuffer] = {};
    double firstStart[3] = {0, 0, 0};
    bool haveStart = false;
    bool haveEnd = false;
    long long segmentLines = 0;

    while (std::fgets(line, sizeof line, file) != nullptr) {
        const SiriusKind kind = split_line(line, parameters);
        if (kind == SiriusKind::None) continue;
        const bool first = segmentLines == 0;
        ++segmentLines;
        int parsed;
        if (kind == SiriusKind::Line) {
            parsed = std::sscanf(parameters.c_str(), "%lf,%lf,%lf,%lf,%lf,%lf", &start[0], &start[1], &start[2],
                                 &end[0], &end[1], &end[2]);
        } else {
            // The word fits: the parameters come from one line of at most 80 characters.
            parsed = std::sscanf(parameters.c_str(), "%lf,%lf,%lf,%lf,%lf,%lf,%lf,%lf,%lf,%80s", &start[0], &start[1],
                                 &start[2], &end[0], &end[1], &end[2], &centre[0], &centre[1], &centre[2], word);
        }
        // A line that supplies nothing only counts, also as the first one.
        if (parsed <= 0) continue;

        if (first) {
            list.AddPoint(start[0], start[1], start[2]);
            std::memcpy(firstStart, start, sizeof start);
            haveStart = true;
        }
        if (kind == SiriusKind::Arc && equal_no_case(word, "CLW")) {
            list.AddArc(centre[0], centre[1], centre[2], end[0], end[1], end[2], IO_CLW);
        } else if (kind == SiriusKind::Arc && equal_no_case(word, "CCLW")) {
            list.AddArc(centre[0], centre[1], centre[2], end[0], end[1], end[2], IO_CCLW);
        } else {
            // A line, or an arc with another direction word: straight to its end.
            list.AddPoint(end[0], end[1], end[2]);
        }
        haveEnd = true;
    }

    // Only the first element's start is known; the others are taken to start
    // where the one before ended.
    if (haveStart && haveEnd && differs(firstStart, end)) list.AddPoint(firstStart[0], firstStart[1], firstStart[2]);
    return true;
}

}  // namespace zor

bool CMWZORExtrude::ReadSirius(CString path, unsigned int wantedUnit, unsigned int fileUnit) {
    SetUnitConversion(static_cast<int>(wantedUnit), static_cast<int>(fileUnit));
    return zor::failure_on_bad_alloc(false, [&] { return zor::read_sirius(*this, path.GetString()); });
}

bool CMWZORSweep::ReadSirius(CString path, unsigned int wantedUnit, unsigned int fileUnit) {
    SetUnitConversion(static_cast<int>(wantedUnit), static_cast<int>(fileUnit));
    return zor::failure_on_bad_alloc(false, [&] { return zor::read_sirius(*this, path.GetString()); });
}
