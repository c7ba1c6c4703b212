// Extrusion and sweep profiles: a segment list plus (for the extrusion) a Z
// range, in the application's own text files ("KOLP EXTRUDE FILE", "KOLP SWEEP
// FILE") and imported from Vericut, MachineWorks and Sirius files.
//
// Readers append to the object they are given (they never empty it first)
// and convert coordinates to the wanted unit by setting the list's scale
// before adding segments; that scale stays on the object.
#pragma once

#include "module/ZORModelIoExport.h"
#include "platform/afx.h"
#include "profile/MWZORSegment.h"

// An extrusion profile: the chain and the Z range it is extruded over.
class ZORMODELIO_API CMWZORExtrude : public CMWZORSegmentArray {
    DECLARE_DYNAMIC(CMWZORExtrude)
public:
    // Empty list, Z range 0, 0.
    CMWZORExtrude();
    ~CMWZORExtrude() override;

    // Stores zMin, zMax and writes the profile file at path, coordinates as
    // held and the list's unit; false (nothing stored) if it can't be created
    // or memory runs out while writing.
    bool WriteFile(CString path, double zMin, double zMax);
    // Appends the profile of a native file, converted to unit (1 mm, 2 in,
    // 0 none); false only if the file can't be opened or memory runs out (the
    // segments read until then stay).
    bool ResadFile(CString path, unsigned int unit);
    // Copies Z range, tolerance, scale, unit, version and segments into target,
    // whose own segments are dropped. The segments are added through target's
    // scale, now the source's: copy objects whose scale is 1. When memory runs
    // out the target gets none of the segments.
    void Copy(CMWZORExtrude* target);
    // Z range; a null pointer skips its value.
    void GetZValues(double* zMin, double* zMax);
    void SetZValues(double zMin, double zMax);

    // Vericut XML or plain-text profile, in fileUnit, converted to unit. The
    // foreign readers return false when memory runs out (the segments read
    // until then stay).
    bool ReadVericut(CString path, unsigned int unit, unsigned int fileUnit);
    // MachineWorks XML extrusion file.
    bool ReadMachineWorksExt(CString path);
    // Sirius text profile, in fileUnit, converted to wantedUnit.
    bool ReadSirius(CString path, unsigned int wantedUnit, unsigned int fileUnit);

    double m_zMin;
    double m_zMax;
};

// A sweep profile: the generating curve of a rotation.
class ZORMODELIO_API CMWZORSweep : public CMWZORSegmentArray {
    DECLARE_DYNAMIC(CMWZORSweep)
public:
    CMWZORSweep();
    ~CMWZORSweep() override;

    // Writes the profile file at path; false if it can't be created or memory
    // runs out while writing.
    bool WriteFile(CString path);
    // As CMWZORExtrude::ResadFile, for a sweep file (no Z line).
    bool ResadFile(CString path, unsigned int unit);
    // As CMWZORExtrude::Copy, without a Z range.
    void Copy(CMWZORSweep* target);

    // Vericut XML or plain-text profile, in fileUnit, converted to unit.
    bool ReadVericut(CString path, unsigned int unit, unsigned int fileUnit);
    // MachineWorks XML rotation file.
    bool ReadMachineWorksRot(CString path);
    // Sirius text profile, in fileUnit, converted to wantedUnit.
    bool ReadSirius(CString path, unsigned int wantedUnit, unsigned int fileUnit);
};
