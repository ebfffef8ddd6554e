#include "tvutil2/diag/crash_report.h"

#include "tvutil2/diag/app_log.h"
#include "tvutil2/platform/crash/crash_rpt.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/process/system_modules.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/profile.h"

namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

// The signal that the work's process ended by; 0 for none.
int signal_of(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        if (TvCrashReportInstall(nullptr) != 0) _exit(1);
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

std::vector<fs::path> reports() {
    std::error_code none;
    std::vector<fs::path> all;
    for (const auto& entry : fs::directory_iterator(tvutil2::crash_reports_folder(), none)) {
        all.push_back(entry.path());
    }
    return all;
}

// The one report that a crash left, which is taken away.
struct Report {  // NOLINT(bugprone-exception-escape): its move asserts
    std::string text;
    Json json;
    std::vector<std::string> files;
};
Report take_report() {
    const auto all = reports();
    EXPECT_EQ(all.size(), 1U);
    if (all.size() != 1) return {};
    Report report;
    report.text = tests::read_file((all[0] / "report.json").string());
    report.json = Json::parse(report.text, nullptr, false);
    for (const auto& entry : fs::directory_iterator(all[0])) {
        report.files.push_back(entry.path().filename());
    }
    fs::remove_all(all[0]);
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

TEST(CrashReport, FaultLeavesItsStackAndEndsByItsSignal) {
    const Fault faults[] = {
        {"segment", SIGSEGV, "signal", "read_nothing", read_nothing},
        {"stack overflow", SIGSEGV, "signal", "endless", [] { endless(0); }},
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        {"heap", SIGABRT, "signal", "free",
         [] {
             auto* const block = static_cast<char*>(std::malloc(32));
             volatile std::size_t inside = 16;
             std::free(block + inside);  // NOLINT: it is what is tested
         }},
#endif
        {"terminate", SIGABRT, "terminate", "abort",
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
    }
}

TEST(CrashReport, AllThreadsAndTheLogAreInIt) {
    setenv("TESTS_SECRET", "never to be told", 1);
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
    EXPECT_EQ(report.text.find("never to be told"), std::string::npos);
}

TEST(CrashReport, CrashesOfManyThreadsEndTheProcessOnce) {
    EXPECT_EQ(signal_of([] {
                  std::vector<std::thread> threads;
                  for (int i = 0; i < 8; ++i) threads.emplace_back(read_nothing);
                  for (auto& thread : threads) thread.join();
              }),
              SIGSEGV);
    EXPECT_TRUE(take_report().json.is_object());
}

TEST(CrashReport, NoRoomLeavesNoHalfReport) {
    EXPECT_EQ(signal_of([] {
                  const rlimit none{0, 0};
                  setrlimit(RLIMIT_FSIZE, &none);
                  read_nothing();
              }),
              SIGSEGV);
    EXPECT_TRUE(reports().empty());
}

TEST(CrashReport, TheTenNewestStay) {
    const fs::path root(tvutil2::crash_reports_folder());
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(1);
    for (int i = 0; i < 12; ++i) {
        const auto report = root / ((i < 2 ? "." : "old_") + std::to_string(i));
        fs::create_directories(report);
        fs::last_write_time(report, old + std::chrono::seconds(i));
    }
    EXPECT_EQ(signal_of(read_nothing), SIGSEGV);
    EXPECT_EQ(reports().size(), 10U);
    EXPECT_FALSE(fs::exists(root / ".0"));
    EXPECT_FALSE(fs::exists(root / "old_2"));
    EXPECT_TRUE(fs::exists(root / "old_3"));
    fs::remove_all(root);
}

TEST(CrashReport, CallbackThatCrashesStillEndsByTheSignal) {
    EXPECT_EQ(signal_of([] {
                  TvCrashReportUninstall();
                  TvCrashReportInstall([](void*) {
                      read_nothing();
                      return 0;
                  });
                  read_nothing();
              }),
              SIGSEGV);
    EXPECT_TRUE(take_report().json.is_object());
}

std::vector<int> g_calls;
int g_result = 0;

TEST(CrashReport, FailedInstallAddsNothing) {
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
