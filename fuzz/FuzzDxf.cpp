// The DXF reader: the parsing function ReadDxf hands the drawing to, then
// each layer chained and turned into the profile that ReadDxf would write.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "dxf/DxfParse.h"
#include "profile/MWZORProfile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zor::DxfDrawing drawing;
    if (!zor::parse_dxf(std::string_view(reinterpret_cast<const char*>(data), size), drawing)) return 0;
    for (const auto& layer : drawing.layers) {
        zor::LayerContours contours(*layer);
        CMWZORExtrude profile;
        contours.AppendFirstChain(profile);
    }
    return 0;
}
