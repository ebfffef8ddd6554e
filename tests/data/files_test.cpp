#include "tvutil2/data/files.h"

#include "tvutil2/data/folders.h"
#include "tvutil2/data/names.h"
#include "tvutil2/data/shell.h"
#include "tvutil2/framework/collections.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/shell_link.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/host_files.h"
#include "tests/support/profile.h"

namespace {

namespace fs = std::filesystem;
using tests::new_folder;
using tests::read_file;
using tests::tree;
using tests::write_file;

std::u16string wide(const std::string& host) {
    return tests::platform_path(host);
}

TEST(DataFiles, Existence) {
    const auto folder = new_folder();
    write_file(folder + "/file.txt", "");
    fs::create_directory(folder + "/sub");
    const auto path = [&folder](const char* name) { return wide(folder + "/" + name); };
    EXPECT_EQ(DoesFileExist(path("file.txt").c_str()), 1);
    EXPECT_EQ(DoesFileExist(path("FILE.TXT").c_str()), 1);
    EXPECT_EQ(DoesFileExist(path("*.txt").c_str()), 1);
    EXPECT_EQ(DoesFileExist(path("sub").c_str()), 1);
    EXPECT_EQ(DoesFileExist(path("none").c_str()), 0);
    EXPECT_EQ(DoesFileExist(nullptr), 0);
    EXPECT_EQ(DoesFolderExist(path("sub").c_str()), 1);
    EXPECT_EQ(DoesFolderExist(path("file.txt").c_str()), 0);
    EXPECT_EQ(DoesFolderExist(path("*").c_str()), 0);
    EXPECT_EQ(DoesFolderExist(nullptr), 0);
}

TEST(DataFiles, FoldersAreMadeAsDeepAsTold) {
    const auto folder = new_folder();
    write_file(folder + "/file", "");
    const auto path = [&folder](const char* name) { return wide(folder + "/" + name); };
    EXPECT_EQ(EnsureFolderExist(path("a/b").c_str()), 0);
    EXPECT_EQ(EnsureFolderExistRecursive(path("a/b/c").c_str()), 1);
    EXPECT_EQ(EnsureFolderExistRecursive(path("a/b/c").c_str()), 1);
    EXPECT_EQ(EnsureFolderExistRecursive(path("file").c_str()), 1);
    EXPECT_EQ(EnsureFolderExistRecursive(path("file/x").c_str()), 0);
    EXPECT_EQ(EnsureFolderExistRecursive(path("no/").append(u"\\..\\a\\b").c_str()), 1);
    EXPECT_EQ(EnsureFolderExistRecursive(path("no/").append(u"\\..\\a\\d\\").c_str()), 1);
    fs::remove(folder + "/a/d");
    EXPECT_EQ(EnsureFolderExistRecursive(u"Q:\\x"), 0);
    EXPECT_EQ(EnsureFolderExistRecursive(u""), 0);
    EXPECT_EQ(EnsureFolderExistRecursive(nullptr), 0);
    EXPECT_EQ(tree(folder), "a/ a/b/ a/b/c/ file= ");

    // A hundred thousand separators, alone and between names, end and are quick.
    const auto hostile = wide(folder) + std::u16string(100000, u'\\') + u"d";
    EXPECT_EQ(EnsureFolderExistRecursive(hostile.c_str()), 1);
    auto deep = wide(folder);
    for (int i = 0; i < 50000; ++i) deep += u"\\x";
    EXPECT_EQ(EnsureFolderExistRecursive(deep.c_str()), 0);
    EXPECT_FALSE(fs::exists(folder + "/x"));

    fs::current_path(folder);
    EXPECT_EQ(EnsureFolderExistRecursive(u"r\\s"), 1);
    EXPECT_TRUE(fs::is_directory(folder + "/r/s"));
}

TEST(DataFiles, AfxGetValidFolderPath) {
    const auto folder = new_folder();
    const auto check = [](std::u16string_view text, int create) {
        CString path(text);
        const int result = AfxGetValidFolderPath(path, create);
        return std::to_string(result) + " " + tvutil2::to_utf8_lossy(path.View());
    };
    const auto base = tvutil2::to_utf8_lossy(wide(folder));
    EXPECT_EQ(check(u"C:\\", 0), "1 C:");
    EXPECT_EQ(check(u"relative\\dir", 1), "0 relative\\dir");
    EXPECT_EQ(check(u"", 1), "0 ");
    EXPECT_EQ(check(wide(folder) + u"\\new\\\\", 0), "0 " + base + "\\new");
    EXPECT_EQ(check(wide(folder) + u"\\new\\\\", 1), "1 " + base + "\\new");
    EXPECT_EQ(check(u"\\\\server\\x\\", 1), "0 \\\\server\\x");
    EXPECT_EQ(check(u"\\\\\\", 1), "0 ");
}

TEST(DataFiles, CreateEmptyFile) {
    setsid();  // nobody to show the message to
    const auto folder = new_folder();
    EXPECT_EQ(CreateEmptyFile(wide(folder + "/new").c_str()), 1);
    EXPECT_EQ(tree(folder), "new= ");
    testing::internal::CaptureStderr();
    EXPECT_EQ(CreateEmptyFile(wide(folder + "/new").c_str()), 0);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Cannot create file: C:\\"),
              std::string::npos);
}

TEST(Names, WildcardMatch) {
    const struct {
        const char16_t* pattern;
        const char16_t* text;
        int result;
    } cases[] = {
        {u"***", u"", 1},   {u"", u"", 1},     {u"", u"a", 0},     {u"a*b", u"axxb", 1},
        {u"a?", u"a", 0},   {u"A*", u"a", 0},  {u"*b", u"aab", 1}, {u"*ab*ab", u"abab", 1},
        {u"a*", u"a", 1},   {u"?*?", u"a", 0}, {u"*?", u"ab", 1},  {u"*.txt", u"a.txt.bak", 0},
        {u"*b", u"*xb", 0}, {u"*x", u"*x", 1},  // a "*" that meets a "*" is that character
    };
    for (const auto& c : cases) {
        EXPECT_EQ(WildcardMatch(c.pattern, c.text), c.result)
            << tvutil2::to_utf8_lossy(c.pattern) << " " << tvutil2::to_utf8_lossy(c.text);
    }
    EXPECT_EQ(WildcardMatch(nullptr, nullptr), 1);
}

struct Seen {
    std::size_t limit;
    std::vector<std::u16string> names;
};
int see(const char16_t* name, long data) {
    auto& seen = *reinterpret_cast<Seen*>(data);
    seen.names.emplace_back(name);
    return seen.names.size() < seen.limit ? 1 : 0;
}

TEST(Names, Enumeration) {
    const auto folder = new_folder();
    Seen seen{9, {}};
    const auto enumerate = [&] {
        return EnumFile(wide(folder).c_str(), u"ext", see, reinterpret_cast<long>(&seen));
    };
    EXPECT_EQ(enumerate(), 0);
    EXPECT_EQ(DoesFolderHave(wide(folder).c_str(), u"ext"), 0);
    EXPECT_EQ(DoesFolderHave(wide(folder + "/none").c_str(), u"ext"), 0);
    EXPECT_TRUE(seen.names.empty());
    for (const auto* name : {"b.ext", "A.EXT", "c.d.ext", "other.txt", "bare"}) {
        write_file(folder + "/" + name, "");
    }
    EXPECT_EQ(DoesFolderHave(wide(folder).c_str(), u"Ext"), 1);
    EXPECT_EQ(DoesFolderHave(wide(folder).c_str(), u"xt"), 0);
    fs::create_directory(folder + "/sub");
    EXPECT_EQ(DoesFolderHave(wide(folder).c_str(), u"xt"), 1);
    EXPECT_EQ(enumerate(), 1);
    EXPECT_EQ(seen.names, (std::vector<std::u16string>{u"A", u"b", u"c.d"}));
    seen = {2, {}};
    EXPECT_EQ(enumerate(), 1);
    EXPECT_EQ(seen.names.size(), 2U);
    CStringList names;
    GetFileNamesInADir(wide(folder).c_str(), names);
    std::string all;
    for (POSITION at = names.GetHeadPosition(); at != nullptr;) {
        all += tvutil2::to_utf8_lossy(names.GetNext(at).View()) + "|";
    }
    EXPECT_EQ(all, "A|b|bare|c.d|other|");
}

std::string folder_with_tree() {
    auto folder = new_folder();
    fs::create_directories(folder + "/from/sub/deep");
    fs::create_directory(folder + "/from/empty");
    fs::create_directory(folder + "/outside");
    write_file(folder + "/outside/kept", "kept");
    write_file(folder + "/from/1.ssn", "1");
    write_file(folder + "/from/2.txt", "2");
    write_file(folder + "/from/sub/deep/3.SSN", "3");
    fs::create_directory_symlink(folder + "/outside", folder + "/from/link");
    fs::create_directory_symlink("..", folder + "/from/sub/up");
    return folder;
}

TEST(Folders, CopyFolderOverwritesAndPassesOverFailures) {
    const auto folder = folder_with_tree();
    fs::create_directory(folder + "/to");
    write_file(folder + "/to/1.SSN", "old");
    write_file(folder + "/to/2.txt", "locked");
    chmod((folder + "/to/2.txt").c_str(), 0444);
    CopyFolder(wide(folder + "/from").c_str(), wide(folder + "/to").c_str());
    EXPECT_EQ(tree(folder + "/to"), "1.SSN=1 2.txt=locked empty/ link->" + folder +
                                        "/outside sub/ sub/deep/ sub/deep/3.SSN=3 sub/up->.. ");
    CopyFolder(wide(folder + "/missing").c_str(), wide(folder + "/new").c_str());
    EXPECT_FALSE(fs::exists(folder + "/new"));
    // Into itself: once, and not without end.
    CopyFolder(wide(folder + "/outside").c_str(), wide(folder + "/outside/Copy").c_str());
    EXPECT_EQ(tree(folder + "/outside"), "Copy/ Copy/kept=kept kept=kept ");
}

TEST(Folders, MoveFolderTakesWhatEndsSo) {
    const auto folder = folder_with_tree();
    EXPECT_EQ(MoveFolder(wide(folder + "/from").c_str(), wide(folder + "/to").c_str(), u".ssn"), 1);
    EXPECT_EQ(tree(folder + "/to"), "1.ssn=1 sub/ sub/deep/ sub/deep/3.SSN=3 ");
    EXPECT_EQ(tree(folder + "/from"),
              "2.txt=2 empty/ link->" + folder + "/outside sub/ sub/deep/ sub/up->.. ");
    EXPECT_EQ(MoveFolder(wide(folder + "/from").c_str(), wide(folder + "/to").c_str(), u".none"),
              1);
    setsid();  // a file in the way is a question, and there is nobody to ask
    write_file(folder + "/to/2.txt", "in the way");
    EXPECT_EQ(MoveFolder(wide(folder + "/from").c_str(), wide(folder + "/to").c_str(), u""), 0);
    EXPECT_EQ(read_file(folder + "/to/2.txt"), "in the way");
    EXPECT_EQ(read_file(folder + "/from/2.txt"), "2");
}

TEST(Folders, DeletionAndRenaming) {
    const auto folder = folder_with_tree();
    EXPECT_EQ(DeleteFolderFiles(wide(folder + "/from").c_str(), 0), 1);
    EXPECT_EQ(tree(folder), "from/ outside/ outside/kept=kept ");
    EXPECT_EQ(DeleteFolderFiles(wide(folder + "/from").c_str(), 0), 1);
    EXPECT_EQ(DeleteFolderFiles(wide(folder + "/from").c_str(), 1), 1);
    EXPECT_EQ(DeleteFolderFiles(wide(folder + "/from").c_str(), 0), 0);
    EXPECT_EQ(DeleteFolderFiles(wide(folder + "/from").c_str(), 1), 0);

    write_file(folder + "/a", "a");
    EXPECT_EQ(SHRenameFile(wide(folder + "/a").c_str(), wide(folder + "/b").c_str()), 0);
    EXPECT_EQ(SHRenameFile(wide(folder + "/b").c_str(), wide(folder + "/outside").c_str()),
              static_cast<int>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(SHDeleteFile(wide(folder + "/b").c_str()), 0);
    EXPECT_EQ(read_file(tests::profile_folder() + "/Trash/files/b"), "a");
    EXPECT_EQ(SHDeleteFile(wide(folder + "/b").c_str()), static_cast<int>(ERROR_FILE_NOT_FOUND));
}

// What would be the whole disk, if it weren't so, is a folder that the child has for its root.
TEST(Folders, AnEmptyNameIsNoDiskForTheSuperuserEither) {
    const auto root = folder_with_tree();
    const auto before = tree(root);
    EXPECT_EQ(tests::in_child([&] {
                  if (geteuid() != 0) return 0;  // the next test does it as anybody else
                  if (chroot(root.c_str()) != 0 || chdir("/") != 0) return 1;
                  if (MoveFolder(u"", u"C:\\new", u"") != 0) return 2;
                  return DeleteFolderFiles(u"", 0) != 0 ? 3 : 0;
              }),
              0);
    EXPECT_EQ(tree(root), before);
}

// The root of a drive here, and the whole disk if anything takes an empty text for one.
TEST(Folders, NothingIsDoneWithoutAPathOrToARoot) {
    const auto folder = folder_with_tree();
    const auto before = tree(folder);
    fs::create_directory_symlink(folder, folder + "-link");
    const auto link = wide(folder + "-link");
    setenv("TVUTIL_DRIVES", ("R=" + folder).c_str(), 1);
    const auto here = wide(folder + "/from");
    const auto new_place = wide(folder + "/new");
    for (const char16_t* none : {static_cast<const char16_t*>(nullptr), u""}) {
        EXPECT_EQ(SHRenameFile(none, here.c_str()), static_cast<int>(ERROR_PATH_NOT_FOUND));
        EXPECT_EQ(SHRenameFile(here.c_str(), none), static_cast<int>(ERROR_PATH_NOT_FOUND));
        EXPECT_EQ(SHDeleteFile(none), static_cast<int>(ERROR_PATH_NOT_FOUND));
        EXPECT_EQ(MoveFolder(here.c_str(), none, u""), 0);
        EXPECT_EQ(DeleteFolderFiles(none, 1), 0);
        CopyFolder(here.c_str(), none);
        CopyFolder(none, new_place.c_str());
        if (none != nullptr && geteuid() == 0) continue;  // in case it isn't true
        EXPECT_EQ(MoveFolder(none, new_place.c_str(), u""), 0);
        EXPECT_EQ(DeleteFolderFiles(none, 0), 0);
    }
    for (const auto& root : {std::u16string(u"R:\\"), std::u16string(u"r:"), wide(folder), link}) {
        EXPECT_EQ(MoveFolder(root.c_str(), new_place.c_str(), u""), 0);
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
        EXPECT_EQ(DeleteFolderFiles(root.c_str(), 0), 0);
        EXPECT_EQ(root == link ? 0 : DeleteFolderFiles(root.c_str(), 1), 0);
        EXPECT_EQ(SHDeleteFile((root + u"\\*").c_str()), static_cast<int>(ERROR_ACCESS_DENIED));
    }
    EXPECT_FALSE(MoveFileExW(u"R:\\", wide(folder + "-moved").c_str(), 0));
    EXPECT_EQ(tree(folder), before);
    unsetenv("TVUTIL_DRIVES");
}

TEST(Folders, NamesThatExistAreNoPatterns) {
    const auto folder = new_folder();
    const auto fill = [&folder] {
        fs::remove_all(folder + "/in");
        fs::create_directories(folder + "/in/d*");
        for (const auto* name : {"a*", "ab", "*.txt", "b.txt", "note?.txt", "note1.txt", "d*/x"}) {
            write_file(folder + "/in/" + name, "");
        }
    };
    const auto in = [&folder](const char* name) { return wide(folder + "/in/" + name); };
    fill();
    EXPECT_EQ(SHDeleteFile(in("a*").c_str()), 0);
    EXPECT_EQ(SHRenameFile(in("note?.txt").c_str(), in("n*").c_str()), 0);
    EXPECT_EQ(DeleteFolderFiles(in("d*").c_str(), 0), 1);
    EXPECT_EQ(tree(folder + "/in"), "*.txt= ab= b.txt= d*/ n*= note1.txt= ");
    EXPECT_EQ(DeleteFolderFiles(in("d*").c_str(), 1), 1);
    EXPECT_EQ(DeleteFolderFiles(in("b*").c_str(), 1), 0) << "isn't there, and stands for nothing";
    EXPECT_EQ(MoveFolder(in("").c_str(), wide(folder + "/out").c_str(), u".txt"), 1);
    EXPECT_EQ(tree(folder + "/in"), "ab= n*= ");
    EXPECT_EQ(tree(folder + "/out"), "*.txt= b.txt= note1.txt= ");
    EXPECT_EQ(SHDeleteFile(in("A*").c_str()), 0) << "isn't there, and stands for ab";
    EXPECT_EQ(tree(folder + "/in"), "n*= ");
}

TEST(Folders, AFolderInItselfByAnyName) {
    const auto folder = new_folder();
    const auto fill = [&folder] {
        fs::remove_all(folder + "/from");
        fs::create_directories(folder + "/from/sub/inside");
        write_file(folder + "/from/f", "");
        write_file(folder + "/from/sub/g", "");
    };
    fs::create_directory_symlink(folder + "/from/sub", folder + "/link");
    const auto from = wide(folder + "/from");
    const std::u16string spellings[] = {
        from + u"\\sub/inside",        from + u"\\sub\\\\inside",
        from + u"\\SUB\\Inside",       u"\\.\\" + from.substr(3) + u"\\sub\\inside\\",
        wide(folder + "/link/inside"),
    };
    for (const auto& to : spellings) {
        fill();
        CopyFolder(from.c_str(), to.c_str());
        EXPECT_EQ(tree(folder + "/from"),
                  "f= sub/ sub/g= sub/inside/ sub/inside/f= sub/inside/sub/ sub/inside/sub/g= ");
        fill();
        EXPECT_EQ(MoveFolder(from.c_str(), to.c_str(), u""), 1);
        EXPECT_EQ(tree(folder + "/from"),
                  "sub/ sub/inside/ sub/inside/f= sub/inside/sub/ "
                  "sub/inside/sub/g= ");
    }
    fill();
    const auto before = tree(folder + "/from");
    const auto same = wide(folder) + u"\\link\\..\\from\\sub\\..\\";
    CopyFolder(from.c_str(), same.c_str());
    EXPECT_EQ(MoveFolder(from.c_str(), same.c_str(), u""), 0);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(tree(folder + "/from"), before);
}

TEST(Folders, CopiesKeepModesAndNamesApart) {
    const auto folder = new_folder();
    fs::create_directories(folder + "/from/private");
    for (const auto* name : {"/from/a", "/from/A", "/from/bad\xFFname"}) {
        write_file(folder + name, name);
    }
    chmod((folder + "/from/private").c_str(), 0700);
    for (int round = 0; round < 2; ++round) {
        CopyFolder(wide(folder + "/from").c_str(), wide(folder + "/to").c_str());
        EXPECT_EQ(tree(folder + "/to"), tree(folder + "/from"));
    }
    EXPECT_EQ(fs::status(folder + "/to/private").permissions(), fs::perms::owner_all);
}

TEST(Shortcuts, ComeBackOrFail) {
    const auto folder = new_folder();
    write_file(folder + "/target", "");
    const auto target = wide(folder + "/target");
    const auto link = wide(folder + "/x.lnk");
    SHORTCUTSTRUCT info{target.c_str(), u"description", nullptr, u"-a b", 7, -3};
    EXPECT_EQ(SHCreateShortcutEx(link.c_str(), nullptr), E_FAIL);
    EXPECT_EQ(SHCreateShortcutEx(wide(folder + "/none/x").c_str(), &info),
              HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(SHCreateShortcutEx(link.c_str(), &info), S_OK);
    CString found(u"before");
    EXPECT_EQ(ResolveShortcut(link.c_str(), found, 0), S_OK);
    EXPECT_EQ(std::u16string(found.View()), target);
    fs::remove(folder + "/target");
    found = u"before";
    EXPECT_EQ(ResolveShortcut(link.c_str(), found, 1), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(ResolveShortcut(nullptr, found, 1), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(std::u16string(found.View()), u"before");
}

}  // namespace
