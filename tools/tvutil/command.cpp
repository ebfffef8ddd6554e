#include "tools/tvutil/command.h"

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/files/replaced_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

#include "tools/tvutil/command_tree.h"
#include "tools/tvutil/terminal.h"

namespace tool {
namespace {

constexpr std::size_t kLongestSecret = std::size_t{1} << 20;
// What the desktop starts a program with whose notification was answered.
constexpr std::string_view kDesktopsSwitch = "-ToastActivated";

std::vector<std::function<void(CLI::App&)>>& commands() {
    static std::vector<std::function<void(CLI::App&)>> list;
    return list;
}

Exit g_exit = Exit::success;

std::string_view system_text(unsigned int error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
            return "not found";
        case ERROR_PATH_NOT_FOUND:
            return "path not found";
        case ERROR_ACCESS_DENIED:
            return "access denied";
        case ERROR_INVALID_HANDLE:
            return "invalid handle";
        case ERROR_SHARING_VIOLATION:
            return "in use by another program";
        case ERROR_INVALID_PARAMETER:
            return "invalid parameter";
        case ERROR_DISK_FULL:
            return "the disk is full";
        case ERROR_FILE_TOO_LARGE:
            return "the file is too large";
        case ERROR_INVALID_NAME:
            return "invalid name";
        case ERROR_ALREADY_EXISTS:
            return "it exists already";
        case ERROR_DIRECTORY:
            return "not a folder";
        case ERROR_NO_SYSTEM_RESOURCES:
            return "the host's limit is reached";
        case ERROR_MORE_DATA:
            return "more data than there is room for";
        case ERROR_WRITE_PROTECT:
            return "write-protected";
        case ERROR_BADDB:
        case ERROR_REGISTRY_CORRUPT:
            return "the store is damaged";
        case ERROR_CANTOPEN:
            return "the store can't be opened";
        case ERROR_CANTWRITE:
            return "the store can't be written";
        case ERROR_BUSY:
        case ERROR_TIMEOUT:
            return "busy for too long";
        default:
            return "the system refused";
    }
}

}  // namespace

Command::Command(std::function<void(CLI::App&)> add) {
    commands().push_back(std::move(add));
}

void exit_with(Exit code) {
    g_exit = code;
}

void add_to_footer(CLI::App& command, const std::string& text) {
    command.footer(text + "\n\n" + command.get_footer());
}

void add_json_flag(CLI::App& command, bool& flag) {
    command.add_flag("--json", flag, "Print JSON");
}

void add_host_flag(CLI::App& command, bool& flag) {
    command.add_flag("--host", flag,
                     "Print paths as the host knows them: /home/a, not C:\\home\\a");
}

std::string shown_path(std::u16string_view path, bool as_host) {
    if (!as_host) return narrow(path);
    return tvutil2::host_path(path).value_or(narrow(path));
}

std::u16string wide(std::string_view argument) {
    auto text = tvutil2::to_utf16(argument);
    if (!text) throw Failure{Exit::usage, "an argument isn't valid UTF-8"};
    return std::move(*text);
}

std::string narrow(std::u16string_view text) {
    return tvutil2::to_utf8_lossy(text);
}

void print(std::string_view line) {
    std::cout << line << '\n';
}

void print(const nlohmann::ordered_json& value) {
    const auto text = value.dump(2);
    std::cout << (is_output_terminal() ? harmless_json(text) : text) << '\n';
}

void print_text(const char* name, const std::string& text, bool as_json) {
    if (as_json) return print(nlohmann::ordered_json{{name, text}});
    print(std::string_view(text));
}

void warn(const std::string& message) {
    std::cout.flush();
    std::cerr << "tvutil: " << message << '\n';
}

// Not by the object's own operations, each of which looks at all members.
void UniqueMembers::add(const std::string& name, nlohmann::ordered_json value) {
    if (m_names.insert(name).second) m_members.emplace_back(name, std::move(value));
}

nlohmann::ordered_json UniqueMembers::take() {
    return std::move(m_members);
}

std::string error_text(std::string_view what, unsigned int error) {
    return std::string(what) + ": " + std::string(system_text(error)) + " (" +
           std::to_string(error) + ")";
}

SecretOption::SecretOption(CLI::App& command, const std::string& name, const std::string& what,
                           bool standard_input_by_default)
    : m_what(what), m_standard_input_by_default(standard_input_by_default) {
    command.add_option("--" + name + "-file", m_file,
                       "File with " + what + "; \"-\"" +
                           (standard_input_by_default ? " (the default)" : "") +
                           " is standard input");
}

bool SecretOption::given() const {
    return m_standard_input_by_default || !m_file.empty();
}

std::u16string SecretOption::read() const {
    const bool typed = is_standard_input() && isatty(STDIN_FILENO) == 1;
    std::string bytes;
    if (typed) {
        bytes = ask_hidden(m_what);
    } else {
        bytes = read_input(is_standard_input() ? "-" : m_file, kLongestSecret);
    }
    if (bytes.ends_with('\n')) bytes.pop_back();
    if (bytes.ends_with('\r')) bytes.pop_back();
    auto text = tvutil2::to_utf16(bytes);
    if (!text) throw Failure{Exit::refused, m_what + " isn't valid UTF-8"};
    return std::move(*text);
}

// By the call itself: a stream would want a terminal's end of input twice.
std::string read_input(const std::string& file, std::size_t limit) {
    const bool is_standard = file == "-";
    const tvutil2::Descriptor opened(is_standard ? -1 : open(file.c_str(), O_RDONLY | O_CLOEXEC));
    const int input = is_standard ? STDIN_FILENO : opened.get();
    if (input < 0) throw Failure{Exit::failed, file + ": " + std::strerror(errno)};
    std::string content;
    char block[65536];
    for (;;) {
        const auto count = ::read(input, block, sizeof block);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw Failure{Exit::failed, file + ": " + std::strerror(errno)};
        if (count == 0) return content;
        content.append(block, static_cast<std::size_t>(count));
        if (content.size() > limit) {
            throw Failure{Exit::refused,
                          file + ": larger than " + std::to_string(limit) + " bytes"};
        }
    }
}

void write_output(const std::string& file, std::string_view bytes) {
    namespace fs = std::filesystem;
    if (file == "-") {
        std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return;
    }
    std::error_code ignored;
    const auto status = fs::status(file, ignored);
    if (!fs::exists(status) || fs::is_regular_file(status)) {
        const auto whole = [bytes](const std::string& /*old*/) { return std::string(bytes); };
        if (tvutil2::replace_content(fs::absolute(file).string(), true, whole)) return;
        throw Failure{Exit::failed, error_text(file, GetLastError())};
    }
    std::ofstream stream(file, std::ios::binary);
    stream << bytes << std::flush;
    if (!stream) throw Failure{Exit::failed, file + ": can't be written"};
}

std::u16string platform_path_of(const std::string& file) {
    auto path = tvutil2::platform_path(std::filesystem::absolute(file).string());
    if (!path) throw Failure{Exit::usage, file + ": no path"};
    return *path;
}

NamedFile::NamedFile(const std::string& file, std::size_t limit) : m_path(file) {
    if (file != "-") return;
    const auto bytes = read_input(file, limit);
    m_folder = (std::filesystem::temp_directory_path() / "tvutil-XXXXXX").string();
    if (mkdtemp(m_folder.data()) == nullptr) {
        throw Failure{Exit::failed, m_folder + ": " + std::strerror(errno)};
    }
    m_path = m_folder + "/standard-input";
    std::ofstream stream(m_path, std::ios::binary);
    stream << bytes << std::flush;
    if (stream) return;
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
    throw Failure{Exit::failed, m_path + ": can't be written"};
}

NamedFile::~NamedFile() {
    std::error_code ignored;
    if (!m_folder.empty()) std::filesystem::remove_all(m_folder, ignored);
}

std::u16string NamedFile::path() const {
    return platform_path_of(m_path);
}

void NamedFile::give_back() const {
    if (!m_folder.empty()) write_output("-", read_input(m_path, std::string::npos));
}

int run(int argc, char** argv) {
    CLI::App app("tvutil: what the tvutil2 library can do, from a shell.", "tvutil");
    app.require_subcommand(1);
    app.set_version_flag("--version", "tvutil2 " TVUTIL2_VERSION);
    app.footer(
        "Exit codes: 0 done; 1 the answer is no (not there, doesn't match); 2 wrong command line;\n"
        "3 malformed or refused input; 4 the system couldn't do it; 5 text is lost, or would be.\n"
        "TVUTIL_PROFILE=DIR keeps all that the library stores below DIR.");
    for (const auto& add : commands()) add(app);
    add_tree_commands(app);
    add_examples(app);
    const HarmlessStreams streams;
    try {
        if (argc == 2 && argv[1] == kDesktopsSwitch) {
            app.parse("notify answered");
        } else {
            app.parse(argc, argv);
        }
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) throw Failure{Exit::usage, complaint(app, error)};
        app.exit(error);
    }
    std::cout.flush();
    if (!std::cout) throw Failure{Exit::failed, "standard output can't be written"};
    return static_cast<int>(g_exit);
}

int report(Exit code, const char* message) noexcept {
    try {
        const HarmlessStreams streams;
        warn(message);
    } catch (const std::exception&) {
        std::fputs("tvutil: failed\n", stderr);
    }
    return static_cast<int>(code);
}

}  // namespace tool

int main(int argc, char** argv) {
    try {
        return tool::run(argc, argv);
    } catch (const tool::Failure& failure) {
        return tool::report(failure.code, failure.message.c_str());
    } catch (const std::exception& error) {
        return tool::report(tool::Exit::failed, error.what());
    }
}
