// Whether the window manager of X11 has looked at what was asked of it: it answers in turn. For the
// desktop's thread.
#pragma once

#include <gtk/gtk.h>

#include <functional>

namespace tvutil2 {

class ManagerFence {
  public:
    /// `passed` is called when all that was asked before the last `ask` has been looked at.
    explicit ManagerFence(std::function<void()> passed) : m_passed(std::move(passed)) {}
    ManagerFence(const ManagerFence&) = delete;
    ManagerFence& operator=(const ManagerFence&) = delete;

    /// Behind what has been asked so far. Nothing where no manager answers.
    void ask();
    /// Whether an answer is still to come; not for ever.
    [[nodiscard]] bool is_pending() const;

  private:
    bool make_window();
    void send();
    gboolean on_property(GdkEventProperty* event);

    const std::function<void()> m_passed;
    GtkWidget* m_window = nullptr;  // which is never shown
    gint64 m_sent_at = 0;           // 0: nothing is to come
    bool m_asks_again = false;
};

}  // namespace tvutil2
