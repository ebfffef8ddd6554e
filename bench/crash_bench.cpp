// What the crash reporter costs a program that doesn't crash: its installation, which may take 0.2
// ms, and the start of threads behind it.
//
// C does what cannot be left out: it sets six handlers and a stack for them, and takes both back.
#include "tvutil2/diag/crash_report.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/objects/threads.h"

#include <benchmark/benchmark.h>
#include <sys/mman.h>

#include <csignal>
#include <cstddef>

namespace {

// Each installation keeps some bytes for the life of the process.
constexpr benchmark::IterationCount kInstallations = 5000;

void install_ours(benchmark::State& state) {
    for (auto _ : state) {
        if (TvCrashReportInstall(nullptr) != 0) state.SkipWithError("not installed");
        TvCrashReportUninstall();
    }
}

void install_c(benchmark::State& state) {
    constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS};
    constexpr std::size_t kSize = std::size_t{64} * 1024;
    for (auto _ : state) {
        void* const memory =
            mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        const stack_t own{memory, 0, kSize};
        const stack_t none{nullptr, SS_DISABLE, 0};
        struct sigaction before[std::size(kSignals)];
        struct sigaction action {};
        action.sa_handler = [](int) {};
        action.sa_flags = SA_ONSTACK;
        sigaltstack(&own, nullptr);
        for (std::size_t i = 0; i < std::size(kSignals); ++i) {
            sigaction(kSignals[i], &action, &before[i]);
        }
        for (std::size_t i = 0; i < std::size(kSignals); ++i) {
            sigaction(kSignals[i], &before[i], nullptr);
        }
        sigaltstack(&none, nullptr);
        munmap(memory, kSize);
    }
}

void start_threads(benchmark::State& state) {
    for (auto _ : state) {
        auto* const thread = CreateThread(
            nullptr, 0, [](void*) -> DWORD { return 0; }, nullptr, 0, nullptr);
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
}

// From here on the program has it.
void start_threads_installed(benchmark::State& state) {
    static const bool is_installed = TvCrashReportInstall(nullptr) == 0;
    if (!is_installed) state.SkipWithError("not installed");
    start_threads(state);
}

BENCHMARK(start_threads)->Name("a thread, reporter installed|without it")->UseRealTime();
BENCHMARK(install_c)->Name("install the crash reporter|C: handlers and a stack");
BENCHMARK(install_ours)->Name("install the crash reporter|ours")->Iterations(kInstallations);
BENCHMARK(start_threads_installed)->Name("a thread, reporter installed|ours")->UseRealTime();

}  // namespace
