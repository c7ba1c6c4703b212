// What a file is, told by its content rather than its name, so that every
// subcommand can refuse a file of another kind with one clear line.
#pragma once

#include <initializer_list>
#include <string>

namespace zormodel {

enum class FileKind {
    Missing,         // not a readable regular file
    Empty,           // no bytes at all
    ObjectFile,      // version line first, plain or scrambled
    Extrusion,       // "KOLP EXTRUDE FILE"
    Sweep,           // "KOLP SWEEP FILE"
    ForeignProfile,  // Vericut, MachineWorks or Sirius (source in Detection::source)
    StlAscii,        // "solid" ... "facet"
    StlBinary,       // 84 + 50 bytes a facet
    Dxf,             // group-code / value line pairs
    Polygon,         // "VERICUT POLYGON FILE"
    ToolLibrary,     // XML with a TOOL element
    Xml,             // any other XML document
    Text,            // text of no kind we read
    Binary,          // bytes of no kind we read
};

struct Detection {
    FileKind kind = FileKind::Missing;
    std::string source;  // the foreign profile's source ("vericut", "sirius", ...)
    // Why an STL file is read as binary by the library: "" when it is not.
    std::string binaryReason;
    // A file that starts as ASCII STL but goes to the binary reader.
    bool stlTextReadAsBinary = false;
};

Detection detect_file(const std::string& path);

// "a DXF drawing", "an STL file (binary)", ... for messages.
std::string describe(const Detection& d);

// Refuses path unless it is one of accepted: one line on standard error
// ("bracket.dxf: a DXF drawing, not an STL file; try `zormodel info`") and
// exit 1 (through CLI::RuntimeError). Returns the detection otherwise.
Detection require_kind(const std::string& path, std::initializer_list<FileKind> accepted, const char* wanted);

}  // namespace zormodel
