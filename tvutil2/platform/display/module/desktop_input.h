// What a person does with a window of the desktop: pointer, keys, input methods. For the desktop's
// thread.
#pragma once

#include "tvutil2/platform/display/driver.h"

#include <gtk/gtk.h>

#include <string>

namespace tvutil2 {

class DesktopDriver;
class DesktopWindow;

class DesktopInput {
  public:
    /// Listens to `window` and the area that fills it.
    DesktopInput(DesktopDriver& driver, const DesktopWindow& window, GtkWidget* area);
    ~DesktopInput();
    DesktopInput(const DesktopInput&) = delete;
    DesktopInput& operator=(const DesktopInput&) = delete;

    /// The area is on the desktop from now on.
    void begin();
    /// Where text is typed next, in the desktop's units.
    void set_caret(const GdkRectangle& place);

  private:
    [[nodiscard]] RawInput pointer_input(RawInput::Kind kind, double x, double y,
                                         guint32 time) const;
    void turn_wheel(const GdkEventScroll& event, double notches, bool is_horizontal);

    gboolean on_motion(GdkEventMotion* event);
    gboolean on_button(GdkEventButton* event);
    gboolean on_scroll(GdkEventScroll* event);
    gboolean on_crossing(GdkEventCrossing* event);
    gboolean on_key(GdkEventKey* event);
    gboolean on_focus(GdkEventFocus* event);
    void on_commit(const char* text);

    DesktopDriver& m_driver;
    const DesktopWindow& m_window;
    GtkWidget* const m_area;
    GtkIMContext* const m_input_method;
    double m_wheel = 0, m_wheel_across = 0;  // less than a step yet
    // While a key is with the input method:
    bool m_is_filtering = false;
    std::u16string m_written;
};

}  // namespace tvutil2
