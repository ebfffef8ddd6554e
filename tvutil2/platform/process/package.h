// Package identity: what a program has that was installed as a package of the platform.
//
// Programs here are plain desktop programs and have none, unless they were given one by
// set_package().
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <string>

inline constexpr LONG APPMODEL_ERROR_NO_PACKAGE = 15700;

/// The running process, in calls that want a handle of one. Needn't be closed.
[[nodiscard]] TVUTIL_API HANDLE GetCurrentProcess();

/// The family name of the process's package. `*length` is the room going in, in units with the
/// zero, and what is needed coming out; ERROR_INSUFFICIENT_BUFFER when that is more.
/// APPMODEL_ERROR_NO_PACKAGE without a package, ERROR_INVALID_HANDLE for another process.
TVUTIL_API LONG GetPackageFamilyName(HANDLE process, DWORD* length, char16_t* name);

namespace Windows::ApplicationModel {

/// The folder that a package is installed in.
class TVUTIL_API StorageFolder {
  public:
    explicit StorageFolder(std::u16string path) : m_path(std::move(path)) {}
    [[nodiscard]] const std::u16string& Path() const { return m_path; }

  private:
    std::u16string m_path;
};

class TVUTIL_API Package {
  public:
    /// Throws tvutil2::ResultError (APPMODEL_ERROR_NO_PACKAGE) without a package.
    [[nodiscard]] static Package Current();
    [[nodiscard]] StorageFolder InstalledLocation() const { return StorageFolder(m_path); }

  private:
    explicit Package(std::u16string path) : m_path(std::move(path)) {}
    std::u16string m_path;
};

}  // namespace Windows::ApplicationModel

namespace tvutil2 {

/// Gives the process the identity of a package, with the folder that it is installed in: for
/// tests. An empty name takes it away. Before a second thread asks.
TVUTIL_API void set_package(const std::u16string& family_name, const std::u16string& path);

}  // namespace tvutil2
