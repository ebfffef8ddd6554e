#include "tvutil2/platform/watch/directory_changes.h"

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/objects/objects.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include "tests/support/profile.h"

namespace {

constexpr DWORD kNames = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME;

struct Change {
    DWORD action;
    std::string path;  // with the host's separators
    bool operator==(const Change&) const = default;
};
using Changes = std::vector<Change>;

[[maybe_unused]] void PrintTo(const Change& change, std::ostream* out) {
    *out << change.action << ' ' << change.path;
}

// A folder whose changes are read on the thread that asks.
class Reader {
  public:
    explicit Reader(const std::string& folder, bool subtree = true, DWORD filter = kNames,
                    DWORD room = 16'384)
        : m_folder(CreateFileW(tests::platform_path(folder).c_str(), FILE_LIST_DIRECTORY, 7,
                               nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED, nullptr)),
          m_subtree(subtree),
          m_filter(filter),
          m_buffer(room) {
        m_overlapped.hEvent = reinterpret_cast<HANDLE>(this);
        EXPECT_TRUE(read());
    }
    ~Reader() {
        if (is_under_way) {
            CancelIo(m_folder);
            SleepEx(0, TRUE);
        }
        CloseHandle(m_folder);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    bool read() {
        is_under_way =
            ReadDirectoryChangesW(m_folder, m_buffer.data(), static_cast<DWORD>(m_buffer.size()),
                                  m_subtree, m_filter, nullptr, &m_overlapped, on_read) != 0;
        return is_under_way;
    }
    /// Waits for the read under way to end.
    void wait() {
        while (is_under_way) SleepEx(INFINITE, TRUE);
    }
    /// Reads up to a path; all that came, and the path not.
    Changes read_to(const std::string& path) {
        for (;;) {
            wait();
            if (!changes.empty() && changes.back().path == path) break;
            if (error != ERROR_SUCCESS || bytes == 0 || !read()) break;
        }
        if (!changes.empty()) changes.pop_back();
        return changes;
    }

    operator HANDLE() const { return m_folder; }

    Changes changes;
    DWORD error = 0;
    DWORD bytes = 0;
    bool is_under_way = false;

  private:
    static void on_read(DWORD error, DWORD bytes, OVERLAPPED* overlapped) {
        auto& reader = *reinterpret_cast<Reader*>(overlapped->hEvent);
        reader.is_under_way = false;
        reader.error = error;
        reader.bytes = bytes;
        for (std::size_t at = 0; bytes != 0;) {
            FILE_NOTIFY_INFORMATION head{};
            std::memcpy(&head, reader.m_buffer.data() + at, 12);
            std::u16string name(head.FileNameLength / 2, u'\0');
            std::memcpy(name.data(), reader.m_buffer.data() + at + 12, head.FileNameLength);
            auto path = tvutil2::to_utf8_lossy(name);
            std::replace(path.begin(), path.end(), '\\', '/');
            reader.changes.push_back({head.Action, path});
            if (head.NextEntryOffset == 0) break;
            at += head.NextEntryOffset;
        }
    }

    HANDLE m_folder;
    BOOL m_subtree;
    DWORD m_filter;
    std::vector<char> m_buffer;
    OVERLAPPED m_overlapped{};
};

void touch(const std::string& path) {
    tests::write_file(path, "");
}

TEST(DirectoryChanges, WrongCallsAreRefused) {
    const auto folder = tests::new_folder();
    touch(folder + "/file");
    Reader reader(folder);
    auto* const file = CreateFileW(tests::platform_path(folder + "/file").c_str(), GENERIC_READ, 7,
                                   nullptr, OPEN_EXISTING, 0, nullptr);
    std::array<char, 64> buffer{};
    OVERLAPPED overlapped{};
    const LPOVERLAPPED_COMPLETION_ROUTINE routine = [](DWORD, DWORD, OVERLAPPED*) {};
    const struct {
        HANDLE handle;
        void* buffer;
        DWORD filter;
        OVERLAPPED* overlapped;
        DWORD error;
    } cases[] = {
        {nullptr, buffer.data(), kNames, &overlapped, ERROR_INVALID_HANDLE},
        {file, buffer.data(), kNames, &overlapped, ERROR_INVALID_PARAMETER},
        {reader, nullptr, kNames, &overlapped, ERROR_INVALID_PARAMETER},
        {reader, buffer.data(), 0, &overlapped, ERROR_INVALID_PARAMETER},
        {reader, buffer.data(), kNames, nullptr, ERROR_NOT_SUPPORTED},
    };
    for (const auto& wrong : cases) {
        EXPECT_FALSE(ReadDirectoryChangesW(wrong.handle, wrong.buffer, 64, TRUE, wrong.filter,
                                           nullptr, wrong.overlapped, routine));
        EXPECT_EQ(GetLastError(), wrong.error);
    }
    CloseHandle(file);
}

TEST(DirectoryChanges, NamesAreToldInTheirOrder) {
    const auto folder = tests::new_folder();
    const auto outside = tests::new_folder();
    mkdir((folder + "/sub").c_str(), 0700);
    touch(folder + "/old");
    mkdir((outside + "/full").c_str(), 0700);
    touch(outside + "/full/inner");
    Reader reader(folder);
    const auto move = [](const std::string& from, const std::string& to) {
        ASSERT_EQ(rename(from.c_str(), to.c_str()), 0);
    };
    touch(folder + "/a*?");
    move(folder + "/old", folder + "/new");
    move(folder + "/new", folder + "/sub/new");
    move(folder + "/sub", folder + "/sub2");
    move(folder + "/sub2/new", outside + "/new");
    move(outside + "/new", folder + "/sub2/\303\244");
    touch(folder + "/bad\377");
    touch(folder + "/back\\slash");
    move(outside + "/full", folder + "/full");
    touch(folder + "/end");
    const Changes expected = {{1, "a*?"},           {4, "old"}, {5, "new"},  {2, "new"},
                              {1, "sub/new"},       {4, "sub"}, {5, "sub2"}, {2, "sub2/new"},
                              {1, "sub2/\303\244"}, {1, "full"}};
    EXPECT_EQ(reader.read_to("end"), expected);
    // What came with its content is followed by now.
    ASSERT_TRUE(reader.read());
    reader.changes.clear();
    unlink((folder + "/full/inner").c_str());
    rmdir((folder + "/full").c_str());
    touch(folder + "/end2");
    EXPECT_EQ(reader.read_to("end2"), (Changes{{2, "full/inner"}, {2, "full"}}));
}

// However deep a tree is: its folders are looked at with few descriptors.
TEST(DirectoryChanges, ADeepTreeIsFollowedOrALossIsTold) {
    const auto folder = tests::new_folder();
    std::string deep = folder;
    for (int i = 0; i < 100; ++i) deep += "/d";
    std::filesystem::create_directories(deep);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const auto allow = [&limit](int descriptors) {
        const rlimit lower{static_cast<rlim_t>(descriptors), limit.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &lower), 0);
    };
    const tvutil2::Descriptor next(open("/dev/null", O_RDONLY | O_CLOEXEC));
    allow(next.get() + 30);
    Reader reader(folder);
    touch(deep + "/file");
    reader.wait();
    ASSERT_EQ(reader.changes.size(), 1U);
    EXPECT_TRUE(reader.changes[0].path.ends_with("/d/file"));
    // Without any descriptor what is in a new folder can't be known.
    ASSERT_TRUE(reader.read());
    allow(0);
    mkdir((folder + "/new").c_str(), 0700);
    reader.wait();
    EXPECT_EQ(reader.bytes, 0U);
    EXPECT_EQ(reader.error, ERROR_SUCCESS);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
}

TEST(DirectoryChanges, ContentIsToldToWhoAsksForIt) {
    const auto folder = tests::new_folder();
    touch(folder + "/file");
    Reader reader(folder, false, FILE_NOTIFY_CHANGE_SIZE | FILE_NOTIFY_CHANGE_FILE_NAME);
    tests::write_file(folder + "/file", "1");
    chmod((folder + "/file").c_str(), 0600);
    tests::write_file(folder + "/file", "2");
    touch(folder + "/end");
    // How many writes are told as one is a matter of time.
    for (const auto& change : reader.read_to("end")) EXPECT_EQ(change, (Change{3, "file"}));
    EXPECT_FALSE(reader.changes.empty());
}

// What is told about a tree, put together, is the tree: whatever is done to it and however fast.
TEST(DirectoryChanges, WhatIsToldAddsUpToTheTree) {
    constexpr int kSteps = 1000;
    for (const unsigned seed : {1U, 2U, 3U}) {
        SCOPED_TRACE(seed);
        const auto root = tests::new_folder();
        Reader reader(root);
        std::set<std::string> real;
        std::thread changer([&] {
            std::mt19937 random(seed);
            std::vector<std::string> folders = {""};
            int number = 0;
            const auto any_folder = [&] { return folders[random() % folders.size()]; };
            for (int step = 0; step < kSteps; ++step) {
                const auto path = any_folder() + "/" + std::to_string(number++);
                const auto kind = random() % 10;
                if (kind < 2 && folders.size() < 60) {
                    std::filesystem::create_directories(root + path + "/x/y");
                    touch(root + path + "/x/y/z");
                    folders.insert(folders.end(), {path, path + "/x", path + "/x/y"});
                } else if (kind < 7) {
                    touch(root + path);
                } else if (kind < 8) {
                    touch(root + path);
                    rename((root + path).c_str(),
                           (root + any_folder() + "/m" + path.substr(path.rfind('/') + 1)).c_str());
                } else if (kind == 8) {
                    // As programs do that have a folder ready before it gets its name.
                    std::filesystem::create_directories(root + path + "/x");
                    touch(root + path + "/x/y");
                    rename((root + path).c_str(), (root + path + "r").c_str());
                    mkdir((root + path).c_str(), 0700);
                } else if (folders.size() > 1) {
                    const auto victim = folders[1 + random() % (folders.size() - 1)];
                    std::filesystem::remove_all(root + victim);
                    std::erase_if(folders, [&](const auto& folder) {
                        return folder == victim || folder.starts_with(victim + "/");
                    });
                }
            }
            for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
                real.insert(entry.path().string().substr(root.size() + 1));
            }
            touch(root + "/end");
        });
        std::set<std::string> told;
        std::set<std::string> renamed;  // what a folder takes along, by its name in there
        for (const auto& change : reader.read_to("end")) {
            if (change.action == FILE_ACTION_ADDED ||
                change.action == FILE_ACTION_RENAMED_NEW_NAME) {
                EXPECT_TRUE(told.insert(change.path).second) << change.path;
                for (const auto& name : std::exchange(renamed, {})) told.insert(change.path + name);
                continue;
            }
            // What was in a folder that went before it was listed is told to go unheard of.
            told.erase(change.path);
            std::erase_if(told, [&](const auto& path) {
                const bool is_below = path.starts_with(change.path + "/");
                if (is_below && change.action == FILE_ACTION_RENAMED_OLD_NAME) {
                    renamed.insert(path.substr(change.path.size()));
                }
                return is_below;
            });
        }
        changer.join();
        EXPECT_EQ(told, real);
    }
}

TEST(DirectoryChanges, ALossIsToldOnceAndTheNextReadGoesOn) {
    const auto folder = tests::new_folder();
    Reader reader(folder, false, kNames, 32);
    // Two kilobytes are gathered: fewer than a hundred such names.
    for (int i = 0; i < 200; ++i) touch(folder + "/file" + std::to_string(i));
    reader.wait();
    while (reader.bytes != 0) {
        ASSERT_TRUE(reader.read());
        reader.wait();
    }
    EXPECT_EQ(reader.error, ERROR_SUCCESS);
    ASSERT_TRUE(reader.read());
    touch(folder + "/end");
    // On a busy machine the rest of the loss comes now, and is one more.
    const auto has_end = [&reader] {
        return !reader.changes.empty() && reader.changes.back().path == "end";
    };
    do {
        reader.wait();
    } while (!has_end() && reader.read());
    EXPECT_TRUE(has_end());
}

TEST(DirectoryChanges, AReadEndsWithItsHandleItsFolderOrWhenItIsCancelled) {
    const auto folder = tests::new_folder();
    mkdir((folder + "/gone").c_str(), 0700);
    mkdir((folder + "/moved").c_str(), 0700);
    Reader cancelled(folder);
    CancelIo(cancelled);
    cancelled.wait();
    EXPECT_EQ(cancelled.error, ERROR_OPERATION_ABORTED);
    EXPECT_EQ(cancelled.bytes, 0U);

    Reader gone(folder + "/gone");
    rmdir((folder + "/gone").c_str());
    gone.wait();
    EXPECT_EQ(gone.error, ERROR_ACCESS_DENIED);

    Reader moved(folder + "/moved");
    rename((folder + "/moved").c_str(), (folder + "/there").c_str());
    mkdir((folder + "/there/sub").c_str(), 0700);
    touch(folder + "/there/sub/end");
    EXPECT_EQ(moved.read_to("sub/end"), (Changes{{1, "sub"}}));
    std::filesystem::remove_all(folder + "/there");
    do {
        moved.wait();
    } while (moved.error == ERROR_SUCCESS && moved.read());
    EXPECT_EQ(moved.error, ERROR_ACCESS_DENIED);

    Reader closed(folder);
    CloseHandle(closed);
    closed.wait();
    EXPECT_EQ(closed.error, ERROR_OPERATION_ABORTED);
}

}  // namespace
