// tvutil crash: the reports that crashes of the family's programs left.
#include "tvutil2/platform/crash/crash_rpt.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tools/crash/report_reader.h"
#include "tools/crash/reports_folder.h"
#include "tools/tvutil/command.h"

namespace {

using Json = nlohmann::ordered_json;
using crash::Report;
using tool::Exit;
using tool::Failure;

struct Options {
    std::string name;
    std::vector<std::string> names;
    std::string address;
    bool json = false;
};

crash::ReportsFolder reports() {
    return crash::ReportsFolder(tvutil2::crash_reports_folder());
}

// A name that is in the list: never a path.
void expect_report(const std::string& name) {
    const auto all = reports().names();
    if (std::find(all.begin(), all.end(), name) == all.end()) {
        throw Failure{Exit::no, name + ": no such crash report"};
    }
}

void list(bool as_json) {
    const auto folder = reports();
    Json all = Json::array();
    for (const auto& name : folder.names()) {
        const Report report(crash::report_text(folder.folder(name)));
        const bool is_sent = folder.is_sent(name);
        if (as_json) {
            all.push_back({{"name", name},
                           {"time", report.text("time")},
                           {"kind", report.text("kind")},
                           {"signal", report.text("signal")},
                           {"sent", is_sent}});
        } else {
            tool::print(name + "  " + report.text("kind") + "  " + report.text("signal") + "  " +
                        (is_sent ? "sent" : "waiting"));
        }
    }
    if (as_json) tool::print(all);
}

void show(const Options& options) {
    expect_report(options.name);
    const auto folder = reports();
    const auto text = crash::report_text(folder.folder(options.name));
    const Report report(text);
    if (report.empty()) throw Failure{Exit::failed, options.name + ": its report can't be read"};
    if (options.json) {
        tool::print(std::string_view(text).substr(0, text.find_last_not_of('\n') + 1));
        return;
    }
    for (const auto& line : report.facts()) tool::print(line);
    tool::print("sent=" + std::string(folder.is_sent(options.name) ? "yes" : "no"));
    tool::print("folder=" + folder.folder(options.name).string());
    for (const auto& line : report.stacks()) tool::print(line);
}

// Runs the helper program to its end; what it prints.
std::string output_of_helper(std::vector<std::string> words) {
    const auto fail = [](int error) {
        return Failure{Exit::failed, "the crash reporter's helper program can't be run: " +
                                         std::generic_category().message(error)};
    };
    const auto helper = tvutil2::crash_helper_file();
    words.insert(words.begin(), helper);
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw fail(errno);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t process = -1;
    const int error =
        posix_spawn(&process, helper.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::string output;
    char bytes[4096];
    for (ssize_t count = 0; (count = read(ends[0], bytes, sizeof bytes)) > 0;) {
        output.append(bytes, static_cast<std::size_t>(count));
    }
    close(ends[0]);
    if (error != 0) throw fail(error);
    waitpid(process, nullptr, 0);
    return output;
}

void send(const Options& options) {
    std::vector<std::string> words{"--send", reports().root().string(), options.address};
    for (const auto& name : options.names) {
        expect_report(name);
        words.push_back(name);
    }
    Json all = Json::array();
    std::istringstream lines(output_of_helper(std::move(words)));
    bool is_all_sent = true;
    for (std::string line; std::getline(lines, line);) {
        const Report outcome(line);
        const auto name = outcome.text("name");
        const auto error = outcome.text("error");
        is_all_sent = is_all_sent && error.empty();
        if (options.json) {
            all.push_back({{"name", name}, {"sent", error.empty()}});
            if (!error.empty()) all.back()["error"] = error;
        } else if (error.empty()) {
            tool::print(name + "  sent");
        }
        if (!error.empty()) tool::warn(std::string(name).append(": ").append(error));
    }
    if (options.json) tool::print(all);
    if (!is_all_sent) tool::exit_with(Exit::failed);
}

const tool::Command g_crash([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& crash = *app.add_subcommand("crash", "Reports of crashed programs");
    crash.require_subcommand(1);
    auto& all = *crash.add_subcommand("list", "Name the reports that are kept");
    tool::add_json_flag(all, options->json);
    all.callback([options] { list(options->json); });
    auto& one = *crash.add_subcommand("show", "Print a report: what happened, and all stacks");
    one.add_option("name", options->name, "Name from the list")->required();
    tool::add_json_flag(one, options->json);
    one.callback([options] { show(*options); });
    auto& away =
        *crash.add_subcommand("send", "Send the reports that wait, or those that are named");
    away.add_option("names", options->names, "Names from the list; also of reports sent before");
    away.add_option("--to", options->address, "http or https address instead of the reports' own");
    tool::add_json_flag(away, options->json);
    away.callback([options] { send(*options); });
});

}  // namespace
