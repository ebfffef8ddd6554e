// tvutil ini: values of INI files.
#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/profile/profile.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "tools/tvutil/command.h"
#include "tools/tvutil/encoded_text.h"
#include "tools/tvutil/ini_commands.h"

namespace {

struct Options {
    std::string file;
    std::string section;
    std::string key;
    std::string value;
    bool is_json = false;
};

bool is_same(const std::u16string& a, const std::u16string& b) {
    return CString(a.c_str()).CompareNoCase(b.c_str()) == 0;
}

// Of several entries of one key the first holds.
std::optional<std::u16string> value_in(const std::u16string& path, const Options& options) {
    const auto key = tool::wide(options.key);
    for (const auto& entry : tool::profile_list(path, tool::wide(options.section).c_str())) {
        const auto equals = entry.find(u'=');
        if (is_same(entry.substr(0, equals), key)) return entry.substr(equals + 1);
    }
    return std::nullopt;
}

void get(const Options& options) {
    const tool::NamedFile file(options.file, tool::kLargestIni);
    static_cast<void>(tool::sections_of(file.path(), options.file));
    const auto value = value_in(file.path(), options);
    if (!value) throw tool::Failure{tool::Exit::no, options.file + ": no such key"};
    tool::print_text("value", tool::narrow(*value), options.is_json);
}

void write(const tool::NamedFile& file, const Options& options, const char16_t* key,
           const char16_t* value) {
    if (WritePrivateProfileStringW(tool::wide(options.section).c_str(), key, value,
                                   file.path().c_str()) == FALSE) {
        throw tool::Failure{tool::Exit::failed, tool::error_text(options.file, GetLastError())};
    }
    file.give_back();
}

void set(const Options& options) {
    const tool::NamedFile file(options.file, tool::kLargestIni);
    write(file, options, tool::wide(options.key).c_str(), tool::wide(options.value).c_str());
}

void remove(const Options& options, bool has_key) {
    const tool::NamedFile file(options.file, tool::kLargestIni);
    const auto section = tool::wide(options.section);
    const auto sections = tool::sections_of(file.path(), options.file);
    const bool is_there =
        has_key ? value_in(file.path(), options).has_value()
                : std::any_of(sections.begin(), sections.end(),
                              [&](const auto& name) { return is_same(name, section); });
    if (!is_there) {
        file.give_back();
        throw tool::Failure{tool::Exit::no,
                            options.file + (has_key ? ": no such key" : ": no such section")};
    }
    const auto key = tool::wide(options.key);
    write(file, options, has_key ? key.c_str() : nullptr, nullptr);
}

void list(const Options& options) {
    const tool::NamedFile file(options.file, tool::kLargestIni);
    const auto path = file.path();
    const auto sections = tool::sections_of(path, options.file);
    tool::UniqueMembers all;
    for (const auto& section : sections) {
        const auto name = tool::narrow(section);
        if (!options.is_json) tool::print('[' + name + ']');
        tool::UniqueMembers members;
        for (const auto& entry : tool::profile_list(path, section.c_str())) {
            const auto equals = entry.find(u'=');
            const auto key = tool::narrow(entry.substr(0, equals));
            const auto value = tool::narrow(entry.substr(equals + 1));
            if (options.is_json) {
                members.add(key, value);
            } else {
                tool::print(std::string(key).append(1, '=').append(value));
            }
        }
        all.add(name, members.take());
    }
    if (options.is_json) tool::print(all.take());
}

void add_file(CLI::App& command, Options& options) {
    command
        .add_option("file", options.file,
                    "The INI file; \"-\" is standard input, and output for what is changed")
        ->required()
        ->type_name("FILE");
}

const tool::Command g_command([](CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* ini = app.add_subcommand("ini", "Read and change INI files, comments and order kept");
    ini->require_subcommand(1);

    auto* get_command = ini->add_subcommand("get", "Print one value");
    add_file(*get_command, *options);
    get_command->add_option("section", options->section, "Its section")->required();
    get_command->add_option("key", options->key, "Its key")->required();
    tool::add_json_flag(*get_command, options->is_json);
    get_command->callback([options] { get(*options); });

    auto* set_command = ini->add_subcommand("set", "Set one value; the file is made if missing");
    add_file(*set_command, *options);
    set_command->add_option("section", options->section, "Its section")->required();
    set_command->add_option("key", options->key, "Its key")->required();
    set_command->add_option("value", options->value, "The text")->required();
    set_command->callback([options] { set(*options); });

    auto* remove_command = ini->add_subcommand("remove", "Remove a key, or a whole section");
    add_file(*remove_command, *options);
    remove_command->add_option("section", options->section, "The section")->required();
    auto* const key = remove_command->add_option("key", options->key, "The key in it");
    remove_command->callback([options, key] { remove(*options, key->count() != 0); });

    auto* list_command = ini->add_subcommand("list", "Print all sections with their entries");
    add_file(*list_command, *options);
    tool::add_json_flag(*list_command, options->is_json);
    list_command->callback([options] { list(*options); });

    tool::add_ini_convert(*ini);
    tool::add_ini_lint(*ini);
});

}  // namespace

namespace tool {

std::vector<std::u16string> sections_of(const std::u16string& path, const std::string& shown_name) {
    SetLastError(NO_ERROR);
    auto sections = profile_list(path, nullptr);
    if (sections.empty() && GetLastError() != NO_ERROR) {
        throw Failure{Exit::failed, error_text(shown_name, GetLastError())};
    }
    return sections;
}

std::vector<std::u16string> profile_list(const std::u16string& path, const char16_t* section) {
    std::u16string buffer(4096, u'\0');
    for (;;) {
        const auto room = static_cast<DWORD>(buffer.size());
        const auto size =
            section != nullptr
                ? GetPrivateProfileSectionW(section, buffer.data(), room, path.c_str())
                : GetPrivateProfileSectionNamesW(buffer.data(), room, path.c_str());
        if (size + 2 < room) {
            buffer.resize(size);
            break;
        }
        buffer.assign(buffer.size() * 4, u'\0');
    }
    // By the size: the name of a section may be empty.
    std::vector<std::u16string> list;
    for (std::size_t at = 0; at < buffer.size(); at += list.back().size() + 1) {
        list.emplace_back(buffer, at, buffer.find(u'\0', at) - at);
    }
    return list;
}

}  // namespace tool
