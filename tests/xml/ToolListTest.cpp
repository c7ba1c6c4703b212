#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "XmlTestUtil.h"
#include "support/ToolLibraryWriter.h"
#include "xml/ToolList.h"

namespace {

using zortest::tool_library;
using zortest::xml_document;
using zortest::XmlElement;
using Tokens = std::vector<std::string>;

class ToolListTest : public zortest::XmlStateTest {};

XmlElement value(const std::string& name, const std::string& text) { return XmlElement(name, text); }

XmlElement tool(std::vector<std::pair<std::string, std::string>> attributes, std::vector<XmlElement> children = {}) {
    XmlElement t("TOOL");
    t.attributes = std::move(attributes);
    t.children = std::move(children);
    return t;
}

XmlElement group(const std::string& name, std::vector<XmlElement> children) {
    XmlElement g(name);
    g.children = std::move(children);
    return g;
}

struct Shape {
    const char* name;
    std::string xml;
    Tokens tokens;
};

TEST_F(ToolListTest, WalksEveryShapeOfToolLibraryInDocumentOrder) {
    const XmlElement holder = group("Holder", {value("Type", "HSK"), value("Gauge", "120")});
    const std::vector<Shape> shapes = {
        {"attributes only, several tools",
         tool_library({tool({{"Name", "T1"}, {"Diameter", "10"}}), tool({{"Name", "T2"}, {"Diameter", "6"}})}),
         {"TOOL", "Name", "T1", "Diameter", "10", "TOOL", "Name", "T2", "Diameter", "6!", "OptiPath"}},
        // A single child of "Tools" is stepped into by name.
        {"attributes only, one tool, no OptiPath",
         tool_library({tool({{"Name", "T1"}, {"Diameter", "10"}})}, false),
         {"Tools", "TOOL", "Name", "T1", "Diameter", "10!"}},
        {"text values, one tool, no OptiPath",
         tool_library({tool({{"id", "1"}}, {value("Diameter", "10"), value("Length", "50")})}, false),
         {"Tools", "TOOL", "id", "1", "Diameter", "10", "Length", "50!"}},
        {"nested elements, several tools",
         tool_library({tool({{"name", "Drill"}}, {holder, value("Diameter", "8")}),
                       tool({{"name", "Mill"}}, {value("Diameter", "12"), holder})}),
         {"TOOL", "name", "Drill",    "Holder", "Type",    "HSK",  "Gauge", "120!",  "Diameter", "8!",      "TOOL",
          "name", "Mill", "Diameter", "12",     "Holder!", "Type", "HSK",   "Gauge", "120!",     "OptiPath"}},
        {"a nested element as the only child",
         tool_library({tool({{"a", "1"}}, {holder}), tool({{"a", "2"}}, {value("D", "5")})}),
         {"TOOL", "a", "1", "Holder!", "Type", "HSK", "Gauge", "120!", "TOOL", "a", "2", "D!", "5!", "OptiPath"}},
        {"tools whose value is their text",
         tool_library({XmlElement("TOOL", "Ball mill").attr("id", "1"), XmlElement("TOOL", "Drill").attr("id", "2")}),
         {"TOOL", "id", "1", "Ball mill!", "TOOL", "id", "2", "Drill!", "OptiPath"}},
        {"tools without attributes",
         tool_library({group("TOOL", {value("Diameter", "10"), value("Length", "50")}),
                       group("TOOL", {value("Diameter", "6"), value("Length", "40")})}),
         {"TOOL", "Diameter", "10", "Length", "50!", "TOOL!", "Diameter", "6", "Length", "40!", "OptiPath"}},
        {"a nested element with attributes",
         tool_library({tool({{"a", "1"}}, {XmlElement("Insert").attr("grade", "P25"), value("D", "5")})}, false),
         {"Tools", "TOOL", "a", "1", "Insert", "grade", "P25", "D", "5!"}},
        // Leaving a top-level element restarts the ordinal, so the first tool
        // after a header is the first tool of the list.
        {"a header before the tools",
         xml_document(group(
             "Library", {group("Header", {value("Name", "Shop"), value("Version", "2")}),
                         group("Tools", {tool({{"a", "1"}}, {value("D", "5")}), tool({{"a", "2"}}, {value("D", "6")})}),
                         XmlElement("OptiPath")})),
         {"Header", "Name", "Shop", "Version", "2!", "TOOL", "a", "1", "D!", "5!", "TOOL", "a", "2", "D!", "6!",
          "OptiPath"}},
        {"letter case of Tools and TOOL",
         xml_document(
             group("Lib", {group("tOOLS", {XmlElement("Tool").attr("a", "1"), XmlElement("tool").attr("a", "2")}),
                           XmlElement("OptiPath")})),
         {"Tool", "a", "1", "tool", "a", "2!", "OptiPath"}},
        // Only "OptiPath" spelled so ends the list; another empty element ends
        // the walk with no end mark.
        {"optipath in other letters",
         xml_document(
             group("Lib", {group("Tools", {XmlElement("TOOL").attr("a", "1"), XmlElement("TOOL").attr("a", "2")}),
                           XmlElement("optipath")})),
         {"TOOL", "a", "1", "TOOL", "a", "2!"}},
    };
    for (const Shape& shape : shapes) {
        SCOPED_TRACE(shape.name);
        zor::reset_xml_document_state();
        ASSERT_EQ(open(shape.xml), 1);
        EXPECT_EQ(walk(), shape.tokens);
    }
}

TEST_F(ToolListTest, GivesEmptyStringsWithoutADocument) {
    EXPECT_EQ(take(3), Tokens({"", "", ""}));
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}})})), 1);
    API_ResetXmlDoc();
    EXPECT_EQ(take(2), Tokens({"", ""}));
}

TEST_F(ToolListTest, FirstTokenIsTheRootsFirstChildNeverTheRoot) {
    ASSERT_EQ(open(xml_document(group("Root", {value("First", "1"), value("Second", "2")}).attr("r", "x"))), 1);
    EXPECT_EQ(walk(), Tokens({"First", "1", "Second", "2!"}));
}

TEST_F(ToolListTest, AfterTheEndGivesOneEmptyStringThenResumes) {
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}}), tool({{"a", "2"}})})), 1);
    EXPECT_EQ(walk().back(), "OptiPath");  // and the empty string after it
    EXPECT_EQ(take(4), Tokens({"OptiPath", "", "OptiPath", ""}));

    zor::reset_xml_document_state();
    ASSERT_EQ(open(tool_library({tool({{"id", "1"}}, {value("D", "5")})}, false)), 1);
    EXPECT_EQ(walk().back(), "5!");
    EXPECT_EQ(take(4), Tokens({"5!", "", "5!", ""}));
}

TEST_F(ToolListTest, ReleaseRestartsTheWalkAtTheBeginning) {
    const std::string xml = tool_library({tool({{"a", "1"}}, {value("D", "5"), value("L", "9")}), tool({{"a", "2"}})});
    ASSERT_EQ(open(xml), 1);
    const Tokens whole = walk();
    ASSERT_EQ(whole.size(), 11u);
    for (bool fullReset : {false, true}) {
        SCOPED_TRACE(fullReset);
        API_ReleaseXml(fullReset);
        EXPECT_EQ(walk(), whole);  // from the end
        API_ReleaseXml(fullReset);
        EXPECT_EQ(take(5), Tokens(whole.begin(), whole.begin() + 5));
        API_ReleaseXml(fullReset);
        EXPECT_EQ(walk(), whole);  // from the middle
    }
    // A release with no walk begun changes nothing.
    zor::reset_xml_document_state();
    ASSERT_EQ(open(xml), 1);
    API_ReleaseXml(false);
    EXPECT_EQ(walk(), whole);
}

TEST_F(ToolListTest, ReleaseLeavesAPendingEndInPlace) {
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}}), tool({{"a", "2"}})})), 1);
    const Tokens whole = walk();
    API_ReleaseXml(false);
    EXPECT_EQ(API_ReadList(), whole.front());
    take(whole.size() - 1);  // up to "OptiPath", its end still pending
    API_ReleaseXml(true);
    EXPECT_EQ(take(2), Tokens({"", whole.front()}));
}

TEST_F(ToolListTest, ANewDocumentTakesOverOnlyAfterARelease) {
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}, {"b", "2"}})}), "first.xml"), 1);
    EXPECT_EQ(take(3), Tokens({"Tools", "TOOL", "a"}));
    ASSERT_EQ(open(xml_document(group("Other", {value("X", "7")})), "second.xml"), 1);
    EXPECT_EQ(zor::kept_document_count(), 2u);
    EXPECT_EQ(take(5), Tokens({"1", "b", "2!", "OptiPath", ""}));  // the first walk goes on
    API_ReleaseXml(false);
    EXPECT_EQ(walk(), Tokens({"X", "7!"}));
}

TEST_F(ToolListTest, ReturnsLongTokensWhole) {
    const std::string longName(100, 'N');
    const std::string longValue(300, 'v');
    ASSERT_EQ(open(tool_library({tool({{longName, longValue}}, {value("D", longValue + "w")})}, false)), 1);
    const Tokens tokens = walk();
    const Tokens expected = {"Tools", "TOOL", longName, longValue, "D!", longValue + "w!"};
    ASSERT_EQ(tokens.size(), expected.size());
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(tokens[i].size(), expected[i].size());
        EXPECT_TRUE(tokens[i] == expected[i]);
    }
}

TEST_F(ToolListTest, EndsTheWalkOnAnElementWithNothingInIt) {
    ASSERT_EQ(open(xml_document(group("Lib", {XmlElement("Empty"), group("Tools", {tool({{"a", "1"}})})}))), 1);
    EXPECT_EQ(take(3), Tokens({"", "", ""}));

    zor::reset_xml_document_state();
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}}, {XmlElement("Flag"), value("D", "5")})})), 1);
    EXPECT_EQ(walk(), Tokens({"Tools", "TOOL", "a", "1", "Flag"}));
    EXPECT_TRUE(zor::g_walkDone);
}

TEST_F(ToolListTest, AttributesAfterAClimbAreTheAncestors) {
    // The last child of a tool, having attributes, climbs to the tool, whose
    // attributes and children come again.
    ASSERT_EQ(open(tool_library(
                  {tool({{"a", "1"}}, {value("D", "5"), XmlElement("Insert").attr("g", "P")}), tool({{"a", "2"}})})),
              1);
    EXPECT_EQ(take(12), Tokens({"TOOL", "a", "1", "D", "5", "Insert!", "a", "1", "D", "5", "Insert!", "a"}));
}

TEST_F(ToolListTest, ARootWithoutChildrenThrowsAndLeavesTheWalkUnbegun) {
    ASSERT_EQ(open("<Empty r=\"1\"/>"), 1);
    try {
        API_ReadList();
        FAIL() << "no COM error";
    } catch (const _com_error& e) {
        EXPECT_EQ(e.Error(), E_POINTER);
    }
    EXPECT_EQ(zor::g_walkState, "NULL");
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}})}, false)), 1);
    EXPECT_EQ(walk(), Tokens({"Tools", "TOOL", "a", "1!"}));
}

TEST_F(ToolListTest, DeepNestingIsWalkedWithoutRecursion) {
    const int depth = 100000;
    ASSERT_EQ(open(zortest::nested_document(depth, "x")), 1);
    const Tokens tokens = walk(depth + 10);
    ASSERT_EQ(tokens.size(), static_cast<std::size_t>(depth));
    EXPECT_EQ(tokens[depth - 2], "n");
    EXPECT_EQ(tokens.back(), "x!");

    // "Tools" in "Tools": one call steps down every level.
    std::string xml;
    for (int i = 0; i < depth; ++i) xml += "<Tools>";
    xml += "<a/><a/>";
    for (int i = 0; i < depth; ++i) xml += "</Tools><b/>";
    xml.resize(xml.size() - 4);  // the root has no sibling
    zor::reset_xml_document_state();
    ASSERT_EQ(open(xml), 1);
    EXPECT_EQ(take(2), Tokens({"", ""}));
}

TEST_F(ToolListTest, ReportsWhatEachTokenIs) {
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}}, {value("D", "5")}), tool({{"a", "2"}})})), 1);
    using K = zor::TokenKind;
    const std::vector<std::pair<K, bool>> expected = {
        {K::Element, false}, {K::AttributeName, false}, {K::AttributeValue, false}, {K::Element, true},
        {K::Value, true},    {K::Element, false},       {K::AttributeName, false},  {K::AttributeValue, true},
        {K::End, false},     {K::None, false}};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        zor::ListToken info;
        const std::string token = zor::read_list_token(&info);
        EXPECT_EQ(info.kind, expected[i].first) << token;
        EXPECT_EQ(info.leaves, expected[i].second) << token;
    }
}

}  // namespace
