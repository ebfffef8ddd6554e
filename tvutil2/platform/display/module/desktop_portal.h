// The portal, by which a desktop shows dialogs for a program from a process of its own. For the
// desktop's thread.
#pragma once

#include <gio/gio.h>

#include <functional>

namespace tvutil2 {

/// Whether the desktop's library has its dialogs shown by the portal: in a sandbox, and where
/// GTK_USE_PORTAL=1 asks for it.
[[nodiscard]] bool is_portal_wanted();

/// Finds out whether the portal answers, and goes on asking. The library takes it on trust: a
/// dialog of a portal that has gone would never end.
class PortalWatch {
  public:
    /// `told` is called once with true, when the portal has answered, and once with false, when it
    /// doesn't; then the watch is over, and `told` may end it.
    explicit PortalWatch(std::function<void(bool is_there)> told);
    ~PortalWatch();
    PortalWatch(const PortalWatch&) = delete;
    PortalWatch& operator=(const PortalWatch&) = delete;

  private:
    void ask();
    void arm(guint milliseconds);
    void on_answer(bool is_there);
    void on_time();

    std::function<void(bool)> m_told;
    GCancellable* m_asking = nullptr;
    guint m_timer = 0;
    bool m_was_there = false;
};

}  // namespace tvutil2
