#include "tvutil2/threads/folder_monitor.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "tests/support/profile.h"

namespace {

class Listener : public CFolderMonitorListener {
  public:
    void OnFolderChange(DWORD action, const char16_t* path) override {
        if (on_call) on_call();
        note(std::to_string(action) + " " +
             std::string(path, path + std::char_traits<char16_t>::length(path)));
    }
    void OnFolderOverflow() override { note("overflow"); }

    void wait_for(const std::string& call) {
        std::unique_lock guard(m_lock);
        m_news.wait(guard, [&] { return m_calls.count(call) != 0; });
    }
    [[nodiscard]] std::multiset<std::string> calls() {
        const std::lock_guard guard(m_lock);
        return m_calls;
    }

    std::function<void()> on_call;

  private:
    void note(const std::string& call) {
        const std::lock_guard guard(m_lock);
        m_calls.insert(call);
        m_news.notify_all();
    }

    std::mutex m_lock;
    std::condition_variable m_news;
    std::multiset<std::string> m_calls;
};

std::string told(DWORD action, const std::string& host_path) {
    const auto path = tests::platform_path(host_path);
    return std::to_string(action) + " " + std::string(path.begin(), path.end());
}

// A monitor begins to watch on its own thread and tells nobody when: files are made until one is
// reported.
void wait_until_watched(Listener& listener, const std::string& folder) {
    static int number = 0;
    for (;;) {
        const auto probe = folder + "/probe" + std::to_string(number++);
        tests::write_file(probe, "");
        for (int i = 0; i < 100; ++i) {
            if (listener.calls().count(told(FILE_ACTION_ADDED, probe)) != 0) return;
            std::this_thread::yield();
        }
    }
}

TEST(FolderMonitor, ReportsFullPathsOfAllItsFolders) {
    const auto flat = tests::new_folder();
    const auto tree = tests::new_folder();
    mkdir((flat + "/sub").c_str(), 0700);
    mkdir((tree + "/sub").c_str(), 0700);
    Listener listener;
    CFolderMonitor monitor(&listener);
    monitor.AddDirectory((tests::platform_path(flat) + u"\\").c_str(), 0);
    monitor.AddDirectory(u"C:\\no\\such\\folder", 1);
    monitor.AddDirectory(nullptr, 0);
    EXPECT_EQ(monitor.BeginFolderMoniter(), 1);
    EXPECT_EQ(monitor.BeginFolderMoniter(), 0);
    monitor.AddDirectory(tests::platform_path(tree).c_str(), 1);
    wait_until_watched(listener, flat);
    wait_until_watched(listener, tree);
    tests::write_file(flat + "/sub/unseen", "");
    tests::write_file(flat + "/pro~1.txt", "");
    tests::write_file(tree + "/sub/seen", "");
    listener.wait_for(told(FILE_ACTION_ADDED, flat + "/pro~1.txt"));
    listener.wait_for(told(FILE_ACTION_ADDED, tree + "/sub/seen"));
    EXPECT_EQ(listener.calls().count(told(FILE_ACTION_ADDED, flat + "/sub/unseen")), 0U);
    monitor.EndFolderMoniter();
}

TEST(FolderMonitor, WhatABlockedListenerCantTakeIsOneOverflow) {
    const auto folder = tests::new_folder();
    Listener listener;
    std::mutex gate;
    listener.on_call = [&] { const std::lock_guard pass(gate); };
    CFolderMonitor monitor(&listener);
    monitor.AddDirectory(tests::platform_path(folder).c_str(), 0);
    monitor.BeginFolderMoniter();
    wait_until_watched(listener, folder);
    {
        const std::lock_guard closed(gate);
        for (int i = 0; i < 3000; ++i) tests::write_file(folder + "/" + std::to_string(i), "");
    }
    listener.wait_for("overflow");
    EXPECT_EQ(listener.calls().count("overflow"), 1U);
    wait_until_watched(listener, folder);
    monitor.EndFolderMoniter();
}

TEST(FolderMonitor, NoCallComesBehindItsEnd) {
    const auto folder = tests::new_folder();
    Listener listener;
    std::atomic<bool> is_over = false;
    std::atomic<bool> is_late = false;
    listener.on_call = [&] { is_late = is_late || is_over; };
    CFolderMonitor monitor(&listener);
    monitor.EndFolderMoniter();  // nothing to end
    monitor.AddDirectory(tests::platform_path(folder).c_str(), 0);
    monitor.BeginFolderMoniter();
    wait_until_watched(listener, folder);
    std::atomic<bool> goes_on = true;
    std::thread maker([&] {
        for (int i = 0; goes_on; ++i) tests::write_file(folder + "/" + std::to_string(i % 50), "");
    });
    const CFolderMonitor copy(monitor);
    monitor.EndFolderMoniter();
    is_over = true;
    for (int i = 0; i < 50; ++i) tests::write_file(folder + "/late" + std::to_string(i), "");
    goes_on = false;
    maker.join();
    EXPECT_FALSE(is_late);
}

}  // namespace
