#include "tvutil2/platform/watch/change_notification.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/objects/waitable.h"
#include "tvutil2/platform/watch/folder_tree.h"

namespace tvutil2 {
namespace {

class ChangeNotification final : public WaitableObject, private FolderListener {
  public:
    static constexpr HandleKind kHandleKind = HandleKind::change;

    ChangeNotification(bool subtree, DWORD filter)
        : WaitableObject(kHandleKind), m_tree(subtree, filter, *this) {}

    [[nodiscard]] bool start(const std::string& path) { return m_tree.start(path); }

    // An end that came behind what signalled is told like any other change.
    bool rearm() {
        const Locked guard(*this);
        if (m_is_gone && !m_has_news) return fail_with(ERROR_ACCESS_DENIED);
        m_is_signalled = std::exchange(m_has_news, false);
        return true;
    }

  protected:
    [[nodiscard]] bool is_available(const ThreadRecord& /*thread*/) const override {
        return m_is_signalled;
    }
    void take(ThreadRecord& /*thread*/) override {}

  private:
    void on_change(DWORD /*action*/, std::u16string_view /*prefix*/,
                   std::u16string_view /*name*/) override {
        signal(false);
    }
    void on_lost() override { signal(false); }
    void on_gone() override { signal(true); }
    void on_quiet() override {}

    void signal(bool is_gone) {
        WakeList woken;
        const Locked guard(*this);
        m_is_gone = m_is_gone || is_gone;
        m_has_news = std::exchange(m_is_signalled, true);
        offer(woken);
    }

    // Guarded by the object's lock.
    bool m_is_signalled = false;
    bool m_has_news = false;  ///< something came after what signalled
    bool m_is_gone = false;

    FolderTree m_tree;  ///< the first to end: it tells the members above
};

}  // namespace
}  // namespace tvutil2

HANDLE FindFirstChangeNotificationW(const char16_t* path, BOOL subtree, DWORD filter) {
    using namespace tvutil2;
    if (!is_change_filter(filter)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const auto host = host_path_of(path);
    if (!host) return INVALID_HANDLE_VALUE;
    auto notification = std::make_shared<ChangeNotification>(subtree != 0, filter);
    if (!notification->start(*host)) return INVALID_HANDLE_VALUE;
    const auto handle = make_handle<HANDLE>(std::move(notification));
    return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}

BOOL FindNextChangeNotification(HANDLE handle) {
    const auto notification = tvutil2::object_of<tvutil2::ChangeNotification>(handle);
    return notification && notification->rearm() ? TRUE : FALSE;
}

BOOL FindCloseChangeNotification(HANDLE handle) {
    return tvutil2::close_handle_of<tvutil2::ChangeNotification>(handle) ? TRUE : FALSE;
}
