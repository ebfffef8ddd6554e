// The framework's synchronisation objects.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/objects/critical_section.h"

#include <atomic>

/// What CSingleLock can lock. Owns its handle.
class TVUTIL_API CSyncObject {
  public:
    /// Takes a handle over; closes it at the end. Null for an object without one.
    explicit CSyncObject(HANDLE object) : m_hObject(object) {}
    virtual ~CSyncObject();
    CSyncObject(const CSyncObject&) = delete;
    CSyncObject& operator=(const CSyncObject&) = delete;

    /// Waits up to a time in milliseconds. Non-zero when the object is now the caller's, be it an
    /// abandoned one.
    virtual BOOL Lock(DWORD timeout = INFINITE);
    /// 0 when the calling thread can't give it back.
    virtual BOOL Unlock() = 0;
    operator HANDLE() const { return m_hObject; }

    HANDLE m_hObject;
};

/// A mutex that its owner may lock again; one of all processes of the user, if it has a name
/// (objects.h). Throws CResourceException when it can't be created.
class TVUTIL_API CMutex : public CSyncObject {
  public:
    explicit CMutex(BOOL initially_owned = FALSE, const char16_t* name = nullptr);
    BOOL Unlock() override;
};

/// A critical section.
class TVUTIL_API CCriticalSection : public CSyncObject {
  public:
    CCriticalSection();
    ~CCriticalSection() override;
    /// Waits without a limit, whatever the time.
    BOOL Lock(DWORD timeout = INFINITE) override;
    BOOL Unlock() override;
    operator CRITICAL_SECTION*() { return &m_sect; }

    CRITICAL_SECTION m_sect;
};

/// Locks an object and gives it back at the end. The object outlives the lock.
///
/// One lock may be shared by several threads, as a member of what the object guards: its record of
/// what is locked changes only while the object is held. It locks as often as Lock says and gives
/// back as often.
class TVUTIL_API CSingleLock {
  public:
    explicit CSingleLock(CSyncObject* object, BOOL initial_lock = FALSE);
    ~CSingleLock();
    CSingleLock(const CSingleLock&) = delete;
    CSingleLock& operator=(const CSingleLock&) = delete;

    /// Non-zero when it is locked within the time, in milliseconds.
    BOOL Lock(DWORD timeout = INFINITE);
    /// 0 when it isn't locked, or not by this thread.
    BOOL Unlock();
    [[nodiscard]] BOOL IsLocked() const { return m_times_locked.load() > 0 ? TRUE : FALSE; }

  private:
    CSyncObject* m_object;
    std::atomic<int> m_times_locked = 0;
};
