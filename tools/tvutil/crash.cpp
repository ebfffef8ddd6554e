// tvutil crash: the reports that crashes of the family's programs left.
#include "tvutil2/platform/crash/crash_rpt.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tools/tvutil/command.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using tool::Exit;
using tool::Failure;

struct Options {
    std::string name;
    bool json = false;
};

// Their names begin with the program's and go on with the time, so the oldest of each comes first.
// What begins with a dot isn't whole yet.
std::vector<fs::path> reports() {
    std::error_code none;
    std::vector<fs::path> all;
    for (const auto& entry : fs::directory_iterator(tvutil2::crash_reports_folder(), none)) {
        if (!entry.path().filename().string().starts_with('.')) all.push_back(entry.path());
    }
    std::sort(all.begin(), all.end());
    return all;
}

Json read_report(const fs::path& folder) {
    std::ifstream stream(folder / "report.json");
    auto report = Json::parse(stream, nullptr, false);
    return report.is_object() ? report : Json::object();
}

// What stands in a report may be anybody's; a member that is no text is none.
std::string text(const Json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

bool is_true(const Json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found != object.end() && *found == true;
}

Json list_of(const Json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found != object.end() && found->is_array() ? *found : Json::array();
}

void list(bool as_json) {
    Json all = Json::array();
    for (const auto& folder : reports()) {
        const auto report = read_report(folder);
        all.push_back({{"name", folder.filename().string()},
                       {"time", text(report, "time")},
                       {"kind", text(report, "kind")},
                       {"signal", text(report, "signal")}});
    }
    if (as_json) {
        tool::print(all);
        return;
    }
    for (const auto& report : all) {
        tool::print(text(report, "name") + "  " + text(report, "kind") + "  " +
                    text(report, "signal"));
    }
}

// A name that is in the list: never a path.
fs::path report_named(const std::string& name) {
    const auto all = reports();
    const auto found = std::find_if(all.begin(), all.end(), [&](const fs::path& folder) {
        return folder.filename().string() == name;
    });
    if (found == all.end()) throw Failure{Exit::no, name + ": no such crash report"};
    return *found;
}

void print_stacks(const Json& report) {
    for (const auto& thread : list_of(report, "threads")) {
        tool::print(std::string(is_true(thread, "crashed") ? "crashed thread:" : "thread:"));
        for (const auto& frame : list_of(thread, "stack")) {
            const auto function = text(frame, "function");
            tool::print("  " + text(frame, "address") + "  " + (function.empty() ? "?" : function) +
                        "  " + text(frame, "module"));
        }
    }
}

void show(const Options& options) {
    const auto folder = report_named(options.name);
    const auto report = read_report(folder);
    if (report.empty()) throw Failure{Exit::failed, options.name + ": its report can't be read"};
    if (options.json) {
        tool::print(report);
        return;
    }
    for (const char* const key :
         {"application", "version", "time", "kind", "signal", "exception", "no_stacks"}) {
        if (const auto value = text(report, key); !value.empty()) {
            tool::print(std::string(key) + "=" + value);
        }
    }
    tool::print("folder=" + folder.string());
    print_stacks(report);
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
});

}  // namespace
