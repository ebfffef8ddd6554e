// The desktop's clipboard, as text.
#pragma once

#include "tvutil2/platform/display/module/desktop_thread.h"

#include <gtk/gtk.h>

#include <atomic>
#include <string>

namespace tvutil2 {

class DesktopClipboard {
  public:
    explicit DesktopClipboard(DesktopThread& thread) : m_thread(thread) {}

    // For any thread:
    [[nodiscard]] bool is_ours() const { return m_is_ours; }
    [[nodiscard]] bool has_text() const { return m_has_text; }
    void offer(const std::u16string& text);
    bool read(std::u16string& text);

    // For the desktop's thread:
    void watch();
    /// Hands what is offered to the desktop, if somebody there keeps it for longer than programs
    /// live.
    void finish();

  private:
    void offer_now(std::string text);
    void look();

    DesktopThread& m_thread;
    std::atomic<bool> m_is_ours = false;
    std::atomic<bool> m_has_text = false;
    // Of the desktop's thread:
    std::string m_text;  // UTF-8
    bool m_is_offering = false;
};

}  // namespace tvutil2
