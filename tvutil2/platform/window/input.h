// The input of a thread: what the person has done and the thread hasn't looked at yet, and what
// follows from what it has.
#pragma once

#include "tvutil2/platform/display/driver.h"
#include "tvutil2/platform/window/thread_queue.h"

#include <array>
#include <deque>
#include <mutex>

namespace tvutil2 {

/// One a queue, made when something is first asked of it; serves for as long as the queue does.
struct InputState {
    struct Pending {
        std::uint64_t number;
        RawInput input;
    };

    // Others write here.
    std::mutex lock;
    std::vector<RawInput> incoming;

    // For the queue's thread:
    std::deque<Pending> pending;
    std::uint64_t count = 0;
    HWND focus = nullptr, active = nullptr, capture = nullptr;
    std::array<BYTE, 256> keys{};  ///< 0x80 down, 1 switched on
    POINT message_point{};
    HWND tracked = nullptr;  ///< waits for WM_MOUSELEAVE
    HWND hovered = nullptr;  ///< waits for WM_MOUSEHOVER
    POINT hover_point{};
    /// The last press of a button, for double clicks.
    HWND clicked = nullptr;
    int clicked_button = -1;
    DWORD click_time = 0;
    POINT click_point{};
    HWND guest = nullptr;          ///< another thread's, which the pointer was handed on to last
    HWND focused_guest = nullptr;  ///< another thread's, which has the focus in a window of ours
    /// What the key taken last writes.
    WPARAM written_key = 0;
    LPARAM written_lparam = 0;
    std::u16string written;

    [[nodiscard]] bool is_down(int key) const {
        return (keys[static_cast<std::size_t>(key) & 0xFF] & 0x80) != 0;
    }
};

[[nodiscard]] inline bool is_key(RawInput::Kind kind) {
    return kind == RawInput::Kind::key_down || kind == RawInput::Kind::key_up ||
           kind == RawInput::Kind::text;
}
[[nodiscard]] inline bool is_pointer(RawInput::Kind kind) {
    return kind == RawInput::Kind::pointer_move || kind == RawInput::Kind::button_down ||
           kind == RawInput::Kind::button_up || kind == RawInput::Kind::wheel;
}

/// Of the calling thread.
[[nodiscard]] InputState& input_state();
/// Null when nothing has been asked of it.
[[nodiscard]] InputState* input_state_or_null();

/// Takes raw input to the thread of its window; safe from any thread.
void put_input(RawInput input);
/// The next message that comes of the thread's input. Sends what goes before it.
bool take_input(ThreadQueue& queue, MSG& message, const MessageFilter& filter, bool remove);
/// Forgets everything: the thread is at its end.
void forget_input(ThreadQueue& queue);

/// The window ends without having been told anything.
void forget_window(ThreadQueue& queue, HWND window);

/// Posts the characters that a key writes.
void translate_key(const MSG& message);

/// Gives the focus, and tells who had it; `taker` is who has it now, if that is another thread's.
void change_focus(InputState& state, HWND window, HWND taker = nullptr);
/// Makes a top-level window of the calling thread, or none, the active one. False when it refuses.
bool activate(HWND top, WORD how);
/// The window is hidden, or ends: focus, activation and capture go elsewhere.
void leave_focus(HWND window);
/// The top-level window of this process that is in front; null for none.
[[nodiscard]] HWND window_in_front();
/// The desktop has made a window the active one, or none.
void follow_activation(const RawInput& input);

/// Sends WM_CAPTURECHANGED to who has it.
void set_capture(HWND window);
void show_cursor_of_hit(HWND window, LRESULT hit);
void start_hover(HWND window, DWORD milliseconds);
/// The pointer is over another window now, or over none.
void pointer_is_over(HWND window, POINT point);

/// The messages of input that DefWindowProcW answers. False for any other.
bool handle_input_message(HWND window, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result);
/// Lets the person move (HTCAPTION) or size (HTLEFT...) a window until a button goes up.
void drag_window(HWND window, LRESULT hit);

}  // namespace tvutil2
