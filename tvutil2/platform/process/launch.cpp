#include "tvutil2/platform/process/launch.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <strings.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace tvutil2 {
namespace {

constexpr int kStarted = 33;

class Descriptor {
  public:
    explicit Descriptor(int value) : m_value(value) {}
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const { return m_value; }
    void reset() {
        if (m_value >= 0) close(m_value);
        m_value = -1;
    }

  private:
    int m_value;
};

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

struct Program {
    const char* file;
    char* const* arguments;
    const char* folder;  // null: stay
};

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
    if (program.folder != nullptr && chdir(program.folder) != 0) report_and_exit(pipe, errno);
    restore_signals();
    let_go_of_pipes();
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

// 0 when the program runs, else the errno that kept it from it.
int start(const Program& program) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return errno;
    const Descriptor reader(ends[0]);
    Descriptor low_writer(ends[1]);
    // Out of the way of the standard files, which the caller may have closed.
    Descriptor writer(fcntl(ends[1], F_DUPFD_CLOEXEC, 3));
    if (writer.get() < 0) return errno;
    low_writer.reset();
    pid_t parent = -1;
    int fork_error = 0;
    {
        const NoSignals quiet;
        parent = fork_bare();
        if (parent == 0) parent_of(program, writer.get());
        fork_error = errno;
    }
    if (parent < 0) return fork_error;
    writer.reset();
    while (waitpid(parent, nullptr, 0) < 0 && errno == EINTR) {
    }
    // The pipe closes without a word when exec succeeds.
    int error = 0;
    ssize_t size = 0;
    while ((size = read(reader.get(), &error, sizeof error)) < 0 && errno == EINTR) {
    }
    return size == sizeof error ? error : 0;
}

int result_of(int error) {
    switch (error) {
        case 0:
            return kStarted;
        case EACCES:
        case EPERM:
            return SE_ERR_ACCESSDENIED;
        case ENOTDIR:
            return SE_ERR_PNF;
        case ETXTBSY:
            return SE_ERR_SHARE;
        case ENOENT:  // the file is there, so it is its interpreter that isn't
        case ENOEXEC:
        case ELIBBAD:
            return SE_ERR_BAD_FORMAT;
        default:
            return SE_ERR_OOM;
    }
}

int start_with(const std::string& file, const std::vector<std::string>& arguments,
               const char* folder) {
    std::vector<char*> pointers{const_cast<char*>(file.c_str())};
    for (const auto& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    return result_of(start({file.c_str(), pointers.data(), folder}));
}

std::optional<std::vector<std::string>> host_arguments(const char16_t* parameters) {
    std::vector<std::string> arguments;
    if (parameters == nullptr) return arguments;
    for (const auto& argument : split_command_line(parameters)) {
        auto text = to_utf8(argument);
        if (!text) return std::nullopt;
        arguments.push_back(std::move(*text));
    }
    return arguments;
}

std::optional<std::string> desktop_opener() {
    const char* path = secure_getenv("PATH");
    std::string_view rest = path != nullptr ? path : "";
    while (!rest.empty()) {
        const auto folder = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
        if (!folder.starts_with('/')) continue;
        auto file = std::string(folder) + "/xdg-open";
        if (access(file.c_str(), X_OK) == 0) return file;
    }
    return std::nullopt;
}

int open_document(const std::string& file, const char* folder) {
    const auto opener = desktop_opener();
    return opener ? start_with(*opener, {file}, folder) : SE_ERR_NOASSOC;
}

bool is_folder(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// A program without the permission to run is no document for the desktop to open.
bool is_named_as_program(std::string_view file) {
    constexpr std::string_view kExtension = ".exe";
    return file.size() >= kExtension.size() &&
           strncasecmp(file.end() - kExtension.size(), kExtension.data(), kExtension.size()) == 0;
}

int missing(const std::string& file) {
    const auto slash = file.find_last_of('/');
    return is_folder(file.substr(0, std::max<std::size_t>(slash, 1))) ? SE_ERR_FNF : SE_ERR_PNF;
}

std::optional<std::string> web_address(std::u16string_view text) {
    return web_address_rest(text).empty() ? std::nullopt : to_utf8(text);
}

int execute(const char16_t* verb, const char16_t* file, const char16_t* parameters,
            const char16_t* folder) {
    if (verb != nullptr && *verb != 0 && _wcsicmp(verb, u"open") != 0) return SE_ERR_NOASSOC;
    const auto address = web_address(file != nullptr ? file : u"");
    const auto host_file = address ? address : host_path(file != nullptr ? file : u"");
    if (!host_file) return GetLastError() == ERROR_INVALID_NAME ? SE_ERR_FNF : SE_ERR_PNF;
    std::optional<std::string> host_folder;
    if (folder != nullptr && *folder != 0) {
        host_folder = host_path(folder);
        if (!host_folder || !is_folder(*host_folder)) return SE_ERR_PNF;
    }
    const char* const start_folder = host_folder ? host_folder->c_str() : nullptr;
    if (address) return open_document(*address, start_folder);
    struct stat info {};
    if (stat(host_file->c_str(), &info) != 0) {
        return errno == EACCES ? SE_ERR_ACCESSDENIED : missing(*host_file);
    }
    const bool is_program = S_ISREG(info.st_mode) && (info.st_mode & 0111) != 0;
    if (!is_program && S_ISREG(info.st_mode) && is_named_as_program(*host_file)) {
        return SE_ERR_ACCESSDENIED;
    }
    if (!is_program) return open_document(*host_file, start_folder);
    const auto arguments = host_arguments(parameters);
    return arguments ? start_with(*host_file, *arguments, start_folder) : SE_ERR_BAD_FORMAT;
}

// Most results are error numbers; the others have one of their own.
DWORD last_error_of(int result) {
    if (result == SE_ERR_NOASSOC) return ERROR_NO_ASSOCIATION;
    if (result == SE_ERR_SHARE) return ERROR_SHARING_VIOLATION;
    return static_cast<DWORD>(result);
}

// Where a command line's text stands while it is split.
class Splitter {
  public:
    explicit Splitter(std::u16string_view text) : m_rest(text) {}

    bool next(std::u16string& argument) {
        while (!m_rest.empty() && is_blank(m_rest.front())) m_rest.remove_prefix(1);
        if (m_rest.empty()) return false;
        argument.clear();
        bool in_quotes = false;
        while (!m_rest.empty() && (in_quotes || !is_blank(m_rest.front()))) {
            take_backslashes(argument);
            if (m_rest.empty() || (!in_quotes && is_blank(m_rest.front()))) break;
            take_unit(argument, in_quotes);
        }
        return true;
    }

  private:
    static bool is_blank(char16_t c) { return c == u' ' || c == u'\t'; }

    // Backslashes mean something only in front of a quote; an odd one out makes the quote plain.
    void take_backslashes(std::u16string& argument) {
        const auto count = std::min(m_rest.find_first_not_of(u'\\'), m_rest.size());
        m_rest.remove_prefix(count);
        const bool before_quote = m_rest.starts_with(u'"');
        argument.append(before_quote ? count / 2 : count, u'\\');
        if (!before_quote || count % 2 == 0) return;
        argument.push_back(u'"');
        m_rest.remove_prefix(1);
    }

    void take_unit(std::u16string& argument, bool& in_quotes) {
        const auto c = m_rest.front();
        if (c == u'\\') return;
        m_rest.remove_prefix(1);
        if (c != u'"') {
            argument.push_back(c);
        } else if (in_quotes && m_rest.starts_with(u'"')) {
            argument.push_back(u'"');
            m_rest.remove_prefix(1);
        } else {
            in_quotes = !in_quotes;
        }
    }

    std::u16string_view m_rest;
};

}  // namespace

std::u16string_view web_address_rest(std::u16string_view text) {
    for (const std::u16string_view scheme : {u"http://", u"https://"}) {
        const auto start = std::u16string(text.substr(0, scheme.size()));
        if (_wcsicmp(start.c_str(), scheme.data()) == 0) return text.substr(scheme.size());
    }
    return {};
}

std::vector<std::u16string> split_command_line(std::u16string_view text) {
    std::vector<std::u16string> arguments;
    Splitter splitter(text);
    for (std::u16string argument; splitter.next(argument);) arguments.push_back(argument);
    return arguments;
}

std::u16string quoted_argument(std::u16string_view argument) {
    if (!argument.empty() && argument.find_first_of(u" \t\"") == std::u16string_view::npos) {
        return std::u16string(argument);
    }
    std::u16string quoted = u"\"";
    std::size_t backslashes = 0;  // at the end of what is written
    for (const auto c : argument) {
        if (c == u'"') quoted.append(backslashes + 1, u'\\');
        quoted.push_back(c);
        backslashes = c == u'\\' ? backslashes + 1 : 0;
    }
    quoted.append(backslashes, u'\\');
    return quoted + u'"';
}

}  // namespace tvutil2

HINSTANCE ShellExecuteW(HWND /*owner*/, const char16_t* verb, const char16_t* file,
                        const char16_t* parameters, const char16_t* folder, int /*show*/) {
    const int result = tvutil2::execute(verb, file, parameters, folder);
    if (result <= 32) SetLastError(tvutil2::last_error_of(result));
    return reinterpret_cast<HINSTANCE>(static_cast<std::intptr_t>(result));
}
