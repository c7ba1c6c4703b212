#include <gtest/gtest.h>

#include <string>

#include "XmlTestUtil.h"
#include "platform/comsupport.h"
#include "support/ToolLibraryWriter.h"

namespace {

class XmlDocumentTest : public zortest::XmlStateTest {};

int com_count() { return zor::detail::com_init_count(); }

TEST_F(XmlDocumentTest, AnswersOneForAWellFormedFileAndKeepsCOMInitialised) {
    const int before = com_count();
    testing::internal::CaptureStderr();
    EXPECT_EQ(open(zortest::tool_library({zortest::XmlElement("TOOL").attr("a", "1")})), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_NE(zor::g_xmlDocument, nullptr);
    EXPECT_EQ(com_count(), before + 1);
    API_ResetXmlDoc();
    EXPECT_EQ(zor::g_xmlDocument, nullptr);
    EXPECT_EQ(com_count(), before);
    EXPECT_EQ(zor::kept_document_count(), 1u);  // forgotten, not freed
}

TEST_F(XmlDocumentTest, AnswersZeroWithTheReasonOnStandardError) {
    struct Case {
        const char* name;
        std::string path;
        const char* reason;
    };
    const Case cases[] = {
        {"missing", dir.file("missing.xml"), "The file could not be opened.\n"},
        {"directory", dir.path(), "The file could not be read.\n"},
        {"empty", dir.write("empty.xml", ""), "No document element found at offset 0.\n"},
        {"not XML", dir.write("text.xml", "solid cube\nendsolid\n"), "No document element found at offset 20.\n"},
        {"unclosed", dir.write("open.xml", "<a><b></a>"), "Start-end tags mismatch at offset 8.\n"},
        {"truncated", dir.write("cut.xml", "<a><b x=\"1"), "Error parsing element attribute at offset 9.\n"},
        {"two roots", dir.write("two.xml", "<a/><b/>"), "Only one top-level element is allowed (found <b>).\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const int before = com_count();
        std::string path = c.path;
        int answer = -1;
        testing::internal::CaptureStderr();
        API_IsXml(path.data(), &answer);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.reason);
        EXPECT_EQ(answer, 0);
        EXPECT_EQ(zor::g_xmlDocument, nullptr);
        EXPECT_EQ(com_count(), before);
        EXPECT_STREQ(API_ReadList(), "");
    }
    // The null file name and the null answer are survived.
    testing::internal::CaptureStderr();
    API_IsXml(nullptr, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "The file could not be opened.\n");
}

TEST_F(XmlDocumentTest, AFailedLoadForgetsTheDocumentHeldBefore) {
    ASSERT_EQ(open(zortest::tool_library({zortest::XmlElement("TOOL").attr("a", "1")})), 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(open("<broken"), 0);
    testing::internal::GetCapturedStderr();
    EXPECT_STREQ(API_ReadList(), "");
}

TEST_F(XmlDocumentTest, AFailingDocumentCreationStepThrowsWithAnEmptyReport) {
    const std::string path = dir.write("ok.xml", "<a><b>1</b></a>");
    for (int step = 1; step <= 4; ++step) {
        SCOPED_TRACE(step);
        zor::fail_load_dom_step(step, static_cast<HRESULT>(0x80004005L));
        std::string name = path;
        int answer = -7;
        testing::internal::CaptureStdout();
        try {
            API_IsXml(name.data(), &answer);
            ADD_FAILURE() << "no COM error";
        } catch (const _com_error& e) {
            EXPECT_EQ(e.Error(), E_POINTER);
            EXPECT_EQ(e.GUID(), GUID_NULL);
        }
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(answer, -7);
        EXPECT_EQ(zor::g_xmlDocument, nullptr);
    }
    EXPECT_EQ(zor::kept_document_count(), 0u);
}

TEST_F(XmlDocumentTest, NeverFetchesExternalEntities) {
    const std::string secret = dir.write("secret.txt", "SECRET");
    const std::string xml = "<!DOCTYPE Lib [<!ENTITY e SYSTEM \"file://" + secret +
                            "\"><!ENTITY % p SYSTEM \"http://127.0.0.1:9/x.dtd\"> %p;]>"
                            "<Lib><Tools><TOOL a=\"&e;\"/></Tools></Lib>";
    ASSERT_EQ(open(xml), 1);
    EXPECT_EQ(walk(), std::vector<std::string>({"Tools", "TOOL", "a", "&e;!"}));
}

}  // namespace
