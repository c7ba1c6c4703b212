// CObject and CRuntimeClass: the framework's base object with run-time class
// information (RUNTIME_CLASS, IsKindOf), without serialisation or dynamic
// creation, which the module does not use.
#pragma once

#include <cstring>

class CObject;

struct CRuntimeClass {
    const char* m_lpszClassName;
    int m_nObjectSize;
    unsigned int m_wSchema;
    CObject* (*m_pfnCreateObject)();
    const CRuntimeClass* m_pBaseClass;

    // True when this class is pClass or derives from it. Classes are compared
    // by address first and then by name, because a host and the library each
    // hold their own copy of the header-only classes (CObject, CObArray).
    bool IsDerivedFrom(const CRuntimeClass* pClass) const {
        for (const CRuntimeClass* c = this; c != nullptr; c = c->m_pBaseClass) {
            if (c == pClass || std::strcmp(c->m_lpszClassName, pClass->m_lpszClassName) == 0) return true;
        }
        return false;
    }
};

#define RUNTIME_CLASS(class_name) (const_cast<CRuntimeClass*>(&class_name::class##class_name))

// Declares the run-time class of a class whose members are defined in a .cpp file.
#define DECLARE_DYNAMIC(class_name)                 \
public:                                             \
    static const CRuntimeClass class##class_name;   \
    CRuntimeClass* GetRuntimeClass() const override;

#define IMPLEMENT_DYNAMIC(class_name, base_class_name)                                        \
    const CRuntimeClass class_name::class##class_name = {#class_name, sizeof(class_name),     \
                                                          0xFFFF, nullptr,                     \
                                                          RUNTIME_CLASS(base_class_name)};     \
    CRuntimeClass* class_name::GetRuntimeClass() const { return RUNTIME_CLASS(class_name); }

// Header-only form for the platform's own classes: DECLARE_DYNAMIC_INLINE in the
// class body, IMPLEMENT_DYNAMIC_INLINE after it.
#define DECLARE_DYNAMIC_INLINE(class_name)          \
public:                                             \
    static const CRuntimeClass class##class_name;   \
    CRuntimeClass* GetRuntimeClass() const override { return RUNTIME_CLASS(class_name); }

#define IMPLEMENT_DYNAMIC_INLINE(class_name, base_class_name)                                        \
    inline const CRuntimeClass class_name::class##class_name = {#class_name, sizeof(class_name),     \
                                                                 0xFFFF, nullptr,                     \
                                                                 RUNTIME_CLASS(base_class_name)};

class CObject {
public:
    static inline const CRuntimeClass classCObject = {"CObject", 0, 0xFFFF, nullptr, nullptr};

    virtual ~CObject() = default;
    virtual CRuntimeClass* GetRuntimeClass() const { return RUNTIME_CLASS(CObject); }

    bool IsKindOf(const CRuntimeClass* pClass) const { return GetRuntimeClass()->IsDerivedFrom(pClass); }

protected:
    CObject() = default;

private:
    // Framework objects are not copyable.
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;
};
