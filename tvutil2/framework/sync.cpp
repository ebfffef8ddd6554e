#include "tvutil2/framework/sync.h"

#include "tvutil2/framework/exceptions.h"
#include "tvutil2/platform/objects/objects.h"

CSyncObject::~CSyncObject() {
    if (m_hObject != nullptr) CloseHandle(m_hObject);
}

BOOL CSyncObject::Lock(DWORD timeout) {
    const auto result = WaitForSingleObject(m_hObject, timeout);
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED ? TRUE : FALSE;
}

CMutex::CMutex(BOOL initially_owned, const char16_t* name)
    : CSyncObject(CreateMutexW(nullptr, initially_owned, name)) {
    if (m_hObject == nullptr) throw CResourceException(GetLastError());
}

BOOL CMutex::Unlock() {
    return ReleaseMutex(m_hObject);
}

CCriticalSection::CCriticalSection() : CSyncObject(nullptr) {
    InitializeCriticalSection(&m_sect);
}

CCriticalSection::~CCriticalSection() {
    DeleteCriticalSection(&m_sect);
}

BOOL CCriticalSection::Lock(DWORD /*timeout*/) {
    EnterCriticalSection(&m_sect);
    return TRUE;
}

BOOL CCriticalSection::Unlock() {
    LeaveCriticalSection(&m_sect);
    return TRUE;
}

CSingleLock::CSingleLock(CSyncObject* object, BOOL initial_lock) : m_object(object) {
    if (initial_lock != 0) Lock();
}

CSingleLock::~CSingleLock() {
    while (Unlock() != 0) {
    }
}

BOOL CSingleLock::Lock(DWORD timeout) {
    if (m_object->Lock(timeout) == 0) return FALSE;
    ++m_times_locked;
    return TRUE;
}

BOOL CSingleLock::Unlock() {
    if (m_times_locked.load() == 0) return FALSE;
    // Counted down while the object is still held: behind it the next thread counts up.
    --m_times_locked;
    if (m_object->Unlock() != 0) return TRUE;
    ++m_times_locked;
    return FALSE;
}
