#include "tvutil2/platform/objects/objects.h"

#include "tvutil2/platform/objects/event.h"
#include "tvutil2/platform/objects/mutex.h"
#include "tvutil2/platform/objects/quick.h"
#include "tvutil2/platform/objects/semaphore.h"
#include "tvutil2/platform/objects/shared/named_objects.h"
#include "tvutil2/platform/objects/wait.h"

#include <algorithm>
#include <functional>

using tvutil2::Event;
using tvutil2::fail_with;
using tvutil2::HandleKind;
using tvutil2::Mutex;
using tvutil2::Semaphore;
using tvutil2::SharedEvent;
using tvutil2::SharedMutex;
using tvutil2::SharedObject;
using tvutil2::SharedSemaphore;
using tvutil2::ThreadRecord;
using tvutil2::WaitableObject;
using tvutil2::handle_table::Pin;
using tvutil2::quick::Result;

namespace {

bool has_name(const char16_t* name) {
    return name != nullptr && *name != 0;
}

HANDLE refuse(DWORD error) {
    SetLastError(error);
    return nullptr;
}

HANDLE enter(std::shared_ptr<WaitableObject> object) {
    auto* const handle = tvutil2::make_handle<HANDLE>(std::move(object));
    if (handle != nullptr) SetLastError(ERROR_SUCCESS);
    return handle;
}

// An object that has a name; the last error says whether it was there before.
template <class Shared>
HANDLE enter_named(HandleKind kind, const char16_t* name, bool may_create, DWORD traits,
                   DWORD state, const std::function<void(SharedObject&)>& on_new = {}) {
    tvutil2::named_objects::Beginning beginning;
    beginning.traits = traits;
    beginning.set_up = [state](tvutil2::BlockHeader& header) { header.state = state; };
    beginning.make = [](auto block, auto key, tvutil2::Descriptor /*file*/) {
        return std::make_shared<Shared>(std::move(block), std::move(key));
    };
    auto object = tvutil2::named_objects::open(kind, name, may_create, beginning, on_new);
    if (!object) return nullptr;
    const auto told = GetLastError();
    auto* const handle = tvutil2::make_handle<HANDLE>(std::move(object));
    if (handle != nullptr) SetLastError(may_create ? told : ERROR_SUCCESS);
    return handle;
}

template <class Shared>
HANDLE open_named(HandleKind kind, const char16_t* name) {
    if (!has_name(name)) return refuse(ERROR_INVALID_PARAMETER);
    return enter_named<Shared>(kind, name, false, 0, 0);
}

std::uintptr_t value_of(HANDLE handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

// Does something to an object, be it this process's or shared. What `use` gives; false with
// ERROR_INVALID_HANDLE for another kind of object.
template <class Local, class Shared, class Use>
bool with(HANDLE handle, const Use& use) {
    const Pin pin(value_of(handle));
    if (!pin || pin.object()->kind() != Local::kHandleKind) return fail_with(ERROR_INVALID_HANDLE);
    auto* const shared = pin.object()->waitable()->shared();
    return shared != nullptr ? use(static_cast<Shared&>(*shared))
                             : use(static_cast<Local&>(*pin.object()));
}

// The object behind a pin, if it can be waited for; null with ERROR_INVALID_HANDLE.
WaitableObject* waitable(const Pin& pin) {
    auto* const object = pin ? pin.object()->waitable() : nullptr;
    if (object == nullptr) SetLastError(ERROR_INVALID_HANDLE);
    return object;
}

bool has_duplicates(std::span<const HANDLE> handles) {
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> sorted;
    auto* const end = std::copy(handles.begin(), handles.end(), sorted.begin());
    std::sort(sorted.begin(), end, std::less<>());
    return std::adjacent_find(sorted.begin(), end) != end;
}

// A wait for one object that is decided by its quick word.
bool is_decided(HANDLE object, DWORD milliseconds, bool is_alertable, DWORD& result) {
    bool is_abandoned = false;
    switch (tvutil2::quick::take(value_of(object), ThreadRecord::current(), is_abandoned)) {
        case Result::done:
            result = is_abandoned ? WAIT_ABANDONED : WAIT_OBJECT_0;
            return true;
        case Result::refused:
            result = WAIT_TIMEOUT;
            return milliseconds == 0 && !is_alertable;
        default:
            return false;
    }
}

}  // namespace

HANDLE CreateEventW(SECURITY_ATTRIBUTES* /*attributes*/, BOOL manual_reset, BOOL initial_state,
                    const char16_t* name) {
    if (has_name(name)) {
        return enter_named<SharedEvent>(HandleKind::event, name, true, manual_reset != 0 ? 1 : 0,
                                        initial_state != 0 ? 1 : 0);
    }
    return enter(std::make_shared<Event>(manual_reset != 0, initial_state != 0));
}

BOOL SetEvent(HANDLE event) {
    if (tvutil2::quick::signal(value_of(event), true) == Result::done) return TRUE;
    return with<Event, SharedEvent>(event, [](auto& object) { return object.set(), true; });
}

BOOL ResetEvent(HANDLE event) {
    if (tvutil2::quick::signal(value_of(event), false) == Result::done) return TRUE;
    return with<Event, SharedEvent>(event, [](auto& object) { return object.reset(), true; });
}

BOOL PulseEvent(HANDLE event) {
    return with<Event, SharedEvent>(event, [](auto& object) { return object.pulse(), true; });
}

HANDLE CreateMutexW(SECURITY_ATTRIBUTES* /*attributes*/, BOOL initial_owner, const char16_t* name) {
    if (has_name(name)) {
        return enter_named<SharedMutex>(HandleKind::mutex, name, true, 0, 0,
                                        [initial_owner](SharedObject& mutex) {
                                            DWORD outcome = 0;
                                            auto& thread = ThreadRecord::current();
                                            if (initial_owner == 0) return;
                                            thread.make_room();
                                            mutex.try_take(thread, {}, outcome);
                                        });
    }
    auto* const owner = initial_owner != 0 ? &ThreadRecord::current() : nullptr;
    return enter(std::make_shared<Mutex>(owner));
}

BOOL ReleaseMutex(HANDLE mutex) {
    switch (tvutil2::quick::release(value_of(mutex), ThreadRecord::current())) {
        case Result::done:
            return TRUE;
        case Result::refused:
            return fail_with(ERROR_NOT_OWNER);
        default:
            return with<Mutex, SharedMutex>(
                mutex, [](auto& object) { return object.release() || fail_with(ERROR_NOT_OWNER); });
    }
}

HANDLE CreateSemaphoreW(SECURITY_ATTRIBUTES* /*attributes*/, LONG initial_count, LONG maximum_count,
                        const char16_t* name) {
    if (initial_count < 0 || maximum_count <= 0 || initial_count > maximum_count) {
        return refuse(ERROR_INVALID_PARAMETER);
    }
    if (has_name(name)) {
        return enter_named<SharedSemaphore>(HandleKind::semaphore, name, true,
                                            static_cast<DWORD>(maximum_count),
                                            static_cast<DWORD>(initial_count));
    }
    return enter(std::make_shared<Semaphore>(initial_count, maximum_count));
}

BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* previous) {
    return with<Semaphore, SharedSemaphore>(semaphore, [&](auto& object) {
        if (count <= 0) return fail_with(ERROR_INVALID_PARAMETER);
        return object.release(count, previous) || fail_with(ERROR_TOO_MANY_POSTS);
    });
}

HANDLE OpenEventW(DWORD /*access*/, BOOL /*inherit*/, const char16_t* name) {
    return open_named<SharedEvent>(HandleKind::event, name);
}

HANDLE OpenMutexW(DWORD /*access*/, BOOL /*inherit*/, const char16_t* name) {
    return open_named<SharedMutex>(HandleKind::mutex, name);
}

HANDLE OpenSemaphoreW(DWORD /*access*/, BOOL /*inherit*/, const char16_t* name) {
    return open_named<SharedSemaphore>(HandleKind::semaphore, name);
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
    return WaitForSingleObjectEx(object, milliseconds, FALSE);
}

DWORD WaitForSingleObjectEx(HANDLE object, DWORD milliseconds, BOOL alertable) {
    DWORD result = WAIT_FAILED;
    if (is_decided(object, milliseconds, alertable != 0, result)) return result;
    const Pin pin(value_of(object));
    auto* const found = waitable(pin);
    if (found == nullptr) return WAIT_FAILED;
    return tvutil2::wait_for({&found, 1}, false, milliseconds, alertable != 0);
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL wait_all,
                             DWORD milliseconds) {
    return WaitForMultipleObjectsEx(count, objects, wait_all, milliseconds, FALSE);
}

DWORD WaitForMultipleObjectsEx(DWORD count, const HANDLE* objects, BOOL wait_all,
                               DWORD milliseconds, BOOL alertable) {
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || objects == nullptr ||
        has_duplicates({objects, count})) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    std::array<Pin, MAXIMUM_WAIT_OBJECTS> pins;
    std::array<WaitableObject*, MAXIMUM_WAIT_OBJECTS> found;
    for (DWORD i = 0; i < count; ++i) {
        pins[i] = Pin(value_of(objects[i]));
        found[i] = waitable(pins[i]);
        if (found[i] == nullptr) return WAIT_FAILED;
    }
    return tvutil2::wait_for({found.data(), count}, wait_all != 0, milliseconds, alertable != 0);
}

void Sleep(DWORD milliseconds) {
    SleepEx(milliseconds, FALSE);
}

DWORD SleepEx(DWORD milliseconds, BOOL alertable) {
    const auto result = tvutil2::wait_for({}, false, milliseconds, alertable != 0);
    if (result == WAIT_IO_COMPLETION) return result;
    if (milliseconds == 0) tvutil2::give_way();
    return 0;
}
