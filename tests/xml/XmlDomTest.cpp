#include <gtest/gtest.h>

#include <string>

#include "support/ToolLibraryWriter.h"
#include "xml/XmlDom.h"

namespace {

zor::XmlNode load(zor::XmlDom& dom, const std::string& xml) {
    EXPECT_TRUE(dom.load_bytes(xml.data(), xml.size())) << dom.parse_error_reason();
    return dom.document_element();
}

TEST(XmlDomTest, ChildNodesKeepCommentsAndInstructionsButNotIndentation) {
    zor::XmlDom dom;
    zor::XmlNode root = load(dom, "<r>\n  <!-- note -->\n  <?pi data?>\n  <a>x</a>\n  tail\n</r>");
    zor::XmlNodeList children = root.child_nodes();
    ASSERT_EQ(children.length(), 4);
    EXPECT_EQ(children.item(0).text(), " note ");
    EXPECT_EQ(children.item(0).base_name(), "");
    EXPECT_EQ(children.item(1).base_name(), "");
    EXPECT_EQ(children.item(2).base_name(), "a");
    EXPECT_EQ(children.item(3).text(), "\n  tail\n");
    EXPECT_FALSE(children.item(4));
    EXPECT_TRUE(root.last_child() == children.item(3));
    EXPECT_TRUE(children.item(2).next_sibling() == children.item(3));
    EXPECT_TRUE(children.item(2).parent() == root);
}

TEST(XmlDomTest, BaseNamesDropThePrefixAndTextJoinsTheDescendants) {
    zor::XmlDom dom;
    zor::XmlNode root =
        load(dom, "<t:r xmlns:t=\"urn:t\" t:id=\"7\"><a>one<!--x--><b>two</b><![CDATA[<three>]]></a></t:r>");
    EXPECT_EQ(root.base_name(), "r");
    ASSERT_EQ(root.attribute_count(), 2);
    EXPECT_EQ(root.attribute(0).base_name(), "t");
    EXPECT_EQ(root.attribute(1).base_name(), "id");
    EXPECT_EQ(root.attribute(1).text(), "7");
    EXPECT_FALSE(root.attribute(2));
    EXPECT_EQ(root.text(), "onetwo<three>");
    EXPECT_EQ(root.parent().base_name(), "");
    EXPECT_TRUE(root.parent().is_document());
    EXPECT_EQ(root.parent().text(), "onetwo<three>");
    EXPECT_FALSE(root.parent().parent());
}

TEST(XmlDomTest, NextNodeWalksTheListOnceThenStaysPastTheEnd) {
    zor::XmlDom dom;
    zor::XmlNodeList list = load(dom, "<r><a/><b/><c/></r>").child_nodes();
    EXPECT_EQ(list.next_node().base_name(), "a");
    EXPECT_EQ(list.advance(2).base_name(), "c");
    EXPECT_FALSE(list.next_node());
    EXPECT_FALSE(list.next_node());
    zor::XmlNodeList fresh = dom.document_element().child_nodes();
    EXPECT_EQ(fresh.advance(2).base_name(), "b");
    EXPECT_FALSE(fresh.advance(5));
    EXPECT_FALSE(zor::XmlNodeList().next_node());
}

TEST(XmlDomTest, DeepDocumentsLoadCountAndJoinTextWithoutRecursion) {
    zor::XmlDom dom;
    const int depth = 100000;
    zor::XmlNode root = load(dom, zortest::nested_document(depth, "deep"));
    EXPECT_EQ(root.text(), "deep");
    EXPECT_EQ(dom.item_count(), static_cast<std::size_t>(depth) + 2);  // document and text node
}

TEST(XmlDomTest, AFailedLoadEmptiesTheDocument) {
    zor::XmlDom dom;
    load(dom, "<a><b/></a>");
    EXPECT_FALSE(dom.load_bytes("<a>", 3));
    EXPECT_FALSE(dom.document_element());
    EXPECT_NE(dom.parse_error_code(), 0);
    EXPECT_TRUE(dom.load_bytes("<z/>", 4));
    EXPECT_EQ(dom.parse_error_reason(), "");
    EXPECT_EQ(dom.document_element().base_name(), "z");
}

}  // namespace
