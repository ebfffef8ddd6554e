// A notification server for tests, on the session bus. It tells what it is asked, one line each, on
// standard output, and does what it is told on standard input:
//
//     invoke ID KEY   the person has answered: told to the sender or, where that is gone and its
//                     desktop entry says that the bus can start it, to the program
//     signal ID KEY   the signal alone, to everybody
//     close ID        the person has closed it
//     outlive ID      waits until neither its sender nor a program started for it is on the bus
//     die             ends at the next notification, without an answer to it
//
//     notification_server FIRST-ID NAME CAPABILITY...
#include <gio/gio.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr auto kPath = "/org/freedesktop/Notifications";
constexpr auto kInterface = "org.freedesktop.Notifications";
constexpr auto kIntrospection =
    "<node><interface name='org.freedesktop.Notifications'>"
    "<method name='GetCapabilities'><arg type='as' direction='out'/></method>"
    "<method name='Notify'><arg type='s' direction='in'/><arg type='u' direction='in'/>"
    "<arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='as' direction='in'/><arg type='a{sv}' direction='in'/>"
    "<arg type='i' direction='in'/><arg type='u' direction='out'/></method>"
    "<method name='CloseNotification'><arg type='u' direction='in'/></method>"
    "</interface></node>";

struct Shown {
    std::string sender;
    std::string entry;
};

struct Server {
    GMainLoop* loop;
    GDBusConnection* bus = nullptr;
    std::vector<const char*> abilities = {};
    unsigned int last_id = 0;
    bool is_dying = false;
    std::map<unsigned int, Shown> shown = {};
};

void tell(const std::vector<std::string>& fields) {
    std::string not_ascii;
    for (int c = 0x80; c < 0x100; ++c) not_ascii += static_cast<char>(c);
    std::string line;
    for (const auto& field : fields) {
        char* const escaped = g_strescape(field.c_str(), not_ascii.c_str());
        line += (line.empty() ? "" : "\t") + std::string(escaped);
        g_free(escaped);
    }
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void notify(Server& server, const char* sender, GVariant* arguments, GDBusMethodInvocation* call) {
    if (server.is_dying) _Exit(0);
    const char* program = nullptr;
    const char* icon = nullptr;
    const char* title = nullptr;
    const char* body = nullptr;
    GVariantIter* actions = nullptr;
    GVariant* hints = nullptr;
    unsigned int replaced = 0;
    int timeout = 0;
    g_variant_get(arguments, "(&su&s&s&sas@a{sv}i)", &program, &replaced, &icon, &title, &body,
                  &actions, &hints, &timeout);
    const auto id = ++server.last_id;
    std::vector<std::string> told = {"notify", std::to_string(id), program, icon, title, body};
    const char* entry = "";
    const char* picture = "";
    g_variant_lookup(hints, "desktop-entry", "&s", &entry);
    g_variant_lookup(hints, "image-path", "&s", &picture);
    told.emplace_back(picture);
    told.emplace_back(entry);
    const char* text = nullptr;
    while (g_variant_iter_next(actions, "&s", &text) != 0) told.emplace_back(text);
    server.shown[id] = {sender, entry};
    g_variant_iter_free(actions);
    g_variant_unref(hints);
    g_dbus_method_invocation_return_value(call, g_variant_new("(u)", id));
    tell(told);
}

void handle(GDBusConnection* /*bus*/, const char* sender, const char* /*path*/,
            const char* /*interface*/, const char* method, GVariant* arguments,
            GDBusMethodInvocation* call, void* data) {
    auto& server = *static_cast<Server*>(data);
    if (std::string_view(method) == "Notify") return notify(server, sender, arguments, call);
    if (std::string_view(method) == "GetCapabilities") {
        auto* const list = g_variant_new_strv(server.abilities.data(),
                                              static_cast<gssize>(server.abilities.size()));
        return g_dbus_method_invocation_return_value(call, g_variant_new_tuple(&list, 1));
    }
    unsigned int id = 0;
    g_variant_get(arguments, "(u)", &id);
    g_dbus_method_invocation_return_value(call, nullptr);
    tell({"close", std::to_string(id)});
}

void signal(Server& server, const char* name, GVariant* arguments) {
    g_dbus_connection_emit_signal(server.bus, nullptr, kPath, kInterface, name, arguments, nullptr);
    g_dbus_connection_flush_sync(server.bus, nullptr, nullptr);
}

bool is_there(const Server& server, const std::string& name) {
    GVariant* const answer = g_dbus_connection_call_sync(
        server.bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "NameHasOwner", g_variant_new("(s)", name.c_str()), G_VARIANT_TYPE("(b)"),
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    gboolean has_owner = FALSE;
    if (answer != nullptr) {
        g_variant_get(answer, "(b)", &has_owner);
        g_variant_unref(answer);
    }
    return has_owner != FALSE;
}

bool is_activatable(const std::string& entry) {
    GKeyFile* const file = g_key_file_new();
    const auto name = "applications/" + entry + ".desktop";
    const bool is_so =
        g_key_file_load_from_data_dirs(file, name.c_str(), nullptr, G_KEY_FILE_NONE, nullptr) !=
            0 &&
        g_key_file_get_boolean(file, "Desktop Entry", "DBusActivatable", nullptr) != 0;
    g_key_file_free(file);
    return is_so;
}

void invoke(Server& server, unsigned int id, const std::string& key) {
    const auto shown = server.shown[id];
    if (is_there(server, shown.sender) || !is_activatable(shown.entry)) {
        return signal(server, "ActionInvoked", g_variant_new("(us)", id, key.c_str()));
    }
    auto path = "/" + shown.entry;
    for (auto& c : path) {
        if (c == '.') c = '/';
    }
    const bool is_default = key == "default";
    GVariant* const nothing = g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0);
    GVariant* const arguments =
        is_default
            ? g_variant_new("(@a{sv})", nothing)
            : g_variant_new("(s@av@a{sv})", key.c_str(),
                            g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0), nothing);
    g_dbus_connection_call(server.bus, shown.entry.c_str(), path.c_str(),
                           "org.freedesktop.Application",
                           is_default ? "Activate" : "ActivateAction", arguments, nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
    g_dbus_connection_flush_sync(server.bus, nullptr, nullptr);
}

// What has ended stays on the bus until that has seen it.
void outlive(const Server& server, unsigned int id) {
    const auto& shown = server.shown.at(id);
    while (is_there(server, shown.sender) || is_there(server, shown.entry)) g_usleep(1000);
}

gboolean obey(GIOChannel* input, GIOCondition /*condition*/, void* data) {
    auto& server = *static_cast<Server*>(data);
    char* line = nullptr;
    gsize end = 0;
    if (g_io_channel_read_line(input, &line, nullptr, &end, nullptr) != G_IO_STATUS_NORMAL) {
        g_main_loop_quit(server.loop);
        return FALSE;
    }
    const std::string order(line, end);
    g_free(line);
    const auto first = order.find(' ');
    const auto second = order.find(' ', first + 1);
    const auto word = order.substr(0, first);
    const auto id = static_cast<unsigned int>(std::atoi(order.c_str() + first + 1));
    const auto key = second == std::string::npos ? "" : order.substr(second + 1);
    if (word == "invoke") invoke(server, id, key);
    if (word == "signal") signal(server, "ActionInvoked", g_variant_new("(us)", id, key.c_str()));
    if (word == "close") signal(server, "NotificationClosed", g_variant_new("(uu)", id, 2U));
    if (word == "outlive") outlive(server, id);
    if (word == "die") server.is_dying = true;
    tell({"done"});
    return TRUE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    Server server{g_main_loop_new(nullptr, FALSE)};
    server.last_id = static_cast<unsigned int>(std::atoi(argv[1])) - 1;
    for (int i = 3; i < argc; ++i) server.abilities.push_back(argv[i]);
    server.bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (server.bus == nullptr) return 1;
    auto* const node = g_dbus_node_info_new_for_xml(kIntrospection, nullptr);
    const GDBusInterfaceVTable table{handle, nullptr, nullptr, {}};
    g_dbus_connection_register_object(server.bus, kPath, node->interfaces[0], &table, &server,
                                      nullptr, nullptr);
    GVariant* const owned = g_dbus_connection_call_sync(
        server.bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "RequestName", g_variant_new("(su)", argv[2], 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
        nullptr, nullptr);
    if (owned != nullptr) g_variant_unref(owned);
    g_io_add_watch(g_io_channel_unix_new(STDIN_FILENO),
                   static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), obey, &server);
    tell({"ready"});
    g_main_loop_run(server.loop);
    return 0;
}
