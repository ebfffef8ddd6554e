// "tvutil os", "tvutil file-version" and "tvutil error": what the system says of itself, of a file
// and of an error number.
#include "tvutil2/services/environment.h"

#include "tvutil2/platform/base/last_error.h"

#include <memory>
#include <string>

#include "tools/tvutil/command.h"

namespace {

using tool::Exit;
using tool::Failure;
using tool::narrow;

void show_system(bool json) {
    const auto name = narrow(TvGetOSFriendlyName().View());
    const auto computer = narrow(TvGetComputerName().View());
    const auto user = narrow(TvGetUserName().View());
    if (json) {
        return tool::print({{"name", name},
                            {"build", TvGetOSBuildVersion()},
                            {"windows10", TvIsWindows10OrGreater() != 0},
                            {"computer", computer},
                            {"user", user}});
    }
    tool::print(name);
    tool::print("computer: " + computer);
    tool::print("user: " + user);
}

void show_version(const std::string& file, bool json) {
    CString version;
    const bool has_version = TvGetFileVersion(tool::wide(file).c_str(), version) != 0;
    const auto error = GetLastError();
    if (!has_version && (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
                         error == ERROR_ACCESS_DENIED)) {
        throw Failure{Exit::failed, tool::error_text(file, error)};
    }
    if (!has_version) tool::exit_with(Exit::no);
    if (json) {
        tool::print({{"file", file},
                     {"version", has_version ? nlohmann::ordered_json(narrow(version.View()))
                                             : nlohmann::ordered_json(nullptr)}});
    } else if (has_version) {
        tool::print(narrow(version.View()));
    }
}

void show_error(const std::string& text, bool is_host, bool json) {
    std::size_t end = 0;
    unsigned long long number = 0;
    try {
        number = std::stoull(text, &end, 0);
    } catch (const std::exception&) {
        end = 0;
    }
    if (end != text.size() || number > 0xFFFFFFFF || text[0] == '-') {
        throw Failure{Exit::usage, text + ": not an error number"};
    }
    auto error = static_cast<DWORD>(number);
    if (is_host) error = tvutil2::error_from_errno(static_cast<int>(error));
    CString meaning;
    GetLastErrorString(meaning, error);
    meaning.TrimRight();
    if (meaning.IsEmpty()) tool::exit_with(Exit::no);
    if (json) {
        tool::print({{"error", error},
                     {"text", meaning.IsEmpty() ? nlohmann::ordered_json(nullptr)
                                                : nlohmann::ordered_json(narrow(meaning.View()))}});
    } else if (!meaning.IsEmpty()) {
        tool::print(is_host ? std::to_string(error) + ' ' + narrow(meaning.View())
                            : narrow(meaning.View()));
    }
}

const tool::Command g_os([](CLI::App& app) {
    auto* const command = app.add_subcommand("os", "Name of the system, the machine, the account");
    const auto json = std::make_shared<bool>(false);
    tool::add_json_flag(*command, *json);
    command->callback([json] { show_system(*json); });
});

const tool::Command g_file_version([](CLI::App& app) {
    auto* const command =
        app.add_subcommand("file-version", "Version of an executable; exit code 1 for one without");
    const auto file = std::make_shared<std::string>();
    const auto json = std::make_shared<bool>(false);
    command->add_option("FILE", *file, "An executable or a module")->required();
    tool::add_json_flag(*command, *json);
    command->callback([file, json] { show_version(*file, *json); });
});

const tool::Command g_error([](CLI::App& app) {
    auto* const command =
        app.add_subcommand("error", "What an error number means; exit code 1 for one without text");
    const auto number = std::make_shared<std::string>();
    const auto is_host = std::make_shared<bool>(false);
    const auto json = std::make_shared<bool>(false);
    command->add_option("NUMBER", *number, "A last error or an HRESULT; 0x for hexadecimal")
        ->required();
    command->add_flag("--host", *is_host, "NUMBER is the host's (errno): which error it becomes");
    tool::add_json_flag(*command, *json);
    command->callback([number, is_host, json] { show_error(*number, *is_host, *json); });
});

}  // namespace
