#include "tvutil2/platform/objects/objects.h"

#include "tvutil2/platform/objects/event.h"
#include "tvutil2/platform/objects/mutex.h"

#include <algorithm>
#include <functional>

using tvutil2::Event;
using tvutil2::fail_with;
using tvutil2::Mutex;
using tvutil2::object_of;
using tvutil2::OwnedMutexes;
using tvutil2::WaitableObject;

namespace {

bool has_name(const char16_t* name) {
    return name != nullptr && *name != 0;
}

HANDLE enter(std::shared_ptr<WaitableObject> object) {
    auto* const handle = tvutil2::make_handle<HANDLE>(std::move(object));
    if (handle != nullptr) SetLastError(ERROR_SUCCESS);
    return handle;
}

// Null with ERROR_INVALID_HANDLE for what can't be waited for.
std::shared_ptr<WaitableObject> waitable(HANDLE handle) {
    auto object = tvutil2::handle_table::find(reinterpret_cast<std::uintptr_t>(handle));
    if (object && WaitableObject::is_kind(object->kind())) {
        return std::static_pointer_cast<WaitableObject>(std::move(object));
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

bool has_duplicates(std::span<const HANDLE> handles) {
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> sorted;
    auto* const end = std::copy(handles.begin(), handles.end(), sorted.begin());
    std::sort(sorted.begin(), end, std::less<>());
    return std::adjacent_find(sorted.begin(), end) != end;
}

}  // namespace

HANDLE CreateEventW(SECURITY_ATTRIBUTES* /*attributes*/, BOOL manual_reset, BOOL initial_state,
                    const char16_t* name) {
    if (has_name(name)) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    return enter(std::make_shared<Event>(manual_reset != 0, initial_state != 0));
}

BOOL SetEvent(HANDLE event) {
    const auto object = object_of<Event>(event);
    if (!object) return FALSE;
    object->set();
    return TRUE;
}

BOOL ResetEvent(HANDLE event) {
    const auto object = object_of<Event>(event);
    if (!object) return FALSE;
    object->reset();
    return TRUE;
}

HANDLE CreateMutexW(SECURITY_ATTRIBUTES* /*attributes*/, BOOL initial_owner, const char16_t* name) {
    if (has_name(name)) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    auto* const owner = initial_owner != 0 ? &OwnedMutexes::current() : nullptr;
    auto mutex = std::make_shared<Mutex>(owner);
    auto* const handle = enter(mutex);
    if (handle != nullptr && owner != nullptr) owner->add(std::move(mutex));
    return handle;
}

BOOL ReleaseMutex(HANDLE mutex) {
    const auto object = object_of<Mutex>(mutex);
    if (!object) return FALSE;
    return object->release() || fail_with(ERROR_NOT_OWNER) ? TRUE : FALSE;
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
    const auto found = waitable(object);
    return found ? tvutil2::wait_for(found, milliseconds) : WAIT_FAILED;
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL wait_all,
                             DWORD milliseconds) {
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || objects == nullptr ||
        has_duplicates({objects, count})) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    std::array<std::shared_ptr<WaitableObject>, MAXIMUM_WAIT_OBJECTS> found;
    for (DWORD i = 0; i < count; ++i) {
        found[i] = waitable(objects[i]);
        if (!found[i]) return WAIT_FAILED;
    }
    return tvutil2::wait_for({found.data(), count}, wait_all != 0, milliseconds);
}
