#include "tvutil2/framework/menus.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/framework/temporaries.h"
#include "tvutil2/framework/window_handle.h"
#include "tvutil2/platform/resource/resource.h"

#include <utility>

IMPLEMENT_DYNCREATE(CMenu, CObject)

void tvutil2::hold(CMenu& object, HMENU handle) {
    object.m_hMenu = handle;
}

BOOL CMenu::Attach(HMENU menu) {
    if (menu == nullptr || m_hMenu != nullptr) return FALSE;
    m_hMenu = menu;
    return TRUE;
}

HMENU CMenu::Detach() {
    return std::exchange(m_hMenu, nullptr);
}

BOOL CMenu::DestroyMenu() {
    return m_hMenu == nullptr ? FALSE : ::DestroyMenu(Detach());
}

CMenu* CMenu::FromHandle(HMENU menu) {
    return tvutil2::Temporaries<CMenu>::of(menu);
}

void CMenu::DeleteTempMap() {
    tvutil2::Temporaries<CMenu>::delete_all();
}

BOOL CMenu::LoadMenu(const char16_t* name) {
    return Attach(::LoadMenuW(AfxFindResourceHandle(name, RT_MENU), name));
}

BOOL CMenu::LoadMenu(UINT id) {
    return LoadMenu(MAKEINTRESOURCEW(static_cast<WORD>(id)));
}

int CMenu::GetMenuString(UINT item, CString& text, UINT flags) const {
    const int length = ::GetMenuStringW(m_hMenu, item, nullptr, 0, flags);
    ::GetMenuStringW(m_hMenu, item, text.GetBuffer(length), length + 1, flags);
    text.ReleaseBuffer(length);
    return length;
}

CMenu* CMenu::GetSubMenu(int position) const {
    return FromHandle(::GetSubMenu(m_hMenu, position));
}

BOOL CMenu::TrackPopupMenu(UINT flags, int x, int y, CWnd* owner, const RECT* rect) {
    return ::TrackPopupMenu(m_hMenu, flags, x, y, 0, handle_of(owner), rect);
}

CMFCToolBarMenuButton::CMFCToolBarMenuButton(UINT id, HMENU menu, int image, const char16_t* text)
    : m_nID(id), m_strText(text), m_menu(menu), m_image(image) {}

const CMFCToolBarMenuButton* CMFCPopupMenuMenuBar::GetButton(int index) const {
    return index >= 0 && index < GetCount() ? &m_buttons[static_cast<std::size_t>(index)] : nullptr;
}

int CMFCPopupMenuMenuBar::CommandToIndex(UINT id, int first) const {
    for (int index = first; const auto* button = GetButton(index); ++index) {
        if (button->m_nID == id) return index;
    }
    return -1;
}

int CMFCPopupMenu::InsertItem(const CMFCToolBarMenuButton& button, int index) {
    const int count = m_bar.GetCount();
    if (index < -1 || index > count) return -1;
    if (index == -1) index = count;
    m_bar.m_buttons.insert(m_bar.m_buttons.begin() + index, button);
    return index;
}

int CMFCPopupMenu::InsertSeparator(int index) {
    return InsertItem(CMFCToolBarMenuButton(0, nullptr, -1), index);
}
