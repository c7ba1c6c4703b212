// The library's application object. It does no start-up or shut-down work of
// its own: each subsystem keeps its module-wide state in a static object that
// is built at load and released at unload.
#pragma once

#include "platform/afxwin.h"

class CZORModelIoApp : public CWinApp {
public:
    CZORModelIoApp();
};
