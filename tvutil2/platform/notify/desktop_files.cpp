#include "tvutil2/platform/notify/desktop_files.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/files/replaced_file.h"
#include "tvutil2/platform/process/launch.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <string_view>

namespace tvutil2 {
namespace {

constexpr std::string_view kPrefix = "tvutil2.toast.c";  // an element doesn't begin with a digit

std::string entry_file(const std::string& name) {
    return data_folder() + "/applications/" + name + ".desktop";
}
std::string service_file(const std::string& name) {
    return data_folder() + "/dbus-1/services/" + name + ".service";
}

// One line, for both kinds of file.
std::string value_text(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\') {
            out += "\\\\";
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c == ' ' && out.empty()) {
            out += "\\s";
        } else {
            out += c;
        }
    }
    return out;
}

// As both kinds of files have it: quotes, and a backslash before what means something in them. In
// a desktop entry "%" begins a field code.
std::string quoted(std::string_view argument, bool has_field_codes) {
    std::string out = "\"";
    for (const char c : argument) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') out += '\\';
        if (c == '%' && has_field_codes) out += '%';
        out += c;
    }
    return out + '"';
}

// The command line of the platform as the host's.
std::optional<std::string> host_command(const std::u16string& command, bool has_field_codes) {
    const auto words = split_command_line(command);
    if (words.empty()) return std::nullopt;
    const auto program = host_path(words[0]);
    if (!program || access(program->c_str(), X_OK) != 0) return std::nullopt;
    auto line = quoted(*program, has_field_codes);
    for (std::size_t i = 1; i < words.size(); ++i) {
        const auto word = to_utf8(words[i]);
        if (!word) return std::nullopt;
        line += ' ' + quoted(*word, has_field_codes);
    }
    return line;
}

// Whether it had to be written; nothing when it couldn't be.
std::optional<bool> keep_file(const std::string& path, const std::string& content) {
    struct stat info {};
    std::string present;
    if (stat(path.c_str(), &info) == 0 && read_whole_file(path, info, present) &&
        present == content) {
        return false;
    }
    if (!make_host_folders(path.substr(0, path.rfind('/')), false) ||
        !replace_content(path, true, [&content](const std::string&) { return content; })) {
        return std::nullopt;
    }
    return true;
}

}  // namespace

std::string name_of_class(const CLSID& id) {
    char digits[33];
    std::snprintf(digits, sizeof digits, "%08x%04x%04x", id.Data1, unsigned{id.Data2},
                  unsigned{id.Data3});
    for (std::size_t i = 0; i < sizeof id.Data4; ++i) {
        std::snprintf(digits + 16 + i * 2, 3, "%02x", unsigned{id.Data4[i]});
    }
    return std::string(kPrefix) + digits;
}

std::string name_of_class(const std::u16string& class_text) {
    CLSID id;
    if (class_text.empty() || FAILED(CLSIDFromString(class_text.c_str(), &id))) return {};
    return name_of_class(id);
}

std::u16string class_of_name(const std::string& name) {
    if (!name.starts_with(kPrefix) || name.size() != kPrefix.size() + 32) return {};
    auto digits = name.substr(kPrefix.size());
    for (const std::size_t dash : {8U, 13U, 18U, 23U}) digits.insert(dash, 1, '-');
    return to_utf16_lossy("{" + digits + "}");
}

Published publish_program(const ToastRegistration& registration, const std::string& program_name) {
    const auto name = name_of_class(registration.class_text);
    const auto started = host_command(registration.command, false);
    const auto entered = host_command(registration.command, true);
    if (name.empty() || !started || !entered) return Published::no;
    const auto icon = host_path(registration.icon);
    const auto service = "[D-BUS Service]\nName=" + name + "\nExec=" + value_text(*started) + "\n";
    auto entry = "[Desktop Entry]\nType=Application\nName=" + value_text(program_name) +
                 "\nExec=" + value_text(*entered) + "\n";
    if (icon) entry += "Icon=" + value_text(*icon) + "\n";
    entry += "NoDisplay=true\nDBusActivatable=true\n";
    const auto has_service = keep_file(service_file(name), service);
    const auto has_entry = keep_file(entry_file(name), entry);
    if (!has_service || !has_entry) return Published::no;
    return *has_service || *has_entry ? Published::anew : Published::as_before;
}

void withdraw_program(const ToastRegistration& registration) {
    const auto name = name_of_class(registration.class_text);
    if (name.empty()) return;
    unlink(service_file(name).c_str());
    unlink(entry_file(name).c_str());
}

}  // namespace tvutil2
