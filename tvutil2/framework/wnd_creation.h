// The moment in which a new window becomes an object's.
#pragma once

#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/window/hooks.h"

/// From here to the end the next window that the thread makes, and none that its procedure makes,
/// is the object's from its first message on.
class CWnd::Creation {
  public:
    explicit Creation(CWnd& object);
    ~Creation() { end(); }
    Creation(const Creation&) = delete;
    Creation& operator=(const Creation&) = delete;

    void end();
    /// No window has come.
    [[nodiscard]] bool is_waiting() const;

  private:
    CWnd& m_object;
    CWnd* m_before;
    HHOOK m_hook;
};
