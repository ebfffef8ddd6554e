#include "tvutil2/platform/display/module/desktop_input.h"

#include "tvutil2/platform/display/module/desktop_driver.h"
#include "tvutil2/platform/display/module/desktop_keys.h"
#include "tvutil2/platform/display/module/desktop_look.h"
#include "tvutil2/platform/display/module/listen.h"
#include "tvutil2/platform/window/keys.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr double kNotch = 120;
constexpr POINT kElsewhere{-30000, -30000};

}  // namespace

DesktopInput::DesktopInput(DesktopDriver& driver, const DesktopWindow& window, GtkWidget* area)
    : m_driver(driver), m_window(window), m_area(area), m_input_method(gtk_im_multicontext_new()) {
    gtk_widget_add_events(area, GDK_POINTER_MOTION_MASK | GDK_BUTTON_PRESS_MASK |
                                    GDK_BUTTON_RELEASE_MASK | GDK_SCROLL_MASK |
                                    GDK_SMOOTH_SCROLL_MASK | GDK_ENTER_NOTIFY_MASK |
                                    GDK_LEAVE_NOTIFY_MASK);
    listen<&DesktopInput::on_motion>(*this, area, "motion-notify-event");
    listen<&DesktopInput::on_button>(*this, area, "button-press-event");
    listen<&DesktopInput::on_button>(*this, area, "button-release-event");
    listen<&DesktopInput::on_scroll>(*this, area, "scroll-event");
    listen<&DesktopInput::on_crossing>(*this, area, "enter-notify-event");
    listen<&DesktopInput::on_crossing>(*this, area, "leave-notify-event");
    auto* const top = GTK_WIDGET(window.widget());
    listen<&DesktopInput::on_key>(*this, top, "key-press-event");
    listen<&DesktopInput::on_key>(*this, top, "key-release-event");
    listen<&DesktopInput::on_focus>(*this, top, "focus-in-event");
    listen<&DesktopInput::on_focus>(*this, top, "focus-out-event");
    // The input method shows what it composes itself.
    gtk_im_context_set_use_preedit(m_input_method, FALSE);
    g_signal_connect(m_input_method, "commit",
                     G_CALLBACK(+[](GtkIMContext*, const char* text, DesktopInput* self) {
                         self->on_commit(text);
                     }),
                     this);
}

DesktopInput::~DesktopInput() {
    g_signal_handlers_disconnect_by_data(m_input_method, this);
    gtk_im_context_set_client_window(m_input_method, nullptr);
    g_object_unref(m_input_method);
    g_signal_handlers_disconnect_by_data(m_area, this);
    g_signal_handlers_disconnect_by_data(m_window.widget(), this);
}

void DesktopInput::begin() {
    gtk_im_context_set_client_window(m_input_method, gtk_widget_get_window(m_area));
}

void DesktopInput::set_caret(const GdkRectangle& place) {
    gtk_im_context_set_cursor_location(m_input_method, &place);
}

RawInput DesktopInput::pointer_input(RawInput::Kind kind, double x, double y, guint32 time) const {
    auto news = m_window.input(kind, time);
    news.point = m_driver.is_elsewhere(m_window) ? kElsewhere : m_window.on_screen(x, y);
    return news;
}

gboolean DesktopInput::on_motion(GdkEventMotion* event) {
    m_driver.put(pointer_input(RawInput::Kind::pointer_move, event->x, event->y, event->time));
    return TRUE;
}

gboolean DesktopInput::on_button(GdkEventButton* event) {
    // A double click comes as two clicks and a word about them.
    const bool is_down = event->type == GDK_BUTTON_PRESS;
    if ((!is_down && event->type != GDK_BUTTON_RELEASE) || event->button < 1 || event->button > 3) {
        return TRUE;
    }
    constexpr int kButtons[] = {0, 2, 1};
    auto news = pointer_input(is_down ? RawInput::Kind::button_down : RawInput::Kind::button_up,
                              event->x, event->y, event->time);
    news.button = kButtons[event->button - 1];
    m_driver.put(std::move(news));
    return TRUE;
}

void DesktopInput::turn_wheel(const GdkEventScroll& event, double notches, bool is_horizontal) {
    auto& rest = is_horizontal ? m_wheel_across : m_wheel;
    rest += notches * kNotch;
    const auto delta = static_cast<int>(rest);
    if (delta == 0) return;
    rest -= delta;
    auto news = pointer_input(RawInput::Kind::wheel, event.x, event.y, event.time);
    news.delta = delta;
    news.is_horizontal = is_horizontal;
    m_driver.put(std::move(news));
}

gboolean DesktopInput::on_scroll(GdkEventScroll* event) {
    switch (event->direction) {
        case GDK_SCROLL_UP:
        case GDK_SCROLL_DOWN:
            turn_wheel(*event, event->direction == GDK_SCROLL_UP ? 1 : -1, false);
            break;
        case GDK_SCROLL_LEFT:
        case GDK_SCROLL_RIGHT:
            turn_wheel(*event, event->direction == GDK_SCROLL_RIGHT ? 1 : -1, true);
            break;
        case GDK_SCROLL_SMOOTH:
            turn_wheel(*event, -event->delta_y, false);
            turn_wheel(*event, event->delta_x, true);
            break;
    }
    return TRUE;
}

gboolean DesktopInput::on_crossing(GdkEventCrossing* event) {
    constexpr auto kButtons = GDK_BUTTON1_MASK | GDK_BUTTON2_MASK | GDK_BUTTON3_MASK;
    // A press of a button crosses nothing, and while one is down the pointer is the window's.
    if (event->mode != GDK_CROSSING_NORMAL || (event->state & kButtons) != 0) return FALSE;
    const auto kind = event->type == GDK_ENTER_NOTIFY ? RawInput::Kind::pointer_move
                                                      : RawInput::Kind::pointer_leave;
    m_driver.put(pointer_input(kind, event->x, event->y, event->time));
    return FALSE;
}

gboolean DesktopInput::on_key(GdkEventKey* event) {
    m_written.clear();
    m_is_filtering = true;
    const bool is_taken = gtk_im_context_filter_keypress(m_input_method, event) != FALSE;
    m_is_filtering = false;
    // The input method composes with it.
    if (is_taken && m_written.empty()) return TRUE;
    const bool is_down = event->type == GDK_KEY_PRESS;
    const auto key = key_of(*event);
    auto news =
        m_window.input(is_down ? RawInput::Kind::key_down : RawInput::Kind::key_up, event->time);
    // Pop-ups have no keys of their own: they are for what the program has in front.
    news.window = nullptr;
    news.key = key.key != 0 || m_written.empty() ? key.key : VK_PACKET;
    news.is_extended = key.is_extended;
    news.scan_code = std::max(event->hardware_keycode - 8, 0);
    news.text = std::exchange(m_written, {});
    if (news.key != 0) m_driver.put(std::move(news));
    return TRUE;
}

void DesktopInput::on_commit(const char* text) {
    if (m_is_filtering) {
        m_written += utf16_of(text);
        return;
    }
    auto news = m_window.input(RawInput::Kind::text, 0);
    news.window = nullptr;
    news.text = utf16_of(text);
    m_driver.put(std::move(news));
}

gboolean DesktopInput::on_focus(GdkEventFocus* event) {
    if (event->in != 0) {
        gtk_im_context_focus_in(m_input_method);
    } else {
        gtk_im_context_focus_out(m_input_method);
    }
    m_driver.focus_is(m_window.keyboard_window(), event->in != 0);
    return FALSE;
}

}  // namespace tvutil2
