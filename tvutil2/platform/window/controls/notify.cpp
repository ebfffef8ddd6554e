#include "tvutil2/platform/window/controls/notify.h"

#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

namespace tvutil2 {

LRESULT notify_parent_of(HWND control, NMHDR& header, UINT code) {
    header = {control, static_cast<UINT_PTR>(GetDlgCtrlID(control)), code};
    auto* const parent = GetParent(control);
    if (parent == nullptr) return 0;
    return SendMessageW(parent, WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

}  // namespace tvutil2
