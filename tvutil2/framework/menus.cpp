#include "tvutil2/framework/menus.h"

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
