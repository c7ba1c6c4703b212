// The DOM operations the XML document code and the tool-list walk use, on
// pugixml. Behaviour chosen to match the DOM the host application was written
// against, where the walk depends on it:
//   - Documents are loaded synchronously, without validation, and nothing
//     outside the file is ever read: a DOCTYPE is skipped, its entities are not
//     expanded (a reference to one stays in the text as written).
//   - White space is not preserved: text nodes made of white space only are
//     dropped, so indentation is not a child node. Other text is kept as is.
//   - Comments and processing instructions are child nodes (the XML
//     declaration is not a node).
//   - base_name() is the local name without its prefix for elements and
//     attributes, and empty for every other node, the document included.
//   - text() of an element or the document is the text of all its text and
//     CDATA descendants joined in document order; of any other node (text,
//     CDATA, comment, processing instruction) its own content; of an
//     attribute its value. Texts are UTF-8.
//   - A document with more than one top-level element is not well formed.
// Lists of child nodes and of attributes are indexed once per node and kept
// with the document, so length() and item() cost O(1) after the first use.
// Every operation is iterative: depth of nesting never grows the stack.
#pragma once

#include <pugixml.hpp>
#include <string>
#include <unordered_map>
#include <vector>

namespace zor {

class XmlDom;
class XmlNodeList;

// One attribute of an element.
class XmlAttribute {
public:
    XmlAttribute() = default;
    explicit XmlAttribute(pugi::xml_attribute attribute) : m_attribute(attribute) {}
    explicit operator bool() const { return !m_attribute.empty(); }
    std::string base_name() const;
    std::string text() const;

private:
    pugi::xml_attribute m_attribute;
};

// A node of a loaded document; a null node when empty. Copies are cheap and
// stay valid while their document lives.
class XmlNode {
public:
    XmlNode() = default;
    XmlNode(const XmlDom* dom, pugi::xml_node node) : m_dom(dom), m_node(node) {}

    explicit operator bool() const { return !m_node.empty(); }
    // Node identity (the same node of the same document).
    bool operator==(const XmlNode& other) const { return m_node == other.m_node; }
    bool operator!=(const XmlNode& other) const { return !(*this == other); }
    // A key that identifies the node, for maps.
    const void* key() const { return m_node.internal_object(); }

    bool is_element() const { return m_node.type() == pugi::node_element; }
    bool is_document() const { return m_node.type() == pugi::node_document; }
    std::string base_name() const;
    std::string text() const;

    // Attributes: count (0 for nodes without an attribute map) and the i-th
    // (a null attribute when out of range).
    int attribute_count() const;
    XmlAttribute attribute(int index) const;

    XmlNodeList child_nodes() const;
    bool has_child_nodes() const { return !m_node.first_child().empty(); }
    XmlNode first_child() const { return XmlNode(m_dom, m_node.first_child()); }
    XmlNode last_child() const { return XmlNode(m_dom, m_node.last_child()); }
    XmlNode parent() const { return XmlNode(m_dom, m_node.parent()); }
    XmlNode next_sibling() const { return XmlNode(m_dom, m_node.next_sibling()); }

private:
    const XmlDom* m_dom = nullptr;
    pugi::xml_node m_node;
};

// The child nodes of one node, with the DOM's nextNode iteration.
class XmlNodeList {
public:
    XmlNodeList() = default;
    XmlNodeList(const XmlDom* dom, const std::vector<pugi::xml_node>* items) : m_dom(dom), m_items(items) {}

    explicit operator bool() const { return m_items != nullptr; }
    int length() const { return m_items != nullptr ? static_cast<int>(m_items->size()) : 0; }
    // The i-th node, or a null node when out of range.
    XmlNode item(int index) const;
    // The node after the last one returned (the first on a fresh list), or a
    // null node past the end.
    XmlNode next_node();
    // next_node() called count times; returns the last result.
    XmlNode advance(int count);

private:
    const XmlDom* m_dom = nullptr;
    const std::vector<pugi::xml_node>* m_items = nullptr;
    std::size_t m_next = 0;
};

// One document. Created empty; load() fills it.
class XmlDom {
public:
    XmlDom() = default;
    XmlDom(const XmlDom&) = delete;
    XmlDom& operator=(const XmlDom&) = delete;

    // Reads and parses the file (path in "\" or "/" form). False when the file
    // cannot be read or is not well formed: the document is then empty and
    // parse_error_reason() says why.
    bool load(const char* fileName);
    // Parses bytes (for tests and in-memory use); same results as load().
    bool load_bytes(const char* data, std::size_t size);

    // The top-level element, or a null node when nothing is loaded.
    XmlNode document_element() const;
    // Why the last load failed: one line ending in "\n"; empty after success.
    const std::string& parse_error_reason() const { return m_reason; }
    // Non-zero after a failed load: the parser's status code.
    long parse_error_code() const { return m_code; }
    // Nodes and attributes in the document (the document node included).
    std::size_t item_count() const;

private:
    friend class XmlNode;
    const std::vector<pugi::xml_node>& children_of(pugi::xml_node node) const;
    const std::vector<pugi::xml_attribute>& attributes_of(pugi::xml_node node) const;
    bool finish_load(const pugi::xml_parse_result& result);

    pugi::xml_document m_doc;
    std::string m_reason;
    long m_code = 0;
    mutable std::unordered_map<const void*, std::vector<pugi::xml_node>> m_children;
    mutable std::unordered_map<const void*, std::vector<pugi::xml_attribute>> m_attributes;
};

}  // namespace zor
