// Waitable objects of one process as classes that throw when a call of the platform fails, and two
// helpers over critical sections.
#pragma once

#include "tvutil2/framework/sync.h"
#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <exception>
#include <string>

namespace NSynchronization {

/// What the classes below throw: a fixed text for each operation, with the last error in it.
class TVUTIL_API ThreadException : public std::exception {
  public:
    ThreadException() : ThreadException("Thread Exception") {}
    explicit ThreadException(const char* text) : m_text(text) {}
    [[nodiscard]] const char* what() const noexcept override { return m_text.c_str(); }

  private:
    std::string m_text;
};

// Each of the following owns its handle. The constructors and every call throw ThreadException when
// they fail. Times are in milliseconds; running out of one is no failure.

class TVUTIL_API Event {
  public:
    explicit Event(bool manual_reset = false, bool initial_state = false);
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    /// False when the time has run out.
    bool Wait(DWORD timeout);
    void SetEvent();
    void ResetEvent();
    /// Lets through who waits at this moment.
    void PulseEvent();
    [[nodiscard]] HANDLE GetHandle() const { return m_handle; }

  private:
    HANDLE m_handle;
};

/// Belongs to the thread that locked it, which may lock it again.
class TVUTIL_API Mutex {
  public:
    explicit Mutex(bool initial_owner = false);
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    /// False when the time has run out. One that its owner left behind counts as locked.
    bool Lock(DWORD timeout);
    void Unlock();
    [[nodiscard]] HANDLE GetHandle() const { return m_handle; }

  private:
    HANDLE m_handle;
};

/// Has no owner: any thread may release.
class TVUTIL_API Semaphore {
  public:
    explicit Semaphore(LONG initial_count = 1, LONG maximum_count = 1);
    ~Semaphore();
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    /// False when the time has run out.
    bool Lock(DWORD timeout);
    void Unlock(LONG count);
    [[nodiscard]] HANDLE GetHandle() const { return m_handle; }

  private:
    HANDLE m_handle;
};

/// A critical section that is made and deleted with its object. Reports nothing.
class TVUTIL_API SimpleMutex {
  public:
    SimpleMutex();
    ~SimpleMutex();
    SimpleMutex(const SimpleMutex&) = delete;
    SimpleMutex& operator=(const SimpleMutex&) = delete;

    void Lock();
    void Unlock();

  private:
    CRITICAL_SECTION m_section;
};

/// Is inside a critical section for as long as it lives. The section outlives it. Assignment takes
/// over which section is left at the end, and enters none.
class TVUTIL_API CAutoLock {
  public:
    explicit CAutoLock(const CRITICAL_SECTION& section);
    explicit CAutoLock(const CCriticalSection& section) : CAutoLock(section.m_sect) {}
    ~CAutoLock();
    CAutoLock(const CAutoLock&) = delete;
    CAutoLock& operator=(const CAutoLock&) = default;

  private:
    CRITICAL_SECTION* m_section;
};

}  // namespace NSynchronization
