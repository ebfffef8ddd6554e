#include "tvutil2/platform/display/module/desktop_driver.h"

#include "tvutil2/platform/display/module/desktop_look.h"

#include <time.h>

#include <array>
#include <exception>
#include <utility>

namespace tvutil2 {
namespace {

constexpr std::array<std::pair<CursorShape, const char*>, 14> kCursors{
    {{CursorShape::arrow, "default"},
     {CursorShape::text, "text"},
     {CursorShape::wait, "wait"},
     {CursorShape::cross, "crosshair"},
     {CursorShape::up, "n-resize"},
     {CursorShape::size_nwse, "nwse-resize"},
     {CursorShape::size_nesw, "nesw-resize"},
     {CursorShape::size_we, "ew-resize"},
     {CursorShape::size_ns, "ns-resize"},
     {CursorShape::size_all, "move"},
     {CursorShape::no, "not-allowed"},
     {CursorShape::hand, "pointer"},
     {CursorShape::app_starting, "progress"},
     {CursorShape::help, "help"}}};

const char* name_of(CursorShape shape) {
    for (const auto& [known, name] : kCursors) {
        if (known == shape) return name;
    }
    return "default";
}

DWORD ticks_now() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<DWORD>(static_cast<std::uint64_t>(now.tv_sec) * 1000 +
                              static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000);
}

}  // namespace

bool DesktopDriver::connect() {
    return m_thread.start(
        m_host, {[this] { prepare(); }, [this] { m_clipboard.finish(); }, [this] { lose(); }});
}

// ---- called by the threads of windows

std::shared_ptr<FrameBuffer> DesktopDriver::buffer_of(HWND window, bool makes) {
    const std::lock_guard guard(m_lock);
    if (!makes) {
        const auto found = m_buffers.find(window);
        return found != m_buffers.end() ? found->second : nullptr;
    }
    auto& buffer = m_buffers[window];
    if (!buffer) buffer = std::make_shared<FrameBuffer>();
    return buffer;
}

void DesktopDriver::show(const Shown& window, bool activates) {
    m_thread.post([this, window, activates, buffer = buffer_of(window.window, true)] {
        auto& known = m_windows[window.window];
        const bool is_new = known == nullptr;
        if (is_new) known = std::make_unique<DesktopWindow>(*this, window, buffer);
        const bool was_enabled = known->shown().is_enabled;
        known->change(window, activates);
        if (!is_new && was_enabled == window.is_enabled) return;
        for (const auto& [handle, other] : m_windows) {
            if (other && other->shown().owner == window.window) other->follow_owner();
        }
    });
}

void DesktopDriver::hide(HWND window) {
    {
        const std::lock_guard guard(m_lock);
        m_buffers.erase(window);
    }
    m_thread.post([this, window] {
        if (m_focus == window) focus_is(window, false);
        m_windows.erase(window);
        forget_popup(window);
    });
}

void DesktopDriver::activate(HWND window) {
    m_thread.post([this, window] {
        if (auto* const known = find(window)) known->activate();
    });
}

void DesktopDriver::present(HWND window, std::shared_ptr<Surface> surface, const Region& damage) {
    const auto buffer = buffer_of(window, false);
    if (!buffer) return;
    buffer->take(*surface, damage);
    m_thread.post(
        [this, window, rects = std::vector<RECT>(damage.rects().begin(), damage.rects().end())] {
            if (auto* const known = find(window)) known->damaged(rects);
        });
}

void DesktopDriver::set_cursor(CursorShape shape) {
    m_thread.post([this, shape] {
        auto* const cursor = gdk_cursor_new_from_name(gdk_display_get_default(), name_of(shape));
        for (const auto& [handle, window] : m_windows) window->set_cursor(cursor);
        if (m_cursor != nullptr) g_object_unref(m_cursor);
        m_cursor = cursor;
    });
}

void DesktopDriver::set_capture(bool has_it) {
    m_thread.post([this, has_it] {
        m_has_capture = has_it;
        has_it ? grab() : ungrab();
    });
}

void DesktopDriver::set_caret(HWND window, const RECT& place) {
    m_thread.post([this, window, place] {
        if (auto* const known = find(window)) known->set_caret(place);
    });
}

void DesktopDriver::describe(HWND window, Accessible content) {
    m_thread.post([this, window, content = std::move(content)] {
        if (auto* const known = find(window)) known->describe(content);
    });
}

void DesktopDriver::choose_files(std::shared_ptr<const FileQuestion> question) {
    const bool is_asked = m_thread.post([this, question] {
        auto* const owner = find(question->owner);
        // One that came later would take the focus from the dialog.
        if (owner != nullptr) owner->show_now();
        m_file_dialogs.push_back(std::make_unique<DesktopFileDialog>(
            question, owner != nullptr ? owner->widget() : nullptr,
            [this, question](FileAnswer answer) {
                question->answered(std::move(answer));
                forget(*question);
            }));
    });
    if (!is_asked) question->answered({});
}

void DesktopDriver::withdraw(std::shared_ptr<const FileQuestion> question) {
    m_thread.post([this, question] { forget(*question); });
}

// ---- on the desktop's thread

void DesktopDriver::forget(const FileQuestion& question) {
    std::erase_if(m_file_dialogs,
                  [&](const auto& dialog) { return dialog->question() == &question; });
}

// The one behind it hears of presses elsewhere again.
void DesktopDriver::forget_popup(HWND window) {
    if (std::erase(m_popups, window) != 0 && m_has_capture) grab();
}

DesktopWindow* DesktopDriver::grabbing_popup() {
    for (auto at = m_popups.rbegin(); at != m_popups.rend(); ++at) {
        auto* const popup = find(*at);
        if (popup != nullptr && popup->is_grabbing()) return popup;
    }
    return nullptr;
}

bool DesktopDriver::is_elsewhere(const DesktopWindow& window) {
    const auto* const popup = m_has_capture && is_on_wayland() ? grabbing_popup() : nullptr;
    return popup != nullptr && popup->keyboard_window() != window.keyboard_window();
}

void DesktopDriver::grab() {
    auto* const popup = m_popups.empty() ? nullptr : find(m_popups.back());
    if (popup != nullptr) popup->grab();
}

void DesktopDriver::ungrab() {
    auto* const seat = gdk_display_get_default_seat(gdk_display_get_default());
    if (seat != nullptr) gdk_seat_ungrab(seat);
}

DesktopWindow* DesktopDriver::find(HWND window) {
    const auto found = m_windows.find(window);
    return found != m_windows.end() ? found->second.get() : nullptr;
}

void DesktopDriver::dress(GdkWindow* window) const {
    if (m_cursor != nullptr) gdk_window_set_cursor(window, m_cursor);
}

DWORD DesktopDriver::ticks_of(guint32 time) {
    if (time != 0) m_last_event_time = time;
    return ticks_now();
}

// The focus goes from one window of a program to the next in two steps, which aren't to look as if
// it had left the program.
void DesktopDriver::focus_is(HWND window, bool is_in) {
    if (is_in) {
        m_focus = window;
    } else if (m_focus == window) {
        m_focus = nullptr;
    }
    if (m_settling_focus != 0) return;
    m_settling_focus = g_idle_add(
        [](gpointer self) -> gboolean {
            static_cast<DesktopDriver*>(self)->m_settling_focus = 0;
            static_cast<DesktopDriver*>(self)->settle_focus();
            return G_SOURCE_REMOVE;
        },
        this);
}

void DesktopDriver::settle_focus() {
    const auto tell = [this](RawInput::Kind kind, HWND window) {
        RawInput news;
        news.kind = kind;
        news.window = window;
        put(std::move(news));
    };
    auto* const before = std::exchange(m_told, m_focus);
    if (m_focus != nullptr) {
        if (m_focus != before) tell(RawInput::Kind::activate, m_focus);
        return;
    }
    if (before == nullptr) return;
    tell(RawInput::Kind::deactivate, before);
    // The program may have made a pop-up the active one.
    for (const auto& [handle, window] : m_windows) {
        if (window->is_popup()) tell(RawInput::Kind::deactivate, handle);
    }
}

void DesktopDriver::tell_all(RawInput::Kind kind) {
    for (const auto& [handle, window] : m_windows) {
        RawInput news;
        news.kind = kind;
        news.window = handle;
        put(std::move(news));
    }
}

AccessibleWishes DesktopDriver::wishes_for(HWND window) {
    return {[this] {
                if (!m_is_asked.exchange(true)) tell_all(RawInput::Kind::describe);
            },
            [this, window](const RECT& place) { press(window, place); },
            [this, window](HWND control) {
                RawInput news;
                news.kind = RawInput::Kind::focus;
                news.window = window;
                news.control = control;
                put(std::move(news));
            },
            [this, window](HWND control, std::u16string text, int number) {
                RawInput news;
                news.kind = RawInput::Kind::fill;
                news.window = window;
                news.control = control;
                news.text = std::move(text);
                news.delta = number;
                put(std::move(news));
            }};
}

// As a person would.
void DesktopDriver::press(HWND window, const RECT& place) {
    if (find(window) == nullptr) return;
    for (const auto kind :
         {RawInput::Kind::pointer_move, RawInput::Kind::button_down, RawInput::Kind::button_up}) {
        RawInput news;
        news.kind = kind;
        news.window = window;
        news.point = {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
        news.time = ticks_now();
        put(std::move(news));
    }
}

void DesktopDriver::lose() {
    tell_all(RawInput::Kind::lost);
    for (const auto& dialog : m_file_dialogs) dialog->question()->answered({});
}

void DesktopDriver::tell_look() {
    m_host.set_monitors(desktop_monitors());
    m_host.set_look(desktop_theme_mode(), desktop_font().c_str());
}

void DesktopDriver::follow_look() {
    tell_look();
    tell_all(RawInput::Kind::look);
}

void DesktopDriver::follow_settings() {
    const auto follow = +[](DesktopDriver* self) { self->follow_look(); };
    for (const auto* const name :
         {"notify::gtk-theme-name", "notify::gtk-application-prefer-dark-theme",
          "notify::gtk-font-name"}) {
        g_signal_connect_swapped(gtk_settings_get_default(), name, G_CALLBACK(follow), this);
    }
    watch_colors([](void* self) { static_cast<DesktopDriver*>(self)->follow_look(); }, this);
    const auto rescale = +[](DesktopDriver* self) {
        self->tell_look();
        for (const auto& [handle, window] : self->m_windows) window->follow_scale();
    };
    g_signal_connect_swapped(gtk_settings_get_default(), "notify::gtk-xft-dpi", G_CALLBACK(rescale),
                             this);
    auto* const screen = gdk_screen_get_default();
    for (const auto* const name : {"monitors-changed", "size-changed"}) {
        g_signal_connect_swapped(screen, name, G_CALLBACK(rescale), this);
    }
}

void DesktopDriver::prepare() {
    m_finds_room = is_on_wayland();
    m_clipboard.watch();
    tell_look();
    follow_settings();
}

}  // namespace tvutil2

extern "C" TVUTIL_API tvutil2::Driver* tvutil2_make_driver(const tvutil2::DriverHost& host);

tvutil2::Driver* tvutil2_make_driver(const tvutil2::DriverHost& host) {
    try {
        // Once it has a thread it lives for ever.
        auto* const driver = new tvutil2::DesktopDriver(host);
        return driver->connect() ? driver : nullptr;
    } catch (const std::exception&) {
        return nullptr;
    }
}
