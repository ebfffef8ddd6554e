// A module loaded at run time.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// What a module's DllGetVersion fills in.
struct DLLVERSIONINFO {
    DWORD cbSize;  ///< set by the caller: size of the structure
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformID;
};

/// Loads a module by name. A copy shares the handle and takes no reference of its own, so at most
/// one of the copies may be the owner that frees it.
class TVUTIL_API CDllLoader {
  public:
    /// `freeOnDestroy` non-zero makes this object the owner.
    CDllLoader(const char16_t* name, int freeOnDestroy);
    virtual ~CDllLoader();
    CDllLoader(const CDllLoader&) = default;
    CDllLoader& operator=(const CDllLoader&) = default;

    [[nodiscard]] int IsLoaded() const { return m_module != nullptr ? 1 : 0; }
    /// Null when nothing is loaded or the module doesn't export `name`.
    [[nodiscard]] FARPROC GetProcAddress(const char* name) const;
    /// What the module's DllGetVersion says: the major version in the low word, the minor one in
    /// the high word, each cut to 16 bits. 0, and `version` is left alone, when nothing is loaded,
    /// when the function is missing or when it fails.
    int GetVersion(DWORD* version) const;

  private:
    HMODULE m_module;
    int m_is_owner;
};
