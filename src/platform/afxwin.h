// CWinApp: the framework's application object, as far as a library module
// needs it (one global instance, no start-up or shut-down work).
#pragma once

#include "platform/afx.h"

class CWinApp : public CObject {
    DECLARE_DYNAMIC_INLINE(CWinApp)
public:
    explicit CWinApp(const char* appName = nullptr) : m_pszAppName(appName) {}
    virtual bool InitInstance() { return true; }
    virtual int ExitInstance() { return 0; }

    const char* m_pszAppName;
};
IMPLEMENT_DYNAMIC_INLINE(CWinApp, CObject)
