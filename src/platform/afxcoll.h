// CObArray: the framework's array of CObject pointers. It owns nothing: the
// holder deletes the objects.
#pragma once

#include "platform/afxtempl.h"

class CObArray : public CArray<CObject*, CObject*> {
    DECLARE_DYNAMIC_INLINE(CObArray)
};
IMPLEMENT_DYNAMIC_INLINE(CObArray, CObject)
