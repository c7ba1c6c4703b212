#include "xml/ToolList.h"

#include <cstdint>
#include <limits>
#include <unordered_map>
#include <unordered_set>
#include <vector>

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

// A position without its ordinal.
struct Place {
    const void* node;
    std::int32_t attrIndex;
    std::uint8_t flags;

    explicit Place(const Position& p)
        : node(p.node.key()),
          attrIndex(p.attrIndex),
          flags(static_cast<std::uint8_t>(p.attrValueNext | p.inAttributes << 1)) {}
    bool operator==(const Place& o) const { return node == o.node && attrIndex == o.attrIndex && flags == o.flags; }
};

std::size_t mix(std::uint64_t h) {
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdULL;
    h ^= h >> 33;
    return static_cast<std::size_t>(h);
}

struct PlaceHash {
    std::size_t operator()(const Place& p) const {
        return mix(reinterpret_cast<std::uintptr_t>(p.node) ^
                   (static_cast<std::uint64_t>(static_cast<std::uint32_t>(p.attrIndex)) << 2 | p.flags) << 40);
    }
};

// The guard that ends a walk which would go round for ever: the positions
// reported in this walk, so that one about to be reported again ends it.
//
// The walk moves down and on through the document; only the climb from a
// last child with attributes (after which the ancestor reached is reported)
// takes it back. Until a walk climbs, nothing is kept but where it began and
// how many tokens it gave; at its first climb those are walked again to
// index them, so that walks that never climb cost nothing.
//
// Equal positions give equal tokens from there on. The ordinal is part of a
// position, but a walk going round advances it each time, so positions are
// kept without it: two that differ in it alone are the same when no step
// between them chose by it. Only "Tools" and "OptiPath" elements of two
// children or more do (which tool comes; whether the list ends); these
// choices are kept with the ordinal, which is all that decides them. So a
// walk that would repeat itself ends where it would begin again, one that
// never repeats is never cut, and what is kept never outgrows the document.
class WalkLog {
public:
    void Clear() {
        m_begun = false;
        m_indexed = false;
        m_replaying = false;
        m_calls = 0;
        m_choices = 0;
        // Released, not kept: only a walk that climbed filled them.
        decltype(m_latest)().swap(m_latest);
        decltype(m_chosen)().swap(m_chosen);
    }
    // Where the walk's first call began, and whether a restart began it.
    void Begin(const Position& start, bool restarted) {
        m_begun = true;
        m_start = start;
        m_restarted = restarted;
    }
    bool begun() const { return m_begun; }
    bool indexed() const { return m_indexed; }
    // Steps must note where they begin: to look them up, or to index them.
    bool watching() const { return m_indexed || m_replaying; }
    void set_replaying(bool replaying) { m_replaying = replaying; }
    const Position& start() const { return m_start; }
    bool restarted() const { return m_restarted; }
    std::uint64_t calls() const { return m_calls; }

    std::uint64_t choices() const { return m_choices; }
    void set_choices(std::uint64_t choices) { m_choices = choices; }
    // A step at p chooses by the ordinal, all ordinals past count deciding
    // alike; while watching(), true when a step did so before in this walk
    // from the same position and ordinal.
    bool Chooses(const Position& p, std::int32_t count, bool atRestart) {
        ++m_choices;
        if (!watching() || atRestart) return false;
        const std::int32_t ordinal = p.toolOrdinal > count ? count + 1 : p.toolOrdinal;
        return !m_chosen.insert({Place(p), ordinal}).second;
    }

    // p, taken when choices() was choices, was reported in this walk with no
    // choice since.
    bool Repeats(const Position& p, std::uint64_t choices) const {
        if (!m_indexed) return false;
        auto found = m_latest.find(Place(p));
        return found != m_latest.end() && found->second == choices;
    }
    // A call of this walk gave its token.
    void Counted() { ++m_calls; }
    // A call gave its token from p, when choices() was choices; atRestart:
    // where a restart put the cursor with flags that only that step reads
    // so, never to come again.
    void Index(const Position& p, std::uint64_t choices, bool atRestart) {
        if (!atRestart) m_latest[Place(p)] = choices;
    }
    void set_indexed() { m_indexed = true; }

private:
    struct State {
        Place place;
        std::int32_t ordinal;
        bool operator==(const State& o) const { return place == o.place && ordinal == o.ordinal; }
    };
    struct StateHash {
        std::size_t operator()(const State& s) const {
            return PlaceHash()(s.place) ^ mix(static_cast<std::uint32_t>(s.ordinal) + 0x9e3779b97f4a7c15ULL);
        }
    };

    bool m_begun = false;
    bool m_indexed = false;
    bool m_replaying = false;
    bool m_restarted = false;
    Position m_start{};
    std::uint64_t m_calls = 0;
    std::uint64_t m_choices = 0;
    std::unordered_map<Place, std::uint64_t, PlaceHash> m_latest;  // choices() at its latest report
    std::unordered_set<State, StateHash> m_chosen;
};

WalkLog g_walkLog;
bool g_walkGuard = true;

// One call of API_ReadList.
class WalkCall {
public:
    explicit WalkCall(ListToken& info) : m_info(info) {}

    std::string run(XmlDom& document);

private:
    std::string step();
    void index_walk_so_far();
    // The cursor is where a restart put it in this call, with the flags and
    // the ordinal the walk had before: it has reported nothing here.
    bool at_restart() const { return m_restarted && g_walkNode == m_atCallStart.node; }
    // The flag of a pending value, on an element reached without its
    // attributes begun, means that the step that moved there reported the
    // element's name; not after a restart, where the name comes.
    bool name_reported() const { return g_attrValueNext && !at_restart(); }
    std::string token(TokenKind kind, const XmlNode& node, std::string text) {
        m_info.kind = kind;
        m_info.node = node;
        return text;
    }
    // Ends the walk as a list ends, the position left where it stands.
    std::string stop() {
        m_info.stopped = true;
        return token(TokenKind::None, XmlNode(), std::string());
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
    bool m_restarted = false;  // this call began the walk
    // Where the step that gives the token began, and the guard's count then.
    Position m_head{};
    std::uint64_t m_headChoices = 0;
    bool m_headAtRestart = false;
    bool m_climbed = false;
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
        // Only the index and the cursor start afresh. The flags and the
        // ordinal keep what the walk left: restarted in the middle of a tool,
        // the walk goes on with that tool's pair; after a whole tool, with
        // the next one.
        g_attrIndex = 0;
        g_walkNode = first;
        g_walkState = "0";
        g_walkLog.Clear();  // a new walk
        m_restarted = true;
    }
    m_atCallStart = position();
    if (!g_walkLog.begun()) g_walkLog.Begin(m_atCallStart, m_restarted);
    // The calls after one that throws make a new walk: its steps could not
    // be walked again.
    struct NewWalkOnThrow {
        bool armed = true;
        ~NewWalkOnThrow() {
            if (armed) g_walkLog.Clear();
        }
    } onThrow;
    std::string text = step();
    onThrow.armed = false;
    if (g_walkDone || m_info.stopped) {
        g_walkLog.Clear();  // what comes after is a new walk
        return text;
    }
    g_walkLog.Counted();
    if (g_walkLog.indexed())
        g_walkLog.Index(m_head, m_headChoices, m_headAtRestart);
    else if (m_climbed && g_walkGuard)
        index_walk_so_far();
    return text;
}

// The walk again from where it began, over its calls up to this one,
// indexing where each gave its token; then the state as this call left it.
// The steps depend on nothing but the state, so they come out the same.
void WalkCall::index_walk_so_far() {
    const Position now = position();
    const XmlNodeList children = g_walkChildren;
    const std::uint64_t choices = g_walkLog.choices();
    struct Back {
        const Position& now;
        const XmlNodeList& children;
        std::uint64_t choices;
        ~Back() {
            restore(now);
            g_walkChildren = children;
            g_walkLog.set_choices(choices);
            g_walkLog.set_replaying(false);
        }
    } back{now, children, choices};
    restore(g_walkLog.start());
    g_walkLog.set_choices(0);
    g_walkLog.set_replaying(true);
    for (std::uint64_t i = 0; i < g_walkLog.calls(); ++i) {
        ListToken info;
        WalkCall call(info);
        call.m_restarted = i == 0 && g_walkLog.restarted();
        call.m_atCallStart = position();
        call.step();
        g_walkLog.Index(call.m_head, call.m_headChoices, call.m_headAtRestart);
    }
    g_walkLog.set_indexed();
}

std::string WalkCall::step() {
    for (;;) {
        const XmlNode cursor = need(g_walkNode);
        const int n = cursor.attribute_count();
        if (g_walkLog.watching()) {
            m_head = position();
            if (n == 0) {
                // Without attributes, the index and whether they were begun
                // make no difference to the steps that follow.
                m_head.attrIndex = 0;
                m_head.inAttributes = false;
            }
            m_headChoices = g_walkLog.choices();
            // Only with a flag set does a step where a restart put the cursor
            // go otherwise than the same step later in the walk.
            m_headAtRestart = at_restart() && (g_attrValueNext || g_inAttributes);
            if (g_walkLog.Repeats(m_head, m_headChoices)) return stop();
        }
        const int i = g_attrIndex;
        if (n > 0 && i < n) {
            if (g_inAttributes) return attribute_token(cursor, n);
            if (name_reported()) {
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
        if (k >= 2 && (name == "OptiPath" || equals_ignoring_case(name, "Tools")) &&
            g_walkLog.Chooses(m_head, k, m_headAtRestart))
            return stop();
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
            const XmlNode tool = need(g_walkChildren.advance(g_toolOrdinal));
            // Restarted in the middle of a tool's attributes, the flags stay:
            // they go on where they stood, on the ordinal-th tool.
            if (g_inAttributes && at_restart())
                g_walkNode = tool;
            else
                step_onto(tool);
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
        m_climbed = true;
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
    if (g_inAttributes && at_restart() && child.is_element()) {
        // Restarted in the middle of a tool's attributes: the cursor is named
        // and the flags stay, so that the child's attributes go on.
        std::string text = token(TokenKind::Element, cursor, name);
        g_walkNode = child;
        advance_ordinal();
        return text;
    }
    if (child.is_element()) {
        const bool named = name_reported();
        std::string text =
            named ? token(TokenKind::Element, child, child.base_name()) : token(TokenKind::Element, cursor, name);
        if (!named) g_attrValueNext = false;  // the child's name comes next
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
    g_walkLog.Clear();
    g_walkGuard = true;
}

void set_walk_guard(bool on) {
    g_walkLog.Clear();
    g_walkGuard = on;
}

}  // namespace zor

char* API_ReadList() {
    zor::read_list_token(nullptr);
    return zor::g_listBuffer.data();
}
