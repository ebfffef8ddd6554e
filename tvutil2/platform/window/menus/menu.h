// Menus: their items, and how a person chooses one in a pop-up menu.
//
// A menu is a handle of its own and belongs to who made it; one that is an item's submenu goes with
// that item. Items are found by their position (MF_BYPOSITION) or by their number (MF_BYCOMMAND),
// in submenus as well. Functions give 0 with ERROR_INVALID_MENU_HANDLE for what is no menu,
// ERROR_MENU_ITEM_NOT_FOUND for an item that isn't there; menus nest 16 deep and hold 10,000 items
// each. All are safe from any thread. Items that their owner draws show their text.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

inline constexpr UINT MF_BYCOMMAND = 0;
inline constexpr UINT MF_BYPOSITION = 0x400;
inline constexpr UINT MF_ENABLED = 0;
inline constexpr UINT MF_STRING = 0;
inline constexpr UINT MF_UNCHECKED = 0;
inline constexpr UINT MF_GRAYED = 0x1;
inline constexpr UINT MF_DISABLED = 0x2;
inline constexpr UINT MF_CHECKED = 0x8;
inline constexpr UINT MF_POPUP = 0x10;
inline constexpr UINT MF_MENUBARBREAK = 0x20;
inline constexpr UINT MF_HILITE = 0x80;
inline constexpr UINT MF_OWNERDRAW = 0x100;
inline constexpr UINT MF_SEPARATOR = 0x800;
inline constexpr UINT MF_DEFAULT = 0x1000;
inline constexpr UINT MF_MOUSESELECT = 0x8000;

inline constexpr UINT MFT_STRING = 0;
inline constexpr UINT MFT_RADIOCHECK = 0x200;
inline constexpr UINT MFT_SEPARATOR = 0x800;
inline constexpr UINT MFS_GRAYED = 0x3;
inline constexpr UINT MFS_CHECKED = 0x8;
inline constexpr UINT MFS_DEFAULT = 0x1000;

inline constexpr UINT MIIM_STATE = 0x1;
inline constexpr UINT MIIM_ID = 0x2;
inline constexpr UINT MIIM_SUBMENU = 0x4;
inline constexpr UINT MIIM_TYPE = 0x10;
inline constexpr UINT MIIM_DATA = 0x20;
inline constexpr UINT MIIM_STRING = 0x40;
inline constexpr UINT MIIM_FTYPE = 0x100;

struct MENUITEMINFOW {
    UINT cbSize;
    UINT fMask;
    UINT fType;
    UINT fState;
    UINT wID;
    HMENU hSubMenu;
    HBITMAP hbmpChecked;
    HBITMAP hbmpUnchecked;
    std::uintptr_t dwItemData;
    char16_t* dwTypeData;
    UINT cch;
    HBITMAP hbmpItem;
};
using MENUITEMINFO = MENUITEMINFOW;

inline constexpr UINT TPM_LEFTALIGN = 0;
inline constexpr UINT TPM_RIGHTBUTTON = 0x2;
inline constexpr UINT TPM_CENTERALIGN = 0x4;
inline constexpr UINT TPM_RIGHTALIGN = 0x8;
inline constexpr UINT TPM_VCENTERALIGN = 0x10;
inline constexpr UINT TPM_BOTTOMALIGN = 0x20;
inline constexpr UINT TPM_NONOTIFY = 0x80;
inline constexpr UINT TPM_RETURNCMD = 0x100;

inline constexpr UINT WM_INITMENU = 0x116;
inline constexpr UINT WM_INITMENUPOPUP = 0x117;
inline constexpr UINT WM_MENUSELECT = 0x11F;
inline constexpr UINT WM_UNINITMENUPOPUP = 0x125;
inline constexpr UINT WM_ENTERMENULOOP = 0x211;
inline constexpr UINT WM_EXITMENULOOP = 0x212;

TVUTIL_API HMENU CreateMenu();
TVUTIL_API HMENU CreatePopupMenu();
/// With its submenus.
TVUTIL_API BOOL DestroyMenu(HMENU menu);
TVUTIL_API BOOL IsMenu(HMENU menu);

/// `id_or_menu` is a submenu with MF_POPUP. Text: "&" marks the mnemonic, behind a tab stands the
/// shortcut.
TVUTIL_API BOOL AppendMenuW(HMENU menu, UINT flags, UINT_PTR id_or_menu, const char16_t* text);
/// In front of an item; behind the last one where there is no such item.
TVUTIL_API BOOL InsertMenuW(HMENU menu, UINT item, UINT flags, UINT_PTR id_or_menu,
                            const char16_t* text);
TVUTIL_API BOOL InsertMenuItemW(HMENU menu, UINT item, BOOL by_position, const MENUITEMINFOW* info);
/// dwTypeData with cch units takes the text, which cch is the length of afterwards.
TVUTIL_API BOOL GetMenuItemInfoW(HMENU menu, UINT item, BOOL by_position, MENUITEMINFOW* info);
TVUTIL_API BOOL SetMenuItemInfoW(HMENU menu, UINT item, BOOL by_position,
                                 const MENUITEMINFOW* info);
TVUTIL_API BOOL ModifyMenuW(HMENU menu, UINT item, UINT flags, UINT_PTR id_or_menu,
                            const char16_t* text);
/// Takes an item away, and destroys its submenu.
TVUTIL_API BOOL DeleteMenu(HMENU menu, UINT item, UINT flags);
/// The submenu stays.
TVUTIL_API BOOL RemoveMenu(HMENU menu, UINT item, UINT flags);

/// -1 for what is no menu.
TVUTIL_API int GetMenuItemCount(HMENU menu);
/// The number; -1 for a submenu and where there is none.
TVUTIL_API UINT GetMenuItemID(HMENU menu, int position);
TVUTIL_API HMENU GetSubMenu(HMENU menu, int position);
/// The text, cut to `size` units with the zero: its length; with a null buffer the whole length.
TVUTIL_API int GetMenuStringW(HMENU menu, UINT item, char16_t* text, int size, UINT flags);
/// Its flags; of a submenu also its number of items in the second byte. -1 where there is none.
TVUTIL_API UINT GetMenuState(HMENU menu, UINT item, UINT flags);
/// The flag before; -1 where there is none.
TVUTIL_API DWORD CheckMenuItem(HMENU menu, UINT item, UINT flags);
TVUTIL_API BOOL EnableMenuItem(HMENU menu, UINT item, UINT flags);
/// Checks one of the items from `first` to `last`, as one of several, and no other.
TVUTIL_API BOOL CheckMenuRadioItem(HMENU menu, UINT first, UINT last, UINT checked, UINT flags);
/// The item that shows bold; none for -1.
TVUTIL_API BOOL SetMenuDefaultItem(HMENU menu, UINT item, UINT by_position);

/// Builds a menu from a template (MENU or MENUEX), which is read within 64 KB from its beginning
/// or, where it lies in a module's resources, within those. Null, with ERROR_INVALID_PARAMETER for
/// null, ERROR_INVALID_DATA for what is no whole template.
TVUTIL_API HMENU LoadMenuIndirectW(const void* menu_template);

/// The same from a module's resources, in whatever language is there first; null with the error of
/// FindResourceW.
TVUTIL_API HMENU LoadMenuW(HINSTANCE module, const char16_t* name);

/// Shows a pop-up menu at a place on the screen until the person has chosen or gone away. The
/// owner, a window of the calling thread, gets WM_COMMAND for what was chosen; with TPM_RETURNCMD
/// that is the result instead. 0 with ERROR_POPUP_ALREADY_ACTIVE while the thread shows one,
/// ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION without a display.
TVUTIL_API BOOL TrackPopupMenu(HMENU menu, UINT flags, int x, int y, int reserved, HWND owner,
                               const RECT* rect);
