// Events, mutexes and critical sections beside what the host offers for the same purpose.
#include "tvutil2/platform/objects/critical_section.h"
#include "tvutil2/platform/objects/objects.h"

#include <benchmark/benchmark.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <QMutex>
#include <QSemaphore>
#include <array>
#include <condition_variable>
#include <mutex>
#include <thread>

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
    std::recursive_timed_mutex mutex;
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

BENCHMARK(section_ours)->Name("critical section, free|ours");
BENCHMARK(section_std)->Name("critical section, free|std::recursive_mutex");
BENCHMARK(section_qt)->Name("critical section, free|QRecursiveMutex");
BENCHMARK(mutex_ours)->Name("mutex, free|ours");
BENCHMARK(mutex_std)->Name("mutex, free|std::recursive_timed_mutex");
BENCHMARK(event_ours)->Name("event, set and taken|ours");
BENCHMARK(event_eventfd)->Name("event, set and taken|eventfd");
BENCHMARK(wait_any_ours)->Name("wait for one of 8|ours");
BENCHMARK(wait_any_eventfd)->Name("wait for one of 8|eventfd and poll");
BENCHMARK(turns_ours)->Name("two threads take turns|ours")->UseRealTime();
BENCHMARK(turns_eventfd)->Name("two threads take turns|eventfd")->UseRealTime();
BENCHMARK(turns_std)->Name("two threads take turns|std::condition_variable")->UseRealTime();
BENCHMARK(turns_qt)->Name("two threads take turns|QSemaphore")->UseRealTime();

}  // namespace
