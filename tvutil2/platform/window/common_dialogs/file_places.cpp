#include "tvutil2/platform/window/common_dialogs/file_places.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/common_dialogs/file_words.h"
#include "tvutil2/platform/window/common_dialogs/folder_icons.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

using PlaceKind = FolderPlace::Kind;

std::u16string name_of(const FolderPlace& place, LANGID language) {
    switch (place.kind) {
        case PlaceKind::home:
            return folder_word(FolderWord::home, language);
        case PlaceKind::desktop:
            return folder_word(FolderWord::desktop, language);
        case PlaceKind::documents:
            return folder_word(FolderWord::documents, language);
        case PlaceKind::downloads:
            return file_word(FileWord::downloads, language);
        case PlaceKind::drive:
            return place.path.size() == 3 ? place.path.substr(0, 2) : place.path;
        default:
            return shown_name(last_part(place.path));
    }
}

FolderIcon icon_of(const FolderPlace& place) {
    if (place.kind == PlaceKind::desktop) return FolderIcon::desktop;
    const bool is_device = place.kind == PlaceKind::drive || place.kind == PlaceKind::mount;
    return is_device ? FolderIcon::drive : FolderIcon::folder;
}

}  // namespace

FilePlaces::FilePlaces(HWND list, HIMAGELIST icons, LANGID language)
    : m_list(list), m_language(language) {
    show_icons(icons);
    LVCOLUMNW column{};
    SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    arrange();
}

void FilePlaces::show_icons(HIMAGELIST icons) const {
    SendMessageW(m_list, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(icons));
}

void FilePlaces::arrange() const {
    RECT client{};
    GetClientRect(m_list, &client);
    SendMessageW(m_list, LVM_SETCOLUMNWIDTH, 0, client.right - client.left);
}

void FilePlaces::take(std::vector<FolderPlace> places) {
    m_places = std::move(places);
    int index = 0;
    for (const auto& place : m_places) {
        auto name = name_of(place, m_language);
        LVITEMW given{};
        given.mask = LVIF_TEXT | LVIF_IMAGE;
        given.iItem = index++;
        given.pszText = name.data();
        given.iImage = static_cast<int>(icon_of(place));
        SendMessageW(m_list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&given));
    }
    arrange();
}

std::u16string FilePlaces::selected() const {
    const auto index = SendMessageW(m_list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1),
                                    static_cast<LPARAM>(LVNI_SELECTED));
    const bool is_place = index >= 0 && index < static_cast<LRESULT>(m_places.size());
    return is_place ? m_places[static_cast<std::size_t>(index)].path : u"";
}

std::u16string FilePlaces::usual() const {
    const auto documents = std::ranges::find(m_places, PlaceKind::documents, &FolderPlace::kind);
    if (documents != m_places.end()) return documents->path;
    return m_places.empty() ? u"" : m_places.front().path;
}

void FilePlaces::select(int index) {
    LVITEMW given{};
    given.state = index >= 0 ? LVIS_SELECTED | LVIS_FOCUSED : 0;
    given.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(m_list, LVM_SETITEMSTATE, static_cast<WPARAM>(index),
                 reinterpret_cast<LPARAM>(&given));
}

void FilePlaces::follow(const std::u16string& folder) {
    const auto found = std::ranges::find_if(m_places, [&](const FolderPlace& each) {
        return _wcsicmp(each.path.c_str(), folder.c_str()) == 0;
    });
    m_is_filling = true;
    select(-1);
    if (found != m_places.end()) select(static_cast<int>(found - m_places.begin()));
    m_is_filling = false;
}

}  // namespace tvutil2
