// The text of the native profile files: magic, version, Z range, unit,
// tolerance and one line per segment, collected and written in pieces.
// Shared by the segment lists' WriteFile and by writers that turn geometry
// into a profile file without building a segment list first (the DXF reader).
#pragma once

#include <cstdio>
#include <string>

#include "profile/MWZORSegment.h"

namespace zor {

extern const char kExtrudeMagic[];  // "KOLP EXTRUDE FILE\n"
extern const char kSweepMagic[];    // "KOLP SWEEP FILE\n"

class NativeProfileText {
public:
    // Opens path for writing ("w", "\" or "/" as separators) and starts the
    // file: magic, "Version < 1 >" (whatever the list carries) and, given
    // zRange, the Z line. ok() tells whether the file could be created.
    NativeProfileText(const char* path, const char* magic, const double* zRange);
    // Onto a stream the caller owns: written, never closed.
    explicit NativeProfileText(std::FILE* stream);
    // Writes what is left and closes a file opened here.
    ~NativeProfileText();
    NativeProfileText(const NativeProfileText&) = delete;
    NativeProfileText& operator=(const NativeProfileText&) = delete;

    bool ok() const { return m_stream != nullptr; }

    // "Unit < u >" and "Toler < t >".
    void Body(int unit, double tolerance);
    // "LINE < x y z >".
    void Line(double x, double y, double z);
    // "CLW < " or "CCLW < ", centre, axis and end (nine numbers), ">"; any
    // other type writes nothing.
    void Arc(m_IOenumType type, const double* centre, const double* axis, const double* end);

private:
    void Numbers(const double* p);
    void Spill();

    std::FILE* m_stream = nullptr;
    bool m_owned = false;
    bool m_direct;
    std::string m_text;
};

}  // namespace zor
