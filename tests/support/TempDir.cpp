#include "support/TempDir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zortest {

TempDir::TempDir() : m_path((std::filesystem::temp_directory_path() / "zormodel-test-XXXXXX").string()) {
    if (mkdtemp(m_path.data()) == nullptr) throw std::runtime_error("cannot create a temporary folder");
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string TempDir::write(const std::string& name, const std::string& bytes) const {
    const std::string path = file(name);
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

std::string read_file(const std::string& path) {
    std::ostringstream out;
    out << std::ifstream(path, std::ios::binary).rdbuf();
    return out.str();
}

}  // namespace zortest
