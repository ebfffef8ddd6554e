#include "tvutil2/ui/dpi.h"

#include "tvutil2/frame/dll_loader.h"
#include "tvutil2/framework/graphics.h"
#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/window/geometry.h"

#include <algorithm>
#include <atomic>

namespace {

constexpr int kBase = 96;
constexpr int kMostWithoutEx = 144;
constexpr int kStep = 24;

std::atomic<int> g_application{kBase};
std::atomic<int> g_images{kBase};

int dots_across(CDC* context) {
    return GetDeviceCaps(context != nullptr ? context->GetSafeHdc() : nullptr, LOGPIXELSX);
}

int dots_down(CDC* context) {
    return GetDeviceCaps(context != nullptr ? context->GetSafeHdc() : nullptr, LOGPIXELSY);
}

CSize scaled(int width, int height, int dots) {
    return {MulDiv(width, dots, kBase), MulDiv(height, dots, kBase)};
}

int image_step(int dots) {
    constexpr int kLast = 240;
    constexpr int kBeyond = 288;
    if (dots == kBase) return kBase;
    if (dots > kLast) return kBeyond;
    return std::max((std::max(dots, 0) + kStep - 1) / kStep * kStep, kBase + kStep);
}

using ForWindow = UINT(HWND);
using ForMonitor = HRESULT(HMONITOR, int, UINT*, UINT*);

template <class Function>
Function* found_in(const CDllLoader& module, const char* name) {
    return tvutil2::as_function<Function>(module.GetProcAddress(name));
}

}  // namespace

void GetDPI(CDC* pDC, int* pX, int* pY) {
    GetDPIEx(pDC, pX, pY);
    if (*pX > kMostWithoutEx) *pX = *pY = kMostWithoutEx;
}

void GetDPIEx(CDC* pDC, int* pX, int* pY) {
    *pX = dots_across(pDC);
    *pY = dots_down(pDC);
}

int GetCurrentDPI(CDC* pDC) {
    const auto dots = dots_across(pDC);
    if (dots <= kBase) return kBase;
    return dots <= kBase + kStep ? kBase + kStep : kMostWithoutEx;
}

int GetCurrentDPIEx(CDC* pDC) {
    return std::clamp(dots_across(pDC) / kStep * kStep, kBase, 240);
}

CSize GetScaleSize(CDC* pDC, int cx, int cy) {
    return scaled(cx, cy, std::min(dots_across(pDC), kMostWithoutEx));
}

CSize GetScaleSizeEx(CDC* pDC, int cx, int cy) {
    return scaled(cx, cy, dots_across(pDC));
}

int GetPrimaryDPI(CDC* pDC) {
    return dots_across(pDC);
}

int GetPerMonitorDPI(CDC* pDC) {
    const auto window_behind = [pDC]() -> HWND {
        auto* const window = CWnd::FromHandle(WindowFromDC(pDC->GetSafeHdc()));
        return window != nullptr ? window->GetSafeHwnd() : nullptr;
    };
    {
        const CDllLoader user(u"user32.DLL", 1);
        if (auto* const dots = found_in<ForWindow>(user, "GetDpiForWindow")) {
            return static_cast<int>(dots(window_behind()));
        }
    }
    auto* const monitor = MonitorFromWindow(window_behind(), MONITOR_DEFAULTTOPRIMARY);
    const CDllLoader shcore(u"shcore.dll", 1);
    UINT x = 0;
    UINT y = 0;
    auto* const dots = found_in<ForMonitor>(shcore, "GetDpiForMonitor");
    if (dots != nullptr && dots(monitor, MDT_EFFECTIVE_DPI, &x, &y) == S_OK) {
        return static_cast<int>(x);
    }
    return dots_across(pDC);
}

void InitAppDPI(CDC* pDC) {
    ResetAppDPI(static_cast<unsigned>(GetPerMonitorDPI(pDC)));
}

void ResetAppDPI(unsigned nDPI) {
    const auto dots = static_cast<int>(nDPI);
    g_application.store(dots, std::memory_order_relaxed);
    g_images.store(image_step(dots), std::memory_order_relaxed);
}

int GetAppDPI() {
    return g_application.load(std::memory_order_relaxed);
}

int GetImageDPI() {
    return g_images.load(std::memory_order_relaxed);
}

int GetAppScale(int n) {
    return MulDiv(n, GetAppDPI(), kBase);
}

int GetAppScale2(int n, int nBase) {
    return MulDiv(n, GetAppDPI(), nBase);
}

CSize GetAppScaleSize(int cx, int cy) {
    return scaled(cx, cy, GetAppDPI());
}

int GetDpiForMonitorScale(HWND hWnd) {
    auto* const monitor = MonitorFromWindow(hWnd, MONITOR_DEFAULTTONEAREST);
    const CDllLoader shcore(u"shcore.dll", 1);
    auto* const dots = found_in<ForMonitor>(shcore, "GetDpiForMonitor");
    UINT x = 0;
    UINT y = 0;
    if (dots == nullptr || dots(monitor, MDT_EFFECTIVE_DPI, &x, &y) < 0 || x == 0 || y == 0) {
        return -1;
    }
    return static_cast<int>(std::min(x / 96.0 * 100.0, 2147483647.0));
}
