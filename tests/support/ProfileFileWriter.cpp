#include "support/ProfileFileWriter.h"

#include <cstdio>

namespace zortest {

namespace {

std::string fixed(double value) {
    char buffer[400];
    std::snprintf(buffer, sizeof buffer, "%f", value);
    return buffer;
}

}  // namespace

ProfileFileWriter ProfileFileWriter::Extrude(double zMin, double zMax, int unit, double tolerance) {
    ProfileFileWriter w;
    w.Raw("KOLP EXTRUDE FILE").Raw("Version < 1 >").Raw("Z < " + fixed(zMin) + " " + fixed(zMax) + " >");
    w.Raw("Unit < " + std::to_string(unit) + " >").Raw("Toler < " + fixed(tolerance) + " >");
    return w;
}

ProfileFileWriter ProfileFileWriter::Sweep(int unit, double tolerance) {
    ProfileFileWriter w;
    w.Raw("KOLP SWEEP FILE").Raw("Version < 1 >");
    w.Raw("Unit < " + std::to_string(unit) + " >").Raw("Toler < " + fixed(tolerance) + " >");
    return w;
}

ProfileFileWriter& ProfileFileWriter::Raw(const std::string& line) {
    m_lines.push_back(line);
    return *this;
}

ProfileFileWriter& ProfileFileWriter::Line(double x, double y, double z) {
    return Raw("LINE < " + fixed(x) + " " + fixed(y) + " " + fixed(z) + " >");
}

ProfileFileWriter& ProfileFileWriter::Arc(bool clockwise, double cx, double cy, double ex, double ey, double z) {
    std::string axis = clockwise ? "0.000000 0.000000 -1.000000" : "0.000000 0.000000 1.000000";
    return Raw(std::string(clockwise ? "CLW < " : "CCLW < ") + fixed(cx) + " " + fixed(cy) + " " + fixed(z) + " " +
               axis + " " + fixed(ex) + " " + fixed(ey) + " " + fixed(z) + ">");
}

ProfileFileWriter& ProfileFileWriter::DropLine(size_t index) {
    if (index < m_lines.size()) m_lines.erase(m_lines.begin() + static_cast<long>(index));
    return *this;
}

std::string ProfileFileWriter::Text() const {
    std::string text;
    for (const std::string& line : m_lines) text += line + "\n";
    return text;
}

}  // namespace zortest
