#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/objects/threads.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

HANDLE event(const char16_t* name, bool is_manual = false) {
    return CreateEventW(nullptr, is_manual, FALSE, name);
}
HANDLE mutex(const char16_t* name, bool is_owned = false) {
    return CreateMutexW(nullptr, is_owned, name);
}
DWORD wait(HANDLE object, DWORD milliseconds = INFINITE) {
    return WaitForSingleObject(object, milliseconds);
}

// A child that goes on beside the test until it is killed or has come to its end.
class Process {
  public:
    explicit Process(const std::function<void()>& work) : m_id(fork()) {
        if (m_id != 0) return;
        work();
        _exit(0);
    }
    ~Process() { kill_now(); }
    Process(Process&& other) noexcept : m_id(std::exchange(other.m_id, 0)) {}
    Process& operator=(Process&& other) noexcept {
        kill_now();
        m_id = std::exchange(other.m_id, 0);
        return *this;
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void kill_now() {
        if (m_id > 0) kill(m_id, SIGKILL);
        join();
    }
    int join() {
        int status = 0;
        if (m_id > 0) waitpid(m_id, &status, 0);
        m_id = 0;
        return status;
    }

  private:
    pid_t m_id;
};

// Files that say who holds which names.
std::size_t name_files() {
    std::size_t count = 0;
    auto* const folder = opendir((tests::profile_folder() + "/run/objects").c_str());
    if (folder == nullptr) return 0;
    while (const auto* entry = readdir(folder)) {
        if (entry->d_name[0] != '.' && std::string(entry->d_name) != "lock") ++count;
    }
    closedir(folder);
    return count;
}

TEST(NamedObjects, ANameIsOneObjectAndGoesWithItsLastHandle) {
    auto* const first = event(u"Global\\one");
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    auto* const second = event(u"Global\\one", true);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_NE(first, second);
    SetEvent(first);
    EXPECT_EQ(wait(second, 0), WAIT_OBJECT_0);
    EXPECT_EQ(wait(first, 0), WAIT_TIMEOUT);  // auto-reset, as it was made
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_FALSE(CloseHandle(first));
    auto* const third = OpenEventW(0, FALSE, u"Global\\one");
    EXPECT_NE(third, nullptr);
    EXPECT_EQ(mutex(u"Global\\one"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(OpenMutexW(0, FALSE, u"Global\\one"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    CloseHandle(second);
    CloseHandle(third);
    EXPECT_EQ(OpenEventW(0, FALSE, u"Global\\one"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(name_files(), 0U);

    // Also that of a mutex which its owner closes; others who hold it are kept out until its end.
    CloseHandle(mutex(u"owned", true));
    auto* const again = mutex(u"owned", true);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    auto* const other = mutex(u"owned");
    std::thread waits([other] { EXPECT_EQ(wait(other), WAIT_OBJECT_0); });
    CloseHandle(again);
    EXPECT_EQ(tests::in_child([other] { return wait(other, 0) == WAIT_TIMEOUT ? 0 : 1; }), 0);
    EXPECT_TRUE(ReleaseMutex(other));
    waits.join();
    CloseHandle(other);
    EXPECT_EQ(name_files(), 0U);
}

TEST(NamedObjects, PrefixesAndNamesThatCannotBe) {
    auto* const plain = event(u"name");
    for (const auto* other : {u"Name", u"Global\\name", u"name "}) {
        EXPECT_EQ(OpenEventW(0, FALSE, other), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    }
    auto* const local = OpenEventW(0, FALSE, u"Local\\name");
    EXPECT_NE(local, nullptr);
    CloseHandle(local);
    CloseHandle(plain);
    const std::u16string long_name(261, u'n');
    const std::pair<const char16_t*, DWORD> wrong[] = {
        {u"a\\b", ERROR_PATH_NOT_FOUND},
        {u"global\\b", ERROR_PATH_NOT_FOUND},
        {u"Global\\", ERROR_INVALID_NAME},
        {long_name.c_str(), ERROR_FILENAME_EXCED_RANGE}};
    for (const auto& [name, error] : wrong) {
        EXPECT_EQ(event(name), nullptr);
        EXPECT_EQ(GetLastError(), error);
    }
    EXPECT_EQ(OpenEventW(0, FALSE, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    auto* const longest = event(long_name.substr(1).c_str());
    EXPECT_NE(longest, nullptr);
    CloseHandle(longest);
}

// A child opens everything anew, as an unrelated process does: it closes what it has inherited.
TEST(NamedObjects, ProcessesSignalEachOther) {
    auto* const request = event(u"request");
    auto* const answer = event(u"answer", true);
    auto* const count = CreateSemaphoreW(nullptr, 0, 5, u"count");
    auto* const local = event(nullptr);
    Process other([&] {
        auto* const own_request = OpenEventW(0, FALSE, u"request");
        for (auto* handle : {request, answer, count}) CloseHandle(handle);
        auto* const own_answer = event(u"answer");
        auto* const own_count = CreateSemaphoreW(nullptr, 3, 9, u"count");
        if (wait(own_request) != WAIT_OBJECT_0) _exit(1);
        if (ReleaseSemaphore(own_count, 6, nullptr)) _exit(2);
        if (!ReleaseSemaphore(own_count, 5, nullptr)) _exit(3);
        SetEvent(own_answer);
    });
    SetEvent(request);
    const std::array<HANDLE, 2> mixed{local, answer};
    EXPECT_EQ(WaitForMultipleObjects(2, mixed.data(), FALSE, INFINITE), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(other.join(), 0);
    LONG previous = 0;
    EXPECT_FALSE(ReleaseSemaphore(count, 1, &previous));
    EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(wait(count, 0), WAIT_OBJECT_0);
    EXPECT_EQ(wait(count, 0), WAIT_TIMEOUT);
    // The wait for all is completed by an object of this process, and takes from both.
    std::thread setter([&] { SetEvent(local); });
    EXPECT_EQ(WaitForMultipleObjects(2, mixed.data(), TRUE, INFINITE), WAIT_OBJECT_0);
    setter.join();
    ResetEvent(answer);
    EXPECT_EQ(WaitForMultipleObjects(2, mixed.data(), FALSE, 5), WAIT_TIMEOUT);
    for (auto* handle : {request, answer, count, local}) CloseHandle(handle);
}

TEST(NamedObjects, AMutexBelongsToAThreadWhicheverHandleItUses) {
    auto* const lock = mutex(u"owned", true);
    auto* const same = mutex(u"owned", true);  // isn't taken: it was there
    EXPECT_EQ(wait(same), WAIT_OBJECT_0);
    std::thread([&] {
        EXPECT_EQ(wait(lock, 1), WAIT_TIMEOUT);
        EXPECT_FALSE(ReleaseMutex(lock));
        EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
    }).join();
    EXPECT_EQ(tests::in_child([&] { return wait(lock, 0) == WAIT_TIMEOUT ? 0 : 1; }), 0);
    EXPECT_TRUE(ReleaseMutex(lock));
    EXPECT_TRUE(ReleaseMutex(same));
    EXPECT_FALSE(ReleaseMutex(lock));
    std::thread([&] { EXPECT_EQ(wait(lock), WAIT_OBJECT_0); }).join();
    EXPECT_EQ(wait(same, 0), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(same));
    EXPECT_EQ(wait(same, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(same));
    CloseHandle(same);
    CloseHandle(lock);
}

TEST(NamedObjects, AKilledOwnerAbandonsAtOnceAndItsReferencesAreGone) {
    auto* const lock = mutex(u"left");
    auto* const is_taken = event(u"taken");
    auto* const never = event(nullptr);
    for (const bool waits_for_several : {false, true}) {
        Process owner([&] {
            event(u"only mine");
            wait(lock);
            wait(lock);
            SetEvent(is_taken);
            for (;;) pause();
        });
        wait(is_taken);
        std::thread killer([&] {
            Sleep(5);
            owner.kill_now();
        });
        const std::array<HANDLE, 2> both{never, lock};
        const auto result = waits_for_several
                                ? WaitForMultipleObjects(2, both.data(), FALSE, INFINITE) - 1
                                : wait(lock);
        EXPECT_EQ(result, WAIT_ABANDONED);
        killer.join();
        EXPECT_TRUE(ReleaseMutex(lock));
        EXPECT_FALSE(ReleaseMutex(lock));
        auto* const anew = event(u"only mine");
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
        CloseHandle(anew);
    }
    for (auto* handle : {lock, is_taken, never}) CloseHandle(handle);
    EXPECT_EQ(name_files(), 0U);
}

TEST(NamedObjects, AChildKeepsANameThatItsParentGivesUp) {
    auto* const kept = event(u"kept");
    auto* const go_on = event(u"go on");
    auto* const runs = event(u"runs");
    Process child([&] {
        SetEvent(runs);
        wait(go_on);
    });
    wait(runs);
    CloseHandle(kept);
    auto* const found = OpenEventW(0, FALSE, u"kept");
    EXPECT_NE(found, nullptr);
    CloseHandle(found);
    SetEvent(go_on);
    child.join();
    EXPECT_EQ(OpenEventW(0, FALSE, u"kept"), nullptr);
    CloseHandle(go_on);
    CloseHandle(runs);
}

TEST(NamedObjects, APulseReachesWaitersOfOtherProcessesAndNoLaterOne) {
    for (const bool is_manual : {false, true}) {
        auto* const pulsed = event(u"pulsed", is_manual);
        auto* const passed = CreateSemaphoreW(nullptr, 0, 10, u"passed");
        PulseEvent(pulsed);
        EXPECT_EQ(wait(pulsed, 0), WAIT_TIMEOUT);
        std::vector<Process> waiters;
        for (int i = 0; i < 3; ++i) {
            waiters.emplace_back([&] {
                wait(pulsed);
                ReleaseSemaphore(passed, 1, nullptr);
            });
        }
        for (int got = 0; got < 3;) {
            PulseEvent(pulsed);
            if (wait(passed, 1) == WAIT_OBJECT_0) ++got;
        }
        for (auto& waiter : waiters) EXPECT_EQ(waiter.join(), 0);
        EXPECT_EQ(wait(pulsed, 0), WAIT_TIMEOUT);
        CloseHandle(pulsed);
        CloseHandle(passed);
    }
}

// What stands in the shared memory of the fight: only the owner changes it, and it is never half
// changed unless the owner was killed.
struct Guarded {
    std::atomic<int> inside;
    std::atomic<int> rounds;
    std::atomic<int> abandoned;
    std::atomic<int> wrong;
    std::atomic<int> killed_inside;
};

// Eight processes fight for one mutex, and one of them is killed every few milliseconds.
TEST(NamedObjects, ProcessesThatAreKilledLoseNeitherTheMutexNorItsExclusion) {
    constexpr int kProcesses = 8;
    constexpr int kKills = 150;
    constexpr unsigned kSeed = 20261125;
    RecordProperty("seed", kSeed);
    auto* const shared = static_cast<Guarded*>(
        mmap(nullptr, sizeof(Guarded), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    const auto fight = [shared] {
        auto* const lock = mutex(u"Global\\fought for");
        for (unsigned round = 0;; ++round) {
            const auto result = wait(lock);
            if (result == WAIT_ABANDONED) {
                ++shared->abandoned;
                shared->inside = 0;
            } else if (result != WAIT_OBJECT_0) {
                ++shared->wrong;
            }
            if (++shared->inside != 1) ++shared->wrong;
            ++shared->rounds;
            if (round % 8 == 0) Sleep(0);
            if (--shared->inside != 0) ++shared->wrong;
            if (!ReleaseMutex(lock)) ++shared->wrong;
        }
    };
    std::mt19937 random(kSeed);
    std::vector<Process> processes;
    for (int i = 0; i < kProcesses; ++i) processes.emplace_back(fight);
    for (int kill = 0; kill < kKills; ++kill) {
        // Each kill waits for the fight to go on, so that a mutex that is lost stops the test.
        const int before = shared->rounds;
        const int steps = static_cast<int>(random() % 40);
        while (shared->rounds < before + steps) Sleep(0);
        processes[random() % kProcesses] = Process(fight);
    }
    for (auto& process : processes) process.kill_now();
    EXPECT_EQ(shared->wrong, 0);
    EXPECT_GT(shared->abandoned, 0);
    // Nobody holds the name any more.
    auto* const lock = mutex(u"Global\\fought for");
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_EQ(wait(lock, 0), WAIT_OBJECT_0);
    ReleaseMutex(lock);
    CloseHandle(lock);
    munmap(shared, sizeof(Guarded));
}

// Tokens go round between processes that are killed while they wait or signal: none is made up.
TEST(NamedObjects, SignalsAreTakenAtMostOnceWhoeverIsKilled) {
    auto* const tokens = CreateSemaphoreW(nullptr, 0, 1000000, u"tokens");
    auto* const bell = event(u"bell");
    auto* const taken = static_cast<std::atomic<int>*>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    const auto consume = [&] {
        const std::array<HANDLE, 2> both{tokens, bell};
        for (;;) {
            if (WaitForMultipleObjects(2, both.data(), FALSE, INFINITE) == WAIT_OBJECT_0) ++*taken;
        }
    };
    std::vector<Process> consumers;
    for (int i = 0; i < 4; ++i) consumers.emplace_back(consume);
    constexpr int kTokens = 2000;
    for (int i = 0; i < kTokens; ++i) {
        ReleaseSemaphore(tokens, 1, nullptr);
        if (i % 7 == 0) SetEvent(bell);
        if (i % 100 == 0) consumers[static_cast<std::size_t>(i / 100) % 4] = Process(consume);
    }
    // A consumer that is killed between the token and its count takes that one along.
    for (int idle = 0; *taken < kTokens - 20 && idle < 100000; ++idle) Sleep(0);
    consumers.clear();
    EXPECT_LE(*taken, kTokens);
    EXPECT_GE(*taken, kTokens - 20);
    CloseHandle(tokens);
    CloseHandle(bell);
    munmap(taken, 4096);
}

TEST(NamedObjects, HostileFilesDoNoHarm) {
    const auto folder = tests::profile_folder() + "/run/objects";
    auto* const first = event(u"attacked");
    const auto file = [&] {
        auto* const dir = opendir(folder.c_str());
        std::string found;
        while (const auto* entry = readdir(dir)) {
            if (std::string(entry->d_name).size() == 16) found = folder + "/" + entry->d_name;
        }
        closedir(dir);
        return found;
    }();
    const auto good = tests::read_file(file);
    // Whole and cut, garbled, and records that lead to files that are none of ours.
    for (std::size_t size = 0; size <= good.size(); ++size) {
        tests::write_file(file, good.substr(0, size));
        EXPECT_EQ(tests::in_child([&] {
                      CloseHandle(first);
                      auto* const again = event(u"attacked");
                      return again != nullptr && SetEvent(again) ? 0 : 1;
                  }),
                  0);
    }
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        auto bytes = good + good;
        for (int i = 0; i < 3; ++i) bytes[random() % bytes.size()] = static_cast<char>(random());
        tests::write_file(file, bytes);
        auto* const again = OpenEventW(0, FALSE, u"attacked");
        CloseHandle(again);
    }
    CloseHandle(first);

    // A folder that others may write isn't used.
    chmod(folder.c_str(), 0777);
    EXPECT_EQ(event(u"attacked"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    chmod(folder.c_str(), 0700);
    auto* const well = event(u"attacked");
    EXPECT_NE(well, nullptr);
    CloseHandle(well);
}

}  // namespace
