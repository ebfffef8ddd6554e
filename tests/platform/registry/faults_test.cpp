// Hives that are damaged, read-only or on a full disk.
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/registry/registry.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>

#include "tests/support/profile.h"

namespace {

template <class Work>
bool holds_in_child(Work work) {
    const pid_t child = fork();
    if (child == 0) _exit(work() ? 0 : 1);
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

LONG set(const char16_t* name, const std::string& data) {
    HKEY key = nullptr;
    auto error = RegCreateKeyExW(HKEY_CURRENT_USER, u"Faults", 0, nullptr, 0, KEY_ALL_ACCESS,
                                 nullptr, &key, nullptr);
    if (error != 0) return error;
    error = RegSetValueExW(key, name, 0, REG_BINARY, reinterpret_cast<const BYTE*>(data.data()),
                           static_cast<DWORD>(data.size()));
    RegCloseKey(key);
    return error;
}

LONG get(const char16_t* name, std::string& data) {
    HKEY key = nullptr;
    auto error = RegOpenKeyExW(HKEY_CURRENT_USER, u"Faults", 0, KEY_READ, &key);
    if (error != 0) return error;
    auto size = static_cast<DWORD>(100000);
    data.resize(size);
    error =
        RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(data.data()), &size);
    data.resize(size);
    RegCloseKey(key);
    return error;
}

std::string store() {
    return tvutil2::user_store() + "/registry.db";
}

// A child writes and ends, so that the whole hive is in its file.
void make_hive() {
    ASSERT_TRUE(holds_in_child([] { return set(u"before", std::string(20000, 'b')) == 0; }));
}

TEST(RegistryFaults, ADamagedHiveIsReportedAndLeftAlone) {
    make_hive();
    std::filesystem::remove(store() + "-wal");
    std::filesystem::remove(store() + "-shm");
    const auto whole = tests::read_file(store());
    ASSERT_GT(whole.size(), 4096U);
    const std::string cases[] = {
        std::string(100, '\xFF') + whole.substr(100),
        whole.substr(0, 1000),
        whole.substr(0, 4096),
        "Not a hive at all.\n",
    };
    for (const auto& damaged : cases) {
        SCOPED_TRACE(damaged.size());
        tests::write_file(store(), damaged);
        EXPECT_TRUE(holds_in_child([] {
            std::string data;
            return get(u"before", data) == static_cast<LONG>(ERROR_REGISTRY_CORRUPT);
        }));
        EXPECT_TRUE(holds_in_child(
            [] { return set(u"v", "x") == static_cast<LONG>(ERROR_REGISTRY_CORRUPT); }));
        EXPECT_TRUE(tests::read_file(store()) == damaged);
    }
}

// From here on, whoever waits for the disk in this process is told that it failed.
bool disk_fails() {
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_fsync, 1, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_fdatasync, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EIO),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{std::size(steps), steps};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

TEST(RegistryFaults, AFlushWaitsForTheDiskAndAWriteDoesNot) {
    make_hive();
    EXPECT_TRUE(holds_in_child([] {
        return disk_fails() && set(u"v", "x") == 0 &&
               RegFlushKey(HKEY_CURRENT_USER) == static_cast<LONG>(ERROR_CANTWRITE);
    }));
    EXPECT_EQ(RegFlushKey(HKEY_CURRENT_USER), 0);
    std::string data;
    EXPECT_EQ(get(u"v", data), 0);
}

// Files of this process can't grow beyond `size` bytes: an error as on a full disk.
bool limit_files(rlim_t size) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{size, size};
    return setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

// The limits fall into the making of the hive, its index and its log, and between two writes.
TEST(RegistryFaults, AFullDiskIsReportedWhereverItIsMet) {
    for (const rlim_t limit : {0, 500, 3000, 12'000, 33'000, 50'000, 50'001, 52'000, 150'000}) {
        SCOPED_TRACE(limit);
        EXPECT_TRUE(holds_in_child([limit] {
            if (!limit_files(limit)) return false;
            LONG error = 0;
            for (int i = 0; i < 1000 && error == 0; ++i) error = set(u"v", std::to_string(i));
            return error == static_cast<LONG>(ERROR_DISK_FULL);
        }));
        EXPECT_EQ(set(u"v", "after"), 0);
        std::filesystem::remove_all(tvutil2::user_store());
    }
}

TEST(RegistryFaults, AFullDiskKeepsWhatWasThere) {
    make_hive();
    EXPECT_TRUE(holds_in_child([] {
        return limit_files(200'000) &&
               set(u"large", std::string(1'000'000, 'l')) == static_cast<LONG>(ERROR_DISK_FULL) &&
               set(u"small", "fits") == 0;
    }));
    std::string data;
    EXPECT_EQ(get(u"before", data), 0);
    EXPECT_EQ(data, std::string(20000, 'b'));
    EXPECT_EQ(get(u"large", data), static_cast<LONG>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(get(u"small", data), 0);
}

// Takes the locks of a process that writes and comes to a halt ("WAL-mode file format" of SQLite):
// the one of the writer, and the one of all who have the index open.
bool take_write_lock() {
    const int index = open((store() + "-shm").c_str(), O_RDWR | O_CLOEXEC);
    for (const auto& [type, byte] : {std::pair<short, off_t>{F_RDLCK, 128}, {F_WRLCK, 120}}) {
        struct flock lock {};
        lock.l_type = type;
        lock.l_start = byte;
        lock.l_len = 1;
        if (fcntl(index, F_SETLKW, &lock) != 0) return false;
    }
    return true;
}

TEST(RegistryFaults, AHaltedWriterIsWaitedForSoLongAndNoLonger) {
    make_hive();
    ASSERT_EQ(set(u"v", "x"), 0);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        if (take_write_lock() && write(ends[1], "", 1) == 1) pause();
        _exit(1);
    }
    char taken = 0;
    ASSERT_EQ(read(ends[0], &taken, 1), 1);
    EXPECT_EQ(set(u"v", "lost"), static_cast<LONG>(ERROR_BUSY));
    std::string data;
    EXPECT_EQ(get(u"v", data), 0);
    EXPECT_EQ(data, "x");
    kill(child, SIGKILL);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(set(u"w", "y"), 0);
    EXPECT_EQ(get(u"v", data), 0);
    EXPECT_EQ(data, "x");
}

TEST(RegistryFaults, AHiveOfSomeoneElseIsReadButNotWritten) {
    if (geteuid() != 0) GTEST_SKIP() << "takes the superuser, to become someone else";
    make_hive();
    namespace fs = std::filesystem;
    for (const auto& folder : {tests::profile_folder(), tvutil2::user_store()}) {
        fs::permissions(folder, fs::perms(0755));
    }
    for (const auto& entry : fs::directory_iterator(tvutil2::user_store())) {
        fs::permissions(entry.path(), fs::perms(0644));
    }
    EXPECT_TRUE(holds_in_child([] {
        if (setuid(65534) != 0) return false;
        std::string data;
        return get(u"before", data) == 0 && data == std::string(20000, 'b');
    }));
    EXPECT_TRUE(holds_in_child([] {
        if (setuid(65534) != 0) return false;
        return set(u"v", "x") == static_cast<LONG>(ERROR_ACCESS_DENIED);
    }));
}

}  // namespace
