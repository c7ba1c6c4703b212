#include <gtest/gtest.h>

#include <string>

#include "support/TempDir.h"
#include "zorapi/XmlHolder.h"

namespace {

class XmlHolderTest : public ::testing::Test {
protected:
    void TearDown() override { zor::reset_xml_holders(); }
    // Loads xml under name and returns its root element.
    ZORAPI_XmlTag load(const std::string& xml, const char* name = "T") {
        EXPECT_NE(ZORAPI_LoadXmlFile(dir.write(name, xml).c_str(), name), 0);
        return ZORAPI_Get_Xml_Hold_Tag(ZORAPI_Get_Xml_Hold_By_Name(name));
    }
    zortest::TempDir dir;
};

TEST_F(XmlHolderTest, KeepsDocumentsUnderTheirNamesUntilFreedAndForgetsFailedLoads) {
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name("one"), nullptr);
    load("<a/>", "one");
    load("<b/>", "two");
    EXPECT_NE(ZORAPI_LoadXmlFile((dir.path() + "\\two").c_str(), "one"), 0);  // replaces; backslashes work
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Hold_Tag(ZORAPI_Get_Xml_Hold_By_Name("one"))), "b");
    ZORAPI_XmlFreeHolder("one");
    ZORAPI_XmlFreeHolder("never loaded");
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name("one"), nullptr);
    EXPECT_NE(ZORAPI_Get_Xml_Hold_By_Name("two"), nullptr);
    for (const char* bad : {"line one\nline two\n", "<a><b></a>", "", "<?xml version=\"1.0\"?><!-- nothing -->"}) {
        load("<a/>");
        EXPECT_EQ(ZORAPI_LoadXmlFile(dir.write("bad", bad).c_str(), "T"), 0) << bad;
        EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name("T"), nullptr);
    }
    EXPECT_EQ(ZORAPI_LoadXmlFile(dir.file("missing").c_str(), "two") + ZORAPI_LoadXmlFile(nullptr, "T") +
                  ZORAPI_LoadXmlFile(dir.file("two").c_str(), nullptr),
              0);
    EXPECT_EQ(ZORAPI_Get_Xml_Hold_By_Name("two"), nullptr);
}

// The search looks at the element itself, then its descendants depth first in document order, ignoring case.
TEST_F(XmlHolderTest, FindsTagsAndIndexesChildrenAndAttributesInOrder) {
    ZORAPI_XmlTag root = load(
        "<Doc a='1' B='two'><p><deep><Target c=''/></deep><x/>text<!-- c --><y/></p>"
        "<q><target/><TARGET id='3'/>after</q><v><![CDATA[cw]]></v></Doc>");
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_By_Name(root, "doc"), root);
    ZORAPI_XmlTag p = ZORAPI_Get_Xml_Tag_Child(root, 0), q = ZORAPI_Get_Xml_Tag_Child(root, 1);
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_By_Name(root, "TARGET"), ZORAPI_Get_Xml_Tag_Child(ZORAPI_Get_Xml_Tag_Child(p, 0), 0));
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_By_Name(q, "target"), ZORAPI_Get_Xml_Tag_Child(q, 0));
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_By_Name(p, "q"), nullptr);  // stays inside the element
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Tag_By_Name(root, "nowhere")), "");
    EXPECT_EQ(ZORAPI_Get_Xml_Child_Amount(p) * 10 + ZORAPI_Get_Xml_Attrib_Amount(root), 32);
    std::string seen;  // in any order of asking, and alternating between two elements
    for (int i : {0, 1, 2, 1, 0, 2, -1, 3})
        seen += std::string(ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Tag_Child(p, i))) +
                ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Tag_Child(q, i)) +
                ZORAPI_Get_Xml_Attrib_Name(ZORAPI_Get_Xml_Tag_Attrib(root, i)) +
                ZORAPI_Get_Xml_Attrib_Val(ZORAPI_Get_Xml_Tag_Attrib(root, i)) + ",";
    EXPECT_EQ(seen, "deeptargeta1,xTARGETBtwo,y,xTARGETBtwo,deeptargeta1,y,,,");
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Val(q), "after");
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Val(ZORAPI_Get_Xml_Tag_By_Name(root, "v")), "cw");
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Val(p), "text");
}

TEST_F(XmlHolderTest, NullHandlesGiveEmptyResults) {
    EXPECT_TRUE(!ZORAPI_Get_Xml_Hold_By_Name(nullptr) && !ZORAPI_Get_Xml_Hold_Tag(nullptr) &&
                !ZORAPI_Get_Xml_Tag_By_Name(nullptr, "a") && !ZORAPI_Get_Xml_Tag_Attrib(nullptr, 0) &&
                !ZORAPI_Get_Xml_Tag_Child(nullptr, 0) && !ZORAPI_Get_Xml_Tag_By_Name(load("<r/>"), nullptr));
    EXPECT_EQ(ZORAPI_Get_Xml_Attrib_Amount(nullptr) + ZORAPI_Get_Xml_Child_Amount(nullptr), 0);
    EXPECT_EQ(std::string(ZORAPI_Get_Xml_Tag_Name(nullptr)) + ZORAPI_Get_Xml_Tag_Val(nullptr) +
                  ZORAPI_Get_Xml_Attrib_Name(nullptr) + ZORAPI_Get_Xml_Attrib_Val(nullptr),
              "");
}

TEST_F(XmlHolderTest, DeeplyNestedDocumentIsSearchedWithoutRecursion) {
    const int depth = 200000;
    std::string xml;
    for (int i = 0; i < depth; ++i) xml += "<n>";
    xml += "<leaf/>";
    for (int i = 0; i < depth; ++i) xml += "</n>";
    ZORAPI_XmlTag root = load(xml);
    EXPECT_STREQ(ZORAPI_Get_Xml_Tag_Name(ZORAPI_Get_Xml_Tag_By_Name(root, "leaf")), "leaf");
    EXPECT_EQ(ZORAPI_Get_Xml_Tag_By_Name(root, "none"), nullptr);
}

}  // namespace
