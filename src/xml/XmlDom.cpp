#include "xml/XmlDom.h"

#include <cstdio>
#include <cstring>

#include "platform/crtpath.h"

namespace zor {

namespace {

// Every parse keeps comments and processing instructions and drops text made
// of white space only; DOCTYPE content is skipped, never resolved.
constexpr unsigned int kParseOptions = pugi::parse_default | pugi::parse_comments | pugi::parse_pi;

// The parser's own code for a second top-level element, which pugixml accepts.
constexpr long kSecondRootElement = 100;

std::string local_name(const char* name) {
    const char* colon = std::strchr(name, ':');
    return colon != nullptr ? std::string(colon + 1) : std::string(name);
}

bool is_text(pugi::xml_node node) { return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata; }

}  // namespace

std::string XmlAttribute::base_name() const { return local_name(m_attribute.name()); }

std::string XmlAttribute::text() const { return m_attribute.value(); }

std::string XmlNode::base_name() const { return is_element() ? local_name(m_node.name()) : std::string(); }

std::string XmlNode::text() const {
    if (!is_element() && !is_document()) return m_node.value();
    std::string out;
    // Depth-first over the descendants without recursion.
    pugi::xml_node cur = m_node.first_child();
    while (cur) {
        if (is_text(cur)) out += cur.value();
        if (cur.first_child()) {
            cur = cur.first_child();
            continue;
        }
        while (cur != m_node && !cur.next_sibling()) cur = cur.parent();
        if (cur == m_node) break;
        cur = cur.next_sibling();
    }
    return out;
}

int XmlNode::attribute_count() const {
    if (m_dom == nullptr || !is_element()) return 0;
    return static_cast<int>(m_dom->attributes_of(m_node).size());
}

XmlAttribute XmlNode::attribute(int index) const {
    if (m_dom == nullptr || !is_element() || index < 0) return XmlAttribute();
    const auto& attributes = m_dom->attributes_of(m_node);
    return static_cast<std::size_t>(index) < attributes.size() ? XmlAttribute(attributes[index]) : XmlAttribute();
}

XmlNodeList XmlNode::child_nodes() const {
    if (m_dom == nullptr || !m_node) return XmlNodeList();
    return XmlNodeList(m_dom, &m_dom->children_of(m_node));
}

XmlNode XmlNodeList::item(int index) const {
    if (m_items == nullptr || index < 0 || static_cast<std::size_t>(index) >= m_items->size()) return XmlNode();
    return XmlNode(m_dom, (*m_items)[index]);
}

XmlNode XmlNodeList::next_node() { return advance(1); }

XmlNode XmlNodeList::advance(int count) {
    if (m_items == nullptr || count < 1) return XmlNode();
    const std::size_t size = m_items->size();
    const std::size_t remaining = m_next < size ? size - m_next : 0;
    // Past the end the list stays past the end.
    m_next = static_cast<std::size_t>(count) <= remaining ? m_next + count : size + 1;
    return m_next <= size ? XmlNode(m_dom, (*m_items)[m_next - 1]) : XmlNode();
}

bool XmlDom::load(const char* fileName) {
    m_children.clear();
    m_attributes.clear();
    m_doc.reset();
    std::FILE* file = open_file(fileName != nullptr ? fileName : "", "rb");
    if (file == nullptr) {
        m_code = pugi::status_file_not_found;
        m_reason = "The file could not be opened.\n";
        return false;
    }
    std::string bytes;
    char chunk[65536];
    std::size_t got;
    try {
        while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) bytes.append(chunk, got);
    } catch (...) {
        std::fclose(file);  // out of memory: the file is not left open
        throw;
    }
    const bool readError = std::ferror(file) != 0;
    std::fclose(file);
    if (readError) {
        m_code = pugi::status_io_error;
        m_reason = "The file could not be read.\n";
        return false;
    }
    return load_bytes(bytes.data(), bytes.size());
}

bool XmlDom::load_bytes(const char* data, std::size_t size) {
    m_children.clear();
    m_attributes.clear();
    return finish_load(m_doc.load_buffer(data, size, kParseOptions, pugi::encoding_auto));
}

bool XmlDom::finish_load(const pugi::xml_parse_result& result) {
    char text[160];
    if (!result) {
        m_code = result.status;
        if (result.status >= pugi::status_unrecognized_tag)
            std::snprintf(text, sizeof text, "%s at offset %lld.\n", result.description(),
                          static_cast<long long>(result.offset));
        else
            std::snprintf(text, sizeof text, "%s.\n", result.description());
        m_reason = text;
        m_doc.reset();
        return false;
    }
    int elements = 0;
    for (pugi::xml_node child : m_doc.children())
        if (child.type() == pugi::node_element && ++elements > 1) {
            m_code = kSecondRootElement;
            std::snprintf(text, sizeof text, "Only one top-level element is allowed (found <%.40s>).\n", child.name());
            m_reason = text;
            m_doc.reset();
            return false;
        }
    m_code = 0;
    m_reason.clear();
    return true;
}

XmlNode XmlDom::document_element() const { return XmlNode(this, m_doc.document_element()); }

std::size_t XmlDom::item_count() const {
    std::size_t count = 0;
    pugi::xml_node cur = m_doc;
    while (cur) {
        ++count;
        for (pugi::xml_attribute a = cur.first_attribute(); a; a = a.next_attribute()) ++count;
        if (cur.first_child()) {
            cur = cur.first_child();
            continue;
        }
        while (cur != m_doc && !cur.next_sibling()) cur = cur.parent();
        if (cur == m_doc) break;
        cur = cur.next_sibling();
    }
    return count;
}

const std::vector<pugi::xml_node>& XmlDom::children_of(pugi::xml_node node) const {
    auto found = m_children.find(node.internal_object());
    if (found != m_children.end()) return found->second;
    // Listed before it is kept: running out of memory half-way must not
    // leave a short list behind for the next call.
    std::vector<pugi::xml_node> list;
    for (pugi::xml_node child : node.children()) list.push_back(child);
    return m_children.emplace(node.internal_object(), std::move(list)).first->second;
}

const std::vector<pugi::xml_attribute>& XmlDom::attributes_of(pugi::xml_node node) const {
    auto found = m_attributes.find(node.internal_object());
    if (found != m_attributes.end()) return found->second;
    std::vector<pugi::xml_attribute> list;
    for (pugi::xml_attribute attribute : node.attributes()) list.push_back(attribute);
    return m_attributes.emplace(node.internal_object(), std::move(list)).first->second;
}

}  // namespace zor
