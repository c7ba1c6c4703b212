// Builds native profile files ("KOLP EXTRUDE FILE", "KOLP SWEEP FILE") line by line, in the library's own formats,
// so that tests can write well-formed files and bend them with raw lines.
#pragma once

#include <string>

namespace zortest {

class ProfileFileWriter {
public:
    // Magic, version 1, (Z range,) unit and tolerance lines.
    static ProfileFileWriter Extrude(double zMin, double zMax, int unit, double tolerance = 0.005);
    static ProfileFileWriter Sweep(int unit, double tolerance = 0.005);

    ProfileFileWriter& Raw(const std::string& line);
    ProfileFileWriter& Line(double x, double y, double z);
    ProfileFileWriter& Arc(bool clockwise, double cx, double cy, double ex, double ey);
    const std::string& Text() const { return m_text; }

private:
    std::string m_text;
};

}  // namespace zortest
