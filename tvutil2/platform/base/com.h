// The platform's reference-counted objects: identity, life time, creation by class.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
    friend bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using CLSID = GUID;

inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110);
inline constexpr HRESULT RPC_E_CHANGED_MODE = static_cast<HRESULT>(0x80010106);
inline constexpr HRESULT CO_E_CLASSSTRING = static_cast<HRESULT>(0x800401F3);
inline constexpr HRESULT CO_E_OBJNOTREG = static_cast<HRESULT>(0x800401FB);
inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD CLSCTX_LOCAL_SERVER = 4;

inline constexpr DWORD COINIT_MULTITHREADED = 0;
inline constexpr DWORD COINIT_APARTMENTTHREADED = 2;
inline constexpr DWORD COINIT_DISABLE_OLE1DDE = 4;

[[nodiscard]] constexpr HRESULT HRESULT_FROM_WIN32(DWORD error) {
    return error == 0 ? S_OK : static_cast<HRESULT>((error & 0xFFFF) | 0x80070000);
}

inline constexpr IID IID_IUnknown{0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IClassFactory{1, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// An object belongs to its references: it is gone with the last Release. AddRef and Release are
/// safe from any thread.
class IUnknown {
  public:
    /// Another interface of the object, with a reference for the caller. E_NOINTERFACE and null
    /// when it has none of that id.
    virtual HRESULT QueryInterface(const IID& id, void** object) = 0;
    virtual DWORD AddRef() = 0;
    virtual DWORD Release() = 0;

  protected:
    ~IUnknown() = default;
};

/// Makes objects of one class.
class IClassFactory : public IUnknown {
  public:
    /// `outer` must be null: CLASS_E_NOAGGREGATION.
    virtual HRESULT CreateInstance(IUnknown* outer, const IID& id, void** object) = 0;
    virtual HRESULT LockServer(BOOL lock) = 0;

  protected:
    ~IClassFactory() = default;
};

/// The id in "{01234567-89AB-CDEF-0123-456789ABCDEF}", in any case; all zeros for null.
/// CO_E_CLASSSTRING, and all zeros, for any other text: names of classes aren't looked up.
TVUTIL_API HRESULT CLSIDFromString(const char16_t* text, CLSID* id);

/// A new object of a class and one of its interfaces. REGDB_E_CLASSNOTREG for a class that isn't
/// there; `outer` must be null. A thread needn't be initialised.
TVUTIL_API HRESULT CoCreateInstance(const CLSID& class_id, IUnknown* outer, DWORD context,
                                    const IID& id, void** object);

/// Says which concurrency model the calling thread follows: S_OK the first time, S_FALSE when it
/// follows that one already, RPC_E_CHANGED_MODE when it follows the other. Every S_OK and S_FALSE
/// is undone by one CoUninitialize. Objects here work on any thread, so nothing else depends on it.
TVUTIL_API HRESULT CoInitializeEx(void* reserved, DWORD model);
TVUTIL_API void CoUninitialize();

namespace tvutil2 {

/// Enters a class when a static object of it is built; for the rooms that implement one.
class ComClass {
  public:
    using Create = HRESULT (*)(const IID& id, void** object);
    ComClass(const CLSID& class_id, Create create);
    ComClass(const ComClass&) = delete;
    ComClass& operator=(const ComClass&) = delete;

    /// Null when no such class was entered.
    [[nodiscard]] static Create find(const CLSID& class_id);

  private:
    CLSID m_class_id;
    Create m_create;
    const ComClass* m_next;
};

}  // namespace tvutil2
