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
    return w.Raw("Unit < " + std::to_string(unit) + " >").Raw("Toler < " + fixed(tolerance) + " >");
}

ProfileFileWriter ProfileFileWriter::Sweep(int unit, double tolerance) {
    ProfileFileWriter w;
    w.Raw("KOLP SWEEP FILE").Raw("Version < 1 >");
    return w.Raw("Unit < " + std::to_string(unit) + " >").Raw("Toler < " + fixed(tolerance) + " >");
}

ProfileFileWriter& ProfileFileWriter::Raw(const std::string& line) {
    m_text += line + "\n";
    return *this;
}

ProfileFileWriter& ProfileFileWriter::Line(double x, double y, double z) {
    return Raw("LINE < " + fixed(x) + " " + fixed(y) + " " + fixed(z) + " >");
}

ProfileFileWriter& ProfileFileWriter::Arc(bool clockwise, double cx, double cy, double ex, double ey) {
    return Raw(std::string(clockwise ? "CLW < " : "CCLW < ") + fixed(cx) + " " + fixed(cy) + " 0.000000 0.000000 " +
               (clockwise ? "0.000000 -1.000000 " : "0.000000 1.000000 ") + fixed(ex) + " " + fixed(ey) + " 0.000000>");
}

}  // namespace zortest
