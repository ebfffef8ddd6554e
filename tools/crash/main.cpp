// The crash reporter's helper program. A crashed process starts it, with its note (crash_note.h) on
// the socket that is standard input, and ends when that is closed.
//
//     tvutil2-crash FOLDER APPLICATION VERSION URL [FILE DESCRIPTION]...
#include "tvutil2/platform/crash/crash_note.h"

#include <linux/close_range.h>
#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tools/crash/stacks.h"

namespace {

using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

constexpr unsigned kLongestRun = 25;  // seconds; less than the crashed process waits
constexpr std::size_t kKept = 10;     // reports
constexpr std::uintmax_t kLargestFile = 64U << 20U;

constexpr const char* kRegisterNames[tvutil2::CrashNote::kRegisters] = {
    "r8",  "r9",  "r10", "r11", "r12", "r13", "r14",    "r15", "rdi",    "rsi",     "rbp", "rbx",
    "rdx", "rax", "rcx", "rsp", "rip", "efl", "csgsfs", "err", "trapno", "oldmask", "cr2"};
constexpr std::size_t kInstruction = 16;

std::string number(std::uint64_t value) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(value));
    return text;
}

std::string now(const char* format) {
    const auto seconds = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[64] = {};
    std::strftime(text, sizeof text, format, &parts);
    return text;
}

// The crashed thread's stack begins where the signal came: what is above is the handler's.
std::span<const crash::Frame> without_handler(std::span<const crash::Frame> frames,
                                              std::uint64_t instruction) {
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (frames[i].address == instruction) return frames.subspan(i);
    }
    return frames;
}

Json stack(std::span<const crash::Frame> frames) {
    Json list = Json::array();
    for (const auto& frame : frames) {
        list.push_back({{"address", number(frame.address)},
                        {"function", frame.function},
                        {"module", frame.module}});
    }
    return list;
}

std::string kind(const tvutil2::CrashNote& note, std::span<const crash::Frame> frames) {
    for (const auto& frame : frames) {
        if (frame.function == "__cxa_pure_virtual") return "pure call";
    }
    return note.is_terminate ? "terminate" : "signal";
}

Json facts(const tvutil2::CrashNote& note) {
    const char* const name = sigabbrev_np(note.signal);
    Json facts{{"time", now("%Y-%m-%dT%H:%M:%SZ")},
               {"signal", name != nullptr ? std::string("SIG") + name : number(0)},
               {"code", note.code},
               {"address", number(note.address)},
               {"process", note.process},
               {"thread", note.thread}};
    if (note.exception[0] != 0) facts["exception"] = crash::readable(note.exception);
#ifdef __x86_64__
    for (std::size_t i = 0; i < std::size(kRegisterNames); ++i) {
        facts["registers"][kRegisterNames[i]] = number(note.registers[i]);
    }
#endif
    return facts;
}

void add_stacks(Json& report, const tvutil2::CrashNote& note, const crash::Stacks& stacks) {
    Json threads = Json::array();
    for (const auto& [thread, all] : stacks.threads) {
        const bool is_crashed = thread == note.thread;
        const auto frames =
            is_crashed ? without_handler(all, note.registers[kInstruction]) : std::span(all);
        if (is_crashed) report["kind"] = kind(note, frames);
        threads.push_back({{"thread", thread}, {"crashed", is_crashed}, {"stack", stack(frames)}});
    }
    report["threads"] = std::move(threads);
    if (!stacks.failure.empty()) report["no_stacks"] = stacks.failure;
    report["build_ids"] = stacks.build_ids;
}

// The copies' names and descriptions. A file that is gone is passed over; of a large one the end,
// which tells what led to the crash, would be wanted, but none of it is better than a full disk.
Json copy_files(std::span<char*> files, const fs::path& folder) {
    Json list = Json::array();
    for (; files.size() >= 2; files = files.subspan(2)) {
        const fs::path source(files[0]);
        std::error_code error;
        if (!fs::is_regular_file(source, error) || fs::file_size(source, error) > kLargestFile)
            continue;
        if (!fs::copy_file(source, folder / source.filename(), error)) continue;
        list.push_back({{"name", source.filename().string()}, {"description", files[1]}});
    }
    return list;
}

bool write(const fs::path& file, const Json& report) {
    std::ofstream stream(file);
    stream << report.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    stream.close();
    return !stream.fail();
}

// The newest reports stay. A draft is somebody's work, unless that took longer than it may.
void sweep(const fs::path& root) {
    using Clock = fs::file_time_type::clock;
    std::error_code error;
    std::vector<std::pair<fs::file_time_type, fs::path>> reports;
    for (const auto& entry : fs::directory_iterator(root, error)) {
        const auto time = entry.last_write_time(error);
        if (error) continue;
        if (!entry.path().filename().string().starts_with('.')) {
            reports.emplace_back(time, entry.path());
        } else if (Clock::now() - time > std::chrono::seconds(2 * kLongestRun)) {
            fs::remove_all(entry.path(), error);
        }
    }
    std::sort(reports.begin(), reports.end());
    for (std::size_t i = 0; i + kKept < reports.size(); ++i) {
        fs::remove_all(reports[i].second, error);
    }
}

// The folder has its name when it is whole; a part of one, for want of room, say, is taken away.
bool make_report(const tvutil2::CrashNote& note, std::span<char*> arguments) {
    const fs::path root(arguments[0]);
    const auto name = std::string(arguments[1]) + "_" + now("%Y-%m-%d_%H-%M-%S") + "_" +
                      std::to_string(note.process);
    const auto draft = root / ("." + name);
    std::error_code error;
    fs::create_directories(root, error);
    if (!fs::create_directory(draft, error)) return false;
    Json report{{"application", arguments[1]}, {"version", arguments[2]}, {"url", arguments[3]}};
    report["kind"] = note.is_terminate ? "terminate" : "signal";
    report.update(facts(note));
    add_stacks(report, note, crash::stacks_of(note.process));
    report["files"] = copy_files(arguments.subspan(4), draft);
    report["picture"] = "none: there is no display";
    if (write(draft / "report.json", report)) {
        fs::rename(draft, root / name, error);
        if (!error) {
            sweep(root);
            return true;
        }
    }
    fs::remove_all(draft, error);
    return false;
}

}  // namespace

// What it can't cope with ends it without a report, as a full disk does.
int main(int count, char** words) try {
    if (count < 5) return 2;
    close_range(STDERR_FILENO + 1, ~0U, 0);
    umask(077);
    // Whatever becomes of this program, the crashed one isn't kept waiting.
    std::signal(SIGALRM, SIG_DFL);
    alarm(kLongestRun);
    // The limit of the crashed program's files isn't a reason to die.
    std::signal(SIGXFSZ, SIG_IGN);
    // Symbols aren't fetched from anywhere.
    unsetenv("DEBUGINFOD_URLS");
    tvutil2::CrashNote note;
    if (recv(STDIN_FILENO, &note, sizeof note, 0) != sizeof note ||
        note.version != tvutil2::CrashNote::kVersion) {
        return 2;
    }
    note.exception[sizeof note.exception - 1] = 0;
    return make_report(note, std::span(words, static_cast<std::size_t>(count)).subspan(1)) ? 0 : 1;
} catch (const std::exception&) {
    return 1;
}
