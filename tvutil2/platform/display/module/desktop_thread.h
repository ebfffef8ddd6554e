// The thread of the desktop's library, which is used by no other.
#pragma once

#include "tvutil2/platform/display/driver.h"

#include <condition_variable>
#include <functional>
#include <mutex>

namespace tvutil2 {

/// Lives for ever. Signals don't reach its thread.
class DesktopThread {
  public:
    /// What the thread does beside what is posted.
    struct Work {
        std::function<void()> prepare;  ///< once the display is there
        std::function<void()> finish;   ///< at the process's end
        std::function<void()> lose;     ///< the display has gone; the last that the thread does
    };

    /// Starts the thread and connects to the display; false when there is none.
    bool start(const DriverHost& host, Work work);
    /// Runs `work` on the thread, behind what was posted before. False when the thread has ended.
    bool post(std::function<void()> work);
    /// The display has gone; on the thread, which doesn't go on.
    [[noreturn]] void lose_display();

  private:
    enum class State { starting, running, failed, ended, lost };

    void run();
    void set_state(State state);
    static void stop_at_exit();

    std::mutex m_lock;
    std::condition_variable m_changed;
    State m_state = State::starting;
    Work m_work;
    int m_process = 0;
};

}  // namespace tvutil2
