// tvutil option: named options, in an INI file or below a registry key.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/settings/option_storage.h"
#include "tvutil2/settings/registry.h"

#include <array>
#include <charconv>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "tools/tvutil/command.h"
#include "tools/tvutil/encoded_text.h"
#include "tools/tvutil/ini_commands.h"
#include "tools/tvutil/store.h"

namespace {

struct Options {
    std::string file;
    std::string company;
    std::string product;
    std::string section;
    std::string name;
    std::string value;
    bool has_product = false;
    bool is_in_registry = false;
    bool is_number = false;
    bool is_json = false;
};

using Value = std::variant<std::string, std::int32_t>;

void check_place(const Options& options) {
    if (options.file.empty() && options.company.empty()) {
        throw tool::Failure{tool::Exit::usage, "--file or --company is required"};
    }
}

void open(const Options& options, const std::u16string& file, COptionStorage& store) {
    const auto company = tool::wide(options.company);
    const auto product = tool::wide(options.product);
    const bool is_open =
        !options.file.empty()
            ? store.OpenIniFile(file.c_str()) != 0
            : store.Open(company.c_str(), options.has_product ? product.c_str() : nullptr,
                         options.is_in_registry ? 1 : 0) != 0;
    if (!is_open || store.SetSection(tool::wide(options.section).c_str()) == 0) {
        throw tool::Failure{tool::Exit::failed, "the place can't be opened"};
    }
}

// What isn't there gives any fallback: one that differs from a second one is none.
std::optional<Value> value_of(const COptionStorage& store, const std::u16string& name) {
    const auto text = store.GetValue(name.c_str(), u"1");
    if (text == store.GetValue(name.c_str(), u"2")) return tool::narrow(text.View());
    const int number = store.GetValue(name.c_str(), 1);
    if (number == store.GetValue(name.c_str(), 2)) return number;
    return std::nullopt;
}

std::string shown(const Value& value) {
    const auto* const number = std::get_if<std::int32_t>(&value);
    return number != nullptr ? std::to_string(*number) : std::get<std::string>(value);
}

nlohmann::ordered_json json_of(const Value& value) {
    const auto* const number = std::get_if<std::int32_t>(&value);
    return number != nullptr ? nlohmann::ordered_json(*number)
                             : nlohmann::ordered_json(std::get<std::string>(value));
}

// The INI file of --company and --product.
std::u16string own_file(const Options& options) {
    const auto company = tool::wide(options.company);
    const auto product = tool::wide(options.product);
    const auto* const named = options.has_product ? product.c_str() : nullptr;
    return std::u16string(tvutil2::option_file(company.c_str(), named).View());
}

// Reading says nothing of a file that can't be read; one that isn't there has no options.
void check_file(const std::u16string& path, const std::string& shown_name) {
    SetLastError(NO_ERROR);
    if (!tool::profile_list(path, nullptr).empty()) return;
    const auto error = GetLastError();
    if (error == NO_ERROR) return;
    const bool is_missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    throw tool::Failure{is_missing ? tool::Exit::no : tool::Exit::failed,
                        tool::error_text(shown_name, error)};
}

// The file behind --file, if that is given.
tool::NamedFile file_of(const Options& options) {
    check_place(options);
    return tool::NamedFile(options.file, tool::kLargestIni);
}

void get(const Options& options) {
    COptionStorage store;
    const auto file = file_of(options);
    const auto path = options.file.empty() ? std::u16string() : file.path();
    if (options.is_in_registry) {
        tool::check_store(HKEY_CURRENT_USER);
    } else {
        const auto own = path.empty() ? own_file(options) : path;
        check_file(own, path.empty() ? tool::narrow(own) : options.file);
    }
    open(options, path, store);
    const auto value = value_of(store, tool::wide(options.name));
    if (!value) throw tool::Failure{tool::Exit::no, options.name + ": no such option"};
    if (options.is_json) return tool::print(nlohmann::ordered_json{{"value", json_of(*value)}});
    tool::print(shown(*value));
}

std::int32_t number_of(const std::string& text) {
    std::int32_t number = 0;
    const auto* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    if (parsed.ec != std::errc() || parsed.ptr != end) {
        throw tool::Failure{tool::Exit::usage, text + ": no 32-bit number"};
    }
    return number;
}

// The store tells nothing of a write; what it holds then, does.
void set(const Options& options) {
    const auto name = tool::wide(options.name);
    const auto text = tool::wide(options.value);
    const auto number = options.is_number ? number_of(options.value) : 0;
    COptionStorage store;
    const auto file = file_of(options);
    open(options, options.file.empty() ? std::u16string() : file.path(), store);
    bool is_kept = false;
    if (options.is_number) {
        store.SetValue(name.c_str(), number);
        is_kept = store.GetValue(name.c_str(), number ^ 1) == number;
    } else {
        store.SetValue(name.c_str(), text.c_str());
        is_kept = store.GetValue(name.c_str(), text.empty() ? u"1" : u"").View() == text;
    }
    if (is_kept) return file.give_back();
    throw tool::Failure{tool::Exit::failed,
                        options.name +
                            ": it doesn't read back as written: the place can't be written, or "
                            "doesn't keep such a name or value (line breaks, outer blanks and "
                            "quotes, more than 4095 characters)"};
}

using Section = std::vector<std::pair<std::string, Value>>;

Section entries_of(const std::u16string& file, const std::u16string& section) {
    Section entries;
    for (const auto& entry : tool::profile_list(file, section.c_str())) {
        const auto equals = entry.find(u'=');
        entries.emplace_back(tool::narrow(entry.substr(0, equals)),
                             tool::narrow(entry.substr(equals + 1)));
    }
    return entries;
}

// Options only: values of other types aren't the store's.
Section entries_of(const CRegistry& key) {
    Section entries;
    std::vector<char16_t> name(REG_MAX_VALUE_NAME + 1);
    DWORD type = REG_NONE;
    for (DWORD i = 0;
         key.EnumValueWithType(i, name.data(), static_cast<DWORD>(name.size()), &type) != 0; ++i) {
        const auto shown_name = tool::narrow(name.data());
        if (type == REG_DWORD) {
            entries.emplace_back(shown_name,
                                 static_cast<std::int32_t>(key.GetValue(name.data(), DWORD{0})));
        } else if (type == REG_SZ) {
            entries.emplace_back(shown_name,
                                 tool::narrow(key.GetValue(name.data(), CString()).View()));
        }
    }
    return entries;
}

using Sections = std::vector<std::pair<std::string, Section>>;

Sections sections_of_key(const std::u16string& path) {
    tool::check_store(HKEY_CURRENT_USER);
    CRegistry root;
    if (root.Open(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ) == 0) {
        throw tool::Failure{tool::Exit::no, "HKCU\\" + tool::narrow(path) + ": no such key"};
    }
    Sections sections;
    if (auto entries = entries_of(root); !entries.empty()) sections.emplace_back("", entries);
    std::array<char16_t, REG_MAX_KEY_NAME + 1> name{};
    for (DWORD i = 0; root.EnumKey(i, name.data(), DWORD{name.size()}) != 0; ++i) {
        CRegistry key;
        if (key.Open(&root, name.data(), 0, KEY_READ) == 0) continue;
        sections.emplace_back(tool::narrow(name.data()), entries_of(key));
    }
    return sections;
}

Sections sections_of_file(const std::u16string& path) {
    check_file(path, tool::narrow(path));
    Sections sections;
    for (const auto& section : tool::profile_list(path, nullptr)) {
        sections.emplace_back(tool::narrow(section), entries_of(path, section));
    }
    return sections;
}

void list(const Options& options) {
    const auto file = file_of(options);
    Sections sections;
    if (options.is_in_registry) {
        const auto company = tool::wide(options.company);
        const auto product = tool::wide(options.product);
        const auto* const named = options.has_product ? product.c_str() : nullptr;
        sections =
            sections_of_key(std::u16string(tvutil2::option_key(company.c_str(), named).View()));
    } else {
        sections = sections_of_file(options.file.empty() ? own_file(options) : file.path());
    }
    if (options.is_json) {
        tool::UniqueMembers all;
        for (const auto& [section, entries] : sections) {
            tool::UniqueMembers members;
            for (const auto& [name, value] : entries) members.add(name, json_of(value));
            all.add(section, members.take());
        }
        return tool::print(all.take());
    }
    for (const auto& [section, entries] : sections) {
        if (!section.empty()) tool::print('[' + section + ']');
        for (const auto& [name, value] : entries) tool::print(name + '=' + shown(value));
    }
}

void add_place(CLI::App& command, const std::shared_ptr<Options>& options) {
    auto* const file = command.add_option("--file", options->file,
                                          "In this INI file; \"-\" is standard input, and "
                                          "output for what is set");
    auto* const company =
        command.add_option("--company", options->company,
                           "In the INI file APPLICATION-DATA\\COMPANY\\PRODUCT of the person");
    company->excludes(file);
    command
        .add_option_function<std::string>(
            "--product",
            [options](const std::string& product) {
                options->product = product;
                options->has_product = true;
            },
            "The product; without it \"setup.ini\", or the company's key")
        ->needs(company);
    command
        .add_flag("--registry", options->is_in_registry,
                  "In the registry instead, HKCU\\SOFTWARE\\COMPANY\\PRODUCT")
        ->needs(company);
}

void add_option_name(CLI::App& command, const std::shared_ptr<Options>& options) {
    add_place(command, options);
    command.add_option("--section", options->section,
                       "Section; without it \"Default\" in a file, and in the registry the key "
                       "itself");
    command.add_option("name", options->name, "Name of the option")->required();
}

const tool::Command g_option([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& option = *app.add_subcommand(
        "option", "Named options, in an INI file or below a registry key, as products keep them");
    option.require_subcommand(1);

    auto& reading =
        *option.add_subcommand("get", "Print one option; exit code 1 when it isn't set");
    add_option_name(reading, options);
    tool::add_json_flag(reading, options->is_json);
    reading.callback([options] { get(*options); });

    auto& writing = *option.add_subcommand(
        "set", "Set one option; the file, its section or the key is made if missing");
    add_option_name(writing, options);
    writing.add_option("value", options->value, "The value")->required();
    writing.add_flag("--number", options->is_number, "The value is a number, not text");
    writing.callback([options] { set(*options); });

    auto& listing = *option.add_subcommand("list", "Print all options, section by section");
    add_place(listing, options);
    tool::add_json_flag(listing, options->is_json);
    listing.callback([options] { list(*options); });
});

}  // namespace
