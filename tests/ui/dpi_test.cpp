#include "tvutil2/ui/dpi.h"

#include "tvutil2/framework/graphics.h"
#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/process/system_modules.h"
#include "tvutil2/platform/window/paint.h"

#include <gtest/gtest.h>

namespace {

class Dpi : public testing::Test {
  protected:
    ~Dpi() override {
        tvutil2::set_system_dpi(96);
        tvutil2::set_monitors({});
        ResetAppDPI(96);
    }
};

TEST_F(Dpi, StepsOfADevice) {
    const struct {
        UINT dots;
        int up, down, limited;
    } cases[] = {{72, 96, 96, 72},     {96, 96, 96, 96},     {97, 120, 96, 97},
                 {119, 120, 96, 119},  {120, 120, 120, 120}, {121, 144, 120, 121},
                 {168, 144, 168, 144}, {239, 144, 216, 144}, {300, 144, 240, 144}};
    for (const auto& each : cases) {
        tvutil2::set_system_dpi(each.dots);
        CDC context;
        ASSERT_TRUE(context.CreateCompatibleDC(nullptr));
        EXPECT_EQ(GetCurrentDPI(&context), each.up) << each.dots;
        EXPECT_EQ(GetCurrentDPIEx(&context), each.down) << each.dots;
        EXPECT_EQ(GetPrimaryDPI(&context), static_cast<int>(each.dots));
        int x = 0;
        int y = 0;
        GetDPI(&context, &x, &y);
        EXPECT_EQ(x, each.limited);
        EXPECT_EQ(y, each.limited);
        GetDPIEx(&context, &x, &y);
        EXPECT_EQ(x, static_cast<int>(each.dots));
        EXPECT_EQ(GetScaleSize(&context, 96, 192), CSize(each.limited, 2 * each.limited));
        EXPECT_EQ(GetScaleSizeEx(&context, 96, 192), CSize(x, 2 * x));
    }
    EXPECT_EQ(GetCurrentDPI(nullptr), 96);
    EXPECT_EQ(GetCurrentDPIEx(nullptr), 96);
    EXPECT_EQ(GetScaleSize(nullptr, 5, 5), CSize(0, 0));
}

TEST_F(Dpi, TheApplicationsAndItsImages) {
    EXPECT_EQ(GetAppDPI(), 96);
    const struct {
        unsigned dots;
        int images;
    } cases[] = {{0, 120},   {72, 120},  {96, 96},   {97, 120},  {121, 144}, {145, 168},
                 {192, 192}, {216, 216}, {240, 240}, {241, 288}, {900, 288}, {0x80000000, 120}};
    for (const auto& each : cases) {
        ResetAppDPI(each.dots);
        EXPECT_EQ(GetAppDPI(), static_cast<int>(each.dots));
        EXPECT_EQ(GetImageDPI(), each.images) << each.dots;
    }
    ResetAppDPI(144);
    EXPECT_EQ(GetAppScale(1), 2);
    EXPECT_EQ(GetAppScale(-1), -2);
    EXPECT_EQ(GetAppScale2(100, 0), -1);
    EXPECT_EQ(GetAppScale2(100, 72), 200);
    EXPECT_EQ(GetAppScaleSize(10, 3), CSize(15, 5));
}

// What is asked of the platform first, and what when that isn't there.
TEST_F(Dpi, TheWindowsTheMonitorsOrTheDevices) {
    tvutil2::set_system_dpi(120);
    tvutil2::set_monitors({{{0, 0, 800, 600}, {0, 0, 800, 600}, 144}});
    CWnd window;
    ASSERT_TRUE(window.CreateEx(0, u"Static", u"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr));
    CDC context;
    context.Attach(GetDC(window));
    EXPECT_EQ(GetPerMonitorDPI(&context), 144);
    InitAppDPI(&context);
    EXPECT_EQ(GetAppDPI(), 144);
    EXPECT_EQ(GetDpiForMonitorScale(window), 150);
    tvutil2::set_monitors({{{0, 0, 800, 600}, {0, 0, 800, 600}, 110}});
    EXPECT_EQ(GetDpiForMonitorScale(window), 114);

    const auto of_window =
        tvutil2::exchange_system_export(u"user32.dll", "GetDpiForWindow", nullptr);
    EXPECT_EQ(GetPerMonitorDPI(&context), 110);
    const auto failing =
        tvutil2::as_export(+[](HMONITOR, int, UINT*, UINT*) -> HRESULT { return E_INVALIDARG; });
    const auto of_monitor =
        tvutil2::exchange_system_export(u"shcore.dll", "GetDpiForMonitor", failing);
    EXPECT_EQ(GetPerMonitorDPI(&context), 144);
    EXPECT_EQ(GetDpiForMonitorScale(window), -1);
    tvutil2::set_system_module_present(u"shcore.dll", false);
    EXPECT_EQ(GetDpiForMonitorScale(window), -1);
    tvutil2::set_system_module_present(u"shcore.dll", true);
    tvutil2::exchange_system_export(u"shcore.dll", "GetDpiForMonitor", of_monitor);
    tvutil2::exchange_system_export(u"user32.dll", "GetDpiForWindow", of_window);
    ReleaseDC(window, context.Detach());
}

}  // namespace
