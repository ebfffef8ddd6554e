#include "bench/support/winpr_peer.h"

#include <winpr/handle.h>
#include <winpr/synch.h>

namespace winpr_peer {

Object new_event() {
    return CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

Object new_mutex() {
    return CreateMutexW(nullptr, FALSE, nullptr);
}

Object new_semaphore() {
    return CreateSemaphoreW(nullptr, 0, 1000, nullptr);
}

void set(Object event) {
    SetEvent(event);
}

void reset(Object event) {
    ResetEvent(event);
}

void add(Object semaphore) {
    ReleaseSemaphore(semaphore, 1, nullptr);
}

void release(Object mutex) {
    ReleaseMutex(mutex);
}

void wait(Object object) {
    WaitForSingleObject(object, INFINITE);
}

void close(Object object) {
    CloseHandle(object);
}

}  // namespace winpr_peer
