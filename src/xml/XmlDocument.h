// The one XML document the module holds between calls (API_IsXml keeps it,
// API_ReadList walks it) and the creation of documents.
#pragma once

#include "platform/comsupport.h"
#include "xml/XmlDom.h"

namespace zor {

// The document API_IsXml kept; null when none. Not owning: every document
// loadDom creates stays alive until the module is unloaded (or the state is
// reset), so nodes a walk still holds never dangle.
extern XmlDom* g_xmlDocument;

// The failure report of loadDom prints this buffer, which nothing writes.
extern char g_debugMessage[1024];

// Creates a document with asynchronous loading, validation and external
// resolution off. Returns it (kept until unload), or null after printing the
// failure report when a step fails.
XmlDom* loadDom();

// Makes loadDom's step 1 to 4 fail with hr (0: no step fails). For tests.
void fail_load_dom_step(int step, HRESULT hr = E_POINTER);

// Documents created so far and still kept.
std::size_t kept_document_count();

// Back to the state at load: every document freed, the walk reset, the
// message buffer zeroed, no step made to fail (used by tests).
void reset_xml_document_state();

}  // namespace zor
