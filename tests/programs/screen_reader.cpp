// A screen reader for tests: reads a process's windows over the accessibility bus. For each line of
// its input it says one or more lines, and "." behind them.
//
//     screen_reader PROCESS
//         tree            role, name and some states of all that is in its windows
//         press NAME      does what is done with it
//         focus NAME      wants the keyboard in it
//         value NAME      where between which limits it is
//         selected NAME   what is selected in it
//         listen          says "listening", and then what gets the focus next
#include <atspi/atspi.h>
#include <unistd.h>

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
    for (int tries = 0; tries < 100; ++tries, usleep(50000)) {
        auto* const desktop = atspi_get_desktop(0);
        for (int i = 0; i < atspi_accessible_get_child_count(desktop, nullptr); ++i) {
            auto* const child = atspi_accessible_get_child_at_index(desktop, i, nullptr);
            if (child != nullptr && atspi_accessible_get_process_id(child, nullptr) == process) {
                return child;
            }
        }
    }
    return nullptr;
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

void work_on(AtspiAccessible* object, const std::string& what) {
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
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2 || atspi_init() > 1) return 2;
    auto* const root = application(static_cast<guint>(std::atoi(arguments[1])));
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
            work_on(find(root, line.substr(space + 1)), what);
        }
        say(".");
    }
}
