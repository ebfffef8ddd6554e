#include "tvutil2/platform/files/shell_operations.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/host_files.h"
#include "tests/support/profile.h"

namespace {

namespace fs = std::filesystem;
using tests::new_folder;
using tests::read_file;
using tests::tree;
using tests::write_file;

constexpr FILEOP_FLAGS kQuiet = FOF_NOCONFIRMATION | FOF_SILENT | FOF_NOERRORUI;

struct Outcome {
    int result;
    bool aborted;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

Outcome run(UINT operation, const std::vector<std::string>& from,
            const std::vector<std::string>& to, FILEOP_FLAGS flags = kQuiet) {
    const auto list = [](const std::vector<std::string>& names) {
        std::u16string text;
        for (const auto& name : names) text += tests::platform_path(name) + u'\0';
        return text;
    };
    const auto sources = list(from);
    const auto targets = list(to);
    SHFILEOPSTRUCTW request{};
    request.wFunc = operation;
    request.pFrom = sources.c_str();
    request.pTo = to.empty() ? nullptr : targets.c_str();
    request.fFlags = flags;
    const int result = SHFileOperationW(&request);
    return {result, request.fAnyOperationsAborted != FALSE};
}

// a/ with a file, a folder, and links that must not be followed; and what the links lead to.
std::string folder_with_tree() {
    auto folder = new_folder();
    fs::create_directories(folder + "/a/sub");
    fs::create_directory(folder + "/outside");
    write_file(folder + "/outside/kept", "kept");
    write_file(folder + "/a/1.txt", "one");
    write_file(folder + "/a/sub/2.txt", "two");
    write_file(folder + "/a/sub/bad\xFFname", "raw");
    fs::create_directory_symlink(folder + "/outside", folder + "/a/link");
    fs::create_directory_symlink("..", folder + "/a/sub/up");
    return folder;
}

TEST(ShellOperation, DeleteTakesTheTreeAndNothingBehindItsLinks) {
    const auto folder = folder_with_tree();
    EXPECT_EQ(run(FO_DELETE, {folder + "/a"}, {}), (Outcome{0, false}));
    EXPECT_EQ(tree(folder), "outside/ outside/kept=kept ");

    fs::create_directory_symlink("outside", folder + "/link");
    EXPECT_EQ(run(FO_DELETE, {folder + "/link"}, {}), (Outcome{0, false}));
    EXPECT_EQ(tree(folder), "outside/ outside/kept=kept ");
}

TEST(ShellOperation, DeleteOfAVeryDeepTree) {
    const auto folder = new_folder();
    fs::current_path(folder);
    for (int depth = 0; depth < 2200; ++depth) {
        fs::create_directory("deeper");
        fs::current_path("deeper");
    }
    fs::current_path(folder);
    EXPECT_EQ(run(FO_DELETE, {folder + "/deeper"}, {}).result, 0);
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST(ShellOperation, GoesOnBehindAFailureAndTellsTheFirst) {
    const auto folder = new_folder();
    for (const auto* name : {"/1", "/2", "/3"}) write_file(folder + name, "x");
    const HANDLE held = CreateFileW(tests::platform_path(folder + "/2").c_str(), GENERIC_READ,
                                    FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(run(FO_DELETE, {folder + "/*"}, {}).result,
              static_cast<int>(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(tree(folder), "2=x ");
    EXPECT_EQ(run(FO_DELETE, {folder}, {}).result, static_cast<int>(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(tree(folder), "2=x ");
    CloseHandle(held);
    EXPECT_EQ(run(FO_DELETE, {folder + "/missing", folder + "/2"}, {}).result,
              static_cast<int>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(tree(folder), "");
}

TEST(ShellOperation, CopyAndMoveGiveTheSameTree) {
    for (const auto operation : {FO_COPY, FO_MOVE}) {
        const auto folder = folder_with_tree();
        const auto before = tree(folder + "/a");
        EXPECT_EQ(run(operation, {folder + "/a"}, {folder + "/new/b"}).result, 0);
        EXPECT_EQ(tree(folder + "/new/b"), before);
        EXPECT_EQ(fs::exists(folder + "/a"), operation == FO_COPY);
        EXPECT_EQ(read_file(folder + "/outside/kept"), "kept");
    }
}

TEST(ShellOperation, WhereThingsEndUp) {
    using Names = std::vector<std::string>;
    constexpr int kCancelled = DE_OPCANCELLED;
    constexpr int kMissing = ERROR_FILE_NOT_FOUND;
    constexpr int kViolation = ERROR_SHARING_VIOLATION;
    constexpr int kInvalid = ERROR_INVALID_PARAMETER;
    constexpr FILEOP_FLAGS kPairs = kQuiet | FOF_MULTIDESTFILES;
    const std::string folders = "d/ d/x=X e/ e/x=E ";
    const std::string untouched = folders + "f=F g=G ";
    const struct {
        const char* what;
        UINT operation;
        Names from, to;
        std::string tree;
        int result = 0;
        FILEOP_FLAGS flags = kQuiet;
    } cases[] = {
        {"into a folder", FO_MOVE, {"/f"}, {"/d"}, "d/ d/f=F d/x=X e/ e/x=E g=G "},
        {"to a new name", FO_MOVE, {"/f"}, {"/n"}, folders + "g=G n=F "},
        {"two make a folder", FO_MOVE, {"/f", "/g"}, {"/n"}, folders + "n/ n/f=F n/g=G "},
        {"merge", FO_MOVE, {"/d/*", "/f"}, {"/e"}, "d/ e/ e/f=F e/x=X g=G "},
        {"into one of its name",
         FO_COPY,
         {"/e"},
         {"/d/e"},
         "d/ d/e/ d/e/x=E " + untouched.substr(3)},
        {"pairs",
         FO_MOVE,
         {"/f", "/g"},
         {"/p/1", "/q/2"},
         folders + "p/ p/1=F q/ q/2=G ",
         0,
         kPairs},
        {"no pairs", FO_MOVE, {"/f", "/g"}, {"/p"}, untouched, kInvalid, kPairs},
        {"half", FO_MOVE, {"/no", "/g"}, {"/1", "/2"}, "2=G " + folders + "f=F ", kMissing, kPairs},
        {"over another, in other case", FO_COPY, {"/f"}, {"/G"}, folders + "f=F g=F "},
        {"over another, nobody to ask", FO_COPY, {"/f"}, {"/g"}, untouched, kCancelled, FOF_SILENT},
        {"delete, nobody to ask", FO_DELETE, {"/f"}, {}, untouched, kCancelled, 0},
        {"file over folder", FO_MOVE, {"/f"}, {"/d/x/"}, untouched, ERROR_PATH_NOT_FOUND},
        {"into itself",
         FO_COPY,
         {"/d"},
         {"/d/sub/d"},
         "d/ d/sub/ " + untouched.substr(3),
         kViolation},
        {"on itself", FO_MOVE, {"/f"}, {"/F"}, untouched, kViolation},
        {"rename", FO_RENAME, {"/f"}, {"/h"}, folders + "g=G h=F "},
        {"rename of case alone", FO_RENAME, {"/f"}, {"/F"}, "F=F " + folders + "g=G "},
        {"rename over another", FO_RENAME, {"/f"}, {"/g"}, untouched, ERROR_ALREADY_EXISTS},
        {"no match", FO_DELETE, {"/*.none"}, {}, untouched, kMissing},
        {"by wildcards, in other case", FO_DELETE, {"/?"}, {}, ""},
        {"unknown", 5, {"/f"}, {"/h"}, untouched, kInvalid},
    };
    // No terminal to ask on, wherever the tests run.
    setsid();
    for (const auto& c : cases) {
        const auto folder = new_folder();
        for (const auto* name : {"/d", "/e"}) fs::create_directory(folder + name);
        for (const auto& [name, text] :
             {std::pair{"/d/x", "X"}, {"/e/x", "E"}, {"/f", "F"}, {"/g", "G"}}) {
            write_file(folder + name, text);
        }
        auto from = c.from;
        auto to = c.to;
        for (auto& name : from) name.insert(0, folder);
        for (auto& name : to) name.insert(0, folder);
        EXPECT_EQ(run(c.operation, from, to, c.flags), (Outcome{c.result, c.result == kCancelled}))
            << c.what;
        EXPECT_EQ(tree(folder), c.tree) << c.what;
    }
}

TEST(ShellOperation, RootsAndNothingAreRefused) {
    EXPECT_EQ(run(FO_DELETE, {"/"}, {}).result, static_cast<int>(ERROR_ACCESS_DENIED));
    EXPECT_EQ(run(FO_DELETE, {}, {}).result, static_cast<int>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(SHFileOperationW(nullptr), static_cast<int>(ERROR_INVALID_PARAMETER));
}

TEST(Trash, KeepsEachThingWithItsPlaceAndTime) {
    const auto folder = folder_with_tree();
    const auto trash = tests::profile_folder() + "/Trash";
    const auto before = tree(folder + "/a");
    EXPECT_EQ(run(FO_DELETE, {folder + "/a"}, {}, kQuiet | FOF_ALLOWUNDO).result, 0);
    EXPECT_FALSE(fs::exists(folder + "/a"));
    EXPECT_EQ(tree(trash + "/files/a"), before);
    const auto information = read_file(trash + "/info/a.trashinfo");
    EXPECT_EQ(information.find("[Trash Info]\nPath=" + folder + "/a\nDeletionDate=2"), 0U)
        << information;

    // The same name many times, and one that needs escapes.
    for (int i = 0; i < 15; ++i) {
        write_file(folder + "/50% \xC3\xA4", std::to_string(i));
        EXPECT_EQ(run(FO_DELETE, {folder + "/50% \xC3\xA4"}, {}, kQuiet | FOF_ALLOWUNDO).result, 0);
    }
    EXPECT_EQ(read_file(trash + "/files/50% \xC3\xA4.3"), "2");
    EXPECT_NE(read_file(trash + "/info/50% \xC3\xA4.3.trashinfo").find("/50%25%20%C3%A4\n"),
              std::string::npos);
    EXPECT_EQ(std::distance(fs::directory_iterator(trash + "/files"), {}), 16);
    EXPECT_EQ(std::distance(fs::directory_iterator(trash + "/info"), {}), 16);
}

TEST(Trash, TakesFromAnotherFileSystemAndLosesNothingWhenFull) {
    char other[] = "/dev/shm/tvutil2-trash-XXXXXX";
    if (mkdtemp(other) == nullptr) GTEST_SKIP() << "no second file system";
    const std::string folder(other);
    const auto trash = tests::profile_folder() + "/Trash";
    fs::create_directory(folder + "/tree");
    write_file(folder + "/tree/big", std::string(200000, 'x'));
    {
        const tests::FullDisk full(100000);
        EXPECT_NE(run(FO_DELETE, {folder + "/tree"}, {}, kQuiet | FOF_ALLOWUNDO).result, 0);
    }
    EXPECT_EQ(read_file(folder + "/tree/big").size(), 200000U);
    EXPECT_EQ(run(FO_DELETE, {folder + "/tree"}, {}, kQuiet | FOF_ALLOWUNDO).result, 0);
    EXPECT_TRUE(fs::is_empty(folder));
    bool found = false;
    for (const auto& entry : fs::recursive_directory_iterator(trash + "/files")) {
        found = found || (entry.is_regular_file() && entry.file_size() == 200000);
    }
    EXPECT_TRUE(found);
    fs::remove_all(folder);
}

}  // namespace
