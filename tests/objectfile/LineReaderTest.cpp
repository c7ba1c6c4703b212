// The object file's line reader against the plain fgets version it replaces:
// the same lines and the same stream position after each, whatever the
// stream's buffer size, for long lines, NUL bytes, blank lines, CR LF, a
// missing last line end and scrambled files.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "objectfile/LineReader.h"
#include "objectfile/ObjectFileState.h"
#include "support/Scrambler.h"
#include "support/TempDir.h"

namespace {

struct Read {
    std::string line;
    long position;
};

// The straightforward reader: fgets into 512 bytes, the C string up to its
// NUL, "\n" removed, descrambled, trimmed; blank lines skipped.
std::vector<Read> plain_lines(std::FILE* stream) {
    zor::ObjectFileState& state = zor::object_file_state();
    std::vector<Read> out;
    char buffer[512];
    while (fgets(buffer, sizeof buffer, stream) != nullptr) {
        std::string text(buffer);
        if (!text.empty() && text.back() == '\n') text.pop_back();
        zor::DescrambleLine(text, state);
        const std::string_view line = zor::trim_white_space(text);
        if (!line.empty()) out.push_back({std::string(line), std::ftell(stream)});
    }
    return out;
}

std::vector<Read> reader_lines(std::FILE* stream) {
    std::vector<Read> out;
    std::string_view line;
    while (zor::read_object_line(stream, line)) out.push_back({std::string(line), std::ftell(stream)});
    EXPECT_EQ(stream, nullptr);  // closed at the end
    return out;
}

std::vector<Read> read_with(const std::string& path, std::size_t bufferSize, bool plain) {
    zor::reset_object_file_state();
    zor::object_file_state().firstLinePending = true;
    std::FILE* stream = std::fopen(path.c_str(), "r");
    EXPECT_NE(stream, nullptr);
    if (stream == nullptr) return {};
    std::setvbuf(stream, nullptr, _IOFBF, bufferSize);
    if (!plain) return reader_lines(stream);
    std::vector<Read> out = plain_lines(stream);
    std::fclose(stream);
    return out;
}

std::string random_text(std::mt19937& rng, bool withNul) {
    const std::string alphabet = "abc <>{}0123456789.,-/\t\r";
    std::string text;
    const int lines = 200;
    for (int i = 0; i < lines; ++i) {
        const int kind = static_cast<int>(rng() % 10);
        std::size_t length = rng() % 60;
        if (kind == 0) length = 505 + rng() % 12;  // around the 511 limit
        if (kind == 1) length = 1000 + rng() % 100;
        std::string line;
        for (std::size_t k = 0; k < length; ++k) line += alphabet[rng() % alphabet.size()];
        if (withNul && kind == 2 && !line.empty()) line[rng() % line.size()] = '\0';
        if (kind == 3) line = "   ";
        text += line + (kind == 4 ? "\r\n" : "\n");
    }
    text += "last line without its end";
    return text;
}

TEST(LineReaderTest, ReadsTheLinesAndPositionsFgetsReads) {
    zortest::TempDir dir;
    std::mt19937 rng(77);
    std::vector<std::string> files;
    for (int i = 0; i < 4; ++i) files.push_back("// Version: 1.15\n" + random_text(rng, i % 2 == 1));
    // A scrambled file: every line goes through the descrambler.
    std::vector<std::string> body;
    for (int i = 0; i < 300; ++i) body.push_back("Vertex < " + std::to_string(i) + ",1.5,-2 >");
    body.push_back(std::string(600, 'x'));
    files.push_back(zortest::ScrambleFile("// Version: 1.15", body, {6, 42, 999}));
    files.push_back("");
    files.push_back("\n\n   \n");

    for (std::size_t f = 0; f < files.size(); ++f) {
        const std::string path = dir.write("lines" + std::to_string(f) + ".obj", files[f]);
        const std::vector<Read> expected = read_with(path, 4096, true);
        for (std::size_t bufferSize : {1, 7, 64, 511, 512, 513, 4096, 1 << 16}) {
            SCOPED_TRACE("file " + std::to_string(f) + ", buffer " + std::to_string(bufferSize));
            const std::vector<Read> got = read_with(path, bufferSize, false);
            ASSERT_EQ(got.size(), expected.size());
            for (std::size_t i = 0; i < got.size(); ++i) {
                EXPECT_EQ(got[i].line, expected[i].line) << "line " << i;
                EXPECT_EQ(got[i].position, expected[i].position) << "line " << i;
            }
        }
    }
}

// A host may seek the stream between lines: the next line read starts there.
TEST(LineReaderTest, FollowsASeekOnTheStream) {
    zortest::TempDir dir;
    const std::string path = dir.write("seek.obj", "// Version: 1.15\nfirst\nsecond\nthird\n");
    zor::reset_object_file_state();
    zor::object_file_state().firstLinePending = true;
    std::FILE* stream = std::fopen(path.c_str(), "r");
    ASSERT_NE(stream, nullptr);
    std::string_view line;
    ASSERT_TRUE(zor::read_object_line(stream, line));
    const long afterVersion = std::ftell(stream);
    ASSERT_TRUE(zor::read_object_line(stream, line));
    ASSERT_TRUE(zor::read_object_line(stream, line));
    EXPECT_EQ(line, "second");
    ASSERT_EQ(std::fseek(stream, afterVersion, SEEK_SET), 0);
    ASSERT_TRUE(zor::read_object_line(stream, line));
    EXPECT_EQ(line, "first");
    std::fclose(stream);
}

}  // namespace
