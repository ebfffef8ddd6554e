// A top-level window on the desktop. For the desktop's thread.
#pragma once

#include "tvutil2/platform/display/driver.h"
#include "tvutil2/platform/display/module/accessible_area.h"
#include "tvutil2/platform/display/module/frame_buffer.h"

#include <gtk/gtk.h>

#include <memory>
#include <span>

namespace tvutil2 {

class DesktopDriver;
class DesktopInput;

/// Where the desktop doesn't say where windows are.
[[nodiscard]] bool is_on_wayland();

class DesktopWindow {
  public:
    DesktopWindow(DesktopDriver& driver, const Shown& shown, std::shared_ptr<FrameBuffer> buffer);
    ~DesktopWindow();
    DesktopWindow(const DesktopWindow&) = delete;
    DesktopWindow& operator=(const DesktopWindow&) = delete;

    void change(const Shown& shown, bool activates);
    /// `damage` is in pixels of the window's surface.
    void damaged(std::span<const RECT> damage);
    void activate();
    /// Doesn't wait for what is painted first.
    void show_now();
    void set_cursor(GdkCursor* cursor);
    void set_caret(const RECT& place);
    void describe(const Accessible& content) { describe_area(m_area, content); }
    /// Has the pointer's doings outside of all windows of the program told to this one, which is
    /// shown then. False when the desktop doesn't.
    bool grab();
    /// The program's owner of this one is on the desktop now, or no longer.
    void follow_owner();
    /// The window manager has looked at what it was asked for.
    void follow_manager();
    /// The scale of its monitor, or of all, may be another.
    void follow_scale();

    [[nodiscard]] const Shown& shown() const { return m_shown; }
    [[nodiscard]] GtkWindow* widget() const { return GTK_WINDOW(m_window); }
    /// Whether it is a pop-up, which the desktop neither frames nor activates.
    [[nodiscard]] bool is_popup() const { return m_is_popup; }
    /// Whether it hears of presses elsewhere, or has.
    [[nodiscard]] bool is_grabbing() const { return m_is_grabbing; }
    /// Who has the keyboard when the desktop gives it to this one: pop-ups have none of their own.
    [[nodiscard]] HWND keyboard_window() const;

    /// A place in the area, in the desktop's units.
    [[nodiscard]] POINT on_screen(double x, double y) const;
    /// News of the window's; `time` is the event's, or 0.
    [[nodiscard]] RawInput input(RawInput::Kind kind, guint32 time) const;

  private:
    [[nodiscard]] int scale() const { return gtk_widget_get_scale_factor(m_window); }
    /// The part of the window that is shown here: all but the frame, where the desktop has one.
    [[nodiscard]] RECT view() const;
    /// Pixels as the desktop's units, rounded up.
    [[nodiscard]] int units(LONG pixels) const;
    /// A place on the screen, in the units of where the desktop is asked to put it.
    [[nodiscard]] GdkPoint place_of(POINT corner) const;

    void make_area();
    void appear();
    void open_at_base();
    void follow_rect(const GdkRectangle& now);
    void keep_place(const RECT& place);
    void set_size();
    void ask_for_place();
    void note_asked();
    void set_form(DWORD before);
    void await_settling(guint milliseconds = 0);
    void settle();
    [[nodiscard]] RECT actual_view() const;
    [[nodiscard]] DWORD actual_form() const;
    [[nodiscard]] bool is_where_wanted(const RECT& now) const;
    void tell_place(const RECT& now);
    void tell_form(DWORD form);

    gboolean draw(cairo_t* cairo);
    gboolean on_configure(GdkEventConfigure* event);
    gboolean on_state(GdkEventWindowState* event);
    gboolean on_delete(GdkEventAny* event);

    DesktopDriver& m_driver;
    Shown m_shown;
    std::shared_ptr<FrameBuffer> m_buffer;
    const bool m_has_frame;
    const bool m_is_popup;
    GtkWidget* m_window = nullptr;
    GtkWidget* m_area = nullptr;
    std::unique_ptr<DesktopInput> m_input;
    bool m_is_mapped = false;
    bool m_is_grabbing = false;
    HWND m_behind = nullptr;  // the pop-up that this one has opened at, on Wayland
    bool m_activates = true;
    gint64 m_asked_at = 0;      // when the program last wanted a place or a form; 0: it has it
    bool m_asks_again = false;  // for the place, which came with another form
    guint m_settling = 0;       // source that looks where the window is
    guint m_first_show = 0;
    DWORD m_form = 0;
};

}  // namespace tvutil2
