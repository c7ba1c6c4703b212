// Builds foreign profile and polygon files for tests and examples: Vericut XML and plain-text profiles, MachineWorks
// XML profiles, Sirius text profiles and Vericut polygon files. Numbers are written in the shortest fixed-point form
// that reads back exactly (never with an exponent, which the Vericut plain-text format reads differently).
#pragma once

#include <array>
#include <string>
#include <vector>

namespace zortest {

using Point3 = std::array<double, 3>;

// Text made of lines, each ended by a newline.
template <class Self>
class LineWriter {
public:
    Self& Raw(const std::string& line) {
        m_lines.push_back(line);
        return static_cast<Self&>(*this);
    }
    std::string Text() const {
        std::string text;
        for (const std::string& line : m_lines) text += line + "\n";
        return text;
    }

protected:
    std::vector<std::string> m_lines;
};

// <?xml?><root?><Sweep Zmin Zmax | Sor Tolerance>children</...></root?>
class VericutXmlWriter {
public:
    static VericutXmlWriter Sweep(double zMin, double zMax);
    static VericutXmlWriter Sor(double tolerance);

    // <PT><X>x</X><second>y</second></PT>; second is "Y" or "Z".
    VericutXmlWriter& Pt(double x, double y, const std::string& second = "Y");
    // <ARC DIRECTION="attribute"><X/><Y/><RADIUS/><DIRECTION>child</DIRECTION></ARC>, leaving out an empty
    // attribute or child and a negative radius.
    VericutXmlWriter& Arc(double cx, double cy, const std::string& attribute = "", const std::string& child = "",
                          double radius = -1);
    VericutXmlWriter& Raw(const std::string& xml);
    VericutXmlWriter& Name(const std::string& name);  // profile element name as written
    VericutXmlWriter& Root(const std::string& name);  // wraps the profile in this root element
    std::string Text() const;

private:
    std::string m_name, m_attributes, m_root, m_children;
};

// Three ignored lines, then zMin and zMax lines (extrusion) or a tolerance line (turned profile), then points.
class VericutTextWriter : public LineWriter<VericutTextWriter> {
public:
    static VericutTextWriter Extrusion(const std::string& zMin, const std::string& zMax);
    static VericutTextWriter Sor(const std::string& tolerance);
    VericutTextWriter& Point(double x, double y);
};

// <mwprofile><profile x= y=>children</profile></mwprofile>
class MachineWorksWriter {
public:
    MachineWorksWriter(double x0, double y0);  // the start point
    MachineWorksWriter& Point(double x, double y);
    MachineWorksWriter& Arc(double cx, double cy, double ex, double ey);  // a clockwise arc
    MachineWorksWriter& Child(const std::vector<std::string>& values);    // attributes a0, a1, ...
    std::string Text() const;

private:
    std::string m_start, m_children;
};

// "LINE = Ln (...)" and "ARC = An (...)" lines; the arc word is "CLW", "CCLW" or anything else.
class SiriusWriter : public LineWriter<SiriusWriter> {
public:
    SiriusWriter& Line(const Point3& start, const Point3& end);
    SiriusWriter& Arc(const Point3& start, const Point3& end, const Point3& centre, const std::string& word);
};

// Two title lines, the format line "1", the flags line, then each polygon as its point count, points and normals
// (one per point with per-vertex normals, else one).
class VericutPolygonWriter : public LineWriter<VericutPolygonWriter> {
public:
    VericutPolygonWriter(int perVertexNormals, int orientation, int third = 1);
    VericutPolygonWriter& Polygon(const std::vector<Point3>& points, const std::vector<Point3>& normals);
    // Replaces header line index (0 and 1 titles, 2 format, 3 flags).
    VericutPolygonWriter& Header(size_t index, const std::string& line);
};

}  // namespace zortest
