// Stand-in for the platform's debugger output. There is no debugger channel
// here: the text is dropped.
#pragma once

inline void OutputDebugStringA(const char* /*text*/) {}
