// The machine-kinematics record (an axis or a spindle): a name, a kind, an axis
// direction and a fixed run of parameters. It has neither a geometry block nor
// the common tail; files before 1.09 also number their elements through the
// spindle table that later object records look up.
#include "objectfile/FieldScan.h"
#include "objectfile/MWZORFile.h"
#include "objectfile/ObjectFileState.h"
#include "objectfile/ReadGuard.h"

namespace {

constexpr int kAxisKind = 1;
constexpr int kSpindleKind = 2;

}  // namespace

bool CMWZORFile::ReadEngin(CString* name, unsigned int* kind, double axis[3], unsigned int* /*p4*/, unsigned int* p5,
                           double* p6, double* p7, double* p8, double* p9, unsigned int* p10, double* p11, double* p12,
                           unsigned int* p13, unsigned int* p14, double* p15, double* p16, unsigned int* p17,
                           unsigned int* p18, double* p19, double p20[4], unsigned int* p21, unsigned int* p22,
                           unsigned int* p23, CString* p24, unsigned int* p25) {
    return zor::contain_allocation_failure(m_stream, false, [&] {
        // Unsigned outputs are filled through the int field reader, as the file
        // writes them.
        auto asInt = [](unsigned int* p) { return reinterpret_cast<int*>(p); };
        CString nameValue, keyValue;
        CString* nameOut = name != nullptr ? name : &nameValue;
        CString* keyOut = p24 != nullptr ? p24 : &keyValue;

        if (p20 != nullptr) p20[0] = p20[1] = p20[2] = p20[3] = 0.0;
        int elementKind = 0, recordUnits = 0;
        if (!ReadField(nameOut) || !ReadIntField(1, &elementKind)) return false;
        if (kind != nullptr) *kind = static_cast<unsigned int>(elementKind);
        if (!ReadIntField(1, &recordUnits) || !ReadDoubleField(3, axis)) return false;
        if (m_version > 104) {
            if (!SkipLines(1)) return false;
            ++m_depth;
            if (!SkipToRecordDepth() || !ReadIntField(0, nullptr)) return false;
        }
        int flag = 0;
        if (!ReadIntField(0, nullptr) || !ReadIntField(1, &flag)) return false;
        // The axis is reversed only for a caller that does not ask for the flag:
        // intended, the host relies on one or the other.
        if (flag == 0) {
            if (p5 != nullptr) *p5 = 0;
        } else if (p5 != nullptr) {
            *p5 = static_cast<unsigned int>(flag);
        } else if (axis != nullptr) {
            for (int i = 0; i < 3; ++i) axis[i] = -axis[i];
        }

        // The file holds p17 before p16.
        if (!ReadDoubleField(1, p6) || !ReadDoubleField(1, p7) || !ReadDoubleField(1, p8) || !ReadDoubleField(1, p9) ||
            !ReadIntField(1, asInt(p10)) || !ReadDoubleField(1, p11) || !ReadDoubleField(1, p12) ||
            !ReadIntField(1, asInt(p13)) || !ReadIntField(1, asInt(p14)) || !ReadDoubleField(1, p15) ||
            !ReadIntField(1, asInt(p17)) || !ReadDoubleField(1, p16) || !ReadIntField(1, asInt(p18)) ||
            !ReadDoubleField(1, p19))
            return false;

        if (elementKind == kSpindleKind) {
            if (!ReadDoubleField(3, p20)) return false;
            if (m_version > 104) {
                if (!ReadIntField(0, nullptr) || !SkipLines(1)) return false;
                ++m_depth;
                if (!SkipToRecordDepth()) return false;
            }
            if (!ReadIntField(1, asInt(p21))) return false;
        }

        // A missing spindle key is not an error: the key keeps what it held.
        if (m_version >= 102)
            ReadField(keyOut);
        else
            *keyOut = "1";

        int index = 0;
        if (m_version >= 106 && !ReadIntField(1, &index)) return false;
        if (m_version < 109) {
            zor::ObjectFileState& state = zor::object_file_state();
            if (state.spindleCount < zor::ObjectFileState::kSpindleSlots) {
                auto& entry = state.spindles[static_cast<size_t>(state.spindleCount)];
                entry.nameKey = zor::spindle_key(*nameOut);
                entry.spindleKey = zor::spindle_key(*keyOut);
            }
            // Counted even when the table is full: the element keeps its number.
            index = ++state.spindleCount;
        }
        if (p25 != nullptr) *p25 = static_cast<unsigned int>(index);

        if (m_version < 112) {
            if (p22 != nullptr) *p22 = 0;
            if (p23 != nullptr) *p23 = 1;
        } else if (!ReadIntField(1, asInt(p22)) || !ReadIntField(1, asInt(p23))) {
            return false;
        }

        if (nameOut->IsEmpty() && elementKind == kSpindleKind) *nameOut = "Spindle";

        double factor;
        if (GetUnitFactor(recordUnits, &factor)) {
            // p6 is the first of four adjacent doubles in the host's engine data,
            // so p7 (and p8, p9 for an axis) are multiplied twice. Intended: the
            // host's values depend on it.
            if (p6 != nullptr) zor::ScaleValues(p6, 4, factor);
            double* const once[] = {p7, p15, p16};
            for (double* p : once)
                if (p != nullptr) *p *= factor;
            if (elementKind == kAxisKind) {
                double* const axisOnly[] = {p8, p9, p11, p12};
                for (double* p : axisOnly)
                    if (p != nullptr) *p *= factor;
            }
            if (p20 != nullptr) zor::ScaleValues(p20, 3, factor);
        }
        return true;
    });
}
