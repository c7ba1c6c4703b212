// Module-wide state of the object-file reader: one object file is read at a
// time in the process. The constructor of CMWZORFile resets part of it; the
// collision reader consumes the name table; tests reset all of it.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace zor {

struct ObjectFileState {
    static constexpr int kLineBufferSize = 512;
    static constexpr int kMaxObjectNames = 300;
    static constexpr int kSpindleSlots = 10;
    static constexpr int kSpindleKeyLength = 5;

    std::string currentPath;       // file given to the last constructor
    int matrixConvention = 0;      // 0: every matrix read is converted
    char lineBuffer[kLineBufferSize] = {};
    std::string lineText;  // the last line read, descrambled; reused so reading allocates nothing per line
    bool firstLinePending = false;  // descrambler: the next line is the file's first
    bool fileIsPlain = false;       // descrambler: the file starts with its version line

    // Names of the objects read so far (files of version 1.13 and later).
    std::vector<std::string> objectNames;

    // Engine elements of files before 1.09: first 5 characters of the element
    // name and of its spindle key. count may exceed the slots: entries past
    // the tenth are counted, not stored.
    struct SpindleEntry {
        std::string nameKey;
        std::string spindleKey;
    };
    std::array<SpindleEntry, kSpindleSlots> spindles;
    int spindleCount = 0;
};

ObjectFileState& object_file_state();

// Back to the state at load (used by tests).
void reset_object_file_state();

// The first 5 characters of text, as the spindle table keys it.
std::string spindle_key(const char* text);

}  // namespace zor
