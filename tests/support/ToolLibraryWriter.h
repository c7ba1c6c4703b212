// Builds XML documents, tool libraries in particular, for the tests.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace zortest {

// One element: attributes in order, then its text, then its children.
struct XmlElement {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text;
    std::vector<XmlElement> children;

    explicit XmlElement(std::string elementName, std::string value = "")
        : name(std::move(elementName)), text(std::move(value)) {}
    XmlElement& attr(const std::string& key, const std::string& value) {
        attributes.emplace_back(key, value);
        return *this;
    }
    XmlElement& add(XmlElement child) {
        children.push_back(std::move(child));
        return *this;
    }
};

// The document with an XML declaration; children indented one per line
// (indentation that the reader must not see as text).
std::string xml_document(const XmlElement& root);

// <ToolLibrary><Tools>tools...</Tools>[<OptiPath/>]</ToolLibrary>
std::string tool_library(const std::vector<XmlElement>& tools, bool optiPath = true);

// depth elements <n> nested in one another, the innermost holding text.
// Written without recursion.
std::string nested_document(int depth, const std::string& text);

}  // namespace zortest
