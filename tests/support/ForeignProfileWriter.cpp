#include "support/ForeignProfileWriter.h"

#include <charconv>

namespace zortest {

namespace {

std::string exact(double value) {
    char buffer[400];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    return std::string(buffer, result.ptr);
}

std::string joined(const Point3& p, const char* separator) {
    return exact(p[0]) + separator + exact(p[1]) + separator + exact(p[2]);
}

}  // namespace

VericutXmlWriter VericutXmlWriter::Sweep(double zMin, double zMax) {
    VericutXmlWriter w;
    w.m_name = "Sweep";
    w.m_attributes = " Zmin=\"" + exact(zMin) + "\" Zmax=\"" + exact(zMax) + "\"";
    return w;
}

VericutXmlWriter VericutXmlWriter::Sor(double tolerance) {
    VericutXmlWriter w;
    w.m_name = "Sor";
    w.m_attributes = " Tolerance=\"" + exact(tolerance) + "\"";
    return w;
}

VericutXmlWriter& VericutXmlWriter::Pt(double x, double y, const std::string& second) {
    return Raw("<PT><X>" + exact(x) + "</X><" + second + ">" + exact(y) + "</" + second + "></PT>");
}

VericutXmlWriter& VericutXmlWriter::Arc(double cx, double cy, const std::string& attribute, const std::string& child,
                                        double radius) {
    std::string xml = "<ARC" + (attribute.empty() ? "" : " DIRECTION=\"" + attribute + "\"");
    xml += "><X>" + exact(cx) + "</X><Y>" + exact(cy) + "</Y>";
    if (radius >= 0) xml += "<RADIUS>" + exact(radius) + "</RADIUS>";
    if (!child.empty()) xml += "<DIRECTION>" + child + "</DIRECTION>";
    return Raw(xml + "</ARC>");
}

VericutXmlWriter& VericutXmlWriter::Raw(const std::string& xml) {
    m_children += "  " + xml + "\n";
    return *this;
}

VericutXmlWriter& VericutXmlWriter::Name(const std::string& name) {
    m_name = name;
    return *this;
}

VericutXmlWriter& VericutXmlWriter::Root(const std::string& name) {
    m_root = name;
    return *this;
}

std::string VericutXmlWriter::Text() const {
    std::string profile = "<" + m_name + m_attributes + ">\n" + m_children + "</" + m_name + ">\n";
    if (!m_root.empty()) profile = "<" + m_root + ">\n" + profile + "</" + m_root + ">\n";
    return "<?xml version=\"1.0\"?>\n" + profile;
}

VericutTextWriter VericutTextWriter::Extrusion(const std::string& zMin, const std::string& zMax) {
    return VericutTextWriter().Raw("VERICUT SWEEP PROFILE").Raw("ZORModelIo sample").Raw("").Raw(zMin).Raw(zMax);
}

VericutTextWriter VericutTextWriter::Sor(const std::string& tolerance) {
    return VericutTextWriter().Raw("VERICUT SOR PROFILE").Raw("ZORModelIo sample").Raw("").Raw(tolerance);
}

VericutTextWriter& VericutTextWriter::Point(double x, double y) { return Raw(exact(x) + "\t" + exact(y)); }

MachineWorksWriter::MachineWorksWriter(double x0, double y0)
    : m_start(" x=\"" + exact(x0) + "\" y=\"" + exact(y0) + "\"") {}

MachineWorksWriter& MachineWorksWriter::Point(double x, double y) { return Child({exact(x), exact(y)}); }

MachineWorksWriter& MachineWorksWriter::Arc(double cx, double cy, double ex, double ey) {
    return Child({exact(cx), exact(cy), exact(ex), exact(ey)});
}

MachineWorksWriter& MachineWorksWriter::Child(const std::vector<std::string>& values) {
    m_children += "    <element";
    for (size_t i = 0; i < values.size(); ++i) m_children += " a" + std::to_string(i) + "=\"" + values[i] + "\"";
    m_children += "/>\n";
    return *this;
}

std::string MachineWorksWriter::Text() const {
    return "<?xml version=\"1.0\"?>\n<mwprofile>\n  <profile" + m_start + ">\n" + m_children +
           "  </profile>\n</mwprofile>\n";
}

SiriusWriter& SiriusWriter::Line(const Point3& start, const Point3& end) {
    return Raw("LINE = L" + std::to_string(m_lines.size() + 1) + " (" + joined(start, ",") + "," + joined(end, ",") +
               ")");
}

SiriusWriter& SiriusWriter::Arc(const Point3& start, const Point3& end, const Point3& centre, const std::string& word) {
    return Raw("ARC = A" + std::to_string(m_lines.size() + 1) + " (" + joined(start, ",") + "," + joined(end, ",") +
               "," + joined(centre, ",") + "," + word + ")");
}

VericutPolygonWriter::VericutPolygonWriter(int perVertexNormals, int orientation, int third) {
    m_lines = {"VERICUT POLYGON FILE", "ZORModelIo sample", "1",
               std::to_string(perVertexNormals) + " " + std::to_string(orientation) + " " + std::to_string(third)};
}

VericutPolygonWriter& VericutPolygonWriter::Polygon(const std::vector<Point3>& points,
                                                    const std::vector<Point3>& normals) {
    Raw(std::to_string(points.size()));
    for (const Point3& p : points) Raw(joined(p, " "));
    for (const Point3& n : normals) Raw(joined(n, " "));
    return *this;
}

VericutPolygonWriter& VericutPolygonWriter::Header(size_t index, const std::string& line) {
    m_lines.at(index) = line;
    return *this;
}

}  // namespace zortest
