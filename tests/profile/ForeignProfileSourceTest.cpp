#include <gtest/gtest.h>

#include <string>

#include "profile/ForeignProfileSource.h"
#include "support/ForeignProfileWriter.h"
#include "support/ProfileFileWriter.h"
#include "support/TempDir.h"
#include "zorapi/XmlHolder.h"

namespace {

using namespace zortest;

TEST(ForeignProfileSource, TellsEachSourceApart) {
    TempDir dir;
    const struct {
        const char* what;
        std::string text;
        const char* expected;
    } cases[] = {
        {"vericut xml", VericutXmlWriter::Sweep(0, 1).Root("Model").Pt(0, 0).Text(), "vericut"},
        {"vericut sor xml", VericutXmlWriter::Sor(0.1).Name("SOR").Pt(0, 0).Text(), "vericut-sor"},
        {"vericut text", VericutTextWriter::Extrusion("0", "5").Point(0, 0).Point(1, 0).Text(), "vericut"},
        {"vericut sor text", VericutTextWriter::Sor("0.1").Point(0, 0).Point(1, 0).Text(), "vericut-sor"},
        {"machineworks points", MachineWorksWriter(0, 0).Point(1, 0).Point(1, 1).Text(), "machineworks-ext"},
        {"machineworks with an arc", MachineWorksWriter(0, 0).Point(1, 0).Arc(0, 0, 0, 1).Text(), "machineworks-rot"},
        {"sirius", SiriusWriter().Raw("* header").Line({0, 0, 0}, {1, 0, 0}).Text(), "sirius"},
        {"sirius arc only", SiriusWriter().Arc({0, 0, 0}, {1, 0, 0}, {0.5, 0, 0}, "CLW").Text(), "sirius"},
        {"native extrude", ProfileFileWriter::Extrude(0, 1, 1).Line(0, 0, 0).Line(1, 0, 0).Text(), ""},
        {"other xml", "<tools><tool/></tools>", ""},
        {"short text", "a\nb\nc\n", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(zor::detect_profile_source(dir.write("file", c.text).c_str()), c.expected);
    }
    EXPECT_EQ(zor::detect_profile_source(dir.file("missing").c_str()), "");
    // Detection leaves no document held.
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name("detect"), nullptr);
}

}  // namespace

namespace {

// The sample files of examples/foreign are told apart and read as intended.
TEST(ForeignProfileSource, ExamplesAreDetectedAsTheirSource) {
    const std::string dir = std::string(ZOR_EXAMPLES_DIR) + "/foreign/";
    const struct {
        const char* file;
        const char* source;
    } cases[] = {
        {"vericut-sweep.xml", "vericut"},
        {"vericut-sweep.txt", "vericut"},
        {"vericut-sor.xml", "vericut-sor"},
        {"machineworks-ext.xml", "machineworks-ext"},
        {"machineworks-rot.xml", "machineworks-rot"},
        {"sirius.txt", "sirius"},
        {"vericut-cube.pol", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        EXPECT_EQ(zor::detect_profile_source((dir + c.file).c_str()), c.source);
    }
}

}  // namespace
