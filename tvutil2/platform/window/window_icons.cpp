#include "tvutil2/platform/window/window_icons.h"

#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/picture/icons.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/default_paint.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/window_table.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

LRESULT set_icon(HWND window, WPARAM which, HICON icon) {
    if (which > ICON_BIG) return 0;
    HICON before = nullptr;
    {
        const TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return 0;
        before = std::exchange(record->icons[which], icon);
    }
    if (before != icon) {
        tell_display(window, false);
        repaint_frame(window);
    }
    return reinterpret_cast<LRESULT>(before);
}

LRESULT get_icon(HWND window, WPARAM which) {
    const TreeLock tree;
    const auto* const record = tree.find(window);
    if (record == nullptr || which > ICON_SMALL2) return 0;
    return reinterpret_cast<LRESULT>(which == ICON_SMALL2 ? icons_of(*record)[ICON_SMALL]
                                                          : record->icons[which]);
}

}  // namespace

WindowIcons icons_of(const Window& window) {
    const auto& of_class = window.window_class->description;
    auto icons = window.icons;
    if (icons[ICON_SMALL] == nullptr) icons[ICON_SMALL] = of_class.hIconSm;
    if (icons[ICON_BIG] == nullptr) icons[ICON_BIG] = of_class.hIcon;
    // Where there is one alone it is shown at both sizes.
    if (icons[ICON_SMALL] == nullptr) icons[ICON_SMALL] = icons[ICON_BIG];
    return icons;
}

std::vector<std::shared_ptr<const Surface>> pictures_of(const WindowIcons& icons) {
    std::vector<std::shared_ptr<const Surface>> pictures;
    for (auto* const icon : icons) {
        SIZE size{};
        auto pixels = icon != nullptr ? icon_pixels(icon, size) : nullptr;
        const bool is_new = std::find(pictures.begin(), pictures.end(), pixels) == pictures.end();
        if (pixels && is_new) pictures.push_back(std::move(pixels));
    }
    return pictures;
}

bool handle_icon_message(HWND window, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
    if (message == WM_SETICON) {
        result = set_icon(window, wparam, reinterpret_cast<HICON>(lparam));
    } else if (message == WM_GETICON) {
        result = get_icon(window, wparam);
    }
    return message == WM_SETICON || message == WM_GETICON;
}

}  // namespace tvutil2
