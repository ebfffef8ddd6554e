// The root of the framework's classes, and what they know of themselves at run time.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

class CObject;

/// What is known of a class: one constant object for each, entered by the macros below.
struct TVUTIL_API CRuntimeClass {
    const char* m_lpszClassName;
    int m_nObjectSize;
    CObject* (*m_pfnCreateObject)();  ///< null for a class that can't be created by name
    const CRuntimeClass* (*m_pfnGetBaseClass)();  ///< null for CObject

    /// A new object, which the caller deletes; null when the class can't be created this way.
    [[nodiscard]] CObject* CreateObject() const;
    /// Non-zero for the class itself and every class above it.
    [[nodiscard]] BOOL IsDerivedFrom(const CRuntimeClass* base) const;
};

class TVUTIL_API CObject {
  public:
    CObject() = default;
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;
    virtual ~CObject() = default;

    [[nodiscard]] virtual const CRuntimeClass* GetRuntimeClass() const;
    [[nodiscard]] BOOL IsKindOf(const CRuntimeClass* base) const {
        return GetRuntimeClass()->IsDerivedFrom(base);
    }

    static const CRuntimeClass classCObject;
    static const CRuntimeClass* GetThisClass() { return &classCObject; }
};

/// The record of a class that has one.
#define RUNTIME_CLASS(class_name) (class_name::GetThisClass())

/// In a class: it knows itself at run time. Its source says IMPLEMENT_DYNAMIC.
#define DECLARE_DYNAMIC(class_name)                                      \
  public:                                                                \
    static const CRuntimeClass class##class_name;                        \
    static const CRuntimeClass* GetThisClass();                          \
    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const override; \
                                                                         \
  protected:                                                             \
    static const CRuntimeClass* _GetBaseClass();

/// The same, and it can be created by its record.
#define DECLARE_DYNCREATE(class_name) \
    DECLARE_DYNAMIC(class_name)       \
  public:                             \
    static CObject* CreateObject();

#define TVUTIL_IMPLEMENT_RUNTIMECLASS(class_name, base_name, create)                            \
    const CRuntimeClass* class_name::_GetBaseClass() {                                          \
        return RUNTIME_CLASS(base_name);                                                        \
    }                                                                                           \
    const CRuntimeClass class_name::class##class_name {                                         \
#class_name, static_cast < int>(sizeof(class_name)), create, &class_name::_GetBaseClass \
    };                                                                                          \
    const CRuntimeClass* class_name::GetThisClass() {                                           \
        return &class_name::class##class_name;                                                  \
    }                                                                                           \
    const CRuntimeClass* class_name::GetRuntimeClass() const {                                  \
        return GetThisClass();                                                                  \
    }

#define IMPLEMENT_DYNAMIC(class_name, base_name) \
    TVUTIL_IMPLEMENT_RUNTIMECLASS(class_name, base_name, nullptr)

// NOLINTBEGIN(bugprone-macro-parentheses): a class's name can't stand in any
#define IMPLEMENT_DYNCREATE(class_name, base_name) \
    CObject* class_name::CreateObject() {          \
        return new class_name;                     \
    }                                              \
    TVUTIL_IMPLEMENT_RUNTIMECLASS(class_name, base_name, &class_name::CreateObject)
// NOLINTEND(bugprone-macro-parentheses)
