// The dialog for files in a folder of 100,000, against "ls -l" of the same folder as a process of
// its own: until the first rows show, and until all of them do, in their order. The dialog is
// opened, looked at every millisecond and closed each time; the folder is in the host's cache for
// both.
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/open_file_name.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/support/profile.h"

namespace {

constexpr int kEntries = 100000;
constexpr int kRows = 0x0460;  // the id of the dialog's list
constexpr int kFewRows = 20;

using Clock = std::chrono::steady_clock;

const std::string& folder() {
    static const std::string made = [] {
        auto path = bench::profile_folder() + "/many";
        std::filesystem::create_directory(path);
        for (int i = 0; i < kEntries; ++i) {
            const auto name = path + "/File " + std::to_string(i * 7919 % kEntries) + ".txt";
            close(open(name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
        }
        return path;
    }();
    return made;
}

// When there are that many rows the dialog is closed.
struct Awaited {
    int rows = 0;
    Clock::time_point reached;
} g_awaited;

void look(HWND, UINT, UINT_PTR, DWORD) {
    auto* const dialog = FindWindowW(u"#32770", nullptr);
    auto* const rows = dialog != nullptr ? GetDlgItem(dialog, kRows) : nullptr;
    if (rows == nullptr || SendMessageW(rows, LVM_GETITEMCOUNT, 0, 0) < g_awaited.rows) return;
    g_awaited.reached = Clock::now();
    SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
}

void open_until(benchmark::State& state, int rows) {
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    const auto path = *tvutil2::platform_path(folder());
    for (auto _ : state) {
        char16_t chosen[1024] = {};
        OPENFILENAMEW asked{};
        asked.lStructSize = sizeof asked;
        asked.lpstrFile = chosen;
        asked.nMaxFile = 1024;
        asked.lpstrInitialDir = path.c_str();
        g_awaited.rows = rows;
        const auto timer = SetTimer(nullptr, 0, 1, look);
        const auto start = Clock::now();
        GetOpenFileNameW(&asked);
        KillTimer(nullptr, timer);
        state.SetIterationTime(std::chrono::duration<double>(g_awaited.reached - start).count());
    }
}

void list(benchmark::State& state) {
    folder();
    for (auto _ : state) {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        std::string program = "ls";
        std::string flag = "-l";
        auto path = folder();
        char* arguments[] = {program.data(), flag.data(), path.data(), nullptr};
        const auto start = Clock::now();
        pid_t child = 0;
        int status = 1;
        if (posix_spawnp(&child, "ls", &actions, nullptr, arguments, environ) == 0) {
            waitpid(child, &status, 0);
        }
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        posix_spawn_file_actions_destroy(&actions);
        if (status != 0) state.SkipWithError("ls failed");
    }
}

void first_rows_ours(benchmark::State& state) {
    open_until(state, kFewRows);
}
BENCHMARK(first_rows_ours)->Name("first rows of 100,000|ours")->UseManualTime()->Iterations(10);
void all_rows_ours(benchmark::State& state) {
    open_until(state, kEntries);
}
BENCHMARK(all_rows_ours)->Name("100,000 in their order|ours")->UseManualTime()->Iterations(10);
BENCHMARK(list)->Name("100,000 in their order|ls -l")->UseManualTime()->Iterations(10);

}  // namespace
