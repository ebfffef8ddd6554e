#include "tvutil2/platform/display/module/desktop_portal.h"

#include <memory>
#include <utility>

namespace tvutil2 {
namespace {

// What an answer may take: the portal may have to be started first.
constexpr guint kPatienceMilliseconds = 1500;
constexpr guint kPauseMilliseconds = 3000;

using Connection = std::unique_ptr<GDBusConnection, decltype(&g_object_unref)>;

// For callbacks that come once, with the watch unless that has ended.
bool is_cancelled(const GError* error) {
    return g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
}

}  // namespace

bool is_portal_wanted() {
    const std::unique_ptr<char, decltype(&g_free)> sandbox(
        g_build_filename(g_get_user_runtime_dir(), "flatpak-info", nullptr), &g_free);
    if (g_file_test(sandbox.get(), G_FILE_TEST_EXISTS) != FALSE) return true;
    const auto* const wish = g_getenv("GTK_USE_PORTAL");
    return wish != nullptr && *wish == '1';
}

PortalWatch::PortalWatch(std::function<void(bool)> told) : m_told(std::move(told)) {
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
        auto* const value = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &error);
        const bool is_over = is_cancelled(error);
        g_clear_error(&error);
        if (value != nullptr) g_variant_unref(value);
        if (!is_over) static_cast<PortalWatch*>(self)->on_answer(value != nullptr);
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
        if (!bus) return call->self->on_answer(false);
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

void PortalWatch::on_answer(bool is_there) {
    g_clear_object(&m_asking);
    if (!is_there) {
        if (m_timer != 0) g_source_remove(std::exchange(m_timer, 0));
        return std::exchange(m_told, {})(false);
    }
    arm(kPauseMilliseconds);
    if (!std::exchange(m_was_there, true)) m_told(true);
}

// The pause is over, or the patience.
void PortalWatch::on_time() {
    if (m_asking == nullptr) return ask();
    g_cancellable_cancel(m_asking);
    on_answer(false);
}

}  // namespace tvutil2
