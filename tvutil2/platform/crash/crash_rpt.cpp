#include "tvutil2/platform/crash/crash_rpt.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/crash/fatal_signals.h"
#include "tvutil2/platform/process/launch.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string_view>

namespace tvutil2 {
namespace {

constexpr std::size_t kLongestName = 100;  // bytes

struct State {
    bool is_installed = false;
    CrashHandOver hand_over;
    std::u16string error;
};

State& state() {
    static auto* const instance = new State;
    return *instance;
}

int fail(std::u16string_view text) {
    state().error = text;
    return 1;
}

std::string narrow(const char16_t* text) {
    return text == nullptr ? "" : to_utf8(text).value_or("");
}

// It becomes part of file names.
bool is_fit(const std::string& application) {
    return !application.empty() && application.size() <= kLongestName &&
           application.front() != '.' && application.find('/') == std::string::npos;
}

std::string this_program() {
    std::error_code none;
    return std::filesystem::read_symlink("/proc/self/exe", none).string();
}

bool is_waiting(const std::string& name) {
    return !name.starts_with('.') && name.ends_with(".zip") && !name.ends_with(".sent.zip");
}

// What couldn't be sent when it was made is sent by a program that nobody waits for.
void send_waiting(const std::string& helper) {
    const auto folder = crash_reports_folder();
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (!is_waiting(entry->path().filename().string())) continue;
        const auto program = platform_path(helper);
        const auto place = to_utf16(folder);
        if (!program || !place) return;
        const auto words = u"--send-quietly " + quoted_argument(*place);
        ShellExecuteW(nullptr, nullptr, program->c_str(), words.c_str(), nullptr, SW_HIDE);
        return;
    }
}

}  // namespace

std::string crash_reports_folder() {
    return user_store() + "/crash";
}

// Beside the library, in the build tree as where it is installed.
std::string crash_helper_file() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&crash_reports_folder), &info) == 0) return "";
    std::string file(info.dli_fname);
    const auto separator = file.rfind('/');
    file.resize(separator == std::string::npos ? 0 : separator + 1);
    return file + TVUTIL2_CRASH_HELPER;
}

int crash_install(const CrashInstallRecord* record) {
    if (record == nullptr || record->size != sizeof *record) {
        return fail(u"The crash reporter was given a record of another version.");
    }
    const auto application = narrow(record->application);
    if (!is_fit(application)) {
        return fail(u"The crash reporter was given no fit name of an application.");
    }
    auto& own = state();
    if (own.is_installed) return fail(u"The crash reporter is installed already.");
    const auto helper = crash_helper_file();
    if (access(helper.c_str(), X_OK) != 0) {
        return fail(u"The crash reporter's helper program is missing.");
    }
    own.hand_over.command = {helper,
                             crash_reports_folder(),
                             application,
                             narrow(record->version),
                             narrow(record->url),
                             this_program()};
    own.hand_over.callback = record->callback;
    own.hand_over.picture_quality = 0;
    if (record->longest_report != 0) own.hand_over.longest_report = record->longest_report;
    install_crash_handlers(own.hand_over);
    own.is_installed = true;
    send_waiting(helper);
    return 0;
}

int crash_uninstall() {
    auto& own = state();
    if (!own.is_installed) return fail(u"The crash reporter isn't installed.");
    remove_crash_handlers();
    own.is_installed = false;
    return 0;
}

int crash_add_file(const char16_t* path, const char16_t* /*name*/, const char16_t* description,
                   DWORD /*flags*/) {
    auto& own = state();
    if (!own.is_installed) return fail(u"The crash reporter isn't installed.");
    const auto host = path != nullptr ? host_path(path) : std::nullopt;
    if (!host) return fail(u"The file's path has no place here.");
    own.hand_over.command.insert(own.hand_over.command.end(), {*host, narrow(description)});
    exchange_hand_over(own.hand_over);
    return 0;
}

int crash_add_screenshot(DWORD /*flags*/, int quality) {
    auto& own = state();
    if (!own.is_installed) return fail(u"The crash reporter isn't installed.");
    own.hand_over.picture_quality = std::clamp(quality, 1, 100);
    exchange_hand_over(own.hand_over);
    return 0;
}

int crash_last_error(char16_t* text, UINT size) {
    if (text == nullptr || size == 0) return 0;
    const auto count = state().error.copy(text, size - 1);
    text[count] = 0;
    return static_cast<int>(count);
}

}  // namespace tvutil2
