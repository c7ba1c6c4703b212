#include "mesh/StlReader.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "mesh/MeshImport.h"
#include "module/Allocation.h"
#include "platform/crtpath.h"

namespace zor {

namespace {

constexpr int kAsciiType = 1;
constexpr int kBinaryType = 2;
constexpr std::size_t kTypeTestBytes = 150;
constexpr std::size_t kLineChars = 80;  // one line read takes at most this many characters
constexpr std::size_t kFacetBytes = 50;
constexpr std::size_t kChunk = 1 << 20;

void set_error(const char* text) {
    char* error = stl_reader_state().error;
    std::strncpy(error, text, StlReaderState::kErrorSize - 1);
    error[StlReaderState::kErrorSize - 1] = '\0';
}

// fopen as the module does it, except that a folder counts as a file that
// cannot be opened (as on the platform the module comes from), rather than
// a stream that fails on its first read.
std::FILE* open_stream(const char* name, const char* mode) {
    std::FILE* f = open_file(name, mode);
    if (f == nullptr) return nullptr;
    struct stat info;
    if (fstat(fileno(f), &info) == 0 && S_ISDIR(info.st_mode)) {
        std::fclose(f);
        return nullptr;
    }
    return f;
}

// Buffered reads of the open stream, in chunks rather than a few bytes at a
// time; what each read returns is what fread on the stream would.
class ByteSource {
public:
    explicit ByteSource(std::FILE* f) : m_file(f), m_buffer(kChunk) {}

    // Pointer to the next n bytes (n <= kChunk) without consuming them, or
    // null when the stream ends first.
    const unsigned char* peek(std::size_t n) {
        if (m_end - m_pos < n) fill();
        return m_end - m_pos >= n ? m_buffer.data() + m_pos : nullptr;
    }
    void skip(std::size_t n) { m_pos += n; }
    // Copies up to n bytes; returns how many there were.
    std::size_t read(void* out, std::size_t n) {
        std::size_t done = 0;
        while (done < n) {
            if (m_pos == m_end) {
                fill();
                if (m_pos == m_end) break;
            }
            const std::size_t take = std::min(n - done, m_end - m_pos);
            std::memcpy(static_cast<unsigned char*>(out) + done, m_buffer.data() + m_pos, take);
            m_pos += take;
            done += take;
        }
        return done;
    }
    // Bytes left in the stream when it is a regular file, else 0 (a hint).
    std::size_t remaining_hint() const {
        struct stat info;
        if (fstat(fileno(m_file), &info) != 0 || !S_ISREG(info.st_mode)) return 0;
        const long at = std::ftell(m_file);
        if (at < 0 || info.st_size < at) return 0;
        return static_cast<std::size_t>(info.st_size - at) + (m_end - m_pos);
    }

    // The next line as fgets with room for kLineChars characters returns it:
    // up to and including a newline, at most kLineChars characters.
    bool next_line(const char*& begin, std::size_t& length) {
        if (m_end - m_pos < kLineChars) fill();
        if (m_pos == m_end) return false;
        const std::size_t avail = std::min(kLineChars, m_end - m_pos);
        const unsigned char* p = m_buffer.data() + m_pos;
        const void* nl = std::memchr(p, '\n', avail);
        length = nl != nullptr ? static_cast<const unsigned char*>(nl) - p + 1 : avail;
        begin = reinterpret_cast<const char*>(p);
        m_pos += length;
        return true;
    }

private:
    void fill() {
        if (m_eof) return;
        std::memmove(m_buffer.data(), m_buffer.data() + m_pos, m_end - m_pos);
        m_end -= m_pos;
        m_pos = 0;
        while (m_end < m_buffer.size() && !m_eof) {
            const std::size_t got = std::fread(m_buffer.data() + m_end, 1, m_buffer.size() - m_end, m_file);
            m_end += got;
            if (got == 0) m_eof = true;
        }
    }

    std::FILE* m_file;
    std::vector<unsigned char> m_buffer;
    std::size_t m_pos = 0;
    std::size_t m_end = 0;
    bool m_eof = false;
};

// A line after STL_prepare_line, cut into its first tokens.
struct Line {
    static constexpr int kMaxTokens = 5;  // "facet normal x y z": nothing after is looked at
    const char* token[kMaxTokens];
    std::size_t length[kMaxTokens];
    int count = 0;

    bool first_is(const char* keyword) const {
        if (count == 0) return false;
        const std::size_t n = std::strlen(keyword);
        if (length[0] != n) return false;
        for (std::size_t i = 0; i < n; ++i) {
            char c = token[0][i];
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
            if (c != keyword[i]) return false;
        }
        return true;
    }
    // Token i as a number; a missing or unparsable token gives 0.
    float number(int i) const {
        float v = 0.0f;
        if (i < count && !scan_float(token[i], length[i], v)) v = 0.0f;
        return v;
    }
};

bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_line_end(char c) { return c == '\r' || c == '\n' || c == '\0'; }

// STL_prepare_line: the line is lower-cased and ends at its first carriage
// return or line feed (or NUL). Lower-casing is done where a keyword is
// compared; numbers read the same in either case.
void STL_prepare_line(const char* p, std::size_t n, Line& line) {
    line.count = 0;
    std::size_t i = 0;
    while (i < n && line.count < Line::kMaxTokens) {
        const char c = p[i];
        if (is_line_end(c)) return;
        if (is_blank(c)) {
            ++i;
            continue;
        }
        const std::size_t start = i;
        while (i < n && !is_blank(p[i]) && !is_line_end(p[i])) ++i;
        line.token[line.count] = p + start;
        line.length[line.count] = i - start;
        ++line.count;
    }
}

struct ReadContext {
    ByteSource* in;
    SL_List** points;
    SL_List** vectors;
    FaceArray* faces;
};

bool add_face(ReadContext& c, const float vertices[9], const float normal[3]) {
    unsigned int* out = c.faces->add();
    if (out == nullptr) return false;
    return tmt_add_face_indices(vertices, normal, c.points, c.vectors, out) == 1;
}

// STL_read_long, STL_read_float, STL_read_short: exactly 4, 4 and 2 bytes in
// the file's (little-endian) order.
bool STL_read_long(ByteSource& in, std::int32_t& v) { return in.read(&v, 4) == 4; }
bool STL_read_float(ByteSource& in, float& v) { return in.read(&v, 4) == 4; }
bool STL_read_short(ByteSource& in, std::uint16_t& v) { return in.read(&v, 2) == 2; }

int STL_read_binary(ReadContext& c) {
    ByteSource& in = *c.in;
    unsigned char header[80];
    in.read(header, sizeof header);  // not checked: a short header fails at the count
    std::int32_t count = 0;
    if (!STL_read_long(in, count)) {
        set_error("Error reading a long");
        return 0;
    }
    if (count < 1) return 1;
    // A count the file cannot hold fails where the bytes run out, with
    // nothing of the mesh returned: no need to index what would be thrown
    // away (the reads would fail at the same facet with the same text).
    const std::size_t left = in.remaining_hint();
    if (left > 0 && left / kFacetBytes < static_cast<std::size_t>(count)) {
        // Indexing the first facet draws the search lists' random words, as
        // the full read would; later facets only draw in the rare case that
        // tmt_inserts_draw_random tells, and are then indexed as well.
        float f[12];
        std::uint16_t attribute;
        if (left >= kFacetBytes && in.read(f, sizeof f) == sizeof f && STL_read_short(in, attribute) &&
            !add_face(c, f + 3, f)) {
            set_error("Error adding the facet");
            return 0;
        }
        if (left < kFacetBytes || !tmt_inserts_draw_random()) {
            set_error(left % kFacetBytes < 48 ? "Error reading a float" : "Error reading a short");
            return 0;
        }
        --count;
    }
    // Room for the whole mesh where the file's size vouches for the count.
    c.faces->reserve(left > 0 ? static_cast<std::size_t>(count) : 1024);
    float f[12];
    constexpr std::size_t kAhead = 8;  // facets whose hash slots are loaded early
    for (std::int32_t i = 0; i < count; ++i) {
        if (count - i > static_cast<std::int32_t>(kAhead)) {
            if (const unsigned char* ahead = in.peek(kFacetBytes * (kAhead + 1))) {
                float g[12];
                std::memcpy(g, ahead + kAhead * kFacetBytes, sizeof g);
                tmt_prefetch_face(g + 3, g);
            }
        }
        if (const unsigned char* p = in.peek(kFacetBytes)) {
            std::memcpy(f, p, sizeof f);
            in.skip(kFacetBytes);
        } else {
            for (float& v : f)
                if (!STL_read_float(in, v)) {
                    set_error("Error reading a float");
                    return 0;
                }
            std::uint16_t attribute;
            if (!STL_read_short(in, attribute)) {
                set_error("Error reading a short");
                return 0;
            }
        }
        if (!add_face(c, f + 3, f)) {
            set_error("Error adding the facet");
            return 0;
        }
    }
    return 1;
}

// Reads the six lines after "facet normal ...".
int STL_read_facet(ReadContext& c, const float normal[3]) {
    static const char* const kVertexErrors[3] = {"Error reading the first point of the facet",
                                                 "Error reading the second point of the facet",
                                                 "Error reading the third point of the facet"};
    ByteSource& in = *c.in;
    const char* p;
    std::size_t n;
    Line line;
    if (!in.next_line(p, n)) {
        set_error("Error reading the facet");
        return 0;
    }
    STL_prepare_line(p, n, line);
    if (!line.first_is("outer")) {
        set_error("Error reading the facet - no outer");
        return 0;
    }
    float v[9];
    for (int k = 0; k < 3; ++k) {
        if (!in.next_line(p, n)) {
            set_error("Error reading the facet");
            return 0;
        }
        STL_prepare_line(p, n, line);
        if (!line.first_is("vertex")) {
            set_error(kVertexErrors[k]);
            return 0;
        }
        v[3 * k] = line.number(1);
        v[3 * k + 1] = line.number(2);
        v[3 * k + 2] = line.number(3);
    }
    if (!add_face(c, v, normal)) {
        set_error("Error adding the facet");
        return 0;
    }
    if (!in.next_line(p, n)) {
        set_error("Error reading the facet");
        return 0;
    }
    STL_prepare_line(p, n, line);
    if (!line.first_is("endloop")) {
        set_error("Error reading the facet - no endloop");
        return 0;
    }
    if (!in.next_line(p, n)) {
        set_error("Error reading the facet");
        return 0;
    }
    STL_prepare_line(p, n, line);
    // Intended: a missing "endfacet" fails without an error text of its own.
    return line.first_is("endfacet") ? 1 : 0;
}

int STL_read_solid(ReadContext& c) {
    const char* p;
    std::size_t n;
    Line line;
    while (c.in->next_line(p, n)) {
        STL_prepare_line(p, n, line);
        if (line.first_is("endsolid") || line.first_is("end")) return 1;
        if (line.first_is("facet")) {
            const float normal[3] = {line.number(2), line.number(3), line.number(4)};
            if (STL_read_facet(c, normal) != 1) {
                STL_print_error();
                return 0;
            }
        }
    }
    return 1;
}

int STL_read_ascii(ReadContext& c) {
    const char* p;
    std::size_t n;
    Line line;
    while (c.in->next_line(p, n)) {
        STL_prepare_line(p, n, line);
        if (line.first_is("solid") && STL_read_solid(c) != 1) {
            STL_print_error();
            return 0;
        }
    }
    return 1;
}

int STL_open(int type) {
    StlReaderState& s = stl_reader_state();
    if (type != kAsciiType && type != kBinaryType) {
        set_error("STL_open: invalid mode specified");
        return 0;
    }
    s.stream = open_stream(s.fileName.c_str(), type == kAsciiType ? "r" : "rb");
    if (s.stream == nullptr) {
        set_error("Cannot open input file");
        return 0;
    }
    return 1;
}

void STL_close() {
    StlReaderState& s = stl_reader_state();
    if (s.stream != nullptr) std::fclose(s.stream);
    s.stream = nullptr;
}

}  // namespace

StlReaderState& stl_reader_state() {
    static StlReaderState state;
    return state;
}

void reset_stl_reader_state() {
    STL_close();
    stl_reader_state() = StlReaderState();
}

FaceArray::~FaceArray() { std::free(m_data); }

bool FaceArray::reserve(std::size_t faces) {
    if (faces <= m_capacity) return true;
    if (faces > SIZE_MAX / (4 * sizeof(unsigned int))) return false;
    void* p = reallocate(m_data, faces * 4 * sizeof(unsigned int));
    if (p == nullptr) return false;
    m_data = static_cast<unsigned int*>(p);
    m_capacity = faces;
    return true;
}

unsigned int* FaceArray::add() {
    if (m_count == m_capacity && !reserve(std::max<std::size_t>(1024, m_capacity + m_capacity / 2))) return nullptr;
    return m_data + 4 * m_count++;
}

unsigned int* FaceArray::release() {
    unsigned int* out = m_data;
    if (out == nullptr || m_count < m_capacity) {
        // Trimmed to its size; an empty array is still a valid allocation.
        void* p = reallocate(m_data, std::max<std::size_t>(m_count * 4 * sizeof(unsigned int), 1));
        if (p != nullptr) out = static_cast<unsigned int*>(p);
    }
    m_data = nullptr;
    m_count = m_capacity = 0;
    return out;
}

int STL_file_type() {
    std::FILE* f = open_stream(stl_reader_state().fileName.c_str(), "r");
    if (f == nullptr) {
        set_error("Cannot open input file");
        return 0;
    }
    // Deliberate: the end of the file counts as a byte above 126, so a file
    // shorter than 150 bytes is read as binary.
    unsigned char bytes[kTypeTestBytes];
    const std::size_t got = std::fread(bytes, 1, sizeof bytes, f);
    std::fclose(f);
    if (got < kTypeTestBytes) return kBinaryType;
    for (unsigned char b : bytes)
        if (b > 126) return kBinaryType;
    return kAsciiType;
}

int stl_file_type_of(const char* fileName) {
    stl_reader_state().fileName = fileName != nullptr ? fileName : "";
    return STL_file_type();
}

void STL_print_error() { std::fprintf(stderr, "%s\n", stl_reader_state().error); }

int STL_read(const char* fileName, SL_List** points, SL_List** vectors, FaceArray& faces) {
    StlReaderState& s = stl_reader_state();
    STL_close();
    s.fileName = fileName != nullptr ? fileName : "";
    int result = 0;
    if (fileName == nullptr) {
        set_error("Cannot open input file");
    } else if (const int type = STL_file_type(); type != 0 && STL_open(type) == 1) {
        ByteSource in(s.stream);
        ReadContext c{&in, points, vectors, &faces};
        result = type == kAsciiType ? STL_read_ascii(c) : STL_read_binary(c);
    }
    // The stream is closed on failure too (nothing reads it afterwards).
    STL_close();
    if (result == 1) return 1;
    STL_print_error();
    return 0;
}

bool scan_float(const char* token, std::size_t length, float& value) {
    const char* end = token + length;
    // Plain decimal tokens go through from_chars, which rounds as strtof
    // does; everything else (hex, inf, nan, trailing junk, out of range)
    // goes through sscanf itself.
    const char* start = length > 0 && token[0] == '+' ? token + 1 : token;
    const char* first = start < end && *start == '-' && start == token ? start + 1 : start;
    if (first < end && ((*first >= '0' && *first <= '9') || *first == '.')) {
        float v;
        const std::from_chars_result r = std::from_chars(start, end, v, std::chars_format::general);
        if (r.ec == std::errc() && r.ptr == end) {
            value = v;
            return true;
        }
    }
    std::string copy(token, length);
    for (char& ch : copy)
        if (ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch - 'A' + 'a');
    return std::sscanf(copy.c_str(), "%f", &value) == 1;
}

double stl_unit_factor(int wantedUnit, int fileUnit) {
    if (wantedUnit == 1 && fileUnit == 2) return 25.4;
    if (wantedUnit == 2 && fileUnit == 1) return 0.03937007874015748;
    return 1.0;
}

}  // namespace zor

int StlFile(char* fileName, unsigned int* numPoints, double** points, unsigned int* numVectors, double** vectors,
            unsigned int* numFaces, unsigned int** faces, int wantedUnit, int fileUnit) {
    unsigned int* counts[3] = {numPoints, numVectors, numFaces};
    for (unsigned int* c : counts)
        if (c != nullptr) *c = 0;
    if (points != nullptr) *points = nullptr;
    if (vectors != nullptr) *vectors = nullptr;
    if (faces != nullptr) *faces = nullptr;
    const double factor = zor::stl_unit_factor(wantedUnit, fileUnit);

    zor::SL_List* pointList = nullptr;
    zor::SL_List* vectorList = nullptr;
    zor::TMT_init(&pointList, &vectorList);
    zor::FaceArray faceArray;
    // Running out of memory outside the index (the read buffer, the name)
    // fails the read like any other error, with the stream closed.
    const int read = zor::failure_on_bad_alloc(0, [&] { return zor::STL_read(fileName, &pointList, &vectorList, faceArray); });
    if (read != 1) {
        zor::STL_close();
        // The index is released now rather than at the next read.
        zor::TMT_free(pointList, vectorList);
        return 0;
    }
    zor::tmt_release_lookup();

    zor::MeshIndexState& s = zor::mesh_index_state();
    double* p = zor::tmt_take_points(zor::kPointKind, factor);
    double* v = p != nullptr ? zor::tmt_take_points(zor::kVectorKind, 1.0) : nullptr;
    unsigned int* f = v != nullptr ? faceArray.release() : nullptr;
    const unsigned int pointCount = s.points.count;
    const unsigned int vectorCount = s.vectors.count;
    const unsigned int faceCount = s.faceCount;
    s.points.head = s.points.tail = nullptr;
    s.vectors.head = s.vectors.tail = nullptr;
    zor::TMT_free(pointList, vectorList);
    if (f == nullptr) {
        std::free(p);
        std::free(v);
        return 0;
    }
    if (numPoints != nullptr) *numPoints = pointCount;
    if (numVectors != nullptr) *numVectors = vectorCount;
    if (numFaces != nullptr) *numFaces = faceCount;
    if (points != nullptr)
        *points = p;
    else
        std::free(p);
    if (vectors != nullptr)
        *vectors = v;
    else
        std::free(v);
    if (faces != nullptr)
        *faces = f;
    else
        std::free(f);
    return 1;
}
