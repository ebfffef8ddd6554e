// WM_NOTIFY: what controls of lists and trees tell their parent.
#pragma once

#include "tvutil2/platform/base/types.h"

/// What lparam of WM_NOTIFY points to, at the beginning of what the code has.
struct NMHDR {
    HWND hwndFrom;
    UINT_PTR idFrom;
    UINT code;
};

inline constexpr UINT NM_CLICK = 0U - 2;
inline constexpr UINT NM_DBLCLK = 0U - 3;
inline constexpr UINT NM_RETURN = 0U - 4;
inline constexpr UINT NM_RCLICK = 0U - 5;
inline constexpr UINT NM_SETFOCUS = 0U - 7;
inline constexpr UINT NM_KILLFOCUS = 0U - 8;

namespace tvutil2 {

/// Sends WM_NOTIFY; fills in the header.
LRESULT notify_parent_of(HWND control, NMHDR& header, UINT code);

}  // namespace tvutil2
