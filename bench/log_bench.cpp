// A line to a log beside what it costs at least, and the version of a large executable beside that
// of a small one.
//
// A run's log opens, seeks, writes and closes for each line. The C loop does the same on the same
// file system and does nothing else: no formatting, no time, no sharing mode. spdlog keeps its file
// open and flushes each line. All write 60 characters, ours in two bytes each.
#include "tvutil2/diag/app_log.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/services/environment.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "bench/support/profile.h"

namespace {

constexpr auto kText = u"a line of a log as programs write them, sixty characters long";

// Long files would be measured by the file system's care for them alone.
constexpr benchmark::IterationCount kLines = 200'000;

void start(int mode) {
    const auto folder = *tvutil2::platform_path(bench::profile_folder());
    _InitApplicationLog(folder.c_str(), u"bench", 1, 0);
    _SetWriteAppLog(mode, u"", u"");
}

void our_line(benchmark::State& state) {
    start(1);
    for (auto _ : state) __WriteInfoAppLog(0, kText);
}

void our_formatted_line(benchmark::State& state) {
    start(1);
    for (auto _ : state) {
        __WriteInfoAppLog(1, u"a line of a log as %s write them, %d characters long", u"programs",
                          60);
    }
}

void our_bytes(benchmark::State& state) {
    start(1);
    const std::string bytes(152, 'x');
    const auto* const data = reinterpret_cast<const unsigned char*>(bytes.data());
    for (auto _ : state) _WriteApplicationLog(data, static_cast<unsigned int>(bytes.size()));
}

void c_loop(benchmark::State& state) {
    start(0);  // a folder as deep, and a name as long
    const auto file = bench::profile_folder() + "/applog/bench_26_05_12_14_03_27_418.log";
    const std::string bytes(152, 'x');
    for (auto _ : state) {
        const int log = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        lseek(log, 0, SEEK_END);
        if (write(log, bytes.data(), bytes.size()) < 0) state.SkipWithError("write");
        close(log);
    }
    unlink(file.c_str());
}

void spdlog_line(benchmark::State& state) {
    const auto file = bench::profile_folder() + "/spdlog.log";
    const auto log = spdlog::basic_logger_st("bench", file);
    log->set_pattern("[%H:%M:%S.%e] %v");
    log->flush_on(spdlog::level::info);
    for (auto _ : state) {
        log->info("a line of a log as programs write them, sixty characters long");
    }
    spdlog::drop("bench");
    unlink(file.c_str());
}

void call_with_mode_0(benchmark::State& state) {
    start(0);
    for (auto _ : state) {
        __WriteInfoAppLog(1, u"%d", 60);
        benchmark::ClobberMemory();
    }
}

void spdlog_level_off(benchmark::State& state) {
    const auto log = spdlog::basic_logger_st("off", bench::profile_folder() + "/off.log");
    log->set_level(spdlog::level::off);
    for (auto _ : state) {
        log->info("{}", 60);
        benchmark::ClobberMemory();
    }
    spdlog::drop("off");
}

// This program, made longer by a hole behind its end.
template <long long size>
void version(benchmark::State& state) {
    const auto file = bench::profile_folder() + "/" + std::to_string(size) + ".exe";
    std::filesystem::copy_file("/proc/self/exe", file,
                               std::filesystem::copy_options::overwrite_existing);
    if (truncate(file.c_str(), size) != 0) state.SkipWithError("truncate");
    const auto path = *tvutil2::platform_path(file);
    CString text;
    for (auto _ : state) {
        if (TvGetFileVersion(path.c_str(), text) == 0) state.SkipWithError("no version");
    }
    unlink(file.c_str());
}

const bool registered = [] {
    const auto add = [](const char* name, void (*run)(benchmark::State&)) {
        return benchmark::RegisterBenchmark(name, run);
    };
    add("log line|ours", our_line)->Iterations(kLines);
    add("log line|C: open, seek, write, close", c_loop)->Iterations(kLines);
    add("log line|spdlog, flushed", spdlog_line)->Iterations(kLines);
    add("log line, ready bytes|ours", our_bytes)->Iterations(kLines);
    add("log line, ready bytes|C: open, seek, write, close", c_loop)->Iterations(kLines);
    add("log line, formatted|ours", our_formatted_line)->Iterations(kLines);
    add("log line, formatted|C: open, seek, write, close", c_loop)->Iterations(kLines);
    add("log call with mode 0|ours", call_with_mode_0);
    add("log call with mode 0|spdlog, level off", spdlog_level_off);
    add("file version, 1 GB|ours", version<(1LL << 30)>);
    add("file version, 1 GB|ours, 4 MB", version<(4LL << 20)>);
    return true;
}();

}  // namespace
