#include "tvutil2/framework/win_thread.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/objects/wait.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>
#include <thread>

namespace {

constexpr UINT kHeard = WM_USER + 1;
constexpr UINT kEaten = WM_USER + 2;

class Window : public CWnd {
  public:
    explicit Window(HWND parent = nullptr) {
        CreateEx(0, u"STATIC", u"", parent != nullptr ? WS_CHILD : 0, 0, 0, 0, 0, parent, nullptr);
    }
    BOOL PreTranslateMessage(MSG* message) override {
        asked += std::to_string(message->message - WM_USER);
        return message->message == kEaten;
    }
    std::string asked, heard;

  protected:
    LRESULT OnMessage(WPARAM wparam, LPARAM /*lparam*/) {
        heard += std::to_string(wparam);
        return static_cast<LRESULT>(wparam);
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Window, CWnd)
ON_MESSAGE(kHeard, &Window::OnMessage)
ON_MESSAGE(kEaten, &Window::OnMessage)
END_MESSAGE_MAP()

class Application : public CWinApp {
  public:
    BOOL OnIdle(LONG count) override {
        idles += std::to_string(count);
        const auto goes_on = CWinApp::OnIdle(count);
        if (!goes_on) AfxPostQuitMessage(42);
        return goes_on;
    }
    std::string idles;
};

TEST(WinThread, LoopAsksThenDispatchesAndGivesTheQuitCode) {
    Application app;
    ASSERT_EQ(AfxGetThread(), &app);
    EXPECT_EQ(AfxGetMainWnd(), nullptr);
    Window main;
    Window child(main.m_hWnd);
    Window other;
    app.m_pMainWnd = &main;
    EXPECT_EQ(AfxGetMainWnd(), &main);
    child.PostMessage(kHeard, 1);
    child.PostMessage(kEaten, 2);
    other.PostMessage(kHeard, 3);
    EXPECT_EQ(app.Run(), 42);
    EXPECT_EQ(app.idles, "01") << "behind the messages, and once more since it was wanted";
    EXPECT_EQ(child.asked + "," + child.heard, "12,1");
    EXPECT_EQ(other.asked + "," + other.heard, "1,3");
    EXPECT_EQ(main.asked, "11") << "its child's, unless used up, and once those of another tree";
    EXPECT_EQ(app.m_nThreadID, GetCurrentThreadId());
}

TEST(WinThread, MainWindowsEndEndsTheLoop) {
    Application app;
    for (const bool by_message : {true, false}) {
        auto main = std::make_unique<Window>();
        app.m_pMainWnd = main.get();
        if (by_message) {
            main->PostMessage(WM_CLOSE);
        } else {
            main.reset();
        }
        EXPECT_EQ(app.Run(), 0);
        EXPECT_EQ(AfxGetMainWnd(), nullptr);
    }
}

// A thread with a window, which it tells of, or one without a loop.
class Worker : public CWinThread {
  public:
    explicit Worker(BOOL has_loop) : m_has_loop(has_loop) {}
    ~Worker() override { gone.set_value(); }
    BOOL InitInstance() override {
        if (!m_has_loop) return FALSE;
        window = std::make_unique<Window>();
        starters = AfxGetMainWnd() != nullptr ? AfxGetMainWnd()->m_hWnd : nullptr;
        ready.set_value(AfxGetThread());
        return TRUE;
    }
    int ExitInstance() override {
        window.reset();
        return CWinThread::ExitInstance();
    }
    std::unique_ptr<Window> window;
    HWND starters = nullptr;
    std::promise<CWinThread*> ready;
    std::promise<void> gone;

  private:
    BOOL m_has_loop;
};

TEST(WinThread, WorkerPumpsItsOwnMessages) {
    Application app;
    Window main;
    app.m_pMainWnd = &main;
    Worker worker(TRUE);
    worker.m_bAutoDelete = FALSE;
    ASSERT_TRUE(worker.CreateThread(CREATE_SUSPENDED));
    EXPECT_FALSE(worker.CreateThread()) << "it has one";
    EXPECT_EQ(worker.ResumeThread(), 1U);
    EXPECT_EQ(worker.ready.get_future().get(), &worker);
    EXPECT_EQ(worker.starters, main.m_hWnd);
    EXPECT_EQ(worker.window->SendMessage(kHeard, 5), 5);
    EXPECT_EQ(GetWindowThreadProcessId(*worker.window, nullptr), worker.m_nThreadID);
    EXPECT_TRUE(worker.PostThreadMessage(WM_QUIT, 7, 0));
    ASSERT_EQ(WaitForSingleObject(worker.m_hThread, INFINITE), WAIT_OBJECT_0);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(worker.m_hThread, &code));
    EXPECT_EQ(code, 7U);
    EXPECT_EQ(worker.m_pMainWnd, nullptr);
    EXPECT_EQ(AfxGetMainWnd(), &main);
}

TEST(WinThread, ObjectGoesWithItsThreadAndOthersHaveNone) {
    auto worker = std::make_unique<Worker>(FALSE);
    auto gone = worker->gone.get_future();
    ASSERT_TRUE(worker->CreateThread());
    static_cast<void>(worker.release());
    gone.wait();
    std::thread([] {
        EXPECT_EQ(AfxGetThread(), nullptr);
        EXPECT_EQ(AfxGetMainWnd(), nullptr);
    }).join();
}

}  // namespace
