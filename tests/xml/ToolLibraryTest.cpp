#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/TempDir.h"
#include "support/ToolLibraryWriter.h"
#include "xml/ToolLibrary.h"
#include "xml/ToolList.h"
#include "xml/XmlDocument.h"

namespace {

using zortest::tool_library;
using zortest::xml_document;
using E = zortest::XmlElement;
using Tokens = std::vector<std::string>;

E group(const std::string& name, std::vector<E> children) {
    E g(name);
    g.children = std::move(children);
    return g;
}

E tool(std::vector<std::pair<std::string, std::string>> attributes, std::vector<E> children = {}) {
    E t = group("TOOL", std::move(children));
    t.attributes = std::move(attributes);
    return t;
}

// Every test starts and ends with no document and no walk.
class ToolLibrary : public ::testing::Test {
protected:
    void SetUp() override { zor::reset_xml_document_state(); }
    void TearDown() override { zor::reset_xml_document_state(); }

    // API_IsXml's answer for xml written to a file, on a fresh state unless
    // the file is named (to load a document over the one held).
    int open(const std::string& xml, const char* name = nullptr) {
        if (name == nullptr) zor::reset_xml_document_state();
        std::string path = dir.write(name != nullptr ? name : "library.xml", xml);
        int answer = -1;
        API_IsXml(path.data(), &answer);
        return answer;
    }
    // count tokens; with stop, those before the first empty one.
    static Tokens take(std::size_t count, bool stop = false) {
        Tokens tokens;
        for (std::string token; tokens.size() < count; tokens.push_back(token))
            if ((token = API_ReadList()).empty() && stop) break;
        return tokens;
    }
    // The tokens before the first empty one, joined by "|".
    static std::string walk() {
        std::string out;
        for (const std::string& token : take(10000, true)) out += (out.empty() ? "" : "|") + token;
        return out;
    }

    zortest::TempDir dir;
};

TEST_F(ToolLibrary, WalksEveryShapeOfToolLibraryInDocumentOrder) {
    const E holder = group("Holder", {E("Type", "HSK"), E("Gauge", "120")});
    const struct {
        std::string xml;
        const char* tokens;
    } shapes[] = {
        // Attributes only, several tools.
        {tool_library({tool({{"Name", "T1"}, {"Diameter", "10"}}), tool({{"Name", "T2"}, {"Diameter", "6"}})}),
         "TOOL|Name|T1|Diameter|10|TOOL|Name|T2|Diameter|6!|OptiPath"},
        // One tool, no OptiPath, a nested element with attributes: the single
        // child of "Tools" is stepped into by name.
        {tool_library({tool({{"a", "1"}}, {E("Insert").attr("grade", "P25"), E("D", "5")})}, false),
         "Tools|TOOL|a|1|Insert|grade|P25|D|5!"},
        // Nested elements, several tools.
        {tool_library({tool({{"name", "Drill"}}, {holder, E("Diameter", "8")}),
                       tool({{"name", "Mill"}}, {E("Diameter", "12"), holder})}),
         "TOOL|name|Drill|Holder|Type|HSK|Gauge|120!|Diameter|8!|TOOL|name|Mill|Diameter|12|Holder!|Type|HSK|Gauge|120!"
         "|OptiPath"},
        // Tools whose value is their text.
        {tool_library({E("TOOL", "Ball mill").attr("id", "1"), E("TOOL", "Drill").attr("id", "2")}),
         "TOOL|id|1|Ball mill!|TOOL|id|2|Drill!|OptiPath"},
        // Tools without attributes.
        {tool_library({group("TOOL", {E("D", "10"), E("L", "50")}), group("TOOL", {E("D", "6"), E("L", "40")})}),
         "TOOL|D|10|L|50!|TOOL!|D|6|L|40!|OptiPath"},
        // A header before the tools: leaving a top-level element restarts the
        // ordinal, so the first tool after it is the first tool of the list.
        {xml_document(group(
             "Library",
             {group("Header", {E("Name", "Shop"), E("Version", "2")}),
              group("Tools", {tool({{"a", "1"}}, {E("D", "5")}), tool({{"a", "2"}}, {E("D", "6")})}), E("OptiPath")})),
         "Header|Name|Shop|Version|2!|TOOL|a|1|D!|5!|TOOL|a|2|D!|6!|OptiPath"},
        // The first token is the root's first child, never the root.
        {xml_document(group("Root", {E("First", "1"), E("Second", "2")}).attr("r", "x")), "First|1|Second|2!"},
        // Any letter case of "Tools" and "TOOL".
        {xml_document(
             group("Lib", {group("tOOLS", {E("Tool").attr("a", "1"), E("tool").attr("a", "2")}), E("OptiPath")})),
         "Tool|a|1|tool|a|2!|OptiPath"},
        // "optipath": only "OptiPath" so spelled ends the list; another empty
        // element ends the walk with no end mark.
        {xml_document(group("Lib", {group("Tools", {tool({{"a", "1"}}), tool({{"a", "2"}})}), E("optipath")})),
         "TOOL|a|1|TOOL|a|2!"},
    };
    for (const auto& shape : shapes) {
        SCOPED_TRACE(shape.tokens);
        ASSERT_EQ(open(shape.xml), 1);
        EXPECT_EQ(walk(), shape.tokens);
    }
}

TEST_F(ToolLibrary, AfterTheEndGivesOneEmptyStringThenResumesWithTheLastToken) {
    EXPECT_EQ(take(2), Tokens({"", ""}));  // no document
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}}), tool({{"a", "2"}})})), 1);
    EXPECT_EQ(take(20, true).back(), "OptiPath");  // and the empty string after it
    EXPECT_EQ(take(4), Tokens({"OptiPath", "", "OptiPath", ""}));
    ASSERT_EQ(open(tool_library({tool({{"id", "1"}}, {E("D", "5")})}, false)), 1);
    EXPECT_EQ(take(20, true).back(), "5!");
    EXPECT_EQ(take(4), Tokens({"5!", "", "5!", ""}));
    API_ResetXmlDoc();
    EXPECT_EQ(take(2), Tokens({"", ""}));
}

// A restart puts the cursor back on the root's first child; the flags and the
// ordinal stay as the walk left them, so a walk restarted inside a tool goes
// on with that tool's attribute pair, and one restarted after a whole tool
// goes on with the next tool.
TEST_F(ToolLibrary, ReleaseRestartsAtTheFirstChildWithTheFlagsAndOrdinalKept) {
    const std::string two =
        tool_library({tool({{"id", "1"}, {"d", "6"}}, {E("D", "5")}), tool({{"id", "2"}}, {E("D", "7")})});
    const std::string one = tool_library({tool({{"id", "1"}}, {E("D", "5"), E("L", "9")})});
    const std::string round = tool_library({tool({{"id", "1"}}, {E("N", "a"), E("Sub").attr("k", "v")})});
    const struct {
        const std::string& xml;
        std::size_t before;  // tokens taken before the restart
        const char* after;   // the tokens after it, up to the empty string
    } cases[] = {
        {two, 0, "TOOL|id|1|d|6|D!|5!|TOOL|id|2|D!|7!|OptiPath"},
        {two, 2, "1|d|6|D!|5!|TOOL|id|2|D!|7!|OptiPath"},           // after "TOOL", "id": its value
        {two, 3, "id|1|d|6|D!|5!|TOOL|id|2|D!|7!|OptiPath"},        // after a value: the attributes from the first
        {two, 6, "TOOL|id|1|d|6|D!|5!|TOOL|id|2|D!|7!|OptiPath"},   // inside a nested element
        {two, 7, "TOOL|id|2|D!|7!|OptiPath"},                       // after a whole tool: the next
        {two, 14, "TOOL|id|1|d|6|D!|5!|TOOL|id|2|D!|7!|OptiPath"},  // after the end mark
        // The only tool of "Tools" is reached by naming "Tools".
        {one, 3, "Tools|1|D|5|L|9!|OptiPath"},
        {one, 5, "Tools|TOOL|id|1|D|5|L|9!|OptiPath"},  // after "D": its value was due
        {one, 10, "Tools|TOOL|id|1|D|5|L|9!|OptiPath"},
        // A walk that would go round is stopped where it would repeat what it
        // gave since the restart, which began a new walk.
        {round, 2, "Tools|id|1|N|a|Sub!|Tools|TOOL"},
    };
    for (const auto& c : cases) {
        for (bool fullReset : {false, true}) {
            SCOPED_TRACE(std::to_string(c.before) + " tokens, " + c.after);
            ASSERT_EQ(open(c.xml), 1);
            take(c.before);
            API_ReleaseXml(fullReset);
            EXPECT_EQ(walk(), c.after);
        }
    }
    ASSERT_EQ(open(one), 1);
    API_ReleaseXml(false);  // with no walk begun: changes nothing
    const Tokens whole = take(20, true);
    ASSERT_EQ(whole.size(), 9u);
    // A full release leaves a pending end in place.
    API_ReleaseXml(false);
    EXPECT_EQ(take(whole.size()), whole);
    API_ReleaseXml(true);
    EXPECT_EQ(take(2), Tokens({"", whole.front()}));
    // A new document takes over only after a release.
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}, {"b", "2"}})})), 1);
    EXPECT_EQ(take(3), Tokens({"Tools", "TOOL", "a"}));
    ASSERT_EQ(open(xml_document(group("Other", {E("X", "7")})), "second.xml"), 1);
    EXPECT_EQ(zor::kept_document_count(), 2u);
    EXPECT_EQ(take(5), Tokens({"1", "b", "2!", "OptiPath", ""}));  // the first walk goes on
    API_ReleaseXml(false);
    EXPECT_EQ(walk(), "X|7!");
}

TEST_F(ToolLibrary, WalkQuirksAndGuards) {
    // Tokens of 100 characters and more come whole.
    const std::string name(100, 'N'), value(300, 'v');
    ASSERT_EQ(open(tool_library({tool({{name, value}}, {E("D", value + "w")})}, false)), 1);
    EXPECT_EQ(walk(), "Tools|TOOL|" + name + "|" + value + "|D!|" + value + "w!");
    // An element with nothing in it, reached with the ordinal at 1 or more,
    // would step onto itself for ever: the walk ends there instead.
    ASSERT_EQ(open(xml_document(group("Lib", {E("Empty"), group("Tools", {tool({{"a", "1"}})})}))), 1);
    EXPECT_EQ(take(3), Tokens({"", "", ""}));
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}}, {E("Flag"), E("D", "5")})})), 1);
    EXPECT_EQ(walk(), "Tools|TOOL|a|1|Flag");
    EXPECT_TRUE(zor::g_walkDone);
    // A root without children throws and leaves the walk unbegun.
    ASSERT_EQ(open("<Empty r=\"1\"/>"), 1);
    try {
        API_ReadList();
        FAIL() << "no COM error";
    } catch (const _com_error& e) {
        EXPECT_EQ(e.Error(), E_POINTER);
    }
    EXPECT_EQ(zor::g_walkState, "NULL");
}

// A last child with attributes climbs to an ancestor, from where the walk
// would give the same tokens again for ever. It stops instead, with an empty
// string as at the end of a list, and the call after begins a new walk there.
TEST_F(ToolLibrary, StopsAWalkWhereItWouldGiveItsTokensAgain) {
    const E sub = E("Sub").attr("k", "v");
    const struct {
        std::string xml;
        const char* tokens;
        const char* again;  // the walk after the stop
    } cases[] = {
        // Climbs to the tool: its attributes would come again.
        {tool_library({tool({{"a", "1"}}, {E("D", "5"), sub}), tool({{"a", "2"}})}), "TOOL|a|1|D|5|Sub!",
         "a|1|D|5|Sub!"},
        // Climbs to "Tools" holding one tool, which is named again.
        {tool_library({tool({{"id", "1"}}, {E("N", "a"), sub})}), "Tools|TOOL|id|1|N|a|Sub!",
         "Tools|TOOL|id|1|N|a|Sub!"},
        // Climbs to "Tools" past the ordinal: the list would start again.
        {tool_library({tool({{"id", "1"}}, {E("D", "5")}), tool({{"id", "2"}}, {E("N", "a"), sub})}),
         "TOOL|id|1|D!|5!|TOOL|id|2|N|a|Sub!", "TOOL|id|1|D!|5!|TOOL|id|2|N|a|Sub!"},
        // Climbs to the root, which is named.
        {xml_document(group("Lib", {E("A", "1"), sub})), "A|1|Sub!|Lib!", "A|1|Sub!|Lib!"},
        // Climbs to "Tools", where the ordinal chooses the tool: each round
        // starts one tool further, until the ordinal comes round too.
        {tool_library({tool({{"a", "0"}}), tool({{"a", "1"}}), tool({{"a", "z"}}, {E("D", "5"), sub})}),
         "TOOL|a|0|TOOL|a|1|TOOL|a|z|D|5|Sub!|TOOL|a|1|TOOL|a|z|D|5|Sub!|TOOL|a|z|D|5|Sub!",
         "TOOL|a|0|TOOL|a|1|TOOL|a|z|D|5|Sub!|TOOL|a|1|TOOL|a|z|D|5|Sub!|TOOL|a|z|D|5|Sub!"},
    };
    // The tokens up to the stop, which is checked.
    auto stopped_walk = [] {
        std::string out;
        zor::ListToken info;
        for (std::string t; out.size() < 10000 && !(t = zor::read_list_token(&info)).empty();)
            out += (out.empty() ? "" : "|") + t;
        EXPECT_TRUE(info.stopped);
        return out;
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tokens);
        ASSERT_EQ(open(c.xml), 1);
        EXPECT_EQ(stopped_walk(), c.tokens);
        EXPECT_EQ(stopped_walk(), c.again);
    }
}

// Random documents of tool-library names, walked with and without the guard
// (and restarted at random inside a walk): a walk that ends without the guard
// is the same with it; one that does not end is cut, never changed.
TEST_F(ToolLibrary, GuardOnlyCutsWalksThatWouldNotEnd) {
    std::mt19937 rng(11);
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    const char* names[] = {"Tools", "TOOL", "OptiPath", "A", "B", "tools"};
    std::function<E(int)> element = [&](int depth) {
        E e(names[pick(6)]);
        for (const char* key : {"a", "b"}) {
            if (pick(3) == 0) e.attr(key, std::to_string(pick(10)));
        }
        if (depth >= 4 || pick(10) < 3) {
            if (pick(2)) e.text = "v" + std::to_string(pick(100));
            return e;
        }
        for (int i = 1 + pick(5); i > 0; --i) e.add(element(depth + 1));
        return e;
    };
    const std::size_t kLimit = 600;
    std::size_t cut = 0;
    for (int round = 0; round < 1500; ++round) {
        E root("Lib");
        for (int i = 1 + pick(3); i > 0; --i) root.add(element(1));
        zor::XmlDom dom;
        const std::string xml = xml_document(root);
        ASSERT_TRUE(dom.load_bytes(xml.data(), xml.size()));
        // Odd rounds restart the walk after some of its tokens, before the
        // guard could have cut it.
        const bool restart = round % 2 == 1, fullReset = pick(2) == 1;
        std::size_t before = 0;
        if (restart) {
            zor::reset_xml_document_state();
            zor::g_xmlDocument = &dom;
            before = static_cast<std::size_t>(pick(static_cast<int>(take(kLimit, true).size()) + 1));
        }
        Tokens walks[2];
        for (bool guard : {true, false}) {
            zor::reset_xml_document_state();
            zor::set_walk_guard(guard);
            zor::g_xmlDocument = &dom;
            if (restart) {
                take(before);
                API_ReleaseXml(fullReset);
            }
            walks[guard] = take(kLimit, true);
        }
        zor::reset_xml_document_state();
        SCOPED_TRACE(xml);
        const Tokens &with = walks[1], &without = walks[0];
        if (without.size() < kLimit) {
            ASSERT_EQ(with, without);
        } else {
            ASSERT_LT(with.size(), kLimit);
            ASSERT_EQ(with, Tokens(without.begin(), without.begin() + static_cast<long>(with.size())));
            ++cut;
        }
    }
    EXPECT_GT(cut, 300u);  // the table above would not catch a guard that never stops
}

TEST_F(ToolLibrary, DeepNestingIsWalkedWithoutRecursion) {
    const int depth = 100000;
    ASSERT_EQ(open(zortest::nested_document(depth, "x")), 1);
    const Tokens tokens = take(depth + 10, true);
    ASSERT_EQ(tokens.size(), static_cast<std::size_t>(depth));
    EXPECT_EQ(tokens.back(), "x!");
    // "Tools" in "Tools": one call steps down every level.
    std::string xml;
    for (int i = 0; i < depth; ++i) xml += "<Tools>";
    xml += "<a/><a/>";
    for (int i = 0; i < depth; ++i) xml += "</Tools><b/>";
    xml.resize(xml.size() - 4);  // the root has no sibling
    ASSERT_EQ(open(xml), 1);
    EXPECT_EQ(take(2), Tokens({"", ""}));
}

TEST_F(ToolLibrary, ReportsWhatEachTokenIs) {
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}}, {E("D", "5")}), tool({{"a", "2"}})})), 1);
    std::string kinds;  // one letter per zor::TokenKind, "!" when it leaves
    for (int i = 0; i < 10; ++i) {
        zor::ListToken info;
        zor::read_list_token(&info);
        kinds += std::string(1, "-ENVTO"[static_cast<int>(info.kind)]) + (info.leaves ? "! " : " ");
    }
    EXPECT_EQ(kinds, "E N V E! T! E N V! O - ");
}

// A good file answers 1 and keeps COM initialised until the document is
// forgotten; a bad one answers 0, forgets the document held before and says
// why on standard error.
TEST_F(ToolLibrary, AnswersOneOrZeroWithTheReasonOnStandardError) {
    struct {
        std::string path;
        const char* reason;
    } cases[] = {
        {dir.file("missing.xml"), "The file could not be opened.\n"},
        {dir.path(), "The file could not be opened.\n"},  // a folder
        {dir.write("empty.xml", ""), "No document element found at offset 0.\n"},
        {dir.write("text.xml", "solid cube\nendsolid\n"), "No document element found at offset 20.\n"},
        {dir.write("open.xml", "<a><b></a>"), "Start-end tags mismatch at offset 8.\n"},
        {dir.write("two.xml", "<a/><b/>"), "Only one top-level element is allowed (found <b>).\n"},
    };
    for (auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const int before = zor::detail::com_init_count();
        testing::internal::CaptureStderr();
        ASSERT_EQ(open(tool_library({tool({{"a", "1"}})})), 1);
        int answer = -1;
        API_IsXml(c.path.data(), &answer);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.reason);
        EXPECT_EQ(answer, 0);
        EXPECT_EQ(zor::g_xmlDocument, nullptr);
        EXPECT_EQ(zor::detail::com_init_count(), before + 1);
    }
    ASSERT_EQ(open(tool_library({tool({{"a", "1"}})})), 1);
    const std::size_t kept = zor::kept_document_count();
    const int before = zor::detail::com_init_count();
    API_ResetXmlDoc();
    EXPECT_EQ(zor::g_xmlDocument, nullptr);
    EXPECT_EQ(zor::detail::com_init_count(), before - 1);
    EXPECT_EQ(zor::kept_document_count(), kept);  // forgotten, not freed
    testing::internal::CaptureStderr();
    API_IsXml(nullptr, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "The file could not be opened.\n");
}

TEST_F(ToolLibrary, AFailingDocumentCreationStepThrowsWithAnEmptyReport) {
    std::string path = dir.write("ok.xml", "<a><b>1</b></a>");
    for (int step = 1; step <= 4; ++step) {
        SCOPED_TRACE(step);
        zor::fail_load_dom_step(step, static_cast<HRESULT>(0x80004005L));
        testing::internal::CaptureStdout();
        try {
            API_IsXml(path.data(), nullptr);
            ADD_FAILURE() << "no COM error";
        } catch (const _com_error& e) {
            EXPECT_EQ(e.Error(), E_POINTER);
            EXPECT_EQ(e.GUID(), GUID_NULL);
        }
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    }
    EXPECT_EQ(zor::kept_document_count(), 0u);
}

TEST_F(ToolLibrary, NeverFetchesExternalEntities) {
    const std::string secret = dir.write("secret.txt", "SECRET");
    ASSERT_EQ(
        open("<!DOCTYPE Lib [<!ENTITY e SYSTEM \"file://" + secret +
             "\"><!ENTITY % p SYSTEM \"http://127.0.0.1:9/x.dtd\"> %p;]><Lib><Tools><TOOL a=\"&e;\"/></Tools></Lib>"),
        1);
    EXPECT_EQ(walk(), "Tools|TOOL|a|&e;!");
}

}  // namespace
