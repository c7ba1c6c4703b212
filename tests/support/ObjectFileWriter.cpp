#include "support/ObjectFileWriter.h"

#include <cstdio>

#include "support/Scrambler.h"

namespace zortest {

std::string format_number(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

namespace {

std::string numbers(const double* values, int n, const char* separator = " ") {
    std::string out;
    for (int i = 0; i < n; ++i) {
        if (i > 0) out += separator;
        out += format_number(values[i]);
    }
    return out;
}

std::string floats(const std::array<float, 4>& values, int n) {
    double wide[4];
    for (int i = 0; i < n; ++i) wide[i] = values[static_cast<std::size_t>(i)];
    return numbers(wide, n);
}

std::string xyz(const Xyz& p) { return numbers(p.data(), 3, ","); }

}  // namespace

ObjectFileWriter::ObjectFileWriter(int version) : m_version(version) {}

std::string ObjectFileWriter::versionLine() const {
    char text[64];
    std::snprintf(text, sizeof text, "// Version: %d.%02d", m_version / 100, m_version % 100);
    return text;
}

ObjectFileWriter& ObjectFileWriter::line(const std::string& text) {
    m_lines.push_back(text);
    return *this;
}

ObjectFileWriter& ObjectFileWriter::field(const std::string& label, const std::string& value) {
    return line(label + " < " + value + " >");
}

ObjectFileWriter& ObjectFileWriter::field(const std::string& label, double value) {
    return field(label, format_number(value));
}

ObjectFileWriter& ObjectFileWriter::open(const std::string& keyword) { return line(keyword + " {"); }

ObjectFileWriter& ObjectFileWriter::close() { return line("}"); }

ObjectFileWriter& ObjectFileWriter::geometry(const Geometry& g, const std::string& name) {
    if (m_version > 101) field("Has Geometry", g.present ? "1" : "0");
    field("Geometry Kind", "0");
    field("Geometry Size", "0");
    if (g.present) {
        field("Num Vertices", std::to_string(g.vertices.size()));
        for (const Xyz& v : g.vertices) field("Vertex", xyz(v));
        for (const auto* list : {&g.list1, &g.list2}) {
            field("Num Points", std::to_string(list->size()));
            for (const Xyz& p : *list) field("Point", xyz(p));
        }
        field("Num Normals", "0");
        field("Smoothing", "0");
        field("Num Triangles", std::to_string(g.triangles.size()));
        for (const auto& t : g.triangles)
            field("Triangle", std::to_string(t[0]) + "/" + std::to_string(t[1]) + "/" + std::to_string(t[2]));
        open("Mesh Data");
        field("Unused", "0");
        close();
    } else if (m_version <= 101) {
        // Old files have no flag: a field that is not "Num Vertices" says
        // there is no vertex list.
        field("Label", name);
    }
    return field("Name", name);
}

ObjectFileWriter& ObjectFileWriter::tail(const Tail& t) {
    line("Placement");
    field("Tail Text", t.text);
    field("Unit", std::to_string(t.unit));
    if (m_version >= 113) field("Layer", "0");
    if (m_version > 106) {
        field("Extra", std::to_string(t.extra));
        if (t.extra != 0) {
            line("Extra line 1");
            line("Extra line 2");
            if (m_version > 109) field("Flag", std::to_string(t.flag));
        }
    }
    field("Colour", floats(t.quad, 4));
    line("Matrix");
    for (const auto& row : t.matrix) field("Row", numbers(row, 4));
    field("Vector", floats(t.vector, 4));
    for (int i = 0; i < 4; ++i) line("Material line " + std::to_string(i));
    for (int block = 0; block < 3; ++block) {
        field("Triple", "0 0 0");
        for (int i = 0; i < 3; ++i) line("Light line " + std::to_string(i));
    }
    for (int i = 0; i < 4; ++i) field("Option", "0");
    line("Reserved 1");
    line("Reserved 2");
    field("Attachment", t.attachName);
    if (m_version >= 103) field("Attachment Key", t.attachKey);
    if (m_version >= 106) field("Attachment Index", std::to_string(t.attachIndex));
    field("Further Lines", std::to_string(t.furtherLines));
    for (int i = 0; i < t.furtherLines; ++i) line("Further " + std::to_string(i));
    field("Nested", t.nestedBlock ? "1" : "0");
    if (t.nestedBlock) {
        open("Nested Block");
        field("Inner", "1");
        open("Inner Block");
        close();
        close();
    }
    if (m_version < 115) {
        open("Old Block");
        field("Old", "0");
        close();
    }
    return close();
}

// A record whose type-specific lines are plain lines (no value) and fields,
// then `options` numbered lines, the geometry block and the tail.
ObjectFileWriter& ObjectFileWriter::solid(const std::string& keyword, const std::vector<Line>& lines, int options,
                                          const std::string& name, const Tail& t, const Geometry& g) {
    open(keyword);
    for (const Line& l : lines) l.second ? field(l.first, *l.second) : line(l.first);
    const std::string kind = keyword.substr(9);  // "C3dObject" dropped
    for (int i = 0; i < options; ++i) line(kind + " option " + std::to_string(i));
    return geometry(g, name).tail(t);
}

ObjectFileWriter& ObjectFileWriter::cube(double d1, double d2, double d3, const std::string& name, const Tail& t,
                                         const Geometry& g, const std::array<std::string, 3>& texts) {
    return solid("C3dObjectCube",
                 {{"Width", format_number(d2)},
                  {"Depth", format_number(d3)},
                  {"Height", format_number(d1)},
                  {"Width Text", texts[1]},
                  {"Depth Text", texts[2]},
                  {"Height Text", texts[0]}},
                 0, name, t, g);
}

ObjectFileWriter& ObjectFileWriter::cylinder(double d1, double d2, double d3, const std::string& name, const Tail& t,
                                             const Geometry& g) {
    return solid("C3dObjectCylinder",
                 {{"Cylinder line 1", {}},
                  {"Cylinder line 2", {}},
                  {"Radius", format_number(d1)},
                  {"Height", format_number(d2)},
                  {"Top Radius", format_number(d3)}},
                 6, name, t, g);
}

ObjectFileWriter& ObjectFileWriter::cone(double d1, double d2, const std::string& name, const Tail& t,
                                         const Geometry& g) {
    return solid("C3dObjectCone", {{"Cone line", {}}, {"Radius", format_number(d1)}, {"Height", format_number(d2)}}, 4,
                 name, t, g);
}

ObjectFileWriter& ObjectFileWriter::sphere(double d1, const std::string& name, const Tail& t, const Geometry& g) {
    return solid("C3dObjectSphere", {{"Radius", format_number(d1)}}, 5, name, t, g);
}

ObjectFileWriter& ObjectFileWriter::torus(double d1, double d2, const std::string& name, const Tail& t,
                                          const Geometry& g) {
    return solid("C3dObjectTorus",
                 {{"Major Radius", format_number(d1)}, {"Torus line", {}}, {"Minor Radius", format_number(d2)}}, 5,
                 name, t, g);
}

ObjectFileWriter& ObjectFileWriter::fileReference(const std::string& file, const std::string& name, const Tail& t) {
    open("C3dObjectFile");
    field("First", "3");
    field("File", file);
    field("Text", "reference");
    if (m_version > 109) field("Flag", "1");
    field("Name", name);
    return tail(t);
}

ObjectFileWriter& ObjectFileWriter::mesh(const std::string& name, Geometry g, const Tail& t) {
    g.present = true;
    open("C3dObjectMesh");
    return geometry(g, name).tail(t);
}

ObjectFileWriter& ObjectFileWriter::part(const std::string& name, const Tail& t, const Geometry& g) {
    return solid("C3dObjectPart", {}, 6, name, t, g);
}

ObjectFileWriter& ObjectFileWriter::tool(const std::string& name, const Tail& t, const Geometry& g) {
    std::vector<Line> lines;
    if (m_version < 108)
        lines = {
            {"Tool line 1", {}}, {"Tool line 2", {}}, {"Diameter", "10"}, {"Length", "50"}, {"Corner Radius", "1"}};
    return solid("C3dObjectTool", lines, 6, name, t, g);
}

ObjectFileWriter& ObjectFileWriter::engine(const Engine& e) {
    open("C3dObjectEngin");
    field("Name", e.name);
    field("Kind", std::to_string(e.kind));
    field("Unit", std::to_string(e.unit));
    field("Axis", numbers(e.axis.data(), 3));
    if (m_version > 104) {
        open("Engine Block").field("Inner", "0").close();
        field("Engine Value", "0");
    }
    field("Engine Reserved", "0");
    field("Direction Flag", std::to_string(e.flag));
    // p17 comes before p16 in the file.
    for (int i : {6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 17, 16, 18, 19})
        field("P" + std::to_string(i), e.p[static_cast<std::size_t>(i)]);
    if (e.kind == 2) {
        field("Spindle Vector", "1 2 3");
        if (m_version > 104) {
            field("Spindle Value", "0");
            open("Spindle Block").field("Inner", "0").close();
        }
        field("P21", "21");
    }
    if (m_version >= 102) field("Spindle Key", e.key);
    if (m_version >= 106) field("Index", std::to_string(e.index));
    if (m_version >= 112) {
        field("P22", "22");
        field("P23", "23");
    }
    return close();
}

ObjectFileWriter& ObjectFileWriter::collisionOld(const std::vector<Pair>& pairs) {
    field("Num Pairs", std::to_string(pairs.size()));
    for (const Pair& p : pairs) {
        line("Pair");
        line(p.first);
        line(p.second);
        field("Code", std::to_string(p.code));
        field("Value", p.value);
        line("End Pair");
    }
    return *this;
}

ObjectFileWriter& ObjectFileWriter::collisionNew(double value, int count, const std::vector<std::string>& lines) {
    field("Value", value);
    field("Num Pairs", std::to_string(count));
    field("Reserved", "0");
    for (const std::string& l : lines) line(l);
    return *this;
}

std::string ObjectFileWriter::plain() const {
    std::string out = versionLine() + "\n";
    for (const std::string& l : m_lines) out += l + "\n";
    return out;
}

std::string ObjectFileWriter::scrambled(const std::vector<int>& keys) const {
    return ScrambleFile(versionLine(), m_lines, keys);
}

// Profile records.

ObjectFileWriter& ObjectFileWriter::outline(const Outline& o) {
    open("Outline");
    if (m_version < 114) {
        for (int i = 0; i < 3; ++i) field("Outline Flag", "0");
        field("Closed", std::to_string(o.closed));
        for (int i = 0; i < 11; ++i) field("Outline Value", 0.5 * i);
        for (int i = 0; i < 3; ++i) field("Outline Option", "1");
    }
    field("Segments", std::to_string(o.count ? *o.count : static_cast<int>(o.segments.size())));
    for (const ProfileSegment& s : o.segments)
        line(s.keyword + " < " + numbers(s.values.data(), static_cast<int>(s.values.size()), ",") + " >");
    for (int i = 0; i < o.trailingLines; ++i) field("Outline Trailer", "0");
    return close();
}

ObjectFileWriter& ObjectFileWriter::extrusion(const Xyz& direction, double length, const Outline& o,
                                              const std::string& name, const Tail& t, const Geometry& g) {
    open("C3dObjectSplineExtrude");
    if (m_version < 115) {
        field("Extrude Flag", "0");
        field("Extrude Flag", "1");
    }
    field("Direction", numbers(direction.data(), 3));
    field("Length", length);
    field("Range", "0 1");
    outline(o);
    if (m_version < 115) {
        field("Triple", "0 0 0");
        field("Triple", "1 1 1");
        for (int i = 0; i < 4; ++i) field("Extrude Option", "0");
    }
    return geometry(g, name).tail(t);
}

ObjectFileWriter& ObjectFileWriter::revolution(double angle, const Outline& o, const std::string& name, const Tail& t,
                                               const Geometry& g) {
    open("C3dObjectSplineLathe");
    if (m_version < 114) {
        field("Lathe Value", 3.5);
        line("Lathe line 1");
        field("Angle", angle);
        line("Lathe line 2");
    }
    outline(o);
    if (m_version < 114) {
        field("Triple", "0 0 0");
        field("Triple", "1 1 1");
        for (int i = 0; i < 4; ++i) field("Lathe Option", "0");
    }
    return geometry(g, name).tail(t);
}

}  // namespace zortest
