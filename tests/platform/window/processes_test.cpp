#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/listing.h"
#include "tvutil2/platform/window/listing_file.h"
#include "tvutil2/platform/window/show.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <set>
#include <thread>

#include "tests/platform/window/trace.h"
#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

using tests::Trace;
using tests::traced_window;

constexpr const char16_t* kClass = u"tests::WITHWINDOW";

// The program with a window, from when the window is there to the end.
class Program {
  public:
    explicit Program(const char* title) {
        int ends[2];
        if (pipe(ends) != 0) return;
        m_process = fork();
        if (m_process == 0) {
            dup2(ends[1], STDOUT_FILENO);
            execl(TESTS_STARTED "/with_window.exe", "with_window.exe", title, nullptr);
            _exit(127);
        }
        close(ends[1]);
        auto* const output = fdopen(ends[0], "r");
        std::uintmax_t handle = 0;
        EXPECT_EQ(std::fscanf(output, "%ju", &handle), 1);
        std::fclose(output);
        m_window = reinterpret_cast<HWND>(handle);
    }
    ~Program() { kill(); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void kill() {
        if (!m_has_ended) ::kill(m_process, SIGKILL);
        wait();
    }
    // Its exit code; -1 when it was killed.
    int wait() {
        int status = -1;
        if (!m_has_ended) waitpid(m_process, &status, 0);
        m_has_ended = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // Until it is halted, as it was asked to be.
    void wait_for_halt() const {
        int status = 0;
        waitpid(m_process, &status, WUNTRACED);
        EXPECT_TRUE(WIFSTOPPED(status));
    }
    [[nodiscard]] HWND window() const { return m_window; }
    [[nodiscard]] pid_t process() const { return m_process; }

  private:
    pid_t m_process = -1;
    bool m_has_ended = false;
    HWND m_window = nullptr;
};

// The names of the files by which processes are found.
std::string places() {
    std::set<std::string> names;
    const auto folder = tests::profile_folder() + "/run/windows";
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        names.insert(entry.path().filename().string());
    }
    std::string all;
    for (const auto& name : names) all += name + " ";
    return all;
}

std::u16string title_of(HWND window) {
    char16_t text[32];
    return GetWindowTextW(window, text, 32) > 0 ? text : u"";
}

TEST(WindowsOfProcesses, AreFoundByClassAndTitle) {
    const Program one("one");
    const Program two("tw\xC3\xB6");
    auto* const own = traced_window(0, nullptr, u"own");
    const struct {
        const char16_t* class_name;
        const char16_t* title;
        HWND found;
    } cases[] = {
        {kClass, u"one", one.window()},
        {nullptr, u"tw\u00f6", two.window()},
        {kClass, u"One", nullptr},
        {u"static", u"one", nullptr},
        {nullptr, u"own", own},
        {tests::traced_class(), nullptr, own},
        {u"no such class", nullptr, nullptr},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(FindWindowW(each.class_name, each.title), each.found);
    }
    auto* const first = FindWindowW(kClass, nullptr);
    auto* const second = FindWindowExW(nullptr, first, kClass, nullptr);
    EXPECT_TRUE(first == one.window() ? second == two.window() : second == one.window());
    EXPECT_EQ(FindWindowExW(nullptr, second, kClass, nullptr), nullptr);

    DWORD process = 0;
    EXPECT_NE(GetWindowThreadProcessId(one.window(), &process), 0U);
    EXPECT_EQ(process, static_cast<DWORD>(one.process()));
    EXPECT_EQ(title_of(two.window()), u"tw\u00f6");
    EXPECT_FALSE(DestroyWindow(one.window()));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(GetWindowLongPtrW(one.window(), GWLP_USERDATA), 0);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(SetForegroundWindow(two.window()));
    EXPECT_EQ(GetForegroundWindow(), two.window());
    DestroyWindow(own);
}

TEST(WindowsOfProcesses, AnswerAndAskBack) {
    Program other("other");
    auto* const window = other.window();
    EXPECT_EQ(SendMessageW(window, WM_USER, 40, -42), -2);
    auto* const own = traced_window(0, nullptr, u"own");
    Trace::current().handler = [](HWND each, UINT message, WPARAM wparam, LPARAM lparam) {
        return message == WM_USER ? static_cast<LRESULT>(wparam) + lparam * 2
                                  : DefWindowProcW(each, message, wparam, lparam);
    };
    EXPECT_EQ(SendMessageW(window, WM_USER + 1, reinterpret_cast<WPARAM>(own), 10), 21);

    EXPECT_TRUE(SetWindowTextW(window, u"renamed"));
    EXPECT_EQ(title_of(window), u"renamed");
    char16_t text[4];
    EXPECT_EQ(SendMessageW(window, WM_GETTEXT, 4, reinterpret_cast<LPARAM>(text)), 3);
    EXPECT_EQ(std::u16string(text), u"ren");
    std::u16string long_text(1000000, u'x');
    EXPECT_TRUE(SetWindowTextW(window, long_text.c_str()));
    EXPECT_EQ(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0), 1000000);
    EXPECT_EQ(SendMessageW(window, WM_GETTEXT, long_text.size() + 1,
                           reinterpret_cast<LPARAM>(long_text.data())),
              1000000);
    std::string bytes(100000, '\1');
    COPYDATASTRUCT data{7, static_cast<DWORD>(bytes.size()), bytes.data()};
    EXPECT_EQ(SendMessageW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data)), 100007);
    data = {8, 0, nullptr};
    EXPECT_EQ(SendMessageW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data)), 8);

    MINMAXINFO limits{};
    EXPECT_EQ(SendMessageW(window, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits)), 0);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(PostMessageW(window, WM_SETTEXT, 0, 0));
    EXPECT_EQ(GetLastError(), ERROR_MESSAGE_SYNC_ONLY);
    EXPECT_TRUE(SendNotifyMessageW(window, WM_USER, 1, 2));
    EXPECT_TRUE(PostMessageW(window, WM_CLOSE, 0, 0));
    EXPECT_EQ(other.wait(), 3);
    EXPECT_FALSE(IsWindow(window));
    Trace::current().handler = DefWindowProcW;
    DestroyWindow(own);
}

TEST(WindowsOfProcesses, AreGoneWithTheirProcess) {
    Program killed("killed");
    EXPECT_TRUE(IsWindow(killed.window()));
    std::thread waiting([&] {
        // Answered by nobody: the process halts, and is killed.
        EXPECT_EQ(SendMessageW(killed.window(), WM_USER + 3, 0, 0), 0);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    });
    killed.wait_for_halt();
    // A halted one is there, and nobody but a sender waits for it.
    EXPECT_EQ(FindWindowW(kClass, u"killed"), killed.window());
    EXPECT_EQ(title_of(killed.window()), u"killed");
    EXPECT_TRUE(PostMessageW(killed.window(), WM_USER, 0, 0));
    EXPECT_EQ(SendMessageTimeoutW(killed.window(), WM_USER, 0, 0, SMTO_NORMAL, 20, nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_TIMEOUT);
    killed.kill();
    waiting.join();
    EXPECT_FALSE(IsWindow(killed.window()));
    EXPECT_EQ(FindWindowW(kClass, nullptr), nullptr);
    EXPECT_FALSE(PostMessageW(killed.window(), WM_USER, 0, 0));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);

    Program ended("ended");
    EXPECT_EQ(SendMessageW(ended.window(), WM_USER + 2, 0, 0), 1);
    EXPECT_EQ(ended.wait(), 3);
    EXPECT_FALSE(IsWindow(ended.window()));
    // Neither has left anything.
    const auto left = places();
    for (const auto process : {killed.process(), ended.process()}) {
        EXPECT_EQ(left.find(std::to_string(process)), std::string::npos);
    }
}

// A program without titled windows has no files, and one whose run-time folder others may enter
// tells nobody of its windows.
TEST(WindowsOfProcesses, NeedAPrivateFolder) {
    const auto run = tests::profile_folder() + "/run";
    const auto before = places();
    DestroyWindow(traced_window());
    DestroyWindow(traced_window(0, HWND_MESSAGE, u"messages only"));
    EXPECT_EQ(places(), before);
    mkdir(run.c_str(), 0700);
    chmod(run.c_str(), 0755);
    {
        const Program other("other");
        EXPECT_EQ(FindWindowW(kClass, nullptr), nullptr);
        EXPECT_FALSE(IsWindow(other.window()));
    }
    EXPECT_EQ(places(), before);
    chmod(run.c_str(), 0700);
}

// The thread sanitizer starts no threads in the child of a process with several.
#if !defined(__SANITIZE_THREAD__)
TEST(WindowsOfProcesses, AreNotInheritedByAFork) {
    auto* const window = traced_window(0, nullptr, u"parent's");
    const int result = tests::in_child([&] {
        if (!IsWindow(window)) return 1;  // now another process's
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        if (process != static_cast<DWORD>(getppid())) return 2;
        if (DestroyWindow(window)) return 3;
        auto* const own = traced_window(0, nullptr, u"child's");
        if (own == nullptr || FindWindowW(nullptr, u"child's") != own) return 4;
        if (!PostMessageW(window, WM_USER, 5, 0)) return 5;
        return DestroyWindow(own) ? 0 : 6;
    });
    EXPECT_EQ(result, 0);
    MSG message{};
    EXPECT_TRUE(GetMessageW(&message, window, WM_USER, WM_USER));
    EXPECT_EQ(message.wParam, 5U);
    DestroyWindow(window);
}
#endif

TEST(RegisteredMessages, AreTheSameInAllProcesses) {
    const auto one = RegisterWindowMessageW(u"Tests::One");
    const auto two = RegisterWindowMessageW(u"Tests::Two\n");
    EXPECT_GE(one, 0xC000U);
    EXPECT_NE(one, two);
    EXPECT_EQ(RegisterWindowMessageW(u"TESTS::ONE"), one);
    EXPECT_EQ(RegisterWindowMessageW(u""), 0U);
    const int same = tests::in_child([&] {
        return RegisterWindowMessageW(u"tests::two\n") == two &&
                       RegisterWindowMessageW(u"tests::three") == two + 1
                   ? 0
                   : 1;
    });
    EXPECT_EQ(same, 0);
    EXPECT_EQ(RegisterWindowMessageW(u"tests::three"), two + 1);
}

TEST(WindowListings, ComeBackAsTheyWereAndAreReadWithCare) {
    using tvutil2::decode_listing;
    const std::string whole("TVW1\1\0\0\0\0\0\0\0\2\0\0\0\3\0\0\0\1\0\0\0\2\0\0\0c\0t\0u\0", 34);
    const auto windows = decode_listing(whole);
    ASSERT_TRUE(windows && windows->size() == 1);
    EXPECT_EQ(windows->front().handle, 1U);
    EXPECT_EQ(windows->front().class_name, u"c");
    EXPECT_EQ(windows->front().title, u"tu");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_EQ(decode_listing(whole.substr(0, size)).has_value(), size == 4) << size;
    }
    auto huge = whole;
    huge[20] = huge[21] = huge[22] = huge[23] = '\xFF';
    EXPECT_FALSE(decode_listing(huge));
}

// Of a process whose file system has no more room, as far as a limit on a file's size is that.
TEST(ListingFiles, KeepTheOldListingWithoutRoomForANewOne) {
    const auto folder = tests::new_folder();
    const int result = tests::in_child([&] {
        const tvutil2::Descriptor place(open(folder.c_str(), O_RDONLY | O_DIRECTORY));
        tvutil2::ListingFile file;
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{8192, 8192};
        setrlimit(RLIMIT_FSIZE, &limit);
        if (!file.open(place.get(), "1.windows")) return 1;
        const tvutil2::Descriptor reader(openat(place.get(), "1.windows", O_RDONLY));
        if (tvutil2::read_listing_file(reader.get())) return 2;
        for (const std::size_t size : {100, 5000, 0, 8176}) {
            const std::string listing(size, 'a');
            if (!file.write(listing)) return 3;
            if (tvutil2::read_listing_file(reader.get()) != listing) return 4;
        }
        if (file.write(std::string(8177, 'b'))) return 5;
        return tvutil2::read_listing_file(reader.get()) == std::string(8176, 'a') ? 0 : 6;
    });
    EXPECT_EQ(result, 0);
}

TEST(ListingFiles, AreReadWholeOrNotAtAll) {
    const auto folder = tests::new_folder();
    const tvutil2::Descriptor place(open(folder.c_str(), O_RDONLY | O_DIRECTORY));
    tvutil2::ListingFile file;
    ASSERT_TRUE(file.open(place.get(), "1.windows"));
    const tvutil2::Descriptor reader(openat(place.get(), "1.windows", O_RDWR));
    const std::string some(70000, 'a');
    const std::string fewer(9000, 'b');
    ASSERT_TRUE(file.write(some));
    std::thread writer([&] {
        for (int i = 0; i < 300; ++i) file.write(i % 2 == 0 ? fewer : some);
    });
    for (int i = 0; i < 100; ++i) {
        const auto read = tvutil2::read_listing_file(reader.get());
        // A reader that is always in the midst of something gives up.
        EXPECT_TRUE(!read || *read == some || *read == fewer);
    }
    writer.join();
    EXPECT_EQ(tvutil2::read_listing_file(reader.get()), some);
    ASSERT_EQ(pwrite(reader.get(), "c", 1, 5000), 1);
    EXPECT_FALSE(tvutil2::read_listing_file(reader.get()));
}

}  // namespace
