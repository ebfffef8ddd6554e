// A portal for tests, on the session bus. It says "ready" on standard output, and "asked TITLE" for
// a dialog for files.
//
//     portal silent       answers nothing at all
//     portal hangs        answers nothing any more once it has said that it is there
//     portal refuses      shows no dialogs
//     portal chosen URI   answers with that file, and the last of the filters
//     portal dies         ends as soon as it has promised an answer
#include <gio/gio.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

constexpr auto kIntrospection =
    "<node><interface name='org.freedesktop.portal.FileChooser'>"
    "<method name='OpenFile'><arg type='s' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='a{sv}' direction='in'/><arg type='o' direction='out'/></method>"
    "<property name='version' type='u' access='read'/></interface></node>";

struct Portal {
    std::string_view behaviour;
    const char* uri = nullptr;
};

void tell(const std::string& text) {
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

// Where the answer comes from is agreed on: the sender's name and its token.
std::string request_path(const char* sender, GVariant* options) {
    const char* token = "";
    g_variant_lookup(options, "handle_token", "&s", &token);
    std::string name = sender + 1;
    for (auto& c : name) c = c == '.' ? '_' : c;
    return "/org/freedesktop/portal/desktop/request/" + name + "/" + token;
}

void open_file(GDBusConnection* bus, const char* sender, const char*, const char*, const char*,
               GVariant* arguments, GDBusMethodInvocation* call, gpointer data) {
    const auto& portal = *static_cast<const Portal*>(data);
    const char* parent = nullptr;
    const char* title = nullptr;
    GVariant* options = nullptr;
    g_variant_get(arguments, "(&s&s@a{sv})", &parent, &title, &options);
    const auto path = request_path(sender, options);
    auto* const filters = g_variant_lookup_value(options, "filters", nullptr);
    g_variant_unref(options);
    if (portal.behaviour == "refuses") {
        return g_dbus_method_invocation_return_dbus_error(call, "org.freedesktop.portal.Error.No",
                                                          "");
    }
    g_dbus_method_invocation_return_value(call, g_variant_new("(o)", path.c_str()));
    g_dbus_connection_flush_sync(bus, nullptr, nullptr);
    tell(std::string("asked ") + title);
    if (portal.behaviour == "dies") _Exit(0);
    GVariantBuilder results;
    g_variant_builder_init(&results, G_VARIANT_TYPE("a{sv}"));
    const char* const uris[] = {portal.uri, nullptr};
    g_variant_builder_add(&results, "{sv}", "uris", g_variant_new_strv(uris, 1));
    const auto last = g_variant_n_children(filters) - 1;
    g_variant_builder_add(&results, "{sv}", "current_filter",
                          g_variant_get_child_value(filters, last));
    g_dbus_connection_emit_signal(bus, sender, path.c_str(), "org.freedesktop.portal.Request",
                                  "Response", g_variant_new("(ua{sv})", 0U, &results), nullptr);
}

GVariant* version(GDBusConnection*, const char*, const char*, const char*, const char*, GError**,
                  gpointer) {
    return g_variant_new_uint32(3);
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2) return 2;
    Portal portal{arguments[1], count > 2 ? arguments[2] : nullptr};
    auto* const bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (bus == nullptr) return 1;
    auto* const node = g_dbus_node_info_new_for_xml(kIntrospection, nullptr);
    static const GDBusInterfaceVTable calls = {open_file, version, nullptr, {}};
    g_dbus_connection_register_object(bus, "/org/freedesktop/portal/desktop", node->interfaces[0],
                                      &calls, &portal, nullptr, nullptr);
    g_bus_own_name_on_connection(
        bus, "org.freedesktop.portal.Desktop", G_BUS_NAME_OWNER_FLAGS_NONE,
        [](GDBusConnection*, const char*, gpointer) { tell("ready"); }, nullptr, nullptr, nullptr);
    auto* const loop = g_main_loop_new(nullptr, FALSE);
    // These take what comes in, and let it lie.
    static int to_answer = portal.behaviour == "hangs" ? 1 : 0;
    if (portal.behaviour == "silent" || portal.behaviour == "hangs") {
        g_dbus_connection_add_filter(
            bus,
            [](GDBusConnection*, GDBusMessage* message, gboolean is_incoming, gpointer) {
                const bool is_call =
                    g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL;
                if (is_incoming == FALSE || !is_call || to_answer-- > 0) return message;
                g_object_unref(message);
                return static_cast<GDBusMessage*>(nullptr);
            },
            nullptr, nullptr);
    }
    g_main_loop_run(loop);
}
