#include "tvutil2/platform/display/module/manager_fence.h"

#include "tvutil2/platform/display/module/listen.h"

#include <gdk/gdkx.h>

#include <utility>

namespace tvutil2 {
namespace {

// Managers that say that they answer, and don't, aren't waited for.
constexpr gint64 kManagerPatience = gint64{5} * G_USEC_PER_SEC;

}  // namespace

bool ManagerFence::make_window() {
    if (m_window != nullptr) return true;
    if (!GDK_IS_X11_DISPLAY(gdk_display_get_default())) return false;
    m_window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_widget_add_events(m_window, GDK_PROPERTY_CHANGE_MASK);
    listen<&ManagerFence::on_property>(*this, m_window, "property-notify-event");
    gtk_widget_realize(m_window);
    return true;
}

// How wide a frame would be: a question that a manager answers in a property, for windows that it
// doesn't manage, too.
void ManagerFence::send() {
    auto* const root = gdk_screen_get_root_window(gdk_screen_get_default());
    auto* const display = GDK_DISPLAY_XDISPLAY(gdk_display_get_default());
    XEvent question{};
    question.xclient.type = ClientMessage;
    question.xclient.window = GDK_WINDOW_XID(gtk_widget_get_window(m_window));
    question.xclient.message_type = gdk_x11_get_xatom_by_name("_NET_REQUEST_FRAME_EXTENTS");
    question.xclient.format = 32;
    XSendEvent(display, GDK_WINDOW_XID(root), False,
               SubstructureRedirectMask | SubstructureNotifyMask, &question);
    m_sent_at = g_get_monotonic_time();
}

void ManagerFence::ask() {
    if (!make_window()) return;
    const auto hint = gdk_atom_intern_static_string("_NET_REQUEST_FRAME_EXTENTS");
    if (!gdk_x11_screen_supports_net_wm_hint(gdk_screen_get_default(), hint)) return;
    if (is_pending()) {
        m_asks_again = true;
    } else {
        send();
    }
}

bool ManagerFence::is_pending() const {
    return m_sent_at != 0 && g_get_monotonic_time() - m_sent_at < kManagerPatience;
}

gboolean ManagerFence::on_property(GdkEventProperty* event) {
    if (event->atom != gdk_atom_intern_static_string("_NET_FRAME_EXTENTS")) return FALSE;
    m_sent_at = 0;
    if (std::exchange(m_asks_again, false)) {
        send();
    } else {
        m_passed();
    }
    return FALSE;
}

}  // namespace tvutil2
