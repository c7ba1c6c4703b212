#include "FuzzSupport.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace zorfuzz {

namespace {

struct Folder {
    std::string path;
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zormodel-fuzz-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path = pattern;
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

}  // namespace

const std::string& temp_folder() {
    static Folder folder;
    return folder.path;
}

std::string write_input(const std::uint8_t* data, std::size_t size, const char* name) {
    std::string path = temp_folder() + "/" + name;
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f != nullptr) {
        if (size > 0) std::fwrite(data, 1, size, f);
        std::fclose(f);
    }
    return path;
}

}  // namespace zorfuzz
