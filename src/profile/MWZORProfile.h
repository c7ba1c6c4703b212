// Exported declarations of this subsystem (filled in as it is built).
#pragma once

#include "module/ZORModelIoExport.h"
