// tvutil window: the windows of the user's programs.
#include "tvutil2/platform/window/window.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/messages.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <memory>

#include "tools/tvutil/command.h"

namespace {

using tool::Exit;
using tool::Failure;
using Json = nlohmann::ordered_json;

struct Options {
    std::string class_name, title;
    bool has_class = false, has_title = false;
    std::string window, message, wparam = "0", lparam = "0";
    bool is_json = false;
};

std::string shown(HWND window) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(window)));
    return text;
}

template <class Get>
std::string text_of(HWND window, Get get) {
    std::array<char16_t, 32768> text{};
    const int length = get(window, text.data(), static_cast<int>(text.size()));
    return tool::narrow({text.data(), static_cast<std::size_t>(std::max(length, 0))});
}

Json description(HWND window) {
    DWORD process = 0;
    const auto thread = GetWindowThreadProcessId(window, &process);
    return {{"window", shown(window)},
            {"process", process},
            {"thread", thread},
            {"class", text_of(window, GetClassNameW)},
            {"title", text_of(window, GetWindowTextW)}};
}

// The title ends the line: it may hold anything.
void print_line(const Json& window) {
    tool::print(window["window"].get<std::string>() + "  " +
                std::to_string(window["process"].get<DWORD>()) + "  " +
                window["class"].get<std::string>() + "  " + window["title"].get<std::string>());
}

void list(const Options& options) {
    Json all = Json::array();
    const auto add = [](HWND window, LPARAM list) -> BOOL {
        auto text = description(window);
        // One that has gone since has no thread.
        if (text["thread"] != 0) reinterpret_cast<Json*>(list)->push_back(std::move(text));
        return TRUE;
    };
    EnumWindows(add, reinterpret_cast<LPARAM>(&all));
    if (options.is_json) return tool::print(all);
    for (const auto& window : all) print_line(window);
}

void find(const Options& options) {
    const auto class_name = tool::wide(options.class_name);
    const auto title = tool::wide(options.title);
    auto* const window = FindWindowW(options.has_class ? class_name.c_str() : nullptr,
                                     options.has_title ? title.c_str() : nullptr);
    if (window == nullptr) return tool::exit_with(Exit::no);
    if (options.is_json) return tool::print(description(window));
    tool::print(shown(window));
}

// A number as C writes it, decimal or hexadecimal, that has room in `Number`.
template <class Number>
Number number(const std::string& text) {
    const bool is_hex = text.starts_with("0x") || text.starts_with("0X");
    Number value = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] =
        std::from_chars(text.data() + (is_hex ? 2 : 0), end, value, is_hex ? 16 : 10);
    if (error == std::errc() && last == end) return value;
    throw Failure{Exit::usage, "\"" + text + "\" is no number that can stand here"};
}

void post(const Options& options) {
    auto* const window = reinterpret_cast<HWND>(number<std::uintptr_t>(options.window));
    const auto message = number<UINT>(options.message);
    const auto wparam = number<WPARAM>(options.wparam);
    const auto lparam = number<LPARAM>(options.lparam);
    // Null would post to this very program.
    if (!IsWindow(window)) return tool::exit_with(Exit::no);
    if (!PostMessageW(window, message, wparam, lparam)) {
        throw Failure{Exit::failed, tool::error_text(options.window, GetLastError())};
    }
}

const tool::Command kCommand([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto* const window =
        app.add_subcommand("window", "List, find and post to windows of your programs");
    window->require_subcommand(1);
    const auto add = [&](const char* name, const char* what, void (*run)(const Options&)) {
        auto* const command = window->add_subcommand(name, what);
        command->callback([options, run] { run(*options); });
        return command;
    };

    tool::add_json_flag(*add("list", "Print window, process, class and title of each", list),
                        options->is_json);

    auto* const finding = add("find", "Print the first window of a class and a title", find);
    auto* const by_class = finding->add_option("--class", options->class_name,
                                               "The class's name, without regard to case");
    auto* const by_title = finding->add_option("--title", options->title, "Exactly that title");
    by_class->each([options](const std::string&) { options->has_class = true; });
    by_title->each([options](const std::string&) { options->has_title = true; });
    tool::add_json_flag(*finding, options->is_json);
    tool::add_to_footer(*finding, "Exit code 1 when there is none.");

    auto* const posting = add("post", "Post a message to a window, without waiting for it", post);
    posting->add_option("WINDOW", options->window, "As \"find\" prints it")->required();
    posting->add_option("MESSAGE", options->message, "Its number; 0x10 is WM_CLOSE")->required();
    posting->add_option("WPARAM", options->wparam, "0 if it is left out");
    posting->add_option("LPARAM", options->lparam, "0 if it is left out");
    tool::add_to_footer(*posting, "Exit code 1 when the window is gone.");
});

}  // namespace
