// A fresh folder under the system's temporary folder, removed with everything
// in it when the object goes.
#pragma once

#include <string>

namespace zortest {

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }
    // Writes bytes to path()/name and returns the full path.
    std::string write(const std::string& name, const std::string& bytes) const;

private:
    std::string m_path;
};

// The whole content of a file ("" if it cannot be read).
std::string read_file(const std::string& path);

}  // namespace zortest
