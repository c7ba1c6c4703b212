// The walk of API_ReadList over the held tool library. All of its state is
// module-wide, so a walk resumes across calls; API_ReleaseXml rewinds it.
#pragma once

#include <cstdint>
#include <string>

#include "xml/XmlDom.h"

namespace zor {

// The token returned by the last call (grows past 100 characters when a token
// needs it, so no token is ever cut or overruns).
extern std::string g_listBuffer;
// "NULL": the walk has not begun; "0" once it has.
extern std::string g_walkState;
// The cursor, and the child list last fetched from it.
extern XmlNode g_walkNode;
extern XmlNodeList g_walkChildren;
// The cursor's next attribute to report.
extern std::int32_t g_attrIndex;
// The second half of a pair is due: an attribute's value, or an element's
// value or contents after its name was reported.
extern bool g_attrValueNext;
// The cursor's name has been reported; its attributes come next.
extern bool g_inAttributes;
// The walk has ended; the next call returns "" and clears this.
extern bool g_walkDone;
// Which child of "Tools" to step to (1 = first).
extern std::int32_t g_toolOrdinal;

enum class TokenKind {
    None,            // "": no document, after the end, or the walk cannot go on
    Element,         // an element's name
    AttributeName,   // an attribute's name; its value follows
    AttributeValue,  // an attribute's value
    Value,           // an element's text value
    End,             // "OptiPath"
};

// What a token is, for callers that rebuild the document's structure.
struct ListToken {
    TokenKind kind = TokenKind::None;
    // The element the token names, or whose attribute or value it is.
    XmlNode node;
    // "!" was appended: the walk leaves the enclosing element(s).
    bool leaves = false;
    // "": the walk ends where it would have repeated tokens it gave, from a
    // position it was at before, for ever.
    bool stopped = false;
};

// One step of the walk: the token API_ReadList returns (already copied into
// g_listBuffer), with what it is in *info when info is not null.
const std::string& read_list_token(ListToken* info);

// Back to the state at load (used by tests and by reset_xml_document_state).
void reset_tool_list_state();

// With false, a walk that would give its tokens again for ever is not
// stopped (for tests, which compare the two).
void set_walk_guard(bool on);

}  // namespace zor
