// The framework's popup menus, as far as their entries go: what is on a menu and where. They aren't
// shown yet.
#pragma once

#include "tvutil2/framework/strings.h"

#include <vector>

/// Command of the About entry, by which the Help menu is told.
inline constexpr UINT ID_APP_ABOUT = 57664;

/// An entry of a menu: a command and its text. A separator has the command 0.
class TVUTIL_API CMFCToolBarMenuButton {
  public:
    /// `menu` is the entry's own submenu and null for none, `image` its picture and -1 for none.
    CMFCToolBarMenuButton(UINT id, HMENU menu, int image, const char16_t* text = nullptr);

    UINT m_nID;
    CString m_strText;

    [[nodiscard]] HMENU GetMenu() const { return m_menu; }
    [[nodiscard]] int GetImage() const { return m_image; }

  private:
    HMENU m_menu;
    int m_image;
};

/// The entries of a popup menu, in their order. Indices count from 0.
class TVUTIL_API CMFCPopupMenuMenuBar {
  public:
    [[nodiscard]] int GetCount() const { return static_cast<int>(m_buttons.size()); }
    /// Null for an index that there is none of. Good until the menu changes.
    [[nodiscard]] const CMFCToolBarMenuButton* GetButton(int index) const;
    /// Index of the first entry from `first` on with a command; -1 without one.
    [[nodiscard]] int CommandToIndex(UINT id, int first = 0) const;

  private:
    friend class CMFCPopupMenu;
    std::vector<CMFCToolBarMenuButton> m_buttons;
};

/// A popup menu. Belongs to one thread at a time.
class TVUTIL_API CMFCPopupMenu {
  public:
    CMFCPopupMenu() = default;
    CMFCPopupMenu(const CMFCPopupMenu&) = delete;
    CMFCPopupMenu& operator=(const CMFCPopupMenu&) = delete;
    virtual ~CMFCPopupMenu() = default;

    [[nodiscard]] virtual CMFCPopupMenuMenuBar* GetMenuBar() { return &m_bar; }
    /// Puts a copy of an entry, or a separator, before the one at `index`, at the end for -1. Where
    /// it stands, or -1 for an index outside the menu.
    int InsertItem(const CMFCToolBarMenuButton& button, int index = -1);
    int InsertSeparator(int index = -1);

  private:
    CMFCPopupMenuMenuBar m_bar;
};
