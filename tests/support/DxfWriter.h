// Builds DXF drawings entity by entity for tests, examples and benchmarks:
// well-formed ones, and bent ones (no layer, odd group pairs, CR LF line
// ends, sections before ENTITIES).
#pragma once

#include <string>

namespace zortest {

class DxfWriter {
public:
    struct Options {
        bool crlf = false;      // CR LF line ends
        bool sections = false;  // HEADER, TABLES and a BLOCKS section holding a LINE before ENTITIES
        bool handles = false;   // a group 5 handle on every entity
    };
    DxfWriter() = default;
    explicit DxfWriter(Options options) : m_options(options) {}

    // Entities; an empty layer writes no group 8.
    DxfWriter& Line(double x0, double y0, double x1, double y1, const std::string& layer = "0");
    DxfWriter& Arc(double cx, double cy, double radius, double startDegrees, double endDegrees,
                   const std::string& layer = "0");
    DxfWriter& Circle(double cx, double cy, double radius, const std::string& layer = "0");
    // A group pair, or one line, as given inside the ENTITIES section.
    DxfWriter& Group(int code, const std::string& value);
    DxfWriter& Raw(const std::string& line);
    // The whole drawing, ending in "0 ENDSEC 0 EOF".
    std::string Text() const;

private:
    void Pair(std::string& out, int code, const std::string& value) const;
    void Start(const char* type, const std::string& layer);
    DxfWriter& Round(const char* type, double cx, double cy, double radius, const std::string& layer);

    Options m_options;
    std::string m_entities;
    int m_handle = 0x100;
};

}  // namespace zortest
