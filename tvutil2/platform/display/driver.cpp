#include "tvutil2/platform/display/driver.h"

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

std::unique_ptr<Driver> make_desktop_driver(InputSink sink) {
    const auto make =
        reinterpret_cast<MakeDriver>(own_module_function("desktop", "tvutil2_make_driver"));
    return std::unique_ptr<Driver>(make != nullptr ? make(sink) : nullptr);
}

}  // namespace

std::unique_ptr<Driver> make_driver(InputSink sink) {
    const auto* const wish = std::getenv("TVUTIL_DISPLAY");
    if (wish != nullptr && std::strcmp(wish, "none") == 0) return nullptr;
    if (wish != nullptr && std::strcmp(wish, "offscreen") == 0)
        return std::make_unique<OffscreenDriver>();
    const bool has_desktop = names_something("WAYLAND_DISPLAY") || names_something("DISPLAY");
    return has_desktop ? make_desktop_driver(sink) : nullptr;
}

bool operator==(const Shown& a, const Shown& b) {
    const auto same = [](const RECT& one, const RECT& other) {
        return std::memcmp(&one, &other, sizeof one) == 0;
    };
    return a.window == b.window && a.owner == b.owner && same(a.place, b.place) &&
           same(a.content, b.content) && a.least.cx == b.least.cx && a.least.cy == b.least.cy &&
           a.style == b.style && a.ex_style == b.ex_style && a.dpi == b.dpi && a.title == b.title &&
           a.is_enabled == b.is_enabled;
}

}  // namespace tvutil2
