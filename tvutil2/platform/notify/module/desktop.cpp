// The desktop over D-Bus, on GIO. A connection of our own, so that the program's is left alone, and
// no main loop: calls wait for their answers, and what comes unasked is taken in a filter on GIO's
// thread.
#include "tvutil2/platform/notify/desktop.h"

#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/base/last_error.h"

#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string_view>

namespace tvutil2 {
namespace {

constexpr int kTimeout = 5000;  // milliseconds
constexpr auto kBus = "org.freedesktop.DBus";
constexpr auto kBusPath = "/org/freedesktop/DBus";
constexpr auto kServer = "org.freedesktop.Notifications";
constexpr auto kServerPath = "/org/freedesktop/Notifications";
constexpr auto kApplication = "org.freedesktop.Application";

struct ObjectEnd {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct VariantEnd {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
struct TextEnd {
    void operator()(char* text) const { g_free(text); }
};
using Connection = std::shared_ptr<GDBusConnection>;
using Message = std::unique_ptr<GDBusMessage, ObjectEnd>;
using Variant = std::unique_ptr<GVariant, VariantEnd>;
using Text = std::unique_ptr<char, TextEnd>;

class Error {
  public:
    Error() = default;
    ~Error() {
        if (m_error != nullptr) g_error_free(m_error);
    }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;
    GError** out() { return &m_error; }
    [[nodiscard]] HRESULT result() const {
        const bool is_timeout = g_error_matches(m_error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != 0 ||
                                g_error_matches(m_error, G_DBUS_ERROR, G_DBUS_ERROR_TIMEOUT) != 0;
        return is_timeout ? HRESULT_FROM_WIN32(ERROR_TIMEOUT) : WPN_E_PLATFORM_UNAVAILABLE;
    }

  private:
    GError* m_error = nullptr;
};

// Where the session's bus is; empty when there is none. None is started: that is the desktop's.
std::string bus_address() {
    const char* const named = secure_getenv("DBUS_SESSION_BUS_ADDRESS");
    if (named != nullptr && *named != 0) {
        return std::string_view(named).starts_with("autolaunch:") ? "" : named;
    }
    const char* const folder = secure_getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || *folder != '/') return {};
    const auto path = std::string(folder) + "/bus";
    struct stat info {};
    if (stat(path.c_str(), &info) != 0 || !S_ISSOCK(info.st_mode) || info.st_uid != geteuid()) {
        return {};
    }
    const Text escaped(g_dbus_address_escape_value(path.c_str()));
    return std::string("unix:path=") + escaped.get();
}

std::string path_of(const std::string& name) {
    auto path = "/" + name;
    std::replace(path.begin(), path.end(), '.', '/');
    return path;
}

std::string text_of(const char* text) {
    return text != nullptr ? text : "";
}

// The call's result, taken apart by the caller; null with the reason.
Variant call(GDBusConnection* bus, const char* name, const char* path, const char* interface,
             const char* method, GVariant* arguments, const char* results, HRESULT& reason) {
    Error error;
    Variant answer(
        g_dbus_connection_call_sync(bus, name, path, interface, method, arguments,
                                    results != nullptr ? G_VARIANT_TYPE(results) : nullptr,
                                    G_DBUS_CALL_FLAGS_NONE, kTimeout, nullptr, error.out()));
    reason = answer ? S_OK : error.result();
    return answer;
}

Variant call_bus(GDBusConnection* bus, const char* method, GVariant* arguments,
                 const char* results = nullptr) {
    HRESULT ignored = S_OK;
    return call(bus, kBus, kBusPath, kBus, method, arguments, results, ignored);
}

// The server's own name on the bus; empty without a server.
std::string owner_of(GDBusConnection* bus, const char* name) {
    const auto answer = call_bus(bus, "GetNameOwner", g_variant_new("(s)", name), "(s)");
    if (!answer) return {};
    const char* owner = nullptr;
    g_variant_get(answer.get(), "(&s)", &owner);
    return owner;
}

std::string server_name(GDBusConnection* bus, const char* owner) {
    return text_of(g_dbus_connection_get_guid(bus)) + "/" + text_of(owner);
}

GVariant* pictures_and_hints(const ToastView& view) {
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    const auto add = [&hints](const char* name, const std::string& text) {
        if (text.empty()) return;
        g_variant_builder_add(&hints, "{sv}", name, g_variant_new_string(text.c_str()));
    };
    add("desktop-entry", view.desktop_entry);
    add("image-path", view.picture);
    if (view.is_silent) {
        g_variant_builder_add(&hints, "{sv}", "suppress-sound", g_variant_new_boolean(TRUE));
    }
    return g_variant_builder_end(&hints);
}

GVariant* notify_arguments(const ToastView& view, bool reads_markup) {
    const Text escaped(reads_markup ? g_markup_escape_text(view.body.c_str(), -1)
                                    : g_strdup(view.body.c_str()));
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    for (const auto& [key, label] : view.actions) {
        g_variant_builder_add(&actions, "s", key.c_str());
        g_variant_builder_add(&actions, "s", label.c_str());
    }
    return g_variant_new("(susss@as@a{sv}i)", view.program.c_str(), 0U, view.icon.c_str(),
                         view.title.c_str(), escaped.get(), g_variant_builder_end(&actions),
                         pictures_and_hints(view), -1);
}

bool is_listed(GVariant* list, const char* name) {
    GVariantIter* walk = nullptr;
    g_variant_get(list, "(as)", &walk);
    bool is_found = false;
    const char* entry = nullptr;
    while (g_variant_iter_next(walk, "&s", &entry) != 0) {
        is_found = is_found || std::string_view(entry) == name;
    }
    g_variant_iter_free(walk);
    return is_found;
}

class BusDesktop final : public Desktop {
  public:
    explicit BusDesktop(DesktopEvents& events) : m_events(events) {}

    HRESULT find_server(bool& reads_markup) override {
        const auto bus = connected();
        if (!bus) return WPN_E_PLATFORM_UNAVAILABLE;
        HRESULT reason = S_OK;
        const auto abilities = call(bus.get(), kServer, kServerPath, kServer, "GetCapabilities",
                                    nullptr, "(as)", reason);
        if (abilities) reads_markup = is_listed(abilities.get(), "body-markup");
        return reason;
    }

    HRESULT show(const ToastView& view, bool reads_markup, ShownToast& shown) override {
        const auto bus = connected();
        if (!bus) return WPN_E_PLATFORM_UNAVAILABLE;
        const Message message(
            g_dbus_message_new_method_call(kServer, kServerPath, kServer, "Notify"));
        g_dbus_message_set_body(message.get(), notify_arguments(view, reads_markup));
        Error error;
        const Message answer(g_dbus_connection_send_message_with_reply_sync(
            bus.get(), message.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, kTimeout, nullptr, nullptr,
            error.out()));
        if (!answer) return error.result();
        auto* const body = g_dbus_message_get_body(answer.get());
        if (g_dbus_message_to_gerror(answer.get(), error.out()) != 0) return error.result();
        if (body == nullptr || g_variant_is_of_type(body, G_VARIANT_TYPE("(u)")) == 0) {
            return E_FAIL;
        }
        g_variant_get(body, "(u)", &shown.id);
        shown.server = server_name(bus.get(), g_dbus_message_get_sender(answer.get()));
        return S_OK;
    }

    HRESULT close(const std::vector<ShownToast>& toasts) override {
        const auto bus = connected();
        if (!bus) return WPN_E_PLATFORM_UNAVAILABLE;
        const auto owner = owner_of(bus.get(), kServer);
        if (owner.empty()) return WPN_E_PLATFORM_UNAVAILABLE;
        const auto server = server_name(bus.get(), owner.c_str());
        HRESULT reason = S_OK;
        for (const auto& [shown_by, id] : toasts) {
            if (shown_by != server) continue;
            // One that the person has closed meanwhile may be an error to the server.
            call(bus.get(), owner.c_str(), kServerPath, kServer, "CloseNotification",
                 g_variant_new("(u)", id), nullptr, reason);
        }
        return S_OK;
    }

    HRESULT serve(const std::string& name) override {
        {
            const std::lock_guard guard(m_names_lock);
            if (std::find(m_names.begin(), m_names.end(), name) == m_names.end()) {
                m_names.push_back(name);
            }
        }
        const auto bus = connected();
        if (!bus) return WPN_E_PLATFORM_UNAVAILABLE;
        return request(bus.get(), name) ? S_OK : WPN_E_PLATFORM_UNAVAILABLE;
    }

    HRESULT activate(const std::string& name, const std::string& key) override {
        const auto bus = connected();
        if (!bus) return WPN_E_PLATFORM_UNAVAILABLE;
        HRESULT reason = S_OK;
        call(bus.get(), name.c_str(), path_of(name).c_str(), kApplication, "ActivateAction",
             g_variant_new("(s@av@a{sv})", key.c_str(),
                           g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0),
                           g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0)),
             nullptr, reason);
        return reason;
    }

    std::string own_name() override {
        const auto bus = connected();
        return bus ? text_of(g_dbus_connection_get_unique_name(bus.get())) : "";
    }

    bool has(const std::string& name) override {
        const auto bus = connected();
        return bus && owner_of(bus.get(), name.c_str()) ==
                          text_of(g_dbus_connection_get_unique_name(bus.get()));
    }

    bool is_there(const std::string& name) override {
        const auto bus = connected();
        return bus && !owner_of(bus.get(), name.c_str()).empty();
    }

    void reload() override {
        const auto bus = connected();
        if (bus) call_bus(bus.get(), "ReloadConfig", nullptr);
    }

  private:
    static bool request(GDBusConnection* bus, const std::string& name) {
        constexpr guint32 kWaitInLine = 0;
        return call_bus(bus, "RequestName", g_variant_new("(su)", name.c_str(), kWaitInLine),
                        "(u)") != nullptr;
    }

    Connection connected() {
        const std::lock_guard guard(m_lock);
        if (m_bus && g_dbus_connection_is_closed(m_bus.get()) == 0) return m_bus;
        m_bus.reset();
        const auto address = bus_address();
        if (address.empty()) return nullptr;
        constexpr auto kFlags =
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        Error error;
        Connection bus(g_dbus_connection_new_for_address_sync(address.c_str(), kFlags, nullptr,
                                                              nullptr, error.out()),
                       [](GDBusConnection* connection) {
                           if (connection != nullptr) g_object_unref(connection);
                       });
        if (!bus) return nullptr;
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
        g_dbus_connection_add_filter(bus.get(), &filter, this, nullptr);
        const auto rule =
            std::string("type='signal',interface='") + kServer + "',path='" + kServerPath + "'";
        call_bus(bus.get(), "AddMatch", g_variant_new("(s)", rule.c_str()));
        for (const auto& name : names()) request(bus.get(), name);
        return m_bus = bus;
    }

    std::vector<std::string> names() {
        const std::lock_guard guard(m_names_lock);
        return m_names;
    }

    // Takes what is meant for us; all else goes on to GIO.
    static GDBusMessage* filter(GDBusConnection* bus, GDBusMessage* message, gboolean is_incoming,
                                gpointer self) {
        if (is_incoming == 0) return message;
        auto& desktop = *static_cast<BusDesktop*>(self);
        const auto type = g_dbus_message_get_message_type(message);
        const bool is_taken =
            (type == G_DBUS_MESSAGE_TYPE_SIGNAL && desktop.take_signal(bus, message)) ||
            (type == G_DBUS_MESSAGE_TYPE_METHOD_CALL && desktop.take_call(bus, message));
        if (!is_taken) return message;
        g_object_unref(message);
        return nullptr;
    }

    bool take_signal(GDBusConnection* bus, GDBusMessage* message) {
        if (text_of(g_dbus_message_get_interface(message)) != kServer) return false;
        const auto member = text_of(g_dbus_message_get_member(message));
        auto* const body = g_dbus_message_get_body(message);
        if (body == nullptr) return false;
        ShownToast toast{server_name(bus, g_dbus_message_get_sender(message)), 0};
        if (member == "ActionInvoked" && g_variant_is_of_type(body, G_VARIANT_TYPE("(us)")) != 0) {
            const char* key = nullptr;
            g_variant_get(body, "(u&s)", &toast.id, &key);
            m_events.action_invoked(std::move(toast), key);
            return true;
        }
        if (member == "NotificationClosed" &&
            g_variant_is_of_type(body, G_VARIANT_TYPE("(uu)")) != 0) {
            guint32 reason = 0;
            g_variant_get(body, "(uu)", &toast.id, &reason);
            m_events.closed(std::move(toast));
            return true;
        }
        return false;
    }

    bool take_call(GDBusConnection* bus, GDBusMessage* message) {
        const auto interface = text_of(g_dbus_message_get_interface(message));
        if (!interface.empty() && interface != kApplication) return false;
        const auto path = text_of(g_dbus_message_get_path(message));
        const auto list = names();
        const auto name = std::find_if(list.begin(), list.end(), [&path](const std::string& entry) {
            return path_of(entry) == path;
        });
        if (name == list.end()) return false;
        const auto member = text_of(g_dbus_message_get_member(message));
        auto* const body = g_dbus_message_get_body(message);
        const auto has = [body](const char* type) {
            return body != nullptr && g_variant_is_of_type(body, G_VARIANT_TYPE(type)) != 0;
        };
        if ((member == "Activate" && has("(a{sv})")) || (member == "Open" && has("(asa{sv})"))) {
            m_events.called(*name, kDefaultAction);
        } else if (member == "ActivateAction" && has("(sava{sv})")) {
            const char* key = nullptr;
            g_variant_get_child(body, 0, "&s", &key);
            m_events.called(*name, key);
        } else {
            return false;
        }
        if ((g_dbus_message_get_flags(message) & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED) != 0) {
            return true;
        }
        const Message answer(g_dbus_message_new_method_reply(message));
        g_dbus_connection_send_message(bus, answer.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                       nullptr);
        return true;
    }

    DesktopEvents& m_events;
    std::mutex m_lock;  // held while connecting; what comes unasked doesn't want it
    Connection m_bus;
    std::mutex m_names_lock;
    std::vector<std::string> m_names;
};

}  // namespace

extern "C" TVUTIL_API Desktop* tvutil2_open_desktop(DesktopEvents& events);

Desktop* tvutil2_open_desktop(DesktopEvents& events) {
    return std::make_unique<BusDesktop>(events).release();
}

}  // namespace tvutil2
