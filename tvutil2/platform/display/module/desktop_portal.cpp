#include "tvutil2/platform/display/module/desktop_portal.h"

#include <memory>
#include <utility>

namespace tvutil2 {
namespace {

// What an answer may take: the portal may have to be started first.
constexpr guint kPatienceMilliseconds = 1500;
constexpr guint kPauseMilliseconds = 1500;

using Connection = std::unique_ptr<GDBusConnection, decltype(&g_object_unref)>;

// For callbacks that come once, with the watch unless that has ended.
bool is_cancelled(const GError* error) {
    return g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
}

// 0 for what is none.
guint version_in(GVariant* property) {
    if (property == nullptr) return 0;
    GVariant* value = nullptr;
    g_variant_get(property, "(v)", &value);
    const bool is_number = g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32) != FALSE;
    const auto version = is_number ? g_variant_get_uint32(value) : 0;
    g_variant_unref(value);
    return version;
}

}  // namespace

bool is_portal_wanted() {
    const std::unique_ptr<char, decltype(&g_free)> sandbox(
        g_build_filename(g_get_user_runtime_dir(), "flatpak-info", nullptr), &g_free);
    if (g_file_test(sandbox.get(), G_FILE_TEST_EXISTS) != FALSE) return true;
    const auto* const wish = g_getenv("GTK_USE_PORTAL");
    return wish != nullptr && *wish == '1';
}

PortalWatch::PortalWatch(guint version, Told told) : m_version(version), m_told(std::move(told)) {
    ask();
}

PortalWatch::~PortalWatch() {
    if (m_timer != 0) g_source_remove(m_timer);
    if (m_asking == nullptr) return;
    g_cancellable_cancel(m_asking);
    g_object_unref(m_asking);
}

void PortalWatch::arm(guint milliseconds) {
    if (m_timer != 0) g_source_remove(m_timer);
    m_timer = g_timeout_add(
        milliseconds,
        [](gpointer self) -> gboolean {
            static_cast<PortalWatch*>(self)->m_timer = 0;
            static_cast<PortalWatch*>(self)->on_time();
            return G_SOURCE_REMOVE;
        },
        this);
}

// A property that the service's main loop has to be alive for. A bus that doesn't answer is met by
// the timer, too.
void PortalWatch::ask() {
    m_asking = g_cancellable_new();
    arm(kPatienceMilliseconds);
    const auto on_value = +[](GObject* bus, GAsyncResult* result, gpointer self) {
        GError* error = nullptr;
        auto* const connection = G_DBUS_CONNECTION(bus);
        auto* const value = g_dbus_connection_call_finish(connection, result, &error);
        const bool is_over = is_cancelled(error);
        g_clear_error(&error);
        const auto version = version_in(value);
        if (value != nullptr) g_variant_unref(value);
        if (is_over) return;
        auto& watch = *static_cast<PortalWatch*>(self);
        watch.on_answer(version >= watch.m_version ? connection : nullptr);
    };
    struct Call {
        PortalWatch* self;
        GAsyncReadyCallback on_value;
    };
    const auto on_bus = +[](GObject* /*source*/, GAsyncResult* result, gpointer data) {
        const std::unique_ptr<Call> call(static_cast<Call*>(data));
        GError* error = nullptr;
        const Connection bus(g_bus_get_finish(result, &error), &g_object_unref);
        const bool is_over = is_cancelled(error);
        g_clear_error(&error);
        if (is_over) return;
        if (!bus) return call->self->on_answer(nullptr);
        // The session's end isn't the program's.
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
        g_dbus_connection_call(
            bus.get(), "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
            "org.freedesktop.DBus.Properties", "Get",
            g_variant_new("(ss)", "org.freedesktop.portal.FileChooser", "version"),
            G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE, -1, call->self->m_asking, call->on_value,
            call->self);
    };
    g_bus_get(G_BUS_TYPE_SESSION, m_asking, on_bus, new Call{this, on_value});
}

void PortalWatch::on_answer(GDBusConnection* bus) {
    g_clear_object(&m_asking);
    if (bus == nullptr) {
        if (m_timer != 0) g_source_remove(std::exchange(m_timer, 0));
        return std::exchange(m_told, {})(nullptr);
    }
    arm(kPauseMilliseconds);
    if (!std::exchange(m_was_there, true)) m_told(bus);
}

// The pause is over, or the patience.
void PortalWatch::on_time() {
    if (m_asking == nullptr) return ask();
    g_cancellable_cancel(m_asking);
    on_answer(nullptr);
}

}  // namespace tvutil2
