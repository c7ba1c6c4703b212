#include <gtest/gtest.h>

#include <string>

#include "support/ToolLibraryWriter.h"
#include "xml/XmlDom.h"

namespace {

// The DOM behaviours the tool-list walk depends on.
TEST(XmlDomTest, NodesAsTheWalkSeesThem) {
    zor::XmlDom dom;
    const std::string xml =
        "<t:r xmlns:t=\"urn:t\" t:id=\"7\">\n  <!-- note -->\n  <?pi data?>\n"
        "  <a>one<!--x--><b>two</b><![CDATA[<three>]]></a>\n  tail\n</t:r>";
    ASSERT_TRUE(dom.load_bytes(xml.data(), xml.size())) << dom.parse_error_reason();
    const zor::XmlNode root = dom.document_element();
    EXPECT_EQ(root.base_name(), "r");
    ASSERT_EQ(root.attribute_count(), 2);
    EXPECT_EQ(root.attribute(1).base_name() + "=" + root.attribute(1).text(), "id=7");
    // Comments and instructions are children, indentation is not.
    zor::XmlNodeList children = root.child_nodes();
    ASSERT_EQ(children.length(), 4);
    EXPECT_EQ(children.item(0).base_name() + children.item(1).base_name() + children.item(2).base_name(), "a");
    EXPECT_EQ(children.item(2).text(), "onetwo<three>");
    EXPECT_EQ(children.advance(4).text(), "\n  tail\n");
    EXPECT_FALSE(children.next_node() || children.item(4) || root.attribute(2));  // past the ends
    EXPECT_TRUE(root.parent().is_document());
    EXPECT_EQ(root.parent().base_name(), "");
    EXPECT_FALSE(dom.load_bytes("<a>", 3));  // and the document is emptied
    EXPECT_FALSE(dom.document_element());
}

TEST(XmlDomTest, DeepDocumentsLoadAndJoinTextWithoutRecursion) {
    zor::XmlDom dom;
    const std::string xml = zortest::nested_document(100000, "deep");
    ASSERT_TRUE(dom.load_bytes(xml.data(), xml.size()));
    EXPECT_EQ(dom.document_element().text(), "deep");
    EXPECT_EQ(dom.item_count(), 100002u);  // with the document and the text node
}

}  // namespace
