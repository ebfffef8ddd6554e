#include "tvutil2/platform/display/module/desktop_look.h"

#include <gdk/gdkx.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string_view>

namespace tvutil2 {
namespace {

using Text = std::unique_ptr<char, decltype(&g_free)>;

Text setting(const char* name) {
    char* value = nullptr;
    g_object_get(gtk_settings_get_default(), name, &value, nullptr);
    return {value, &g_free};
}

bool contains(const char* text, std::string_view part) {
    return text != nullptr && std::string_view(text).find(part) != std::string_view::npos;
}

constexpr auto kSettings = "org.freedesktop.portal.Settings";
constexpr auto kAppearance = "org.freedesktop.appearance";
constexpr auto kColorScheme = "color-scheme";
constexpr auto kContrast = "contrast";

// Values of the settings portal's interface: 0 is no preference.
struct Preference {
    guint32 colors = 0;  // 1 dark, 2 light
    guint32 contrast = 0;
    void (*changed)(void*) = nullptr;
    void* data = nullptr;
};

// Of the desktop's thread.
Preference g_preference;

void take_preference(const char* name, GVariant* value) {
    // A variant in a variant, by the first version of the interface.
    GVariant* inner = g_variant_ref(value);
    while (g_variant_is_of_type(inner, G_VARIANT_TYPE_VARIANT)) {
        auto* const next = g_variant_get_variant(inner);
        g_variant_unref(inner);
        inner = next;
    }
    const bool is_number = g_variant_is_of_type(inner, G_VARIANT_TYPE_UINT32) != FALSE;
    const auto number = is_number ? g_variant_get_uint32(inner) : 0;
    g_variant_unref(inner);
    auto& known = std::string_view(name) == kContrast ? g_preference.contrast : g_preference.colors;
    if (!is_number || known == number) return;
    known = number;
    g_preference.changed(g_preference.data);
}

void on_preference(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                   const char* /*interface*/, const char* /*signal*/, GVariant* arguments,
                   gpointer /*data*/) {
    if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ssv)"))) return;
    const char* group = nullptr;
    const char* name = nullptr;
    GVariant* value = nullptr;
    g_variant_get(arguments, "(&s&sv)", &group, &name, &value);
    const std::string_view which = name;
    if (std::string_view(group) == kAppearance && (which == kColorScheme || which == kContrast)) {
        take_preference(name, value);
    }
    g_variant_unref(value);
}

// `name` is one of the constants.
void on_answer(GObject* bus, GAsyncResult* result, gpointer name) {
    auto* const answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr);
    if (answer == nullptr) return;
    GVariant* value = nullptr;
    g_variant_get(answer, "(v)", &value);
    take_preference(static_cast<const char*>(name), value);
    g_variant_unref(value);
    g_variant_unref(answer);
}

void on_bus(GObject* /*source*/, GAsyncResult* result, gpointer /*data*/) {
    auto* const bus = g_bus_get_finish(result, nullptr);
    if (bus == nullptr) return;
    // The session's end isn't the program's.
    g_dbus_connection_set_exit_on_close(bus, FALSE);
    constexpr auto kService = "org.freedesktop.portal.Desktop";
    constexpr auto kPath = "/org/freedesktop/portal/desktop";
    g_dbus_connection_signal_subscribe(bus, kService, kSettings, "SettingChanged", kPath,
                                       kAppearance, G_DBUS_SIGNAL_FLAGS_NONE, on_preference,
                                       nullptr, nullptr);
    for (const auto* const name : {kColorScheme, kContrast}) {
        g_dbus_connection_call(bus, kService, kPath, kSettings, "Read",
                               g_variant_new("(ss)", kAppearance, name), G_VARIANT_TYPE("(v)"),
                               G_DBUS_CALL_FLAGS_NONE, -1, nullptr, on_answer,
                               const_cast<char*>(name));
    }
    // The bus stays for as long as the desktop is listened to.
}

// Monitors of different scales lie in the desktop's units side by side; here, in pixels, no two may
// overlap.
int scale_of_places() {
    auto* const display = gdk_display_get_default();
    int scale = 1;
    for (int i = 0; i < gdk_display_get_n_monitors(display); ++i) {
        scale = std::max(scale, gdk_monitor_get_scale_factor(gdk_display_get_monitor(display, i)));
    }
    return scale;
}

Monitor described(GdkMonitor* monitor, int place_scale) {
    const int scale = gdk_monitor_get_scale_factor(monitor);
    GdkRectangle all{};
    GdkRectangle work{};
    gdk_monitor_get_geometry(monitor, &all);
    gdk_monitor_get_workarea(monitor, &work);
    const LONG left = all.x * place_scale;
    const LONG top = all.y * place_scale;
    const auto pixels = [&](const GdkRectangle& rect) {
        const LONG x = left + (rect.x - all.x) * scale;
        const LONG y = top + (rect.y - all.y) * scale;
        return RECT{x, y, x + rect.width * scale, y + rect.height * scale};
    };
    return {pixels(all), pixels(work), desktop_dpi(scale)};
}

}  // namespace

std::vector<Monitor> desktop_monitors() {
    auto* const display = gdk_display_get_default();
    const int scale = scale_of_places();
    std::vector<Monitor> all;
    auto* const primary = gdk_display_get_primary_monitor(display);
    if (primary != nullptr) all.push_back(described(primary, scale));
    for (int i = 0; i < gdk_display_get_n_monitors(display); ++i) {
        auto* const monitor = gdk_display_get_monitor(display, i);
        if (monitor != primary) all.push_back(described(monitor, scale));
    }
    return all;
}

UINT desktop_dpi(int scale) {
    constexpr double kLeast = 24;
    constexpr double kMost = 960;
    gint dots = 0;  // in 1,024ths
    g_object_get(gtk_settings_get_default(), "gtk-xft-dpi", &dots, nullptr);
    return static_cast<UINT>(
        std::lround(std::clamp((dots > 0 ? dots / 1024.0 : 96) * scale, kLeast, kMost)));
}

ThemeMode desktop_theme_mode() {
    const auto name = setting("gtk-theme-name");
    if (g_preference.contrast == 1 || contains(name.get(), "HighContrast")) {
        return ThemeMode::high_contrast;
    }
    if (g_preference.colors == 1) return ThemeMode::dark;
    if (g_preference.colors == 2) return ThemeMode::light;
    gboolean prefers_dark = FALSE;
    g_object_get(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", &prefers_dark,
                 nullptr);
    const bool is_dark =
        prefers_dark || contains(name.get(), "-dark") || contains(name.get(), "-Dark");
    return is_dark ? ThemeMode::dark : ThemeMode::light;
}

void watch_colors(void (*changed)(void* data), void* data) {
    g_preference.changed = changed;
    g_preference.data = data;
    g_bus_get(G_BUS_TYPE_SESSION, nullptr, on_bus, nullptr);
}

std::u16string desktop_font() {
    const auto name = setting("gtk-font-name");
    if (name == nullptr) return {};
    auto* const description = pango_font_description_from_string(name.get());
    auto family = utf16_of(pango_font_description_get_family(description));
    pango_font_description_free(description);
    return family;
}

std::u16string utf16_of(const char* text) {
    if (text == nullptr) return {};
    glong count = 0;
    const std::unique_ptr<gunichar2, decltype(&g_free)> units(
        g_utf8_to_utf16(text, -1, nullptr, &count, nullptr), &g_free);
    return units ? std::u16string(units.get(), units.get() + count) : std::u16string{};
}

std::string utf8_of(const std::u16string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        gunichar character = text[i];
        const bool is_pair = (character & 0xFC00) == 0xD800 && i + 1 < text.size() &&
                             (text[i + 1] & 0xFC00) == 0xDC00;
        if (is_pair) character = 0x10000 + ((character & 0x3FF) << 10) + (text[++i] & 0x3FF);
        if ((character & 0xFFFFF800) == 0xD800) character = 0xFFFD;
        char bytes[6];
        result.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(character, bytes)));
    }
    return result;
}

}  // namespace tvutil2
