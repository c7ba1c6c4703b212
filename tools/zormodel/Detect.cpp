#include "Detect.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <pugixml.hpp>
#include <vector>

#include "Commands.h"
#include "objectfile/LineReader.h"
#include "objectfile/ObjectFileState.h"
#include "platform/crtpath.h"
#include "profile/ForeignProfileSource.h"

namespace zormodel {

namespace {

constexpr std::size_t kHeadSize = 4096;

std::string upper_trimmed(std::string_view line) {
    std::string s(zor::trim_white_space(line));
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::toupper(c); });
    return s;
}

std::vector<std::string_view> head_lines(std::string_view head, std::size_t most) {
    std::vector<std::string_view> lines;
    while (!head.empty() && lines.size() < most) {
        const std::size_t end = head.find('\n');
        lines.push_back(head.substr(0, end));
        if (end == std::string_view::npos) break;
        head.remove_prefix(end + 1);
    }
    return lines;
}

bool is_integer(std::string_view text) {
    text = zor::trim_white_space(text);
    if (!text.empty() && text[0] == '-') text.remove_prefix(1);
    return !text.empty() && text.size() < 7 &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

// Group code lines alternate with value lines: the first line is code 0 (or
// 999, a comment) and every other line of the head is a code.
bool looks_like_dxf(std::string_view head, bool wholeFile) {
    std::vector<std::string_view> lines = head_lines(head, 64);
    if (!wholeFile && lines.size() > 1) lines.pop_back();  // may be cut
    if (lines.size() < 2) return false;
    const std::string first(zor::trim_white_space(lines[0]));
    if (first != "0" && first != "999") return false;
    for (std::size_t i = 0; i < lines.size(); i += 2) {
        if (!is_integer(lines[i])) return false;
        // Whatever follows the end of the drawing is not looked at.
        if (i + 1 < lines.size() && zor::trim_white_space(lines[i + 1]) == "EOF") break;
    }
    return true;
}

// The object file's first line, read by the library's own reader (which
// descrambles it when it is not plain).
bool looks_like_object_file(const std::string& path) {
    std::FILE* stream = zor::open_file(path.c_str(), "r");
    if (stream == nullptr) return false;
    zor::object_file_state().firstLinePending = true;
    zor::object_file_state().fileIsPlain = false;
    // A scrambled file's version comes after six lines of key material, as
    // the reader's version check takes it.
    CString line;
    bool read = zor::read_object_line(stream, line);
    for (int i = 0; read && i < 6 && !zor::object_file_state().fileIsPlain; ++i)
        read = zor::read_object_line(stream, line);
    if (stream != nullptr) std::fclose(stream);
    zor::object_file_state().firstLinePending = true;
    return read && std::strncmp(line.GetString(), "// Version:", 11) == 0;
}

bool has_tool_element(const pugi::xml_node& node) {
    for (pugi::xml_node child : node.children()) {
        if (child.type() != pugi::node_element) continue;
        std::string name = child.name();
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::toupper(c); });
        if (name == "TOOL" || has_tool_element(child)) return true;
    }
    return false;
}

// The library's rule (first 150 bytes, all below 127, make an ASCII file),
// said as the reason a file goes to the binary reader.
std::string binary_reason(std::string_view head, long long size) {
    if (size < 150) return "the file is under 150 bytes";
    for (std::size_t i = 0; i < 150 && i < head.size(); ++i) {
        const auto c = static_cast<unsigned char>(head[i]);
        if (c > 126) {
            char text[64];
            std::snprintf(text, sizeof text, "byte 0x%02X at offset %zu", c, i);
            return text;
        }
    }
    return "";
}

}  // namespace

Detection detect_file(const std::string& path) {
    Detection d;
    struct stat info;
    if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode) || !readable_file(path)) return d;
    const long long size = info.st_size;
    std::string head(kHeadSize, '\0');
    {
        std::ifstream in(path, std::ios::binary);
        in.read(&head[0], static_cast<std::streamsize>(head.size()));
        head.resize(static_cast<std::size_t>(in.gcount()));
    }
    if (head.empty()) {
        d.kind = FileKind::Empty;
        return d;
    }
    const bool whole = static_cast<long long>(head.size()) == size;
    d.binaryReason = binary_reason(head, size);
    const std::vector<std::string_view> lines = head_lines(head, 8);
    const std::string first = upper_trimmed(lines[0].substr(0, 99));  // the profile reader's 100-byte line

    if (first.rfind("KOLP EXTRUDE FILE", 0) == 0)
        d.kind = FileKind::Extrusion;
    else if (first.rfind("KOLP SWEEP FILE", 0) == 0)
        d.kind = FileKind::Sweep;
    else if (first.rfind("VERICUT POLYGON FILE", 0) == 0)
        d.kind = FileKind::Polygon;
    else if (looks_like_dxf(head, whole))
        d.kind = FileKind::Dxf;
    if (d.kind != FileKind::Missing) return d;

    // Binary STL: the facet count agrees with the size (trailing bytes after
    // the last facet are tolerated, as the reader stops at the count).
    if (size >= 84 && head.size() >= 84) {
        std::uint32_t count = 0;
        for (int i = 3; i >= 0; --i) count = (count << 8) | static_cast<unsigned char>(head[80 + i]);
        const long long wanted = 84 + 50LL * count;
        if (count > 0 ? (size >= wanted && size - wanted < 50) : size == 84) {
            // A text file of exactly that size is not taken for one: STL
            // headers are text, facets are not.
            if (!d.binaryReason.empty() || std::memchr(head.data(), '\0', head.size()) != nullptr) {
                d.kind = FileKind::StlBinary;
                return d;
            }
        }
    }
    // The reader skips lines before "solid": look for it at any line start.
    std::string lower = head;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    const bool solid = first.rfind("SOLID", 0) == 0 || lower.find("\nsolid") != std::string::npos;
    if (solid && std::memchr(head.data(), '\0', head.size()) == nullptr) {
        if (lower.find("facet") != std::string::npos || lower.find("endsolid") != std::string::npos) {
            d.kind = d.binaryReason.empty() ? FileKind::StlAscii : FileKind::StlBinary;
            d.stlTextReadAsBinary = !d.binaryReason.empty();
            return d;
        }
    }
    if (looks_like_object_file(path)) {
        d.kind = FileKind::ObjectFile;
        return d;
    }

    std::size_t start = head.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    while (start < head.size() && zor::is_white_space(head[start])) ++start;
    if (start < head.size() && head[start] == '<') {
        pugi::xml_document doc;
        if (doc.load_file(path.c_str(), pugi::parse_default & ~pugi::parse_doctype)) {
            d.source = zor::detect_profile_source(path.c_str());
            d.kind = !d.source.empty()       ? FileKind::ForeignProfile
                     : has_tool_element(doc) ? FileKind::ToolLibrary
                                             : FileKind::Xml;
            if (d.kind == FileKind::Xml) d.source = doc.document_element().name();
            return d;
        }
    }
    if (std::memchr(head.data(), '\0', head.size()) != nullptr) {
        d.kind = FileKind::Binary;
        return d;
    }
    d.source = zor::detect_profile_source(path.c_str());
    d.kind = d.source.empty() ? FileKind::Text : FileKind::ForeignProfile;
    return d;
}

std::string describe(const Detection& d) {
    switch (d.kind) {
        case FileKind::Missing:
            return "not a readable file";
        case FileKind::Empty:
            return "an empty file";
        case FileKind::ObjectFile:
            return "an object file";
        case FileKind::Extrusion:
            return "a native extrusion profile";
        case FileKind::Sweep:
            return "a native sweep profile";
        case FileKind::ForeignProfile:
            return "a " + d.source + " profile";
        case FileKind::StlAscii:
            return "an STL file (ASCII)";
        case FileKind::StlBinary:
            return "an STL file (binary)";
        case FileKind::Dxf:
            return "a DXF drawing";
        case FileKind::Polygon:
            return "a Vericut polygon file";
        case FileKind::ToolLibrary:
            return "an XML tool library";
        case FileKind::Xml:
            return "an XML document (root <" + d.source + ">)";
        case FileKind::Text:
            return "a text file of no kind zormodel reads";
        case FileKind::Binary:
            return "a binary file of no kind zormodel reads";
    }
    return "";
}

Detection require_kind(const std::string& path, std::initializer_list<FileKind> accepted, const char* wanted) {
    const Detection d = detect_file(path);
    if (d.kind == FileKind::Missing) throw CLI::RuntimeError(fail_unreadable(path));
    if (std::find(accepted.begin(), accepted.end(), d.kind) != accepted.end()) return d;
    finish_progress();
    std::fprintf(stderr, "zormodel: %s: %s, not %s; try `zormodel info`\n", path.c_str(), describe(d).c_str(), wanted);
    throw CLI::RuntimeError(kExitRead);
}

}  // namespace zormodel
