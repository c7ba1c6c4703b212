#include "ForeignProfiles.h"

#include "profile/ForeignProfileSource.h"

namespace zormodel {

const std::vector<std::string>& foreign_profile_sources() {
    static const std::vector<std::string> sources = {"vericut", "vericut-sor", "machineworks-ext", "machineworks-rot",
                                                     "sirius"};
    return sources;
}

namespace {

std::string source_list() {
    std::string list;
    for (const std::string& name : foreign_profile_sources()) list += (list.empty() ? "" : ", ") + name;
    return list;
}

}  // namespace

std::unique_ptr<CMWZORSegmentArray> read_foreign_profile(const std::string& path, std::string from, int wantedUnit,
                                                         int fileUnit, std::string* kindOut, std::string* error) {
    auto fail = [&](const std::string& why) {
        if (error != nullptr) *error = why;
        return nullptr;
    };
    if (from.empty()) {
        from = zor::detect_profile_source(path.c_str());
        if (from.empty()) return fail("cannot tell the source of this profile; give --from (" + source_list() + ")");
    }
    if (kindOut != nullptr) *kindOut = from;
    const CString file(path.c_str());
    const auto wanted = static_cast<unsigned int>(wantedUnit);
    const auto given = static_cast<unsigned int>(fileUnit);

    if (from == "vericut" || from == "machineworks-ext" || from == "sirius") {
        auto profile = std::make_unique<CMWZORExtrude>();
        bool read = true;
        if (from == "vericut") read = profile->ReadVericut(file, wanted, given);
        if (from == "machineworks-ext") read = profile->ReadMachineWorksExt(file);
        if (from == "sirius") read = profile->ReadSirius(file, wanted, given);
        if (!read) return fail("not a readable " + from + " profile");
        return profile;
    }
    if (from == "vericut-sor" || from == "machineworks-rot") {
        auto profile = std::make_unique<CMWZORSweep>();
        const bool read =
            from == "vericut-sor" ? profile->ReadVericut(file, wanted, given) : profile->ReadMachineWorksRot(file);
        if (!read) return fail("not a readable " + from + " profile");
        return profile;
    }
    return fail("unknown profile source \"" + from + "\" (" + source_list() + ")");
}

}  // namespace zormodel
