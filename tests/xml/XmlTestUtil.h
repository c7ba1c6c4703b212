// Opens documents through API_IsXml and collects the tokens of API_ReadList.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TempDir.h"
#include "xml/ToolLibrary.h"
#include "xml/XmlDocument.h"

namespace zortest {

// Every test starts and ends with no document and no walk.
class XmlStateTest : public ::testing::Test {
protected:
    void SetUp() override { zor::reset_xml_document_state(); }
    void TearDown() override { zor::reset_xml_document_state(); }

    // Writes xml to a file and returns API_IsXml's answer for it.
    int open(const std::string& xml, const std::string& name = "library.xml") {
        std::string path = dir.write(name, xml);
        int answer = -1;
        API_IsXml(path.data(), &answer);
        return answer;
    }

    // Tokens up to (not including) the first empty one, at most limit.
    static std::vector<std::string> walk(std::size_t limit = 10000) {
        std::vector<std::string> tokens;
        while (tokens.size() < limit) {
            std::string token = API_ReadList();
            if (token.empty()) break;
            tokens.push_back(token);
        }
        return tokens;
    }

    static std::vector<std::string> take(std::size_t count) {
        std::vector<std::string> tokens;
        for (std::size_t i = 0; i < count; ++i) tokens.push_back(API_ReadList());
        return tokens;
    }

    TempDir dir;
};

}  // namespace zortest
