#include "support/DxfWriter.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace zortest {

namespace {

// Shortest text that reads back as the same double.
std::string number(double v) {
    char text[40];
    for (int precision = 1; precision <= 17; ++precision) {
        std::snprintf(text, sizeof text, "%.*g", precision, v);
        if (std::strtod(text, nullptr) == v) break;
    }
    return text;
}

}  // namespace

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

DxfWriter& DxfWriter::Line(double x0, double y0, double x1, double y1, const std::string& layer) {
    Start("LINE", layer);
    const double values[] = {x0, y0, 0, x1, y1, 0};
    const int codes[] = {10, 20, 30, 11, 21, 31};
    for (int i = 0; i < 6; ++i) Pair(m_entities, codes[i], number(values[i]));
    return *this;
}

DxfWriter& DxfWriter::Round(const char* type, double cx, double cy, double radius, const std::string& layer) {
    Start(type, layer);
    Pair(m_entities, 10, number(cx));
    Pair(m_entities, 20, number(cy));
    Pair(m_entities, 30, "0.0");
    Pair(m_entities, 40, number(radius));
    return *this;
}

DxfWriter& DxfWriter::Arc(double cx, double cy, double radius, double startDegrees, double endDegrees,
                          const std::string& layer) {
    Round("ARC", cx, cy, radius, layer);
    Pair(m_entities, 50, number(startDegrees));
    Pair(m_entities, 51, number(endDegrees));
    return *this;
}

DxfWriter& DxfWriter::Circle(double cx, double cy, double radius, const std::string& layer) {
    return Round("CIRCLE", cx, cy, radius, layer);
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
    // A block's LINE comes before ENTITIES and is no part of the drawing.
    static const std::pair<int, const char*> kSections[] = {
        {0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"},   {1, "AC1009"}, {0, "ENDSEC"}, {0, "SECTION"},
        {2, "TABLES"},  {0, "TABLE"},  {2, "LAYER"},      {0, "ENDTAB"}, {0, "ENDSEC"}, {0, "SECTION"},
        {2, "BLOCKS"},  {0, "BLOCK"},  {8, "BlockLayer"}, {2, "Unused"}, {0, "LINE"},   {8, "BlockLayer"},
        {10, "7.0"},    {20, "7.0"},   {30, "7.0"},       {11, "7.0"},   {21, "7.0"},   {31, "7.0"},
        {0, "ENDBLK"},  {0, "ENDSEC"}};
    std::string out;
    if (m_options.sections)
        for (const auto& pair : kSections) Pair(out, pair.first, pair.second);
    Pair(out, 0, "SECTION");
    Pair(out, 2, "ENTITIES");
    out += m_entities;
    Pair(out, 0, "ENDSEC");
    Pair(out, 0, "EOF");
    return out;
}

}  // namespace zortest
