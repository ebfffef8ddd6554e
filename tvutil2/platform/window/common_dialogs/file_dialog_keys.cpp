// The keys of the dialog for files that are no control's.
#include "tvutil2/platform/window/common_dialogs/file_dialog.h"
#include "tvutil2/platform/window/common_dialogs/file_layout.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

namespace tvutil2 {

bool FileDialog::takes_list_key(WPARAM key) {
    if (key == VK_F2) {
        m_list->edit_name();
    } else if (key == VK_BACK) {
        go_up();
    } else if (key == 'A' && GetKeyState(VK_CONTROL) < 0 && m_question.takes_several) {
        m_list->select_all();
    } else {
        return false;
    }
    return true;
}

// Enter takes what the field says, also while names like it are offered.
void FileDialog::close_offers(WPARAM key) {
    if (key != VK_RETURN || SendMessageW(item(kFileName), CB_GETCURSEL, 0, 0) >= 0) return;
    m_names->close();
}

bool FileDialog::takes_key(const MSG& message) {
    const auto key = message.wParam;
    const bool with_control = GetKeyState(VK_CONTROL) < 0;
    close_offers(key);
    if (message.message == WM_SYSKEYDOWN) {
        if (key != VK_UP || m_names->is_open() || m_above->is_open()) return false;
        go_up();
    } else if (key == VK_F5) {
        read_again();
    } else if (with_control && key == 'H') {
        m_list->show_hidden(!m_list->shows_hidden());
    } else if (with_control && key == 'L') {
        SetFocus(item(kFilePath));
    } else if (with_control && GetKeyState(VK_SHIFT) < 0 && key == 'N') {
        make_folder();
    } else {
        return message.hwnd == m_list->window() && takes_list_key(key);
    }
    return true;
}

bool FileDialog::takes(const MSG& message) {
    if (!m_list || IsChild(window(), message.hwnd) == 0) return false;
    const bool is_key = message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN;
    if (is_key) return takes_key(message);
    if (message.message != WM_CHAR || message.hwnd != m_list->window()) return false;
    const auto character = static_cast<char16_t>(message.wParam);
    if (character > u' ') m_list->type(character);
    return character > u' ';
}

}  // namespace tvutil2
