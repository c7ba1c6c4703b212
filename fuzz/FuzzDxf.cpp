// The DXF reader as a host calls it: ReadDxf reads the drawing, chains every
// layer and writes its profile files, which are removed again; and the same
// chains built into a profile list.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "FuzzSupport.h"
#include "ZORModelIo.h"
#include "dxf/DxfParse.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zor::DxfDrawing drawing;
    const bool found = zor::parse_dxf(std::string_view(reinterpret_cast<const char*>(data), size), drawing);

    const std::string path = zorfuzz::write_input(data, size, "input.dxf");
    const std::string out = zorfuzz::temp_folder() + "/profile.ext";
    const bool sweep = size > 0 && (data[0] & 1) != 0;
    const unsigned int unit = size > 0 ? data[size - 1] % 4 : 1;
    CString* names = ReadDxf(path.c_str(), out.c_str(), unit, 0, sweep);
    if (found != (names != nullptr)) __builtin_trap();
    // One file per layer; without layers the one name is a layer name.
    for (size_t i = 0; i < drawing.layers.size(); ++i) std::remove(names[i].GetString());
    Delete_Names(names, 0);

    zor::LayerScratch scratch;
    for (const auto& layer : drawing.layers) {
        zor::LayerContours contours(*layer, &scratch);
        CMWZORSweep profile;
        contours.AppendFirstChain(profile);
    }
    return 0;
}
