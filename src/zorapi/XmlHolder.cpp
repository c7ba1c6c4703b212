#include "zorapi/XmlHolder.h"

#include <cstdio>
#include <map>
#include <memory>
#include <new>
#include <pugixml.hpp>
#include <string>

#include "platform/crtpath.h"

namespace zor {

struct XmlHolder {
    pugi::xml_document document;
};

namespace {

// Readers ask for child (or attribute) number i for i = 0, 1, 2, ...; pugixml
// keeps siblings in a linked list, so each cursor remembers where the last
// answer was and steps on from there, keeping a walk linear.
template <typename Handle>
struct IndexCursor {
    const void* owner = nullptr;
    int index = -1;
    Handle at = nullptr;
};

// Module-wide: the held documents and the two cursors, which point into them
// and are forgotten whenever a document goes.
struct XmlHolderState {
    std::map<std::string, std::unique_ptr<XmlHolder>> holders;
    IndexCursor<pugi::xml_node_struct*> child;
    IndexCursor<pugi::xml_attribute_struct*> attrib;
};

XmlHolderState& state() {
    static XmlHolderState instance;
    return instance;
}

void forget_cursors() {
    state().child = {};
    state().attrib = {};
}

int lower(unsigned char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; }

pugi::xml_node next_element(pugi::xml_node node) {
    while (node && node.type() != pugi::node_element) node = node.next_sibling();
    return node;
}

}  // namespace

bool equal_no_case(const char* a, const char* b) {
    if (a == nullptr) a = "";
    if (b == nullptr) b = "";
    for (;; ++a, ++b) {
        if (lower(static_cast<unsigned char>(*a)) != lower(static_cast<unsigned char>(*b))) return false;
        if (*a == '\0') return true;
    }
}

void reset_xml_holders() {
    forget_cursors();
    state().holders.clear();
}

}  // namespace zor

int ZORAPI_LoadXmlFile(const char* path, const char* holderName) {
    if (holderName == nullptr) return 0;
    zor::XmlHolderState& s = zor::state();
    zor::forget_cursors();
    // A failed load must not leave an older document readable under the name.
    s.holders.erase(holderName);
    std::string bytes;
    if (path == nullptr || !zor::read_whole_file(path, bytes)) return 0;
    auto holder = std::make_unique<zor::XmlHolder>();
    pugi::xml_parse_result parsed = holder->document.load_buffer(bytes.data(), bytes.size());
    // Out of memory is no verdict on the file: the caller must not go on as
    // if it were not XML.
    if (parsed.status == pugi::status_out_of_memory) throw std::bad_alloc();
    if (!parsed || !holder->document.document_element()) return 0;
    s.holders[holderName] = std::move(holder);
    return 1;
}

void ZORAPI_XmlFreeHolder(const char* holderName) {
    if (holderName == nullptr) return;
    zor::forget_cursors();
    zor::state().holders.erase(holderName);
}

ZORAPI_XmlHold ZORAPI_Get_Xml_Hold_By_Name(const char* holderName) {
    if (holderName == nullptr) return nullptr;
    auto found = zor::state().holders.find(holderName);
    return found == zor::state().holders.end() ? nullptr : found->second.get();
}

ZORAPI_XmlTag ZORAPI_Get_Xml_Hold_Tag(ZORAPI_XmlHold holder) {
    if (holder == nullptr) return nullptr;
    return holder->document.document_element().internal_object();
}

ZORAPI_XmlTag ZORAPI_Get_Xml_Tag_By_Name(ZORAPI_XmlTag tag, const char* name) {
    const pugi::xml_node top(tag);
    if (!top) return nullptr;
    // Iterative depth-first walk of top's subtree, top first: deep documents
    // cannot exhaust the stack.
    pugi::xml_node node = top;
    while (node) {
        if (node.type() == pugi::node_element && zor::equal_no_case(node.name(), name)) return node.internal_object();
        if (node.first_child()) {
            node = node.first_child();
            continue;
        }
        while (node != top && !node.next_sibling()) node = node.parent();
        if (node == top) break;
        node = node.next_sibling();
    }
    return nullptr;
}

const char* ZORAPI_Get_Xml_Tag_Name(ZORAPI_XmlTag tag) { return pugi::xml_node(tag).name(); }

const char* ZORAPI_Get_Xml_Tag_Val(ZORAPI_XmlTag tag) { return pugi::xml_node(tag).text().get(); }

int ZORAPI_Get_Xml_Attrib_Amount(ZORAPI_XmlTag tag) {
    int count = 0;
    for (pugi::xml_attribute a = pugi::xml_node(tag).first_attribute(); a; a = a.next_attribute()) ++count;
    return count;
}

ZORAPI_XmlAttrib ZORAPI_Get_Xml_Tag_Attrib(ZORAPI_XmlTag tag, int index) {
    if (tag == nullptr || index < 0) return nullptr;
    auto& cursor = zor::state().attrib;
    pugi::xml_attribute at;
    int at_index = 0;
    if (cursor.owner == tag && cursor.at != nullptr && cursor.index <= index) {
        at = pugi::xml_attribute(cursor.at);
        at_index = cursor.index;
    } else {
        at = pugi::xml_node(tag).first_attribute();
    }
    for (; at && at_index < index; ++at_index) at = at.next_attribute();
    if (!at) return nullptr;
    cursor = {tag, at_index, at.internal_object()};
    return at.internal_object();
}

const char* ZORAPI_Get_Xml_Attrib_Name(ZORAPI_XmlAttrib attrib) { return pugi::xml_attribute(attrib).name(); }

const char* ZORAPI_Get_Xml_Attrib_Val(ZORAPI_XmlAttrib attrib) { return pugi::xml_attribute(attrib).value(); }

int ZORAPI_Get_Xml_Child_Amount(ZORAPI_XmlTag tag) {
    int count = 0;
    for (pugi::xml_node c = zor::next_element(pugi::xml_node(tag).first_child()); c;
         c = zor::next_element(c.next_sibling()))
        ++count;
    return count;
}

ZORAPI_XmlTag ZORAPI_Get_Xml_Tag_Child(ZORAPI_XmlTag tag, int index) {
    if (tag == nullptr || index < 0) return nullptr;
    auto& cursor = zor::state().child;
    pugi::xml_node at;
    int at_index = 0;
    if (cursor.owner == tag && cursor.at != nullptr && cursor.index <= index) {
        at = pugi::xml_node(cursor.at);
        at_index = cursor.index;
    } else {
        at = zor::next_element(pugi::xml_node(tag).first_child());
    }
    for (; at && at_index < index; ++at_index) at = zor::next_element(at.next_sibling());
    if (!at) return nullptr;
    cursor = {tag, at_index, at.internal_object()};
    return at.internal_object();
}
