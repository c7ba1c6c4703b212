// The tool-library walk: API_IsXml, then a bounded number of API_ReadList
// calls, a rewind, and a few more calls. Each input starts from a freshly
// loaded module: documents otherwise stay alive until the module is unloaded.
#include <cstdint>

#include "FuzzSupport.h"
#include "ZORModelIo.h"
#include "xml/XmlDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = zorfuzz::write_input(data, size, "input.xml");
    API_ReleaseXml(true);
    int answer = 0;
    try {
        API_IsXml(const_cast<char*>(path.c_str()), &answer);
        if (answer == 1) {
            for (int i = 0; i < 2000; ++i) API_ReadList();
            API_ReleaseXml(false);
            for (int i = 0; i < 50; ++i) API_ReadList();
        }
    } catch (const _com_error&) {
        // Documents without the nodes the walk needs throw to the host.
    }
    API_ResetXmlDoc();
    zor::reset_xml_document_state();
    return 0;
}
