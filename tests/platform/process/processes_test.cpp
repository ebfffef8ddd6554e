#include "tvutil2/platform/process/processes.h"

#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/process/launch.h"
#include "tvutil2/platform/window/input_idle.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>
#include <vector>

#include "tests/support/profile.h"

namespace {

struct Started {
    BOOL result;
    DWORD error;
    PROCESS_INFORMATION process{};

    explicit Started(std::u16string line, const char16_t* application = nullptr, DWORD flags = 32,
                     const char16_t* folder = nullptr) {
        SetLastError(0);
        result = CreateProcessW(application, line.data(), nullptr, nullptr, TRUE, flags, nullptr,
                                folder, nullptr, &process);
        error = GetLastError();
    }
    ~Started() {
        if (result == 0) return;
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;

    // The exit code, once the program has ended.
    [[nodiscard]] DWORD code() const {
        DWORD code = 0;
        if (result == 0) return STILL_ACTIVE;
        WaitForSingleObject(process.hThread, INFINITE);
        EXPECT_TRUE(GetExitCodeProcess(process.hProcess, &code));
        return code;
    }
};

void make_script(const std::string& path, const std::string& text) {
    tests::write_file(path, "#!/bin/sh\n" + text + "\n");
    chmod(path.c_str(), 0755);
}

TEST(Processes, HandlesTellTheEndAndItsCode) {
    const Started seven(u"sh -c \"exit 7\"");
    EXPECT_EQ(seven.code(), 7U);
    EXPECT_EQ(Started(u"sh -c \"kill -9 $$\"").code(), 128U + SIGKILL);

    const Started halted(u"sh -c \"kill -STOP $$\"");
    DWORD code = 0;
    EXPECT_EQ(WaitForSingleObject(halted.process.hProcess, 0), DWORD{WAIT_TIMEOUT});
    EXPECT_TRUE(GetExitCodeProcess(halted.process.hProcess, &code));
    EXPECT_EQ(code, STILL_ACTIVE);
    EXPECT_EQ(GetProcessId(halted.process.hThread), halted.process.dwProcessId);
    kill(static_cast<pid_t>(halted.process.dwProcessId), SIGKILL);
    EXPECT_EQ(halted.code(), 128U + SIGKILL);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "nobody leaves a zombie";
    EXPECT_FALSE(GetExitCodeProcess(nullptr, &code));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

TEST(Processes, LinesNameTheirProgram) {
    const auto folder = tests::new_folder();
    const auto in_path = tests::new_folder();
    make_script(folder + "/Tool.exe", "exit 1");
    make_script(folder + "/tool", "exit 2");
    make_script(folder + "/My Tool.exe", "test \"$1\" = \"a b\" && exit 3");
    make_script(in_path + "/TOOL.EXE", "exit 4");
    make_script(in_path + "/only.exe", "exit 5");
    std::filesystem::create_directory(in_path + "/folder.exe");
    const auto path = std::string(getenv("PATH"));
    setenv("PATH", ("relative:" + in_path + ":" + path).c_str(), 1);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    const auto place = tests::platform_path(folder);
    const std::pair<std::u16string, DWORD> cases[] = {
        {u"tool x", 1},  // the current folder before PATH, the program before the bare name
        {u"TOOL.EXE", 1},
        {u" \tonly", 5},
        {place + u"\\My Tool \"a b\"", 3},  // no "My" there
        {u"\"" + place + u"\\My Tool.exe\" \"a b\"", 3},
    };
    for (const auto& [line, code] : cases) {
        EXPECT_EQ(Started(line).code(), code) << tvutil2::to_utf8_lossy(line);
    }
    const Started named(u"tool \"a b\"", (place + u"\\My Tool.exe").c_str());
    EXPECT_EQ(named.code(), 3U);

    tests::write_file(folder + "/rubbish.exe", "rubbish");
    chmod((folder + "/rubbish.exe").c_str(), 0755);
    tests::write_file(folder + "/closed.exe", "");
    const char16_t lone[] = {u't', u'o', u'o', u'l', u' ', 0xDC00, 0};
    struct {
        std::u16string line;
        DWORD error;
    } const failures[] = {
        {u"", ERROR_INVALID_PARAMETER},
        {u"  ", ERROR_INVALID_PARAMETER},
        {u"\"\" x", ERROR_INVALID_PARAMETER},
        {u"no_such_tool a b", ERROR_FILE_NOT_FOUND},
        {u"folder", ERROR_FILE_NOT_FOUND},
        {place + u"\\no\\tool", ERROR_PATH_NOT_FOUND},
        {u"rubbish", ERROR_BAD_EXE_FORMAT},
        {u"closed", ERROR_ACCESS_DENIED},
        {lone, ERROR_INVALID_PARAMETER},
        {u"tool " + std::u16string(32763, u'x'), ERROR_FILENAME_EXCED_RANGE},
    };
    for (const auto& [line, error] : failures) {
        const Started started(line);
        EXPECT_EQ(started.result, 0) << tvutil2::to_utf8_lossy(line);
        EXPECT_EQ(started.error, error) << tvutil2::to_utf8_lossy(line);
    }
    EXPECT_EQ(Started(u"", u"tool.exe").code(), 1U);
    EXPECT_EQ(Started(u"", u"only.exe").error, DWORD{ERROR_FILE_NOT_FOUND})
        << "nothing is searched";
    EXPECT_EQ(Started(u"tool", nullptr, 4).error, DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Started(u"tool", nullptr, 0, u"C:\\no\\folder").error, DWORD{ERROR_DIRECTORY});
    std::filesystem::current_path(before);
    setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a failed start leaves nothing either";
}

TEST(Processes, ShellExecutionGivesAProcessToWaitFor) {
    const auto folder = tests::new_folder();
    make_script(folder + "/Halt.exe", "exit $1");
    const auto file = tests::platform_path(folder + "/Halt.exe");
    SHELLEXECUTEINFOW info{};
    info.cbSize = sizeof info;
    info.fMask = SEE_MASK_NOCLOSEPROCESS;
    info.lpFile = file.c_str();
    info.lpParameters = u"9";
    ASSERT_TRUE(ShellExecuteExW(&info));
    DWORD code = 0;
    EXPECT_EQ(WaitForSingleObject(info.hProcess, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(GetExitCodeProcess(info.hProcess, &code));
    EXPECT_EQ(code, 9U);
    CloseHandle(info.hProcess);
    info.lpFile = u"C:\\no\\such.exe";
    EXPECT_FALSE(ShellExecuteExW(&info));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(info.hProcess, nullptr);
}

TEST(Processes, IdleIsAProgramWhoseWindowAnswers) {
    const Started shows(u"\"" + tests::platform_path(std::string(TESTS_STARTED)) +
                        u"\\with_window.exe\" Idle");
    ASSERT_TRUE(shows.result);
    EXPECT_EQ(WaitForInputIdle(shows.process.hProcess, INFINITE), 0U);
    kill(static_cast<pid_t>(shows.process.dwProcessId), SIGSTOP);
    EXPECT_EQ(WaitForInputIdle(shows.process.hProcess, 1), DWORD{WAIT_TIMEOUT});
    kill(static_cast<pid_t>(shows.process.dwProcessId), SIGKILL);
    static_cast<void>(shows.code());
    EXPECT_EQ(WaitForInputIdle(shows.process.hProcess, INFINITE), WAIT_FAILED);

    const Started ends(u"sh -c \"exit 0\"");
    EXPECT_EQ(WaitForInputIdle(ends.process.hProcess, INFINITE), WAIT_FAILED) << "the end is seen";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_GEN_FAILURE});
    EXPECT_EQ(WaitForInputIdle(nullptr, 0), WAIT_FAILED);
}

}  // namespace
