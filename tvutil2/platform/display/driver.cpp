#include "tvutil2/platform/display/driver.h"

#include "tvutil2/platform/base/service_thread.h"
#include "tvutil2/platform/display/offscreen.h"
#include "tvutil2/platform/process/own_module.h"

#include <cstdlib>
#include <cstring>

namespace tvutil2 {
namespace {

bool names_something(const char* variable) {
    const auto* const value = std::getenv(variable);
    return value != nullptr && *value != 0;
}

void take_monitors(std::vector<Monitor> monitors) {
    if (!monitors.empty()) set_system_dpi(monitors.front().dpi);
    set_monitors(std::move(monitors));
}

void take_look(ThemeMode mode, const char16_t* font_family) {
    set_theme_mode(mode);
    set_interface_font(font_family);
}

std::unique_ptr<Driver> make_desktop_driver(InputSink sink) {
    const auto make =
        reinterpret_cast<MakeDriver>(own_module_function("desktop", "tvutil2_make_driver"));
    if (make == nullptr) return nullptr;
    return std::unique_ptr<Driver>(make({sink, take_monitors, take_look, start_service_thread}));
}

}  // namespace

std::unique_ptr<Driver> make_driver(InputSink sink) {
    const auto* const wish = std::getenv("TVUTIL_DISPLAY");
    if (wish != nullptr && std::strcmp(wish, "none") == 0) return nullptr;
    if (wish != nullptr && std::strcmp(wish, "offscreen") == 0)
        return std::make_unique<OffscreenDriver>();
    const bool has_desktop = (wish != nullptr && std::strcmp(wish, "desktop") == 0) ||
                             names_something("WAYLAND_DISPLAY") || names_something("DISPLAY");
    return has_desktop ? make_desktop_driver(sink) : nullptr;
}

bool operator==(const Shown& a, const Shown& b) {
    const auto same = [](const RECT& one, const RECT& other) {
        return std::memcmp(&one, &other, sizeof one) == 0;
    };
    return a.window == b.window && a.owner == b.owner && same(a.place, b.place) &&
           a.place_number == b.place_number && same(a.content, b.content) && same(a.base, b.base) &&
           a.least.cx == b.least.cx && a.least.cy == b.least.cy && a.style == b.style &&
           a.ex_style == b.ex_style && a.dpi == b.dpi && a.title == b.title &&
           a.is_enabled == b.is_enabled && a.icons == b.icons;
}

}  // namespace tvutil2
