#include <gtest/gtest.h>

#include <string>

#include "support/TempDir.h"
#include "zorapi/XmlHolder.h"

namespace {

using zortest::TempDir;

class XmlHolderTest : public ::testing::Test {
protected:
    void TearDown() override { zor::reset_xml_holders(); }

    // Loads xml under "T" and returns its root element.
    ZORAPI_XmlTag load(const std::string& xml) {
        std::string path = dir.write("doc.xml", xml);
        EXPECT_NE(ZORAPI_LoadXmlFile(path.c_str(), "T"), 0);
        return ZORAPI_Get_Xml_Hold_Tag(ZORAPI_Get_Xml_Hold_By_Name("T"));
    }

    TempDir dir;
};

TEST_F(XmlHolderTest, KeepsDocumentsUnderTheirNamesUntilFreed) {
    std::string a = dir.write("a.xml", "<a/>");
    std::string b = dir.write("b.xml", "<b/>");
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name("one"), nullptr);
    ASSERT_NE(ZORAPI_LoadXmlFile(a.c_str(), "one"), 0);
    ASSERT_NE(ZORAPI_LoadXmlFile(b.c_str(), "two"), 0);
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Hold_Tag(ZORAPI_Get_Xml_Hold_By_Name("one"))), "a");
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Hold_Tag(ZORAPI_Get_Xml_Hold_By_Name("two"))), "b");

    // A second load under a name replaces its document.
    ASSERT_NE(ZORAPI_LoadXmlFile(b.c_str(), "one"), 0);
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Hold_Tag(ZORAPI_Get_Xml_Hold_By_Name("one"))), "b");

    ZORAPI_XmlFreeHolder("one");
    ZORAPI_XmlFreeHolder("never loaded");
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name("one"), nullptr);
    EXPECT_NE(ZORAPI_Get_Xml_Hold_By_Name("two"), nullptr);
    zor::reset_xml_holders();
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name("two"), nullptr);
}

TEST_F(XmlHolderTest, FailedLoadLeavesNothingUnderTheName) {
    std::string good = dir.write("good.xml", "<a/>");
    const struct {
        const char* what;
        std::string path;
    } cases[] = {
        {"missing file", dir.file("missing.xml")},
        {"plain text", dir.write("text.txt", "line one\nline two\n")},
        {"broken xml", dir.write("broken.xml", "<a><b></a>")},
        {"empty file", dir.write("empty.xml", "")},
        {"no element", dir.write("comment.xml", "<?xml version=\"1.0\"?><!-- nothing -->")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_NE(ZORAPI_LoadXmlFile(good.c_str(), "T"), 0);
        EXPECT_EQ(ZORAPI_LoadXmlFile(c.path.c_str(), "T"), 0);
        EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name("T"), nullptr);
    }
    EXPECT_EQ(ZORAPI_LoadXmlFile(nullptr, "T"), 0);
    EXPECT_EQ(ZORAPI_LoadXmlFile(good.c_str(), nullptr), 0);
}

TEST_F(XmlHolderTest, OpensPathsWithBackslashes) {
    dir.write("doc.xml", "<a/>");
    std::string windowsStyle = dir.path() + "\\doc.xml";
    EXPECT_NE(ZORAPI_LoadXmlFile(windowsStyle.c_str(), "T"), 0);
}

TEST_F(XmlHolderTest, TagSearchLooksAtTheElementThenDescendantsInDocumentOrderIgnoringCase) {
    ZORAPI_XmlTag root = load(
        "<Doc id='root'><a><deep><Target id='first'/></deep></a><target id='second'/>"
        "<Other><TARGET id='third'/></Other></Doc>");
    auto id = [](ZORAPI_XmlTag tag) {
        return std::string(ZORAPI_Get_Xml_Attrib_Val(ZORAPI_Get_Xml_Tag_Attrib(tag, 0)));
    };

    EXPECT_EQ(ZORAPI_Get_Xml_Tag_By_Name(root, "doc"), root);
    // Depth first: the deeper match that comes first in the document wins.
    EXPECT_EQ(id(ZORAPI_Get_Xml_Tag_By_Name(root, "TARGET")), "first");
    ZORAPI_XmlTag other = ZORAPI_Get_Xml_Tag_By_Name(root, "other");
    EXPECT_EQ(id(ZORAPI_Get_Xml_Tag_By_Name(other, "target")), "third");
    // The search stays inside the element it is given.
    ZORAPI_XmlTag a = ZORAPI_Get_Xml_Tag_By_Name(root, "a");
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_By_Name(a, "Other"), nullptr);
    ZORAPI_XmlTag missing = ZORAPI_Get_Xml_Tag_By_Name(root, "nowhere");
    EXPECT_EQ(missing, nullptr);
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Name(missing), "");
}

TEST_F(XmlHolderTest, CountsAndIndexesChildElementsAndAttributesInOrder) {
    ZORAPI_XmlTag root = load("<r a='1' B='two' c=''>text<x/><!-- c --><y/>more<z/></r>");
    ASSERT_EQ(ZORAPI_Get_Xml_Child_Amount(root), 3);
    ASSERT_EQ(ZORAPI_Get_Xml_Attrib_Amount(root), 3);
    // Forward, backward and repeated: the answer never depends on the order of asking.
    for (int i : {0, 1, 2, 2, 1, 0, 2, 0}) {
        SCOPED_TRACE(i);
        EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Tag_Child(root, i)), std::string(1, "xyz"[i]).c_str());
        EXPECT_STREQ(ZORAPI_Get_Xml_Attrib_Name(ZORAPI_Get_Xml_Tag_Attrib(root, i)), std::string(i == 1   ? "B"
                                                                                                 : i == 0 ? "a"
                                                                                                          : "c")
                                                                                         .c_str());
    }
    EXPECT_STREQ(ZORAPI_Get_Xml_Attrib_Val(ZORAPI_Get_Xml_Tag_Attrib(root, 1)), "two");
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_Child(root, 3), nullptr);
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_Child(root, -1), nullptr);
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_Attrib(root, 3), nullptr);
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_Attrib(root, -1), nullptr);
}

TEST_F(XmlHolderTest, IndexingTwoElementsInTurnGivesEachItsOwnChildren) {
    ZORAPI_XmlTag root = load("<r><p><a/><b/><c/></p><q><d/><e/><f/></q></r>");
    ZORAPI_XmlTag p = ZORAPI_Get_Xml_Tag_Child(root, 0);
    ZORAPI_XmlTag q = ZORAPI_Get_Xml_Tag_Child(root, 1);
    std::string seen;
    for (int i = 0; i < 3; ++i) {
        seen += ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Tag_Child(p, i));
        seen += ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Tag_Child(q, i));
    }
    EXPECT_EQ(seen, "adbecf");
}

TEST_F(XmlHolderTest, TagValueIsTheTextContent) {
    ZORAPI_XmlTag root = load("<r><n>12.5</n><c><![CDATA[cw]]></c><e/><m><k/>after</m></r>");
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Val(ZORAPI_Get_Xml_Tag_By_Name(root, "n")), "12.5");
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Val(ZORAPI_Get_Xml_Tag_By_Name(root, "c")), "cw");
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Val(ZORAPI_Get_Xml_Tag_By_Name(root, "e")), "");
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Val(ZORAPI_Get_Xml_Tag_By_Name(root, "m")), "after");
}

TEST_F(XmlHolderTest, NullHandlesGiveEmptyResults) {
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name(nullptr), nullptr);
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_Tag(nullptr), nullptr);
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_By_Name(nullptr, "a"), nullptr);
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Name(nullptr), "");
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Val(nullptr), "");
    EXPECT_EQ(ZORAPI_Get_Xml_Attrib_Amount(nullptr), 0);
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_Attrib(nullptr, 0), nullptr);
    EXPECT_STREQ(ZORAPI_Get_Xml_Attrib_Name(nullptr), "");
    EXPECT_STREQ(ZORAPI_Get_Xml_Attrib_Val(nullptr), "");
    EXPECT_EQ(ZORAPI_Get_Xml_Child_Amount(nullptr), 0);
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_Child(nullptr, 0), nullptr);
    ZORAPI_XmlTag root = load("<r/>");
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_By_Name(root, nullptr), nullptr);
}

TEST_F(XmlHolderTest, DeeplyNestedDocumentIsSearchedWithoutRecursion) {
    std::string xml;
    const int depth = 200000;
    for (int i = 0; i < depth; ++i) xml += "<n>";
    xml += "<leaf/>";
    for (int i = 0; i < depth; ++i) xml += "</n>";
    ZORAPI_XmlTag root = load(xml);
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Tag_By_Name(root, "leaf")), "leaf");
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_By_Name(root, "none"), nullptr);
}

}  // namespace
