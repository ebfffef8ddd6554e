// Drivers: who shows the surfaces of top-level windows and brings the person's input.
//
// A driver knows top-level windows by their handles and nothing of what is in them. Which one there
// is, the environment says: TVUTIL_DISPLAY=offscreen|desktop|none; without it the desktop's where
// the environment names one, else none. A driver is chosen, and loaded, when the first top-level
// window is shown.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/display/accessible.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/draw/theme.h"

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tvutil2 {

enum class CursorShape : std::uint8_t {
    arrow,
    text,
    wait,
    cross,
    up,
    size_nwse,
    size_nesw,
    size_we,
    size_ns,
    size_all,
    no,
    hand,
    app_starting,
    help
};

/// What a person, or the desktop, does. Points and places are on the screen, in pixels.
struct RawInput {
    enum class Kind : std::uint8_t {
        key_down,
        key_up,
        text,  ///< of an input method, without a key
        pointer_move,
        button_down,
        button_up,
        wheel,
        pointer_leave,
        activate,
        deactivate,
        close,
        place,        ///< the desktop has moved or sized the window
        form,         ///< or minimised, maximised or restored it
        dismissed,    ///< or taken a pop-up off the screen: the person has pressed elsewhere
        scale,        ///< the window is on a monitor of another scale now
        look,         ///< colours or fonts of the desktop have changed
        focus,        ///< the keyboard is wanted in a control, by somebody who doesn't see it
        focus_taken,  ///< another thread's child has taken the focus: between threads alone
        focus_left,   ///< or has it no longer
        fill,         ///< or another value: a text, or a number in `delta`
        describe,     ///< somebody who doesn't see the window asks what is in it
        lost          ///< the display has gone: nothing is shown any more
    };

    Kind kind = Kind::pointer_move;
    HWND window = nullptr;   ///< the top-level window; null for the one in front
    HWND control = nullptr;  ///< in it, for the focus
    POINT point{};
    int key = 0;  ///< a virtual key
    int scan_code = 0;
    bool is_extended = false;
    std::u16string text;  ///< what the key writes, or the input method has written
    int button = 0;       ///< 0 left, 1 right, 2 middle
    int delta = 0;        ///< of the wheel: 120 a notch, away from the person or to the right
    bool is_horizontal = false;
    RECT place{};                    ///< of the window with its frame
    std::uint32_t place_number = 0;  ///< the last of `Shown` that the driver knew by then
    DWORD form = 0;                  ///< WS_MINIMIZE, WS_MAXIMIZE or neither
    UINT dpi = 0;
    DWORD time = 0;  ///< milliseconds of GetTickCount
    /// Which keys were down before, where another thread has handed this on; null from drivers.
    std::shared_ptr<const std::array<BYTE, 256>> keys;
};

/// Takes what comes in; safe from any thread.
using InputSink = void (*)(RawInput input);

/// A top-level window as a driver shows it.
struct Shown {
    HWND window = nullptr;
    HWND owner = nullptr;
    RECT place{};                    ///< with its frame, on the screen
    std::uint32_t place_number = 0;  ///< counts the places that the program itself has wanted
    RECT content{};                  ///< without the frame, from the corner of `place`
    SIZE least{};                    ///< the smallest that the person may make it, with its frame
    RECT base{};  ///< what a pop-up opens at: without room there it goes to the other side
    DWORD style = 0, ex_style = 0;
    UINT dpi = 96;
    std::u16string title;
    bool is_enabled = true;
    std::vector<std::shared_ptr<const Surface>> icons;  ///< one picture at several sizes
    friend bool operator==(const Shown& a, const Shown& b);
};

/// What the person chose in a dialog for files.
struct FileAnswer {
    std::vector<std::string> paths;  ///< the host's, absolute; none when nothing was chosen
    std::size_t filter = 0;          ///< the one in force at the end
};

/// What the desktop's own dialog for files is to ask.
struct FileQuestion {
    enum class Kind : std::uint8_t { open, save, folder };
    struct Filter {
        std::u16string name;
        std::vector<std::u16string> patterns;  ///< "*.txt", whatever the case of what it finds
    };

    Kind kind = Kind::open;
    HWND owner = nullptr;  ///< a top-level window, which the dialog stays in front of
    std::u16string title;  ///< empty for the desktop's own
    std::string folder;    ///< the host's, where to begin; empty for the desktop's choice
    std::u16string name;   ///< of the file that is chosen, or written, at first
    std::vector<Filter> filters;
    std::size_t filter = 0;        ///< the one in force at first
    bool takes_several = false;    ///< files to open
    bool asks_to_replace = false;  ///< when there is a file of the name to save
    bool shows_hidden = false;
    std::function<void(FileAnswer)> answered;  ///< called once, from a thread of the driver's
};

/// Called from the threads that windows belong to, several at a time.
class Driver {
  public:
    Driver() = default;
    virtual ~Driver() = default;
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    /// Whether the desktop paints the frames of windows; else they are part of the surface.
    [[nodiscard]] virtual bool has_frames() const = 0;
    /// Whether pop-ups are put where there is room for them, by what they open at.
    [[nodiscard]] virtual bool finds_room() const { return false; }
    /// Shows a window, or shows it differently.
    virtual void show(const Shown& window, bool activates) = 0;
    virtual void hide(HWND window) = 0;
    virtual void activate(HWND window) = 0;
    /// `damage` has changed on the surface since the last time. The surface may be read for as long
    /// as its lock is held.
    virtual void present(HWND window, std::shared_ptr<Surface> surface, const Region& damage) = 0;
    virtual void set_cursor(CursorShape shape) = 0;
    /// The pointer's doings are for a window now, or no longer for one: where pop-ups are shown,
    /// the person's next press outside of the program's windows is to be heard of.
    virtual void set_capture(bool has_it) = 0;
    /// Where text is typed next, on the screen: an input method shows what it offers there.
    virtual void set_caret(HWND window, const RECT& place) = 0;

    /// Whether somebody has asked what is in windows.
    [[nodiscard]] virtual bool wants_descriptions() const = 0;
    /// What is in a window now, which is the root. For those that somebody may ask about.
    virtual void describe(HWND window, Accessible content) = 0;

    // The clipboard, as far as it is shared with other programs: text with lines that end in "\n".
    /// Whether what is there is this process's, or nobody's but its own can be there.
    [[nodiscard]] virtual bool owns_clipboard() = 0;
    virtual void offer_text(std::u16string text) = 0;
    /// Whether another program has put text there.
    [[nodiscard]] virtual bool offers_text() = 0;
    /// Waits for that program, two seconds at most; false when there is none.
    virtual bool read_text(std::u16string& text) = 0;

    /// Whether the desktop has dialogs for files of its own.
    [[nodiscard]] virtual bool has_file_dialogs() const = 0;
    /// Shows one, where there are any. All windows of the program go on; that the owner takes no
    /// input is the caller's affair. A display that goes away answers with nothing chosen.
    virtual void choose_files(std::shared_ptr<const FileQuestion> question) = 0;
    /// The answer isn't wanted any more, and may be on its way.
    virtual void withdraw(std::shared_ptr<const FileQuestion> question) = 0;
};

/// What the desktop's module asks of the library; everything may be called from any thread.
struct DriverHost {
    InputSink put_input = nullptr;
    void (*set_monitors)(std::vector<Monitor> monitors) = nullptr;
    /// The family is UTF-16, and empty for the host's own choice.
    void (*set_look)(ThemeMode mode, const char16_t* font_family) = nullptr;
    /// As start_service_thread.
    void (*start_thread)(std::function<void()> body) = nullptr;
};

/// The C function "tvutil2_make_driver" of the desktop's module; null when there is no desktop. The
/// monitors and the look are known when it returns.
using MakeDriver = Driver* (*)(const DriverHost& host);

/// The driver that the environment asks for; null where nothing shows windows.
[[nodiscard]] std::unique_ptr<Driver> make_driver(InputSink sink);

}  // namespace tvutil2
