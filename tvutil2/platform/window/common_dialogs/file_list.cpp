#include "tvutil2/platform/window/common_dialogs/file_list.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/common_dialogs/file_texts.h"
#include "tvutil2/platform/window/common_dialogs/file_words.h"
#include "tvutil2/platform/window/common_dialogs/folder_icons.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tvutil2 {
namespace {

constexpr DWORD kTypingPause = 1000;  // milliseconds
constexpr int kLeastNames = 120;      // pixels at 96 dots an inch

struct Column {
    FileWord word;
    int width;  // at 96 dots an inch
    int format;
};
// In the order of FileColumn.
constexpr Column kColumns[] = {{FileWord::name, 230, LVCFMT_LEFT},
                               {FileWord::size, 80, LVCFMT_RIGHT},
                               {FileWord::changed, 130, LVCFMT_LEFT},
                               {FileWord::type, 110, LVCFMT_LEFT}};

int next_row(HWND list, int from, WPARAM flags) {
    return static_cast<int>(
        SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(from), static_cast<LPARAM>(flags)));
}

std::u16string text_of_error(const FolderAnswer& answer, LANGID language) {
    const bool is_gone =
        answer.error == ERROR_PATH_NOT_FOUND || answer.error == ERROR_FILE_NOT_FOUND;
    if (!is_gone) return folder_word(FolderWord::unreadable, language);
    return text_with_path(folder_word(FolderWord::is_not_there, language), last_part(answer.path));
}

}  // namespace

// By what rows keep, wherever they go.
struct FileList::Selection {
    std::vector<std::uint32_t> ids;
    std::uint32_t focused = 0;
    bool has_focus = false;
    bool is_in_view = false;
};

FileList::FileList(HWND list, HIMAGELIST icons, LANGID language)
    : m_list(list), m_language(language) {
    show_icons(icons);
    for (std::size_t i = 0; i < std::size(kColumns); ++i) {
        auto title = title_of(i);
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
        column.pszText = title.data();
        column.cx = scaled(kColumns[i].width, GetDpiForWindow(list));
        column.fmt = kColumns[i].format;
        SendMessageW(m_list, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
    }
}

std::u16string FileList::title_of(std::size_t column) const {
    std::u16string title = file_word(kColumns[column].word, m_language);
    const auto order = m_rows.order();
    if (static_cast<std::size_t>(order.column) == column) {
        title += order.is_descending ? u" \x25BE" : u" \x25B4";
    }
    return title;
}

void FileList::title_columns() const {
    for (std::size_t i = 0; i < std::size(kColumns); ++i) {
        auto title = title_of(i);
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT;
        column.pszText = title.data();
        SendMessageW(m_list, LVM_SETCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
    }
}

// Until the person gives it a width by hand.
void FileList::fit_names() {
    RECT client{};
    GetClientRect(m_list, &client);
    auto width = static_cast<int>(client.right - client.left);
    for (std::size_t i = 1; i < std::size(kColumns); ++i) {
        width -= static_cast<int>(SendMessageW(m_list, LVM_GETCOLUMNWIDTH, i, 0));
    }
    width = std::max(width, scaled(kLeastNames, GetDpiForWindow(m_list)));
    const auto now = static_cast<int>(SendMessageW(m_list, LVM_GETCOLUMNWIDTH, 0, 0));
    if (now == width || (m_names_width != 0 && now != m_names_width)) return;
    m_names_width = width;
    SendMessageW(m_list, LVM_SETCOLUMNWIDTH, 0, width);
}

void FileList::show_icons(HIMAGELIST icons) const {
    SendMessageW(m_list, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(icons));
}

void FileList::edit_name() const {
    const auto row = next_row(m_list, -1, LVNI_FOCUSED);
    if (has(row)) SendMessageW(m_list, LVM_EDITLABELW, static_cast<WPARAM>(row), 0);
}

bool FileList::is_editing() const {
    return SendMessageW(m_list, LVM_GETEDITCONTROL, 0, 0) != 0;
}

void FileList::begin(std::set<std::u16string> selects) {
    m_is_again = false;
    m_fresh.clear();
    m_rows.clear();
    m_is_filling = true;
    SendMessageW(m_list, LVM_SETITEMCOUNT, 0, 0);
    m_selects = std::move(selects);
    m_typed.clear();
    m_note = folder_word(FolderWord::reading, m_language);
    show({});
}

void FileList::begin_again(std::set<std::u16string> selects) {
    m_is_again = true;
    m_fresh.clear();
    m_selects = std::move(selects);
}

// Who was selected is told by the name: nothing else stays.
FileList::Selection FileList::replace_rows(const Selection& before) {
    std::set<std::u16string> selected;
    for (const auto id : before.ids) selected.insert(m_rows.entry(id).name);
    const auto focused = before.has_focus ? m_rows.entry(before.focused).name : u"";
    m_rows.clear();
    m_rows.add(std::exchange(m_fresh, {}));
    Selection after;
    if (!m_selects.empty()) return after;
    after.is_in_view = before.is_in_view;
    for (int row = 0; row < m_rows.count(); ++row) {
        const auto& name = m_rows.at(row).name;
        if (selected.contains(name)) after.ids.push_back(m_rows.id_of(row));
        if (!before.has_focus || name != focused) continue;
        after.has_focus = true;
        after.focused = m_rows.id_of(row);
    }
    std::ranges::sort(after.ids);
    return after;
}

void FileList::take(FolderAnswer answer) {
    auto before = selection();
    if (m_is_again) {
        std::ranges::move(answer.entries, std::back_inserter(m_fresh));
        if (answer.has_more) return;
        m_is_again = false;
        before = replace_rows(before);
    } else {
        m_rows.add(std::move(answer.entries));
    }
    if (answer.error != 0) {
        m_note = text_of_error(answer, m_language);
    } else if (!answer.has_more) {
        m_note = file_word(FileWord::is_empty, m_language);
    }
    show(before);
    if (!answer.has_more) m_selects.clear();
}

void FileList::say(std::u16string note) {
    m_note = std::move(note);
    show(selection());
}

void FileList::show_hidden(bool shows) {
    const auto before = selection();
    m_rows.show_hidden(shows);
    show(before);
}

void FileList::show_files(const std::vector<std::u16string>& patterns) {
    const auto before = selection();
    m_rows.show_files(patterns);
    show(before);
}

void FileList::order_by(FileColumn column) {
    const auto before = selection();
    const auto order = m_rows.order();
    m_rows.order_by({column, order.column == column && !order.is_descending});
    title_columns();
    show(before);
}

FileList::Selection FileList::selection() const {
    Selection found;
    for (auto row = next_row(m_list, -1, LVNI_SELECTED); has(row);
         row = next_row(m_list, row, LVNI_SELECTED)) {
        found.ids.push_back(m_rows.id_of(row));
    }
    std::ranges::sort(found.ids);
    const auto focused = next_row(m_list, -1, LVNI_FOCUSED);
    found.has_focus = has(focused);
    if (!found.has_focus) return found;
    found.focused = m_rows.id_of(focused);
    const auto top = SendMessageW(m_list, LVM_GETTOPINDEX, 0, 0);
    found.is_in_view =
        focused >= top && focused < top + SendMessageW(m_list, LVM_GETCOUNTPERPAGE, 0, 0);
    return found;
}

void FileList::set_state(int row, UINT state) const {
    LVITEMW given{};
    given.state = state;
    given.stateMask = state != 0 ? state : LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(m_list, LVM_SETITEMSTATE, static_cast<WPARAM>(row),
                 reinterpret_cast<LPARAM>(&given));
}

void FileList::show(const Selection& before) {
    m_is_filling = true;
    const bool has_note = m_rows.count() == 0 && !m_note.empty();
    set_state(-1, 0);
    SendMessageW(m_list, LVM_SETITEMCOUNT, static_cast<WPARAM>(has_note ? 1 : m_rows.count()), 0);
    fit_names();
    auto in_view = -1;
    for (int row = 0; row < m_rows.count(); ++row) {
        if (before.ids.empty() && !before.has_focus && m_selects.empty()) break;
        const auto id = m_rows.id_of(row);
        const bool is_wanted = m_selects.contains(m_rows.at(row).name);
        const bool had_focus = before.has_focus && before.focused == id;
        if (is_wanted || std::ranges::binary_search(before.ids, id)) set_state(row, LVIS_SELECTED);
        if (is_wanted || had_focus) set_state(row, LVIS_FOCUSED);
        if (is_wanted || (had_focus && before.is_in_view)) in_view = row;
    }
    if (in_view >= 0) SendMessageW(m_list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(in_view), 0);
    repaint(m_list);
    m_is_filling = false;
}

std::u16string FileList::text_of_row(int row, int column) const {
    if (!has(row)) return row == 0 && column == 0 ? m_note : u"";
    const auto& entry = m_rows.at(row);
    switch (static_cast<FileColumn>(column)) {
        case FileColumn::name:
            return shown_name(entry.name);
        case FileColumn::size:
            return entry.is_folder ? u"" : size_text(entry.size, m_language);
        case FileColumn::changed:
            return time_text(entry.changed, m_language);
        default:
            return type_text(entry, m_language);
    }
}

void FileList::describe(LVITEMW& asked) {
    if ((asked.mask & LVIF_IMAGE) != 0) {
        const auto icon = !has(asked.iItem)                  ? FolderIcon::none
                          : m_rows.at(asked.iItem).is_folder ? FolderIcon::folder
                                                             : FolderIcon::file;
        asked.iImage = static_cast<int>(icon);
    }
    if ((asked.mask & LVIF_TEXT) == 0) return;
    m_shown_text = text_of_row(asked.iItem, asked.iSubItem);
    asked.pszText = m_shown_text.data();
}

bool FileList::notified(NMHDR& header) {
    if (header.code == LVN_GETDISPINFOW) {
        describe(reinterpret_cast<NMLVDISPINFOW&>(header).item);
        return true;
    }
    if (header.code == LVN_COLUMNCLICK) {
        order_by(static_cast<FileColumn>(reinterpret_cast<const NMLISTVIEW&>(header).iSubItem));
        return true;
    }
    return false;
}

// The same character again goes to the next name that begins with it.
void FileList::type(char16_t character) {
    const auto now = GetTickCount();
    if (now - m_typed_at > kTypingPause) m_typed.clear();
    m_typed_at = now;
    m_typed += character;
    if (m_rows.count() == 0) return;
    const bool is_again =
        m_typed.find_first_not_of(character) == std::u16string::npos && m_typed.size() > 1;
    const auto focused = next_row(m_list, -1, LVNI_FOCUSED);
    const bool goes_on = m_typed.size() == 1 || is_again;
    const auto from = focused >= 0 ? focused + (goes_on ? 1 : 0) : 0;
    auto row = m_rows.find(from, is_again ? std::u16string_view(m_typed).substr(0, 1) : m_typed);
    if (row < 0) return;
    set_state(-1, 0);
    set_state(row, LVIS_SELECTED | LVIS_FOCUSED);
    SendMessageW(m_list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), 0);
}

void FileList::select_all() {
    if (m_rows.count() > 0) set_state(-1, LVIS_SELECTED);
}

std::vector<const FolderEntry*> FileList::selected() const {
    std::vector<const FolderEntry*> entries;
    for (auto row = next_row(m_list, -1, LVNI_SELECTED); has(row);
         row = next_row(m_list, row, LVNI_SELECTED)) {
        entries.push_back(&m_rows.at(row));
    }
    return entries;
}

const FolderEntry* FileList::focused() const {
    const auto row = next_row(m_list, -1, LVNI_FOCUSED);
    return has(row) ? &m_rows.at(row) : nullptr;
}

std::vector<std::u16string> FileList::names_like(std::u16string_view beginning,
                                                 std::size_t most) const {
    std::vector<std::u16string> names;
    const auto wanted = upper_of(beginning);
    for (int row = 0; row < m_rows.count() && names.size() < most; ++row) {
        const auto& name = m_rows.at(row).name;
        if (name.size() >= wanted.size() &&
            upper_of(std::u16string_view(name).substr(0, wanted.size())) == wanted) {
            names.push_back(name);
        }
    }
    return names;
}

}  // namespace tvutil2
