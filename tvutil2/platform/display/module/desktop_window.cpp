#include "tvutil2/platform/display/module/desktop_window.h"

#include "tvutil2/platform/display/module/desktop_driver.h"
#include "tvutil2/platform/display/module/desktop_icons.h"
#include "tvutil2/platform/display/module/desktop_input.h"
#include "tvutil2/platform/display/module/desktop_look.h"
#include "tvutil2/platform/display/module/listen.h"
#include "tvutil2/platform/window/window_types.h"

#include <utility>

namespace tvutil2 {
namespace {

// A window that nothing has been painted of appears nevertheless.
constexpr guint kFirstPaintMilliseconds = 250;

bool is_framed(const Shown& shown) {
    return (shown.style & WS_CAPTION) == WS_CAPTION || (shown.style & WS_THICKFRAME) != 0;
}

}  // namespace

DesktopWindow::DesktopWindow(DesktopDriver& driver, const Shown& shown,
                             std::shared_ptr<FrameBuffer> buffer)
    : m_driver(driver),
      m_shown(shown),
      m_buffer(std::move(buffer)),
      m_has_frame(is_framed(shown)),
      m_is_popup(!m_has_frame && shown.owner != nullptr) {
    m_window = gtk_window_new(m_is_popup ? GTK_WINDOW_POPUP : GTK_WINDOW_TOPLEVEL);
    auto* const window = widget();
    gtk_widget_set_app_paintable(m_window, TRUE);
    gtk_window_set_gravity(window, GDK_GRAVITY_STATIC);
    if (!m_is_popup) {
        gtk_window_set_decorated(window, m_has_frame);
        gtk_window_set_accept_focus(window, (shown.ex_style & WS_EX_NOACTIVATE) == 0);
        if (shown.owner != nullptr) gtk_window_set_type_hint(window, GDK_WINDOW_TYPE_HINT_DIALOG);
        const bool is_quiet = shown.owner != nullptr || (shown.ex_style & WS_EX_TOOLWINDOW) != 0;
        gtk_window_set_skip_taskbar_hint(window, is_quiet);
    }
    make_area();
    listen<&DesktopWindow::on_configure>(*this, m_window, "configure-event");
    listen<&DesktopWindow::on_state>(*this, m_window, "window-state-event");
    listen<&DesktopWindow::on_delete>(*this, m_window, "delete-event");
    g_signal_connect_swapped(m_window, "notify::scale-factor",
                             G_CALLBACK(+[](DesktopWindow* self) { self->follow_scale(); }), this);
    follow_owner();
}

DesktopWindow::~DesktopWindow() {
    for (const auto source : {m_settling, m_first_show}) {
        if (source != 0) g_source_remove(source);
    }
    m_input.reset();
    g_signal_handlers_disconnect_by_data(m_area, this);
    g_signal_handlers_disconnect_by_data(m_window, this);
    gtk_widget_destroy(m_window);
}

void DesktopWindow::make_area() {
    m_area = new_accessible_area(m_driver.wishes_for(m_shown.window));
    listen<&DesktopWindow::draw>(*this, m_area, "draw");
    g_signal_connect_swapped(m_area, "size-allocate",
                             G_CALLBACK(+[](DesktopWindow* self) { self->await_settling(); }),
                             this);
    gtk_container_add(GTK_CONTAINER(m_window), m_area);
    gtk_widget_show(m_area);
    m_input = std::make_unique<DesktopInput>(m_driver, *this, m_area);
}

void DesktopWindow::follow_owner() {
    auto* const owner = m_driver.find(m_shown.owner);
    if (m_behind == nullptr) {
        gtk_window_set_transient_for(widget(), owner != nullptr ? owner->widget() : nullptr);
    }
    // GTK's own word for it would take the input of all other windows.
    auto* const window = gtk_widget_get_window(m_window);
    if (window != nullptr && !m_is_popup) {
        gdk_window_set_modal_hint(window, owner != nullptr && !owner->shown().is_enabled);
    }
}

void DesktopWindow::change(const Shown& shown, bool activates) {
    const bool is_first = m_first_show == 0 && !m_is_mapped;
    const auto before = std::exchange(m_shown, shown);
    if (before.place_number == shown.place_number) keep_place(before.place);
    const bool is_placed = (shown.style & (WS_MINIMIZE | WS_MAXIMIZE)) == 0;
    const bool moves = before.place_number != shown.place_number || before.style != shown.style ||
                       before.least.cx != shown.least.cx || before.least.cy != shown.least.cy;
    if (is_first || before.title != shown.title) {
        gtk_window_set_title(widget(), utf8_of(shown.title).c_str());
    }
    if (is_first || before.owner != shown.owner) follow_owner();
    if (is_first || before.icons != shown.icons) set_window_icons(widget(), shown.icons);
    gtk_window_set_deletable(widget(), (shown.style & WS_SYSMENU) != 0);
    gtk_window_set_keep_above(widget(), (shown.ex_style & WS_EX_TOPMOST) != 0);
    if (is_first || (moves && is_placed)) set_size();
    set_form(is_first ? 0 : m_form);
    if (is_first) {
        m_activates = activates;
        m_first_show = g_timeout_add(
            kFirstPaintMilliseconds,
            [](gpointer self) -> gboolean {
                static_cast<DesktopWindow*>(self)->m_first_show = 0;
                static_cast<DesktopWindow*>(self)->show_now();
                return G_SOURCE_REMOVE;
            },
            this);
    } else if (activates) {
        activate();
    }
}

// Not before something is painted: an empty window would flash.
void DesktopWindow::show_now() {
    if (m_is_mapped) return;
    m_is_mapped = true;
    if (m_first_show != 0) g_source_remove(std::exchange(m_first_show, 0));
    if (!m_is_popup) gtk_window_set_focus_on_map(widget(), m_activates);
    gtk_widget_realize(m_area);
    follow_owner();
    m_input->begin();
    m_driver.dress(gtk_widget_get_window(m_area));
    if (m_is_popup) {
        appear();
    } else {
        gtk_widget_show(m_window);
    }
    follow_scale();
}

void DesktopWindow::damaged(std::span<const RECT> damage) {
    show_now();
    const auto part = view();
    const int by = scale();
    for (const auto& rect : damage) {
        const auto left = static_cast<int>(rect.left - part.left) / by - 1;
        const auto top = static_cast<int>(rect.top - part.top) / by - 1;
        gtk_widget_queue_draw_area(m_area, left, top, units(rect.right - rect.left) + 3,
                                   units(rect.bottom - rect.top) + 3);
    }
}

void DesktopWindow::activate() {
    if (!m_is_mapped) {
        m_activates = true;
        return;
    }
    if (m_is_popup) return;
    gtk_window_present_with_time(widget(), m_driver.last_event_time());
}

void DesktopWindow::set_cursor(GdkCursor* cursor) {
    auto* const window = gtk_widget_get_window(m_area);
    if (window != nullptr) gdk_window_set_cursor(window, cursor);
}

RawInput DesktopWindow::input(RawInput::Kind kind, guint32 time) const {
    RawInput news;
    news.kind = kind;
    news.window = m_shown.window;
    news.time = m_driver.ticks_of(time);
    return news;
}

gboolean DesktopWindow::draw(cairo_t* cairo) {
    const auto part = view();
    m_buffer->draw(cairo, {part.left, part.top}, scale());
    return TRUE;
}

gboolean DesktopWindow::on_delete(GdkEventAny* /*event*/) {
    m_driver.put(input(RawInput::Kind::close, 0));
    return TRUE;
}

}  // namespace tvutil2
