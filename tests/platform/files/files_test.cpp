#include "tvutil2/platform/files/files.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/support/child.h"
#include "tests/support/host_files.h"
#include "tests/support/profile.h"

namespace {

namespace fs = std::filesystem;
using tests::FullDisk;
using tests::in_child;
using tests::new_folder;
using tests::platform_path;
using tests::read_file;
using tests::write_file;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE open(const std::string& path, DWORD access, DWORD sharing, DWORD disposition,
            DWORD flags = FILE_ATTRIBUTE_NORMAL) {
    return CreateFileW(platform_path(path).c_str(), access, sharing, nullptr, disposition, flags,
                       nullptr);
}

// The last error of an attempt to open; 0 when it worked.
DWORD try_open(const std::string& path, DWORD access, DWORD sharing,
               DWORD disposition = OPEN_EXISTING) {
    const HANDLE handle = open(path, access, sharing, disposition);
    if (handle == INVALID_HANDLE_VALUE) return GetLastError();
    CloseHandle(handle);
    return 0;
}

TEST(CreateFile, DispositionsTellWhatWasThere) {
    const struct {
        DWORD disposition;
        bool exists;
        DWORD error;  // last error afterwards
        bool opens;
        const char* content;
    } cases[] = {
        {CREATE_NEW, false, 77, true, ""},
        {CREATE_NEW, true, ERROR_FILE_EXISTS, false, "old"},
        {CREATE_ALWAYS, false, 0, true, ""},
        {CREATE_ALWAYS, true, ERROR_ALREADY_EXISTS, true, ""},
        {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, false, ""},
        {OPEN_EXISTING, true, 77, true, "old"},
        {OPEN_ALWAYS, false, 0, true, ""},
        {OPEN_ALWAYS, true, ERROR_ALREADY_EXISTS, true, "old"},
        {TRUNCATE_EXISTING, false, ERROR_FILE_NOT_FOUND, false, ""},
        {TRUNCATE_EXISTING, true, 77, true, ""},
        {0, true, ERROR_INVALID_PARAMETER, false, "old"},
        {6, true, ERROR_INVALID_PARAMETER, false, "old"},
    };
    const auto folder = new_folder();
    for (const auto& c : cases) {
        const auto path = folder + "/file";
        fs::remove(path);
        if (c.exists) write_file(path, "old");
        SetLastError(77);
        const HANDLE file = open(path, GENERIC_READ | GENERIC_WRITE, 0, c.disposition);
        EXPECT_EQ(GetLastError(), c.error) << c.disposition << c.exists;
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, c.opens) << c.disposition << c.exists;
        if (c.opens) {
            EXPECT_TRUE(CloseHandle(file));
            EXPECT_FALSE(CloseHandle(file));
            EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        }
        EXPECT_EQ(read_file(path), c.content) << c.disposition << c.exists;
    }
}

TEST(CreateFile, SaysWhyItFails) {
    const auto folder = new_folder();
    write_file(folder + "/file", "x");
    write_file(folder + "/locked", "x");
    fs::permissions(folder + "/locked", fs::perms::owner_read);
    fs::create_symlink("loop", folder + "/loop");
    fs::create_symlink("nowhere", folder + "/dangling");
    mkfifo((folder + "/pipe").c_str(), 0666);
    const struct {
        std::string name;
        DWORD access;
        DWORD disposition;
        DWORD error;
    } cases[] = {
        {"/missing", GENERIC_READ, OPEN_EXISTING, ERROR_FILE_NOT_FOUND},
        {"/missing/file", GENERIC_READ, OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {"/missing/file", GENERIC_WRITE, CREATE_NEW, ERROR_PATH_NOT_FOUND},
        {"/file/file", GENERIC_READ, OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {"/loop", GENERIC_READ, OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
        {"/loop", GENERIC_WRITE, CREATE_NEW, ERROR_FILE_EXISTS},
        {"/dangling", GENERIC_READ, OPEN_EXISTING, ERROR_FILE_NOT_FOUND},
        {"", GENERIC_READ, OPEN_EXISTING, ERROR_ACCESS_DENIED},
        {"", GENERIC_WRITE, CREATE_ALWAYS, ERROR_ACCESS_DENIED},
        {"/locked", GENERIC_WRITE, OPEN_EXISTING, ERROR_ACCESS_DENIED},
        {"/locked", GENERIC_READ, CREATE_ALWAYS, ERROR_ACCESS_DENIED},
        {"/locked", GENERIC_READ, OPEN_EXISTING, 0},
        {"/file", GENERIC_READ, TRUNCATE_EXISTING, ERROR_INVALID_PARAMETER},
        {"/pipe", GENERIC_READ, OPEN_EXISTING, ERROR_NOT_SUPPORTED},
        {"/" + std::string(300, 'n'), GENERIC_WRITE, CREATE_NEW, ERROR_FILENAME_EXCED_RANGE},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(try_open(folder + c.name, c.access, kShareAll, c.disposition), c.error)
            << c.name << " " << c.disposition;
    }
    EXPECT_EQ(CreateFileW(nullptr, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
}

TEST(CreateFile, SharingHoldsBetweenHandlesAndProcesses) {
    constexpr DWORD R = GENERIC_READ;
    constexpr DWORD W = GENERIC_WRITE;
    const struct {
        DWORD access, sharing;
        DWORD second_access, second_sharing;
        bool goes;
    } cases[] = {
        {R, 0, R, kShareAll, false},
        {R, FILE_SHARE_READ, R, FILE_SHARE_READ, true},
        {R, FILE_SHARE_READ, W, kShareAll, false},
        {R, FILE_SHARE_READ, R, 0, false},  // the second forbids what the first does
        {W, FILE_SHARE_READ, R, kShareAll, true},
        {W, FILE_SHARE_READ, R, FILE_SHARE_READ, false},
        {W, FILE_SHARE_READ, W, kShareAll, false},
        {W, kShareAll, W, kShareAll, true},
        {R | W, kShareAll, R | W, FILE_SHARE_READ, false},
        {FILE_APPEND_DATA, FILE_SHARE_READ, FILE_APPEND_DATA, FILE_SHARE_READ, false},
        {R, FILE_SHARE_READ, DELETE, kShareAll, false},
        {R, FILE_SHARE_DELETE | FILE_SHARE_READ, DELETE, kShareAll, true},
        {R, 0, FILE_READ_ATTRIBUTES, 0, true},  // takes no part
        {0, 0, R | W, 0, true},
    };
    const auto path = new_folder() + "/file";
    write_file(path, "x");
    for (const auto& c : cases) {
        const HANDLE first = open(path, c.access, c.sharing, OPEN_EXISTING);
        ASSERT_NE(first, INVALID_HANDLE_VALUE);
        const auto second = [&] {
            return static_cast<int>(try_open(path, c.second_access, c.second_sharing));
        };
        const int expected = c.goes ? 0 : static_cast<int>(ERROR_SHARING_VIOLATION);
        const auto row = &c - cases;
        EXPECT_EQ(second(), expected) << row;
        EXPECT_EQ(in_child(second), expected) << row;
        CloseHandle(first);
        EXPECT_EQ(try_open(path, GENERIC_READ | GENERIC_WRITE, 0), 0U) << row;
    }
}

TEST(CreateFile, KilledProcessLeavesNothingLocked) {
    const auto path = new_folder() + "/file";
    int ready[2] = {};
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        const HANDLE file = open(path, GENERIC_WRITE, 0, CREATE_NEW);
        const char done = file != INVALID_HANDLE_VALUE ? '1' : '0';
        if (write(ready[1], &done, 1) != 1) _exit(1);
        pause();
    }
    char done = 0;
    ASSERT_EQ(read(ready[0], &done, 1), 1);
    ASSERT_EQ(done, '1');
    EXPECT_EQ(try_open(path, GENERIC_READ, kShareAll), ERROR_SHARING_VIOLATION);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(try_open(path, GENERIC_READ, 0), 0U);
}

// Two that want the file for themselves: never both, and never nobody for long.
TEST(CreateFile, ExclusiveOpenIsExclusiveUnderContention) {
    const auto folder = new_folder();
    const auto path = folder + "/file";
    write_file(path, std::string(1, '\0'));
    constexpr int kTurns = 300;
    const auto take_turns = [&path] {
        for (int won = 0; won < kTurns;) {
            const HANDLE file = open(path, GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
            if (file == INVALID_HANDLE_VALUE) {
                if (GetLastError() != ERROR_SHARING_VIOLATION) return 1;
                continue;
            }
            // A counter that loses a turn as soon as two are in here.
            DWORD count = 0;
            int value = 0;
            ReadFile(file, &value, sizeof value, &count, nullptr);
            ++value;
            SetFilePointer(file, 0, nullptr, FILE_BEGIN);
            WriteFile(file, &value, sizeof value, &count, nullptr);
            CloseHandle(file);
            ++won;
        }
        return 0;
    };
    const pid_t child = fork();
    if (child == 0) _exit(take_turns());
    std::thread second(take_turns);
    take_turns();
    second.join();
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    int value = 0;
    std::memcpy(&value, read_file(path).data(), sizeof value);
    EXPECT_EQ(value, 3 * kTurns);
}

TEST(FileHandle, PointerEndAndRights) {
    const auto path = new_folder() + "/file";
    const HANDLE file = open(path, GENERIC_READ | GENERIC_WRITE, 0, CREATE_NEW);
    DWORD count = 0;
    EXPECT_TRUE(WriteFile(file, "0123456789", 10, &count, nullptr));
    EXPECT_EQ(count, 10U);
    EXPECT_EQ(SetFilePointer(file, -4, nullptr, FILE_END), 6U);
    char buffer[16] = {};
    EXPECT_TRUE(ReadFile(file, buffer, sizeof buffer, &count, nullptr));
    EXPECT_EQ(std::string(buffer, count), "6789");
    EXPECT_TRUE(ReadFile(file, buffer, sizeof buffer, &count, nullptr));
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(SetFilePointer(file, -11, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
    // The position whose low half looks like the failure.
    LONG high = 1;
    SetLastError(77);
    EXPECT_EQ(SetFilePointer(file, -1, &high, FILE_BEGIN), 0xFFFFFFFFU);
    EXPECT_EQ(GetLastError(), 0U);
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, 3), INVALID_SET_FILE_POINTER);
    SetFilePointer(file, 4, nullptr, FILE_BEGIN);
    EXPECT_TRUE(SetEndOfFile(file));
    LARGE_INTEGER size{};
    EXPECT_TRUE(GetFileSizeEx(file, &size));
    EXPECT_EQ(size.QuadPart, 4);
    EXPECT_TRUE(FlushFileBuffers(file));
    CloseHandle(file);
    EXPECT_FALSE(WriteFile(file, "x", 1, &count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);

    const HANDLE reader = open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    EXPECT_FALSE(WriteFile(reader, "x", 1, &count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(SetEndOfFile(reader));
    const HANDLE appender = open(path, FILE_APPEND_DATA, kShareAll, OPEN_EXISTING);
    EXPECT_FALSE(ReadFile(appender, buffer, 1, &count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    SetFilePointer(appender, 0, nullptr, FILE_BEGIN);
    EXPECT_TRUE(WriteFile(appender, "+", 1, &count, nullptr));
    CloseHandle(appender);
    CloseHandle(reader);
    EXPECT_EQ(read_file(path), "0123+");
}

TEST(FileHandle, TimesComeBackToTheTick) {
    const auto path = new_folder() + "/file";
    const HANDLE file = open(path, GENERIC_WRITE, 0, CREATE_NEW);
    const FILETIME accessed{1234567, 30000000};
    const FILETIME written{7654321, 31000000};
    ASSERT_TRUE(SetFileTime(file, nullptr, &accessed, &written));
    FILETIME created{};
    FILETIME a{};
    FILETIME w{};
    ASSERT_TRUE(GetFileTime(file, &created, &a, &w));
    EXPECT_EQ(a.dwLowDateTime, accessed.dwLowDateTime);
    EXPECT_EQ(a.dwHighDateTime, accessed.dwHighDateTime);
    EXPECT_EQ(w.dwLowDateTime, written.dwLowDateTime);
    ASSERT_TRUE(SetFileTime(file, nullptr, nullptr, &accessed));
    ASSERT_TRUE(GetFileTime(file, nullptr, nullptr, &w));
    EXPECT_EQ(w.dwLowDateTime, accessed.dwLowDateTime);
    CloseHandle(file);
}

TEST(FileHandle, FullDiskTellsHowMuchArrived) {
    const auto path = new_folder() + "/file";
    const HANDLE file = open(path, GENERIC_WRITE, 0, CREATE_NEW);
    const std::string data(100000, 'x');
    DWORD count = 0;
    {
        const FullDisk full(65536);
        EXPECT_FALSE(WriteFile(file, data.data(), 100000, &count, nullptr));
        EXPECT_EQ(GetLastError(), ERROR_FILE_TOO_LARGE);
    }
    EXPECT_EQ(count, 65536U);
    CloseHandle(file);
}

TEST(CopyFile, KeepsContentTimesAndMode) {
    const auto folder = new_folder();
    const auto from = folder + "/from";
    const auto to = folder + "/to";
    for (const std::size_t size : {0, 1, 4096, 65536, 65537, 3000000}) {
        std::string content(size, 'a');
        for (std::size_t i = 0; i < size; ++i) content[i] = static_cast<char>(i * 7919 >> 3);
        write_file(from, content);
        chmod(from.c_str(), 0757);
        const timespec times[] = {{1000000, 100}, {2000000, 200}};
        utimensat(AT_FDCWD, from.c_str(), times, 0);
        ASSERT_TRUE(CopyFileW(platform_path(from).c_str(), platform_path(to).c_str(), FALSE));
        EXPECT_EQ(read_file(to), content) << size;
        struct stat info {};
        stat(to.c_str(), &info);
        EXPECT_EQ(info.st_mode & 07777U, 0757U);
        EXPECT_EQ(info.st_mtim.tv_sec, 2000000);
        EXPECT_EQ(info.st_mtim.tv_nsec, 200);
    }
}

TEST(CopyFile, HugeEmptyFileStaysCheap) {
    const auto folder = new_folder();
    const auto from = folder + "/from";
    write_file(from, "front");
    ASSERT_EQ(truncate(from.c_str(), off_t{1} << 40), 0);
    ASSERT_TRUE(
        CopyFileW(platform_path(from).c_str(), platform_path(folder + "/to").c_str(), TRUE));
    struct stat info {};
    stat((folder + "/to").c_str(), &info);
    EXPECT_EQ(info.st_size, off_t{1} << 40);
    EXPECT_LT(info.st_blocks, 1000);
}

TEST(CopyFile, FailureLeavesTheTargetAsItWas) {
    const auto folder = new_folder();
    const auto path = [&folder](const char* name) { return platform_path(folder + "/" + name); };
    write_file(folder + "/big", std::string(200000, 'x'));
    write_file(folder + "/old", "old");
    write_file(folder + "/locked", "locked");
    chmod((folder + "/locked").c_str(), 0444);
    fs::create_hard_link(folder + "/big", folder + "/same");
    fs::create_symlink("big", folder + "/link");
    fs::create_directory(folder + "/folder");
    fs::create_symlink("loop", folder + "/loop");
    {
        const FullDisk full(100000);
        EXPECT_FALSE(CopyFileW(path("big").c_str(), path("new").c_str(), FALSE));
        EXPECT_EQ(GetLastError(), ERROR_FILE_TOO_LARGE);
        EXPECT_FALSE(CopyFileW(path("big").c_str(), path("old").c_str(), FALSE));
    }
    const struct {
        const char* from;
        const char* to;
        BOOL fail_if_exists;
        DWORD error;
    } cases[] = {
        {"big", "old", TRUE, ERROR_FILE_EXISTS},
        {"big", "big", FALSE, ERROR_SHARING_VIOLATION},
        {"big", "same", FALSE, ERROR_SHARING_VIOLATION},
        {"big", "link", FALSE, ERROR_SHARING_VIOLATION},
        {"big", "locked", FALSE, ERROR_ACCESS_DENIED},
        {"big", "folder", FALSE, ERROR_ACCESS_DENIED},
        {"folder", "new", FALSE, ERROR_ACCESS_DENIED},
        {"missing", "new", FALSE, ERROR_FILE_NOT_FOUND},
        {"big", "missing/new", FALSE, ERROR_PATH_NOT_FOUND},
        {"loop", "new", FALSE, ERROR_PATH_NOT_FOUND},
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(CopyFileW(path(c.from).c_str(), path(c.to).c_str(), c.fail_if_exists));
        EXPECT_EQ(GetLastError(), c.error) << c.from << " " << c.to;
    }
    const HANDLE reader = open(folder + "/old", GENERIC_READ, kShareAll, OPEN_EXISTING);
    EXPECT_FALSE(CopyFileW(path("big").c_str(), path("old").c_str(), FALSE));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    CloseHandle(reader);
    EXPECT_EQ(read_file(folder + "/old"), "old");
    EXPECT_EQ(read_file(folder + "/big").size(), 200000U);
    const auto entries = std::distance(fs::directory_iterator(folder), {});
    EXPECT_EQ(entries, 7) << "something half made was left";
}

TEST(FileNames, DeleteAndRemoveTakeWhatTheyAreFor) {
    const auto folder = new_folder();
    const auto path = [&folder](const char* name) { return platform_path(folder + "/" + name); };
    fs::create_directories(folder + "/full/inner");
    fs::create_directory(folder + "/empty");
    fs::create_directory_symlink(folder + "/full", folder + "/folder_link");
    write_file(folder + "/file", "x");
    write_file(folder + "/locked", "x");
    chmod((folder + "/locked").c_str(), 0444);
    fs::create_symlink("file", folder + "/file_link");
    const auto removed = [](BOOL result) { return result != FALSE ? 0 : GetLastError(); };
    EXPECT_EQ(removed(DeleteFileW(path("full").c_str())), ERROR_ACCESS_DENIED);
    EXPECT_EQ(removed(DeleteFileW(path("folder_link").c_str())), ERROR_ACCESS_DENIED);
    EXPECT_EQ(removed(DeleteFileW(path("locked").c_str())), ERROR_ACCESS_DENIED);
    EXPECT_EQ(removed(DeleteFileW(path("missing").c_str())), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(removed(DeleteFileW(path("missing/x").c_str())), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(removed(DeleteFileW(path("file_link").c_str())), 0U);
    EXPECT_EQ(read_file(folder + "/file"), "x");
    EXPECT_EQ(removed(RemoveDirectoryW(path("full").c_str())), ERROR_DIR_NOT_EMPTY);
    EXPECT_EQ(removed(RemoveDirectoryW(path("file").c_str())), ERROR_DIRECTORY);
    EXPECT_EQ(removed(RemoveDirectoryW(path("folder_link").c_str())), 0U);
    EXPECT_TRUE(fs::exists(folder + "/full/inner"));
    EXPECT_EQ(removed(RemoveDirectoryW(path("EMPTY").c_str())), 0U);
    EXPECT_EQ(removed(CreateDirectoryW(path("full").c_str(), nullptr)), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(removed(CreateDirectoryW(path("no/new").c_str(), nullptr)), ERROR_PATH_NOT_FOUND);

    const HANDLE file = open(folder + "/file", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_EQ(removed(DeleteFileW(path("file").c_str())), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(removed(MoveFileW(path("file").c_str(), path("y").c_str())), ERROR_SHARING_VIOLATION);
    CloseHandle(file);
    EXPECT_EQ(removed(DeleteFileW(path("file").c_str())), 0U);
}

TEST(FileNames, Attributes) {
    const auto folder = new_folder();
    const auto path = [&folder](const char* name) { return platform_path(folder + "/" + name); };
    write_file(folder + "/file", "x");
    write_file(folder + "/.hidden", "x");
    fs::create_directory_symlink(folder, folder + "/link");
    fs::create_symlink("nowhere", folder + "/dangling");
    EXPECT_EQ(GetFileAttributesW(path("file").c_str()), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(GetFileAttributesW(path(".hidden").c_str()), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_EQ(GetFileAttributesW(path("").c_str()), FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(GetFileAttributesW(path("link").c_str()),
              FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT);
    EXPECT_EQ(GetFileAttributesW(path("dangling").c_str()), FILE_ATTRIBUTE_REPARSE_POINT);
    EXPECT_EQ(GetFileAttributesW(path("missing").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(_waccess(path("FILE").c_str(), 6), 0);
    EXPECT_TRUE(SetFileAttributesW(path("file").c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(GetFileAttributesW(path("file").c_str()), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(_waccess(path("file").c_str(), 4), 0);
    EXPECT_EQ(_waccess(path("file").c_str(), 2), -1);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(SetFileAttributesW(path("file").c_str(), FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(try_open(folder + "/file", GENERIC_WRITE, 0), 0U);
}

TEST(MoveFile, ReplacesOnlyWhenTold) {
    const auto folder = new_folder();
    const auto path = [&folder](const char* name) { return platform_path(folder + "/" + name); };
    const auto move = [&path](const char* from, const char* to, DWORD flags) {
        return MoveFileExW(path(from).c_str(), path(to).c_str(), flags) != FALSE ? 0
                                                                                 : GetLastError();
    };
    write_file(folder + "/a.txt", "a");
    write_file(folder + "/b.txt", "b");
    fs::create_directories(folder + "/folder/inner");
    EXPECT_EQ(move("a.txt", "b.txt", 0), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(move("a.txt", "B.TXT", 0), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(move("a.txt", "folder", MOVEFILE_REPLACE_EXISTING), ERROR_ACCESS_DENIED);
    EXPECT_EQ(move("folder", "b.txt", MOVEFILE_REPLACE_EXISTING), ERROR_ACCESS_DENIED);
    EXPECT_EQ(move("folder", "folder/inner/x", 0), ERROR_ACCESS_DENIED);
    EXPECT_EQ(move("missing", "c", 0), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(move("a.txt", "no/c", 0), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(move("a.txt", "A.Txt", 0), 0U);
    EXPECT_TRUE(fs::exists(folder + "/A.Txt"));
    EXPECT_FALSE(fs::exists(folder + "/a.txt"));
    EXPECT_EQ(move("A.Txt", "A.Txt", 0), 0U);
    EXPECT_EQ(move("a.txt", "b.txt", MOVEFILE_REPLACE_EXISTING), 0U);
    EXPECT_EQ(read_file(folder + "/b.txt"), "a");
    EXPECT_EQ(move("folder", "other", 0), 0U);
    EXPECT_TRUE(fs::exists(folder + "/other/inner"));
}

TEST(FileNames, ASeparatorBehindAFileIsNoPartOfItsName) {
    const auto folder = new_folder();
    const auto path = [&folder](const char* name) {
        return platform_path(folder) + u"\\" + std::u16string(name, name + std::strlen(name));
    };
    write_file(folder + "/keep", "x");
    fs::create_directory(folder + "/dir");
    const auto keep = path("KEEP\\");
    const auto fresh = path("new\\");
    const auto failed = [](BOOL result) { return result != FALSE ? 0 : GetLastError(); };
    EXPECT_EQ(failed(DeleteFileW(keep.c_str())), ERROR_INVALID_NAME);
    EXPECT_EQ(failed(CopyFileW(keep.c_str(), path("c").c_str(), FALSE)), ERROR_INVALID_NAME);
    EXPECT_EQ(failed(CopyFileW(path("keep").c_str(), fresh.c_str(), FALSE)), ERROR_INVALID_NAME);
    EXPECT_EQ(failed(MoveFileW(keep.c_str(), path("c").c_str())), ERROR_INVALID_NAME);
    EXPECT_EQ(failed(MoveFileW(path("keep").c_str(), fresh.c_str())), ERROR_INVALID_NAME);
    EXPECT_EQ(failed(SetFileAttributesW(keep.c_str(), 0)), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(GetFileAttributesW(keep.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(_waccess(keep.c_str(), 0), -1);
    for (const DWORD disposition : {CREATE_NEW, CREATE_ALWAYS, OPEN_EXISTING, OPEN_ALWAYS}) {
        const auto& name = disposition == OPEN_EXISTING ? keep : fresh;
        EXPECT_EQ(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, disposition, 0, nullptr),
                  INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_NAME) << disposition;
    }
    // Behind a folder it is welcome.
    EXPECT_EQ(GetFileAttributesW(path("dir\\").c_str()), FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(failed(MoveFileW(path("dir\\").c_str(), path("DIR2\\").c_str())), 0U);
    EXPECT_EQ(failed(RemoveDirectoryW(path("dir2/").c_str())), 0U);
    EXPECT_EQ(failed(CreateDirectoryW(path("d*r\\new").c_str(), nullptr)), ERROR_INVALID_NAME);
    EXPECT_EQ(failed(DeleteFileW(path("d?r\\x").c_str())), ERROR_INVALID_NAME);
    EXPECT_EQ(tests::tree(folder), "keep=x ");
}

TEST(MoveFile, BetweenFileSystemsOnlyFilesAndOnlyWhenAllowed) {
    const auto folder = new_folder();
    char other[] = "/dev/shm/tvutil2-move-XXXXXX";
    struct stat here {};
    struct stat there {};
    if (mkdtemp(other) == nullptr) GTEST_SKIP() << "no second file system";
    stat(folder.c_str(), &here);
    stat(other, &there);
    write_file(folder + "/file", "content");
    fs::create_directory(folder + "/folder");
    const auto target = platform_path(std::string(other) + "/file");
    if (here.st_dev != there.st_dev) {
        EXPECT_FALSE(MoveFileExW(platform_path(folder + "/file").c_str(), target.c_str(), 0));
        EXPECT_EQ(GetLastError(), ERROR_NOT_SAME_DEVICE);
        EXPECT_FALSE(MoveFileW(platform_path(folder + "/folder").c_str(), target.c_str()));
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    }
    EXPECT_TRUE(MoveFileW(platform_path(folder + "/file").c_str(), target.c_str()));
    EXPECT_EQ(read_file(std::string(other) + "/file"), "content");
    EXPECT_FALSE(fs::exists(folder + "/file"));
    fs::remove_all(other);
}

}  // namespace
