// Builds the text of foreign profile and polygon files for tests and
// examples: Vericut XML and plain-text profiles, MachineWorks XML profiles,
// Sirius text profiles and Vericut polygon files. Numbers are written in the
// shortest fixed-point form that reads back exactly (never with an exponent,
// which the Vericut plain-text format reads differently).
#pragma once

#include <array>
#include <string>
#include <vector>

namespace zortest {

// Shortest fixed-point text of value that reads back as the same double.
std::string exact(double value);

// A Vericut "Sweep" or "Sor" document: <root?><Sweep ...>children</Sweep></root?>.
class VericutXmlWriter {
public:
    // <Sweep Zmin=".." Zmax="..">
    static VericutXmlWriter Sweep(double zMin, double zMax);
    // <Sor Tolerance="..">
    static VericutXmlWriter Sor(double tolerance);

    // <PT><X>x</X><second>y</second></PT>; second is "Y" or "Z".
    VericutXmlWriter& Pt(double x, double y, const std::string& second = "Y");
    // <ARC DIRECTION="attribute"><X>cx</X><Y>cy</Y><RADIUS>radius</RADIUS>
    // <DIRECTION>child</DIRECTION></ARC>, leaving out an empty attribute or
    // child and a negative radius.
    VericutXmlWriter& Arc(double cx, double cy, const std::string& attribute = "", const std::string& child = "",
                          double radius = -1);
    // Any child element text, as given.
    VericutXmlWriter& Raw(const std::string& xml);
    // Name of the profile element as written (default "Sweep" / "Sor").
    VericutXmlWriter& Name(const std::string& name);
    // Wraps the profile in a root element of this name.
    VericutXmlWriter& Root(const std::string& name);

    std::string Text() const;

private:
    std::string m_name;
    std::string m_attributes;
    std::string m_root;
    std::string m_children;
};

// A Vericut plain-text profile: three ignored lines, then for an extrusion
// zMin and zMax lines, for a turned profile a tolerance line, then points.
class VericutTextWriter {
public:
    // Fields as text, so that tests can write exponents or odd values.
    static VericutTextWriter Extrusion(const std::string& zMin, const std::string& zMax);
    static VericutTextWriter Sor(const std::string& tolerance);

    VericutTextWriter& Point(double x, double y);
    VericutTextWriter& Raw(const std::string& line);

    std::string Text() const;

private:
    std::vector<std::string> m_lines;
};

// A MachineWorks document: <mwprofile><profile x= y=>children</profile></mwprofile>.
class MachineWorksWriter {
public:
    // The start point, the first two attributes of "profile".
    MachineWorksWriter(double x0, double y0);

    // A child with two attributes (a point).
    MachineWorksWriter& Point(double x, double y);
    // A child with four attributes: centre and end of a clockwise arc.
    MachineWorksWriter& Arc(double cx, double cy, double ex, double ey);
    // A child with the attribute values given (named a0, a1, ...).
    MachineWorksWriter& Child(const std::vector<std::string>& values);

    std::string Text() const;

private:
    std::string m_start;
    std::string m_children;
};

using Point3 = std::array<double, 3>;

// A Sirius profile: "LINE = Ln (...)" and "ARC = An (...)" lines.
class SiriusWriter {
public:
    SiriusWriter& Line(const Point3& start, const Point3& end);
    // word: "CLW", "CCLW" or anything else.
    SiriusWriter& Arc(const Point3& start, const Point3& end, const Point3& centre, const std::string& word);
    SiriusWriter& Raw(const std::string& line);

    std::string Text() const;

private:
    std::vector<std::string> m_lines;
};

// A Vericut polygon file: two title lines, the format line "1", the flags
// line, then each polygon as its point count, points and normals.
class VericutPolygonWriter {
public:
    VericutPolygonWriter(int perVertexNormals, int orientation, int third = 1);

    // normals: one per point with per-vertex normals, else one.
    VericutPolygonWriter& Polygon(const std::vector<Point3>& points, const std::vector<Point3>& normals);
    VericutPolygonWriter& Raw(const std::string& line);
    // Replaces line index of the header (0 and 1 titles, 2 format, 3 flags).
    VericutPolygonWriter& Header(size_t index, const std::string& line);

    std::string Text() const;

private:
    std::vector<std::string> m_lines;
};

}  // namespace zortest
