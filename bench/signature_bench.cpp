// The check of a signed file of 1 GiB against the digest that the openssl program makes of it, run
// in turns, and what the check adds to the memory of the process; and a small file, which tells
// what a check costs besides reading.
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/trust/sign_file.h"
#include "tvutil2/platform/trust/signature_check.h"

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "bench/support/profile.h"
#include "tests/support/executable_image.h"

namespace {

constexpr int kTurns = 7;

std::string read_file(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// An ELF file of that size, signed by somebody.
std::string signed_file(off_t size) {
    const auto base = bench::profile_folder() + "/" + std::to_string(size);
    const auto file = base + ".exe";
    std::ofstream(file, std::ios::binary) << tests::elf_image().all();
    const auto make =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout " + base +
        ".key -out " + base + ".pem -subj /CN=x >/dev/null 2>&1";
    if (std::system(make.c_str()) != 0 || truncate(file.c_str(), size) != 0 ||
        !tvutil2::sign_elf_file(file, file,
                                {read_file(base + ".pem"), read_file(base + ".key"), ""})
             .empty()) {
        std::abort();
    }
    return file;
}

void check(const std::string& file) {
    const auto path = tvutil2::platform_path(file).value();
    if (!tvutil2::is_intact(tvutil2::check_signature(path.c_str()).verdict)) std::abort();
}

void run_openssl(const std::string& file) {
    std::string words[] = {"openssl", "dgst", "-sha256", "-out", file + ".digest", file};
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t child = 0;
    int status = -1;
    if (posix_spawnp(&child, "openssl", nullptr, nullptr, arguments.data(), environ) != 0 ||
        waitpid(child, &status, 0) != child || status != 0) {
        std::abort();
    }
}

double seconds_of(void (*work)(const std::string&), const std::string& file) {
    const auto start = std::chrono::steady_clock::now();
    work(file);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    return time.count();
}

// KiB that the process had at most, since it was last asked to forget.
long peak_memory(bool forget) {
    if (forget) std::ofstream("/proc/self/clear_refs") << "5";
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) return std::stol(line.substr(6));
    }
    return 0;
}

struct Medians {
    double ours, openssl;
};

Medians measured(const std::string& file) {
    std::vector<double> ours;
    std::vector<double> openssl;
    const long before = peak_memory(true);
    check(file);
    std::fprintf(stderr, "# memory that a check adds at most: %ld KiB\n",
                 peak_memory(false) - before);
    for (int turn = 0; turn < kTurns; ++turn) {
        openssl.push_back(seconds_of(run_openssl, file));
        ours.push_back(seconds_of(check, file));
    }
    const auto median = [](std::vector<double>& times) {
        std::sort(times.begin(), times.end());
        return times[times.size() / 2];
    };
    return {median(ours), median(openssl)};
}

const bool kRegistered = [] {
    constexpr off_t kGibibyte = off_t{1} << 30;
    static const auto get = [](off_t size) -> const Medians& {
        static const auto huge = measured(signed_file(kGibibyte));
        static const auto small = measured(signed_file(4096));
        return size == kGibibyte ? huge : small;
    };
    const auto report = [](const std::string& name, off_t size) {
        const auto add = [size](const std::string& full_name, double Medians::*value) {
            benchmark::RegisterBenchmark(full_name.c_str(),
                                         [=](benchmark::State& state) {
                                             for (auto _ : state)
                                                 state.SetIterationTime(get(size).*value);
                                         })
                ->UseManualTime()
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond);
        };
        add(name + "|ours", &Medians::ours);
        add(name + "|openssl dgst", &Medians::openssl);
    };
    report("signature: file of 1 GiB", kGibibyte);
    report("signature: file of 4 KiB", 4096);
    return true;
}();

}  // namespace
