// The class "SysListView32": rows with columns (LVS_REPORT), or icons with a text below
// (LVS_ICON). LVS_LIST and LVS_SMALLICON show as a report without a header.
//
// With LVS_OWNERDATA the list only counts its items and asks for what it shows (LVN_GETDISPINFOW).
#pragma once

#include "tvutil2/platform/window/controls/notify.h"

inline const char16_t* const WC_LISTVIEWW = u"SysListView32";

inline constexpr DWORD LVS_ICON = 0x0;
inline constexpr DWORD LVS_REPORT = 0x1;
inline constexpr DWORD LVS_SMALLICON = 0x2;
inline constexpr DWORD LVS_LIST = 0x3;
inline constexpr DWORD LVS_TYPEMASK = 0x3;
inline constexpr DWORD LVS_SINGLESEL = 0x4;
inline constexpr DWORD LVS_SHOWSELALWAYS = 0x8;
/// The person may change names: LVM_EDITLABELW opens an edit control over one.
inline constexpr DWORD LVS_EDITLABELS = 0x200;
inline constexpr DWORD LVS_OWNERDATA = 0x1000;
inline constexpr DWORD LVS_NOCOLUMNHEADER = 0x4000;

inline constexpr UINT LVIF_TEXT = 0x1;
inline constexpr UINT LVIF_IMAGE = 0x2;
inline constexpr UINT LVIF_PARAM = 0x4;
inline constexpr UINT LVIF_STATE = 0x8;
inline constexpr UINT LVIS_FOCUSED = 0x1;
inline constexpr UINT LVIS_SELECTED = 0x2;

struct LVITEMW {
    UINT mask;
    int iItem;
    int iSubItem;
    UINT state;
    UINT stateMask;
    char16_t* pszText;
    int cchTextMax;
    int iImage;
    LPARAM lParam;
};

inline constexpr UINT LVCF_FMT = 0x1;
inline constexpr UINT LVCF_WIDTH = 0x2;
inline constexpr UINT LVCF_TEXT = 0x4;
inline constexpr UINT LVCF_SUBITEM = 0x8;
inline constexpr int LVCFMT_LEFT = 0;
inline constexpr int LVCFMT_RIGHT = 1;
inline constexpr int LVCFMT_CENTER = 2;

struct LVCOLUMNW {
    UINT mask;
    int fmt;
    int cx;
    char16_t* pszText;
    int cchTextMax;
    int iSubItem;
};

struct LVHITTESTINFO {
    POINT pt;
    UINT flags;
    int iItem;
    int iSubItem;
};

struct NMLISTVIEW {
    NMHDR hdr;
    int iItem;
    int iSubItem;
    UINT uNewState;
    UINT uOldState;
    UINT uChanged;
    POINT ptAction;
    LPARAM lParam;
};
struct NMLVDISPINFOW {
    NMHDR hdr;
    LVITEMW item;
};

inline constexpr UINT LVN_ITEMCHANGED = 0U - 101;
inline constexpr UINT LVN_COLUMNCLICK = 0U - 108;
inline constexpr UINT LVN_ITEMACTIVATE = 0U - 114;
/// Non-zero keeps the name as it is.
inline constexpr UINT LVN_BEGINLABELEDITW = 0U - 175;
/// With NMLVDISPINFOW, whose text is null when the person gave up. Non-zero takes it over.
inline constexpr UINT LVN_ENDLABELEDITW = 0U - 176;
inline constexpr UINT LVN_GETDISPINFOW = 0U - 177;

inline constexpr int LVSIL_NORMAL = 0;
inline constexpr int LVSIL_SMALL = 1;
inline constexpr WPARAM LVNI_FOCUSED = 0x1;
inline constexpr WPARAM LVNI_SELECTED = 0x2;
/// A width as wide as the texts.
inline constexpr int LVSCW_AUTOSIZE = -1;

inline constexpr UINT LVM_SETIMAGELIST = 0x1003;
inline constexpr UINT LVM_GETITEMCOUNT = 0x1004;
inline constexpr UINT LVM_DELETEITEM = 0x1008;
inline constexpr UINT LVM_DELETEALLITEMS = 0x1009;
inline constexpr UINT LVM_GETNEXTITEM = 0x100C;
inline constexpr UINT LVM_GETITEMRECT = 0x100E;
inline constexpr UINT LVM_HITTEST = 0x1012;
inline constexpr UINT LVM_ENSUREVISIBLE = 0x1013;
/// The edit control over a name, or null.
inline constexpr UINT LVM_GETEDITCONTROL = 0x1018;
inline constexpr UINT LVM_DELETECOLUMN = 0x101C;
inline constexpr UINT LVM_GETCOLUMNWIDTH = 0x101D;
inline constexpr UINT LVM_SETCOLUMNWIDTH = 0x101E;
inline constexpr UINT LVM_GETTOPINDEX = 0x1027;
inline constexpr UINT LVM_GETCOUNTPERPAGE = 0x1028;
inline constexpr UINT LVM_SETITEMSTATE = 0x102B;
inline constexpr UINT LVM_GETITEMSTATE = 0x102C;
inline constexpr UINT LVM_SETITEMCOUNT = 0x102F;
inline constexpr UINT LVM_GETSELECTEDCOUNT = 0x1032;
inline constexpr UINT LVM_GETITEMW = 0x104B;
inline constexpr UINT LVM_SETITEMW = 0x104C;
inline constexpr UINT LVM_INSERTITEMW = 0x104D;
/// What the mask names of a column changes.
inline constexpr UINT LVM_SETCOLUMNW = 0x1060;
inline constexpr UINT LVM_INSERTCOLUMNW = 0x1061;
inline constexpr UINT LVM_GETITEMTEXTW = 0x1073;
inline constexpr UINT LVM_SETITEMTEXTW = 0x1074;
/// The edit control over an item's name, null where there is none. It ends by Enter, by Esc, when
/// it loses the focus, and when the number of items changes.
inline constexpr UINT LVM_EDITLABELW = 0x1076;
