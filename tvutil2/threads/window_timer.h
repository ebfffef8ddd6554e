// Timers that tick on the thread of a hidden window.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

class CTimer;

/// Hears the ticks of a CTimer.
class TVUTIL_API CTimerListener {
  public:
    CTimerListener() = default;
    CTimerListener(const CTimerListener&) = default;
    CTimerListener& operator=(const CTimerListener&) = default;
    virtual ~CTimerListener() = default;

    /// Called on the thread that started the timer, from its message loop.
    virtual void OnTimer(CTimer* timer, unsigned id) = 0;
};

/// Any number of window timers on one hidden window, made by the first Start and there until the
/// object's end.
///
/// An object belongs to the thread that starts it, which runs a message loop and destroys it. A
/// copy shares the window, whose ticks go on to the source; only one of them may be used to its
/// end. Objects of several threads may live at once.
class TVUTIL_API CTimer {
  public:
    /// The listener isn't owned and may be null.
    explicit CTimer(CTimerListener* listener = nullptr);
    CTimer(const CTimer&) = default;
    CTimer& operator=(const CTimer&) = default;
    virtual ~CTimer();

    /// Gives the former listener. With null, ticks do nothing.
    CTimerListener* SetListener(CTimerListener* listener);
    /// Starts a timer, or starts it anew with another period in milliseconds; 0 ends it. 1, or 0
    /// when the window or the timer can't be had. Periods are those of SetTimer: at least 10.
    int Start(unsigned id, unsigned milliseconds);
    void Stop(unsigned id);

  private:
    static LRESULT TimerProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    bool make_window();

    HWND m_window = nullptr;
    CTimerListener* m_listener;
};
