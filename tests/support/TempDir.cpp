#include "support/TempDir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zortest {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zormodel-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create a temporary folder");
    m_path = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string TempDir::file(const std::string& name) const { return m_path + "/" + name; }

std::string TempDir::write(const std::string& name, const std::string& bytes) const {
    std::string path = file(name);
    std::ofstream out(path, std::ios::binary);
    out << bytes;
    return path;
}

std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

}  // namespace zortest
