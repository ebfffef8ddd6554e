#include "tvutil2/platform/crash/fatal_signals.h"

#include "tvutil2/platform/base/signal_stack.h"
#include "tvutil2/platform/crash/crash_note.h"
#include "tvutil2/platform/crash/reported_picture.h"

#include <cxxabi.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <ctime>
#include <exception>
#include <memory>
#include <typeinfo>

namespace tvutil2 {
namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS};
constexpr unsigned kLongestCallback = 10;  // seconds

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
// The thread whose crash is handed over; kTold behind that.
constinit std::atomic<pid_t> g_crashed{0};
constexpr pid_t kTold = -1;
constinit volatile std::sig_atomic_t g_signal = 0;
// The thread that is on its way through std::terminate, until its report is made.
constinit std::atomic<pid_t> g_terminating{0};
constinit std::atomic<const std::type_info*> g_exception{nullptr};
struct sigaction g_before[std::size(kSignals)];
std::terminate_handler g_terminate_before = nullptr;

void on_fatal_signal(int number, siginfo_t* info, void* context);

pid_t this_thread() {
    return static_cast<pid_t>(syscall(SYS_gettid));
}

void open_mask(int number) {
    sigset_t only{};
    sigemptyset(&only);
    sigaddset(&only, number);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
}

void send_to_this_thread(int number) {
    syscall(SYS_tgkill, getpid(), this_thread(), number);
}

// Ends the process by the signal, whoever else handles it.
void end_by(int number) {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(number, &action, nullptr);
    send_to_this_thread(number);
    open_mask(number);
}

void on_late_callback(int /*number*/) {
    end_by(g_signal);
}

// But for what somebody has put in our place since.
void give_signals_back() {
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        struct sigaction present {};
        sigaction(kSignals[i], nullptr, &present);
        const bool is_ours =
            (present.sa_flags & SA_SIGINFO) != 0 && present.sa_sigaction == on_fatal_signal;
        if (is_ours) sigaction(kSignals[i], &g_before[i], nullptr);
    }
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
    note.is_terminate = g_terminating == note.thread;
    const auto* const type = g_exception.load();
    if (note.is_terminate && type != nullptr) {
        std::strncpy(note.exception, type->name(), sizeof note.exception - 1);
    }
}

// Until the helper has closed its end; false when it took too long.
bool wait_for_end(int end, unsigned seconds) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    for (const time_t last = now.tv_sec + static_cast<time_t>(seconds); now.tv_sec < last;) {
        pollfd wanted{end, POLLIN, 0};
        const int ready = poll(&wanted, 1, static_cast<int>(last - now.tv_sec) * 1000);
        if (ready > 0) return true;
        if (ready < 0 && errno != EINTR) return false;
        clock_gettime(CLOCK_MONOTONIC, &now);
    }
    return false;
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
    // The environment may be what is broken.
    char* nothing[] = {nullptr};
    execve(words[0], words, nothing);
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
        if (send(ends[0], &note, sizeof note, MSG_NOSIGNAL) == sizeof note &&
            !wait_for_end(ends[0], prepared.hand_over.longest_report)) {
            kill(helper, SIGKILL);
        }
    }
    close(ends[0]);
}

void call_back(int (*callback)(void*)) {
    if (callback == nullptr) return;
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = on_late_callback;
    sigaction(SIGALRM, &action, &before);
    open_mask(SIGALRM);
    alarm(kLongestCallback);
    callback(nullptr);
    alarm(0);
    sigaction(SIGALRM, &before, nullptr);
}

// While the first crash is told. Whatever becomes of that, nobody waits for ever.
void wait_for_report_of(pid_t thread, unsigned longest_report) {
    const timespec longest{static_cast<time_t>(longest_report + 2 * kLongestCallback), 0};
    while (g_crashed == thread) {
        if (syscall(SYS_futex, &g_crashed, FUTEX_WAIT_PRIVATE, thread, &longest, nullptr, 0) != 0 &&
            errno == ETIMEDOUT) {
            return;
        }
    }
}

void tell_others() {
    g_crashed = kTold;
    syscall(SYS_futex, &g_crashed, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

// An instruction that can't be carried out is met again when the handler returns; anything else
// that was signalled is signalled again, with all that was told of it.
void crash_again(int number, siginfo_t* info) {
    const bool is_met_again = info->si_code > 0 && number != SIGSYS && number != SIGABRT &&
                              !(number == SIGBUS && info->si_code == BUS_MCEERR_AO);
    if (!is_met_again) {
        syscall(SYS_rt_tgsigqueueinfo, getpid(), this_thread(), number, info);
    }
}

void tell(const Prepared& prepared, int number, const siginfo_t& info, const void* context) {
    g_signal = number;
    CrashNote note;
    fill(note, number, info, context);
    note.pictures = reinterpret_cast<std::uintptr_t>(&reported_pictures());
    note.picture_quality = prepared.hand_over.picture_quality;
    hand_over(prepared, note);
    call_back(prepared.hand_over.callback);
}

void on_fatal_signal(int number, siginfo_t* info, void* context) {
    const int error = errno;
    const auto thread = this_thread();
    const auto* const prepared = g_prepared.load();
    pid_t first = 0;
    const bool is_first = prepared != nullptr && g_crashed.compare_exchange_strong(first, thread);
    if (is_first) {
        tell(*prepared, number, *info, context);
    } else if (first == thread) {
        return end_by(g_signal);  // it met the callback
    } else if (prepared == nullptr || first == kTold) {
        return end_by(number);  // handed on by one who took the signals since
    } else {
        wait_for_report_of(first, prepared->hand_over.longest_report);
    }
    give_signals_back();
    if (is_first) tell_others();
    pid_t terminating = thread;
    if (number != SIGABRT || !g_terminating.compare_exchange_strong(terminating, 0)) {
        crash_again(number, info);
    }
    errno = error;
}

// The report comes first: whoever else has a say in this may end the process.
void on_terminate() {
    if (g_prepared != nullptr && g_crashed != kTold) {
        g_exception = abi::__cxa_current_exception_type();
        g_terminating = this_thread();
        send_to_this_thread(SIGABRT);
        open_mask(SIGABRT);
    }
    if (g_terminate_before != nullptr) g_terminate_before();
    std::abort();
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
    g_crashed = 0;
    want_signal_stacks();
    give_signal_stack();
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
    give_signals_back();
    if (std::get_terminate() == on_terminate) std::set_terminate(g_terminate_before);
    g_prepared = nullptr;
}

}  // namespace tvutil2
