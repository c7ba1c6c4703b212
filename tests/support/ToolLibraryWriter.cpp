#include "support/ToolLibraryWriter.h"

namespace zortest {

std::string xml_escape(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&apos;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

namespace {

void write(const XmlElement& e, int depth, std::string& out) {
    out.append(2 * depth, ' ');
    out += "<" + e.name;
    for (const auto& a : e.attributes) out += " " + a.first + "=\"" + xml_escape(a.second) + "\"";
    if (e.text.empty() && e.children.empty()) {
        out += "/>\n";
        return;
    }
    out += ">" + xml_escape(e.text);
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
    XmlElement list("Tools");
    list.children = tools;
    XmlElement root("ToolLibrary");
    root.add(list);
    if (optiPath) root.add(XmlElement("OptiPath"));
    return xml_document(root);
}

std::string nested_document(int depth, const std::string& text) {
    std::string out;
    for (int i = 0; i < depth; ++i) out += "<n>";
    out += xml_escape(text);
    for (int i = 0; i < depth; ++i) out += "</n>";
    return out;
}

}  // namespace zortest
