// Builds the text of native profile files ("KOLP EXTRUDE FILE" and "KOLP SWEEP
// FILE") line by line, so that tests can write well-formed files and bend
// them (missing, reordered or odd lines) without typing whole files.
#pragma once

#include <string>
#include <vector>

namespace zortest {

class ProfileFileWriter {
public:
    // Magic, version 1, Z range, unit and tolerance lines of an extrusion file.
    static ProfileFileWriter Extrude(double zMin, double zMax, int unit, double tolerance = 0.005);
    // Magic, version 1, unit and tolerance lines of a sweep file.
    static ProfileFileWriter Sweep(int unit, double tolerance = 0.005);

    // Any line, as given (a newline is added).
    ProfileFileWriter& Raw(const std::string& line);
    // Segment lines as the library writes them.
    ProfileFileWriter& Line(double x, double y, double z);
    ProfileFileWriter& Arc(bool clockwise, double cx, double cy, double ex, double ey, double z = 0.0);
    // Drops header line index (0 is the magic).
    ProfileFileWriter& DropLine(size_t index);

    std::string Text() const;

private:
    std::vector<std::string> m_lines;
};

}  // namespace zortest
