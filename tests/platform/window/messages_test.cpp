#include "tvutil2/platform/window/messages.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/timers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <future>
#include <map>
#include <random>
#include <stdexcept>
#include <thread>

#include "tests/platform/window/trace.h"

namespace {

using tests::Trace;
using tests::traced_window;

// The next message's number, or -1.
int peek(UINT first = 0, UINT last = 0, UINT remove = PM_REMOVE, HWND window = nullptr) {
    MSG message{};
    return PeekMessageW(&message, window, first, last, remove) ? static_cast<int>(message.message)
                                                               : -1;
}

// A thread with a window, which runs a loop until it is told to quit.
class Looper {
  public:
    explicit Looper(std::function<LRESULT(HWND, UINT, WPARAM, LPARAM)> handler = DefWindowProcW) {
        std::promise<HWND> made;
        m_thread = std::thread([&made, handler = std::move(handler)] {
            Trace::current().handler = handler;
            made.set_value(traced_window());
            while (runs()) {
            }
        });
        m_window = made.get_future().get();
        m_id = GetWindowThreadProcessId(m_window, nullptr);
    }
    ~Looper() { stop(); }
    Looper(const Looper&) = delete;
    Looper& operator=(const Looper&) = delete;

    void stop() {
        if (!m_thread.joinable()) return;
        PostThreadMessageW(m_id, WM_QUIT, 0, 0);
        m_thread.join();
    }
    [[nodiscard]] HWND window() const { return m_window; }
    [[nodiscard]] DWORD id() const { return m_id; }

  private:
    // One message; a procedure's exception ends neither the loop nor the thread.
    static bool runs() {
        try {
            MSG message;
            if (GetMessageW(&message, nullptr, 0, 0) <= 0) return false;
            DispatchMessageW(&message);
        } catch (const std::runtime_error&) {
        }
        return true;
    }

    std::thread m_thread;
    HWND m_window = nullptr;
    DWORD m_id = 0;
};

TEST(Messages, ComeInOrderAndThroughFilters) {
    auto* const a = traced_window();
    auto* const b = traced_window(WS_CHILD, a);
    PostMessageW(a, WM_USER, 1, 0);
    PostMessageW(nullptr, WM_USER + 1, 0, 0);
    PostMessageW(b, WM_USER + 2, 0, 0);
    PostMessageW(a, WM_USER + 3, 0, 0);
    EXPECT_EQ(peek(0, 0, PM_NOREMOVE), static_cast<int>(WM_USER));
    EXPECT_EQ(peek(WM_USER + 3, WM_USER + 9), static_cast<int>(WM_USER + 3));
    EXPECT_EQ(peek(WM_USER + 3, WM_USER + 9), -1);
    EXPECT_EQ(peek(0, 0, PM_REMOVE, b), static_cast<int>(WM_USER + 2));
    auto* const none = reinterpret_cast<HWND>(std::intptr_t{-1});
    EXPECT_EQ(peek(0, 0, PM_REMOVE, none), static_cast<int>(WM_USER + 1));
    PostMessageW(b, WM_USER + 4, 0, 0);
    PostMessageW(a, WM_USER + 5, 0, 0);
    DestroyWindow(b);  // takes its messages along
    EXPECT_EQ(peek(), static_cast<int>(WM_USER));
    EXPECT_EQ(peek(0, 0, PM_REMOVE, a), static_cast<int>(WM_USER + 5));
    EXPECT_EQ(peek(), -1);
    MSG message;
    EXPECT_EQ(GetMessageW(&message, b, 0, 0), -1);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    DestroyWindow(a);
}

TEST(Messages, QuitComesOnceBehindAllPostedOnesWhateverTheFilter) {
    PostQuitMessage(1);
    PostMessageW(nullptr, WM_USER, 0, 0);
    PostQuitMessage(2);
    MSG message{};
    EXPECT_TRUE(GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(message.message, WM_USER);
    EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_APP, WM_APP, PM_NOREMOVE));
    EXPECT_EQ(message.message, WM_QUIT);
    EXPECT_FALSE(GetMessageW(&message, nullptr, WM_APP, WM_APP));
    EXPECT_EQ(message.wParam, 2U);
    EXPECT_EQ(peek(), -1);
}

TEST(Messages, AreWhatAModelSaysAfterRandomCalls) {
    struct Posted {
        HWND window;
        UINT message;
        WPARAM number;
    };
    constexpr int kQuit = 5;
    for (const unsigned seed : {21U, 22U, 23U, 24U}) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&random](unsigned limit) {
            return static_cast<unsigned>(random() % limit);
        };
        std::array<HWND, 3> windows{nullptr, traced_window(), traced_window()};
        std::vector<Posted> model;
        bool has_quit = false;
        for (WPARAM step = 0; step < 20000; ++step) {
            SCOPED_TRACE(step);
            const auto at = below(3);
            const auto first = WM_USER + below(4);
            const auto call = below(200);
            if (call < 80) {  // as often as one is taken, so that the queue is often empty
                ASSERT_TRUE(PostMessageW(windows[at], first, step, 0));
                model.push_back({windows[at], first, step});
                continue;
            }
            if (call == 95 || call == 96) {
                PostQuitMessage(kQuit);
                has_quit = true;
                continue;
            }
            if (call == 97 && at != 0) {
                DestroyWindow(windows[at]);
                std::erase_if(model, [&](const auto& each) { return each.window == windows[at]; });
                windows[at] = traced_window();
                continue;
            }
            const bool is_narrow = below(2) == 0;
            const UINT last = first + below(3);
            const auto found = std::find_if(model.begin(), model.end(), [&](const auto& each) {
                return (windows[at] == nullptr || each.window == windows[at]) &&
                       (!is_narrow || (each.message >= first && each.message <= last));
            });
            const bool removes = below(4) != 0;
            MSG message{};
            ASSERT_EQ(PeekMessageW(&message, windows[at], is_narrow ? first : 0,
                                   is_narrow ? last : 0, removes ? PM_REMOVE : PM_NOREMOVE) != 0,
                      found != model.end() || has_quit);
            if (found != model.end()) {
                ASSERT_EQ(message.hwnd, found->window);
                ASSERT_EQ(message.message, found->message);
                ASSERT_EQ(message.wParam, found->number);
                if (removes) model.erase(found);
            } else if (has_quit) {
                ASSERT_EQ(message.message, WM_QUIT);
                ASSERT_EQ(message.wParam, static_cast<WPARAM>(kQuit));
                if (removes) has_quit = false;
            }
        }
        for (auto* window : windows) DestroyWindow(window);
        while (peek() != -1) {
        }
    }
}

TEST(Messages, AreRefusedForTheDeadTheForeignAndTheFull) {
    auto* const window = traced_window();
    DWORD dead_thread = 0;
    std::thread([&] { dead_thread = GetWindowThreadProcessId(traced_window(), nullptr); }).join();
    for (DWORD i = 0; i < kQueueLimit; ++i) ASSERT_TRUE(PostMessageW(window, WM_USER, i, 0));
    EXPECT_EQ(peek(WM_APP, WM_APP), -1);  // taken over by now, and still counted
    const struct {
        BOOL result;
        DWORD error, expected;
    } cases[] = {
        {PostMessageW(window, WM_USER, 0, 0), GetLastError(), ERROR_NOT_ENOUGH_QUOTA},
        {PostMessageW(window, WM_SETTEXT, 0, 0), GetLastError(), ERROR_MESSAGE_SYNC_ONLY},
        {PostThreadMessageW(dead_thread, WM_USER, 0, 0), GetLastError(), ERROR_INVALID_THREAD_ID},
        {PostThreadMessageW(0, WM_USER, 0, 0), GetLastError(), ERROR_INVALID_THREAD_ID},
        {PostMessageW(reinterpret_cast<HWND>(0x4321), WM_USER, 0, 0), GetLastError(),
         ERROR_INVALID_WINDOW_HANDLE},
    };
    for (const auto& each : cases) {
        EXPECT_FALSE(each.result);
        EXPECT_EQ(each.error, each.expected);
    }
    EXPECT_EQ(peek(), static_cast<int>(WM_USER));
    EXPECT_TRUE(PostMessageW(window, WM_USER, 0, 0));
    DestroyWindow(window);
    EXPECT_EQ(peek(), -1);
    EXPECT_FALSE(PostMessageW(window, WM_USER, 0, 0));
    EXPECT_EQ(SendMessageW(window, WM_USER, 0, 0), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

// What was looked at doesn't wake a wait any more, be it a message or a tick.
TEST(Messages, WaitIsForWhatIsNew) {
    auto* const window = traced_window();
    PostMessageW(window, WM_USER, 0, 0);
    EXPECT_TRUE(WaitMessage());
    EXPECT_EQ(peek(0, 0, PM_NOREMOVE), static_cast<int>(WM_USER));
    std::thread poster([&] { PostMessageW(window, WM_USER + 1, 0, 0); });
    EXPECT_TRUE(WaitMessage());
    poster.join();
    EXPECT_EQ(peek(WM_USER + 1, WM_USER + 1), static_cast<int>(WM_USER + 1));
    SetTimer(window, 3, 10, nullptr);
    EXPECT_TRUE(WaitMessage());
    EXPECT_EQ(peek(WM_TIMER, WM_TIMER), static_cast<int>(WM_TIMER));
    DestroyWindow(window);
}

TEST(Messages, SentOnesAreAnsweredByTheWindowsThread) {
    auto* const own = traced_window();
    DWORD answering = 0;
    bool is_sent = false;
    Looper other([&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == WM_USER) {
            is_sent = InSendMessage() != 0;
            answering = GetWindowThreadProcessId(window, nullptr);
            // The sender waits, and answers meanwhile.
            return SendMessageW(own, WM_USER + 1, wparam, 0) + 1;
        }
        return DefWindowProcW(window, message, wparam, lparam);
    });
    Trace::current().handler = [&](HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam) -> LRESULT {
        if (message != WM_USER + 1) return DefWindowProcW(window, message, wparam, lparam);
        EXPECT_TRUE(InSendMessage());
        return static_cast<LRESULT>(wparam) * 2;
    };
    PostMessageW(own, WM_USER + 7, 0, 0);
    EXPECT_EQ(SendMessageW(other.window(), WM_USER, 20, 0), 41);
    EXPECT_TRUE(is_sent);
    EXPECT_EQ(answering, other.id());
    EXPECT_EQ(peek(), static_cast<int>(WM_USER + 7));  // posts had to wait
    char16_t text[8];
    SetWindowTextW(other.window(), u"there");
    EXPECT_EQ(GetWindowTextW(other.window(), text, 8), 5);
    EXPECT_EQ(std::u16string(text), u"there");
    Trace::current().handler = DefWindowProcW;
    DestroyWindow(own);
}

TEST(Messages, SendersAreFreedWhateverBecomesOfTheirMessage) {
    std::promise<void> may_go_on;
    std::promise<void> is_busy;
    auto other = std::make_unique<Looper>(
        [&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
            if (message == WM_USER) throw std::runtime_error("raised");
            if (message == WM_USER + 1) DestroyWindow(window);
            if (message == WM_USER + 2) {
                is_busy.set_value();
                may_go_on.get_future().wait();
            }
            return message > WM_USER ? 5 : DefWindowProcW(window, message, wparam, lparam);
        });
    auto* const window = other->window();
    EXPECT_EQ(SendMessageW(window, WM_USER, 0, 0), 0);  // the exception stays there

    PostMessageW(window, WM_USER + 2, 0, 0);
    is_busy.get_future().wait();
    std::uintptr_t result = 1;
    EXPECT_EQ(SendMessageTimeoutW(window, WM_USER + 3, 0, 0, SMTO_NORMAL, 1, &result), 0);
    EXPECT_EQ(GetLastError(), ERROR_TIMEOUT);
    EXPECT_EQ(result, 0U);
    auto waiting =
        std::async(std::launch::async, [&] { return SendMessageW(window, WM_USER + 3, 0, 0); });
    auto ending =
        std::async(std::launch::async, [&] { return SendMessageW(window, WM_USER + 1, 0, 0); });
    EXPECT_TRUE(SendNotifyMessageW(window, WM_USER + 3, 0, 0));
    may_go_on.set_value();
    EXPECT_EQ(ending.get(), 5);
    const auto answer = waiting.get();  // before or behind the end
    EXPECT_TRUE(answer == 5 || answer == 0);
    other->stop();
    EXPECT_FALSE(SendNotifyMessageW(window, WM_USER + 3, 0, 0));
}

TEST(Messages, ThreadsThatEndAnswerNobodyAndFreeEverybody) {
    std::promise<HWND> made;
    std::promise<void> end;
    std::thread owner([&] {
        made.set_value(traced_window());
        end.get_future().wait();
    });
    auto* const window = made.get_future().get();
    auto sent = std::async(std::launch::async, [&] { return SendMessageW(window, WM_USER, 0, 0); });
    while (sent.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        end.set_value();
        owner.join();
        EXPECT_EQ(sent.get(), 0);
        break;
    }
}

// The thread sanitizer's own account of calls is shorter than a stack.
#if !defined(__SANITIZE_THREAD__)
TEST(Messages, RecursionIsBoundedByTheStack) {
    int depth = 0;
    Trace::current().handler = [&](HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam) -> LRESULT {
        if (message != WM_USER) return DefWindowProcW(window, message, wparam, lparam);
        ++depth;
        return SendMessageW(window, WM_USER, 0, 0) + 1;
    };
    auto* const window = traced_window();
    EXPECT_EQ(SendMessageW(window, WM_USER, 0, 0), depth);
    EXPECT_GT(depth, 100);
    EXPECT_EQ(GetLastError(), ERROR_STACK_OVERFLOW);
    Trace::current().handler = DefWindowProcW;
    EXPECT_TRUE(DestroyWindow(window));
}
#endif

TEST(Timers, TickBehindEverythingElseAndOnce) {
    auto* const window = traced_window();
    EXPECT_EQ(SetTimer(window, 7, 0, nullptr), 7U);
    MSG message{};
    ASSERT_TRUE(GetMessageW(&message, window, WM_TIMER, WM_TIMER));
    EXPECT_EQ(message.wParam, 7U);
    ASSERT_TRUE(GetMessageW(&message, nullptr, 0, 0));
    PostMessageW(window, WM_USER, 0, 0);
    WaitMessage();
    EXPECT_EQ(peek(), static_cast<int>(WM_USER));
    EXPECT_TRUE(KillTimer(window, 7));
    EXPECT_FALSE(KillTimer(window, 7));
    EXPECT_EQ(peek(), -1);
    DestroyWindow(window);
}

TEST(Timers, LoseATickThatIsDueWhenTheyEndOrStartAnew) {
    auto* const window = traced_window();
    for (const bool restarts : {false, true}) {
        SetTimer(window, 1, 10, nullptr);
        WaitMessage();
        EXPECT_EQ(peek(0, 0, PM_NOREMOVE), static_cast<int>(WM_TIMER));
        if (restarts) {
            SetTimer(window, 1, 65535, nullptr);
        } else {
            KillTimer(window, 1);
        }
        EXPECT_EQ(peek(), -1);
    }
    SetTimer(window, 2, 0xFFFFFFFF, nullptr);
    EXPECT_EQ(peek(), -1);
    DestroyWindow(window);
}

TEST(Timers, CallTheirProcedureAndNobodyElses) {
    static int calls;
    calls = 0;
    const auto procedure = [](HWND, UINT message, UINT_PTR, DWORD) {
        EXPECT_EQ(message, WM_TIMER);
        ++calls;
    };
    const auto id = SetTimer(nullptr, 0, 10, procedure);
    const auto other = SetTimer(nullptr, 0, 10, procedure);
    EXPECT_NE(id, 0U);
    EXPECT_NE(id, other);
    KillTimer(nullptr, other);
    MSG message{};
    ASSERT_TRUE(GetMessageW(&message, nullptr, 0, 0));
    DispatchMessageW(&message);
    EXPECT_EQ(calls, 1);
    KillTimer(nullptr, id);
    DispatchMessageW(&message);  // a tick from before the end
    const MSG invented{nullptr, WM_TIMER, 5, 0x4000, 0, {}};
    DispatchMessageW(&invented);
    EXPECT_EQ(calls, 1);
    auto* const window = traced_window();
    std::thread([&] {
        EXPECT_EQ(SetTimer(window, 1, 10, nullptr), 0U);
        EXPECT_EQ(GetLastError(), ERROR_WINDOW_OF_OTHER_THREAD);
    }).join();
    DestroyWindow(window);
}

// Timers that come and go: a tick is of one that runs, and isn't early.
TEST(Timers, TickWhileTheyRunAndNotBeforeTheirTime) {
    using Clock = std::chrono::steady_clock;
    constexpr unsigned kSeed = 51;
    std::mt19937 random(kSeed);
    auto* const window = traced_window();
    struct Timer {
        std::chrono::milliseconds period;
        Clock::time_point since;
    };
    std::map<UINT_PTR, Timer> running;
    for (int step = 0; step < 60; ++step) {
        SCOPED_TRACE("seed " + std::to_string(kSeed) + " step " + std::to_string(step));
        const UINT_PTR id = 1 + random() % 5;
        if (random() % 4 == 0) {
            ASSERT_EQ(KillTimer(window, id) != 0, running.erase(id) == 1);
        } else {
            const auto period = static_cast<UINT>(10 + random() % 20);
            const auto now = Clock::now();
            ASSERT_EQ(SetTimer(window, id, period, nullptr), id);
            running[id] = {std::chrono::milliseconds(period), now};
        }
        MSG message{};
        if (running.empty() || !GetMessageW(&message, nullptr, 0, 0)) continue;
        ASSERT_EQ(message.message, WM_TIMER);
        const auto timer = running.find(message.wParam);
        ASSERT_NE(timer, running.end());
        // The clock of ticks has steps of a millisecond.
        ASSERT_GE(Clock::now() - timer->second.since + std::chrono::milliseconds(1),
                  timer->second.period);
        timer->second.since += timer->second.period;
    }
    for (const auto& [id, timer] : running) KillTimer(window, id);
    EXPECT_EQ(peek(), -1);
    DestroyWindow(window);
}

// Four threads post to and send to each other's windows, and end and make windows meanwhile.
TEST(Messages, OfManyThreadsAllArrive) {
    constexpr int kThreads = 4;
    constexpr int kEach = 2000;
    std::array<std::atomic<HWND>, kThreads> windows{};
    std::atomic<int> posted = 0, got = 0, posting = kThreads;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            Trace::current().handler = [&](HWND window, UINT message, WPARAM wparam,
                                           LPARAM lparam) -> LRESULT {
                if (message == WM_USER) ++got;
                if (message == WM_USER + 1) return static_cast<LRESULT>(wparam) + 1;
                return DefWindowProcW(window, message, wparam, lparam);
            };
            windows[static_cast<std::size_t>(t)] = traced_window();
            MSG message;
            for (int i = 0; i < kEach; ++i) {
                auto* const target = windows[static_cast<std::size_t>(t + i) % kThreads].load();
                if (target != nullptr && PostMessageW(target, WM_USER, 0, 0)) ++posted;
                if (i % 16 == 0 && target != nullptr) {
                    EXPECT_EQ(SendMessageW(target, WM_USER + 1, static_cast<WPARAM>(i), 0), i + 1);
                }
                if (i % 8 == 0) DestroyWindow(traced_window(WS_POPUP));
                while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
            }
            // Until the last one has posted, whom each tells all the others.
            if (--posting == 0) {
                for (const auto& window : windows) PostMessageW(window, WM_APP, 0, 0);
            }
            while (GetMessageW(&message, nullptr, 0, 0) > 0 && message.message != WM_APP) {
                DispatchMessageW(&message);
            }
            Trace::current().handler = DefWindowProcW;
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(got, posted);
}

}  // namespace
