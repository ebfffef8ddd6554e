// CopyFolder, and the import of an earlier version's sessions, against the host's "cp -r", as a
// process of its own.
//
// The disk is shared with whatever else runs, so the two take turns, and each gets the median of
// its turns. Deleting what was copied isn't timed. The second table is the other way round: one
// new file after another in a folder that grows, which must cost the same for each.
#include "tvutil2/data/data_import.h"
#include "tvutil2/data/files.h"
#include "tvutil2/data/folders.h"
#include "tvutil2/data/user_data.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/settings/registry.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "bench/support/profile.h"

namespace {

namespace fs = std::filesystem;

void fill_many(const std::string& folder) {
    constexpr int kFiles = 10000;
    for (int i = 0; i < kFiles; ++i) {
        const auto sub = folder + "/" + std::to_string(i / 1000);
        fs::create_directories(sub);
        std::ofstream(sub + "/session" + std::to_string(i) + ".ssn") << std::string(1500, 'x');
    }
}

void fill_flat(const std::string& folder) {
    constexpr int kFiles = 10000;
    for (int i = 0; i < kFiles; ++i) {
        std::ofstream(folder + "/session" + std::to_string(i) + ".ssn") << std::string(1500, 'x');
    }
}

void fill_huge(const std::string& folder) {
    std::ofstream file(folder + "/huge", std::ios::binary);
    const std::string block(std::size_t{1} << 20, 'x');
    for (int i = 0; i < 1024; ++i) file << block;
}

void run_cp(const std::string& from, const std::string& to) {
    std::string program = "cp";
    std::string flag = "-r";
    std::string source = from;
    std::string target = to;
    char* arguments[] = {program.data(), flag.data(), source.data(), target.data(), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, "cp", nullptr, nullptr, arguments, environ) != 0) std::abort();
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) std::abort();
}

void run_ours(const std::string& from, const std::string& to) {
    CopyFolder(tvutil2::platform_path(from)->c_str(), tvutil2::platform_path(to)->c_str());
}

void fill_sessions(const std::string& folder) {
    fs::create_directories(folder + "/Pelrin/Sessions");
    fill_many(folder + "/Pelrin/Sessions");
}

void store_data_folder(const char16_t* version, const std::string& folder) {
    CRegistry key;
    const auto name = u"Software\\Tolvarine\\Common\\" + CString(version) + u"\\UserData";
    if (key.Open(HKEY_CURRENT_USER, name, 1, KEY_ALL_ACCESS) == 0) std::abort();
    key.SetValue(u"UserDataPath", tvutil2::platform_path(folder)->c_str());
}

// With all that it has to look up, and to remember.
void run_import(const std::string& from, const std::string& to) {
    store_data_folder(u"7", from);
    store_data_folder(u"8", to);
    GetUserDataFolderPath(1);
    SetImportPrevStatus(u"ImportDone", 0);
    SetImportPrevStatus(u"Version7", 0);
    TvInitDataFolder(4);
    if (!fs::exists(to + "/Pelrin/Sessions/9/session9999.ssn")) std::abort();
}

using Copy = void (*)(const std::string&, const std::string&);

double seconds_of(Copy copy, const std::string& from) {
    const auto to = bench::profile_folder() + "/target";
    fs::remove_all(to);
    sync();
    const auto start = std::chrono::steady_clock::now();
    copy(from, to);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    return time.count();
}

struct Medians {
    double ours;
    double cp;
};

using Fill = void (*)(const std::string&);

Medians measured(Fill fill, Copy copy, int turns) {
    const auto from = bench::profile_folder() + "/source";
    fs::remove_all(from);
    fs::create_directory(from);
    fill(from);
    std::vector<double> ours;
    std::vector<double> cp;
    for (int turn = 0; turn < turns; ++turn) {
        cp.push_back(seconds_of(run_cp, from));
        ours.push_back(seconds_of(copy, from));
    }
    fs::remove_all(from);
    fs::remove_all(bench::profile_folder() + "/target");
    const auto median = [](std::vector<double>& times) {
        std::nth_element(times.begin(),
                         times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2),
                         times.end());
        return times[times.size() / 2];
    };
    return {median(ours), median(cp)};
}

// Measured together once, reported as two benchmarks.
const Medians& result(Fill fill, Copy copy, int turns) {
    static std::map<Fill, Medians> results;
    const auto found = results.find(fill);
    return found != results.end() ? found->second : results[fill] = measured(fill, copy, turns);
}

void report(const char* name, Fill fill, int turns, Copy copy = run_ours) {
    const std::string work(name);
    benchmark::RegisterBenchmark((work + "|ours").c_str(),
                                 [=](benchmark::State& state) {
                                     for (auto _ : state)
                                         state.SetIterationTime(result(fill, copy, turns).ours);
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((work + "|cp -r").c_str(),
                                 [=](benchmark::State& state) {
                                     for (auto _ : state)
                                         state.SetIterationTime(result(fill, copy, turns).cp);
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

const bool kRegistered = [] {
    report("copy folder: 10,000 small files in 10", fill_many, 9);
    report("copy folder: 10,000 small files in 1", fill_flat, 9);
    report("copy folder: one file of 1 GiB", fill_huge, 5);
    report("import of 10,000 session files", fill_sessions, 9, run_import);
    return true;
}();

void new_files_ours(benchmark::State& state) {
    const auto folder = bench::profile_folder() + "/grows";
    fs::create_directory(folder);
    const auto path = *tvutil2::platform_path(folder) + u"\\file";
    for (auto _ : state) {
        for (char16_t i = 0; i < state.range(0); ++i) {
            std::u16string name = path;
            for (int digit = 10000; digit > 0; digit /= 10) {
                name += static_cast<char16_t>(u'0' + i / digit % 10);
            }
            CloseHandle(
                CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
        }
        state.PauseTiming();
        fs::remove_all(folder);
        fs::create_directory(folder);
        state.ResumeTiming();
    }
    fs::remove_all(folder);
}
void new_files_open(benchmark::State& state) {
    const auto folder = bench::profile_folder() + "/grows";
    fs::create_directory(folder);
    for (auto _ : state) {
        for (int i = 0; i < state.range(0); ++i) {
            const auto name = folder + "/file" + std::to_string(i);
            close(open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        }
        state.PauseTiming();
        fs::remove_all(folder);
        fs::create_directory(folder);
        state.ResumeTiming();
    }
    fs::remove_all(folder);
}
BENCHMARK(new_files_ours)
    ->Name("new files in a folder: 1,000|ours")
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(new_files_open)
    ->Name("new files in a folder: 1,000|open(2)")
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(new_files_ours)
    ->Name("new files in a folder: 20,000|ours")
    ->Arg(20000)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(new_files_open)
    ->Name("new files in a folder: 20,000|open(2)")
    ->Arg(20000)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

}  // namespace
