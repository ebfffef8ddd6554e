// The crash reporter's helper program.
//
//     tvutil2-crash FOLDER APPLICATION VERSION URL PROGRAM [FILE DESCRIPTION]...
//
// A crashed process starts it like this, with its note (crash_note.h) on the socket that is
// standard input, and ends when that is closed. The report is sent behind that.
//
//     tvutil2-crash --send FOLDER [ADDRESS [NAME...]]
//     tvutil2-crash --send-quietly FOLDER
//
// Sends the reports that weren't sent yet, or those that are named, and prints for each a line of
// JSON: "name", "sent", and "error" where it wasn't. The quiet form leaves the work to a sender
// that is at it already.
#include "tvutil2/platform/crash/crash_note.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/crash/report_writer.h"
#include "tools/crash/sender.h"

namespace {

using Words = std::span<char*>;

// Seconds.
constexpr unsigned kLongestRun = 25;  // less than the crashed process waits
constexpr unsigned kLongestSending = 150;

// Whoever reads the crashed program's output waits for its end and not for this one's; nor does the
// end of its terminal matter.
void stand_alone() {
    const int nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, 0);
    setsid();
}

// The crashed process may end.
void let_go() {
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
}

void send_waiting(const crash::ReportsFolder& reports, bool waits) {
    // Whatever becomes of the network, this ends.
    alarm(kLongestSending);
    const crash::SendingTurn turn(reports.root(), waits);
    if (turn) crash::send_reports(reports, "", {});
}

int tell_crash(Words words) {
    constexpr std::size_t kFixed = 5;
    if (words.size() < kFixed) return 2;
    stand_alone();
    // Whatever becomes of this program, the crashed one isn't kept waiting.
    alarm(kLongestRun);
    tvutil2::CrashNote note;
    if (recv(STDIN_FILENO, &note, sizeof note, 0) != sizeof note ||
        note.version != tvutil2::CrashNote::kVersion) {
        return 2;
    }
    note.exception[sizeof note.exception - 1] = 0;
    const crash::ReportsFolder reports(words[0]);
    const bool is_written = crash::write_report(
        reports, note, {words[1], words[2], words[3], words[4]}, words.subspan(kFixed));
    let_go();
    if (!is_written) return 1;
    reports.sweep(std::chrono::seconds(2 * kLongestRun));
    send_waiting(reports, true);
    return 0;
}

int send_and_tell(Words words) {
    const crash::ReportsFolder reports(words[0]);
    const std::string address = words.size() > 1 ? words[1] : "";
    const auto names = words.subspan(std::min<std::size_t>(2, words.size()));
    const crash::SendingTurn turn(reports.root(), true);
    if (!turn) return 0;  // there is no such folder, so there are no reports
    for (const auto& [name, failure] :
         crash::send_reports(reports, address, {names.begin(), names.end()})) {
        nlohmann::ordered_json line{{"name", name}, {"sent", failure.empty()}};
        if (!failure.empty()) line["error"] = failure;
        std::cout << line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
                  << '\n';
    }
    return std::cout.flush() ? 0 : 1;
}

}  // namespace

// What it can't cope with ends it without a report, as a full disk does.
int main(int count, char** all) try {
    std::signal(SIGALRM, SIG_DFL);
    // The limit of the crashed program's files isn't a reason to die.
    std::signal(SIGXFSZ, SIG_IGN);
    umask(077);
    // Symbols aren't fetched from anywhere.
    unsetenv("DEBUGINFOD_URLS");
    const auto words = Words(all, static_cast<std::size_t>(count)).subspan(count > 0 ? 1 : 0);
    const std::string_view mode = words.empty() ? "" : words[0];
    if (words.size() < 2) return 2;
    if (mode == "--send") return send_and_tell(words.subspan(1));
    if (mode != "--send-quietly") return tell_crash(words);
    send_waiting(crash::ReportsFolder(words[1]), false);
    return 0;
} catch (const std::exception&) {
    return 1;
}
