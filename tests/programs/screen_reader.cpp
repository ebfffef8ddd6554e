// A screen reader for tests: reads a process's windows over the accessibility bus. For each line of
// its input it says one or more lines, and "." behind them.
//
//     screen_reader PROCESS
//         tree            role, name and some states of all that is in its windows
//         press NAME      does what is done with it
//         focus NAME      wants the keyboard in it
//         value NAME      where between which limits it is
//         selected NAME   what is selected in it
//         choose NAME     its first item
//         write NAME TEXT gives it a text of one word
//         listen          says "listening", and then what gets the focus next
#include <atspi/atspi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>

namespace {

void say(const std::string& text) {
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

std::string name_of(AtspiAccessible* object) {
    auto* const name = atspi_accessible_get_name(object, nullptr);
    std::string text = name != nullptr ? name : "";
    g_free(name);
    return text;
}

std::string role_of(AtspiAccessible* object) {
    auto* const role = atspi_accessible_get_role_name(object, nullptr);
    std::string text = role != nullptr ? role : "";
    g_free(role);
    return text;
}

// Everything below an object; true ends it.
bool walk(AtspiAccessible* object, int depth,
          const std::function<bool(AtspiAccessible*, int)>& visit) {
    if (visit(object, depth)) return true;
    const int count = atspi_accessible_get_child_count(object, nullptr);
    for (int i = 0; i < count; ++i) {
        auto* const child = atspi_accessible_get_child_at_index(object, i, nullptr);
        if (child != nullptr && walk(child, depth + 1, visit)) return true;
    }
    return false;
}

AtspiAccessible* application(guint process) {
    auto* const desktop = atspi_get_desktop(0);
    for (int i = 0; i < atspi_accessible_get_child_count(desktop, nullptr); ++i) {
        auto* const child = atspi_accessible_get_child_at_index(desktop, i, nullptr);
        if (child != nullptr && atspi_accessible_get_process_id(child, nullptr) == process) {
            return child;
        }
    }
    return nullptr;
}

// Looks whenever something comes or goes somewhere, and gives up after a while.
AtspiAccessible* await(const std::function<AtspiAccessible*()>& look) {
    constexpr auto kChanges = "object:children-changed";
    constexpr guint kPatienceSeconds = 20;
    // Events also come while an answer is waited for.
    struct Wait {
        bool has_changed = false, is_late = false, is_running = false;
        void change() {
            has_changed = true;
            if (is_running) atspi_event_quit();
        }
    } wait;
    auto* const listener = atspi_event_listener_new(
        [](AtspiEvent*, void* to) { static_cast<Wait*>(to)->change(); }, &wait, nullptr);
    atspi_event_listener_register(listener, kChanges, nullptr);
    const auto timer = g_timeout_add_seconds(
        kPatienceSeconds,
        [](gpointer to) -> gboolean {
            static_cast<Wait*>(to)->is_late = true;
            static_cast<Wait*>(to)->change();
            return G_SOURCE_CONTINUE;
        },
        &wait);
    auto* found = look();
    while (found == nullptr && !wait.is_late) {
        wait.is_running = !wait.has_changed;
        if (wait.is_running) atspi_event_main();
        wait.is_running = wait.has_changed = false;
        found = look();
    }
    g_source_remove(timer);
    atspi_event_listener_deregister(listener, kChanges, nullptr);
    return found;
}

void say_tree(AtspiAccessible* root) {
    walk(root, 0, [](AtspiAccessible* object, int depth) {
        if (depth == 0) return false;
        auto line = std::string(static_cast<std::size_t>(depth - 1), ' ') + role_of(object) + " '" +
                    name_of(object) + "'";
        auto* const states = atspi_accessible_get_state_set(object);
        constexpr std::pair<AtspiStateType, const char*> kStates[] = {
            {ATSPI_STATE_FOCUSED, " focused"},
            {ATSPI_STATE_CHECKED, " checked"},
            {ATSPI_STATE_SELECTED, " selected"}};
        for (const auto& [state, word] : kStates) {
            if (atspi_state_set_contains(states, state)) line += word;
        }
        if (!atspi_state_set_contains(states, ATSPI_STATE_ENABLED)) line += " disabled";
        say(line);
        return false;
    });
}

AtspiAccessible* find(AtspiAccessible* root, const std::string& name) {
    AtspiAccessible* found = nullptr;
    // Labels have the names of what they stand in front of.
    walk(root, 0, [&](AtspiAccessible* object, int) {
        if (name_of(object) == name && role_of(object) != "label") found = object;
        return found != nullptr;
    });
    return found;
}

void say_focus() {
    auto* const listener = atspi_event_listener_new(
        [](AtspiEvent* event, void*) {
            if (event->detail1 == 0) return;
            say("focused " + name_of(event->source));
            atspi_event_quit();
        },
        nullptr, nullptr);
    atspi_event_listener_register(listener, "object:state-changed:focused", nullptr);
    say("listening");
    atspi_event_main();
    atspi_event_listener_deregister(listener, "object:state-changed:focused", nullptr);
}

void work_on(AtspiAccessible* object, const std::string& what, const std::string& text) {
    if (object == nullptr) return say("nothing");
    if (what == "press") {
        atspi_action_do_action(atspi_accessible_get_action_iface(object), 0, nullptr);
    } else if (what == "focus") {
        atspi_component_grab_focus(atspi_accessible_get_component_iface(object), nullptr);
    } else if (what == "value") {
        auto* const value = atspi_accessible_get_value_iface(object);
        say(std::to_string(atspi_value_get_minimum_value(value, nullptr)) + " " +
            std::to_string(atspi_value_get_current_value(value, nullptr)) + " " +
            std::to_string(atspi_value_get_maximum_value(value, nullptr)));
    } else if (what == "selected") {
        auto* const list = atspi_accessible_get_selection_iface(object);
        for (int i = 0; i < atspi_selection_get_n_selected_children(list, nullptr); ++i) {
            say(name_of(atspi_selection_get_selected_child(list, i, nullptr)));
        }
    } else if (what == "choose") {
        atspi_selection_select_child(atspi_accessible_get_selection_iface(object), 0, nullptr);
    } else if (what == "write") {
        atspi_editable_text_set_text_contents(atspi_accessible_get_editable_text_iface(object),
                                              text.c_str(), nullptr);
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2 || atspi_init() > 1) return 2;
    const auto process = static_cast<guint>(std::atoi(arguments[1]));
    auto* const root = await([process] { return application(process); });
    if (root == nullptr) return 1;
    for (std::string line; std::getline(std::cin, line);) {
        // What was read before may have changed.
        atspi_accessible_clear_cache(root);
        const auto space = line.find(' ');
        const auto what = line.substr(0, space);
        if (what == "tree") {
            say_tree(root);
        } else if (what == "listen") {
            say_focus();
        } else {
            const auto end = what == "write" ? line.rfind(' ') : line.size();
            const auto name = line.substr(space + 1, end - space - 1);
            auto* const object = await([&] {
                atspi_accessible_clear_cache(root);
                return find(root, name);
            });
            work_on(object, what, line.substr(std::min(end + 1, line.size())));
        }
        say(".");
    }
}
