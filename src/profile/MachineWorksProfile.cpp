// MachineWorks extrusion and rotation profiles: an XML element "profile"
// whose first two attributes are the start point and whose child elements
// are the points (and, for rotations, clockwise arcs) that follow.
//
// Nothing is checked: a missing file, a file that is not XML or a document
// without "profile" reads as the XML layer's empty results (no children,
// attributes "" and so 0), and the readers still return true (false only
// when memory runs out).
#include <cstdlib>

#include "module/Allocation.h"
#include "profile/ForeignProfile.h"
#include "profile/MWZORProfile.h"
#include "zorapi/XmlHolder.h"

namespace {

// The profile element of the document just loaded under the holder name.
ZORAPI_XmlTag load_profile(const CString& path) {
    // The load's result is not looked at: a failed load leaves no holder,
    // and every lookup below then gives its empty result.
    ZORAPI_LoadXmlFile(path.GetString(), zor::kMachineWorksHolder);
    ZORAPI_XmlTag root = ZORAPI_Get_Xml_Hold_Tag(ZORAPI_Get_Xml_Hold_By_Name(zor::kMachineWorksHolder));
    return ZORAPI_Get_Xml_Tag_By_Name(root, "profile");
}

// The document goes on every way out.
struct HolderGuard {
    ~HolderGuard() { ZORAPI_XmlFreeHolder(zor::kMachineWorksHolder); }
};

// Attribute number index of tag (by position, whatever its name) as a number.
double attribute(ZORAPI_XmlTag tag, int index) {
    return std::atof(ZORAPI_Get_Xml_Attrib_Val(ZORAPI_Get_Xml_Tag_Attrib(tag, index)));
}

}  // namespace

// Out of memory is the one failure these readers report: false, with the
// points read until then in the list.
bool CMWZORExtrude::ReadMachineWorksExt(CString path) {
    return zor::failure_on_bad_alloc(false, [&] {
        HolderGuard guard;
        ZORAPI_XmlTag profile = load_profile(path);
        const int count = ZORAPI_Get_Xml_Child_Amount(profile);
        // Every point overwrites the Z range with its x and y, so it ends up
        // holding the last point's; callers set the Z range afterwards.
        m_zMin = attribute(profile, 0);
        m_zMax = attribute(profile, 1);
        AddPoint(m_zMin, m_zMax, 0.0);
        for (int i = 0; i < count; ++i) {
            ZORAPI_XmlTag child = ZORAPI_Get_Xml_Tag_Child(profile, i);
            m_zMin = attribute(child, 0);
            m_zMax = attribute(child, 1);
            AddPoint(m_zMin, m_zMax, 0.0);
        }
        return true;
    });
}

bool CMWZORSweep::ReadMachineWorksRot(CString path) {
    return zor::failure_on_bad_alloc(false, [&] {
        HolderGuard guard;
        ZORAPI_XmlTag profile = load_profile(path);
        const int count = ZORAPI_Get_Xml_Child_Amount(profile);
        const double x0 = attribute(profile, 0);
        const double y0 = attribute(profile, 1);
        AddPoint(x0, y0, 0.0);
        for (int i = 0; i < count; ++i) {
            ZORAPI_XmlTag child = ZORAPI_Get_Xml_Tag_Child(profile, i);
            if (ZORAPI_Get_Xml_Attrib_Amount(child) == 2) {
                AddPoint(attribute(child, 0), attribute(child, 1), 0.0);
            } else {
                // Centre first, end second; rotation arcs are always clockwise.
                AddArc(attribute(child, 0), attribute(child, 1), 0.0, attribute(child, 2), attribute(child, 3), 0.0,
                       IO_CLW);
            }
        }
        // Always closed, also when the last element already ends at the start.
        AddPoint(x0, y0, 0.0);
        return true;
    });
}
