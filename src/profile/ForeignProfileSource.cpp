#include "profile/ForeignProfileSource.h"

#include <cstdio>
#include <cstring>

#include "platform/crtpath.h"
#include "profile/ForeignProfile.h"
#include "zorapi/XmlHolder.h"

namespace zor {

namespace {

constexpr char kDetectHolder[] = "detect";

std::string xml_source(ZORAPI_XmlTag root) {
    if (ZORAPI_Get_Xml_Tag_By_Name(root, "Sweep") != nullptr) return "vericut";
    if (ZORAPI_Get_Xml_Tag_By_Name(root, "Sor") != nullptr) return "vericut-sor";
    ZORAPI_XmlTag profile = ZORAPI_Get_Xml_Tag_By_Name(root, "profile");
    if (profile == nullptr) return "";
    const int children = ZORAPI_Get_Xml_Child_Amount(profile);
    for (int i = 0; i < children; ++i)
        if (ZORAPI_Get_Xml_Attrib_Amount(ZORAPI_Get_Xml_Tag_Child(profile, i)) != 2) return "machineworks-rot";
    return "machineworks-ext";
}

int field_count(const char* line) {
    int count = 0;
    for (const char* p = line;;) {
        p += std::strspn(p, " \t\r\n");
        if (*p == '\0') return count;
        ++count;
        p += std::strcspn(p, " \t\r\n");
    }
}

}  // namespace

std::string detect_profile_source(const char* path) {
    if (ZORAPI_LoadXmlFile(path, kDetectHolder) != 0) {
        std::string source = xml_source(ZORAPI_Get_Xml_Hold_Tag(ZORAPI_Get_Xml_Hold_By_Name(kDetectHolder)));
        ZORAPI_XmlFreeHolder(kDetectHolder);
        return source;
    }
    std::FILE* file = open_file(path, "r");
    if (file == nullptr) return "";
    // Lines as the readers see them: at most 80 characters a read.
    char line[81];
    long long lines = 0;
    int line4Fields = 0;
    int line5Fields = 0;
    bool native = false;
    bool sirius = false;
    while (!sirius && std::fgets(line, sizeof line, file) != nullptr) {
        ++lines;
        if (lines == 1) native = std::strncmp(line, "KOLP", 4) == 0;
        if (lines == 4) line4Fields = field_count(line);
        if (lines == 5) line5Fields = field_count(line);
        sirius = is_sirius_segment_line(line);
    }
    std::fclose(file);
    if (sirius) return "sirius";
    if (native || lines < 5 || line4Fields != 1) return "";
    return line5Fields == 1 ? "vericut" : "vericut-sor";
}

}  // namespace zor
