// The class "SysTreeView32": items with items below them, which open and close.
#pragma once

#include "tvutil2/platform/window/controls/notify.h"

inline const char16_t* const WC_TREEVIEWW = u"SysTreeView32";

inline constexpr DWORD TVS_HASBUTTONS = 0x1;
inline constexpr DWORD TVS_HASLINES = 0x2;
inline constexpr DWORD TVS_LINESATROOT = 0x4;
/// TVM_EDITLABELW works: names are changed in their place.
inline constexpr DWORD TVS_EDITLABELS = 0x8;
inline constexpr DWORD TVS_SHOWSELALWAYS = 0x20;

using HTREEITEM = struct TREEITEM__*;
inline const HTREEITEM TVI_ROOT = reinterpret_cast<HTREEITEM>(std::intptr_t{-0x10000});
inline const HTREEITEM TVI_FIRST = reinterpret_cast<HTREEITEM>(std::intptr_t{-0xFFFF});
inline const HTREEITEM TVI_LAST = reinterpret_cast<HTREEITEM>(std::intptr_t{-0xFFFE});
inline const HTREEITEM TVI_SORT = reinterpret_cast<HTREEITEM>(std::intptr_t{-0xFFFD});

inline constexpr UINT TVIF_TEXT = 0x1;
inline constexpr UINT TVIF_IMAGE = 0x2;
inline constexpr UINT TVIF_PARAM = 0x4;
inline constexpr UINT TVIF_STATE = 0x8;
inline constexpr UINT TVIF_HANDLE = 0x10;
inline constexpr UINT TVIF_CHILDREN = 0x40;
inline constexpr UINT TVIS_SELECTED = 0x2;
inline constexpr UINT TVIS_EXPANDED = 0x20;

struct TVITEMW {
    UINT mask;
    HTREEITEM hItem;
    UINT state;
    UINT stateMask;
    char16_t* pszText;
    int cchTextMax;
    int iImage;
    int iSelectedImage;
    int cChildren;  ///< other than 0: it has some, which may be inserted when it opens
    LPARAM lParam;
};
struct TVINSERTSTRUCTW {
    HTREEITEM hParent;
    HTREEITEM hInsertAfter;
    TVITEMW item;
};
struct NMTREEVIEWW {
    NMHDR hdr;
    UINT action;
    TVITEMW itemOld, itemNew;
    POINT ptDrag;
};
struct NMTVDISPINFOW {
    NMHDR hdr;
    TVITEMW item;
};
struct TVHITTESTINFO {
    POINT pt;
    UINT flags;
    HTREEITEM hItem;
};

/// By the pointer, by a key, or by neither.
inline constexpr UINT TVC_UNKNOWN = 0;
inline constexpr UINT TVC_BYMOUSE = 1;
inline constexpr UINT TVC_BYKEYBOARD = 2;

inline constexpr UINT TVN_SELCHANGEDW = 0U - 451;
inline constexpr UINT TVN_ITEMEXPANDINGW = 0U - 454;
inline constexpr UINT TVN_ITEMEXPANDEDW = 0U - 455;
inline constexpr UINT TVN_DELETEITEMW = 0U - 458;
/// Other than 0 forbids it.
inline constexpr UINT TVN_BEGINLABELEDITW = 0U - 459;
/// The text is null when the person gave up; other than 0 puts it into the item.
inline constexpr UINT TVN_ENDLABELEDITW = 0U - 460;

inline constexpr WPARAM TVE_COLLAPSE = 1;
inline constexpr WPARAM TVE_EXPAND = 2;
inline constexpr WPARAM TVE_TOGGLE = 3;
inline constexpr WPARAM TVGN_ROOT = 0;
inline constexpr WPARAM TVGN_NEXT = 1;
inline constexpr WPARAM TVGN_PREVIOUS = 2;
inline constexpr WPARAM TVGN_PARENT = 3;
inline constexpr WPARAM TVGN_CHILD = 4;
inline constexpr WPARAM TVGN_CARET = 9;

inline constexpr UINT TVM_DELETEITEM = 0x1101;
inline constexpr UINT TVM_EXPAND = 0x1102;
inline constexpr UINT TVM_GETITEMRECT = 0x1104;
inline constexpr UINT TVM_GETCOUNT = 0x1105;
inline constexpr UINT TVM_SETIMAGELIST = 0x1109;
inline constexpr UINT TVM_GETNEXTITEM = 0x110A;
inline constexpr UINT TVM_SELECTITEM = 0x110B;
inline constexpr UINT TVM_GETEDITCONTROL = 0x110F;
inline constexpr UINT TVM_HITTEST = 0x1111;
inline constexpr UINT TVM_ENSUREVISIBLE = 0x1114;
/// wparam other than 0 gives up.
inline constexpr UINT TVM_ENDEDITLABELNOW = 0x1116;
inline constexpr UINT TVM_INSERTITEMW = 0x1132;
inline constexpr UINT TVM_GETITEMW = 0x113E;
inline constexpr UINT TVM_SETITEMW = 0x113F;
/// The edit control, or null.
inline constexpr UINT TVM_EDITLABELW = 0x1141;
