// zormodel info, and the DXF scan that also warns the dxf command about what
// the reader leaves out.
#pragma once

#include <map>
#include <string>

namespace zormodel {

// What a DXF drawing's ENTITIES section holds, by its group-code pairs.
struct DxfSurvey {
    std::map<std::string, long long> entityTypes;  // every entity type met, with its count
    long long linesWithoutZ = 0;                   // LINEs that never reached group 31
    long long layerNamesWithBlank = 0;             // the reader cuts these at the blank
};

DxfSurvey survey_dxf(const std::string& bytes);

// The bytes of the file at path ("" when it cannot be read).
std::string read_whole_file(const std::string& path);

// Counts the contours of every layer that the reader does not write (it
// writes the chain through the layer's first entity); warns in one line.
void warn_unwritten_contours(const std::string& path, const std::string& bytes);

// One warning line on standard error per kind of thing left out (counted).
// Returns the number of lines printed.
int warn_dxf_omissions(const std::string& path, const DxfSurvey& survey);

}  // namespace zormodel
