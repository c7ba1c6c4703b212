#include "support/DxfWriter.h"

#include <cstdio>
#include <cstdlib>

namespace zortest {

std::string DxfWriter::Number(double v) {
    char text[40];
    for (int precision = 1; precision <= 17; ++precision) {
        std::snprintf(text, sizeof text, "%.*g", precision, v);
        if (std::strtod(text, nullptr) == v) break;
    }
    return text;
}

void DxfWriter::Pair(std::string& out, int code, const std::string& value) const {
    char head[16];
    std::snprintf(head, sizeof head, "%3d", code);
    const char* eol = m_options.crlf ? "\r\n" : "\n";
    out.append(head).append(eol).append(value).append(eol);
}

void DxfWriter::Start(const char* type, const std::string& layer) {
    Pair(m_entities, 0, type);
    if (m_options.handles) {
        char handle[16];
        std::snprintf(handle, sizeof handle, "%X", m_handle++);
        Pair(m_entities, 5, handle);
    }
    if (!layer.empty()) Pair(m_entities, 8, layer);
}

DxfWriter& DxfWriter::Line(double x0, double y0, double x1, double y1, const std::string& layer, double z) {
    Start("LINE", layer);
    Pair(m_entities, 10, Number(x0));
    Pair(m_entities, 20, Number(y0));
    Pair(m_entities, 30, Number(z));
    Pair(m_entities, 11, Number(x1));
    Pair(m_entities, 21, Number(y1));
    Pair(m_entities, 31, Number(z));
    return *this;
}

DxfWriter& DxfWriter::Arc(double cx, double cy, double radius, double startDegrees, double endDegrees,
                          const std::string& layer) {
    Start("ARC", layer);
    Pair(m_entities, 10, Number(cx));
    Pair(m_entities, 20, Number(cy));
    Pair(m_entities, 30, "0.0");
    Pair(m_entities, 40, Number(radius));
    Pair(m_entities, 50, Number(startDegrees));
    Pair(m_entities, 51, Number(endDegrees));
    return *this;
}

DxfWriter& DxfWriter::Circle(double cx, double cy, double radius, const std::string& layer) {
    Start("CIRCLE", layer);
    Pair(m_entities, 10, Number(cx));
    Pair(m_entities, 20, Number(cy));
    Pair(m_entities, 30, "0.0");
    Pair(m_entities, 40, Number(radius));
    return *this;
}

DxfWriter& DxfWriter::Group(int code, const std::string& value) {
    Pair(m_entities, code, value);
    return *this;
}

DxfWriter& DxfWriter::Raw(const std::string& line) {
    m_entities.append(line).append(m_options.crlf ? "\r\n" : "\n");
    return *this;
}

std::string DxfWriter::Text() const {
    std::string out;
    if (m_options.sections) {
        Pair(out, 0, "SECTION");
        Pair(out, 2, "HEADER");
        Pair(out, 9, "$ACADVER");
        Pair(out, 1, "AC1009");
        Pair(out, 0, "ENDSEC");
        Pair(out, 0, "SECTION");
        Pair(out, 2, "TABLES");
        Pair(out, 0, "TABLE");
        Pair(out, 2, "LAYER");
        Pair(out, 0, "ENDTAB");
        Pair(out, 0, "ENDSEC");
        // A block's LINE comes before ENTITIES and is no part of the drawing.
        Pair(out, 0, "SECTION");
        Pair(out, 2, "BLOCKS");
        Pair(out, 0, "BLOCK");
        Pair(out, 8, "BlockLayer");
        Pair(out, 2, "Unused");
        Pair(out, 0, "LINE");
        Pair(out, 8, "BlockLayer");
        for (int code : {10, 20, 30, 11, 21, 31}) Pair(out, code, "7.0");
        Pair(out, 0, "ENDBLK");
        Pair(out, 0, "ENDSEC");
    }
    Pair(out, 0, "SECTION");
    Pair(out, 2, "ENTITIES");
    out += m_entities;
    Pair(out, 0, "ENDSEC");
    Pair(out, 0, "EOF");
    return out;
}

}  // namespace zortest
