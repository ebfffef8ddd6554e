// tvutil reg: keys and values of the registry.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/registry/open_key.h"
#include "tvutil2/platform/registry/reg_text.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/settings/registry.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>

#include "tools/tvutil/command.h"
#include "tools/tvutil/encoded_text.h"
#include "tools/tvutil/store.h"
#include "tools/tvutil/terminal.h"

namespace {

constexpr std::size_t kLargestText = std::size_t{512} << 20U;

struct Options {
    std::string key;
    std::string name;
    std::string type = "sz";
    std::string file;
    std::string encoding;
    std::vector<std::string> data;
    bool is_recursive = false;
    bool is_json = false;
    bool is_tree = false;
    bool is_once = false;
};

struct KeyName {
    HKEY root = nullptr;
    std::u16string path;
};

const std::map<std::string, DWORD>& types() {
    static const std::map<std::string, DWORD> list = {
        {"none", REG_NONE},     {"sz", REG_SZ},       {"expand_sz", REG_EXPAND_SZ},
        {"binary", REG_BINARY}, {"dword", REG_DWORD}, {"multi_sz", REG_MULTI_SZ},
        {"qword", REG_QWORD}};
    return list;
}

std::string type_name(DWORD type) {
    for (const auto& [name, number] : types()) {
        if (number == type) return name;
    }
    return "type " + std::to_string(type);
}

KeyName key_name(const std::string& text) {
    KeyName name;
    if (tvutil2::parse_reg_key_name(tool::wide(text), name.root, name.path)) return name;
    throw tool::Failure{tool::Exit::usage, text + ": not a key (HKCU\\... or HKLM\\...)"};
}

HKEY root_of(const std::string& text) {
    KeyName name;
    if (text.empty() || !tvutil2::parse_reg_key_name(tool::wide(text), name.root, name.path)) {
        return HKEY_CURRENT_USER;
    }
    return name.root;
}

// `what` begins with the key, or is one.
void check(const std::string& what, HKEY root, LONG error) {
    if (error == LONG{ERROR_SUCCESS}) return;
    tool::check_store(root);
    const auto code = static_cast<unsigned>(error);
    if (code == ERROR_FILE_NOT_FOUND) {
        throw tool::Failure{tool::Exit::no, tool::error_text(what, code)};
    }
    throw tool::Failure{tool::Exit::failed, tool::in_store(tool::error_text(what, code), root)};
}

void check(const std::string& key, LONG error) {
    check(key, root_of(key), error);
}

void open(const std::string& text, DWORD access, tvutil2::OpenKey& result) {
    const auto name = key_name(text);
    check(text, result.open(name.root, name.path.c_str(), access));
}

// What the data says.

std::u16string text_of(const std::vector<BYTE>& data) {
    std::u16string text(data.size() / 2, u'\0');
    if (!text.empty()) std::memcpy(text.data(), data.data(), text.size() * 2);
    return text;
}

std::vector<std::string> texts_of(const std::vector<BYTE>& data) {
    std::vector<std::string> list;
    const auto text = text_of(data);
    for (std::size_t at = 0; at < text.size() && text[at] != u'\0';) {
        const auto end = std::min(text.find(u'\0', at), text.size());
        list.push_back(tool::narrow(std::u16string_view(text).substr(at, end - at)));
        at = end + 1;
    }
    return list;
}

nlohmann::ordered_json content_of(const tvutil2::RegTextValue& value) {
    const auto& data = value.data;
    if (value.type == REG_SZ || value.type == REG_EXPAND_SZ) {
        const auto text = text_of(data);
        return tool::narrow(std::u16string_view(text).substr(0, text.find(u'\0')));
    }
    if (value.type == REG_MULTI_SZ) return texts_of(data);
    const bool is_number = (value.type == REG_DWORD && data.size() == 4) ||
                           (value.type == REG_QWORD && data.size() == 8);
    if (is_number) {
        ULONGLONG number = 0;
        std::memcpy(&number, data.data(), data.size());
        return number;
    }
    std::string digits;
    for (const BYTE byte : data) {
        digits += "0123456789abcdef"[byte >> 4U];
        digits += "0123456789abcdef"[byte & 0xFU];
    }
    return digits;
}

std::string shown(const nlohmann::ordered_json& content) {
    if (content.is_string()) return content.get<std::string>();
    if (!content.is_array()) return content.dump();
    std::string line;
    for (const auto& text : content) line += (line.empty() ? "" : " | ") + text.get<std::string>();
    return line;
}

void print_value(const tvutil2::RegTextValue& value) {
    tool::print("    " + (value.name.empty() ? "(default)" : tool::narrow(value.name)) + "    " +
                type_name(value.type) + "    " + shown(content_of(value)));
}

nlohmann::ordered_json json_of(const tvutil2::RegTextValue& value) {
    return {{"name", tool::narrow(value.name)},
            {"type", type_name(value.type)},
            {"data", content_of(value)}};
}

// Query.

tvutil2::RegTextValue read_value(HKEY key, const Options& options) {
    tvutil2::RegTextValue value;
    value.name = tool::wide(options.name);
    for (DWORD size = 0;;) {
        value.data.resize(size + 2);
        size = static_cast<DWORD>(value.data.size());
        const LONG error = RegQueryValueExW(key, value.name.c_str(), nullptr, &value.type,
                                            value.data.data(), &size);
        if (error == LONG{ERROR_MORE_DATA}) continue;
        check(options.key + ", value " + options.name, root_of(options.key), error);
        value.data.resize(size);
        return value;
    }
}

void query_value(const Options& options) {
    tvutil2::OpenKey key;
    open(options.key, KEY_QUERY_VALUE, key);
    const auto value = read_value(key.get(), options);
    if (options.is_json) return tool::print(json_of(value));
    if (value.type != REG_MULTI_SZ) return tool::print(shown(content_of(value)));
    for (const auto& text : texts_of(value.data)) tool::print(text);
}

std::vector<std::u16string> sub_keys(const Options& options) {
    tvutil2::OpenKey key;
    open(options.key, KEY_READ, key);
    std::vector<std::u16string> names;
    for (DWORD index = 0;; ++index) {
        char16_t name[REG_MAX_KEY_NAME + 1];
        const LONG error = RegEnumKeyW(key.get(), index, name, REG_MAX_KEY_NAME + 1);
        if (error == LONG{ERROR_NO_MORE_ITEMS}) return names;
        check(options.key, error);
        names.emplace_back(name);
    }
}

void query(const Options& options) {
    const auto name = key_name(options.key);
    std::vector<tvutil2::RegTextKey> keys;
    if (options.is_recursive) {
        check(options.key, tvutil2::read_reg_tree(name.root, name.path, keys));
    } else {
        check(options.key, tvutil2::read_reg_key(name.root, name.path, keys.emplace_back()));
        const auto prefix = name.path.empty() ? name.path : name.path + u'\\';
        for (const auto& sub_key : sub_keys(options)) {
            keys.push_back({name.root, prefix + sub_key, false, {}});
        }
    }
    auto json = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto full = tool::narrow(tvutil2::reg_key_name(keys[i].root, keys[i].path));
        if (!options.is_json) tool::print(full);
        auto values = nlohmann::ordered_json::array();
        for (const auto& value : keys[i].values) {
            if (options.is_json) {
                values.push_back(json_of(value));
            } else {
                print_value(value);
            }
        }
        json.push_back({{"key", full}});
        // Without --recursive the values of the keys below aren't looked at, which isn't "none".
        if (options.is_recursive || i == 0) json.back()["values"] = std::move(values);
    }
    if (options.is_json) tool::print(json);
}

// Changes.

void append_text(std::vector<BYTE>& data, const std::string& text) {
    for (const char16_t unit : tool::wide(text) + u'\0') {
        data.push_back(static_cast<BYTE>(unit & 0xFFU));
        data.push_back(static_cast<BYTE>(unit >> 8U));
    }
}

void append_number(std::vector<BYTE>& data, const std::string& text, std::size_t size) {
    const bool is_hex = text.starts_with("0x") || text.starts_with("0X");
    const char* const end = text.data() + text.size();
    ULONGLONG number = 0;
    const auto result =
        std::from_chars(text.data() + (is_hex ? 2 : 0), end, number, is_hex ? 16 : 10);
    if (result.ec != std::errc{} || result.ptr != end || (size == 4 && number >> 32U != 0)) {
        throw tool::Failure{tool::Exit::usage, text + ": not a number of this type"};
    }
    for (std::size_t i = 0; i < size; ++i) data.push_back(static_cast<BYTE>(number >> (i * 8)));
}

void append_bytes(std::vector<BYTE>& data, const std::string& digits) {
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        BYTE byte = 0;
        const char* const start = digits.data() + i;
        const char* const end = start + std::min<std::size_t>(2, digits.size() - i);
        if (std::from_chars(start, end, byte, 16).ptr != start + 2) {
            throw tool::Failure{tool::Exit::usage, digits + ": not pairs of hexadecimal digits"};
        }
        data.push_back(byte);
    }
}

std::vector<BYTE> data_of(const Options& options, DWORD type) {
    std::vector<BYTE> data;
    if (type != REG_MULTI_SZ && options.data.size() > 1) {
        throw tool::Failure{tool::Exit::usage, "only multi_sz takes more than one DATA"};
    }
    if (type == REG_SZ || type == REG_EXPAND_SZ) {
        append_text(data, options.data.empty() ? "" : options.data.front());
    } else if (type == REG_MULTI_SZ) {
        for (const auto& text : options.data) {
            if (text.empty()) throw tool::Failure{tool::Exit::usage, "an empty text ends multi_sz"};
            append_text(data, text);
        }
        append_text(data, "");
    } else if (type == REG_DWORD || type == REG_QWORD) {
        append_number(data, options.data.empty() ? "0" : options.data.front(),
                      type == REG_DWORD ? 4 : 8);
    } else if (!options.data.empty()) {
        append_bytes(data, options.data.front());
    }
    return data;
}

void add(const Options& options, bool has_value) {
    const auto name = key_name(options.key);
    tvutil2::RegTextKey change{name.root, name.path, false, {}};
    if (has_value) {
        const DWORD type = types().at(options.type);
        change.values.push_back({tool::wide(options.name), false, type, data_of(options, type)});
    }
    std::size_t failed = 0;
    check(options.key, tvutil2::apply_reg_text({change}, failed));
}

void remove(const Options& options, bool has_value) {
    const auto name = key_name(options.key);
    if (has_value) {
        tvutil2::OpenKey key;
        open(options.key, KEY_SET_VALUE, key);
        return check(options.key + ", value " + options.name, name.root,
                     RegDeleteValueW(key.get(), tool::wide(options.name).c_str()));
    }
    if (name.path.empty()) throw tool::Failure{tool::Exit::usage, "a root can't be deleted"};
    if (options.is_tree) return check(options.key, SHDeleteKeyW(name.root, name.path.c_str()));
    const LONG error = RegDeleteKeyW(name.root, name.path.c_str());
    if (error == LONG{ERROR_ACCESS_DENIED}) {
        throw tool::Failure{
            tool::Exit::failed,
            tool::in_store(tool::error_text(options.key, ERROR_ACCESS_DENIED), name.root) +
                "; a key with keys below it needs --tree"};
    }
    check(options.key, error);
}

// The copy merges into a key that is there and can't be into the key itself: both would lose.
void rename(const Options& options) {
    const auto name = key_name(options.key);
    const auto split = name.path.rfind(u'\\');
    const auto start = split == name.path.npos ? 0 : split + 1;
    const auto new_name = tool::wide(options.name);
    const bool is_one_part = new_name.find(u'\\') == new_name.npos && !new_name.empty();
    if (name.path.empty() || !is_one_part) {
        throw tool::Failure{tool::Exit::usage, options.name + ": not a new name for a key"};
    }
    tvutil2::OpenKey source;
    open(options.key, KEY_READ, source);
    CRegistry parent;
    const auto parent_path = name.path.substr(0, start == 0 ? 0 : start - 1);
    if (parent.Open(name.root, parent_path.c_str(), 0, KEY_ALL_ACCESS) == 0) {
        throw tool::Failure{
            tool::Exit::failed,
            tool::in_store(tool::error_text(options.key, ERROR_ACCESS_DENIED), name.root)};
    }
    tvutil2::OpenKey target;
    if (target.open(parent.GetSafeHkey(), new_name.c_str(), KEY_READ) == LONG{ERROR_SUCCESS}) {
        parent.Close();
        throw tool::Failure{tool::Exit::refused, options.name + ": it exists already"};
    }
    const int done = parent.RenameKey(name.path.substr(start).c_str(), new_name.c_str());
    parent.Close();
    if (done == 0) {
        throw tool::Failure{tool::Exit::failed,
                            options.key +
                                ": can't be copied whole (a value above 8192 bytes, or "
                                "no access); the old key is untouched"};
    }
}

void watch(const Options& options) {
    tvutil2::OpenKey key;
    open(options.key, KEY_NOTIFY, key);
    const DWORD filter = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET;
    do {
        check(options.key, RegNotifyChangeKeyValue(key.get(), options.is_recursive ? TRUE : FALSE,
                                                   filter, nullptr, FALSE));
        if (options.is_json) {
            std::cout << nlohmann::ordered_json{{"changed", options.key}}.dump() << '\n';
        } else {
            tool::print("changed: " + options.key);
        }
        std::cout.flush();
    } while (!options.is_once && std::cout);
}

// Texts.

void import_text(const Options& options) {
    std::vector<tvutil2::RegTextKey> keys;
    const auto bytes = tool::read_input(options.file, kLargestText);
    if (const auto error = tvutil2::parse_reg_text(bytes, keys)) {
        throw tool::Failure{
            tool::Exit::refused,
            options.file + ", line " + std::to_string(error->line) + ": " + error->what};
    }
    std::size_t failed = 0;
    const LONG error = tvutil2::apply_reg_text(keys, failed);
    if (error == LONG{ERROR_SUCCESS}) return;
    check(tool::narrow(tvutil2::reg_key_name(keys[failed].root, keys[failed].path)),
          keys[failed].root, error);
}

std::string utf8_of(const std::string& key, const std::string& bytes) {
    const auto utf16 = tool::encoding_named("utf-16");
    const auto body = std::string_view(bytes).substr(utf16.mark().size());
    const auto text = tvutil2::to_utf8(tool::decoded(utf16, body).text);
    if (!text) {
        throw tool::Failure{tool::Exit::lossy,
                            key + ": half a surrogate pair, which UTF-8 can't hold; utf-16 can"};
    }
    return *text;
}

void export_text(const Options& options) {
    const auto name = key_name(options.key);
    std::vector<tvutil2::RegTextKey> keys;
    check(options.key, tvutil2::read_reg_tree(name.root, name.path, keys));
    std::string bytes;
    if (!tvutil2::write_reg_text(keys, bytes)) {
        throw tool::Failure{tool::Exit::failed,
                            options.key + ": a key's name has a line break, which the text can't"};
    }
    const bool is_shown = options.file == "-" && tool::is_output_terminal();
    if (options.encoding == "utf-8" || (options.encoding.empty() && is_shown)) {
        bytes = utf8_of(options.key, bytes);
    }
    tool::write_output(options.file, bytes);
}

CLI::App* sub_command(CLI::App& reg, const std::string& name, const std::string& what,
                      Options& options) {
    auto* const command = reg.add_subcommand(name, what);
    command->add_option("key", options.key, "HKCU\\... or HKLM\\...")->required()->type_name("KEY");
    return command;
}

void add_queries(CLI::App& reg, const std::shared_ptr<Options>& options) {
    auto* const command = sub_command(reg, "query", "Print a key's values and sub keys", *options);
    auto* const value =
        command->add_option("--value", options->name, "Print this value alone; \"\" is unnamed");
    command->add_flag("--recursive", options->is_recursive, "And all below")->excludes(value);
    tool::add_json_flag(*command, options->is_json);
    command->callback([options, value] {
        if (value->count() != 0) return query_value(*options);
        query(*options);
    });

    auto* const watching = sub_command(reg, "watch", "Print a line for each change", *options);
    watching->add_flag("--recursive", options->is_recursive, "Of keys below it, too");
    watching->add_flag("--once", options->is_once, "End after the first");
    watching->add_flag("--json", options->is_json, "Print a line of JSON for each");
    watching->callback([options] { watch(*options); });
}

void add_changes(CLI::App& reg, const std::shared_ptr<Options>& options) {
    auto* const adding = sub_command(reg, "add", "Make a key, or set a value of it", *options);
    auto* const name = adding->add_option("name", options->name, "The value; \"\" is unnamed");
    adding->add_option("data", options->data,
                       "Text; a number, also 0x...; hexadecimal digits for binary and none");
    adding->add_option("--type", options->type, "The value's type")
        ->check(CLI::IsMember(types()))
        ->capture_default_str();
    adding->callback([options, name] { add(*options, name->count() != 0); });

    auto* const removing = sub_command(reg, "delete", "Delete a key, or a value of it", *options);
    auto* const value = removing->add_option("--value", options->name, "The value");
    removing->add_flag("--tree", options->is_tree, "With all keys below it")->excludes(value);
    removing->callback([options, value] { remove(*options, value->count() != 0); });

    auto* const renaming = sub_command(reg, "rename", "Give a key another name", *options);
    renaming->add_option("new", options->name, "The name, without its parents")->required();
    renaming->callback([options] { rename(*options); });
}

void add_texts(CLI::App& reg, const std::shared_ptr<Options>& options) {
    auto* const importing = reg.add_subcommand(
        "import", "Make the changes of a .reg text; a malformed one changes nothing");
    importing->add_option("file", options->file, "\"-\" is standard input")
        ->required()
        ->type_name("FILE");
    importing->callback([options] { import_text(*options); });

    auto* const exporting = sub_command(reg, "export", "Write a key with all below it", *options);
    tool::add_to_footer(
        *exporting,
        "Quotes mean text with a final zero. Text that was stored without one, text to expand and\n"
        "lists are written as bytes, which import exactly, with the words in a comment above.");
    exporting
        ->add_option("file", options->file, "The .reg text; \"-\" and, if missing, standard output")
        ->type_name("FILE");
    exporting
        ->add_option("--encoding", options->encoding,
                     "utf-16 (the default for files and pipes) or utf-8 (for terminals)")
        ->check(CLI::IsMember({"utf-16", "utf-8"}));
    exporting->callback([options] {
        if (options->file.empty()) options->file = "-";
        export_text(*options);
    });
}

const tool::Command g_command([](CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* const reg = app.add_subcommand("reg", "Read, change, watch and move registry keys");
    reg->require_subcommand(1);
    add_queries(*reg, options);
    add_changes(*reg, options);
    add_texts(*reg, options);
});

}  // namespace
