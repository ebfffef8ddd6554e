#include "tvutil2/threads/synchronization.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/objects/objects.h"

#include <cstdio>

namespace NSynchronization {
namespace {

// `format` has one "%u" for the last error.
[[noreturn, gnu::format(printf, 1, 0)]] void fail(const char* format) {
    char text[1024];
    std::snprintf(text, sizeof text, format, GetLastError());
    throw ThreadException(text);
}

HANDLE made(HANDLE handle, const char* format) {
    if (handle == nullptr) fail(format);
    return handle;
}

bool wait(HANDLE handle, DWORD timeout, const char* format) {
    const auto result = WaitForSingleObject(handle, timeout);
    if (result == WAIT_FAILED) fail(format);
    return result != WAIT_TIMEOUT;
}

}  // namespace

Event::Event(bool manual_reset, bool initial_state)
    : m_handle(made(CreateEventW(nullptr, manual_reset, initial_state, nullptr),
                    "Failed to create event: CreateEvent() failed(%u).\n")) {}

Event::~Event() {
    CloseHandle(m_handle);
}

bool Event::Wait(DWORD timeout) {
    return wait(m_handle, timeout, "Failed to wait event: WaitForSingleObject failed(%u).\n");
}

void Event::SetEvent() {
    if (::SetEvent(m_handle) == 0) fail("Failed to set event: SetEvent() failed(%u).\n");
}

void Event::ResetEvent() {
    if (::ResetEvent(m_handle) == 0) fail("Failed to reset event: ResetEvent failed(%u).\n");
}

void Event::PulseEvent() {
    if (::PulseEvent(m_handle) == 0) fail("Failed to pulse event: PulseEvent failed(%u).\n");
}

Mutex::Mutex(bool initial_owner)
    : m_handle(made(CreateMutexW(nullptr, initial_owner, nullptr),
                    "Failed to create mutex: CreateMutex() failed(%u).\n")) {}

Mutex::~Mutex() {
    CloseHandle(m_handle);
}

bool Mutex::Lock(DWORD timeout) {
    return wait(m_handle, timeout, "Failed to lock mutex: WaitForSingleObject() failed(%u).\n");
}

void Mutex::Unlock() {
    if (ReleaseMutex(m_handle) == 0) fail("Failed to unlock mutex: ReleaseMutex failed(%u).\n");
}

Semaphore::Semaphore(LONG initial_count, LONG maximum_count)
    : m_handle(made(CreateSemaphoreW(nullptr, initial_count, maximum_count, nullptr),
                    "Failed to create semaphore: CreateSemaphore() failed(%u).\n")) {}

Semaphore::~Semaphore() {
    CloseHandle(m_handle);
}

bool Semaphore::Lock(DWORD timeout) {
    return wait(m_handle, timeout, "Failed to lock semaphore: WaitForSingleObject() failed(%u).\n");
}

void Semaphore::Unlock(LONG count) {
    if (ReleaseSemaphore(m_handle, count, nullptr) == 0) {
        fail("Failed to unlock semaphore: ReleaseSemaphore() failed(%u).\n");
    }
}

SimpleMutex::SimpleMutex() : m_section{} {
    InitializeCriticalSection(&m_section);
}

SimpleMutex::~SimpleMutex() {
    DeleteCriticalSection(&m_section);
}

void SimpleMutex::Lock() {
    EnterCriticalSection(&m_section);
}

void SimpleMutex::Unlock() {
    LeaveCriticalSection(&m_section);
}

CAutoLock::CAutoLock(const CRITICAL_SECTION& section)
    : m_section(const_cast<CRITICAL_SECTION*>(&section)) {
    EnterCriticalSection(m_section);
}

CAutoLock::~CAutoLock() {
    LeaveCriticalSection(m_section);
}

}  // namespace NSynchronization
