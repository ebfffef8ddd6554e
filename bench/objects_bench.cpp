// Events, mutexes, critical sections and timers beside what the host offers for the same purpose.
#include "tvutil2/platform/objects/critical_section.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/threads/thread_timer.h"

#include <benchmark/benchmark.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <QMutex>
#include <QSemaphore>
#include <array>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <semaphore>
#include <thread>

#include "bench/support/winpr_peer.h"

namespace {

// A second thread for the life of the program: the C library's locks cost less than an atomic
// operation in a process that has one thread, which no process of this library's users is.
class SecondThread {
  public:
    ~SecondThread() {
        SetEvent(m_end);
        m_thread.join();
        CloseHandle(m_end);
    }

  private:
    HANDLE m_end = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread m_thread{[this] { WaitForSingleObject(m_end, INFINITE); }};
} second_thread;

void section_ours(benchmark::State& state) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    for (auto _ : state) {
        EnterCriticalSection(&section);
        LeaveCriticalSection(&section);
    }
    DeleteCriticalSection(&section);
}
void section_std(benchmark::State& state) {
    std::recursive_mutex mutex;
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}
void section_qt(benchmark::State& state) {
    QRecursiveMutex mutex;
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}

void mutex_ours(benchmark::State& state) {
    auto* const mutex = CreateMutexW(nullptr, FALSE, nullptr);
    for (auto _ : state) {
        WaitForSingleObject(mutex, INFINITE);
        ReleaseMutex(mutex);
    }
    CloseHandle(mutex);
}
void mutex_std(benchmark::State& state) {
    std::mutex mutex;
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}

void event_ours(benchmark::State& state) {
    auto* const event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    for (auto _ : state) {
        SetEvent(event);
        WaitForSingleObject(event, INFINITE);
    }
    CloseHandle(event);
}
void mutex_winpr(benchmark::State& state) {
    auto* const mutex = winpr_peer::new_mutex();
    for (auto _ : state) {
        winpr_peer::wait(mutex);
        winpr_peer::release(mutex);
    }
    winpr_peer::close(mutex);
}

void event_std(benchmark::State& state) {
    std::binary_semaphore event(0);
    for (auto _ : state) {
        event.release();
        event.acquire();
    }
}
void event_winpr(benchmark::State& state) {
    // Its events don't reset by themselves.
    auto* const event = winpr_peer::new_event();
    for (auto _ : state) {
        winpr_peer::set(event);
        winpr_peer::wait(event);
        winpr_peer::reset(event);
    }
    winpr_peer::close(event);
}
void event_eventfd(benchmark::State& state) {
    const int event = eventfd(0, EFD_CLOEXEC);
    std::uint64_t value = 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(event, &value, sizeof value));
        benchmark::DoNotOptimize(read(event, &value, sizeof value));
    }
    close(event);
}

// One of eight, of which the last one is set: what a watcher with several sources waits on.
void wait_any_ours(benchmark::State& state) {
    std::array<HANDLE, 8> events{};
    for (auto& event : events) event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    for (auto _ : state) {
        SetEvent(events.back());
        WaitForMultipleObjects(8, events.data(), FALSE, INFINITE);
    }
    for (auto* event : events) CloseHandle(event);
}
void wait_any_eventfd(benchmark::State& state) {
    std::array<pollfd, 8> events{};
    for (auto& event : events) event = {eventfd(0, EFD_CLOEXEC), POLLIN, 0};
    std::uint64_t value = 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(events.back().fd, &value, sizeof value));
        poll(events.data(), events.size(), -1);
        benchmark::DoNotOptimize(read(events.back().fd, &value, sizeof value));
    }
    for (const auto& event : events) close(event.fd);
}

// Two threads that take turns: `give` and `take` have a side each.
template <class Give, class Take>
void take_turns(benchmark::State& state, Give give, Take take) {
    bool is_over = false;  // written before the last turn is given
    std::thread other([&] {
        for (;;) {
            take(0);
            if (is_over) return;
            give(1);
        }
    });
    for (auto _ : state) {
        give(0);
        take(1);
    }
    is_over = true;
    give(0);
    other.join();
}

// Waits with a millisecond's gap: what is measured is the processor time of the thread that waits.
template <class Give, class Take>
void wait_long(benchmark::State& state, Give give, Take take) {
    const auto own_time = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    std::thread other([&, rounds = state.max_iterations] {
        for (benchmark::IterationCount i = 0; i < rounds; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            give();
        }
    });
    for (auto _ : state) {
        const auto start = own_time();
        take();
        state.SetIterationTime(own_time() - start);
    }
    other.join();
}
void long_ours(benchmark::State& state) {
    constexpr LONG kMost = 0x7FFFFFFF;
    auto* const given = CreateSemaphoreW(nullptr, 0, kMost, nullptr);
    wait_long(
        state, [&] { ReleaseSemaphore(given, 1, nullptr); },
        [&] { WaitForSingleObject(given, INFINITE); });
    CloseHandle(given);
}
void long_std(benchmark::State& state) {
    std::mutex mutex;
    std::condition_variable changed;
    int given = 0;
    const auto give = [&] {
        {
            const std::lock_guard guard(mutex);
            ++given;
        }
        changed.notify_one();
    };
    const auto take = [&] {
        std::unique_lock guard(mutex);
        changed.wait(guard, [&] { return given > 0; });
        --given;
    };
    wait_long(state, give, take);
}

void turns_ours(benchmark::State& state) {
    std::array<HANDLE, 2> events{};
    for (auto& event : events) event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    take_turns(
        state, [&](std::size_t side) { SetEvent(events[side]); },
        [&](std::size_t side) { WaitForSingleObject(events[side], INFINITE); });
    for (auto* event : events) CloseHandle(event);
}
void turns_eventfd(benchmark::State& state) {
    const std::array<int, 2> events{eventfd(0, EFD_CLOEXEC), eventfd(0, EFD_CLOEXEC)};
    const auto give = [&](std::size_t side) {
        const std::uint64_t value = 1;
        benchmark::DoNotOptimize(write(events[side], &value, sizeof value));
    };
    const auto take = [&](std::size_t side) {
        std::uint64_t value = 0;
        benchmark::DoNotOptimize(read(events[side], &value, sizeof value));
    };
    take_turns(state, give, take);
    for (const auto event : events) close(event);
}
void turns_std(benchmark::State& state) {
    std::mutex mutex;
    std::array<std::condition_variable, 2> changed;
    std::array<bool, 2> is_set{};
    const auto give = [&](std::size_t side) {
        {
            const std::lock_guard guard(mutex);
            is_set[side] = true;
        }
        changed[side].notify_one();
    };
    const auto take = [&](std::size_t side) {
        std::unique_lock guard(mutex);
        changed[side].wait(guard, [&] { return is_set[side]; });
        is_set[side] = false;
    };
    take_turns(state, give, take);
}
void turns_qt(benchmark::State& state) {
    std::array<QSemaphore, 2> semaphores;
    take_turns(
        state, [&](std::size_t side) { semaphores[side].release(); },
        [&](std::size_t side) { semaphores[side].acquire(); });
}

void turns_winpr(benchmark::State& state) {
    const std::array<winpr_peer::Object, 2> events{winpr_peer::new_semaphore(),
                                                   winpr_peer::new_semaphore()};
    take_turns(
        state, [&](std::size_t side) { winpr_peer::add(events[side]); },
        [&](std::size_t side) { winpr_peer::wait(events[side]); });
    for (auto* event : events) winpr_peer::close(event);
}

// Between processes a name stands for the object; here two handles of it in one process.
void named_event(benchmark::State& state) {
    auto* const event = CreateEventW(nullptr, FALSE, FALSE, u"Local\\bench");
    for (auto _ : state) {
        SetEvent(event);
        WaitForSingleObject(event, INFINITE);
    }
    CloseHandle(event);
}

// Ticks without an interval: what is measured is a pass over the table and little more.
class Passes : public NThread::CTimerListener {
  public:
    explicit Passes(benchmark::State& state) : m_state(state) {}
    void run(unsigned entries, unsigned short period) {
        NThread::CTimer timer;
        for (unsigned id = 1; id <= entries; ++id) timer.Record(id, &m_silent, period);
        timer.Record(entries + 1, this, 1);
        timer.Initialize(0);
        WaitForSingleObject(m_done, INFINITE);
        timer.End();
        CloseHandle(m_done);
    }

  protected:
    // Each tick is one round of the benchmark.
    void OnTimeEllipse(NThread::CTimer* /*timer*/, unsigned /*id*/) override {
        if (m_is_over || m_state.KeepRunning()) return;
        m_is_over = true;
        SetEvent(m_done);
    }

  private:
    benchmark::State& m_state;
    bool m_is_over = false;
    NThread::CTimerListener m_silent;
    HANDLE m_done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
};
void timer_idle(benchmark::State& state) {
    Passes(state).run(1000, 0);
}
void timer_busy(benchmark::State& state) {
    Passes(state).run(1000, 1);
}

BENCHMARK(section_ours)->Name("critical section, free|ours");
BENCHMARK(section_std)->Name("critical section, free|std::recursive_mutex");
BENCHMARK(section_qt)->Name("critical section, free|QRecursiveMutex");
BENCHMARK(mutex_ours)->Name("mutex, free|ours");
BENCHMARK(mutex_std)->Name("mutex, free|std::mutex");
BENCHMARK(mutex_winpr)->Name("mutex, free|WinPR");
BENCHMARK(event_ours)->Name("event, set and taken|ours");
BENCHMARK(event_std)->Name("event, set and taken|std::binary_semaphore");
BENCHMARK(event_winpr)->Name("event, set and taken|WinPR");
BENCHMARK(event_eventfd)->Name("event, set and taken|eventfd");
BENCHMARK(wait_any_ours)->Name("wait for one of 8|ours");
BENCHMARK(wait_any_eventfd)->Name("wait for one of 8|eventfd and poll");
BENCHMARK(turns_ours)->Name("two threads take turns|ours")->UseRealTime();
BENCHMARK(turns_eventfd)->Name("two threads take turns|eventfd")->UseRealTime();
BENCHMARK(turns_std)->Name("two threads take turns|std::condition_variable")->UseRealTime();
BENCHMARK(turns_winpr)->Name("two threads take turns|WinPR")->UseRealTime();
BENCHMARK(long_ours)->Name("wait of 1 ms, processor time|ours")->UseManualTime()->Iterations(1000);
BENCHMARK(long_std)
    ->Name("wait of 1 ms, processor time|std::condition_variable")
    ->UseManualTime()
    ->Iterations(1000);
BENCHMARK(named_event)->Name("named event, set and taken|ours");
BENCHMARK(timer_idle)->Name("timer pass, 1000 entries, none due|ours")->UseRealTime();
BENCHMARK(timer_busy)->Name("timer pass, 1000 entries, all due|ours")->UseRealTime();
BENCHMARK(turns_qt)->Name("two threads take turns|QSemaphore")->UseRealTime();

}  // namespace
