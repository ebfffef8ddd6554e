#include "tvutil2/platform/window/packet.h"

#include "tvutil2/platform/window/window_types.h"

#include <algorithm>
#include <array>

namespace tvutil2 {
namespace {

constexpr std::array<UINT, 19> kPointing{WM_CREATE,
                                         WM_SETTEXT,
                                         WM_GETTEXT,
                                         WM_GETMINMAXINFO,
                                         WM_DRAWITEM,
                                         WM_MEASUREITEM,
                                         WM_DELETEITEM,
                                         WM_COMPAREITEM,
                                         WM_WINDOWPOSCHANGING,
                                         WM_WINDOWPOSCHANGED,
                                         WM_COPYDATA,
                                         WM_NOTIFY,
                                         WM_HELP,
                                         WM_STYLECHANGING,
                                         WM_STYLECHANGED,
                                         WM_NCCREATE,
                                         WM_NCCALCSIZE,
                                         WM_SIZING,
                                         WM_MOVING};

// The messages of edits, combo boxes and list boxes, many of which do.
constexpr bool is_of_control(UINT message) {
    return (message >= 0x00B0 && message <= 0x00DF) || (message >= 0x0140 && message <= 0x0165) ||
           (message >= 0x0180 && message <= 0x01B5);
}

}  // namespace

bool goes_along(UINT message) {
    return message == WM_SETTEXT || message == WM_GETTEXT || message == WM_COPYDATA;
}

bool points_to_memory(UINT message) {
    return std::find(kPointing.begin(), kPointing.end(), message) != kPointing.end();
}

bool stays_in_process(UINT message) {
    return (points_to_memory(message) && !goes_along(message)) || is_of_control(message);
}

}  // namespace tvutil2
