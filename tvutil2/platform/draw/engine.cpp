#include "tvutil2/platform/draw/engine.h"

#include "tvutil2/platform/process/own_module.h"

#include <algorithm>
#include <atomic>

namespace tvutil2 {
namespace {

// How far the controls of a curve stand off, of the radius, so that it looks like a quarter of a
// circle.
constexpr double kRound = 0.5522847498;

constinit std::atomic<Engine*> g_engine = nullptr;

}  // namespace

Path& Path::add_rect(double x, double y, double width, double height) {
    return move_to(x, y)
        .line_to(x + width, y)
        .line_to(x + width, y + height)
        .line_to(x, y + height)
        .close();
}

Path& Path::add_round_rect(double x, double y, double width, double height, double radius) {
    const auto r = std::min({radius, width / 2, height / 2});
    if (r <= 0) return add_rect(x, y, width, height);
    const auto k = r * (1 - kRound);
    const auto right = x + width;
    const auto bottom = y + height;
    return move_to(x + r, y)
        .line_to(right - r, y)
        .curve_to(right - k, y, right, y + k, right, y + r)
        .line_to(right, bottom - r)
        .curve_to(right, bottom - k, right - k, bottom, right - r, bottom)
        .line_to(x + r, bottom)
        .curve_to(x + k, bottom, x, bottom - k, x, bottom - r)
        .line_to(x, y + r)
        .curve_to(x, y + k, x + k, y, x + r, y)
        .close();
}

Path& Path::add_ellipse(double x, double y, double width, double height) {
    const auto rx = width / 2;
    const auto ry = height / 2;
    const auto kx = rx * kRound;
    const auto ky = ry * kRound;
    const auto cx = x + rx;
    const auto cy = y + ry;
    return move_to(cx, y)
        .curve_to(cx + kx, y, x + width, cy - ky, x + width, cy)
        .curve_to(x + width, cy + ky, cx + kx, y + height, cx, y + height)
        .curve_to(cx - kx, y + height, x, cy + ky, x, cy)
        .curve_to(x, cy - ky, cx - kx, y, cx, y)
        .close();
}

Engine* drawing_engine() {
    auto* known = g_engine.load(std::memory_order_acquire);
    if (known != nullptr) return known;
    auto* const open = reinterpret_cast<OpenEngine*>(own_module_function("draw", kOpenEngine));
    if (open == nullptr) return nullptr;
    auto* const engine = open();  // the same for everybody
    g_engine.store(engine, std::memory_order_release);
    return engine;
}

}  // namespace tvutil2
