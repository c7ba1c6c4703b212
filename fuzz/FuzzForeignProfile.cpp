// Foreign profiles: the same bytes as a Vericut profile (XML or plain text)
// into both classes, a MachineWorks extrusion and rotation, and a Sirius file.
#include <cstdint>

#include "FuzzSupport.h"
#include "ZORModelIo.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = zorfuzz::write_input(data, size, "input.txt");
    const unsigned int unit = size > 0 ? 1 + data[0] % 2 : 1;
    {
        CMWZORExtrude e;
        e.ReadVericut(path.c_str(), unit, 3 - unit);
        CMWZORSweep s;
        s.ReadVericut(path.c_str(), unit, unit);
    }
    {
        CMWZORExtrude e;
        e.ReadMachineWorksExt(path.c_str());
        CMWZORSweep s;
        s.ReadMachineWorksRot(path.c_str());
    }
    {
        CMWZORExtrude e;
        e.ReadSirius(path.c_str(), unit, 3 - unit);
        CMWZORSweep s;
        s.ReadSirius(path.c_str(), unit, unit);
    }
    int count = 0;
    double* points = nullptr;
    double tolerance = 0, zRange[2] = {0, 0};
    if (VericutSor(const_cast<char*>(path.c_str()), &count, &points, &tolerance, 1, 2)) std::free(points);
    points = nullptr;
    if (VericutSweep(const_cast<char*>(path.c_str()), &count, &points, zRange, 2, 1)) std::free(points);
    return 0;
}
