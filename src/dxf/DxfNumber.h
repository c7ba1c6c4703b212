// atof of a DXF token: the value strtod gives, bit for bit, without copying
// the token to terminate it unless the token is unusual.
#pragma once

#include <string_view>

namespace zor {

// The value of token as atof reads it (what strtod makes of its longest
// valid prefix, 0 when there is none).
double dxf_number(std::string_view token);

}  // namespace zor
