// The desktop's driver, on GTK.
#pragma once

#include "tvutil2/platform/display/driver.h"
#include "tvutil2/platform/display/module/accessible_area.h"
#include "tvutil2/platform/display/module/desktop_clipboard.h"
#include "tvutil2/platform/display/module/desktop_files.h"
#include "tvutil2/platform/display/module/desktop_thread.h"
#include "tvutil2/platform/display/module/desktop_window.h"
#include "tvutil2/platform/display/module/manager_fence.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace tvutil2 {

/// Lives for ever: its thread ends behind everything else.
class DesktopDriver : public Driver {
  public:
    explicit DesktopDriver(const DriverHost& host) : m_host(host) {}
    bool connect();

    [[nodiscard]] bool has_frames() const override { return true; }
    [[nodiscard]] bool finds_room() const override { return m_finds_room; }
    void show(const Shown& window, bool activates) override;
    void hide(HWND window) override;
    void activate(HWND window) override;
    void present(HWND window, std::shared_ptr<Surface> surface, const Region& damage) override;
    void set_cursor(CursorShape shape) override;
    void set_capture(bool has_it) override;
    void set_caret(HWND window, const RECT& place) override;
    [[nodiscard]] bool wants_descriptions() const override { return m_is_asked; }
    void describe(HWND window, Accessible content) override;
    [[nodiscard]] bool owns_clipboard() override { return m_clipboard.is_ours(); }
    void offer_text(std::u16string text) override { m_clipboard.offer(text); }
    [[nodiscard]] bool offers_text() override { return m_clipboard.has_text(); }
    bool read_text(std::u16string& text) override { return m_clipboard.read(text); }
    [[nodiscard]] bool has_file_dialogs() const override { return true; }
    void choose_files(std::shared_ptr<const FileQuestion> question) override;
    void withdraw(std::shared_ptr<const FileQuestion> question) override;

    // For the desktop's thread:
    [[nodiscard]] DesktopWindow* find(HWND window);
    void put(RawInput input) { m_host.put_input(std::move(input)); }
    /// What a screen reader may want of a window.
    [[nodiscard]] AccessibleWishes wishes_for(HWND window);
    /// The desktop's focus has come to a window, or left it.
    void focus_is(HWND window, bool is_in);
    [[nodiscard]] bool has_capture() const { return m_has_capture; }
    /// Has windows told when the window manager has looked at what it was asked for so far.
    void ask_manager() { m_fence.ask(); }
    [[nodiscard]] bool is_manager_busy() const { return m_fence.is_pending(); }
    /// A pop-up appears on the desktop, in front of the others.
    void opened(const DesktopWindow& popup) { m_popups.push_back(popup.shown().window); }
    /// The pop-up in front that hears of presses elsewhere; null for none.
    [[nodiscard]] DesktopWindow* grabbing_popup();
    /// Whether the pointer is in a window, of all on Wayland, that has nothing to do with the
    /// pop-ups that are open: where it lies isn't known then.
    [[nodiscard]] bool is_elsewhere(const DesktopWindow& window);
    /// Gives a window the cursor in force.
    void dress(GdkWindow* window) const;
    /// The time of an event, which the desktop counts in its own way, in that of GetTickCount.
    [[nodiscard]] DWORD ticks_of(guint32 time);
    [[nodiscard]] guint32 last_event_time() const { return m_last_event_time; }

  private:
    void prepare();
    void follow_settings();
    void tell_look();
    void follow_look();
    void tell_all(RawInput::Kind kind);
    void press(HWND window, const RECT& place);
    void lose();
    void settle_focus();
    void forget(const FileQuestion& question);
    void forget_popup(HWND window);
    void grab();
    static void ungrab();
    std::shared_ptr<FrameBuffer> buffer_of(HWND window, bool makes);

    const DriverHost m_host;
    DesktopThread m_thread;
    DesktopClipboard m_clipboard{m_thread};

    std::atomic<bool> m_is_asked{false};
    std::atomic<bool> m_finds_room{false};
    std::mutex m_lock;
    std::unordered_map<HWND, std::shared_ptr<FrameBuffer>> m_buffers;  // with m_lock

    // Of the desktop's thread:
    std::unordered_map<HWND, std::unique_ptr<DesktopWindow>> m_windows;
    std::vector<HWND> m_popups;  // that are on the desktop, the last one in front
    std::vector<std::unique_ptr<DesktopFileDialog>> m_file_dialogs;
    ManagerFence m_fence{[this] {
        for (const auto& [handle, window] : m_windows) window->follow_manager();
    }};
    GdkCursor* m_cursor = nullptr;
    HWND m_focus = nullptr;  // where the desktop has it
    HWND m_told = nullptr;   // and where the program knows it
    bool m_has_capture = false;
    guint m_settling_focus = 0;
    guint32 m_last_event_time = 0;
};

}  // namespace tvutil2
