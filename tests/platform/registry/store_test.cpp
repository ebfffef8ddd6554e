// What others do to a hive's files: taking them away, putting their own there, opening them up.
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/registry/registry.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;
constexpr LONG kDenied = ERROR_ACCESS_DENIED;

LONG set(HKEY key, const std::string& data) {
    return RegSetValueExW(key, u"v", 0, REG_BINARY, reinterpret_cast<const BYTE*>(data.data()),
                          static_cast<DWORD>(data.size()));
}

std::string get(HKEY key) {
    std::string data(100, '#');
    DWORD size = 100;
    const auto error =
        RegQueryValueExW(key, u"v", nullptr, nullptr, reinterpret_cast<BYTE*>(data.data()), &size);
    return error == 0 ? data.substr(0, size) : "error " + std::to_string(error);
}

HKEY made(HKEY root, const char16_t* path) {
    HKEY key = nullptr;
    RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    return key;
}

std::string file_of(HKEY root) {
    return (root == HKEY_CURRENT_USER ? tvutil2::user_store() : tvutil2::machine_store()) +
           "/registry.db";
}

DWORD mode_of(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

TEST(RegistryStore, OneThatIsGoneIsNoticedByTheNextCall) {
    struct Call {
        const char* what;
        std::function<LONG(HKEY)> run;
        DWORD expected;
    };
    const Call calls[] = {
        {"read", [](HKEY key) { return get(key) == "error 1018" ? 0 : 1; }, 0},
        {"write", [](HKEY key) { return set(key, "lost"); }, ERROR_KEY_DELETED},
        {"write to the root", [](HKEY) { return set(HKEY_CURRENT_USER, "new"); }, 0},
        {"flush", [](HKEY) { return RegFlushKey(HKEY_CURRENT_USER); }, ERROR_REGISTRY_IO_FAILED},
        {"flush a key", [](HKEY key) { return RegFlushKey(key); }, ERROR_KEY_DELETED},
        {"list",
         [](HKEY key) {
             char16_t name[9];
             return RegEnumKeyW(key, 0, name, 9);
         },
         ERROR_KEY_DELETED},
        {"open", [](HKEY key) { return RegOpenKeyExW(key, u"Below", 0, KEY_READ, &key); },
         ERROR_KEY_DELETED},
    };
    const auto folder = tvutil2::user_store();
    // Keys of the other store have the same numbers.
    ASSERT_EQ(tests::in_child([] {
                  return static_cast<int>(set(made(HKEY_CURRENT_USER, u"Other\\Other"), "other"));
              }),
              0);
    fs::rename(folder, folder + ".other");
    for (const auto& call : calls) {
        for (const bool is_replaced : {false, true}) {
            SCOPED_TRACE(std::string(call.what) + (is_replaced ? ", replaced" : ", deleted"));
            auto* const key = made(HKEY_CURRENT_USER, u"Key");
            ASSERT_NE(made(key, u"Below"), nullptr);
            ASSERT_EQ(set(key, "old"), 0);
            ASSERT_EQ(get(key), "old");
            char16_t name[9];
            ASSERT_EQ(RegEnumKeyW(key, 0, name, 9), 0);
            auto* const event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
            ASSERT_EQ(RegNotifyChangeKeyValue(key, 0, REG_NOTIFY_CHANGE_NAME, event, TRUE), 0);

            if (is_replaced) {
                // In one step: this process's own thread makes a store where it finds none.
                const auto away = folder + ".away";
                fs::copy(folder + ".other", away);
                ASSERT_EQ(
                    renameat2(AT_FDCWD, folder.c_str(), AT_FDCWD, away.c_str(), RENAME_EXCHANGE),
                    0);
            } else {
                fs::rename(folder, folder + ".away");
            }
            EXPECT_EQ(call.run(key), static_cast<LONG>(call.expected));
            EXPECT_EQ(WaitForSingleObject(event, 60000), WAIT_OBJECT_0);
            CloseHandle(event);
            RegCloseKey(key);

            EXPECT_EQ(set(HKEY_CURRENT_USER, "new"), 0);
            EXPECT_EQ(RegFlushKey(HKEY_CURRENT_USER), 0);
            EXPECT_EQ(tests::in_child([] { return get(HKEY_CURRENT_USER) == "new" ? 0 : 1; }), 0);
            fs::remove_all(folder + ".away");
            fs::remove_all(folder);
        }
    }
}

TEST(RegistryStore, HasItsModesWhateverTheUmaskIs) {
    for (const mode_t mask : {0, 077, 0777}) {
        SCOPED_TRACE(mask);
        EXPECT_EQ(tests::in_child([mask] {
                      umask(mask);
                      HKEY key = made(HKEY_LOCAL_MACHINE, u"Key");
                      auto* const event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
                      return static_cast<int>(RegNotifyChangeKeyValue(key, 0, 1, event, TRUE));
                  }),
                  0);
        const auto file = file_of(HKEY_LOCAL_MACHINE);
        EXPECT_EQ(mode_of(tvutil2::machine_store()), 0755U);
        for (const auto* suffix : {"", "-wal", "-shm", "-signal"}) {
            EXPECT_EQ(mode_of(file + suffix), 0644U) << suffix;
        }
        fs::remove_all(tvutil2::machine_store());
    }
}

// Each change is made to a store that is whole; then a process that finds it may not use it.
TEST(RegistryStore, IsRefusedWhenOthersMayHaveMadeIt) {
    const auto victim = tests::new_folder() + "/victim";
    const auto link_to_victim = [&](const std::string& path) {
        fs::remove(path);
        fs::create_symlink(victim, path);
    };
    struct Case {
        const char* what;
        HKEY root;
        bool takes_root;
        std::function<void(const std::string& file)> change;
        LONG error;
    };
    const auto give_away = [](const std::string& path) { return chown(path.c_str(), kNobody, 0); };
    const Case cases[] = {
        {"user's hive a link", HKEY_CURRENT_USER, false, link_to_victim, kDenied},
        {"hive a link", HKEY_LOCAL_MACHINE, false, link_to_victim, kDenied},
        {"signal a link", HKEY_LOCAL_MACHINE, false,
         [&](const std::string& file) { link_to_victim(file + "-signal"); }, kDenied},
        {"user's signal a link", HKEY_CURRENT_USER, false,
         [&](const std::string& file) { link_to_victim(file + "-signal"); }, kDenied},
        {"user's signal of two names", HKEY_CURRENT_USER, false,
         [&](const std::string& file) {
             fs::remove(file + "-signal");
             fs::create_hard_link(victim, file + "-signal");
         },
         kDenied},
        {"foreign hive", HKEY_LOCAL_MACHINE, true,
         [&](const std::string& file) { give_away(file); }, kDenied},
        {"foreign log", HKEY_LOCAL_MACHINE, true,
         [&](const std::string& file) { give_away(file + "-wal"); }, kDenied},
        {"foreign folder", HKEY_LOCAL_MACHINE, true,
         [&](const std::string& file) { give_away(fs::path(file).parent_path()); }, kDenied},
        {"hive that all may write", HKEY_LOCAL_MACHINE, false,
         [](const std::string& file) { fs::permissions(file, fs::perms(0666)); }, kDenied},
        {"own folder that all may write", HKEY_LOCAL_MACHINE, false,
         [](const std::string& file) {
             fs::permissions(fs::path(file).parent_path(), fs::perms(0777));
         },
         0},
    };
    for (const auto& test : cases) {
        if (test.takes_root && geteuid() != 0) continue;
        SCOPED_TRACE(test.what);
        tests::write_file(victim, "victim");
        const auto file = file_of(test.root);
        const auto write = [&] { return set(test.root, "x"); };
        ASSERT_EQ(tests::in_child([&] { return static_cast<int>(write()); }), 0);
        test.change(file);
        EXPECT_EQ(tests::in_child([&] { return static_cast<int>(write()); }), test.error);
        EXPECT_EQ(tests::read_file(victim), "victim");
        if (test.root == HKEY_LOCAL_MACHINE && test.error == 0) {
            EXPECT_EQ(mode_of(tvutil2::machine_store()), 0755U);
        }
        fs::remove_all(fs::path(file).parent_path());
    }
}

TEST(RegistryStore, ASignalCutShortIsMadeWhole) {
    auto* const key = made(HKEY_CURRENT_USER, u"Key");
    auto* const event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const auto signal = file_of(HKEY_CURRENT_USER) + "-signal";
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(RegNotifyChangeKeyValue(key, 0, REG_NOTIFY_CHANGE_LAST_SET, event, TRUE), 0);
        fs::resize_file(signal, 0);
        ASSERT_EQ(set(key, std::to_string(round)), 0);
        EXPECT_EQ(WaitForSingleObject(event, 60000), WAIT_OBJECT_0);
    }
    CloseHandle(event);
}

bool change_with_sqlite(const std::string& file, const char* sql) {
    sqlite3* database = nullptr;
    const bool is_done = sqlite3_open(file.c_str(), &database) == SQLITE_OK &&
                         sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
    if (!is_done) ADD_FAILURE() << sqlite3_errmsg(database);
    sqlite3_close(database);
    return is_done;
}

TEST(RegistryStore, AHostileHiveIsDamaged) {
    const char* const endless_view =
        R"(DROP TABLE "values"; CREATE VIEW "values" AS
           WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n)
           SELECT i AS key, x'' AS folded, x'' AS name, 3 AS type, x'' AS data FROM n)";
    const char* const changes[] = {
        "CREATE TRIGGER t AFTER UPDATE ON keys BEGIN DELETE FROM \"values\"; END",
        "ALTER TABLE keys ADD COLUMN more",
        "CREATE TABLE more (x)",
        "DROP INDEX keys_by_name",
        endless_view,
    };
    const auto file = file_of(HKEY_CURRENT_USER);
    for (const auto* change : changes) {
        SCOPED_TRACE(change);
        ASSERT_EQ(tests::in_child([] { return static_cast<int>(set(HKEY_CURRENT_USER, "x")); }), 0);
        ASSERT_TRUE(change_with_sqlite(file, change));
        EXPECT_EQ(get(HKEY_CURRENT_USER), "error " + std::to_string(ERROR_REGISTRY_CORRUPT));
        EXPECT_EQ(set(HKEY_CURRENT_USER, "y"), LONG{ERROR_REGISTRY_CORRUPT});
        fs::remove_all(fs::path(file).parent_path());
    }
}

TEST(RegistryStore, AWalkEndsWhateverAHiveSays) {
    ASSERT_EQ(tests::in_child(
                  [] { return made(HKEY_CURRENT_USER, u"Own\\Child\\Below") != nullptr ? 0 : 1; }),
              0);
    // "Own" is root's child and its own ("OWN" as well), "Child" and "Below" each other's.
    ASSERT_TRUE(change_with_sqlite(
        file_of(HKEY_CURRENT_USER),
        "INSERT INTO keys (parent, folded, name, depth, written)"
        " SELECT id, folded, name, 9, 0 FROM keys WHERE depth = 1;"
        "UPDATE keys SET parent = id WHERE depth = 9;"
        "UPDATE keys SET parent = (SELECT id FROM keys WHERE depth = 3) WHERE depth = 2"));
    HKEY key = nullptr;
    char16_t name[9];
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"Own\\Own", 0, KEY_READ, &key),
              LONG{ERROR_FILE_NOT_FOUND});
    ASSERT_TRUE(change_with_sqlite(file_of(HKEY_CURRENT_USER),
                                   "UPDATE keys SET parent = (SELECT id FROM keys WHERE depth = 1)"
                                   " WHERE depth = 9"));
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, u"Own\\Own", 0, KEY_READ, &key),
              LONG{ERROR_REGISTRY_CORRUPT});
    auto* const own = made(HKEY_CURRENT_USER, u"Own");
    EXPECT_EQ(RegEnumKeyW(own, 0, name, 9), LONG{ERROR_REGISTRY_CORRUPT});
    auto* const event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_EQ(RegNotifyChangeKeyValue(HKEY_CURRENT_USER, TRUE, REG_NOTIFY_CHANGE_NAME, event, TRUE),
              0);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, nullptr), 0);
    CloseHandle(event);
}

// Holds every lock that somebody who may read a hive's files can have on them.
void hold_read_locks(const std::string& file, int ready) {
    for (const auto* suffix : {"", "-wal", "-shm", "-signal"}) {
        const int opened = open((file + suffix).c_str(), O_RDONLY | O_CLOEXEC);
        struct flock lock {};
        lock.l_type = F_RDLCK;
        if (opened < 0 || fcntl(opened, F_SETLK, &lock) != 0) return;
    }
    if (write(ready, "", 1) == 1) pause();
}

TEST(RegistryStore, AReadersLocksHoldAWriterSoLongAndNoLonger) {
    ASSERT_EQ(set(HKEY_LOCAL_MACHINE, "before"), 0);
    if (geteuid() == 0) fs::permissions(tests::profile_folder(), fs::perms(0755));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && setuid(kNobody) != 0) _exit(1);
        hold_read_locks(file_of(HKEY_LOCAL_MACHINE), ends[1]);
        _exit(1);
    }
    close(ends[1]);
    char taken = 0;
    EXPECT_EQ(read(ends[0], &taken, 1), 1);
    close(ends[0]);
    EXPECT_EQ(set(HKEY_LOCAL_MACHINE, "after"), LONG{ERROR_BUSY});
    EXPECT_EQ(get(HKEY_LOCAL_MACHINE), "before");
    kill(child, SIGKILL);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(set(HKEY_LOCAL_MACHINE, "after"), 0);
}

}  // namespace
