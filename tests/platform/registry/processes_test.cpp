// One hive in several processes: nothing lost, nothing stale, and everyone told of changes.
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/registry/registry.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <string>
#include <thread>

namespace {

class Pipe {
  public:
    Pipe() { EXPECT_EQ(pipe(m_ends.data()), 0); }
    ~Pipe() {
        close(m_ends[0]);
        close_write();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    bool put(DWORD value) const { return write(m_ends[1], &value, sizeof value) == sizeof value; }
    // False when every writer is gone.
    bool get(DWORD& value) const { return read(m_ends[0], &value, sizeof value) == sizeof value; }
    void close_write() {
        if (m_ends[1] >= 0) close(m_ends[1]);
        m_ends[1] = -1;
    }

  private:
    std::array<int, 2> m_ends{};
};

template <class Work>
pid_t in_child(Work work) {
    const pid_t child = fork();
    if (child == 0) _exit(work() ? 0 : 1);
    EXPECT_GT(child, 0);
    return child;
}

bool succeeded(pid_t child) {
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

HKEY made_key(const char16_t* name) {
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                              nullptr),
              0);
    return key;
}

// A process that was there before this one had a thread that watches: the allocator of a checked
// build has locks that a fork doesn't take.
class Neighbour {
  public:
    /// `work` gets the number of the turn, and tells whether it has done it.
    template <class Work>
    explicit Neighbour(Work work)
        : m_process(in_child([&] {
              m_asked.close_write();
              for (DWORD turn = 0; m_asked.get(turn);) m_done.put(work(turn) ? 1 : 0);
              return true;
          })) {}
    ~Neighbour() {
        m_asked.close_write();
        EXPECT_TRUE(succeeded(m_process));
    }
    Neighbour(const Neighbour&) = delete;
    Neighbour& operator=(const Neighbour&) = delete;

    bool does(DWORD turn) const {
        DWORD is_done = 0;
        return m_asked.put(turn) && m_done.get(is_done) && is_done == 1;
    }

  private:
    Pipe m_asked;
    Pipe m_done;
    pid_t m_process;
};

LONG set(HKEY key, const std::u16string& name, DWORD value) {
    return RegSetValueExW(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                          sizeof value);
}

constexpr DWORD kNone = 0xFFFFFFFF;

DWORD get(HKEY key, const std::u16string& name) {
    DWORD value = kNone;
    DWORD size = sizeof value;
    const auto error = RegQueryValueExW(key, name.c_str(), nullptr, nullptr,
                                        reinterpret_cast<BYTE*>(&value), &size);
    return error == 0 ? value : kNone;
}

std::u16string numbered(char16_t first, DWORD number) {
    std::u16string name(1, first);
    for (const char digit : std::to_string(number)) name.push_back(static_cast<char16_t>(digit));
    return name;
}

TEST(RegistryProcesses, WritersAtOnceLoseNothing) {
    constexpr DWORD kRounds = 100;
    auto* const key = made_key(u"Shared");
    // The parent's own key serves in its children.
    const auto write_all = [key](char16_t who) {
        for (DWORD i = 0; i < kRounds; ++i) {
            if (set(key, numbered(who, i), i) != 0) return false;
        }
        return true;
    };
    const auto first = in_child([&] { return write_all(u'a'); });
    const auto second = in_child([&] { return write_all(u'b'); });
    EXPECT_TRUE(write_all(u'c'));
    EXPECT_TRUE(succeeded(first));
    EXPECT_TRUE(succeeded(second));
    for (const char16_t who : {u'a', u'b', u'c'}) {
        for (DWORD i = 0; i < kRounds; ++i) EXPECT_EQ(get(key, numbered(who, i)), i);
    }
    RegCloseKey(key);
}

TEST(RegistryProcesses, AWriteThatReturnedIsSeenElsewhereAtOnce) {
    auto* const key = made_key(u"Fresh");
    ASSERT_EQ(set(key, u"v", 0), 0);
    Pipe asked;
    Pipe written;
    const auto child = in_child([&] {
        asked.close_write();
        DWORD value = 0;
        while (asked.get(value)) {
            if (set(key, u"v", value) != 0 || !written.put(value)) return false;
        }
        return true;
    });
    written.close_write();  // so that the end of the child, however it comes, is noticed
    for (DWORD round = 1; round <= 300; ++round) {
        // Read twice, so that the second answer comes from what this process remembers.
        EXPECT_EQ(get(key, u"v"), round - 1);
        EXPECT_EQ(get(key, u"v"), round - 1);
        DWORD done = 0;
        ASSERT_TRUE(asked.put(round) && written.get(done));
        ASSERT_EQ(get(key, u"v"), round);
    }
    asked.close_write();
    EXPECT_TRUE(succeeded(child));
    RegCloseKey(key);
}

TEST(RegistryProcesses, AKilledWriterLosesNothingItWasToldIsWritten) {
    auto* const key = made_key(u"Killed");
    for (DWORD round = 0; round < 30; ++round) {
        Pipe written;
        const auto child = in_child([&] {
            for (DWORD i = 0;; ++i) {
                if (set(key, numbered(u'k', i), round * 1000 + i) != 0 || !written.put(i)) {
                    return false;
                }
            }
        });
        written.close_write();
        DWORD last = kNone;
        // The child goes on writing while it dies, each round at another point.
        for (DWORD i = 0; i <= round % 7; ++i) ASSERT_TRUE(written.get(last));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        while (written.get(last)) {
        }
        for (DWORD i = 0; i <= last; ++i) {
            ASSERT_EQ(get(key, numbered(u'k', i)), round * 1000 + i) << round;
        }
        ASSERT_EQ(set(key, u"after", round), 0);
    }
    RegCloseKey(key);
}

TEST(RegistryProcesses, ChangesOfAnotherProcessSetTheEvent) {
    struct Case {
        const char* what;
        BOOL subtree;
        DWORD filter;
        bool below, is_name, is_told;
    };
    const Case cases[] = {
        {"value", 0, REG_NOTIFY_CHANGE_LAST_SET, false, false, true},
        {"value, names only", 0, REG_NOTIFY_CHANGE_NAME, false, false, false},
        {"sub key", 0, REG_NOTIFY_CHANGE_NAME, false, true, true},
        {"sub key, values only", 0, REG_NOTIFY_CHANGE_LAST_SET, false, true, false},
        {"value below", 1, REG_NOTIFY_CHANGE_LAST_SET, true, false, true},
        {"value below, key alone", 0, REG_NOTIFY_CHANGE_LAST_SET, true, false, false},
    };
    const Neighbour other([&](DWORD turn) {
        const auto& test = cases[turn];
        auto* const key = made_key(test.below ? u"Told\\Below" : u"Told");
        if (!test.is_name) return set(key, u"v", 1) == 0;
        HKEY made = nullptr;
        return RegCreateKeyExW(key, u"New", 0, nullptr, 0, KEY_READ, nullptr, &made, nullptr) == 0;
    });
    DWORD turn = 0;
    for (const auto& test : cases) {
        SCOPED_TRACE(test.what);
        auto* const key = made_key(u"Told");
        auto* const below = made_key(u"Told\\Below");
        auto* const event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        ASSERT_EQ(RegNotifyChangeKeyValue(key, test.subtree, test.filter, event, TRUE), 0);
        EXPECT_TRUE(other.does(turn++));
        // Closing ends the watch, so an untold one is looked at before.
        EXPECT_EQ(WaitForSingleObject(event, test.is_told ? 60000 : 0),
                  test.is_told ? WAIT_OBJECT_0 : WAIT_TIMEOUT);
        RegCloseKey(below);
        RegCloseKey(key);
        EXPECT_EQ(WaitForSingleObject(event, 60000), WAIT_OBJECT_0);
        CloseHandle(event);
        EXPECT_EQ(SHDeleteKeyW(HKEY_CURRENT_USER, u"Told"), 0);
    }
}

// What a deleted key takes away mustn't outweigh a change elsewhere in the tree.
TEST(RegistryProcesses, ADeletionHidesNoChange) {
    for (const DWORD filter : {REG_NOTIFY_CHANGE_NAME, REG_NOTIFY_CHANGE_LAST_SET}) {
        auto* const key = made_key(u"Hidden");
        set(made_key(u"Hidden\\Below"), u"v", 1);
        made_key(u"Hidden\\Below\\Leaf");
        auto* const event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        ASSERT_EQ(RegNotifyChangeKeyValue(key, TRUE, filter, event, TRUE), 0);
        made_key(u"Hidden\\News");
        set(key, u"v", 1);
        ASSERT_EQ(WaitForSingleObject(event, 60000), WAIT_OBJECT_0);
        EXPECT_EQ(SHDeleteKeyW(key, u"Below"), 0);
        set(key, u"v", 2);
        ASSERT_EQ(RegNotifyChangeKeyValue(key, TRUE, filter, event, TRUE), 0);
        EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
        EXPECT_EQ(SHDeleteKeyW(HKEY_CURRENT_USER, u"Hidden"), 0);
        CloseHandle(event);
    }
}

TEST(RegistryProcesses, AWatchEndsWithItsKey) {
    const Neighbour other([](DWORD) { return RegDeleteKeyW(HKEY_CURRENT_USER, u"Mortal") == 0; });
    for (const BOOL subtree : {FALSE, TRUE}) {
        auto* const key = made_key(u"Mortal");
        auto* const event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        const auto watch = [&](BOOL asynchronous) {
            return RegNotifyChangeKeyValue(key, subtree, REG_NOTIFY_CHANGE_LAST_SET, event,
                                           asynchronous);
        };
        ASSERT_EQ(watch(TRUE), 0);
        EXPECT_TRUE(other.does(0));
        EXPECT_EQ(WaitForSingleObject(event, 60000), WAIT_OBJECT_0);
        for (const BOOL asynchronous : {TRUE, FALSE}) {
            EXPECT_EQ(watch(asynchronous), static_cast<LONG>(ERROR_KEY_DELETED));
        }
        RegCloseKey(key);
        CloseHandle(event);
    }
}

TEST(RegistryProcesses, ABlockedWaitEndsWithAChangeAndWithItsKey) {
    const Neighbour other([](DWORD turn) {
        static auto* const key = made_key(u"Blocked");
        return set(key, u"v", turn) == 0;
    });
    auto* const key = made_key(u"Blocked");
    std::atomic<bool> is_over{false};
    LONG result = 1;
    std::thread waiter([&] {
        result = RegNotifyChangeKeyValue(key, 0, REG_NOTIFY_CHANGE_LAST_SET, nullptr, 0);
        is_over = true;
    });
    // A change that comes before the wait isn't news to it; one of the next ones is.
    for (DWORD i = 0; !is_over; ++i) ASSERT_TRUE(other.does(i));
    waiter.join();
    EXPECT_EQ(result, 0);

    std::thread closed(
        [&] { RegNotifyChangeKeyValue(key, 0, REG_NOTIFY_CHANGE_LAST_SET, nullptr, 0); });
    RegCloseKey(key);
    closed.join();
}

}  // namespace
