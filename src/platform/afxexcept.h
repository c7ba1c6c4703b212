// The framework's exceptions. As in the framework they are thrown as pointers:
// catch (CInvalidArgException* e) { ...; e->Delete(); }. The invalid-argument
// and memory exceptions are static objects whose Delete() does nothing.
#pragma once

#include <cstdio>
#include <cstring>

#include "platform/afxobject.h"

class CException : public CObject {
    DECLARE_DYNAMIC_INLINE(CException)
public:
    explicit CException(bool autoDelete = true) : m_bAutoDelete(autoDelete) {}

    // Copies a description of the error into buffer; false when there is none.
    virtual bool GetErrorMessage(char* buffer, unsigned int maxLength, unsigned int* helpContext = nullptr) const {
        if (helpContext != nullptr) *helpContext = 0;
        if (buffer != nullptr && maxLength > 0) buffer[0] = '\0';
        return false;
    }

    // Frees a heap-allocated exception; static ones stay.
    void Delete() {
        if (m_bAutoDelete) delete this;
    }

protected:
    bool m_bAutoDelete;
};
IMPLEMENT_DYNAMIC_INLINE(CException, CObject)

class CSimpleException : public CException {
    DECLARE_DYNAMIC_INLINE(CSimpleException)
public:
    explicit CSimpleException(const char* message = "") : CException(false), m_message(message) {}

    bool GetErrorMessage(char* buffer, unsigned int maxLength, unsigned int* helpContext = nullptr) const override {
        if (helpContext != nullptr) *helpContext = 0;
        if (buffer == nullptr || maxLength == 0) return false;
        std::snprintf(buffer, maxLength, "%s", m_message);
        return true;
    }

private:
    const char* m_message;
};
IMPLEMENT_DYNAMIC_INLINE(CSimpleException, CException)

class CInvalidArgException : public CSimpleException {
    DECLARE_DYNAMIC_INLINE(CInvalidArgException)
public:
    CInvalidArgException() : CSimpleException("Invalid argument.") {}
};
IMPLEMENT_DYNAMIC_INLINE(CInvalidArgException, CSimpleException)

class CMemoryException : public CSimpleException {
    DECLARE_DYNAMIC_INLINE(CMemoryException)
public:
    CMemoryException() : CSimpleException("Out of memory.") {}
};
IMPLEMENT_DYNAMIC_INLINE(CMemoryException, CSimpleException)

class CFileException : public CException {
    DECLARE_DYNAMIC_INLINE(CFileException)
public:
    enum { none = 0, genericException = 1, fileNotFound = 2, accessDenied = 5, endOfFile = 14 };

    explicit CFileException(int cause = none, long osError = -1) : m_cause(cause), m_lOsError(osError) {}

    int m_cause;
    long m_lOsError;
};
IMPLEMENT_DYNAMIC_INLINE(CFileException, CException)

[[noreturn]] inline void AfxThrowInvalidArgException() {
    static CInvalidArgException instance;
    throw &instance;
}

[[noreturn]] inline void AfxThrowMemoryException() {
    static CMemoryException instance;
    throw &instance;
}

[[noreturn]] inline void AfxThrowFileException(int cause, long osError = -1) {
    throw new CFileException(cause, osError);
}
