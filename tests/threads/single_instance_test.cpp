#include "tvutil2/threads/single_instance.h"

#include "tvutil2/framework/win_thread.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/killed.h"

namespace {

// Tells a text, and keeps what it is told.
class Instance : public NUtil::CSingleInstance {
  public:
    explicit Instance(std::string text = "") : m_text(std::move(text)) {}

    void OnSecondInstance() override {
        if (!m_text.empty()) SetData(m_text.c_str());
    }
    void OnSecondInstanceDetected() override {
        const std::lock_guard guard(m_lock);
        m_heard.emplace_back(GetData());
        m_is_heard.notify_all();
    }

    // Lets others start until one of them is heard: who comes while the first one isn't waiting
    // isn't.
    std::string after(const std::function<void()>& start) {
        for (;;) {
            start();
            std::unique_lock guard(m_lock);
            if (m_is_heard.wait_for(guard, std::chrono::milliseconds(50),
                                    [this] { return !m_heard.empty(); })) {
                const auto text = m_heard.back();
                m_heard.clear();
                return text;
            }
        }
    }

  private:
    std::string m_text;
    std::mutex m_lock;
    std::condition_variable m_is_heard;
    std::vector<std::string> m_heard;
};

// 1 for a first instance, 0 for another.
int start(const char16_t* name, const std::string& text) {
    return tests::in_child([&] {
        Instance instance(text);
        return instance.Create(name) ? 1 : 0;
    });
}

TEST(SingleInstance, TheFirstOneHearsTheTextsOfOthers) {
    Instance first("own");
    ASSERT_TRUE(first.Create(u"Texts"));
    EXPECT_TRUE(first.Create(u"Texts")) << "it is the first already";
    first.SetData("outside");
    EXPECT_EQ(first.GetData(), nullptr);
    for (const auto& [text, arrives] : {std::pair<std::string, std::string>{"-url x", "-url x"},
                                        {std::string(300, 'a'), std::string(255, 'a')},
                                        {"", ""}}) {
        EXPECT_EQ(first.after([&text = text] { EXPECT_EQ(start(u"Texts", text), 0); }), arrives);
    }
    // In the same process too, and under the name in the system's code page.
    EXPECT_EQ(first.after([] {
        Instance second("narrow");
        EXPECT_FALSE(second.CreateA("Texts"));
    }),
              "narrow");
    Instance other;
    EXPECT_TRUE(other.Create(u"Texts2"));
    Instance unnameable;
    EXPECT_FALSE(unnameable.CreateW(u"a\\b"));
}

TEST(SingleInstance, ANameIsFreeOnceItsLastProcessHasGone) {
    for (int i = 0; i < 3; ++i) EXPECT_EQ(start(u"Leaving", ""), 1);
    // Killed anywhere in its life, the first one leaves nothing in the way of the next.
    int call = 0;
    const auto live = [] {
        Instance first;
        if (!first.Create(u"Leaving")) _exit(1);
        Instance second("x");
        second.Create(u"Leaving");
    };
    for (; tests::kill_at_call(call, live); ++call) {
        ASSERT_EQ(start(u"Leaving", ""), 1) << "killed at call " << call;
    }
    EXPECT_GT(call, 10);
}

TEST(SingleInstance, ASecondOneThatIsKilledKeepsNobodyFromStarting) {
    Instance first;
    ASSERT_TRUE(first.Create(u"Killed"));
    int call = 0;
    const auto hand_over = [] {
        Instance second("of the dead");
        second.Create(u"Killed");
    };
    for (; tests::kill_at_call(call, hand_over); ++call) {
    }
    EXPECT_GT(call, 2);
    // What the last of the dead said may still be on its way.
    std::string heard;
    do {
        heard = first.after([] { EXPECT_EQ(start(u"Killed", "alive"), 0); });
    } while (heard == "of the dead");
    EXPECT_EQ(heard, "alive");
}

// A first instance in a process of its own.
class Elsewhere {
  public:
    explicit Elsewhere(const char16_t* name) {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        m_process = fork();
        if (m_process == 0) {
            Instance first;
            const char byte = first.Create(name) ? 1 : 0;
            (void)!write(ends[1], &byte, 1);
            for (;;) pause();
        }
        char byte = 0;
        EXPECT_EQ(read(ends[0], &byte, 1), 1);
        EXPECT_EQ(byte, 1);
        for (const int end : ends) close(end);
    }
    ~Elsewhere() { end(); }
    Elsewhere(const Elsewhere&) = delete;
    Elsewhere& operator=(const Elsewhere&) = delete;
    void end() {
        if (m_process <= 0) return;
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
        m_process = -1;
    }

  private:
    pid_t m_process;
};

TEST(SingleInstance, TheFirstOneMayBeKilledAtEveryPointOfASecondOnesStart) {
    const auto hand_over = [] {
        Instance second("to nobody");
        second.Create(u"Widow");
    };
    int call = 0;
    for (bool is_there = true; is_there; call += 3) {
        Elsewhere first(u"Widow");
        is_there = tests::interrupt_at_call(call, hand_over, [&first] { first.end(); });
        first.end();
        ASSERT_EQ(start(u"Widow", ""), 1) << "killed at call " << call;
    }
    EXPECT_GT(call, 10);
}

TEST(SingleInstance, HooksThatThrowKeepNothing) {
    class Throws : public NUtil::CSingleInstance {
      public:
        void OnSecondInstance() override { throw 1; }
        void OnSecondInstanceDetected() override { throw 1; }
    };
    EXPECT_EQ(tests::in_child([] {
                  Throws first;
                  first.Create(u"Throws");
                  for (;;) start(u"Throws", "x");
                  return 0;
              }),
              -1)
        << "what the thread's routine throws ends the program";
    // A start that the dead one had made may still have the name for a moment.
    Instance first;
    while (!first.Create(u"Throws")) std::this_thread::yield();
    EXPECT_EQ(tests::in_child([] {
                  Throws second;
                  for (int i = 0; i < 3; ++i) EXPECT_THROW(second.Create(u"Throws"), int);
                  return testing::Test::HasFailure() ? 1 : 0;
              }),
              0);
    EXPECT_EQ(first.after([] { EXPECT_EQ(start(u"Throws", "next"), 0); }), "next");
}

TEST(SingleInstance, OfAThousandStartsExactlyOneIsTheFirst) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    constexpr int kStarts = 100;
#else
    constexpr int kStarts = 1000;
#endif
    int gate[2];
    int results[2];
    int end[2];
    ASSERT_EQ(pipe(gate) + pipe(results) + pipe(end), 0);
    std::vector<pid_t> children;
    for (int i = 0; i < kStarts; ++i) {
        const auto child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(gate[1]);
            close(end[1]);
            char byte = 0;
            (void)!read(gate[0], &byte, 1);  // returns for all at once, as the pipe is closed
            Instance instance("x");
            byte = instance.Create(u"Thousand") ? 1 : 0;
            (void)!write(results[1], &byte, 1);
            (void)!read(end[0], &byte, 1);
            _exit(0);
        }
        children.push_back(child);
    }
    close(gate[1]);
    int first = 0;
    for (int i = 0; i < kStarts; ++i) {
        char byte = 0;
        ASSERT_EQ(read(results[0], &byte, 1), 1);
        first += byte;
    }
    EXPECT_EQ(first, 1);
    close(end[1]);
    for (const auto child : children) waitpid(child, nullptr, 0);
    for (const int each : {gate[0], results[0], results[1], end[0]}) close(each);
}

class MainWindow : public CWnd {
  public:
    int told = 0;

  protected:
    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == 2132) told += static_cast<int>(wparam + static_cast<WPARAM>(lparam));
        return CWnd::WindowProc(message, wparam, lparam);
    }
};

TEST(SingleInstance, ASecondProgramBringsTheFirstOnesWindowToTheFront) {
    NSingleInstance::CSingleInstance first;
    ASSERT_EQ(first.Create(u"Window"), 1);
    auto* const hidden = FindWindowW(u"static", u"_SINGLE_INSTANCE::Window");
    ASSERT_EQ(hidden, first.GetSafeHwnd());
    EXPECT_FALSE(IsWindowVisible(hidden));
    SendMessageW(hidden, 2131, 0, 0);  // without a main window nothing happens

    MainWindow main;
    ASSERT_TRUE(main.CreateEx(0, AfxRegisterWndClass(0), u"Main", 0, RECT{}, nullptr, 0));
    AfxGetThread()->m_pMainWnd = &main;
    EXPECT_EQ(tests::in_child([] {
                  NSingleInstance::CSingleInstance second;
                  return second.Create(u"Window");
              }),
              0);
    MSG message{};
    while (!IsWindowVisible(main) && GetMessageW(&message, nullptr, 0, 0)) {
        DispatchMessageW(&message);
    }
    EXPECT_EQ(GetForegroundWindow(), main.m_hWnd);
    SendMessageW(hidden, 2132, 3, 4);
    while (main.told == 0 && GetMessageW(&message, nullptr, 0, 0)) DispatchMessageW(&message);
    EXPECT_EQ(main.told, 7);
    AfxGetThread()->m_pMainWnd = nullptr;
}

}  // namespace
