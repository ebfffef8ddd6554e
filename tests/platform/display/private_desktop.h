// A desktop of a test's own: an X server without a screen, a window manager, and a hand on its
// keyboard and mouse.
#pragma once

#include "tvutil2/platform/draw/surface.h"

#include <memory>
#include <string>
#include <vector>

namespace tests {

/// Lives for ever in the test's process; the server ends with it. What is set in the environment
/// stays.
class PrivateDesktop {
  public:
    /// `resources` is what the server's resource manager says, "Xft.dpi:\t144\n".
    static PrivateDesktop& start(const std::string& resources = {});
    /// The same with Wayland: a compositor whose screen is the X server's. Null where none is
    /// installed. Nothing there answers what is asked of a window manager.
    static PrivateDesktop* start_wayland();
    ~PrivateDesktop();

    void move_pointer(POINT point);
    void press_button(int button);  ///< 1 left, 2 middle, 3 right, 4 and 5 the wheel
    void release_button(int button);
    void press_key(unsigned long symbol);
    void release_key(unsigned long symbol);

    /// What is on the screen.
    std::shared_ptr<tvutil2::Surface> picture();

    struct Client {
        unsigned long id;
        std::string title;
        unsigned long owner;  ///< WM_TRANSIENT_FOR
        bool is_modal;
        RECT place;                       ///< without the frame
        std::vector<unsigned long> icon;  ///< _NET_WM_ICON: width, height, pixels; and so on
    };
    /// What the window manager manages, the oldest first.
    std::vector<Client> clients();
    void place(const Client& client, const RECT& place);
    /// Asks the window manager for a state of EWMH, and the client to close.
    void set_state(const Client& client, const char* state, bool is_on);
    void close(const Client& client);
    /// Has it do nothing for a while, as if the machine were busy.
    void hold_manager(bool holds);
    /// What the desktop's settings say from now on: dots an inch, and the name of a theme.
    void set_settings(int dpi, const std::string& theme);
    /// Ends the server.
    void end();

  private:
    struct Parts;
    PrivateDesktop();
    void ask(unsigned long window, const char* type, const std::vector<long>& data);
    std::unique_ptr<Parts> m_parts;
};

}  // namespace tests
