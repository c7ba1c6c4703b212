// CFile: the framework's binary file, for reading a whole file into memory.
#pragma once

#include <cstdio>
#include <string>

#include "platform/afxexcept.h"
#include "platform/afxobject.h"
#include "platform/crtpath.h"

class CFile : public CObject {
    DECLARE_DYNAMIC_INLINE(CFile)
public:
    enum OpenFlags { modeRead = 0x0000, modeWrite = 0x0001, modeReadWrite = 0x0002, shareDenyNone = 0x0040,
                     typeBinary = 0x8000, modeCreate = 0x1000 };

    CFile() = default;
    // Opens the file or throws a CFileException*.
    CFile(const char* fileName, unsigned int openFlags) {
        CFileException error;
        if (!Open(fileName, openFlags, &error)) AfxThrowFileException(error.m_cause, error.m_lOsError);
    }
    ~CFile() override { Close(); }

    // False (and the cause in error, when given) if the file cannot be opened.
    bool Open(const char* fileName, unsigned int openFlags, CFileException* error = nullptr) {
        Close();
        const char* mode = (openFlags & modeCreate) ? "wb" : (openFlags & (modeWrite | modeReadWrite)) ? "r+b" : "rb";
        m_file = zor::open_file(fileName, mode);
        if (m_file == nullptr) {
            if (error != nullptr) error->m_cause = CFileException::fileNotFound;
            return false;
        }
        m_name = fileName;
        return true;
    }

    // Length in bytes; 0 for a closed file or one whose length cannot be taken.
    unsigned long long GetLength() const {
        if (m_file == nullptr) return 0;
        long here = std::ftell(m_file);
        if (here < 0 || std::fseek(m_file, 0, SEEK_END) != 0) return 0;
        long end = std::ftell(m_file);
        std::fseek(m_file, here, SEEK_SET);
        return end < 0 ? 0 : static_cast<unsigned long long>(end);
    }

    // Reads up to count bytes; returns the number read.
    unsigned int Read(void* buffer, unsigned int count) {
        if (m_file == nullptr || buffer == nullptr) return 0;
        return static_cast<unsigned int>(std::fread(buffer, 1, count, m_file));
    }

    void Close() {
        if (m_file != nullptr) std::fclose(m_file);
        m_file = nullptr;
    }

    const std::string& GetFilePath() const { return m_name; }

private:
    std::FILE* m_file = nullptr;
    std::string m_name;
};
IMPLEMENT_DYNAMIC_INLINE(CFile, CObject)
