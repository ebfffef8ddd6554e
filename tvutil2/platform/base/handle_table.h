// One table for every handle that the ground floor gives out.
//
// A handle is an index and a generation, so that a closed, foreign or invented handle is told from
// a live one and never leads to freed memory. A look-up shares ownership: an object that another
// thread closes in the middle of a call lives until that call is done.
#pragma once

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/types.h"

#include <memory>

namespace tvutil2 {

enum class HandleKind : std::uint8_t { file, search, key, event, mutex, process, thread, module };

/// Base of everything that a handle can stand for.
class HandleObject {
  public:
    explicit HandleObject(HandleKind kind) : m_kind(kind) {}
    virtual ~HandleObject() = default;
    HandleObject(const HandleObject&) = delete;
    HandleObject& operator=(const HandleObject&) = delete;

    [[nodiscard]] HandleKind kind() const { return m_kind; }

  private:
    HandleKind m_kind;
};

namespace handle_table {

/// A new handle value for `object`: above 32 bits, so that it is never null, never a predefined
/// key and never INVALID_HANDLE_VALUE. 0 with ERROR_TOO_MANY_OPEN_FILES when the table is full.
[[nodiscard]] std::uintptr_t insert(std::shared_ptr<HandleObject> object);

/// The object, or null for a handle that is closed or never was. The last error stays.
[[nodiscard]] std::shared_ptr<HandleObject> find(std::uintptr_t handle);

/// Takes the object out of the table if it is of that kind; null otherwise. The caller holds the
/// last reference of the table, so the object's destructor runs outside the table's lock.
[[nodiscard]] std::shared_ptr<HandleObject> remove(std::uintptr_t handle, HandleKind kind);

}  // namespace handle_table

/// Enters an object and gives its handle in the type that callers see; null when it fails.
template <class Handle>
[[nodiscard]] Handle make_handle(std::shared_ptr<HandleObject> object) {
    return reinterpret_cast<Handle>(handle_table::insert(std::move(object)));
}

/// The object behind a handle, if it is a T (which names its kind as `T::kHandleKind`); otherwise
/// null with ERROR_INVALID_HANDLE.
template <class T, class Handle>
[[nodiscard]] std::shared_ptr<T> object_of(Handle handle) {
    auto object = handle_table::find(reinterpret_cast<std::uintptr_t>(handle));
    if (object && object->kind() == T::kHandleKind) {
        return std::static_pointer_cast<T>(std::move(object));
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

/// Closes a handle if it stands for a T. False with ERROR_INVALID_HANDLE otherwise.
template <class T, class Handle>
bool close_handle_of(Handle handle) {
    if (handle_table::remove(reinterpret_cast<std::uintptr_t>(handle), T::kHandleKind)) return true;
    return fail_with(ERROR_INVALID_HANDLE);
}

}  // namespace tvutil2

/// Closes a file, event, mutex, process or thread. Searches are closed with FindClose, keys with
/// RegCloseKey and modules with FreeLibrary; here they give 0 and ERROR_INVALID_HANDLE, as any
/// other stranger does.
TVUTIL_API BOOL CloseHandle(HANDLE handle);
