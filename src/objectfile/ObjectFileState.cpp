#include "objectfile/ObjectFileState.h"

#include <cstring>

namespace zor {

ObjectFileState& object_file_state() {
    static ObjectFileState state;
    return state;
}

void reset_object_file_state() { object_file_state() = ObjectFileState(); }

std::string spindle_key(const char* text) {
    if (text == nullptr) return std::string();
    return std::string(text, strnlen(text, ObjectFileState::kSpindleKeyLength));
}

}  // namespace zor
