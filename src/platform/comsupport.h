// Header-only stand-in for the subset of COM and its compiler support that the
// XML document code uses: result codes, interface identifiers, the apartment
// initialisation count and the COM error exception (thrown as an object, as
// the platform's _com_issue_error does).
#pragma once

#include <cstdint>
#include <cstdio>

typedef std::int32_t HRESULT;

#define S_OK ((HRESULT)0)
#define S_FALSE ((HRESULT)1)
#define E_POINTER ((HRESULT)0x80004003L)
#define E_OUTOFMEMORY ((HRESULT)0x8007000EL)
#define SUCCEEDED(hr) (((HRESULT)(hr)) >= 0)
#define FAILED(hr) (((HRESULT)(hr)) < 0)

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
typedef GUID IID;
typedef const IID& REFIID;

inline bool operator==(const GUID& a, const GUID& b) {
    if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
    for (int i = 0; i < 8; ++i)
        if (a.Data4[i] != b.Data4[i]) return false;
    return true;
}
inline bool operator!=(const GUID& a, const GUID& b) { return !(a == b); }

constexpr GUID GUID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

struct IUnknown;

namespace zor::detail {
// Apartment initialisation count of the process (the module is used from one
// thread, so one count stands for the calling thread's).
inline int& com_init_count() {
    static int count = 0;
    return count;
}
}  // namespace zor::detail

// S_OK for the first initialisation, S_FALSE when COM was already initialised.
inline HRESULT CoInitialize(void* /*reserved*/) { return zor::detail::com_init_count()++ == 0 ? S_OK : S_FALSE; }

// Balances one CoInitialize; a call without one does nothing.
inline void CoUninitialize() {
    if (zor::detail::com_init_count() > 0) --zor::detail::com_init_count();
}

// A failing COM call: its result code and the identifier of the interface
// that failed (GUID_NULL when the failure was not an interface's).
class _com_error {
public:
    explicit _com_error(HRESULT hr, const IID& iid = GUID_NULL) : m_hresult(hr), m_iid(iid) {
        std::snprintf(m_message, sizeof m_message, "Unknown error 0x%08X", static_cast<unsigned>(hr));
    }

    HRESULT Error() const { return m_hresult; }
    // The interface that reported the error.
    ::GUID GUID() const { return m_iid; }
    // A short description of the result code.
    const char* ErrorMessage() const {
        if (m_hresult == E_POINTER) return "Invalid pointer";
        if (m_hresult == E_OUTOFMEMORY) return "Not enough memory resources are available to complete this operation.";
        return m_message;
    }

private:
    HRESULT m_hresult;
    ::GUID m_iid;
    char m_message[32];
};

[[noreturn]] inline void _com_issue_error(HRESULT hr) { throw _com_error(hr); }
[[noreturn]] inline void _com_issue_errorex(HRESULT hr, IUnknown* /*failing*/, REFIID iid) {
    throw _com_error(hr, iid);
}
