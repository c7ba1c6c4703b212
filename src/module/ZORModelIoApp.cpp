#include "module/ZORModelIoApp.h"

CZORModelIoApp::CZORModelIoApp() : CWinApp("ZORModelIo") {}

// The one application object of the module.
CZORModelIoApp theApp;
