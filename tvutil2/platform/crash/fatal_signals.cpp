#include "tvutil2/platform/crash/fatal_signals.h"

#include "tvutil2/platform/crash/crash_note.h"

#include <cxxabi.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <exception>
#include <memory>
#include <typeinfo>

namespace tvutil2 {
namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS};
constexpr std::size_t kStackSize = std::size_t{64} * 1024;
constexpr time_t kLongestReport = 30;
constexpr unsigned kLongestCallback = 10;

// In the form that execve takes, so that a crash has nothing left to build.
struct Prepared {
    explicit Prepared(CrashHandOver what) : hand_over(std::move(what)) {
        for (auto& word : hand_over.command) words.push_back(word.data());
        words.push_back(nullptr);
    }
    CrashHandOver hand_over;
    std::vector<char*> words;
};

constinit std::atomic<Prepared*> g_prepared{nullptr};
constinit std::atomic<pid_t> g_crashed{0};
constinit volatile std::sig_atomic_t g_signal = 0;
constinit std::atomic<const std::type_info*> g_exception{nullptr};
constinit std::atomic<bool> g_is_terminate{false};
struct sigaction g_before[std::size(kSignals)];
std::terminate_handler g_terminate_before = nullptr;

pid_t this_thread() {
    return static_cast<pid_t>(syscall(SYS_gettid));
}

// Ends the process by the signal, whoever else handles it.
void end_by(int number) {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(number, &action, nullptr);
    sigset_t only{};
    sigemptyset(&only);
    sigaddset(&only, number);
    syscall(SYS_tgkill, getpid(), this_thread(), number);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
}

void on_late_callback(int /*number*/) {
    end_by(g_signal);
}

void fill(CrashNote& note, int number, const siginfo_t& info, const void* context) {
    note.process = getpid();
    note.thread = this_thread();
    note.signal = number;
    note.code = info.si_code;
    if (info.si_code > 0) note.address = reinterpret_cast<std::uintptr_t>(info.si_addr);
#ifdef __x86_64__
    const auto& registers = static_cast<const ucontext_t*>(context)->uc_mcontext.gregs;
    static_assert(NGREG == CrashNote::kRegisters);
    std::transform(std::begin(registers), std::end(registers), note.registers,
                   [](auto value) { return static_cast<std::uint64_t>(value); });
#endif
    note.is_terminate = g_is_terminate;
    if (const auto* const type = g_exception.load()) {
        std::strncpy(note.exception, type->name(), sizeof note.exception - 1);
    }
}

// Until the helper has closed its end, or has had time enough.
void wait_for_end(int end) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    for (const time_t last = now.tv_sec + kLongestReport; now.tv_sec < last;) {
        pollfd wanted{end, POLLIN, 0};
        const int ready = poll(&wanted, 1, static_cast<int>(last - now.tv_sec) * 1000);
        if (ready > 0 || (ready < 0 && errno != EINTR)) return;
        clock_gettime(CLOCK_MONOTONIC, &now);
    }
}

[[noreturn]] void become_helper(int end, char* const* words) {
    sigset_t none{};
    sigemptyset(&none);
    if (end == STDIN_FILENO) {
        fcntl(end, F_SETFD, 0);
    } else {
        dup2(end, STDIN_FILENO);
    }
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execve(words[0], words, environ);
    _exit(127);
}

// _Fork runs no fork handlers: the crashed thread may hold any of the locks that they would take.
void hand_over(const Prepared& prepared, const CrashNote& note) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return;
    const pid_t helper = _Fork();
    if (helper == 0) become_helper(ends[1], prepared.words.data());
    close(ends[1]);
    if (helper > 0) {
        prctl(PR_SET_PTRACER, static_cast<unsigned long>(helper), 0UL, 0UL, 0UL);
        if (send(ends[0], &note, sizeof note, MSG_NOSIGNAL) == sizeof note) wait_for_end(ends[0]);
    }
    close(ends[0]);
}

void call_back(int (*callback)(void*)) {
    if (callback == nullptr) return;
    struct sigaction action {};
    action.sa_handler = on_late_callback;
    sigaction(SIGALRM, &action, nullptr);
    sigset_t only{};
    sigemptyset(&only);
    sigaddset(&only, SIGALRM);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    alarm(kLongestCallback);
    callback(nullptr);
    alarm(0);
}

void on_fatal_signal(int number, siginfo_t* info, void* context) {
    pid_t nobody = 0;
    if (!g_crashed.compare_exchange_strong(nobody, this_thread())) {
        if (nobody == this_thread()) return end_by(number);
        // The process ends under this thread.
        for (;;) pause();
    }
    g_signal = number;
    if (const auto* const prepared = g_prepared.load()) {
        CrashNote note;
        fill(note, number, *info, context);
        hand_over(*prepared, note);
        call_back(prepared->hand_over.callback);
    }
    end_by(number);
}

void on_terminate() {
    g_exception = abi::__cxa_current_exception_type();
    g_is_terminate = true;
    if (g_terminate_before != nullptr) g_terminate_before();
    std::abort();
}

// A stack with a guard below it, for the life of the thread.
void give_stack() {
    stack_t present{};
    sigaltstack(nullptr, &present);
    if ((present.ss_flags & SS_DISABLE) == 0) return;
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const memory = mmap(nullptr, kStackSize + page, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED) return;
    mprotect(memory, page, PROT_NONE);
    stack_t own{};
    own.ss_sp = static_cast<char*>(memory) + page;
    own.ss_size = kStackSize;
    sigaltstack(&own, nullptr);
}

}  // namespace

void exchange_hand_over(CrashHandOver what) {
    // Kept for the life of the process.
    static auto* const kept = new std::vector<std::unique_ptr<Prepared>>;
    kept->push_back(std::make_unique<Prepared>(std::move(what)));
    g_prepared = kept->back().get();
}

void install_crash_handlers(CrashHandOver what) {
    exchange_hand_over(std::move(what));
    give_stack();
    struct sigaction action {};
    action.sa_sigaction = on_fatal_signal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigfillset(&action.sa_mask);
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        // A crash inside the handler kills by itself: its signal is blocked.
        sigaction(kSignals[i], &action, &g_before[i]);
    }
    g_terminate_before = std::set_terminate(on_terminate);
}

void remove_crash_handlers() {
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        sigaction(kSignals[i], &g_before[i], nullptr);
    }
    std::set_terminate(g_terminate_before);
    g_prepared = nullptr;
}

}  // namespace tvutil2
