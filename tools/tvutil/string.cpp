// tvutil string: the library's own strings, in every language.
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/modules.h"

#include <memory>
#include <optional>

#include "tools/tvutil/command.h"
#include "tools/tvutil/language_names.h"

namespace {

struct Options {
    std::string id;
    std::string language;
    bool is_json = false;
};

// Look-ups by the thread's language speak this one from now on.
void use_language(const std::string& text) {
    if (!text.empty()) SetThreadLocale(tool::language_id(text));
}

std::optional<std::string> string_with(unsigned int id) {
    char16_t text[4096];
    if (MLS_TvLoadString(tvutil2::library_instance(), id, text, sizeof text, nullptr) == 0) {
        return std::nullopt;
    }
    return tool::narrow(text);
}

void get(const Options& options) {
    const auto id = tool::number_of(options.id);
    if (!id) throw tool::Failure{tool::Exit::usage, options.id + ": no string id"};
    use_language(options.language);
    const auto text = string_with(*id);
    if (!text) throw tool::Failure{tool::Exit::no, "there is no string " + options.id};
    tool::print_text("text", *text, options.is_json);
}

// One line a string: line breaks and backslashes are escaped.
std::string on_one_line(const std::string& text) {
    std::string line;
    for (const char c : text) {
        if (c == '\n') {
            line += "\\n";
        } else {
            if (c == '\\') line += c;
            line += c;
        }
    }
    return line;
}

void list(const Options& options) {
    use_language(options.language);
    auto json = nlohmann::ordered_json::array();
    for (unsigned int id = 0; id <= 0xFFFF; ++id) {
        const auto text = string_with(id);
        if (!text) continue;
        if (options.is_json) {
            json.push_back({{"id", id}, {"text", *text}});
        } else {
            tool::print(std::to_string(id) + '\t' + on_one_line(*text));
        }
    }
    if (options.is_json) tool::print(json);
}

void add_language_option(CLI::App& command, Options& options) {
    command.add_option("--language", options.language,
                       "Such as \"de\", \"zh-TW\" or \"0x0407\"; the system's by default. A "
                       "language that isn't spoken here gives English");
}

const tool::Command g_command([](CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* string = app.add_subcommand("string", "Show the library's strings in any language");
    string->require_subcommand(1);

    auto* get_command = string->add_subcommand("get", "Print one string");
    get_command->add_option("id", options->id, "Number of the string, such as 14107")->required();
    add_language_option(*get_command, *options);
    tool::add_json_flag(*get_command, options->is_json);
    get_command->callback([options] { get(*options); });

    auto* list_command = string->add_subcommand(
        "list", "Print all strings, one a line: number, tab, text with \\n for a line break");
    add_language_option(*list_command, *options);
    tool::add_json_flag(*list_command, options->is_json);
    list_command->callback([options] { list(*options); });

    auto* languages_command = string->add_subcommand(
        "languages",
        "Print the languages: id, name, and how a product's module for it ends, by tabs");
    tool::add_json_flag(*languages_command, options->is_json);
    languages_command->callback([options] { tool::print_languages(options->is_json); });
});

}  // namespace
