// "tvutil log": a run's diary, and the one that all programs share.
#include "tvutil2/data/user_data.h"
#include "tvutil2/diag/app_log.h"
#include "tvutil2/diag/log_file.h"
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/appended_file.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/find.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "tools/tvutil/command.h"
#include "tools/tvutil/log_follow.h"

namespace {

using tool::Exit;
using tool::Failure;
using tool::narrow;
using tool::wide;

std::string host_path_of(const std::string& file) {
    const auto host = tvutil2::host_path(wide(file));
    if (!host) throw Failure{Exit::failed, tool::error_text(file, GetLastError())};
    return *host;
}

void require_file(const std::string& file) {
    const auto attributes = GetFileAttributesW(wide(file).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        throw Failure{Exit::failed, tool::error_text(file, GetLastError())};
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        throw Failure{Exit::failed, file + ": a folder"};
    }
}

struct StartOptions {
    std::string folder, product;
    int mode = 1;
    bool sweep = false;
};

void start(const StartOptions& options) {
    if (options.mode == 0) throw Failure{Exit::usage, "mode 0 starts no log"};
    _InitApplicationLog(wide(options.folder).c_str(), wide(options.product).c_str(), options.mode,
                        options.sweep ? 1 : 0);
    const auto& path = tvutil2::log_path();
    if (GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES) {
        throw Failure{Exit::failed, tool::error_text(narrow(path.View()), GetLastError())};
    }
    tool::print(narrow(path.View()));
}

// The header line that has a text in front is what stands behind it.
struct HeaderLine {
    const char* name;
    std::u16string_view text;
};
constexpr HeaderLine kHeaderLines[] = {{"module", u"Module Path: "},
                                       {"version", u"Module Version: "},
                                       {"built", u"Module Built: "},
                                       {"system", u"OS Information: "},
                                       {"package", u"Package Type: "}};

// "[14:03:27 Tuesday, May 12, 2026] Log started(mode: 2)(Type: 1)..."
bool take_start(std::u16string_view line, nlohmann::ordered_json& header) {
    constexpr std::u16string_view kStarted = u"] Log started(mode: ";
    constexpr std::u16string_view kType = u")(Type: ";
    const auto started = line.find(kStarted);
    const auto type = line.find(kType, started);
    const auto end = line.find(u")...", type);
    if (line.empty() || line[0] != u'[' || started == std::u16string_view::npos ||
        type == std::u16string_view::npos || end == std::u16string_view::npos) {
        return false;
    }
    const auto mode = started + kStarted.size();
    header["started"] = narrow(line.substr(1, started - 1));
    header["mode"] = narrow(line.substr(mode, type - mode));
    header["type"] = narrow(line.substr(type + kType.size(), end - type - kType.size()));
    return true;
}

bool take_fact(std::u16string_view line, const HeaderLine& wanted, nlohmann::ordered_json& header) {
    constexpr std::u16string_view kTime = u"[14:03:27.436] ";
    if (line.size() < kTime.size() || !line.substr(kTime.size()).starts_with(wanted.text)) {
        return false;
    }
    header[wanted.name] = narrow(line.substr(kTime.size() + wanted.text.size()));
    return true;
}

nlohmann::ordered_json header_of(const std::vector<std::u16string>& lines,
                                 const std::string& file) {
    nlohmann::ordered_json header;
    bool is_header = lines.size() == 2 + std::size(kHeaderLines);
    if (is_header) {
        header["log"] = narrow(lines[0]);
        is_header = take_start(lines[1], header);
    }
    for (std::size_t i = 0; is_header && i < std::size(kHeaderLines); ++i) {
        is_header = take_fact(lines[i + 2], kHeaderLines[i], header);
    }
    if (!is_header) throw Failure{Exit::refused, file + ": it doesn't begin with a log's header"};
    return header;
}

void show_header(const std::string& file, bool json) {
    require_file(file);
    tool::GrowingLog log(host_path_of(file));
    std::vector<std::u16string> lines;
    log.read([&lines](std::u16string_view line) {
        lines.emplace_back(line);
        return lines.size() < 2 + std::size(kHeaderLines);
    });
    const auto header = header_of(lines, file);
    if (json) return tool::print(header);
    for (const auto& [name, value] : header.items()) {
        tool::print(name + ": " + value.get<std::string>());
    }
}

void write(const std::string& file, const std::string& text, bool is_debug) {
    require_file(file);
    SYSTEMTIME now{};
    GetLocalTime(&now);
    const auto line = tvutil2::log_line(now, wide(text), is_debug);
    tvutil2::AppendedFile log(wide(file).c_str());
    const auto result = log.append({reinterpret_cast<const char*>(line.data()), line.size() * 2});
    if (result != tvutil2::AppendedFile::Result::done) {
        throw Failure{Exit::failed, tool::error_text(file, GetLastError())};
    }
}

void write_global(const std::string& text) {
    const auto message = wide(text);
    if (tvutil2::write_global_log(0, message.c_str(), {}) == 0) {
        throw Failure{Exit::failed, "the common log can't be written, or is in use"};
    }
}

void show_global() {
    char16_t data[MAX_PATH];
    if (TvGetUserDataPath(data) == 0) throw Failure{Exit::failed, "the data folder can't be had"};
    tool::print(narrow(std::u16string(data) + u"\\Common\\Log\\GlobalLog.txt"));
}

void sweep(const std::string& folder, bool is_rehearsal) {
    const auto logs = wide(folder) + u"\\applog";
    WIN32_FIND_DATAW data;
    const HANDLE search = FindFirstFileW((logs + u"\\*.*").c_str(), &data);
    if (search == INVALID_HANDLE_VALUE) {
        throw Failure{Exit::failed, tool::error_text(narrow(logs), GetLastError())};
    }
    do {
        if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
        const auto action = tvutil2::sweep_of(data.cFileName);
        if (action == tvutil2::Sweep::remove) tool::print("delete " + narrow(data.cFileName));
        if (action == tvutil2::Sweep::back_up) tool::print("back up " + narrow(data.cFileName));
    } while (FindNextFileW(search, &data) != FALSE);
    FindClose(search);
    if (!is_rehearsal) tvutil2::sweep_logs(logs.c_str());
}

struct FollowOptions {
    std::string file, match, until;
    bool only_debug = false;
    bool only_information = false;
    bool only_new = false;
    bool only_now = false;
};

bool is_debug(std::u16string_view line) {
    return line.starts_with(u'[') && line.substr(line.find(u']') + 1).starts_with(u" [DEB] ");
}

void follow(const FollowOptions& options) {
    if (options.only_now) require_file(options.file);
    tool::GrowingLog log(host_path_of(options.file));
    if (options.only_new) log.skip();
    const auto match = wide(options.match);
    const auto until = wide(options.until);
    const auto see = [&](std::u16string_view line) {
        const bool is_wanted = line.find(match) != std::u16string_view::npos &&
                               !(options.only_debug && !is_debug(line)) &&
                               !(options.only_information && is_debug(line));
        if (is_wanted) tool::print(narrow(line));
        return until.empty() || line.find(until) == std::u16string_view::npos;
    };
    while (log.read(see) && !options.only_now) {
        std::cout.flush();
        if (!std::cout) throw Failure{Exit::failed, "standard output can't be written"};
        log.wait();
    }
}

void add_start(CLI::App& log) {
    auto* const command = log.add_subcommand("start", "Start a run's log and print its path");
    const auto options = std::make_shared<StartOptions>();
    command->add_option("FOLDER", options->folder, "Folder that \"applog\" is in")->required();
    command->add_option("PRODUCT", options->product, "Name that the log's name begins with")
        ->required();
    command->add_option("--mode", options->mode, "1 (the default), or 2 for debug lines as well");
    command->add_flag("--sweep", options->sweep,
                      "Make backups of older logs, delete older backups");
    command->callback([options] { start(*options); });
}

void add_write(CLI::App& log) {
    auto* const command = log.add_subcommand("write", "Write a line to a run's log");
    const auto file = std::make_shared<std::string>();
    const auto text = std::make_shared<std::string>();
    const auto debug = std::make_shared<bool>(false);
    command->add_option("FILE", *file, "The log, which must be there")->required();
    command->add_option("TEXT", *text, "The line")->required();
    command->add_flag("--debug", *debug, "As a debug line");
    command->callback([file, text, debug] { write(*file, *text, *debug); });
}

void add_follow(CLI::App& log) {
    auto* const command = log.add_subcommand("follow", "Print a log's lines as they are written");
    const auto options = std::make_shared<FollowOptions>();
    command->add_option("FILE", options->file, "The log, which needn't be there yet")->required();
    auto* const debug = command->add_flag("--debug", options->only_debug, "Debug lines alone");
    command->add_flag("--information", options->only_information, "No debug lines")
        ->excludes(debug);
    command->add_option("--match", options->match, "Lines with this text alone");
    command->add_option("--until", options->until, "End behind a line with this text");
    auto* const fresh = command->add_flag("--new", options->only_new, "Not what is there already");
    command->add_flag("--now", options->only_now, "What is there already alone")->excludes(fresh);
    command->callback([options] { follow(*options); });
}

void add_sweep(CLI::App& log) {
    auto* const command =
        log.add_subcommand("sweep", "Make backups of logs, and delete those that were backups");
    const auto folder = std::make_shared<std::string>();
    const auto rehearsal = std::make_shared<bool>(false);
    command->add_option("FOLDER", *folder, "Folder that \"applog\" is in")->required();
    command->add_flag("--dry-run", *rehearsal, "Only print what would be done");
    command->callback([folder, rehearsal] { sweep(*folder, *rehearsal); });
}

void add_header(CLI::App& log) {
    auto* const command = log.add_subcommand("header", "Show a run's log's header");
    const auto file = std::make_shared<std::string>();
    const auto json = std::make_shared<bool>(false);
    command->add_option("FILE", *file, "The log")->required();
    tool::add_json_flag(*command, *json);
    command->callback([file, json] { show_header(*file, *json); });
}

void add_global(CLI::App& log) {
    auto* const command =
        log.add_subcommand("global", "Write a line to the common log, or print its path");
    const auto text = std::make_shared<std::string>();
    auto* const option = command->add_option("TEXT", *text, "The line");
    command->callback([text, option] {
        if (option->count() == 0) return show_global();
        write_global(*text);
    });
}

const tool::Command g_command([](CLI::App& app) {
    auto* const log = app.add_subcommand("log", "Logs of runs, and the common log");
    log->require_subcommand(1);
    add_start(*log);
    add_write(*log);
    add_follow(*log);
    add_header(*log);
    add_sweep(*log);
    add_global(*log);
});

}  // namespace
