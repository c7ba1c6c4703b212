#include "module/Allocation.h"

namespace zor {

AllocationGate g_allocationGate = nullptr;

}  // namespace zor
