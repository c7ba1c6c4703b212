// Foreign profile files for zormodel profile: Vericut (XML or plain text),
// MachineWorks and Sirius, read into the library's profile classes.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ZORModelIo.h"

namespace zormodel {

// The names --from accepts, in the order help lists them.
const std::vector<std::string>& foreign_profile_sources();

// Reads the profile at path as from says ("" = detect, see
// zor::detect_profile_source) into a new CMWZORExtrude ("vericut",
// "machineworks-ext", "sirius") or CMWZORSweep ("vericut-sor",
// "machineworks-rot"). Vericut and Sirius numbers are in fileUnit and are
// converted to wantedUnit (1 mm, 2 in); MachineWorks files are read as they
// are. *kindOut gets the source used. Null with a one-line reason in *error
// when the source is unknown or cannot be told, or the reader refuses the file.
std::unique_ptr<CMWZORSegmentArray> read_foreign_profile(const std::string& path, std::string from, int wantedUnit,
                                                         int fileUnit, std::string* kindOut, std::string* error);

}  // namespace zormodel
