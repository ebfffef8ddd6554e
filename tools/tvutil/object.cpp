// tvutil object: named events and mutexes, which all programs of a user share.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/objects/objects.h"

#include <iostream>
#include <limits>
#include <memory>
#include <string>

#include "tools/tvutil/command.h"

namespace {

using tool::Exit;
using tool::Failure;

struct Options {
    std::string kind = "mutex";
    std::string name;
    DWORD milliseconds = INFINITE;
    bool is_json = false;
};

// Owner of an object's handle.
class Object {
  public:
    Object(HANDLE handle, const Options& options) : m_handle(handle) {
        if (handle == nullptr) {
            throw Failure{Exit::failed, tool::error_text(options.name, GetLastError())};
        }
    }
    ~Object() { CloseHandle(m_handle); }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    operator HANDLE() const { return m_handle; }

  private:
    HANDLE m_handle;
};

// What the name stands for, made where it stands for nothing yet.
Object made(const Options& options) {
    const auto name = tool::wide(options.name);
    if (name.empty()) throw Failure{Exit::usage, "an object needs a name"};
    return {options.kind == "event" ? CreateEventW(nullptr, FALSE, FALSE, name.c_str())
                                    : CreateMutexW(nullptr, FALSE, name.c_str()),
            options};
}

// False when the time is over.
bool take(HANDLE object, const Options& options) {
    const auto result = WaitForSingleObject(object, options.milliseconds);
    if (result == WAIT_FAILED) {
        throw Failure{Exit::failed, tool::error_text(options.name, GetLastError())};
    }
    const std::string told = result == WAIT_TIMEOUT     ? "timeout"
                             : result == WAIT_ABANDONED ? "abandoned"
                             : options.kind == "event"  ? "signalled"
                                                        : "taken";
    if (options.is_json) {
        tool::print(nlohmann::ordered_json{{"result", told}}.dump());
    } else {
        tool::print(told);
    }
    std::cout.flush();
    if (result == WAIT_TIMEOUT) tool::exit_with(Exit::no);
    return result != WAIT_TIMEOUT;
}

void wait(const Options& options) {
    const auto object = made(options);
    if (take(object, options) && options.kind == "mutex") ReleaseMutex(object);
}

void hold(const Options& options) {
    const auto mutex = made(options);
    if (!take(mutex, options)) return;
    std::cin.ignore(std::numeric_limits<std::streamsize>::max());
    ReleaseMutex(mutex);
}

void set(const Options& options) {
    auto* const event = OpenEventW(0, FALSE, tool::wide(options.name).c_str());
    if (event == nullptr && GetLastError() == ERROR_FILE_NOT_FOUND) {
        return tool::exit_with(Exit::no);
    }
    SetEvent(Object(event, options));
}

const tool::Command kCommand([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto* const object =
        app.add_subcommand("object", "Wait for named events and mutexes, set and hold them");
    object->require_subcommand(1);
    const auto add = [&](const char* name, const char* what, void (*run)(const Options&)) {
        auto* const command = object->add_subcommand(name, what);
        command->callback([options, run] { run(*options); });
        return command;
    };
    const auto add_waiting = [&](CLI::App& command) {
        command.add_option("--timeout", options->milliseconds,
                           "Give up after so many milliseconds; 0 only looks");
        tool::add_json_flag(command, options->is_json);
    };
    const auto add_name = [&](CLI::App& command, const char* what) {
        command.add_option("NAME", options->name, what)->required();
    };

    auto* const waiting = add("wait", "Wait until an event is set or a mutex is free", wait);
    waiting->add_option("KIND", options->kind, "event or mutex")
        ->required()
        ->check(CLI::IsMember({"event", "mutex"}));
    add_name(*waiting, "Its name; \"Global\\\" in front is as good as nothing");
    add_waiting(*waiting);
    tool::add_to_footer(
        *waiting,
        "Prints signalled, taken, abandoned (who had the mutex ended without giving "
        "it\nback) or timeout, which is exit code 1. A mutex is given back at once. "
        "What isn't\nthere is made, and goes with the last program that uses it.");
    auto* const holding = add("hold", "Hold a mutex until standard input ends", hold);
    add_name(*holding, "The mutex");
    add_waiting(*holding);
    tool::add_to_footer(*holding, "Prints what \"wait\" would, as soon as the mutex is held.");
    add_name(*add("set", "Set an event: it lets one waiter through", set),
             "The event; exit code 1 when nobody has it");
});

}  // namespace
