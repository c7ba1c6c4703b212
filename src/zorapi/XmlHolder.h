// XML tree access of the maker's utility library (ZORAPI_ functions), on
// pugixml. Used by the foreign profile readers; not exported.
//
// A document is kept under a holder name until it is freed, replaced by a
// load under the same name, or the module unloads. Handles are opaque
// pointers into the document and stay valid while it is held.
//
// Nothing here fails loudly: a null handle (a missing holder, element or
// attribute) is accepted everywhere and gives the empty result (null handle,
// count 0, text ""), which is what the readers rely on for malformed files.
#pragma once

namespace pugi {
struct xml_node_struct;
struct xml_attribute_struct;
}  // namespace pugi

namespace zor {
struct XmlHolder;
}

using ZORAPI_XmlHold = zor::XmlHolder*;                // a held document, null for none
using ZORAPI_XmlTag = pugi::xml_node_struct*;          // an element, null for none
using ZORAPI_XmlAttrib = pugi::xml_attribute_struct*;  // an attribute, null for none

// Parses the file at path (either separator) and keeps it under holderName,
// replacing a document held under that name. Non-zero if the file parsed and
// has a root element; on failure nothing stays under that name. Throws
// std::bad_alloc when memory runs out (a reader's edge turns that into its
// failure result), so that a file is never taken for non-XML for want of
// memory.
int ZORAPI_LoadXmlFile(const char* path, const char* holderName);
// Releases the document held under holderName; an unknown name is ignored.
void ZORAPI_XmlFreeHolder(const char* holderName);
// The holder of that name, or null.
ZORAPI_XmlHold ZORAPI_Get_Xml_Hold_By_Name(const char* holderName);
// The root element of the holder's document, or null.
ZORAPI_XmlTag ZORAPI_Get_Xml_Hold_Tag(ZORAPI_XmlHold holder);

// The first element named name, ignoring case, looking at tag itself first and
// then at its descendants in document order (depth first); null if none.
ZORAPI_XmlTag ZORAPI_Get_Xml_Tag_By_Name(ZORAPI_XmlTag tag, const char* name);
// The element's name; "" for null.
const char* ZORAPI_Get_Xml_Tag_Name(ZORAPI_XmlTag tag);
// The element's text content (its first text or CDATA child); "" if none.
const char* ZORAPI_Get_Xml_Tag_Val(ZORAPI_XmlTag tag);
// Number of attributes of the element; 0 for null.
int ZORAPI_Get_Xml_Attrib_Amount(ZORAPI_XmlTag tag);
// Attribute number index (from 0) in document order; null if there is none.
ZORAPI_XmlAttrib ZORAPI_Get_Xml_Tag_Attrib(ZORAPI_XmlTag tag, int index);
// The attribute's name; "" for null.
const char* ZORAPI_Get_Xml_Attrib_Name(ZORAPI_XmlAttrib attrib);
// The attribute's value; "" for null.
const char* ZORAPI_Get_Xml_Attrib_Val(ZORAPI_XmlAttrib attrib);
// Number of child elements (text, comments and the like are not counted).
int ZORAPI_Get_Xml_Child_Amount(ZORAPI_XmlTag tag);
// Child element number index (from 0) in document order; null if there is none.
ZORAPI_XmlTag ZORAPI_Get_Xml_Tag_Child(ZORAPI_XmlTag tag, int index);

namespace zor {

// Releases every held document (tests; the module does it at unload).
void reset_xml_holders();

// True when a and b are equal ignoring ASCII case (either may be null = "").
bool equal_no_case(const char* a, const char* b);

}  // namespace zor
