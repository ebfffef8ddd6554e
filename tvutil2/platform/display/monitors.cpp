#include "tvutil2/platform/display/monitors.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/theme.h"

#include <algorithm>
#include <cstdint>
#include <mutex>

namespace tvutil2 {
namespace {

struct Known {
    std::mutex lock;
    std::vector<Monitor> all;  // none: there is no display

    static Known& instance() {
        static auto* const known = new Known;  // never destroyed: threads end behind static objects
        return *known;
    }
};

HMONITOR handle_of(std::size_t index) {
    return reinterpret_cast<HMONITOR>(std::uintptr_t{0x10001} + index);
}

std::int64_t common_area(const RECT& one, const RECT& other) {
    const auto width =
        std::int64_t{std::min(one.right, other.right)} - std::max(one.left, other.left);
    const auto height =
        std::int64_t{std::min(one.bottom, other.bottom)} - std::max(one.top, other.top);
    return width > 0 && height > 0 ? width * height : 0;
}

std::int64_t distance(const RECT& one, const RECT& other) {
    const auto gap = [](std::int64_t low, std::int64_t high, std::int64_t other_low,
                        std::int64_t other_high) {
        return std::max({std::int64_t{0}, other_low - high, low - other_high});
    };
    return gap(one.left, one.right, other.left, other.right) +
           gap(one.top, one.bottom, other.top, other.bottom);
}

// The index of the monitor, and whether it has some of the rectangle.
std::pair<std::size_t, bool> find(const std::vector<Monitor>& all, const RECT& rect) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < all.size(); ++i) {
        const auto area = common_area(all[i].area, rect);
        const auto best_area = common_area(all[best].area, rect);
        if (area > best_area ||
            (best_area == 0 && distance(all[i].area, rect) < distance(all[best].area, rect))) {
            best = i;
        }
    }
    return {best, common_area(all[best].area, rect) != 0};
}

}  // namespace

std::vector<Monitor> monitors() {
    auto& known = Known::instance();
    const std::lock_guard guard(known.lock);
    if (!known.all.empty()) return known.all;
    return {{{0, 0, 1920, 1080}, {0, 0, 1920, 1080}, system_dpi()}};
}

void set_monitors(std::vector<Monitor> monitors) {
    for (auto& each : monitors) each.dpi = held_dpi(each.dpi);
    auto& known = Known::instance();
    const std::lock_guard guard(known.lock);
    known.all = std::move(monitors);
}

Monitor monitor_at(const RECT& rect) {
    const auto all = monitors();
    return all[find(all, rect).first];
}

}  // namespace tvutil2

HMONITOR MonitorFromRect(const RECT* rect, DWORD flags) {
    const auto [index, is_on_it] = tvutil2::find(tvutil2::monitors(), *rect);
    if (is_on_it || flags == MONITOR_DEFAULTTONEAREST) return tvutil2::handle_of(index);
    return flags == MONITOR_DEFAULTTOPRIMARY ? tvutil2::handle_of(0) : nullptr;
}

HMONITOR MonitorFromPoint(POINT point, DWORD flags) {
    const RECT rect{point.x, point.y, point.x + 1, point.y + 1};
    return MonitorFromRect(&rect, flags);
}

BOOL GetMonitorInfoW(HMONITOR monitor, MONITORINFO* info) {
    const auto all = tvutil2::monitors();
    const auto index = reinterpret_cast<std::uintptr_t>(monitor) - 0x10001;
    if (index >= all.size()) return tvutil2::fail_with(ERROR_INVALID_HANDLE);
    if (info->cbSize != sizeof *info) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    info->rcMonitor = all[index].area;
    info->rcWork = all[index].work;
    info->dwFlags = index == 0 ? MONITORINFOF_PRIMARY : 0;
    return TRUE;
}

HRESULT GetDpiForMonitor(HMONITOR monitor, int kind, UINT* x, UINT* y) {
    const auto all = tvutil2::monitors();
    const auto index = reinterpret_cast<std::uintptr_t>(monitor) - 0x10001;
    if (index >= all.size() || kind < 0 || kind > 2 || x == nullptr || y == nullptr) {
        return E_INVALIDARG;
    }
    *x = *y = all[index].dpi;
    return S_OK;
}
