// tvutil import: the data of an earlier version, what would be brought, and bringing it.
#include "tvutil2/data/data_import.h"
#include "tvutil2/data/files.h"
#include "tvutil2/data/import_plan.h"
#include "tvutil2/data/proxy_import.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/files/folder_copy.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tools/tvutil/command.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using tool::Exit;
using tvutil2::ImportAnswer;
using tvutil2::ImportStep;

constexpr const char* kKinds[] = {"enterprise", "ombrelia", "pelrin", "dovr", "none"};

struct Options {
    std::string kind = "none";
    bool json = false;
    bool host = false;
};

unsigned int kind_of(const Options& options) {
    const auto* const found = std::find(std::begin(kKinds), std::end(kKinds), options.kind);
    return static_cast<unsigned int>(found - std::begin(kKinds));
}

void status(const Options& options) {
    constexpr const char* kWords[] = {"not looked at", "imported", "nothing to import"};
    Json all;
    for (const auto* const name :
         {"ImportDone", "Version7", "Version6", "Enterprise", "Ombrelia", "Pelrin", "Dovr"}) {
        const auto value = GetImportPrevStatus(tool::wide(name).c_str());
        all[name] = value;
        if (options.json) continue;
        std::string line(name);
        line.resize(12, ' ');
        tool::print(line + (value < std::size(kWords) ? kWords[value] : std::to_string(value)));
    }
    if (options.json) tool::print(all);
}

/// What one step copies, as the host names it.
struct Files {
    std::size_t count = 0;
    std::vector<std::string> overwritten;  ///< platform paths below the target
    std::vector<std::string> kept;
};

bool is_there(const std::u16string& path) {
    const auto host = tvutil2::host_path(path);
    std::error_code ignored;
    return host && fs::exists(fs::symlink_status(*host, ignored));
}

// Links to folders are copied as links, and not entered.
Files files_of(const ImportStep& step, const Options& options) {
    Files files;
    const std::u16string target(step.to.View());
    const auto shown = [&](const std::u16string& path) {
        return tool::shown_path(path, options.host);
    };
    if (step.kind == ImportStep::Kind::file) {
        if (DoesFileExist(step.from) == 0) return files;
        if (is_there(target)) {
            files.kept.push_back(shown(target));
        } else {
            files.count = 1;
        }
        return files;
    }
    const auto root = tvutil2::host_path(step.from.View());
    std::error_code error;
    if (!root || !fs::is_directory(*root, error)) return files;
    constexpr auto kPassOver = fs::directory_options::skip_permission_denied;
    for (fs::recursive_directory_iterator entry(*root, kPassOver, error);
         !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        const auto type = entry->symlink_status(ignored).type();
        if (type != fs::file_type::regular && type != fs::file_type::symlink) continue;
        const auto tail = tvutil2::platform_path(entry->path().string().substr(root->size()));
        if (!tail) continue;
        ++files.count;
        const auto path = target + tail->substr(2);
        if (is_there(path)) files.overwritten.push_back(shown(path));
    }
    std::sort(files.overwritten.begin(), files.overwritten.end());
    return files;
}

std::vector<ImportStep> steps_of(const tvutil2::ImportPlan& plan) {
    if (plan.answer != ImportAnswer::copy) return {};
    auto steps = tvutil2::import_steps(plan.from, plan.to);
    auto sessions = tvutil2::session_steps(plan.from, plan.to);
    std::move(sessions.begin(), sessions.end(), std::back_inserter(steps));
    return steps;
}

bool takes_proxies(const tvutil2::ImportPlan& plan) {
    return plan.answer == ImportAnswer::tool ||
           (plan.answer == ImportAnswer::copy && plan.version == 6);
}

std::string answer_text(const tvutil2::ImportPlan& plan) {
    switch (plan.answer) {
        case ImportAnswer::done:
            return "the import has been done";
        case ImportAnswer::copy:
            return "the data of version " + std::to_string(plan.version) + " is copied";
        case ImportAnswer::tool:
            return "data of version " + std::to_string(plan.version) +
                   " is the migration tool's: BIRKENFOLD.EXE -upgrade " +
                   tool::narrow(plan.tool_switch.View());
        case ImportAnswer::nothing:
            return "there is no earlier data";
        case ImportAnswer::settled:
            return "the status of the product leaves nothing to do";
        case ImportAnswer::not_asked:
            return "there is no data of version 7 or 6; --kind looks for older data of a product";
        case ImportAnswer::no_folder:
            return "the user data folder can't be had";
    }
    return {};
}

void print_step(const ImportStep& step, const Files& files, const Options& options) {
    for (const auto& path : files.kept) tool::print("keep  " + path);
    if (files.count == 0) return;
    auto line = "copy  " + tool::shown_path(step.from.View(), options.host) + " -> " +
                tool::shown_path(step.to.View(), options.host);
    if (step.kind != ImportStep::Kind::file) {
        line += "  (files: " + std::to_string(files.count) + ")";
    }
    tool::print(line);
    for (const auto& path : files.overwritten) tool::print("  over  " + path);
}

void plan(const Options& options) {
    const auto planned = tvutil2::plan_import(kind_of(options));
    Json json{{"answer", answer_text(planned)}, {"version", planned.version}};
    json["from"] = tool::shown_path(planned.from.View(), options.host);
    json["to"] = tool::shown_path(planned.to.View(), options.host);
    json["copies"] = Json::array();
    json["proxies"] = Json::array();
    if (!options.json) tool::print(answer_text(planned));
    for (const auto& step : steps_of(planned)) {
        const auto files = files_of(step, options);
        if (!options.json) print_step(step, files, options);
        if (files.count == 0 && files.kept.empty()) continue;
        json["copies"].push_back({{"from", tool::shown_path(step.from.View(), options.host)},
                                  {"to", tool::shown_path(step.to.View(), options.host)},
                                  {"files", files.count},
                                  {"overwritten", files.overwritten},
                                  {"kept", files.kept}});
    }
    if (takes_proxies(planned)) {
        for (const auto& name : tvutil2::proxy_names()) {
            const auto text = tool::narrow(name.View());
            json["proxies"].push_back(text);
            if (!options.json) tool::print("proxy " + text);
        }
    }
    if (options.json) tool::print(json);
}

// Counts, and shows the count on a terminal in a line that is written over.
class Progress : public tvutil2::CopyObserver {
  public:
    explicit Progress(std::size_t all) : m_all(std::max<std::size_t>(all, 1)) {}
    ~Progress() override { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void copied() override {
        const auto percent = std::min<std::size_t>(++files * 100 / m_all, 100);
        if (!m_is_shown || percent == m_percent) return;
        m_percent = percent;
        std::fprintf(stderr, "\rcopying: %zu of %zu files (%zu %%)", files, m_all, percent);
    }
    void failed(const char16_t* from, DWORD error) override { failures.emplace_back(from, error); }
    void clear() {
        if (m_percent != 0) std::fputs("\r\33[K", stderr);
        m_percent = 0;
    }

    std::size_t files = 0;
    std::vector<std::pair<std::u16string, DWORD>> failures;

  private:
    std::size_t m_all;
    bool m_is_shown = isatty(STDERR_FILENO) == 1;
    std::size_t m_percent = 0;
};

void report(const tvutil2::ImportPlan& planned, const Progress& progress, const Options& options) {
    Json failed = Json::array();
    for (const auto& [from, error] : progress.failures) {
        const auto path = tool::shown_path(from, options.host);
        failed.push_back({{"from", path}, {"error", error}});
        tool::warn(tool::error_text(path, error));
    }
    if (options.json) {
        tool::print(Json{{"answer", answer_text(planned)},
                         {"version", planned.version},
                         {"copied", progress.files},
                         {"failed", failed}});
    } else {
        tool::print(answer_text(planned));
        if (planned.answer == ImportAnswer::copy || progress.files != 0) {
            tool::print("copied: " + std::to_string(progress.files) +
                        ", failed: " + std::to_string(progress.failures.size()));
        }
    }
}

// What can't be copied isn't tried again, and stays where it was.
void run(const Options& options) {
    const auto kind = kind_of(options);
    const auto planned = tvutil2::plan_import(kind);
    std::size_t all = takes_proxies(planned) ? tvutil2::proxy_names().size() : 0;
    if (isatty(STDERR_FILENO) == 1) {
        for (const auto& step : steps_of(planned)) all += files_of(step, options).count;
    }
    Progress progress(all);
    TvInitDataFolder(kind, &progress);
    progress.clear();
    report(planned, progress, options);
    if (planned.answer == ImportAnswer::no_folder || !progress.failures.empty()) {
        tool::exit_with(Exit::failed);
    } else if (planned.answer != ImportAnswer::copy && planned.answer != ImportAnswer::tool) {
        tool::exit_with(Exit::no);
    }
}

const tool::Command g_import([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& import = *app.add_subcommand(
        "import",
        "Data of an earlier version, brought to the user data folder once.\n"
        "Like a product's first start, this makes the folder and stores where it is.");
    import.require_subcommand(1);
    const auto add = [&](const char* name, const char* what, void (*act)(const Options&)) {
        auto* command = import.add_subcommand(name, what);
        command->callback([options, act] { act(*options); });
        tool::add_json_flag(*command, options->json);
        return command;
    };
    add("status", "What has been imported", status);
    for (auto* command :
         {add("plan", "What would be copied, from where, and what would be overwritten", plan),
          add("run",
              "Import; exit code 1 when there is nothing to do, 4 when something can't be copied",
              run)}) {
        command
            ->add_option("--kind", options->kind, "Whose data of versions 5 and 4 counts as well")
            ->check(CLI::IsMember(std::vector<std::string>(std::begin(kKinds), std::end(kKinds))));
        tool::add_host_flag(*command, options->host);
    }
});

}  // namespace
