// Builds the text of DXF drawings entity by entity, so that tests, examples
// and benchmarks can make well-formed drawings and bend them (no layer,
// extra or odd group pairs, CR LF line ends, sections before ENTITIES)
// without typing whole files.
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
    DxfWriter& Line(double x0, double y0, double x1, double y1, const std::string& layer = "0", double z = 0.0);
    DxfWriter& Arc(double cx, double cy, double radius, double startDegrees, double endDegrees,
                   const std::string& layer = "0");
    DxfWriter& Circle(double cx, double cy, double radius, const std::string& layer = "0");
    // Any group pair, as given, inside the ENTITIES section.
    DxfWriter& Group(int code, const std::string& value);
    DxfWriter& Raw(const std::string& line);

    // The whole drawing, ending in "0 ENDSEC 0 EOF".
    std::string Text() const;

    // Shortest text that reads back as the same double.
    static std::string Number(double v);

private:
    void Pair(std::string& out, int code, const std::string& value) const;
    void Start(const char* type, const std::string& layer);

    Options m_options;
    std::string m_entities;
    int m_handle = 0x100;
};

}  // namespace zortest
