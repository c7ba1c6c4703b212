#include "xml/ToolList.h"

#include <cstdint>
#include <limits>

#include "platform/comsupport.h"
#include "xml/ToolLibrary.h"
#include "xml/XmlDocument.h"

namespace zor {

std::string g_listBuffer;
std::string g_walkState = "NULL";
XmlNode g_walkNode;
XmlNodeList g_walkChildren;
std::int32_t g_attrIndex = 0;
bool g_attrValueNext = false;
bool g_inAttributes = false;
bool g_walkDone = false;
std::int32_t g_toolOrdinal = 1;

namespace {

// The walk needs this node: a missing one is E_POINTER for the host.
XmlNode need(const XmlNode& node) {
    if (!node) _com_issue_error(E_POINTER);
    return node;
}

bool equals_ignoring_case(const std::string& text, const char* word) {
    std::size_t i = 0;
    for (; word[i] != '\0'; ++i) {
        if (i == text.size()) return false;
        char a = text[i], b = word[i];
        if (a >= 'A' && a <= 'Z') a = static_cast<char>(a - 'A' + 'a');
        if (b >= 'A' && b <= 'Z') b = static_cast<char>(b - 'A' + 'a');
        if (a != b) return false;
    }
    return i == text.size();
}

// Saturates: an ordinal past INT32_MAX would be undefined, and no document
// has that many children.
void advance_ordinal() {
    if (g_toolOrdinal < std::numeric_limits<std::int32_t>::max()) ++g_toolOrdinal;
}

bool is_last_child(const XmlNode& node) { return need(node.parent()).last_child() == node; }

// The cursor moves onto an element of which nothing has been reported yet.
void step_onto(const XmlNode& node) {
    g_walkNode = node;
    g_attrIndex = 0;
    g_attrValueNext = false;
    g_inAttributes = false;
}

struct Position {
    XmlNode node;
    std::int32_t attrIndex;
    bool attrValueNext;
    bool inAttributes;
    std::int32_t toolOrdinal;
};

Position position() { return {g_walkNode, g_attrIndex, g_attrValueNext, g_inAttributes, g_toolOrdinal}; }

void restore(const Position& p) {
    g_walkNode = p.node;
    g_attrIndex = p.attrIndex;
    g_attrValueNext = p.attrValueNext;
    g_inAttributes = p.inAttributes;
    g_toolOrdinal = p.toolOrdinal;
}

// One call of API_ReadList.
class WalkCall {
public:
    explicit WalkCall(ListToken& info) : m_info(info) {}

    std::string run(XmlDom& document);

private:
    std::string token(TokenKind kind, const XmlNode& node, std::string text) {
        m_info.kind = kind;
        m_info.node = node;
        return text;
    }
    std::string mark(std::string text) {
        m_info.leaves = true;
        return text + "!";
    }
    std::string attribute_token(const XmlNode& cursor, int attributeCount);
    std::string element_name(const XmlNode& cursor);
    std::string first_child_token(const XmlNode& cursor);
    std::string single_child(const XmlNode& cursor, const std::string& name);
    std::string stepping(const XmlNode& cursor, const std::string& name);
    std::string finish(const XmlNode& start, std::string text);

    ListToken& m_info;
    Position m_atCallStart{};
};

std::string WalkCall::run(XmlDom& document) {
    if (g_walkDone) {
        g_walkDone = false;
        return std::string();
    }
    if (g_walkState == "NULL") {
        // Checked before the state changes: a root without children leaves the
        // walk unbegun instead of stuck on a null cursor for good.
        XmlNode first = need(need(document.document_element()).first_child());
        // Every position field starts afresh, so a walk restarted by
        // API_ReleaseXml in its middle gives the same tokens as the first.
        step_onto(first);
        g_toolOrdinal = 1;
        g_walkState = "0";
    }
    m_atCallStart = position();
    for (;;) {
        const XmlNode cursor = need(g_walkNode);
        const int n = cursor.attribute_count();
        const int i = g_attrIndex;
        if (n > 0 && i < n) {
            if (g_inAttributes) return attribute_token(cursor, n);
            if (g_attrValueNext) {
                // The step that moved here reported the name already.
                g_inAttributes = true;
                g_attrValueNext = false;
                continue;
            }
            return element_name(cursor);
        }
        if (n > 0 && i == n) return first_child_token(cursor);
        if (n > 0) {  // i > n: the map changed under the index
            g_attrIndex = 0;
            continue;
        }

        const std::string name = cursor.base_name();
        g_walkChildren = cursor.child_nodes();
        const int k = g_walkChildren.length();
        if (g_toolOrdinal > k) {
            if (k == 1) return single_child(cursor, name);
            if (name == "OptiPath") {
                g_walkDone = true;
                return token(TokenKind::End, cursor, name);
            }
            if (k == 0) {
                // An element with neither attributes nor children (or a bare
                // text node) would reset the ordinal and come back here without
                // end: the walk ends instead.
                g_walkDone = true;
                return token(TokenKind::None, cursor, std::string());
            }
            g_toolOrdinal = 1;
            continue;
        }
        if (k == 1) return single_child(cursor, name);
        if (equals_ignoring_case(name, "Tools")) {
            // Onto the ordinal-th tool (the nextNode calls on a fresh list).
            step_onto(need(g_walkChildren.advance(g_toolOrdinal)));
            continue;
        }
        return stepping(cursor, name);
    }
}

std::string WalkCall::attribute_token(const XmlNode& cursor, int attributeCount) {
    const XmlAttribute attribute = cursor.attribute(g_attrIndex);
    if (!g_attrValueNext) {
        g_attrValueNext = true;
        return token(TokenKind::AttributeName, cursor, attribute.base_name());
    }
    g_attrValueNext = false;
    ++g_attrIndex;
    std::string text = token(TokenKind::AttributeValue, cursor, attribute.text());
    // An element with attributes only ends with its last value (its child
    // list, being empty, has nothing to step into).
    if (g_attrIndex == attributeCount && !cursor.has_child_nodes()) return finish(cursor, std::move(text));
    return text;
}

std::string WalkCall::element_name(const XmlNode& cursor) {
    const std::string name = cursor.base_name();
    const XmlNode parent = need(cursor.parent());
    const XmlNode last = parent.last_child();
    std::string text = token(TokenKind::Element, cursor, name);
    // The root element is never climbed past: its parent is the document.
    if (!equals_ignoring_case(name, "TOOL") && last && last == cursor && !parent.is_document()) {
        // The last child: climb while the new cursor is again its parent's
        // last child. The attributes reported next are the ancestor's, not the
        // named element's; intended, the walk relies on it as it stands.
        XmlNode up = parent;
        while (!need(up.parent()).is_document() && is_last_child(up)) up = up.parent();
        g_walkNode = up;
        text = mark(std::move(text));
        advance_ordinal();
    }
    g_inAttributes = true;
    g_attrValueNext = false;
    return text;
}

std::string WalkCall::first_child_token(const XmlNode& cursor) {
    g_attrIndex = 0;
    g_walkChildren = cursor.child_nodes();
    const XmlNode child = need(g_walkChildren.item(0));
    g_walkNode = child;
    g_attrValueNext = true;
    g_inAttributes = false;
    const std::string name = child.base_name();
    if (!is_last_child(child)) return token(TokenKind::Element, child, name);
    // The only child. An element with contents of its own (children or
    // attributes) is named with the mark; anything else is a value.
    if (child.is_element() && (child.has_child_nodes() || child.attribute_count() > 0))
        return mark(token(TokenKind::Element, child, name));
    return finish(child, token(TokenKind::Value, cursor, child.text()));
}

std::string WalkCall::single_child(const XmlNode& cursor, const std::string& name) {
    const XmlNode child = need(g_walkChildren.item(0));
    if (child.is_element()) {
        std::string text = g_attrValueNext ? token(TokenKind::Element, child, child.base_name())  // cursor named
                                           : token(TokenKind::Element, cursor, name);
        g_walkNode = child;
        g_attrIndex = 0;
        g_inAttributes = false;
        advance_ordinal();
        return text;
    }
    if (!g_attrValueNext) {
        g_attrValueNext = true;
        return token(TokenKind::Element, cursor, name);
    }
    return finish(cursor, token(TokenKind::Value, cursor, cursor.text()));
}

std::string WalkCall::stepping(const XmlNode& cursor, const std::string& name) {
    const XmlNode parent = need(cursor.parent());
    const XmlNode last = parent.last_child();
    if (!last) return token(TokenKind::Element, cursor, name);
    const XmlNode first = need(cursor.first_child());
    g_attrIndex = 0;
    g_inAttributes = false;
    if (g_attrValueNext) {
        // The step that moved here reported the name (with its mark, when the
        // cursor is the last child): go on with the first child's name.
        g_walkNode = first;
        return token(TokenKind::Element, first, first.base_name());
    }
    std::string text = token(TokenKind::Element, cursor, name);
    g_walkNode = first;
    if (last != cursor) return text;
    // The last child: named with the mark, and its contents follow (the
    // cursor goes down, never back to an ancestor, which would report
    // elements already walked over again).
    advance_ordinal();
    return mark(std::move(text));
}

// After the last token of start (an element's value, an only text child, or
// the last attribute value of an element without children): climbs through
// the ancestors of which the node left is the last child. Where the climb
// stops the cursor moves to the next sibling; when enclosing elements were
// left the token gets "!" and the ordinal advances, or restarts at 1 when a
// "Tools" list or a top-level element was left. Reaching the document ends the
// walk, and the position goes back to where the call found it, so resuming
// after the end repeats the final token.
std::string WalkCall::finish(const XmlNode& start, std::string text) {
    XmlNode node = start;
    bool leftTools = false;
    for (;;) {
        const XmlNode parent = need(node.parent());
        if (parent.is_document()) {
            g_walkDone = true;
            restore(m_atCallStart);
            return mark(std::move(text));
        }
        if (parent.last_child() != node) break;
        node = parent;
        if (equals_ignoring_case(node.base_name(), "Tools")) leftTools = true;
    }
    const bool topLevel = need(node.parent()).parent().is_document();
    const bool leftEnclosing = node != start;
    step_onto(node.next_sibling());
    if (!leftEnclosing) return text;
    if (leftTools || topLevel)
        g_toolOrdinal = 1;
    else
        advance_ordinal();
    return mark(std::move(text));
}

}  // namespace

const std::string& read_list_token(ListToken* info) {
    ListToken scratch;
    ListToken& out = info != nullptr ? *info : scratch;
    out = ListToken();
    XmlDom* document = g_xmlDocument;
    std::string text;
    if (document != nullptr) {
        const Position start = position();
        const bool begun = g_walkState != "NULL";
        try {
            text = WalkCall(out).run(*document);
        } catch (const std::bad_alloc&) {
            // Out of memory: no token (""), and the walk stays where this
            // call found it.
            restore(start);
            if (!begun) g_walkState = "NULL";
            g_walkDone = false;
            out = ListToken();
            text.clear();
        }
    }
    g_listBuffer = std::move(text);
    return g_listBuffer;
}

void reset_tool_list_state() {
    g_listBuffer.clear();
    g_walkState = "NULL";
    g_walkNode = XmlNode();
    g_walkChildren = XmlNodeList();
    g_attrIndex = 0;
    g_attrValueNext = false;
    g_inAttributes = false;
    g_walkDone = false;
    g_toolOrdinal = 1;
}

}  // namespace zor

char* API_ReadList() {
    zor::read_list_token(nullptr);
    return zor::g_listBuffer.data();
}
