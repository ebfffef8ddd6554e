#include "tvutil2/platform/process/start_program.h"

#include "tvutil2/platform/base/descriptor.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

namespace tvutil2 {
namespace {

// No signal is handled on this thread while the object lives.
class NoSignals {
  public:
    NoSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

  private:
    sigset_t m_before{};
};

// No fork handlers: they belong to people who mean to go on in the child. The thread sanitizer has
// one of its own, without which it can't run there.
pid_t fork_bare() {
#if defined(__SANITIZE_THREAD__)
    return fork();
#else
    return _Fork();
#endif
}

// Between fork and exec only what is safe in a signal handler is called: another thread may hold
// any lock there is.

void keep_standard_files_only() {
    if (close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) == 0) return;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const auto end = static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 65536));
    for (int descriptor = 3; descriptor < end; ++descriptor) {
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
}

// Nothing is read from the caller's input. A pipe of the caller isn't kept: whoever reads its other
// end would wait for the end of a program that nobody is to wait for.
void let_go_of_pipes() {
    const int null = open("/dev/null", O_RDWR);
    if (null < 0) return;
    dup2(null, STDIN_FILENO);
    for (const int output : {STDOUT_FILENO, STDERR_FILENO}) {
        struct stat info {};
        if (fstat(output, &info) != 0 || S_ISFIFO(info.st_mode)) dup2(null, output);
    }
}

void restore_signals() {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    for (int number = 1; number < NSIG; ++number) sigaction(number, &action, nullptr);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void report_and_exit(int pipe, int error) {
    // A reader that is gone can't be told anything.
    (void)!write(pipe, &error, sizeof error);
    _exit(127);
}

[[noreturn]] void become(const Program& program, int pipe) {
    if (program.has_own_session) setsid();
    if (program.folder != nullptr && chdir(program.folder) != 0) report_and_exit(pipe, errno);
    restore_signals();
    if (!program.keeps_standard_files) let_go_of_pipes();
    keep_standard_files_only();
    execv(program.file, program.arguments);
    report_and_exit(pipe, errno);
}

// The program's parent: gone at once, so that the program is nobody's child.
[[noreturn]] void parent_of(const Program& program, int pipe) {
    setsid();
    const auto child = fork_bare();
    if (child == 0) become(program, pipe);
    if (child < 0) report_and_exit(pipe, errno);
    _exit(0);
}

// Waits for the child's end. One that somebody else has waited for is no less over.
void wait_for_child(pid_t child) {
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

// The errno that the far end tells, or 0: the pipe closes without a word when exec succeeds.
int error_from(int reader) {
    int error = 0;
    ssize_t size = 0;
    while ((size = read(reader, &error, sizeof error)) < 0 && errno == EINTR) {
    }
    return size == sizeof error ? error : 0;
}

using Body = void (*)(const Program& program, int pipe);

// Forks a child that runs `body`. 0, or the errno that kept the program from running.
int start(const Program& program, Body body, pid_t& child) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return errno;
    const Descriptor reader(ends[0]);
    // Out of the way of the standard files, which the caller may have closed.
    Descriptor writer(fcntl(ends[1], F_DUPFD_CLOEXEC, 3));
    const int error = errno;
    close(ends[1]);
    if (!writer) return error;
    int fork_error = 0;
    {
        const NoSignals quiet;
        child = fork_bare();
        if (child == 0) body(program, writer.get());
        fork_error = errno;
    }
    if (child < 0) return fork_error;
    writer = Descriptor();
    return error_from(reader.get());
}

}  // namespace

int start_for_nobody(const Program& program) {
    pid_t parent = -1;
    const int error = start(program, parent_of, parent);
    if (parent > 0) wait_for_child(parent);
    return error;
}

int start_child(const Program& program, pid_t& child) {
    const int error = start(program, become, child);
    if (error != 0 && child > 0) wait_for_child(child);
    return error;
}

}  // namespace tvutil2
