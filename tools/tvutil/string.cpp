// tvutil string: the library's own strings, in every language.
#include "tvutil2/lang/language_table.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/modules.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>

#include "tools/tvutil/command.h"

namespace {

struct Options {
    std::string id;
    std::string language;
    bool is_json = false;
};

std::optional<unsigned int> number_of(std::string_view text) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    unsigned int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::string hexadecimal(LANGID id) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%04X", unsigned{id});
    return text;
}

// "de", "zh-TW" or a number.
LANGID language_id(const std::string& text) {
    if (const auto number = number_of(text); number && *number > 0 && *number <= 0xFFFF) {
        return static_cast<LANGID>(*number);
    }
    auto name = text;
    std::replace(name.begin(), name.end(), '-', '_');
    const auto id = tvutil2::language_of(name);
    // What nobody speaks comes back as English.
    const bool is_english = PRIMARYLANGID(id) == 0x09;
    if (!is_english || name.starts_with("en")) return id;
    throw tool::Failure{tool::Exit::usage,
                        text + ": no language; give one like \"de\", \"zh-TW\" or \"0x0407\""};
}

// Look-ups by the thread's language speak this one from now on.
void use_language(const std::string& text) {
    if (!text.empty()) SetThreadLocale(language_id(text));
}

std::optional<std::string> string_with(unsigned int id) {
    char16_t text[4096];
    if (MLS_TvLoadString(tvutil2::library_instance(), id, text, sizeof text, nullptr) == 0) {
        return std::nullopt;
    }
    return tool::narrow(text);
}

void get(const Options& options) {
    const auto id = number_of(options.id);
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

void languages(const Options& options) {
    auto json = nlohmann::ordered_json::array();
    for (const auto& language : tvutil2::kLanguages) {
        const auto id = hexadecimal(language.id);
        const auto name = tool::narrow(language.name);
        const auto suffix = tool::narrow(language.satellite_suffix);
        if (options.is_json) {
            json.push_back({{"id", id}, {"name", name}, {"satellite", suffix}});
        } else {
            std::string line = id;
            for (const auto& field : {name, suffix}) {
                if (!field.empty()) line.append("\t").append(field);
            }
            tool::print(line);
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
    languages_command->callback([options] { languages(*options); });
});

}  // namespace
