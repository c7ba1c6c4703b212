// Native extrude and sweep files: read into both classes in both units, then
// walked, stepped arc by arc, copied and written back.
#include <cstdint>

#include "FuzzSupport.h"
#include "ZORModelIo.h"

namespace {

void walk(CMWZORSegmentArray& list) {
    list.SetStart();
    m_IOenumType type;
    int guard = 0;
    while (list.GetType(&type) && guard++ < 10000) {
        double x, y, z, cx, cy, cz;
        if (type == IO_LINE) {
            list.GetLine(&x, &y, &z);
        } else {
            list.GetArc(&cx, &cy, &cz, &x, &y, &z, &type);
            // Bounded: a coarse tolerance keeps step counts small.
            int n = list.GetArcStep(&x, &y, &z, 0);
            for (int i = 1; i <= n && i <= 200; ++i) list.GetArcStep(&x, &y, &z, i);
        }
        if (list.GetNext() == nullptr) break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = zorfuzz::write_input(data, size, "input.ext");
    const unsigned int unit = size > 0 ? data[0] % 3 : 1;
    CMWZORExtrude extrusion;
    extrusion.ResadFile(path.c_str(), unit);
    extrusion.m_tolerance = 0.5;
    walk(extrusion);
    CMWZORExtrude copy;
    extrusion.Copy(&copy);
    copy.WriteFile((zorfuzz::temp_folder() + "/copy.ext").c_str(), 0, 1);

    CMWZORSweep sweep;
    sweep.ResadFile(path.c_str(), 3 - unit);
    sweep.m_tolerance = 0.5;
    walk(sweep);
    return 0;
}
