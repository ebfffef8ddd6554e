#include "tvutil2/threads/simple_thread.h"

#include "tvutil2/platform/objects/threads.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

class Worker : public NThread::CSimpleThread {
  public:
    ~Worker() override { End(); }
    void Run() override {
        ran_on = GetCurrentThreadId();
        ++runs;
        SetEvent(started);
        if (WaitForSingleObject(GetKillEvent(), INFINITE) == WAIT_OBJECT_0) ++kills;
    }
    void wait_for_start() { WaitForSingleObject(started, INFINITE); }

    HANDLE started = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::atomic<int> runs = 0;
    std::atomic<int> kills = 0;
    std::atomic<DWORD> ran_on = 0;
};

TEST(SimpleThread, RunsFromBeginToEndAndAgain) {
    Worker worker;
    EXPECT_EQ(worker.GetThreadID(), 0U);
    EXPECT_EQ(worker.GetKillEvent(), nullptr);
    worker.End();
    for (int round = 1; round <= 2; ++round) {
        worker.Begin();
        auto* const kill_event = worker.GetKillEvent();
        const auto id = worker.GetThreadID();
        worker.Begin();
        EXPECT_EQ(worker.GetKillEvent(), kill_event);
        EXPECT_EQ(worker.GetThreadID(), id);
        worker.wait_for_start();
        EXPECT_EQ(worker.ran_on, id);
        worker.End();
        worker.End();
        EXPECT_EQ(worker.runs, round);
        EXPECT_EQ(worker.kills, round);
        EXPECT_FALSE(SetEvent(kill_event));
    }
    CloseHandle(worker.started);
}

TEST(SimpleThread, DestructionStopsIt) {
    std::atomic<bool> has_ended = false;
    {
        class Body : public NThread::CSimpleThread {
          public:
            explicit Body(std::atomic<bool>& flag) : m_flag(flag) {}
            ~Body() override { End(); }
            void Run() override {
                WaitForSingleObject(GetKillEvent(), INFINITE);
                m_flag = true;
            }

          private:
            std::atomic<bool>& m_flag;
        } body(has_ended);
        body.Begin();
    }
    EXPECT_TRUE(has_ended);
    NThread::CSimpleThread returns_at_once;
    returns_at_once.Begin();
    returns_at_once.End();
}

}  // namespace
