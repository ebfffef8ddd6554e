// A thread with a base tick and a table of timers, each of which fires every so many ticks.
#pragma once

#include "tvutil2/platform/objects/critical_section.h"
#include "tvutil2/threads/simple_thread.h"

#include <map>

namespace NThread {

class CTimer;

class TVUTIL_API CTimerListener {
  protected:
    /// A timer has fired; on the timer's thread. May record and remove entries, its own included.
    virtual void OnTimeEllipse(CTimer* /*timer*/, unsigned /*id*/) {}
    friend class CTimer;
};

/// Ticks come an interval after the listeners of the one before have returned: they drift, and
/// nothing catches up.
///
/// Record and Remove may be called from any thread, at any time. Once Remove has returned no call
/// to the listener begins; one that is under way goes on, and the listener must live until then.
/// Destruction waits for it. Copies share the handles, so only one of them may be destroyed
/// running.
class TVUTIL_API CTimer : public CSimpleThread {
  public:
    CTimer();
    /// Ends a wait for the next tick at once, with nothing fired. End waits for the tick and its
    /// listeners.
    ~CTimer() override;
    CTimer(const CTimer& other);
    CTimer& operator=(const CTimer& other);

    /// Starts the ticks, `interval` milliseconds apart; 1. A running thread takes the new interval
    /// after its next tick.
    int Initialize(DWORD interval);
    /// Enters a timer or replaces it, its count beginning anew. The listener isn't owned. Fires
    /// after `period` ticks, and so on; after 65,536 ticks for a period of 0. Two that are due at
    /// one tick fire in the order of their ids.
    void Record(unsigned id, CTimerListener* listener, unsigned short period);
    void Remove(unsigned id);

    void Run() override;

  private:
    struct Entry {
        CTimerListener* listener;
        unsigned short period;
        unsigned short count;
    };
    using Table = std::map<unsigned, Entry>;

    [[nodiscard]] Table copy_of_table() const;
    void pass();

    std::atomic<DWORD> m_interval = 0;
    std::atomic<HANDLE> m_stop_event;
    Table m_table;
    unsigned m_changes = 0;  ///< of which entries there are
    mutable CRITICAL_SECTION m_lock{};
};

}  // namespace NThread
