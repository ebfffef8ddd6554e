#include "tvutil2/platform/process/package.h"

#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/result_error.h"

#include <cstring>

namespace {

struct Identity {
    std::u16string family_name;
    std::u16string path;
};

Identity& identity() {
    static auto* const only = new Identity;
    return *only;
}

}  // namespace

HANDLE GetCurrentProcess() {
    return reinterpret_cast<HANDLE>(~std::uintptr_t{0});
}

LONG GetPackageFamilyName(HANDLE process, DWORD* length, char16_t* name) {
    if (length == nullptr) return static_cast<LONG>(ERROR_INVALID_PARAMETER);
    if (process != GetCurrentProcess()) return static_cast<LONG>(ERROR_INVALID_HANDLE);
    const auto& own = identity().family_name;
    if (own.empty()) return APPMODEL_ERROR_NO_PACKAGE;
    const auto room = *length;
    *length = static_cast<DWORD>(own.size() + 1);
    if (room < *length) return static_cast<LONG>(ERROR_INSUFFICIENT_BUFFER);
    if (name == nullptr) return static_cast<LONG>(ERROR_INVALID_PARAMETER);
    std::memcpy(name, own.c_str(), *length * sizeof(char16_t));
    return static_cast<LONG>(ERROR_SUCCESS);
}

namespace Windows::ApplicationModel {

Package Package::Current() {
    if (identity().family_name.empty()) {
        throw tvutil2::ResultError(HRESULT_FROM_WIN32(DWORD{APPMODEL_ERROR_NO_PACKAGE}));
    }
    return Package(identity().path);
}

}  // namespace Windows::ApplicationModel

namespace tvutil2 {

void set_package(const std::u16string& family_name, const std::u16string& path) {
    identity() = {family_name, path};
}

}  // namespace tvutil2
