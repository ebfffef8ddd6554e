#include "tvutil2/threads/window_timer.h"

#include "tvutil2/framework/map.h"
#include "tvutil2/platform/window/messages.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

class Listener : public CTimerListener {
  public:
    void OnTimer(CTimer* timer, unsigned id) override {
        last = timer;
        ticks.push_back(id);
        if (then) then();
    }
    std::vector<unsigned> ticks;
    CTimer* last = nullptr;
    std::function<void()> then;
};

// Runs the loop until the next message has been dispatched.
void dispatch_one() {
    MSG message{};
    ASSERT_TRUE(GetMessageW(&message, nullptr, 0, 0));
    DispatchMessageW(&message);
}

TEST(WindowTimer, TicksToItsListenerAlone) {
    Listener first, second;
    CTimer a(&first), b;
    EXPECT_EQ(b.SetListener(&second), nullptr);
    EXPECT_EQ(a.Start(5, 10), 1);
    EXPECT_EQ(b.Start(6, 10), 1);
    while (first.ticks.empty() || second.ticks.empty()) dispatch_one();
    EXPECT_EQ(first.ticks.front(), 5U);
    EXPECT_EQ(second.ticks.front(), 6U);
    EXPECT_EQ(second.last, &b);

    EXPECT_EQ(a.Start(5, 0), 1);  // the end of it
    b.SetListener(nullptr);       // ticks go on, and do nothing
    const auto before = second.ticks.size();
    dispatch_one();
    EXPECT_EQ(second.ticks.size(), before);
    b.Stop(6);
    MSG message{};
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST(WindowTimer, IsFreshUntilItsFirstStart) {
    CTimer timer;
    timer.Stop(1);
    EXPECT_EQ(timer.Start(1, 0), 1);
    EXPECT_EQ(timer.Start(1, 0xFFFFFFFF), 1);
}

TEST(WindowTimer, EndsInItsOwnTick) {
    Listener listener;
    auto timer = std::make_unique<CTimer>(&listener);
    listener.then = [&] { timer.reset(); };
    timer->Start(1, 10);
    dispatch_one();
    EXPECT_EQ(listener.ticks.size(), 1U);
    MSG message{};
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST(Map, KeepsElementsAndIsWalkedWhileTheyGo) {
    CMap<int, int, CString, const char16_t*> map;
    for (int i = 0; i < 100; ++i) map.SetAt(i, u"x");
    map[7] = u"seven";
    CString text;
    EXPECT_TRUE(map.Lookup(7, text));
    EXPECT_EQ(text, u"seven");
    EXPECT_FALSE(map.Lookup(100, text));
    int count = 0;
    for (auto* position = map.GetStartPosition(); position != nullptr; ++count) {
        int key = -1;
        map.GetNextAssoc(position, key, text);
        EXPECT_TRUE(map.RemoveKey(key));
    }
    EXPECT_EQ(count, 100);
    EXPECT_TRUE(map.IsEmpty());
    POSITION none = nullptr;
    int key = 0;
    EXPECT_THROW(map.GetNextAssoc(none, key, text), CInvalidArgException);
}

}  // namespace
