#include "tvutil2/platform/display/module/portal_dialog.h"

#include "tvutil2/platform/display/module/desktop_look.h"
#include "tvutil2/platform/display/module/file_glob.h"

#include <gdk/gdkx.h>

#ifdef GDK_WINDOWING_WAYLAND
#include <gdk/gdkwayland.h>
#endif

#include <algorithm>
#include <string>
#include <utility>

namespace tvutil2 {
namespace {

constexpr auto kPortal = "org.freedesktop.portal.Desktop";
constexpr auto kPlace = "/org/freedesktop/portal/desktop";
constexpr auto kRequest = "org.freedesktop.portal.Request";

std::string next_token() {
    static unsigned last = 0;
    return "tvutil2_" + std::to_string(++last);
}

// Where the answer comes from is agreed on: the sender's name and its token.
std::string request_path(GDBusConnection* bus, const std::string& token) {
    std::string sender = g_dbus_connection_get_unique_name(bus);
    sender.erase(0, 1);
    std::replace(sender.begin(), sender.end(), '.', '_');
    return std::string(kPlace) + "/request/" + sender + "/" + token;
}

GVariant* filter_of(const FileQuestion::Filter& filter) {
    GVariantBuilder patterns;
    g_variant_builder_init(&patterns, G_VARIANT_TYPE("a(us)"));
    for (const auto& pattern : filter.patterns) {
        g_variant_builder_add(&patterns, "(us)", 0U, caseless_glob(pattern).c_str());
    }
    return g_variant_ref_sink(g_variant_new("(sa(us))", utf8_of(filter.name).c_str(), &patterns));
}

void add(GVariantBuilder& options, const char* name, bool value) {
    g_variant_builder_add(&options, "{sv}", name, g_variant_new_boolean(value ? TRUE : FALSE));
}

}  // namespace

PortalDialog::PortalDialog(GDBusConnection* bus, std::shared_ptr<const FileQuestion> question,
                           GtkWindow* owner, Done done)
    : m_bus(G_DBUS_CONNECTION(g_object_ref(bus))),
      m_question(std::move(question)),
      m_done(std::move(done)),
      m_asking(g_cancellable_new()),
      m_token(next_token()) {
    for (const auto& filter : m_question->filters) m_filters.emplace_back(filter_of(filter));
    listen(request_path(m_bus, m_token));
    m_watch = g_bus_watch_name_on_connection(
        m_bus, kPortal, G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr,
        [](GDBusConnection*, const char*, gpointer self) {
            static_cast<PortalDialog*>(self)->end(std::nullopt);
        },
        this, nullptr);
    name_owner(owner);
}

PortalDialog::~PortalDialog() {
    g_cancellable_cancel(m_asking);
    g_object_unref(m_asking);
    stop_listening();
    g_bus_unwatch_name(m_watch);
    if (m_done) {
        g_dbus_connection_call(m_bus, kPortal, m_path.c_str(), kRequest, "Close", nullptr, nullptr,
                               G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
    }
#ifdef GDK_WINDOWING_WAYLAND
    if (m_exported != nullptr) {
        if (!gdk_window_is_destroyed(m_exported)) gdk_wayland_window_unexport_handle(m_exported);
        g_object_unref(m_exported);
    }
#endif
    g_object_unref(m_bus);
}

// The name by which another process knows the owner; a Wayland desktop gives it a name first.
void PortalDialog::name_owner(GtkWindow* owner) {
    auto* const window = owner != nullptr ? gtk_widget_get_window(GTK_WIDGET(owner)) : nullptr;
    if (window != nullptr && GDK_IS_X11_WINDOW(window)) {
        char name[32];
        g_snprintf(name, sizeof name, "x11:%lx", gdk_x11_window_get_xid(window));
        return ask(name);
    }
#ifdef GDK_WINDOWING_WAYLAND
    if (window != nullptr && GDK_IS_WAYLAND_WINDOW(window)) {
        const auto on_name = +[](GdkWindow*, const char* name, gpointer self) {
            static_cast<PortalDialog*>(self)->ask(std::string("wayland:") + name);
        };
        if (gdk_wayland_window_export_handle(window, on_name, this, nullptr) != FALSE) {
            m_exported = GDK_WINDOW(g_object_ref(window));
            return;
        }
    }
#endif
    ask({});
}

void PortalDialog::ask(const std::string& owner) {
    const auto on_reply = +[](GObject* bus, GAsyncResult* result, gpointer self) {
        GError* error = nullptr;
        auto* const reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &error);
        const bool is_over = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
        g_clear_error(&error);
        const char* path = nullptr;
        if (reply != nullptr) g_variant_get(reply, "(&o)", &path);
        // Not even its members are there any more when it is over.
        if (!is_over) static_cast<PortalDialog*>(self)->on_promise(path);
        if (reply != nullptr) g_variant_unref(reply);
    };
    const bool saves = m_question->kind == FileQuestion::Kind::save;
    g_dbus_connection_call(
        m_bus, kPortal, kPlace, "org.freedesktop.portal.FileChooser",
        saves ? "SaveFile" : "OpenFile",
        g_variant_new("(ss@a{sv})", owner.c_str(), utf8_of(m_question->title).c_str(), options()),
        G_VARIANT_TYPE("(o)"), G_DBUS_CALL_FLAGS_NONE, G_MAXINT, m_asking, on_reply, this);
}

GVariant* PortalDialog::options() const {
    const auto& asked = *m_question;
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(m_token.c_str()));
    add(options, "modal", true);
    if (asked.takes_several) add(options, "multiple", true);
    if (asked.kind == FileQuestion::Kind::folder) add(options, "directory", true);
    if (!asked.folder.empty()) {
        g_variant_builder_add(&options, "{sv}", "current_folder",
                              g_variant_new_bytestring(asked.folder.c_str()));
    }
    if (asked.kind == FileQuestion::Kind::save) {
        g_variant_builder_add(&options, "{sv}", "current_name",
                              g_variant_new_string(utf8_of(asked.name).c_str()));
    }
    if (m_filters.empty()) return g_variant_builder_end(&options);
    GVariantBuilder filters;
    g_variant_builder_init(&filters, G_VARIANT_TYPE("a(sa(us))"));
    for (const auto& filter : m_filters) g_variant_builder_add_value(&filters, filter.get());
    g_variant_builder_add(&options, "{sv}", "filters", g_variant_builder_end(&filters));
    if (asked.filter < m_filters.size()) {
        g_variant_builder_add(&options, "{sv}", "current_filter", m_filters[asked.filter].get());
    }
    return g_variant_builder_end(&options);
}

void PortalDialog::listen(std::string path) {
    stop_listening();
    m_path = std::move(path);
    const auto on_signal = +[](GDBusConnection*, const char*, const char*, const char*, const char*,
                               GVariant* told, gpointer self) {
        if (g_variant_is_of_type(told, G_VARIANT_TYPE("(ua{sv})")) == FALSE) return;
        guint32 response = 0;
        GVariant* results = nullptr;
        g_variant_get(told, "(u@a{sv})", &response, &results);
        static_cast<PortalDialog*>(self)->on_response(response, results);
        g_variant_unref(results);
    };
    m_listener = g_dbus_connection_signal_subscribe(
        m_bus, kPortal, kRequest, "Response", m_path.c_str(), nullptr,
        G_DBUS_SIGNAL_FLAGS_NO_MATCH_RULE, on_signal, this, nullptr);
}

void PortalDialog::stop_listening() {
    if (m_listener != 0) g_dbus_connection_signal_unsubscribe(m_bus, std::exchange(m_listener, 0));
}

// Portals of the first versions answer from a place of their own choice.
void PortalDialog::on_promise(const char* path) {
    if (path == nullptr) return end(std::nullopt);
    if (m_path != path) listen(path);
}

void PortalDialog::on_response(guint32 response, GVariant* results) {
    FileAnswer answer;
    answer.filter = m_question->filter;
    end(response == 0 ? answer_in(results) : std::move(answer));
}

FileAnswer PortalDialog::answer_in(GVariant* results) const {
    FileAnswer answer;
    answer.filter = m_question->filter;
    const char** uris = nullptr;
    g_variant_lookup(results, "uris", "^a&s", &uris);
    for (auto* each = uris; each != nullptr && *each != nullptr; ++each) {
        const std::unique_ptr<char, decltype(&g_free)> path(
            g_filename_from_uri(*each, nullptr, nullptr), &g_free);
        if (path) answer.paths.emplace_back(path.get());
    }
    g_free(uris);
    const Filter filter(g_variant_lookup_value(results, "current_filter", nullptr));
    const auto found = std::find_if(m_filters.begin(), m_filters.end(), [&](const Filter& each) {
        return filter && g_variant_equal(each.get(), filter.get()) != FALSE;
    });
    if (found != m_filters.end()) {
        answer.filter = static_cast<std::size_t>(found - m_filters.begin());
    }
    return answer;
}

void PortalDialog::end(std::optional<FileAnswer> answer) {
    const auto done = std::exchange(m_done, {});
    if (done) done(std::move(answer));
}

}  // namespace tvutil2
