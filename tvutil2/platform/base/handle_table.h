// One table for every handle that the ground floor gives out.
//
// A handle is an index and a generation, so that a closed, foreign or invented handle is told from
// a live one and never leads to freed memory. A look-up takes no lock and pins the object: one that
// another thread closes in the middle of a call lives until that call is done.
#pragma once

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/types.h"

#include <functional>
#include <memory>
#include <utility>

namespace tvutil2 {

enum class HandleKind : std::uint8_t {
    file,
    search,
    key,
    event,
    mutex,
    semaphore,
    process,
    thread,
    module,
    mapping,
    change,
    internet,
    console,
    context,   ///< a device context
    graphics,  ///< brush, pen, font, bitmap, region
    icon,
    image_list,
    certificates,
    message,
    memory,
    menu
};

namespace handle_table {
struct Slot;
}
class WaitableObject;

/// Base of everything that a handle can stand for.
class HandleObject {
  public:
    explicit HandleObject(HandleKind kind) : m_kind(kind) {}
    virtual ~HandleObject() = default;
    HandleObject(const HandleObject&) = delete;
    HandleObject& operator=(const HandleObject&) = delete;

    [[nodiscard]] HandleKind kind() const { return m_kind; }
    /// This object, if it can be waited for.
    [[nodiscard]] virtual WaitableObject* waitable() { return nullptr; }
    /// The object is about to get a handle that stands in that row.
    virtual void on_inserted(handle_table::Slot& /*slot*/, std::uintptr_t /*handle*/) {}
    /// CloseHandle has closed one of its handles; on that thread, with nothing locked.
    virtual void on_closed() {}

  private:
    HandleKind m_kind;
};

namespace handle_table {

/// A new handle value for `object`: above 32 bits, so that it is never null, never a predefined
/// key and never INVALID_HANDLE_VALUE. 0 with ERROR_TOO_MANY_OPEN_FILES when the table is full.
[[nodiscard]] std::uintptr_t insert(std::shared_ptr<HandleObject> object);

/// A share of the object for those who keep it; null for a handle that is closed or never was. The
/// last error stays.
[[nodiscard]] std::shared_ptr<HandleObject> find(std::uintptr_t handle);

/// Takes the object out of the table if it is of that kind; null otherwise. The object's destructor
/// runs outside the table's lock, once nobody pins it.
[[nodiscard]] std::shared_ptr<HandleObject> remove(std::uintptr_t handle, HandleKind kind);

/// What is looked up for a moment: keeps an object from being destroyed for as long as the pin
/// lives, and costs one atomic operation at either end.
class Pin {
  public:
    Pin() = default;
    /// Empty for a handle that is closed or never was. `or_closed` also takes a closed handle's
    /// object that others still pin.
    explicit Pin(std::uintptr_t handle, bool or_closed = false);
    ~Pin() { release(); }
    Pin(Pin&& other) noexcept : m_slot(std::exchange(other.m_slot, nullptr)) {}
    Pin& operator=(Pin&& other) noexcept {
        if (this != &other) {
            release();
            m_slot = std::exchange(other.m_slot, nullptr);
        }
        return *this;
    }
    Pin(const Pin&) = delete;
    Pin& operator=(const Pin&) = delete;

    explicit operator bool() const { return m_slot != nullptr; }
    [[nodiscard]] HandleObject* object() const;
    [[nodiscard]] const std::shared_ptr<HandleObject>& shared() const;

  private:
    friend void visit_live(const std::function<void(HandleObject&)>& visit);
    friend std::shared_ptr<HandleObject> remove(std::uintptr_t handle, HandleKind kind);
    void release();

    Slot* m_slot = nullptr;
};

/// Visits every object that has a handle, in no order.
void visit_live(const std::function<void(HandleObject&)>& visit);

/// How many objects have a handle.
[[nodiscard]] TVUTIL_API std::size_t count_live();

/// Keeps forks and the table apart; registered at the library's load or the first call, whichever
/// is sooner. Who registers a handler that works with handles calls this before it.
void guard_forks();

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

/// A pinned T.
template <class T>
class Pinned {
  public:
    Pinned() = default;
    explicit Pinned(handle_table::Pin pin)
        : m_pin(std::move(pin)), m_object(static_cast<T*>(m_pin.object())) {}
    explicit operator bool() const { return m_object != nullptr; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }

  private:
    handle_table::Pin m_pin;
    T* m_object = nullptr;
};

/// As object_of, for a use that is over soon.
template <class T, class Handle>
[[nodiscard]] Pinned<T> pin_object(Handle handle) {
    handle_table::Pin pin(reinterpret_cast<std::uintptr_t>(handle));
    if (pin && pin.object()->kind() == T::kHandleKind) return Pinned<T>(std::move(pin));
    SetLastError(ERROR_INVALID_HANDLE);
    return {};
}

/// Closes a handle if it stands for a T. False with ERROR_INVALID_HANDLE otherwise.
template <class T, class Handle>
bool close_handle_of(Handle handle) {
    if (handle_table::remove(reinterpret_cast<std::uintptr_t>(handle), T::kHandleKind)) return true;
    return fail_with(ERROR_INVALID_HANDLE);
}

}  // namespace tvutil2

/// Closes a file, event, mutex, semaphore, mapping, process or thread. Searches are closed with
/// FindClose, keys with RegCloseKey and modules with FreeLibrary; here they give 0 and
/// ERROR_INVALID_HANDLE, as any other stranger does.
TVUTIL_API BOOL CloseHandle(HANDLE handle);
