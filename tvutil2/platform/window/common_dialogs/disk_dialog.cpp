#include "tvutil2/platform/window/common_dialogs/disk_dialog.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/folder_icons.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/dialogs/built_dialog.h"
#include "tvutil2/platform/window/dialogs/run_dialog.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <utility>

namespace tvutil2 {
namespace {

constexpr UINT kAnswered = WM_APP + 1;
constexpr UINT_PTR kSilenceTimer = 1;

}  // namespace

DiskDialog::DiskDialog() : m_language(LANGIDFROMLCID(GetThreadLocale())) {}

DiskDialog::~DiskDialog() {
    if (m_icons != nullptr) ImageList_Destroy(m_icons);
}

INT_PTR DiskDialog::run(HWND owner, DWORD frame) {
    const auto made =
        empty_template(WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN | DS_CENTER | frame);
    const auto pump = [&](HWND window) {
        return pump_dialog(window, [&](const MSG& message) { return takes(message); });
    };
    return run_dialog({nullptr, &made, owner, procedure, reinterpret_cast<LPARAM>(this)}, pump);
}

HWND DiskDialog::item(int id) const {
    return GetDlgItem(m_window, id);
}

int DiskDialog::say(const char16_t* text, const std::u16string& path, UINT type) const {
    const auto said = text_with_path(text, path);
    return MessageBoxW(m_window, said.c_str(), text_of(m_window).c_str(), type);
}

void DiskDialog::scale_changed(const RECT& place) {
    auto* const before = std::exchange(m_icons, make_folder_icons(GetDpiForWindow(m_window)));
    icons_changed();
    if (before != nullptr) ImageList_Destroy(before);
    SetWindowPos(m_window, nullptr, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    lay_out();
}

INT_PTR DiskDialog::hear(UINT message, WPARAM wparam, LPARAM lparam) {
    // What the parts tell while they are made.
    if (!m_is_built) return FALSE;
    if (hear_other(message, wparam, lparam)) return TRUE;
    switch (message) {
        case WM_NOTIFY:
            SetWindowLongPtrW(m_window, DWLP_MSGRESULT,
                              notified(*reinterpret_cast<NMHDR*>(lparam)));
            return TRUE;
        case WM_COMMAND:
            commanded(LOWORD(wparam), HIWORD(wparam));
            return TRUE;
        case kAnswered:
            while (auto answer = m_disk->take()) answered(std::move(*answer));
            return TRUE;
        case WM_DPICHANGED:
            scale_changed(*reinterpret_cast<const RECT*>(lparam));
            return TRUE;
        case WM_TIMER:
            if (wparam != kSilenceTimer) return FALSE;
            for (const auto question : m_disk->silent()) unanswered(question);
            return TRUE;
        case WM_SIZE:
            if (wparam != SIZE_MINIMIZED) lay_out();
            return TRUE;
        case WM_GETMINMAXINFO: {
            const auto least = least_size();
            reinterpret_cast<MINMAXINFO*>(lparam)->ptMinTrackSize = {least.cx, least.cy};
            return TRUE;
        }
        default:
            return FALSE;
    }
}

INT_PTR DiskDialog::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message != WM_INITDIALOG) {
        auto* const dialog = reinterpret_cast<DiskDialog*>(GetWindowLongPtrW(window, DWLP_USER));
        return dialog != nullptr ? dialog->hear(message, wparam, lparam) : FALSE;
    }
    SetWindowLongPtrW(window, DWLP_USER, lparam);
    auto& dialog = *reinterpret_cast<DiskDialog*>(lparam);
    dialog.m_window = window;
    dialog.m_icons = make_folder_icons(GetDpiForWindow(window));
    dialog.m_disk = std::make_unique<FolderQuestions>(window, kAnswered, kSilenceTimer);
    dialog.m_is_built = true;
    dialog.build();
    return FALSE;
}

}  // namespace tvutil2
