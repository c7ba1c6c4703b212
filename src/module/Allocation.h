// The C allocator as the module uses it for memory it hands to callers (freed
// with free) or keeps in its own pools: malloc, calloc and realloc behind one
// door, so that tests can make any one of these calls fail. Internal: not part
// of the exported interface.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

namespace zor {

// Asked before every allocation below while set; false makes that allocation
// fail (a null result, as when memory runs out). Tests only.
using AllocationGate = bool (*)();
extern AllocationGate g_allocationGate;

inline bool allocation_allowed() { return g_allocationGate == nullptr || g_allocationGate(); }

// malloc, calloc and realloc; null when memory runs out (realloc then keeps
// the old block).
inline void* allocate(std::size_t size) { return allocation_allowed() ? std::malloc(size) : nullptr; }
inline void* allocate_zeroed(std::size_t count, std::size_t size) {
    return allocation_allowed() ? std::calloc(count, size) : nullptr;
}
inline void* reallocate(void* block, std::size_t size) {
    return allocation_allowed() ? std::realloc(block, size) : nullptr;
}

// Runs read (a reader's body) and returns its result, or failure when memory
// runs out inside it: at the edge of every reader a failed allocation becomes
// the reader's failure result instead of an exception in the host.
template <class Result, class Read>
Result failure_on_bad_alloc(Result failure, Read&& read) {
    try {
        return read();
    } catch (const std::bad_alloc&) {
        return failure;
    }
}

}  // namespace zor
