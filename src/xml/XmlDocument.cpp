#include "xml/XmlDocument.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "platform/debugapi.h"
#include "xml/ToolLibrary.h"
#include "xml/ToolList.h"

namespace zor {

XmlDom* g_xmlDocument = nullptr;
char g_debugMessage[1024] = {};

namespace {

// Every document loadDom made. API_IsXml never releases the reference it was
// handed, so documents live until unload; that is kept, and they are freed
// here when the module goes.
std::vector<std::unique_ptr<XmlDom>>& kept_documents() {
    static std::vector<std::unique_ptr<XmlDom>> documents;
    return documents;
}

int g_failStep = 0;
HRESULT g_failResult = S_OK;

HRESULT step_result(int step) { return step == g_failStep ? g_failResult : S_OK; }

// The failure report takes the message's format and arguments but prints only
// g_debugMessage, which nothing fills: both outputs are empty. Intended: hosts
// have never seen text from it.
void report_failure(const char* /*format*/, const char* /*source*/, int /*line*/, const char* /*description*/,
                    HRESULT /*hr*/, const char* /*call*/) {
    OutputDebugStringA(g_debugMessage);
    std::printf("%s", g_debugMessage);
}

struct LoadStep {
    int line;
    const char* description;
    const char* call;
};

const LoadStep kLoadSteps[] = {
    {49, "Create a new DOMDocument",
     "CoCreateInstance(__uuidof(MSXML2::DOMDocument30), NULL, CLSCTX_INPROC_SERVER, "
     "__uuidof(MSXML2::IXMLDOMDocument), (void**)&pxmldoc)"},
    {52, "should never fail", "pxmldoc->put_async(VARIANT_FALSE)"},
    {54, "should never fail", "pxmldoc->put_validateOnParse(VARIANT_FALSE)"},
    {56, "should never fail", "pxmldoc->put_resolveExternals(VARIANT_FALSE)"},
};

}  // namespace

XmlDom* loadDom() {
    std::unique_ptr<XmlDom> dom;
    for (int step = 1; step <= 4; ++step) {
        HRESULT hr = step_result(step);
        // Out of memory is thrown (std::bad_alloc) for API_IsXml to answer 0.
        if (step == 1 && SUCCEEDED(hr)) dom = std::make_unique<XmlDom>();
        // Steps 2 to 4 turn off asynchronous loading, validation and external
        // resolution, which every XmlDom has off: they only fail when told to.
        if (FAILED(hr)) {
            const LoadStep& s = kLoadSteps[step - 1];
            report_failure("%s:%d  HRCALL Failed: %s\n  0x%.8x = %s\n", "loadDom.cpp", s.line, s.description, hr,
                           s.call);
            return nullptr;
        }
    }
    kept_documents().push_back(std::move(dom));
    return kept_documents().back().get();
}

void fail_load_dom_step(int step, HRESULT hr) {
    g_failStep = step;
    g_failResult = hr;
}

std::size_t kept_document_count() { return kept_documents().size(); }

void reset_xml_document_state() {
    reset_tool_list_state();
    g_xmlDocument = nullptr;
    kept_documents().clear();
    std::memset(g_debugMessage, 0, sizeof g_debugMessage);
    fail_load_dom_step(0, S_OK);
}

}  // namespace zor

void API_IsXml(char* fileName, int* answer) try {
    using zor::g_xmlDocument;
    CoInitialize(nullptr);
    // The previous document is not released: it stays alive until unload.
    g_xmlDocument = zor::loadDom();
    if (g_xmlDocument == nullptr) _com_issue_error(E_POINTER);
    if (g_xmlDocument->load(fileName)) {
        (void)g_xmlDocument->document_element();
        if (answer != nullptr) *answer = 1;
        return;
    }
    // The parser's reason is printed as text, never as a format.
    std::fputs(g_xmlDocument->parse_error_reason().c_str(), stderr);
    (void)g_xmlDocument->parse_error_code();
    if (answer != nullptr) *answer = 0;
    g_xmlDocument = nullptr;
    CoUninitialize();
} catch (const std::bad_alloc&) {
    // Out of memory: answered as a document that did not parse, in the
    // parser's words for it.
    std::fputs("Could not allocate memory.\n", stderr);
    if (answer != nullptr) *answer = 0;
    zor::g_xmlDocument = nullptr;
    CoUninitialize();
}

void API_ResetXmlDoc() {
    zor::g_xmlDocument = nullptr;
    CoUninitialize();
}

void API_ReleaseXml(bool fullReset) {
    using namespace zor;
    if (g_walkNode) g_walkState = "NULL";
    if (g_walkChildren) g_walkChildren = XmlNodeList();
    if (fullReset) {
        g_walkNode = XmlNode();
        g_walkChildren = XmlNodeList();
    }
}
