// tvutil update: settings and checks of the update module, which lies beside this program.
#include "tvutil2/frame/product.h"
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/services/live_update.h"
#include "tvutil2/services/signature.h"

#include <memory>
#include <string>
#include <string_view>

#include "tools/tvutil/command.h"

namespace {

using tool::Exit;
using tool::Failure;
using tvutil2::UpdateCheck;

constexpr unsigned int kLastProduct = 7;

struct Options {
    unsigned int code = 0;
    unsigned int major = tvutil2::kMajorVersion;
    std::string automatic;
    unsigned int interval = 0;
    bool has_interval = false;
    bool force = false;
    bool checked = false;
    bool json = false;
    bool host = false;
};

struct Settings {
    explicit Settings(const Options& options) {
        TvGetLiveUpdateInformation(options.code, options.major, enable, interval);
    }
    int enable = 0;
    unsigned int interval = 0;
};

// "never", or a local time, or what was stored in the place of one.
std::string last_check(const Options& options) {
    const auto last = tvutil2::last_update_check(options.code, options.major);
    if (!last) return "never";
    if (FILETIME unused{}; SystemTimeToFileTime(&*last, &unused) == FALSE) return "no date";
    CString text;
    text.Format(u"%04u-%02u-%02u %02u:%02u:%02u", last->wYear, last->wMonth, last->wDay,
                last->wHour, last->wMinute, last->wSecond);
    return tool::narrow(text.View());
}

void show_status(const Options& options) {
    const Settings settings(options);
    const auto module = tool::shown_path(tvutil2::update_module_path().View(), options.host);
    const bool is_there = TvIsExistUpdateChecker() != 0;
    const bool is_due =
        TvIsUpdateIntervalPassed(options.code, options.major, settings.interval) != 0;
    const auto last = last_check(options);
    if (options.json) {
        return tool::print({{"module", module},
                            {"present", is_there},
                            {"automatic", settings.enable != 0},
                            {"interval", settings.interval},
                            {"last", last},
                            {"due", is_due}});
    }
    tool::print("module: " + module + (is_there ? "" : " (missing)"));
    tool::print(std::string("automatic checks: ") + (settings.enable != 0 ? "on" : "off"));
    tool::print("interval: " + std::to_string(settings.interval) + " days");
    tool::print("last check: " + last);
    tool::print(std::string("due: ") + (is_due ? "yes" : "no"));
}

void set(const Options& options) {
    const int enable = options.automatic == "on" ? 1 : 0;
    const auto interval = options.has_interval ? options.interval : Settings(options).interval;
    TvSetLiveUpdate(options.code, options.major, enable, interval);
    // Storing tells nothing; what is stored does.
    const Settings stored(options);
    if (stored.enable != enable || stored.interval != interval) {
        throw Failure{Exit::failed, "the settings could not be stored"};
    }
}

void show_due(const Options& options) {
    const bool is_due =
        TvIsUpdateIntervalPassed(options.code, options.major, Settings(options).interval) != 0;
    if (options.json) tool::print(nlohmann::ordered_json{{"due", is_due}});
    if (!is_due) tool::exit_with(Exit::no);
}

constexpr std::string_view kNoModule = "no update module";
// Whether it then starts isn't told to anybody.
constexpr std::string_view kBegun = "update module: signed, and told to start";

void answer(std::string_view text, Exit code) {
    tool::print(text);
    tool::exit_with(code);
}

void expect_signed_module() {
    const auto module = tvutil2::update_module_path();
    if (TvCheckFileIsTolvarineSigned(module) == 0) {
        throw Failure{Exit::refused,
                      tool::narrow(module.View()) + ": not signed by the maker, and not started"};
    }
}

void check(const Options& options) {
    HANDLE thread = nullptr;
    const auto outcome = tvutil2::check_live_update(
        options.code, options.major, options.force ? 1 : 0, options.checked ? 1 : 0, thread);
    if (thread != nullptr) {
        // The thread would end with this program.
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
    switch (outcome) {
        case UpdateCheck::no_module:
            return answer(kNoModule, Exit::no);
        case UpdateCheck::not_due:
            return answer("no check is due", Exit::no);
        case UpdateCheck::not_stored:
            throw Failure{Exit::failed, "the time of the check could not be stored"};
        case UpdateCheck::clock_started:
            return answer("first check: the clock runs from now on", Exit::success);
        case UpdateCheck::begun:
            expect_signed_module();
            return answer(kBegun, Exit::success);
    }
}

void force(const Options& options) {
    if (TvForceLiveUpdate(options.code, options.major) != 0) return answer(kBegun, Exit::success);
    if (TvIsExistUpdateChecker() != 0) expect_signed_module();
    answer(kNoModule, Exit::no);
}

CLI::App& add(CLI::App& update, const char* name, const char* help,
              const std::shared_ptr<Options>& options, void (*run)(const Options& options)) {
    auto& command = *update.add_subcommand(name, help);
    command.add_option("CODE", options->code, "Program code, see \"tvutil product name\"")
        ->required()
        ->check(CLI::Range(0U, kLastProduct));
    command.add_option("--major", options->major, "Major version (default 8)");
    command.callback([options, run] { run(*options); });
    return command;
}

const tool::Command g_update([](CLI::App& app) {
    const auto options = std::make_shared<Options>();
    auto& update = *app.add_subcommand(
        "update", "Checks for updates, by the module LiveUpdate.exe beside this program");
    update.require_subcommand(1);
    auto& status = add(update, "status", "Settings, the last check, and whether one is due",
                       options, &show_status);
    tool::add_json_flag(status, options->json);
    tool::add_host_flag(status, options->host);
    auto& change = add(update, "set", "Turn automatic checks on or off", options, &set);
    change.add_option("automatic", options->automatic, "on or off")
        ->required()
        ->check(CLI::IsMember({"on", "off"}));
    auto* const interval = change.add_option("--interval", options->interval,
                                             "Days of a period; 0 checks at each start");
    interval->each([options](const std::string&) { options->has_interval = true; });
    auto& due =
        add(update, "due", "Whether a check is due; exit code 1 when none is", options, &show_due);
    tool::add_json_flag(due, options->json);
    auto& run =
        add(update, "check", "Check if one is due, as a product does; exit code 1 when none is",
            options, &check);
    run.add_flag("--force", options->force, "Check at any time, and let the module show itself");
    run.add_flag("--checked", options->checked, "Pass /checked on to the module");
    add(update, "force", "Start the module at once", options, &force);
    auto& id = *update.add_subcommand("id", "The id of this user's installation, made if need be");
    tool::add_json_flag(id, options->json);
    id.callback([options] { tool::print_text("id", tool::narrow(TvCommonGUID()), options->json); });
});

}  // namespace
