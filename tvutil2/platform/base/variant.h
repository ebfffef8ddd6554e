// Values of any kind, as collections of objects hand them out.
#pragma once

#include "tvutil2/platform/base/com.h"

using VARTYPE = WORD;
using VARIANT_BOOL = std::int16_t;
/// Text of an object: made by SysAllocString, given back with SysFreeString, null when empty.
using BSTR = char16_t*;

inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_DISPATCH = 9;
inline constexpr VARTYPE VT_UNKNOWN = 13;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;
inline constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005);

inline constexpr IID IID_IDispatch{0x00020400, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IEnumVARIANT{0x00020404, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// An object of a collection. Calls by name aren't offered.
class IDispatch : public IUnknown {
  protected:
    ~IDispatch() = default;
};

struct VARIANT {
    VARTYPE vt;
    union {
        IUnknown* punkVal;
        IDispatch* pdispVal;
    };
};

/// Walks a collection.
class IEnumVARIANT : public IUnknown {
  public:
    /// Up to `count` values, each the caller's to clear; S_FALSE when there were fewer. `fetched`,
    /// null only for a count of 1, gets their number.
    virtual HRESULT Next(DWORD count, VARIANT* values, DWORD* fetched) = 0;
    virtual HRESULT Skip(DWORD count) = 0;
    virtual HRESULT Reset() = 0;

  protected:
    ~IEnumVARIANT() = default;
};

/// Null for null, and when there is no memory.
TVUTIL_API BSTR SysAllocString(const char16_t* text);
TVUTIL_API void SysFreeString(BSTR text);

TVUTIL_API void VariantInit(VARIANT* value);
/// Lets go of what the value holds.
TVUTIL_API HRESULT VariantClear(VARIANT* value);
/// Changes an object's value to the other kind of object, in place too; DISP_E_TYPEMISMATCH for all
/// else, and then `target` stays.
TVUTIL_API HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, WORD flags,
                                     VARTYPE type);
