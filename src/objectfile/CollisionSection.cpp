// The collision section after the last record of an object file: pairs of
// objects, each with a code and a value. Old files name both objects on lines
// of their own; from 1.13 on a compact form names them by their position in
// the table of object names that the records filled.
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "module/Allocation.h"
#include "objectfile/MWZORFile.h"
#include "objectfile/ObjectFileState.h"
#include "platform/crtpath.h"
#include "objectfile/ReadGuard.h"

namespace {

// Bytes of the four arrays per pair.
constexpr std::size_t kPairBytes = 2 * sizeof(void*) + sizeof(unsigned int) + sizeof(double);

// The four arrays of a section, zeroed (a host may free every entry of the
// count after a failure) and handed to the caller as soon as they exist.
bool allocate_section(unsigned int count, void*** firstNames, void*** secondNames, unsigned int** codes,
                      double** values) {
    *firstNames = static_cast<void**>(zor::allocate_zeroed(count, sizeof(void*)));
    *secondNames = static_cast<void**>(zor::allocate_zeroed(count, sizeof(void*)));
    *codes = static_cast<unsigned int*>(zor::allocate_zeroed(count, sizeof(unsigned int)));
    *values = static_cast<double*>(zor::allocate_zeroed(count, sizeof(double)));
    return *firstNames != nullptr && *secondNames != nullptr && *codes != nullptr && *values != nullptr;
}

// A heap copy of text for the caller (freed by FreeCollision); null when
// memory runs out.
void* copy_name(std::string_view text) {
    char* copy = static_cast<char*>(zor::allocate(text.size() + 1));
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

// A decimal integer with optional blanks around it and an optional sign.
// Empty text, other characters and values out of int's range fail: a token
// that is not a number must not quietly become object 0.
bool parse_integer(std::string_view text, int* value) {
    std::string token(text);
    const char* begin = token.c_str();
    while (*begin == ' ' || *begin == '\t') ++begin;
    if (*begin == '\0') return false;
    char* end = nullptr;
    errno = 0;
    const long parsed = std::strtol(begin, &end, 10);
    if (end == begin || errno == ERANGE || parsed < INT_MIN || parsed > INT_MAX) return false;
    while (*end == ' ' || *end == '\t') ++end;
    if (*end != '\0') return false;
    *value = static_cast<int>(parsed);
    return true;
}

// One line "A:B,c,B,c,..." of the compact form. Stores pairs from *stored on
// and stops at count; false on a malformed line or an index outside names.
bool read_pair_line(std::string_view line, const std::vector<std::string>& names, double value, unsigned int count,
                    void** firstNames, void** secondNames, unsigned int* codes, double* values, unsigned int* stored) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return false;
    const auto known = [&](int index) { return index >= 0 && static_cast<std::size_t>(index) < names.size(); };
    int first = 0;
    if (!parse_integer(line.substr(0, colon), &first) || !known(first)) return false;

    std::string_view rest = line.substr(colon + 1);
    // Splits off the next comma-separated token; false at the end of the line
    // (a trailing comma ends the line too).
    const auto next = [&rest](std::string_view* token) {
        if (rest.empty()) return false;
        const std::size_t comma = rest.find(',');
        *token = rest.substr(0, comma);
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
        return true;
    };
    std::string_view token;
    while (*stored < count && next(&token)) {
        int second = 0;
        if (!parse_integer(token, &second) || !known(second)) return false;
        if (!next(&token)) break;  // an index without its code: the line ends here
        int code = 0;
        if (!parse_integer(token, &code)) return false;
        const unsigned int i = (*stored)++;
        firstNames[i] = copy_name(names[static_cast<std::size_t>(first)]);
        secondNames[i] = copy_name(names[static_cast<std::size_t>(second)]);
        if (firstNames[i] == nullptr || secondNames[i] == nullptr) throw std::bad_alloc();
        codes[i] = static_cast<unsigned int>(code);
        values[i] = value;
    }
    return true;
}

}  // namespace

bool CMWZORFile::ReadCollision(void*** firstNames, void*** secondNames, unsigned int** codes, double** values,
                               unsigned int* count) {
    if (firstNames == nullptr || secondNames == nullptr || codes == nullptr || values == nullptr || count == nullptr)
        return false;
    *firstNames = *secondNames = nullptr;
    *codes = nullptr;
    *values = nullptr;
    *count = 0;
    if (m_version > 112) return ReadCollisionNew(firstNames, secondNames, codes, values, count);

    return zor::contain_allocation_failure(m_stream, false, [&] {
        int pairs = 0;
        if (!ReadIntField(1, &pairs)) return false;
        *count = static_cast<unsigned int>(pairs);
        // The arrays are made for the file's count, so that a section cut
        // short keeps the pairs read; only a count that is both huge and more
        // than the rest of the file holds is refused before allocating.
        if (pairs == 0 || !CountAffordable(pairs, kPairBytes)) return false;
        if (!allocate_section(*count, firstNames, secondNames, codes, values)) return false;

        CString line;
        for (unsigned int i = 0; i < *count; ++i) {
            if (!SkipLines(1) || !ReadLine(line)) return false;
            if (((*firstNames)[i] = copy_name(line.view())) == nullptr) return false;
            if (!ReadLine(line)) return false;
            if (((*secondNames)[i] = copy_name(line.view())) == nullptr) return false;
            if (!ReadIntField(1, reinterpret_cast<int*>(&(*codes)[i])) || !ReadDoubleField(1, &(*values)[i]) ||
                !SkipLines(1))
                return false;
        }
        return true;
    });
}

bool CMWZORFile::ReadCollisionNew(void*** firstNames, void*** secondNames, unsigned int** codes, double** values,
                                  unsigned int* count) {
    if (firstNames == nullptr || secondNames == nullptr || codes == nullptr || values == nullptr || count == nullptr)
        return false;
    *firstNames = *secondNames = nullptr;
    *codes = nullptr;
    *values = nullptr;
    *count = 0;

    return zor::contain_allocation_failure(m_stream, false, [&] {
        double value = 0.0;
        int pairs = 0, unused = 0;
        if (!ReadDoubleField(1, &value) || !ReadIntField(1, &pairs)) return false;
        *count = static_cast<unsigned int>(pairs);
        if (pairs == 0 || !ReadIntField(1, &unused)) return false;
        // Made for the file's count, as in the old form. A pair takes at
        // least two characters of the file ("B,c").
        if (!CountAffordable(pairs, kPairBytes)) return false;
        if (!allocate_section(*count, firstNames, secondNames, codes, values)) return false;

        std::vector<std::string>& names = zor::object_file_state().objectNames;
        unsigned int stored = 0;
        bool ok = true;
        CString line;
        while (ok && stored < *count) {
            // A section cut short keeps the name table: intended.
            if (!ReadLine(line)) return false;
            ok = read_pair_line(line.view(), names, value, *count, *firstNames, *secondNames, *codes, *values, &stored);
        }
        // The section consumes the names, whether it was read or refused.
        names.clear();
        return ok;
    });
}

void CMWZORFile::FreeCollision(void** firstNames, void** secondNames, unsigned int* codes, double* values,
                               unsigned int count) {
    for (void** names : {firstNames, secondNames}) {
        if (names == nullptr) continue;
        for (unsigned int i = 0; i < count; ++i) std::free(names[i]);
        std::free(names);
    }
    std::free(codes);
    std::free(values);
}

bool CMWZORFile::SeekCollisionSection(const char* path, long start) {
    if (m_stream != nullptr) std::fclose(m_stream);
    m_stream = zor::open_file(path, "r");
    if (m_stream == nullptr || std::fseek(m_stream, start, SEEK_SET) != 0) return false;
    CString line;
    for (;;) {
        const long here = std::ftell(m_stream);
        if (!ReadLine(line)) return false;
        if (line != "}") return std::fseek(m_stream, here, SEEK_SET) == 0;
    }
}
