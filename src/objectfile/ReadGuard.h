// How the object-file readers meet a failed allocation: the reader gives its
// failure result instead of throwing into the host, and the file ends there.
#pragma once

#include <cstdio>
#include <new>

namespace zor {

// Runs read (a reader's body) and returns its result. When memory runs out
// inside it, the stream is closed, so that every later read fails as at the
// end of the file (a host's walk stops where the file could not be read), and
// failure is returned. What the reader had already handed out stays with the
// caller, as after any failed read.
template <class Result, class Read>
Result contain_allocation_failure(std::FILE*& stream, Result failure, Read&& read) {
    try {
        return read();
    } catch (const std::bad_alloc&) {
        if (stream != nullptr) std::fclose(stream);
        stream = nullptr;
        return failure;
    }
}

}  // namespace zor
