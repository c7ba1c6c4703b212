// Builds object files for tests: each record kind is emitted as the reader
// expects its lines (labels are free, values in brackets), with the lines that
// depend on the file's version. A test then reads like "a cube of version 1.05
// with unit 2 and this matrix" instead of fifty typed lines.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zortest {

using Xyz = std::array<double, 3>;

// The geometry block shared by all solid records.
struct Geometry {
    bool present = false;  // the geometry flag (files after 1.01 carry it)
    std::vector<Xyz> vertices;
    std::vector<Xyz> list1, list2;
    std::vector<std::array<int, 3>> triangles;
};

// The common tail of every object record.
struct Tail {
    std::string text = "tail";
    int unit = 1;
    int extra = 0;  // non-zero adds two lines and, after 1.09, the flag line
    int flag = 0;
    std::array<float, 4> quad = {0.25f, 0.5f, 0.75f, 1.0f};
    double matrix[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    std::array<float, 4> vector = {0, 0, 0, 0};
    std::string attachName = "None";
    std::string attachKey = "1";
    int attachIndex = 0;
    int furtherLines = 0;
    bool nestedBlock = false;
};

class ObjectFileWriter {
public:
    // version is the file version x 100 (115 for 1.15).
    explicit ObjectFileWriter(int version);

    // "// Version: 1.15"
    std::string versionLine() const;

    // Building blocks.
    ObjectFileWriter& line(const std::string& text);
    ObjectFileWriter& field(const std::string& label, const std::string& value);
    ObjectFileWriter& field(const std::string& label, double value);
    ObjectFileWriter& open(const std::string& keyword);  // "keyword {"
    ObjectFileWriter& close();                           // "}"
    ObjectFileWriter& geometry(const Geometry& g, const std::string& name);
    ObjectFileWriter& tail(const Tail& t);  // ends with the record's "}"

    // Whole records (opener, type-specific lines, geometry block, tail).
    ObjectFileWriter& cube(double d1, double d2, double d3, const std::string& name, const Tail& t = {},
                           const Geometry& g = {}, const std::array<std::string, 3>& texts = {"t4", "t5", "t6"});
    ObjectFileWriter& cylinder(double d1, double d2, double d3, const std::string& name, const Tail& t = {},
                               const Geometry& g = {});
    ObjectFileWriter& cone(double d1, double d2, const std::string& name, const Tail& t = {}, const Geometry& g = {});
    ObjectFileWriter& sphere(double d1, const std::string& name, const Tail& t = {}, const Geometry& g = {});
    ObjectFileWriter& torus(double d1, double d2, const std::string& name, const Tail& t = {}, const Geometry& g = {});
    // A "C3dObjectFile" record referring to file.
    ObjectFileWriter& fileReference(const std::string& file, const std::string& name, const Tail& t = {});

    // A "C3dObjectMesh" record: g (forced present) holds its vertices and
    // triangles.
    ObjectFileWriter& mesh(const std::string& name, Geometry g, const Tail& t = {});
    // "C3dObjectPart" and "C3dObjectTool" (with the tool's lines of files
    // before 1.08).
    ObjectFileWriter& part(const std::string& name, const Tail& t = {}, const Geometry& g = {});
    ObjectFileWriter& tool(const std::string& name, const Tail& t = {}, const Geometry& g = {});

    // A "C3dObjectEngin" record; p[i] is the engine parameter pi (p[0] unused,
    // integers written as such). A spindle's vector is 1 2 3; p21..p23 are
    // 21..23.
    struct Engine {
        std::string name = "X";
        int kind = 1;
        int unit = 1;
        Xyz axis = {0, 0, 1};
        int flag = 0;
        std::array<double, 20> p = {0, 0, 0, 0, 0, 0, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19};
        std::string key = "KEY";
        int index = 0;
    };
    ObjectFileWriter& engine(const Engine& e);

    // The collision section, old form (files up to 1.12).
    struct Pair {
        std::string first, second;
        int code = 0;
        double value = 0;
    };
    ObjectFileWriter& collisionOld(const std::vector<Pair>& pairs);
    // New form (from 1.13): the value of every pair, the count, and the
    // "A:B,c,B,c" lines as given.
    ObjectFileWriter& collisionNew(double value, int count, const std::vector<std::string>& lines);

    // The body lines (everything after the version line).
    const std::vector<std::string>& body() const { return m_lines; }
    std::string plain() const;
    std::string scrambled(const std::vector<int>& keys = {42, 7, 123, 999}) const;

private:
    using Line = std::pair<std::string, std::optional<std::string>>;  // a plain line without value
    ObjectFileWriter& solid(const std::string& keyword, const std::vector<Line>& lines, int options,
                            const std::string& name, const Tail& t, const Geometry& g);

    int m_version;
    std::vector<std::string> m_lines;

public:
    // Profile records: the outline block and the extrusion and revolution
    // records that hold one.
    struct ProfileSegment {
        std::string keyword;         // "LINE", "CLW", "CCLW" or anything else
        std::vector<double> values;  // written comma-separated in brackets
    };
    struct Outline {
        std::vector<ProfileSegment> segments;
        int closed = 0;            // the closed flag of files before 1.14
        std::optional<int> count;  // the count line; segments.size() when empty
        int trailingLines = 1;     // lines before the block's "}"
    };
    ObjectFileWriter& outline(const Outline& o);
    ObjectFileWriter& extrusion(const Xyz& direction, double length, const Outline& o, const std::string& name,
                                const Tail& t = {}, const Geometry& g = {});
    ObjectFileWriter& revolution(double angle, const Outline& o, const std::string& name, const Tail& t = {},
                                 const Geometry& g = {});
};

std::string format_number(double value);

}  // namespace zortest
