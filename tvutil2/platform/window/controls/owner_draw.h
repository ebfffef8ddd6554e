// Controls that their owner draws: WM_DRAWITEM, which the parent gets.
#pragma once

#include "tvutil2/platform/base/types.h"

inline constexpr UINT ODT_MENU = 1;
inline constexpr UINT ODT_LISTBOX = 2;
inline constexpr UINT ODT_COMBOBOX = 3;
inline constexpr UINT ODT_BUTTON = 4;
inline constexpr UINT ODT_STATIC = 5;
inline constexpr UINT ODA_DRAWENTIRE = 1;
inline constexpr UINT ODA_SELECT = 2;
inline constexpr UINT ODA_FOCUS = 4;
inline constexpr UINT ODS_SELECTED = 0x1;
inline constexpr UINT ODS_GRAYED = 0x2;
inline constexpr UINT ODS_DISABLED = 0x4;
inline constexpr UINT ODS_FOCUS = 0x10;
inline constexpr UINT ODS_DEFAULT = 0x20;
inline constexpr UINT ODS_HOTLIGHT = 0x40;

/// What WM_DRAWITEM points to. The rectangle counts from the control's client area.
struct DRAWITEMSTRUCT {
    UINT CtlType;
    UINT CtlID;
    UINT itemID;
    UINT itemAction;
    UINT itemState;
    HWND hwndItem;
    HDC hDC;
    RECT rcItem;
    std::uintptr_t itemData;
};

namespace tvutil2 {

struct OwnerDrawn {
    UINT type;
    HWND control;
    HDC context;
    RECT area;
    UINT state;
};
/// Sends WM_DRAWITEM for all of a control that has no items.
void ask_owner_to_draw(const OwnerDrawn& drawn);

}  // namespace tvutil2
