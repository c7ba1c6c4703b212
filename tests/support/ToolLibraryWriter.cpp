#include "support/ToolLibraryWriter.h"

#include <cstring>

namespace zortest {

namespace {

std::string escape(const std::string& text) {
    static const char kSpecial[] = "&<>\"'";
    static const char* const kEntities[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"};
    std::string out;
    for (char c : text) {
        const char* special = c == '\0' ? nullptr : std::strchr(kSpecial, c);
        out += special != nullptr ? std::string(kEntities[special - kSpecial]) : std::string(1, c);
    }
    return out;
}

void write(const XmlElement& e, int depth, std::string& out) {
    out.append(2 * depth, ' ') += "<" + e.name;
    for (const auto& a : e.attributes) out += " " + a.first + "=\"" + escape(a.second) + "\"";
    if (e.text.empty() && e.children.empty()) {
        out += "/>\n";
        return;
    }
    out += ">" + escape(e.text);
    if (!e.children.empty()) {
        out += "\n";
        for (const XmlElement& child : e.children) write(child, depth + 1, out);
        out.append(2 * depth, ' ');
    }
    out += "</" + e.name + ">\n";
}

}  // namespace

std::string xml_document(const XmlElement& root) {
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    write(root, 0, out);
    return out;
}

std::string tool_library(const std::vector<XmlElement>& tools, bool optiPath) {
    XmlElement root("ToolLibrary");
    root.add(XmlElement("Tools")).children[0].children = tools;
    if (optiPath) root.add(XmlElement("OptiPath"));
    return xml_document(root);
}

std::string nested_document(int depth, const std::string& text) {
    std::string out;
    for (int i = 0; i < depth; ++i) out += "<n>";
    out += escape(text);
    for (int i = 0; i < depth; ++i) out += "</n>";
    return out;
}

}  // namespace zortest
