// What the dialog for files does for the caller's own part.
#include "tvutil2/platform/files/item_list.h"
#include "tvutil2/platform/window/common_dialogs/file_dialog.h"
#include "tvutil2/platform/window/common_dialogs/file_layout.h"
#include "tvutil2/platform/window/common_dialogs/file_names.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <cstring>
#include <utility>

namespace tvutil2 {
namespace {

// Gives the size that is needed, with the zero at the end.
LRESULT into_buffer(const std::u16string& text, WPARAM size, LPARAM buffer) {
    auto* const units = reinterpret_cast<char16_t*>(buffer);
    if (units != nullptr && text.size() < size) units[text.copy(units, text.size())] = 0;
    return static_cast<LRESULT>(text.size() + 1);
}

// The same in bytes.
LRESULT list_into_buffer(const std::u16string& folder, WPARAM size, LPARAM buffer) {
    const auto list = item_list_of(folder);
    const auto needed = ILGetSize(list.get());
    auto* const bytes = reinterpret_cast<void*>(buffer);
    if (bytes != nullptr && needed > 0 && needed <= size) std::memcpy(bytes, list.get(), needed);
    return static_cast<LRESULT>(needed);
}

const char16_t* text_of_message(LPARAM lparam) {
    const auto* const text = reinterpret_cast<const char16_t*>(lparam);
    return text != nullptr ? text : u"";
}

}  // namespace

void FileDialog::add_part(FileHook& part, std::function<bool(const ChosenNames&)> give) {
    m_part = &part;
    m_give = std::move(give);
}

HWND FileDialog::control_of(WPARAM id) const {
    const auto number = static_cast<int>(id & 0xFFFF);
    return item(number == edt1 ? kFileName : number);
}

std::u16string FileDialog::file_path() const {
    const auto names = wanted_names();
    if (names.size() == 1) return path_in(m_folder, names[0]).value_or(names[0]);
    return names.empty() ? m_folder : joined(m_folder, typed_names(names));
}

bool FileDialog::hear_program(UINT message, WPARAM wparam, LPARAM lparam) {
    LRESULT result = 0;
    switch (message) {
        case CDM_GETSPEC:
            result = into_buffer(typed_names(wanted_names()), wparam, lparam);
            break;
        case CDM_GETFILEPATH:
            result = into_buffer(file_path(), wparam, lparam);
            break;
        case CDM_GETFOLDERPATH:
            result = into_buffer(m_folder, wparam, lparam);
            break;
        case CDM_GETFOLDERIDLIST:
            result = list_into_buffer(m_folder, wparam, lparam);
            break;
        case CDM_SETCONTROLTEXT:
            SetWindowTextW(control_of(wparam), text_of_message(lparam));
            lay_out();
            break;
        case CDM_HIDECONTROL:
            ShowWindow(control_of(wparam), SW_HIDE);
            lay_out();
            break;
        case CDM_SETDEFEXT:
            m_name_reading.extension = text_of_message(lparam);
            break;
        default:
            return false;
    }
    SetWindowLongPtrW(window(), DWLP_MSGRESULT, result);
    return true;
}

// False where the caller's part can't be made, or doesn't want a dialog.
bool FileDialog::make_part() {
    if (m_part == nullptr) return true;
    if (!m_part->make(window(), kFilePart)) return false;
    size_file_dialog(window());
    return IsWindow(window()) != 0;
}

void FileDialog::begin_part() {
    if (m_part == nullptr) return;
    m_part->begin();
    if (!m_folder.empty()) m_part->tell(CDN_FOLDERCHANGE);
}

void FileDialog::tell_part(UINT code) {
    if (m_part != nullptr) m_part->tell(code);
}

// What doesn't fit is the caller's failure, which the dialog's end tells.
bool FileDialog::part_refuses() {
    return m_part != nullptr && m_give(m_chosen) && m_part->refuses();
}

}  // namespace tvutil2
