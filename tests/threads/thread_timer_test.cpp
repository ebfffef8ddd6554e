#include "tvutil2/threads/thread_timer.h"

#include "tvutil2/platform/objects/objects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <random>
#include <thread>
#include <vector>

namespace {

using NThread::CTimer;
using Calls = std::vector<unsigned>;

// Notes which timers fire, and lets a test wait until that is enough.
class Listener : public NThread::CTimerListener {
  public:
    explicit Listener(std::function<bool(const Calls&)> is_enough = {})
        : m_is_enough(std::move(is_enough)) {}
    ~Listener() { CloseHandle(m_done); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    void wait() const { WaitForSingleObject(m_done, INFINITE); }

    Calls calls;  // of the timer's thread; read once it has ended
    std::function<void(CTimer&, unsigned)> also;

  protected:
    void OnTimeEllipse(CTimer* timer, unsigned id) override {
        calls.push_back(id);
        if (also) also(*timer, id);
        if (m_is_enough && m_is_enough(calls)) SetEvent(m_done);
    }

  private:
    std::function<bool(const Calls&)> m_is_enough;
    HANDLE m_done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
};

auto count_of(std::size_t count) {
    return [count](const Calls& calls) { return calls.size() >= count; };
}

TEST(ThreadTimer, FiresEveryPeriodInTheOrderOfIds) {
    Listener listener(count_of(9));
    CTimer timer;
    timer.Remove(5);
    timer.Record(7, &listener, 3);
    timer.Record(2, &listener, 2);
    timer.Record(4, &listener, 65535);
    timer.Record(1, &listener, 0);
    timer.Record(9, &listener, 9);
    timer.Record(9, &listener, 1);  // replaced before it fires
    EXPECT_EQ(timer.Initialize(1), 1);
    listener.wait();
    timer.End();
    // Ticks 1 to 5, and what else came until the end.
    listener.calls.resize(9);
    EXPECT_EQ(listener.calls, (Calls{9, 2, 9, 7, 9, 2, 9, 9, 2}));
}

// Ticks of no time at all, so that 65,536 of them pass soon.
TEST(ThreadTimer, APeriodOfNothingFiresWhenTheCountWraps) {
    Listener often;
    Listener seldom(count_of(1));
    CTimer timer;
    timer.Record(1, &seldom, 0);
    timer.Record(2, &often, 1);
    std::size_t ticks = 0;
    seldom.also = [&](CTimer& /*timer*/, unsigned /*id*/) {
        if (ticks == 0) ticks = often.calls.size() + 1;
    };
    timer.Initialize(0);
    seldom.wait();
    timer.End();
    EXPECT_EQ(ticks, 65536U);
}

TEST(ThreadTimer, ListenersMayChangeTheTable) {
    Listener listener(count_of(6));
    listener.also = [&](CTimer& timer, unsigned id) {
        if (id != 3) return;
        timer.Remove(3);
        timer.Remove(4);
        timer.Record(1, &listener, 1);
    };
    CTimer timer;
    for (const unsigned id : {3U, 4U, 5U}) timer.Record(id, &listener, 1);
    timer.Initialize(1);
    listener.wait();
    timer.End();
    listener.calls.resize(6);
    EXPECT_EQ(listener.calls, (Calls{3, 5, 1, 5, 1, 5}));
}

TEST(ThreadTimer, OtherThreadsMayChangeTheTableWhileItIsWalked) {
    Listener listener(count_of(100));
    CTimer timer;
    for (unsigned id = 0; id < 200; id += 2) timer.Record(id, &listener, 3);
    timer.Initialize(0);
    std::atomic<bool> is_over = false;
    std::thread changer([&] {
        for (unsigned i = 0; !is_over; ++i) {
            timer.Record(i % 200, &listener, static_cast<unsigned short>(i % 4));
            timer.Remove((i * 7) % 200);
            if (i % 50 == 0) timer.Record(2, &listener, 1);
        }
    });
    listener.wait();
    is_over = true;
    changer.join();
    // Nothing fires once the last entry is gone and the call under way is over.
    for (unsigned id = 0; id < 200; ++id) timer.Remove(id);
    timer.End();
}

// A table as it should behave, with ticks of its own.
struct Model {
    struct Entry {
        unsigned short period, count;
    };
    std::map<unsigned, Entry> table;
    void Record(unsigned id, NThread::CTimerListener* /*listener*/, unsigned short period) {
        table[id] = {period, 0};
    }
    void Remove(unsigned id) { table.erase(id); }
    template <class Fire>
    void tick(Fire fire) {
        for (auto each = table.begin(); each != table.end();) {
            const auto id = each->first;
            if (++each->second.count == each->second.period) {
                each->second.count = 0;
                fire(id);
            }
            each = table.upper_bound(id);
        }
    }
};

// What a listener does when it is called: up to three changes, wherever the walk stands.
template <class Table>
void change(Table& table, NThread::CTimerListener* listener, std::mt19937& random) {
    constexpr unsigned kKept = 20;  // always there
    for (auto count = random() % 4; count != 0; --count) {
        const auto id = static_cast<unsigned>(random() % 40);
        const auto period = static_cast<unsigned short>(random() % 6);
        if (id == kKept || period == 0) {
            table.Record(kKept, listener, 1);
        } else if (random() % 3 == 0) {
            table.Remove(id);
        } else {
            table.Record(id, listener, period);
        }
    }
}

TEST(ThreadTimer, FiresAsAModelDoesWhileListenersChangeTheTable) {
    constexpr std::size_t kCalls = 5000;
    for (const unsigned seed : {41U, 42U, 43U}) {
        Model model;
        Calls expected;
        std::mt19937 random(seed);
        model.Record(20, nullptr, 1);
        while (expected.size() < kCalls) {
            model.tick([&](unsigned id) {
                expected.push_back(id);
                change(model, nullptr, random);
            });
        }
        Listener listener(count_of(kCalls));
        CTimer timer;
        random.seed(seed);
        listener.also = [&](CTimer& its, unsigned /*id*/) { change(its, &listener, random); };
        timer.Record(20, &listener, 1);
        timer.Initialize(0);
        listener.wait();
        timer.End();
        expected.resize(kCalls);
        listener.calls.resize(kCalls);
        ASSERT_EQ(listener.calls, expected) << "seed " << seed;
    }
}

TEST(ThreadTimer, DestructionDoesNotWaitForTheTick) {
    Listener listener;
    const auto start = std::chrono::steady_clock::now();
    {
        CTimer timer;
        timer.Record(1, &listener, 1);
        timer.Initialize(3600000);
        timer.Initialize(1800000);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(1));
    EXPECT_TRUE(listener.calls.empty());
}

}  // namespace
