// Stand-in for the Windows application framework's core header: basic types,
// CObject with run-time class information, the framework's exceptions, CString
// and CFile. Header-only, so a host compiles its own copy and the library
// exports none of it.
#pragma once

#include <cstdint>

typedef int BOOL;
typedef unsigned int UINT;
typedef unsigned long DWORD;
typedef unsigned short WORD;
typedef unsigned char BYTE;
typedef long LONG;
typedef const char* LPCSTR;
typedef char* LPSTR;
typedef const char* LPCTSTR;
typedef char* LPTSTR;
typedef std::int64_t LONGLONG;
typedef std::uint64_t ULONGLONG;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#include "platform/afxobject.h"
#include "platform/afxexcept.h"
#include "platform/afxstr.h"
#include "platform/afxfile.h"
