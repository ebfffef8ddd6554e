#include "tvutil2/diag/crash_report.h"

#include "tvutil2/diag/app_log.h"
#include "tvutil2/platform/base/signal_stack.h"
#include "tvutil2/platform/crash/crash_rpt.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/process/system_modules.h"
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <nlohmann/json.hpp>
#include <setjmp.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <turbojpeg.h>
#include <unistd.h>
#include <zip.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/http_server.h"
#include "tests/support/profile.h"
#include "tests/support/program.h"

namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;
using Work = std::function<void()>;

// Helpers that go on behind a crash become this process's children, and none asks the network.
class CrashReport : public testing::Test {
  protected:
    void SetUp() override {
        prctl(PR_SET_CHILD_SUBREAPER, 1);
        setenv("http_proxy", "http://127.0.0.1:1", 1);
    }
};

bool install(const tvutil2::CrashInstallRecord& record) {
    auto* const operation =
        tvutil2::as_function<int(const tvutil2::CrashInstallRecord*)>(GetProcAddress(
            LoadLibraryW(u"CrashRpt.dll"), tvutil2::ordinal_name(tvutil2::crash_ordinal::install)));
    return operation(&record) == 0;
}

tvutil2::CrashInstallRecord plain_record() {
    tvutil2::CrashInstallRecord record;
    record.application = u"TVC8";
    return record;
}

// How a process ends that does the work, when its helpers have ended too.
int status_of(const Work& work) {
    const pid_t child = fork();
    if (child == 0) {
        // A sanitizer's handlers would end the process in their own way.
        for (const int number : {SIGSEGV, SIGBUS, SIGABRT}) signal(number, SIG_DFL);
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    while (waitpid(-1, nullptr, 0) > 0) {
    }
    return status;
}

int signal_in(int status) {
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

// The signal that ends the work's process, with the reporter installed; 0 for none.
int signal_of(const Work& work) {
    return signal_in(status_of([&] {
        if (TvCrashReportInstall(nullptr) != 0) _exit(1);
        work();
    }));
}

std::vector<fs::path> entries(const std::string& ending = "") {
    std::error_code none;
    std::vector<fs::path> all;
    for (const auto& entry : fs::directory_iterator(tvutil2::crash_reports_folder(), none)) {
        if (entry.path().string().ends_with(ending)) all.push_back(entry.path());
    }
    return all;
}

std::vector<fs::path> reports() {
    auto all = entries();
    std::erase_if(all, [](const fs::path& entry) { return !fs::is_directory(entry); });
    return all;
}

// The content of all files of an archive, with their names.
std::string unpacked(const fs::path& file) {
    const std::unique_ptr<zip_t, decltype(&zip_discard)> archive(
        zip_open(file.c_str(), ZIP_RDONLY, nullptr), &zip_discard);
    std::string all;
    const auto count = archive ? zip_get_num_entries(archive.get(), 0) : 0;
    for (zip_uint64_t i = 0; i < static_cast<zip_uint64_t>(count); ++i) {
        const std::unique_ptr<zip_file_t, decltype(&zip_fclose)> entry(
            zip_fopen_index(archive.get(), i, 0), &zip_fclose);
        all += std::string(zip_get_name(archive.get(), i, 0)) + "\n";
        char bytes[4096];
        for (zip_int64_t size = 0; (size = zip_fread(entry.get(), bytes, sizeof bytes)) > 0;) {
            all.append(bytes, static_cast<std::size_t>(size));
        }
    }
    return all;
}

// The one report that a crash left, which is taken away with its archive.
struct Report {  // NOLINT(bugprone-exception-escape): its move asserts
    std::string text;
    std::string archive;  // unpacked
    Json json;
    std::vector<std::string> files;
};
Report take_report() {
    const auto all = reports();
    EXPECT_EQ(all.size(), 1U);
    if (all.size() != 1) return {};
    Report report;
    report.text = tests::read_file((all[0] / "report.json").string());
    report.archive = unpacked(all[0].string() + ".zip");
    report.json = Json::parse(report.text, nullptr, false);
    for (const auto& entry : fs::directory_iterator(all[0])) {
        report.files.push_back(entry.path().filename());
    }
    fs::remove_all(tvutil2::crash_reports_folder());
    return report;
}

bool has_function(const Json& report, bool crashed, const std::string& name) {
    for (const auto& thread : report.at("threads")) {
        if (thread.at("crashed") != crashed) continue;
        for (const auto& frame : thread.at("stack")) {
            if (frame.at("function").get<std::string>().find(name) != std::string::npos)
                return true;
        }
    }
    return false;
}

[[gnu::noinline]] void read_nothing() {
    volatile std::uintptr_t nothing = 16;
    *reinterpret_cast<volatile int*>(nothing) = 1;
}

[[gnu::noinline]] int endless(int depth) {
    volatile char room[4096];
    room[0] = static_cast<char>(depth);
    return depth < 0 ? 0 : endless(depth + 1) + room[0];
}

[[noreturn]] void throw_secret() {
    throw std::runtime_error("the secret");
}

struct Base {
    virtual ~Base() = default;
    Base() { call(); }
    [[gnu::noinline]] void call() { pure(); }
    virtual void pure() = 0;
};
struct Derived : Base {
    void pure() override {}
};

[[gnu::noinline]] void wait_for_ever() {
    for (;;) pause();
}

struct Fault {
    const char* name;
    int signal;
    const char* kind;
    const char* function;
    std::function<void()> work;
};

TEST_F(CrashReport, FaultLeavesItsStackAndEndsByItsSignal) {
    const Fault faults[] = {
        {"segment", SIGSEGV, "signal", "read_nothing", read_nothing},
        {"stack overflow", SIGSEGV, "signal", "endless", [] { endless(0); }},
        {"stack overflow of a thread", SIGSEGV, "signal", "endless",
         [] {
             const auto run = [](void*) -> DWORD { return static_cast<DWORD>(endless(0)); };
             WaitForSingleObject(CreateThread(nullptr, 0, run, nullptr, 0, nullptr), INFINITE);
         }},
        {"stack overflow of a thread of others", SIGSEGV, "signal", "endless",
         [] {
             std::thread([] {
                 tvutil2::give_signal_stack();
                 endless(0);
             }).join();
         }},
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        {"heap", SIGABRT, "signal", "free",
         [] {
             auto* const block = static_cast<char*>(std::malloc(32));
             volatile std::size_t inside = 16;
             std::free(block + inside);  // NOLINT: it is what is tested
         }},
#endif
        {"terminate", SIGABRT, "terminate", "terminate",
         []() noexcept { throw_secret(); }},  // NOLINT: the fault
        {"pure call", SIGABRT, "pure call", "Base::call", [] { const Derived made; }},
        {"thread", SIGSEGV, "signal", "read_nothing", [] { std::thread(read_nothing).join(); }},
        {"from outside", SIGBUS, "signal", "", [] { kill(getpid(), SIGBUS); }},
    };
    for (const auto& fault : faults) {
        SCOPED_TRACE(fault.name);
        EXPECT_EQ(signal_of(fault.work), fault.signal);
        const auto report = take_report();
        ASSERT_TRUE(report.json.is_object());
        EXPECT_EQ(report.json.at("application"), "TVC8");
        EXPECT_EQ(report.json.at("kind"), fault.kind);
        EXPECT_FALSE(report.json.at("build_ids").empty());
        EXPECT_TRUE(has_function(report.json, true, fault.function));
        EXPECT_EQ(report.text.find("the secret"), std::string::npos);
        EXPECT_EQ(report.text.find("on_fatal_signal"), std::string::npos);
        EXPECT_NE(report.archive.find("/report.json\n" + report.text), std::string::npos);
    }
}

TEST_F(CrashReport, AllThreadsAndTheLogAreInIt) {
    const auto folder = tests::platform_path(tests::new_folder());
    EXPECT_EQ(signal_of([&] {
                  TvCrashReportUninstall();
                  _InitApplicationLog(folder.c_str(), u"Pelrin", 1, 0);
                  if (TvCrashReportInstall(nullptr) != 0) _exit(1);
                  std::thread(wait_for_ever).detach();
                  std::thread(read_nothing).join();
              }),
              SIGSEGV);
    const auto report = take_report();
    ASSERT_TRUE(report.json.is_object());
    EXPECT_GE(report.json.at("threads").size(), 3U);
    EXPECT_TRUE(has_function(report.json, false, "thread"));
    ASSERT_EQ(report.json.at("files").size(), 1U);
    EXPECT_EQ(report.json.at("files")[0].at("description"), "Application Log");
    EXPECT_EQ(report.files.size(), 2U);
    EXPECT_EQ(report.json.at("picture"), "none: no window is shown");
    EXPECT_NE(report.archive.find(report.json.at("files")[0].at("name").get<std::string>()),
              std::string::npos);
}

// Shown windows with one colour each: a large one, one that is owned and larger, one that is gone.
void show_windows() {
    WNDCLASSEXW window_class{};
    window_class.cbSize = sizeof window_class;
    window_class.lpszClassName = u"Painted";
    window_class.lpfnWndProc = [](HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        if (message != WM_ERASEBKGND) return DefWindowProcW(window, message, wparam, lparam);
        RECT area{};
        GetClientRect(window, &area);
        auto* const owner = GetWindow(window, GW_OWNER);
        auto* const brush = CreateSolidBrush(owner != nullptr ? RGB(0, 0, 255) : RGB(200, 40, 20));
        FillRect(reinterpret_cast<HDC>(wparam), &area, brush);
        return LRESULT{1};
    };
    RegisterClassExW(&window_class);
    const auto show = [](int width, HWND owner) {
        auto* const window = CreateWindowExW(0, u"Painted", u"t", WS_POPUP | WS_VISIBLE, 0, 0,
                                             width, 200, owner, nullptr, nullptr, nullptr);
        UpdateWindow(window);
        return window;
    };
    auto* const gone = show(700, nullptr);
    auto* const largest = show(320, nullptr);
    show(640, largest);
    show(100, nullptr);
    DestroyWindow(gone);
}

TEST_F(CrashReport, ShowsTheMainWindow) {
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    EXPECT_EQ(signal_of([] {
                  show_windows();
                  read_nothing();
              }),
              SIGSEGV);
    const auto folder = reports();
    ASSERT_EQ(folder.size(), 1U);
    const auto jpeg = tests::read_file((folder[0] / "picture.jpg").string());
    const auto report = take_report();
    EXPECT_EQ(report.json.value("picture", ""), "picture.jpg");
    EXPECT_NE(report.archive.find("/picture.jpg\n" + jpeg), std::string::npos);
    const std::unique_ptr<void, decltype(&tjDestroy)> reader(tjInitDecompress(), &tjDestroy);
    constexpr std::size_t kMiddle = (std::size_t{100} * 320 + 160) * 3;
    std::vector<unsigned char> pixels(std::size_t{320} * 200 * 3);
    ASSERT_EQ(tjDecompress2(reader.get(), reinterpret_cast<const unsigned char*>(jpeg.data()),
                            jpeg.size(), pixels.data(), 320, 0, 200, TJPF_RGB, 0),
              0);
    const unsigned char middle[] = {200, 40, 20};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(pixels[kMiddle + i], middle[i], 3);
    }
}

TEST_F(CrashReport, AChildDoesntShowItsParentsWindows) {
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    EXPECT_EQ(signal_of([] {
                  show_windows();
                  const pid_t child = fork();
                  if (child == 0) read_nothing();
                  int status = 0;
                  waitpid(child, &status, 0);
                  if (signal_in(status) == SIGSEGV) raise(SIGTERM);
              }),
              SIGTERM);
    const auto report = take_report();
    ASSERT_TRUE(report.json.is_object());
    EXPECT_EQ(report.json.at("picture"), "none: no window is shown");
}

TEST_F(CrashReport, NamesTheProgramAndKeepsItsSecrets) {
    setenv("TESTS_SECRET", "never to be told", 1);
    const auto program =
        tests::copy_program(TESTS_STARTED "/crashes.exe", tests::new_folder(), "Pelrin.exe");
    auto* const go_on = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const tests::HttpServer slow(
        [&](const std::string&, int) { WaitForSingleObject(go_on, INFINITE); });
    setenv("http_proxy", slow.address().c_str(), 1);
    // Who reads its output doesn't wait for the sending.
    FILE* const output = popen(("'" + program + "' --password 'kept to itself'").c_str(), "r");
    EXPECT_EQ(std::fgetc(output), EOF);
    SetEvent(go_on);
    pclose(output);
    while (waitpid(-1, nullptr, 0) > 0) {
    }
    const auto report = take_report();
    ASSERT_TRUE(report.json.is_object());
    EXPECT_EQ(report.json.at("program"), program);
    EXPECT_EQ(report.json.at("program_version"), "8.0.0.62");
    for (const auto* const secret : {"never to be told", "kept to itself"}) {
        EXPECT_EQ((report.text + report.archive).find(secret), std::string::npos);
    }
}

sigjmp_buf g_way_on;

// Handlers that the program had installed before have their say behind the report.
TEST_F(CrashReport, EarlierHandlersComeBehindTheReport) {
    struct Earlier {
        const char* name;
        Work install;
        Work work;
        int code;
    };
    const auto on_fault = [](void (*handler)(int)) { return [=] { signal(SIGSEGV, handler); }; };
    const Earlier all[] = {
        {"ends the program", on_fault([](int) { _exit(71); }), read_nothing, 71},
        {"goes on", on_fault([](int) { siglongjmp(g_way_on, 1); }),
         [] {
             if (sigsetjmp(g_way_on, 1) == 0) read_nothing();
             _exit(72);
         },
         72},
        {"of terminate", [] { std::set_terminate([] { _exit(73); }); },
         []() noexcept { throw_secret(); }, 73},  // NOLINT: the fault
    };
    for (const auto& earlier : all) {
        SCOPED_TRACE(earlier.name);
        const int status = status_of([&] {
            earlier.install();
            if (TvCrashReportInstall(nullptr) != 0) _exit(1);
            earlier.work();
        });
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), earlier.code);
        EXPECT_TRUE(take_report().json.is_object());
    }
}

TEST_F(CrashReport, UninstalledLeavesNothingBehind) {
    EXPECT_EQ(signal_of([] {
                  if (TvCrashReportUninstall() != 0) _exit(1);
                  read_nothing();
              }),
              SIGSEGV);
    EXPECT_TRUE(entries().empty());
}

TEST_F(CrashReport, CrashesOfManyThreadsEndTheProcessOnce) {
    EXPECT_EQ(signal_of([] {
                  std::vector<std::thread> threads;
                  for (int i = 0; i < 8; ++i) threads.emplace_back(read_nothing);
                  for (auto& thread : threads) thread.join();
              }),
              SIGSEGV);
    EXPECT_TRUE(take_report().json.is_object());
}

TEST_F(CrashReport, NoRoomLeavesNoHalfReport) {
    // The second one is enough for the log, and for nothing else.
    for (const rlim_t room : {rlim_t{0}, rlim_t{2000}}) {
        const auto log = tests::new_folder() + "/a.log";
        tests::write_file(log, std::string(1000, 'x'));
        EXPECT_EQ(signal_of([&] {
                      const auto add_file = tvutil2::as_function<int(
                          const char16_t*, const char16_t*, const char16_t*, DWORD)>(
                          GetProcAddress(LoadLibraryW(u"CrashRpt.dll"), tvutil2::ordinal_name(15)));
                      add_file(tests::platform_path(log).c_str(), nullptr, u"log", 0);
                      const rlimit limit{room, room};
                      setrlimit(RLIMIT_FSIZE, &limit);
                      read_nothing();
                  }),
                  SIGSEGV);
        EXPECT_TRUE(entries().empty());
    }
}

TEST_F(CrashReport, TheTenNewestStay) {
    const fs::path root(tvutil2::crash_reports_folder());
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(1);
    for (int i = 0; i < 12; ++i) {
        const auto report = root / ((i < 2 ? "." : "old_") + std::to_string(i));
        fs::create_directories(report);
        const auto archive = report.string() + ".sent.zip";
        tests::write_file(archive, "");
        fs::last_write_time(report, old + std::chrono::seconds(i));
        fs::last_write_time(archive, old);
    }
    EXPECT_EQ(signal_of(read_nothing), SIGSEGV);
    EXPECT_EQ(reports().size(), 10U);
    EXPECT_EQ(entries(".zip").size(), 10U);
    EXPECT_FALSE(fs::exists(root / ".0"));
    EXPECT_FALSE(fs::exists(root / "old_2"));
    EXPECT_TRUE(fs::exists(root / "old_3"));
    fs::remove_all(root);
}

// From now on the process and its children may not look into another one.
void forbid_ptrace() {
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_ptrace, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{std::size(rules), rules};
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) _exit(1);
}

TEST_F(CrashReport, WithoutTheRightToLookTellsTheRest) {
    EXPECT_EQ(signal_of([] {
                  forbid_ptrace();
                  read_nothing();
              }),
              SIGSEGV);
    const auto report = take_report();
    ASSERT_TRUE(report.json.is_object());
    EXPECT_NE(report.json.value("no_stacks", ""), "");
    EXPECT_EQ(report.json.at("address"), "0x10");
    EXPECT_TRUE(report.json.at("threads").empty());
}

TEST_F(CrashReport, HelperThatHangsIsGivenUp) {
    EXPECT_EQ(signal_in(status_of([] {
                  auto record = plain_record();
                  record.longest_report = 1;
                  if (!install(record)) _exit(1);
                  setenv("LD_PRELOAD", TESTS_STARTED "/hangs.dll", 1);
                  read_nothing();
              })),
              SIGSEGV);
    EXPECT_TRUE(reports().empty());
}

// Seconds until a callback is given up, as the last one found it.
std::atomic<long>* g_left = nullptr;

TEST_F(CrashReport, CallbackThatFailsStillEndsByTheSignal) {
    g_left = static_cast<std::atomic<long>*>(
        mmap(nullptr, sizeof *g_left, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    const TvCrashCallback callbacks[] = {
        [](void*) {
            read_nothing();
            return 0;
        },
        [](void*) -> int { std::abort(); },
        [](void*) {
            itimerval left{};
            getitimer(ITIMER_REAL, &left);
            *g_left = left.it_value.tv_sec + 1;
            raise(SIGALRM);  // as the timer does in the end
            for (;;) pause();
            return 0;
        },
    };
    for (auto* const callback : callbacks) {
        EXPECT_EQ(signal_in(status_of([&] {
                      if (TvCrashReportInstall(callback) != 0) _exit(1);
                      read_nothing();
                  })),
                  SIGSEGV);
        EXPECT_TRUE(take_report().json.is_object());
    }
    EXPECT_GT(*g_left, 0);
    EXPECT_LE(*g_left, 11);
    munmap(g_left, sizeof *g_left);
}

// Takes reports with the status that it is told, and keeps what was asked.
class ReportServer {
  public:
    explicit ReportServer(int status)
        : m_status(status), m_server([this](const std::string& head, int socket) {
              auto request = head;
              const auto at = request.find("Content-Length: ");
              const auto body = request.find("\r\n\r\n") + 4;
              const auto size = body + std::strtoul(request.c_str() + at + 16, nullptr, 10);
              char bytes[4096];
              while (request.size() < size) {
                  const auto count = read(socket, bytes, sizeof bytes);
                  if (count <= 0) break;
                  request.append(bytes, static_cast<std::size_t>(count));
              }
              m_requests.push_back(std::move(request));
              tests::send_all(socket, "HTTP/1.1 " + std::to_string(m_status) +
                                          " so\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
          }) {}
    [[nodiscard]] const std::string& address() const { return m_server.address(); }
    void answer_with(int status) { m_status = status; }
    /// Of clients that have ended.
    [[nodiscard]] const std::vector<std::string>& requests() const { return m_requests; }

  private:
    std::atomic<int> m_status;
    std::vector<std::string> m_requests;
    tests::HttpServer m_server;
};

TEST_F(CrashReport, RefusedIsKeptAndSentAtTheNextStart) {
    // What asks for the maker's server asks this one.
    ReportServer server(503);
    setenv("http_proxy", server.address().c_str(), 1);
    EXPECT_EQ(signal_of(read_nothing), SIGSEGV);
    ASSERT_EQ(server.requests().size(), 1U);
    const auto& request = server.requests()[0];
    EXPECT_EQ(request.substr(0, request.find('\r')),
              "POST http://crash.tolvarine.example/crashfix/index.php/crashReport/uploadExternal "
              "HTTP/1.1");
    for (const auto* const part : {"name=\"application\"\r\n\r\nTVC8\r\n",
                                   "name=\"version\"\r\n\r\n8\r\n", "application/zip\r\n\r\nPK"}) {
        EXPECT_NE(request.find(part), std::string::npos) << part;
    }
    EXPECT_TRUE(entries(".sent.zip").empty());
    ASSERT_EQ(entries(".zip").size(), 1U);
    server.answer_with(200);
    EXPECT_EQ(status_of([] { TvCrashReportInstall(nullptr); }), 0);
    EXPECT_EQ(server.requests().size(), 2U);
    EXPECT_EQ(entries(".sent.zip").size(), 1U);
    EXPECT_EQ(status_of([] { TvCrashReportInstall(nullptr); }), 0);
    EXPECT_EQ(server.requests().size(), 2U);
    fs::remove_all(tvutil2::crash_reports_folder());
}

std::vector<int> g_calls;
int g_result = 0;

TEST_F(CrashReport, FailedInstallAddsNothing) {
    struct Exchanged {
        Exchanged(WORD ordinal, FARPROC function) : m_ordinal(ordinal) {
            m_before = tvutil2::exchange_system_export(u"CrashRpt.dll",
                                                       tvutil2::ordinal_name(ordinal), function);
        }
        ~Exchanged() {
            tvutil2::exchange_system_export(u"CrashRpt.dll", tvutil2::ordinal_name(m_ordinal),
                                            m_before);
        }
        WORD m_ordinal;
        FARPROC m_before;
    };
    using tvutil2::as_export;
    const Exchanged install(7, as_export(+[](const tvutil2::CrashInstallRecord* record) {
                                EXPECT_EQ(record->flags, 0x201FFFU);
                                EXPECT_EQ(record->dump_type, 0x1040U);
                                g_calls.push_back(7);
                                return g_result;
                            }));
    const Exchanged picture(27, as_export(+[](DWORD flags, int quality) {
                                EXPECT_EQ(flags, 9U);
                                EXPECT_EQ(quality, 95);
                                g_calls.push_back(27);
                                return 0;
                            }));
    EXPECT_EQ(TvCrashReportInstall(nullptr), 0);
    EXPECT_EQ(g_calls, (std::vector<int>{7, 27}));
    g_result = 5;
    EXPECT_EQ(TvCrashReportInstall(nullptr), 1);
    EXPECT_EQ(g_calls, (std::vector<int>{7, 27, 7}));
}

}  // namespace
