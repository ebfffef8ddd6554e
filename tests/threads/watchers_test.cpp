#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/platform/watch/change_filter.h"
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/threads/folder_watcher.h"
#include "tvutil2/threads/registry_watcher.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>
#include <thread>

#include "tests/support/profile.h"

namespace {

constexpr UINT kChanged = WM_APP + 7;
constexpr DWORD kNames = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME;

// A window that counts the messages of a watch.
class Window {
  public:
    Window() {
        static const ATOM window_class = [] {
            WNDCLASSEXW about{};
            about.cbSize = sizeof about;
            about.lpfnWndProc = procedure;
            about.lpszClassName = u"watchers_test";
            return RegisterClassExW(&about);
        }();
        EXPECT_NE(window_class, 0);
        m_handle = CreateWindowExW(0, u"watchers_test", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE,
                                   nullptr, nullptr, nullptr);
        EXPECT_NE(m_handle, nullptr);
    }
    ~Window() { destroy(); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void destroy() {
        if (m_handle != nullptr) DestroyWindow(m_handle);
        m_handle = nullptr;
    }
    /// Waits for a message more than there were.
    void wait_for_more() const {
        const int before = told;
        MSG message;
        while (told == before && GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
    }
    /// Takes what is there.
    static void drain() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) DispatchMessageW(&message);
    }
    operator HWND() const { return m_handle; }

    inline static int told = 0;

  private:
    static LRESULT procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        if (message != kChanged) return DefWindowProcW(window, message, wparam, lparam);
        ++told;
        // Of a message that is sent the loop sees nothing, so it is woken.
        PostMessageW(window, WM_NULL, 0, 0);
        return 0;
    }

    HWND m_handle = nullptr;
};

std::u16string path_of(const std::string& folder) {
    return tests::platform_path(folder);
}

template <class Watch>
class FolderWatchers : public testing::Test {};
using Kinds = testing::Types<CFolderWatcher, CTvFolderWatch>;
TYPED_TEST_SUITE(FolderWatchers, Kinds);

TYPED_TEST(FolderWatchers, PostWhatChangesUntilTheyEnd) {
    const auto folder = tests::new_folder();
    const Window window;
    TypeParam watch;
    watch.EndWatch();  // nothing to end
    EXPECT_EQ(watch.BeginWatch((path_of(folder) + u"\\none").c_str(), 0, window, kChanged, kNames),
              0);
    EXPECT_EQ(watch.BeginWatch(path_of(folder).c_str(), 1, window, kChanged, kNames), 1);
    tests::write_file(folder + "/a", "");
    window.wait_for_more();
    tests::write_file(folder + "/b", "");
    window.wait_for_more();
    watch.EndWatch();
    Window::drain();
    const int before = Window::told;
    tests::write_file(folder + "/c", "");
    EXPECT_EQ(watch.BeginWatch(path_of(folder).c_str(), 1, window, kChanged, kNames), 1);
    tests::write_file(folder + "/d", "");
    window.wait_for_more();
    watch.EndWatch();
    EXPECT_GE(Window::told, before + 1);
}

TYPED_TEST(FolderWatchers, GoOnWithoutTheirWindow) {
    const auto folder = tests::new_folder();
    Window window;
    TypeParam watch;
    EXPECT_EQ(watch.BeginWatch(path_of(folder).c_str(), 0, window, kChanged, kNames), 1);
    window.destroy();
    const int before = Window::told;
    for (int i = 0; i < 20; ++i) tests::write_file(folder + "/" + std::to_string(i), "");
    watch.EndWatch();
    Window::drain();
    EXPECT_EQ(Window::told, before);
}

TEST(FolderWatchers, OneRefusesASecondWatchAndTheOtherReplacesTheFirst) {
    const auto first = tests::new_folder();
    const auto second = tests::new_folder();
    const Window window;
    CFolderWatcher refuses;
    EXPECT_EQ(refuses.BeginWatch(path_of(first).c_str(), 0, window, kChanged, kNames), 1);
    EXPECT_EQ(refuses.BeginWatch(path_of(second).c_str(), 0, window, kChanged, kNames), 0);
    tests::write_file(first + "/a", "");
    window.wait_for_more();
    refuses.EndWatch();

    CTvFolderWatch replaces;
    EXPECT_EQ(replaces.IsWatching(), 0);
    EXPECT_EQ(replaces.BeginWatch(path_of(first).c_str(), 0, window, kChanged, kNames), 1);
    EXPECT_EQ(replaces.BeginWatch(path_of(second).c_str(), 0, window, kChanged, kNames), 1);
    EXPECT_NE(replaces.IsWatching(), 0);
    tests::write_file(second + "/a", "");
    window.wait_for_more();
    // The end of the folder is one last message, and the end of the watch right behind it.
    unlink((second + "/a").c_str());
    rmdir(second.c_str());
    window.wait_for_more();
    while (replaces.IsWatching() != 0) std::this_thread::yield();
    EXPECT_EQ(replaces.BeginWatch(path_of(first).c_str(), 0, window, kChanged, kNames), 1);
    EXPECT_NE(replaces.IsWatching(), 0);
}

class RegistryWatcher : public testing::Test {
  protected:
    RegistryWatcher() {
        EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, u"Software\\Watched", 0, nullptr, 0,
                                  KEY_ALL_ACCESS, nullptr, &m_key, nullptr),
                  ERROR_SUCCESS);
    }
    ~RegistryWatcher() override { close(); }

    void close() {
        if (m_key != nullptr) RegCloseKey(m_key);
        m_key = nullptr;
    }
    void change() const {
        static DWORD number = 0;
        ++number;
        RegSetValueExW(m_key, u"v", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), 4);
    }

    HKEY m_key = nullptr;
    CRegistryWatcher m_watch;
    Window m_window;
};

TEST_F(RegistryWatcher, SendsWhatChangesUntilItEnds) {
    EXPECT_EQ(m_watch.BeginWatch(m_key, 1, m_window, kChanged, REG_NOTIFY_CHANGE_LAST_SET), 1);
    EXPECT_EQ(m_watch.BeginWatch(m_key, 1, m_window, kChanged, REG_NOTIFY_CHANGE_LAST_SET), 0);
    for (int i = 0; i < 3; ++i) {
        const int before = Window::told;
        change();  // once: none is missed, the first included
        while (Window::told == before) Window::drain();
    }
    m_watch.EndWatch();
    const int before = Window::told;
    change();
    Window::drain();
    EXPECT_EQ(Window::told, before);
    m_watch.EndWatch();
}

// The watch's thread waits for this thread's window, and this thread for the watch's.
TEST_F(RegistryWatcher, EndsWhileItsMessageIsUnanswered) {
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(m_watch.BeginWatch(m_key, 0, m_window, kChanged, REG_NOTIFY_CHANGE_LAST_SET), 1);
        for (int k = 0; k < 5; ++k) change();
        m_watch.EndWatch();
    }
}

// Of another thread, which sees that something was sent and doesn't answer.
TEST_F(RegistryWatcher, EndsWhileItsWindowHangs) {
    auto* const is_sent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    auto* const go_on = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::promise<HWND> made;
    std::thread hung([&] {
        const Window window;
        made.set_value(window);
        MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_SENDMESSAGE);
        SetEvent(is_sent);
        WaitForSingleObject(go_on, INFINITE);
        const int before = Window::told;
        Window::drain();
        EXPECT_EQ(Window::told, before);  // it was taken back
    });
    auto* const window = made.get_future().get();
    EXPECT_EQ(m_watch.BeginWatch(m_key, 0, window, kChanged, REG_NOTIFY_CHANGE_LAST_SET), 1);
    while (WaitForSingleObject(is_sent, 1) != WAIT_OBJECT_0) change();
    m_watch.EndWatch();
    SetEvent(go_on);
    hung.join();
    CloseHandle(go_on);
    CloseHandle(is_sent);
}

TEST_F(RegistryWatcher, RestsOnceItsKeyIsClosed) {
    const auto was_closed = m_key;
    EXPECT_EQ(m_watch.BeginWatch(m_key, 0, m_window, kChanged, REG_NOTIFY_CHANGE_LAST_SET), 1);
    close();
    m_watch.EndWatch();
    EXPECT_EQ(m_watch.BeginWatch(was_closed, 0, m_window, kChanged, REG_NOTIFY_CHANGE_LAST_SET), 1);
    m_watch.EndWatch();
}

}  // namespace
