#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/process/launch.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/process/processes.h"
#include "tvutil2/platform/process/start_program.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>

namespace tvutil2 {
namespace {

constexpr std::size_t kMaxLine = 32767;
constexpr std::u16string_view kBlanks = u" \t";

bool is_file(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool has_extension(std::u16string_view name) {
    const auto last = name.find_last_of(u"\\/:.");
    return last != std::u16string_view::npos && name[last] == u'.';
}

// The host's file of a name, as it stands or with the extension of a program.
std::optional<std::string> file_at(const std::u16string& name) {
    if (!has_extension(name)) {
        auto path = host_path(name + u".exe");
        if (path && is_file(*path)) return path;
    }
    auto path = host_path(name);
    if (path && is_file(*path)) return path;
    return std::nullopt;
}

// Where a name without a folder is looked for, each with a backslash behind it. Folders of PATH
// that hang on the current one are passed over.
std::vector<std::u16string> searched_folders() {
    std::vector<std::u16string> folders;
    char16_t own[MAX_PATH] = {};
    if (GetModuleFileNameW(nullptr, own, MAX_PATH) != 0) {
        const std::u16string_view path(own);
        folders.emplace_back(path.substr(0, path.find_last_of(u'\\') + 1));
    }
    folders.emplace_back(u".\\");
    const char* const path = secure_getenv("PATH");
    std::string_view rest = path != nullptr ? path : "";
    while (!rest.empty()) {
        const auto folder = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
        if (!folder.starts_with('/')) continue;
        if (auto text = platform_path(folder)) folders.push_back(*text + u'\\');
    }
    return folders;
}

std::optional<std::string> find_program(const std::u16string& name) {
    if (name.empty()) return std::nullopt;
    if (has_folder(name)) return file_at(name);
    for (const auto& folder : searched_folders()) {
        if (auto file = file_at(folder + name)) return file;
    }
    return std::nullopt;
}

struct Command {
    std::string file;
    std::u16string name;       // as the line says it
    std::u16string arguments;  // what is behind it
};

DWORD why_missing(const std::u16string& name) {
    const auto last = name.find_last_of(u"\\/");
    if (last == std::u16string::npos) return ERROR_FILE_NOT_FOUND;
    const auto folder = host_path(std::u16string_view(name).substr(0, last + 1));
    struct stat info {};
    const bool is_there = folder && stat(folder->c_str(), &info) == 0 && S_ISDIR(info.st_mode);
    return is_there ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

// Takes the program's name off a line.
std::optional<Command> read_line(std::u16string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    const bool is_quoted = line.starts_with(u'"');
    if (is_quoted) line.remove_prefix(1);
    std::u16string first;
    for (std::size_t end = 0; end < line.size();) {
        end = std::min(is_quoted ? line.find(u'"', end) : line.find_first_of(kBlanks, end),
                       line.size());
        const std::u16string name(line.substr(0, end));
        if (first.empty()) first = name;
        if (auto file = find_program(name)) {
            const auto behind = std::min(end + (is_quoted ? 1 : 0), line.size());
            return Command{std::move(*file), name, std::u16string(line.substr(behind))};
        }
        if (is_quoted) break;
        end = std::min(line.find_first_not_of(kBlanks, end), line.size());
    }
    SetLastError(first.empty() ? ERROR_INVALID_PARAMETER : why_missing(first));
    return std::nullopt;
}

// The program is named; the line is its arguments, with its own name in front.
std::optional<Command> named_command(const std::u16string& application, const char16_t* line) {
    auto file = host_path(application);
    if (!file) return std::nullopt;
    if (!is_file(*file)) {
        SetLastError(why_missing(application));
        return std::nullopt;
    }
    Command command{std::move(*file), application, {}};
    // Behind a stand-in, so that the first argument of the line is split as the others are.
    auto arguments = split_command_line(line != nullptr ? line : u"");
    if (arguments.empty()) return command;
    command.name = arguments.front();
    arguments.erase(arguments.begin());
    for (const auto& argument : arguments) command.arguments += u' ' + quoted_argument(argument);
    return command;
}

DWORD start_error(int error) {
    switch (error) {
        case EACCES:
        case EPERM:
            return ERROR_ACCESS_DENIED;
        case ENOTDIR:
            return ERROR_PATH_NOT_FOUND;
        case ETXTBSY:
            return ERROR_SHARING_VIOLATION;
        case ENOENT:
        case ENOEXEC:
        case ELIBBAD:
            return ERROR_BAD_EXE_FORMAT;
        default:
            return ERROR_NOT_ENOUGH_MEMORY;
    }
}

HANDLE start(const Command& command, Program program) {
    auto all = split_command_line(command.arguments);
    all.insert(all.begin(), command.name);
    std::vector<std::string> texts;
    texts.reserve(all.size());
    for (const auto& text : all) {
        auto host = to_utf8(text);
        if (!host) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        texts.push_back(std::move(*host));
    }
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    program.file = command.file.c_str();
    program.arguments = pointers.data();
    int error = 0;
    auto* const process = start_process(program, error);
    if (error != 0) SetLastError(start_error(error));
    return process;
}

// The folder to start in as the host's; false with the last error when it is none.
bool look_at_folder(const char16_t* folder, std::string& host) {
    if (folder == nullptr || *folder == 0) return true;
    const auto path = host_path(folder);
    struct stat info {};
    if (!path || stat(path->c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        return fail_with(ERROR_DIRECTORY);
    }
    host = *path;
    return true;
}

}  // namespace
}  // namespace tvutil2

using tvutil2::fail_with;

BOOL CreateProcessW(const char16_t* application, char16_t* command_line,
                    SECURITY_ATTRIBUTES* /*process_attributes*/,
                    SECURITY_ATTRIBUTES* /*thread_attributes*/, BOOL inherit, DWORD flags,
                    void* environment, const char16_t* folder, STARTUPINFOW* /*start_up*/,
                    PROCESS_INFORMATION* information) {
    constexpr DWORD kApart = DETACHED_PROCESS | CREATE_NO_WINDOW;
    const bool is_nothing = application == nullptr && command_line == nullptr;
    if (information == nullptr || is_nothing || environment != nullptr ||
        (flags & ~(kApart | NORMAL_PRIORITY_CLASS)) != 0) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    if (command_line != nullptr && std::u16string_view(command_line).size() > tvutil2::kMaxLine) {
        return fail_with(ERROR_FILENAME_EXCED_RANGE);
    }
    std::string host_folder;
    if (!tvutil2::look_at_folder(folder, host_folder)) return FALSE;
    const auto command = application != nullptr ? tvutil2::named_command(application, command_line)
                                                : tvutil2::read_line(command_line);
    if (!command) return FALSE;
    auto* const process = tvutil2::start(
        *command, {nullptr, nullptr, host_folder.empty() ? nullptr : host_folder.c_str(),
                   (flags & kApart) != 0, inherit != 0});
    if (process == nullptr) return FALSE;
    const auto thread = tvutil2::handle_table::insert(
        tvutil2::handle_table::find(reinterpret_cast<std::uintptr_t>(process)));
    const auto id = GetProcessId(process);
    *information = {process, reinterpret_cast<HANDLE>(thread), id, id};
    return TRUE;
}
