#include "tvutil2/threads/thread_end.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/window/messages.h"

namespace tvutil2 {

bool wait_for_end_of(HANDLE thread, DWORD milliseconds) {
    if (GetThreadId(thread) == GetCurrentThreadId()) return false;
    const auto start = GetTickCount();
    for (auto left = milliseconds;;) {
        const auto result = MsgWaitForMultipleObjects(1, &thread, FALSE, left, QS_SENDMESSAGE);
        if (result != WAIT_OBJECT_0 + 1) return result == WAIT_OBJECT_0;
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);  // answers what was sent
        if (milliseconds != INFINITE) {
            const auto passed = GetTickCount() - start;
            left = passed < milliseconds ? milliseconds - passed : 0;
        }
    }
}

}  // namespace tvutil2
