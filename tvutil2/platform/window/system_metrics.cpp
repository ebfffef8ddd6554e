#include "tvutil2/platform/window/system_metrics.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/rect.h"

#include <algorithm>

namespace {

int screen_metric(int index) {
    const auto all = tvutil2::monitors();
    const auto& primary = all.front().area;
    auto whole = primary;
    for (const auto& each : all) UnionRect(&whole, &whole, &each.area);
    switch (index) {
        case SM_CXSCREEN:
            return primary.right - primary.left;
        case SM_CYSCREEN:
            return primary.bottom - primary.top;
        case SM_XVIRTUALSCREEN:
            return whole.left;
        case SM_YVIRTUALSCREEN:
            return whole.top;
        case SM_CXVIRTUALSCREEN:
            return whole.right - whole.left;
        case SM_CYVIRTUALSCREEN:
            return whole.bottom - whole.top;
        case SM_CMONITORS:
            return static_cast<int>(all.size());
        default:
            return 0;
    }
}

}  // namespace

int GetSystemMetricsForDpi(int index, UINT dpi) {
    int value = 0;
    return tvutil2::look_metric(index, dpi, value) ? value : screen_metric(index);
}

int GetSystemMetrics(int index) {
    return GetSystemMetricsForDpi(index, tvutil2::monitors().front().dpi);
}

BOOL SystemParametersInfoForDpi(UINT action, UINT /*size*/, void* data, UINT /*flags*/, UINT dpi) {
    auto* const metrics = static_cast<NONCLIENTMETRICSW*>(data);
    if (action != SPI_GETNONCLIENTMETRICS || metrics == nullptr ||
        metrics->cbSize != sizeof *metrics) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    tvutil2::fill_nonclient_metrics(dpi, *metrics);
    return TRUE;
}

BOOL SystemParametersInfoW(UINT action, UINT size, void* data, UINT flags) {
    const auto primary = tvutil2::monitors().front();
    if (action != SPI_GETWORKAREA || data == nullptr) {
        return SystemParametersInfoForDpi(action, size, data, flags, primary.dpi);
    }
    *static_cast<RECT*>(data) = primary.work;
    return TRUE;
}
