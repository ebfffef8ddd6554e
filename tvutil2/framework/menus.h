// Menus as objects; and the framework's own popup menus, as far as their entries go: what is on one
// and where.
#pragma once

#include "tvutil2/framework/object.h"
#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/window/menus/menu.h"

#include <vector>

class CWnd;

/// Owns the menu that it has been given by a Create or Load function or Attach, and destroys it at
/// its end, unless Detach took it back. FromHandle gives an object for the while, which owns
/// nothing and is there until DeleteTempMap or the end of the thread. Failures are those of the
/// platform's functions of the same names. An object belongs to one thread at a time.
class TVUTIL_API CMenu : public CObject {
    DECLARE_DYNCREATE(CMenu)
  public:
    CMenu() = default;
    ~CMenu() override { DestroyMenu(); }

    operator HMENU() const { return m_hMenu; }
    [[nodiscard]] HMENU GetSafeHmenu() const { return m_hMenu; }
    /// FALSE for null, or when there is a menu already.
    BOOL Attach(HMENU menu);
    HMENU Detach();
    BOOL DestroyMenu();
    static CMenu* FromHandle(HMENU menu);
    static void DeleteTempMap();

    BOOL CreateMenu() { return Attach(::CreateMenu()); }
    BOOL CreatePopupMenu() { return Attach(::CreatePopupMenu()); }
    /// From the module that AfxFindResourceHandle names.
    BOOL LoadMenu(const char16_t* name);
    BOOL LoadMenu(UINT id);
    BOOL LoadMenuIndirect(const void* menu) { return Attach(::LoadMenuIndirectW(menu)); }

    BOOL AppendMenu(UINT flags, UINT_PTR id_or_menu = 0, const char16_t* text = nullptr) {
        return ::AppendMenuW(m_hMenu, flags, id_or_menu, text);
    }
    BOOL InsertMenu(UINT item, UINT flags, UINT_PTR id_or_menu = 0,
                    const char16_t* text = nullptr) {
        return ::InsertMenuW(m_hMenu, item, flags, id_or_menu, text);
    }
    BOOL ModifyMenu(UINT item, UINT flags, UINT_PTR id_or_menu = 0,
                    const char16_t* text = nullptr) {
        return ::ModifyMenuW(m_hMenu, item, flags, id_or_menu, text);
    }
    BOOL DeleteMenu(UINT item, UINT flags) { return ::DeleteMenu(m_hMenu, item, flags); }
    BOOL RemoveMenu(UINT item, UINT flags) { return ::RemoveMenu(m_hMenu, item, flags); }
    UINT CheckMenuItem(UINT item, UINT check) { return ::CheckMenuItem(m_hMenu, item, check); }
    UINT EnableMenuItem(UINT item, UINT enable) {
        return static_cast<UINT>(::EnableMenuItem(m_hMenu, item, enable));
    }
    BOOL CheckMenuRadioItem(UINT first, UINT last, UINT checked, UINT flags) {
        return ::CheckMenuRadioItem(m_hMenu, first, last, checked, flags);
    }
    BOOL SetDefaultItem(UINT item, BOOL by_position = FALSE) {
        return ::SetMenuDefaultItem(m_hMenu, item, static_cast<UINT>(by_position));
    }

    [[nodiscard]] int GetMenuItemCount() const { return ::GetMenuItemCount(m_hMenu); }
    [[nodiscard]] UINT GetMenuItemID(int position) const {
        return ::GetMenuItemID(m_hMenu, position);
    }
    [[nodiscard]] UINT GetMenuState(UINT item, UINT flags) const {
        return ::GetMenuState(m_hMenu, item, flags);
    }
    int GetMenuString(UINT item, CString& text, UINT flags) const;
    /// Null for an item without one.
    [[nodiscard]] CMenu* GetSubMenu(int position) const;

    BOOL TrackPopupMenu(UINT flags, int x, int y, CWnd* owner, const RECT* rect = nullptr);

    HMENU m_hMenu = nullptr;
};

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
