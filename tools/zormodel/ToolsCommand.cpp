// zormodel tools FILE: walks a tool library with API_ReadList and prints its
// tokens one a line, indented by nesting, or (--json) the tools it names as
// objects of attributes and nested values, rebuilt from the same walk.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Detect.h"
#include "Report.h"
#include "ZORModelIo.h"
#include "xml/ToolList.h"
#include "xml/XmlDocument.h"

namespace zormodel {

namespace {

// Deeper nesting is still walked, but indented no further and left out of
// the JSON (whose printing recurses).
constexpr int kMaxNesting = 64;

bool is_tool(const zor::XmlNode& node) {
    std::string name = node.base_name();
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::toupper(c); });
    return node.is_element() && name == "TOOL";
}

std::string without_mark(std::string token, const zor::ListToken& info) {
    if (info.leaves && !token.empty()) token.pop_back();
    return token;
}

// Depth of nodes below the root element (its children are at 0), memoised so
// a deep document costs linear time.
class Depths {
public:
    int of(const zor::XmlNode& node) {
        std::vector<zor::XmlNode> chain;
        int depth = -1;
        for (zor::XmlNode n = node; n && !n.is_document(); n = n.parent()) {
            auto found = m_depth.find(n.key());
            if (found != m_depth.end()) {
                depth = found->second;
                break;
            }
            chain.push_back(n);
        }
        if (chain.empty()) return depth;
        // The top of the chain without a known depth is the root element.
        if (depth == -1) depth = -2;
        for (auto it = chain.rbegin(); it != chain.rend(); ++it) m_depth[it->key()] = ++depth;
        return depth;
    }

private:
    std::unordered_map<const void*, int> m_depth;
};

// The tools of the walk: every TOOL element named, with the attributes and
// values the walk reports inside it.
class ToolBuilder {
public:
    void add(const std::string& token, const zor::ListToken& info) {
        switch (info.kind) {
            case zor::TokenKind::Element:
                entry_of(info.node);
                break;
            case zor::TokenKind::AttributeName:
                m_attribute = token;
                break;
            case zor::TokenKind::AttributeValue: {
                const long id = entry_of(info.node);
                if (id >= 0) m_entries[id].attributes.emplace_back(m_attribute, without_mark(token, info));
                break;
            }
            case zor::TokenKind::Value: {
                const long id = entry_of(info.node);
                if (id >= 0) {
                    m_entries[id].value = without_mark(token, info);
                    m_entries[id].hasValue = true;
                }
                break;
            }
            default:
                break;
        }
    }

    std::vector<Report> tools() const {
        std::vector<Report> out;
        for (std::size_t id : m_tools) out.push_back(report(id, "tool"));
        return out;
    }

private:
    struct Entry {
        std::string name;
        int depth = 0;
        std::vector<std::pair<std::string, std::string>> attributes;
        std::string value;
        bool hasValue = false;
        std::vector<std::size_t> children;
    };

    // The entry of node, made on first sight; -1 outside any tool.
    long entry_of(const zor::XmlNode& node) {
        std::vector<zor::XmlNode> chain;
        long base = -1;
        bool startsTool = false;
        for (zor::XmlNode n = node; n && !n.is_document(); n = n.parent()) {
            auto found = m_entryOf.find(n.key());
            if (found != m_entryOf.end()) {
                base = found->second;
                break;
            }
            chain.push_back(n);
            if (is_tool(n)) {
                startsTool = true;
                break;
            }
        }
        for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
            long id = -1;
            if (startsTool) {
                id = make(*it, 0);
                m_tools.push_back(id);
                startsTool = false;
            } else if (base >= 0 && m_entries[base].depth < kMaxNesting) {
                id = make(*it, m_entries[base].depth + 1);
                m_entries[base].children.push_back(id);
            }
            m_entryOf[it->key()] = id;
            base = id;
        }
        return base;
    }

    long make(const zor::XmlNode& node, int depth) {
        m_entries.push_back(Entry());
        m_entries.back().name = node.base_name();
        m_entries.back().depth = depth;
        return static_cast<long>(m_entries.size()) - 1;
    }

    Report report(std::size_t id, const char* kind) const {
        const Entry& e = m_entries[id];
        Report r(kind);
        r.text("name", e.name);
        if (!e.attributes.empty()) {
            std::vector<Report> attributes;
            for (const auto& a : e.attributes)
                attributes.push_back(Report().text("name", a.first).text("value", a.second));
            r.list("attributes", std::move(attributes));
        }
        if (e.hasValue) r.text("value", e.value);
        if (!e.children.empty()) {
            std::vector<Report> values;
            for (std::size_t child : e.children) values.push_back(report(child, ""));
            r.list("values", std::move(values));
        }
        return r;
    }

    std::vector<Entry> m_entries;
    std::vector<std::size_t> m_tools;
    std::unordered_map<const void*, long> m_entryOf;
    std::string m_attribute;
};

int indent_of(const zor::ListToken& info, Depths& depths) {
    int depth = info.node ? depths.of(info.node) : 0;
    if (info.kind == zor::TokenKind::AttributeName || info.kind == zor::TokenKind::AttributeValue ||
        info.kind == zor::TokenKind::Value)
        ++depth;
    return 2 * std::min(std::max(depth, 0), kMaxNesting);
}

int run_tools(const std::string& path, bool json) {
    {
        zor::XmlDom check;
        if (!check.load(path.c_str())) {
            std::string reason = check.parse_error_reason();
            if (!reason.empty() && reason.back() == '\n') reason.pop_back();
            std::fprintf(stderr, "zormodel: %s: not a well-formed XML document: %s\n", path.c_str(), reason.c_str());
            return 1;
        }
    }
    std::string name = path;
    int answer = 0;
    API_IsXml(name.data(), &answer);
    if (answer != 1) return 1;
    Depths depths;
    ToolBuilder builder;
    int status = 0;
    try {
        for (;;) {
            zor::ListToken info;
            const std::string token = zor::read_list_token(&info);
            if (info.stopped) {
                // The library ends such a walk as it ends a list; a host would
                // take the tools so far for the whole library.
                std::fprintf(stderr,
                             "zormodel: %s: the walk stops where it would give its tokens again (it comes back to "
                             "elements it left)\n",
                             path.c_str());
                status = 1;
            }
            if (token.empty()) break;
            if (json)
                builder.add(token, info);
            else
                std::printf("%*s%s\n", indent_of(info, depths), "", token.c_str());
        }
    } catch (const _com_error& e) {
        std::fprintf(stderr, "zormodel: %s: the walk failed: %s (0x%08X)\n", path.c_str(), e.ErrorMessage(),
                     static_cast<unsigned>(e.Error()));
        status = 1;
    }
    API_ReleaseXml(true);
    API_ResetXmlDoc();
    if (json) {
        print_json_array(stdout, builder.tools());
        std::fputs("\n", stdout);
    }
    return status;
}

}  // namespace

void add_tools_command(CLI::App& app) {
    auto* cmd = app.add_subcommand("tools", "Walk a tool library and print its tokens");
    static std::string path;
    static bool json = false;
    cmd->add_option("FILE", path, "Tool-library XML file")->required();
    cmd->add_flag("--json", json, "Print the tools as a JSON array of objects");
    cmd->callback([] {
        require_kind(path, {FileKind::ToolLibrary, FileKind::Xml}, "a tool library");
        const int status = run_tools(path, json);
        if (status != 0) throw CLI::RuntimeError(status);
    });
}

}  // namespace zormodel
