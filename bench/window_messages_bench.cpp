// Messages beside Qt's posted events: from one thread to another, and inside of one.
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <benchmark/benchmark.h>
#include <sched.h>

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <atomic>
#include <future>
#include <thread>

namespace {

constexpr int kBatch = 8000;  // below the limit of a queue

std::atomic<std::int64_t> g_received{0};

// Lets the receiver have what was posted, whichever of both sides.
void wait_until_received(std::int64_t count) {
    while (g_received.load(std::memory_order_acquire) < count) sched_yield();
}

LRESULT count_message(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message != WM_USER) return DefWindowProcW(window, message, wparam, lparam);
    g_received.fetch_add(1, std::memory_order_release);
    return 0;
}

HWND make_window() {
    [[maybe_unused]] static const auto atom = [] {
        WNDCLASSW description{};
        description.lpfnWndProc = count_message;
        description.lpszClassName = u"Bench::Window";
        return RegisterClassW(&description);
    }();
    return CreateWindowExW(0, u"Bench::Window", u"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr,
                           nullptr);
}

void run_loop() {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
}

void posted_between_threads_ours(benchmark::State& state) {
    std::promise<HWND> made;
    std::thread receiver([&made] {
        made.set_value(make_window());
        run_loop();
    });
    auto* const window = made.get_future().get();
    std::int64_t posted = 0;
    g_received = 0;
    for (auto _ : state) {
        for (int i = 0; i < kBatch; ++i) PostMessageW(window, WM_USER, 0, 0);
        posted += kBatch;
        wait_until_received(posted);
    }
    state.SetItemsProcessed(posted);
    PostThreadMessageW(GetWindowThreadProcessId(window, nullptr), WM_QUIT, 0, 0);
    receiver.join();
}

class Receiver : public QObject {
  public:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User) return QObject::event(event);
        g_received.fetch_add(1, std::memory_order_release);
        return true;
    }
};

// Qt's loops want one, on the first thread.
void make_application() {
    static int count = 1;
    static char name[] = "bench";
    static char* arguments[] = {name, nullptr};
    [[maybe_unused]] static const QCoreApplication application(count, arguments);
}

void posted_between_threads_qt(benchmark::State& state) {
    make_application();
    QThread thread;
    Receiver receiver;
    receiver.moveToThread(&thread);
    thread.start();
    std::int64_t posted = 0;
    g_received = 0;
    for (auto _ : state) {
        for (int i = 0; i < kBatch; ++i) {
            QCoreApplication::postEvent(&receiver, new QEvent(QEvent::User));
        }
        posted += kBatch;
        wait_until_received(posted);
    }
    state.SetItemsProcessed(posted);
    thread.quit();
    thread.wait();
}

void posted_in_one_thread_ours(benchmark::State& state) {
    auto* const window = make_window();
    MSG message;
    for (auto _ : state) {
        for (int i = 0; i < 100; ++i) PostMessageW(window, WM_USER, 0, 0);
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    }
    state.SetItemsProcessed(state.iterations() * 100);
    DestroyWindow(window);
}

void posted_in_one_thread_qt(benchmark::State& state) {
    make_application();
    Receiver receiver;
    for (auto _ : state) {
        for (int i = 0; i < 100; ++i) {
            QCoreApplication::postEvent(&receiver, new QEvent(QEvent::User));
        }
        QCoreApplication::sendPostedEvents();
    }
    state.SetItemsProcessed(state.iterations() * 100);
}

void sent_in_one_thread_ours(benchmark::State& state) {
    auto* const window = make_window();
    for (auto _ : state) SendMessageW(window, WM_USER, 0, 0);
    DestroyWindow(window);
}

void sent_in_one_thread_qt(benchmark::State& state) {
    Receiver receiver;
    QEvent event(QEvent::User);
    for (auto _ : state) QCoreApplication::sendEvent(&receiver, &event);
}

BENCHMARK(posted_between_threads_ours)->Name("8,000 posts, two threads|ours")->UseRealTime();
BENCHMARK(posted_between_threads_qt)->Name("8,000 posts, two threads|Qt postEvent")->UseRealTime();
BENCHMARK(posted_in_one_thread_ours)->Name("100 posts, one thread|ours");
BENCHMARK(posted_in_one_thread_qt)->Name("100 posts, one thread|Qt postEvent");
BENCHMARK(sent_in_one_thread_ours)->Name("send, one thread|ours");
BENCHMARK(sent_in_one_thread_qt)->Name("send, one thread|Qt sendEvent");

}  // namespace
