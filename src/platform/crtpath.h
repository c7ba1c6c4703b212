// The Windows runtime's path helpers (_fullpath, _chdir, _splitpath) done the
// POSIX way, and the file opening that every reader of the module uses.
//
// Paths built by the module keep their Windows form (a backslash joins a folder
// and a name), so wherever the module opens a file or splits a path both "\"
// and "/" count as separators.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>
#include <cstring>

#ifndef _MAX_PATH
#define _MAX_PATH 260
#define _MAX_DRIVE 3
#define _MAX_DIR 256
#define _MAX_FNAME 256
#define _MAX_EXT 256
#endif

namespace zor {
inline std::string native_path(const char* path);
}


namespace zor::detail {

inline bool is_separator(char c) { return c == '/' || c == '\\'; }

inline void copy_out(char* out, std::size_t size, const std::string& value) {
    if (out == nullptr) return;
    std::size_t n = value.size() < size - 1 ? value.size() : size - 1;
    std::memcpy(out, value.data(), n);
    out[n] = '\0';
}

}  // namespace zor::detail

// Lexical absolute path of relPath (the file need not exist): relative paths are
// joined to the working directory, "." and ".." are folded. Writes at most
// maxLength bytes including the terminator into absPath; null if it does not fit
// or the working directory is unknown.
inline char* _fullpath(char* absPath, const char* relPath, std::size_t maxLength) {
    if (absPath == nullptr || relPath == nullptr || maxLength == 0) return nullptr;
    std::string joined;
    if (!zor::detail::is_separator(relPath[0])) {
        std::vector<char> cwd(4096);
        if (::getcwd(cwd.data(), cwd.size()) == nullptr) return nullptr;
        joined = cwd.data();
        joined += '/';
    }
    joined += relPath;

    std::vector<std::string> parts;
    std::size_t i = 0;
    while (i < joined.size()) {
        while (i < joined.size() && zor::detail::is_separator(joined[i])) ++i;
        std::size_t start = i;
        while (i < joined.size() && !zor::detail::is_separator(joined[i])) ++i;
        std::string part = joined.substr(start, i - start);
        if (part.empty() || part == ".") continue;
        if (part == "..") {
            if (!parts.empty()) parts.pop_back();
            continue;
        }
        parts.push_back(std::move(part));
    }
    std::string result;
    for (const std::string& part : parts) result += "/" + part;
    if (result.empty()) result = "/";
    if (result.size() + 1 > maxLength) return nullptr;
    std::memcpy(absPath, result.c_str(), result.size() + 1);
    return absPath;
}

// Changes the working directory; 0 on success, -1 on failure.
inline int _chdir(const char* path) {
    if (path == nullptr) return -1;
    if (::chdir(path) == 0) return 0;
    std::string native = zor::native_path(path);
    return ::chdir(native.c_str()) == 0 ? 0 : -1;
}

// Splits path into drive (always empty here), folder with its trailing
// separator, file name and extension with its dot. Any output may be null;
// outputs are sized as the _MAX_ constants say.
inline void _splitpath(const char* path, char* drive, char* dir, char* fname, char* ext) {
    std::string p = path != nullptr ? path : "";
    zor::detail::copy_out(drive, _MAX_DRIVE, "");
    std::size_t slash = p.find_last_of("/\\");
    std::size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    zor::detail::copy_out(dir, _MAX_DIR, p.substr(0, nameStart));
    std::string name = p.substr(nameStart);
    std::size_t dot = name.rfind('.');
    if (dot == std::string::npos) dot = name.size();
    zor::detail::copy_out(fname, _MAX_FNAME, name.substr(0, dot));
    zor::detail::copy_out(ext, _MAX_EXT, name.substr(dot));
}

namespace zor {

// The path with every "\\" turned into "/".
inline std::string native_path(const char* path) {
    std::string p = path != nullptr ? path : "";
    for (char& c : p)
        if (c == '\\') c = '/';
    return p;
}

namespace detail {

// fopen as Windows does it: a folder is no file to open (POSIX opens one for
// reading, and its "length" is then any number).
inline std::FILE* fopen_file(const char* path, const char* mode) {
    std::FILE* f = std::fopen(path, mode);
    struct stat info {};
    if (f != nullptr && fstat(fileno(f), &info) == 0 && S_ISDIR(info.st_mode)) {
        std::fclose(f);
        return nullptr;
    }
    return f;
}

}  // namespace detail

// fopen that also tries the path with every "\\" turned into "/" when the path
// as given cannot be opened. Folders are not opened.
inline std::FILE* open_file(const char* path, const char* mode) {
    if (path == nullptr) return nullptr;
    std::FILE* f = detail::fopen_file(path, mode);
    if (f != nullptr || std::strchr(path, '\\') == nullptr) return f;
    return detail::fopen_file(native_path(path).c_str(), mode);
}

// Appends the whole content of the file at path (opened as open_file does) to
// bytes; false when it cannot be opened.
inline bool read_whole_file(const char* path, std::string& bytes) {
    std::FILE* file = open_file(path, "rb");
    if (file == nullptr) return false;
    char chunk[65536];
    std::size_t got;
    try {
        while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) bytes.append(chunk, got);
    } catch (...) {
        std::fclose(file);  // out of memory: the file is not left open
        throw;
    }
    std::fclose(file);
    return true;
}

}  // namespace zor
