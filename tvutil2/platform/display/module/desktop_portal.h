// The portal, by which a desktop shows dialogs for a program from a process of its own. For the
// desktop's thread.
#pragma once

#include <gio/gio.h>

#include <functional>

namespace tvutil2 {

/// Whether the portal is to show dialogs: in a sandbox, and where GTK_USE_PORTAL=1 asks for it.
[[nodiscard]] bool is_portal_wanted();

/// Finds out whether the portal answers, and goes on asking: a dialog of a portal that has gone, or
/// hangs, would never end.
class PortalWatch {
  public:
    using Told = std::function<void(GDBusConnection* bus)>;

    /// `told` is called once with the bus, when a portal has answered whose dialogs for files are
    /// of that version or a later one, and once with null, when none does; then the watch is over,
    /// and `told` may end it.
    PortalWatch(guint version, Told told);
    ~PortalWatch();
    PortalWatch(const PortalWatch&) = delete;
    PortalWatch& operator=(const PortalWatch&) = delete;

  private:
    void ask();
    void arm(guint milliseconds);
    void on_answer(GDBusConnection* bus);
    void on_time();

    const guint m_version;
    Told m_told;
    GCancellable* m_asking = nullptr;
    guint m_timer = 0;
    bool m_was_there = false;
};

}  // namespace tvutil2
