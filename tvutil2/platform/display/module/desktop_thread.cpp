#include "tvutil2/platform/display/module/desktop_thread.h"

#include <X11/Xlib.h>
#include <gdk/gdkx.h>
#include <gtk/gtk.h>
#include <locale.h>
#include <unistd.h>

#ifdef GDK_WINDOWING_WAYLAND
#include <gdk/gdkwayland.h>
#include <wayland-client.h>
#endif

#include <cstdlib>
#include <memory>
#include <utility>

namespace tvutil2 {
namespace {

// Reached from handlers that are C's, and at the process's end.
DesktopThread* g_thread = nullptr;
XIOErrorHandler g_others = nullptr;
thread_local bool t_is_desktop_thread = false;

#ifdef GDK_WINDOWING_WAYLAND
int g_wayland = -1;  // the connection

// The desktop's library reads the connection behind this, and would end the process.
gint poll_for_loss(GPollFD* descriptors, guint count, gint timeout) {
    const auto result = g_poll(descriptors, count, timeout);
    for (guint i = 0; t_is_desktop_thread && i < count; ++i) {
        const bool is_lost = (descriptors[i].revents & (G_IO_HUP | G_IO_ERR)) != 0;
        if (is_lost && descriptors[i].fd == g_wayland) g_thread->lose_display();
    }
    return result;
}
#endif

void watch_wayland() {
#ifdef GDK_WINDOWING_WAYLAND
    auto* const display = gdk_display_get_default();
    if (!GDK_IS_WAYLAND_DISPLAY(display)) return;
    g_wayland = wl_display_get_fd(gdk_wayland_display_get_wl_display(display));
    g_main_context_set_poll_func(nullptr, poll_for_loss);
#endif
}

}  // namespace

// The desktop's library ends the process when it has lost its display, and a library that does
// that may not. On X11 Xlib tells first, on Wayland the connection does.
// In both places the thread stays for good: nothing of the display may be touched any more.
void DesktopThread::lose_display() {
    m_work.lose();
    set_state(State::lost);
    for (;;) pause();
}

bool DesktopThread::start(const DriverHost& host, Work work) {
    g_thread = this;
    m_process = getpid();
    m_work = std::move(work);
    host.start_thread([this] { run(); });
    std::unique_lock lock(m_lock);
    m_changed.wait(lock, [this] { return m_state != State::starting; });
    if (m_state != State::running) return false;
    // Ahead of what the desktop's libraries do at the end.
    static_cast<void>(std::atexit(stop_at_exit));
    return true;
}

void DesktopThread::set_state(State state) {
    const std::lock_guard guard(m_lock);
    m_state = state;
    m_changed.notify_all();
}

void DesktopThread::run() {
    t_is_desktop_thread = true;
    // Work that is posted before the loop runs waits for it: who posts would else do it himself.
    g_main_context_acquire(nullptr);
    // The locale is the program's own. What the desktop's library says itself is in the person's.
    gtk_disable_setlocale();
    if (const auto locale = newlocale(LC_ALL_MASK, "", nullptr)) uselocale(locale);
    if (gtk_init_check(nullptr, nullptr) == FALSE) return set_state(State::failed);
    if (GDK_IS_X11_DISPLAY(gdk_display_get_default())) {
        g_others = XSetIOErrorHandler([](Display* display) -> int {
            // Another connection of the program is its own affair.
            if (!t_is_desktop_thread) return g_others(display);
            // Xlib has locked it for good, and libraries that end with the process want it.
            XUnlockDisplay(display);
            g_thread->lose_display();
        });
    }
    watch_wayland();
    m_work.prepare();
    set_state(State::running);
    gtk_main();
    set_state(State::ended);
}

bool DesktopThread::post(std::function<void()> work) {
    {
        const std::lock_guard guard(m_lock);
        if (m_state != State::running) return false;
    }
    auto owned = std::make_unique<std::function<void()>>(std::move(work));
    g_main_context_invoke_full(
        nullptr, G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            (*static_cast<std::function<void()>*>(data))();
            return G_SOURCE_REMOVE;
        },
        owned.release(), [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
    return true;
}

void DesktopThread::stop_at_exit() {
    auto& thread = *g_thread;
    // A child after a fork has no such thread; an exit on the thread itself can't wait for it.
    if (thread.m_process != getpid() || t_is_desktop_thread) return;
    thread.post([&thread] {
        thread.m_work.finish();
        gtk_main_quit();
    });
    std::unique_lock lock(thread.m_lock);
    thread.m_changed.wait(lock, [&] { return thread.m_state != State::running; });
}

}  // namespace tvutil2
