#include <gtest/gtest.h>

#include <filesystem>

#include "ObjectFileTestUtil.h"

namespace {

using zortest::ObjectFileWriter;
using zortest::OpenedFile;

// The outputs of a collision read, released with FreeCollision.
struct Section {
    CMWZORFile* file;
    void** first = reinterpret_cast<void**>(1);  // not null: the reader must clear them
    void** second = reinterpret_cast<void**>(1);
    unsigned int* codes = reinterpret_cast<unsigned int*>(1);
    double* values = reinterpret_cast<double*>(1);
    unsigned int count = 99;
    bool ok = false;

    explicit Section(CMWZORFile& f) : file(&f) { ok = f.ReadCollision(&first, &second, &codes, &values, &count); }
    ~Section() { file->FreeCollision(first, second, codes, values, count); }
    // "first-second:code/value" of every pair, space-separated, after
    // "failed: " when the read failed.
    std::string pairs() const {
        auto text = [](void* p) { return p != nullptr ? std::string(static_cast<const char*>(p)) : "(null)"; };
        std::string out = ok ? "" : "failed: ";
        for (unsigned int i = 0; i < count; ++i)
            out += (i > 0 ? " " : "") + text(first[i]) + "-" + text(second[i]) + ":" + std::to_string(codes[i]) + "/" +
                   zortest::format_number(values[i]);
        return out;
    }
};

// Spheres "s0".."s2" (which fill the name table) and a new-form section.
std::string new_form(int count, const std::vector<std::string>& lines, double value = 1) {
    ObjectFileWriter w(115);
    return w.sphere(1, "s0").sphere(1, "s1").sphere(1, "s2").collisionNew(value, count, lines).plain();
}

// Opens text and reads the three spheres in front of a new-form section.
struct NewForm : OpenedFile {
    explicit NewForm(const std::string& text) : OpenedFile(text) {
        for (zortest::Outputs& o : spheres) EXPECT_TRUE(file->m_version < 113 || next(o));
    }
    zortest::Outputs spheres[3];
};

TEST(CollisionSectionTest, OldFormReadsSixLinesAPair) {
    OpenedFile f(ObjectFileWriter(112)
                     .collisionOld({{"Spindle head", "Table", 3, 0.5}, {"Tool", "Vice", 4, 1.25}})
                     .line("after")
                     .plain());
    EXPECT_EQ(Section(*f.file).pairs(), "Spindle head-Table:3/0.5 Tool-Vice:4/1.25");
    CString line;
    ASSERT_TRUE(f->ReadLine(line));
    EXPECT_STREQ(line, "after");
}

TEST(CollisionSectionTest, NewFormResolvesIndicesThroughTheNameTableUpToTheCount) {
    for (const auto& [count, pairs] :
         {std::pair<int, const char*>{3, "s0-s1:5/0.75 s0-s2:7/0.75 s2-s1:9/0.75"}, {1, "s0-s1:5/0.75"}}) {
        NewForm f(new_form(count, {"0:1,5,2,7", "2:1,9"}, 0.75));
        ASSERT_EQ(zor::object_file_state().objectNames.size(), 3u);
        EXPECT_EQ(Section(*f.file).pairs(), pairs);
        EXPECT_TRUE(zor::object_file_state().objectNames.empty());  // consumed
    }
}

TEST(CollisionSectionTest, BadPairLinesFailAndEmptyTheTable) {
    for (const char* line : {"0:3,5", "3:0,5", "0:-1,5", "-1:0,5", "0;1,5", "0:1,,5", ":1,5", "0:x,5", "0:1,5x"}) {
        NewForm f(new_form(2, {"1:2,4", line}));
        // The file's count, with its arrays.
        EXPECT_EQ(Section(*f.file).pairs(), "failed: s1-s2:4/1 (null)-(null):0/0") << line;
        EXPECT_TRUE(zor::object_file_state().objectNames.empty()) << line;
    }
}

TEST(CollisionSectionTest, RefusedCountsAndEarlyFailuresKeepOutputsEmpty) {
    const std::pair<std::string, unsigned int> cases[] = {
        {new_form(0, {"0:1,2"}), 0},
        {new_form(-4, {"0:1,2"}), 0xFFFFFFFCu},
        {new_form(2000000000, {"0:1,2"}), 2000000000u},
        {ObjectFileWriter(110).collisionOld({}).plain(), 0},
        {ObjectFileWriter(110).field("Num Pairs", "2000000000").plain(), 2000000000u}};
    for (const auto& [text, count] : cases) {
        NewForm f(text);
        const std::size_t names = zor::object_file_state().objectNames.size();
        Section s(*f.file);
        EXPECT_EQ(std::make_tuple(s.ok, s.count, s.first, s.values), std::make_tuple(false, count, nullptr, nullptr));
        EXPECT_EQ(zor::object_file_state().objectNames.size(), names) << count;  // not consumed
    }
}

TEST(CollisionSectionTest, SectionCutShortKeepsWhatWasStored) {
    {
        NewForm f(new_form(3, {"0:1,5"}));
        EXPECT_EQ(Section(*f.file).pairs(), "failed: s0-s1:5/1 (null)-(null):0/0 (null)-(null):0/0");
        EXPECT_EQ(zor::object_file_state().objectNames.size(), 3u);  // kept on a missing line
    }
    // A count far beyond the rest of the file, in both forms: the arrays are
    // made for the file's count and keep the pairs read.
    std::string old = ObjectFileWriter(112).collisionOld({{"a", "b", 1, 2}}).plain();
    old.replace(old.find("< 1 >"), 5, "< 1000 >");
    for (const std::string& text : {old, new_form(1000, {"0:1,5,2,7"})}) {
        NewForm f(text);
        Section s(*f.file);
        const std::string pairs = s.pairs();
        EXPECT_EQ(std::make_pair(s.ok, s.count), std::make_pair(false, 1000u));
        EXPECT_EQ(pairs.substr(0, pairs.find(" (null)")),
                  f->m_version < 113 ? "failed: a-b:1/2" : "failed: s0-s1:5/1 s0-s2:7/1");
    }
    // Old form: every prefix fails, and the entries not yet read are zero
    // (FreeCollision over the whole count is safe).
    const std::string text = ObjectFileWriter(112).collisionOld({{"a", "b", 1, 2}, {"c", "d", 3, 4}}).plain();
    for (std::size_t n = 0; n <= text.rfind("End Pair"); ++n)
        EXPECT_FALSE(Section(*OpenedFile(text.substr(0, n)).file).ok) << n;
}

// The bundled scene: every record kind, then its collision section, which a
// host reads from where the walk's last ReadType began.
TEST(CollisionSectionTest, SceneExampleIsReadInFull) {
    const auto cwd = std::filesystem::current_path();  // the file reference changes it
    zor::reset_object_file_state();
    const std::string path = std::string(ZOR_EXAMPLES_DIR) + "/objects/scene-1.15.obj";
    zortest::TestFile f(path.c_str(), 0, 1, 1);
    std::string kinds;
    unsigned int type = 0;
    long start = 0;
    while (f.ReadType(&type)) {
        zortest::Outputs o;
        ASSERT_TRUE(zortest::read_record(f, type, o)) << type;
        kinds += std::to_string(type) + " ";
        start = std::ftell(f.m_stream);
    }
    std::filesystem::current_path(cwd);
    EXPECT_EQ(kinds, "1 16 2 6 11 12 4 4 9 13 14 15 0 7 8 ");
    f.m_stream = std::fopen(path.c_str(), "r");
    std::fseek(f.m_stream, start, SEEK_SET);
    EXPECT_EQ(Section(f).pairs(), "Base-Pyramid:1/0.5 Base-Blank:2/0.5 Cutter-Blank:3/0.5 Cutter-Pyramid:4/0.5");
}

}  // namespace
