#include "tvutil2/data/session_folders.h"

#include "tvutil2/data/user_data.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/shell_operations.h"
#include "tvutil2/settings/ini_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

namespace fs = std::filesystem;
using tests::new_folder;
using tests::platform_path;
using tests::write_file;

std::string data() {
    return tests::profile_folder() + "/home/Documents/Tolvarine Computer/8";
}

CString choices_file() {
    return CString(GetUserDataFolderPath(0)) + u"\\SessionPath.ini";
}

void choose(const char16_t* key, const std::u16string& folder) {
    CIniFile choices(choices_file());
    choices.SetValue(u"SessionPath", key, folder.c_str());
    ASSERT_NE(choices.Write(choices_file(), 1, 0), 0);
}

CString choice(const char16_t* key) {
    return CIniFile(choices_file()).GetValue(u"SessionPath", key, u"");
}

// Runs `ask` on a terminal of its own, types the answers as the questions come, and gives what was
// shown; `result` is the exit code.
std::string answered(const std::function<int()>& ask, const std::vector<std::string>& answers,
                     int& result) {
    tests::Terminal terminal(ask);
    for (const auto& keys : answers) {
        terminal.wait_for("): ");
        terminal.type(keys);
    }
    const auto& shown = terminal.read_all();
    result = terminal.result();
    return shown;
}

TEST(SessionFolders, DefaultsAreMade) {
    const std::pair<const char16_t*, std::string> cases[] = {
        {u"Pelrin", "/Pelrin/Sessions"},
        {u"Dovr", "/Dovr/Sessions"},
        {u"Ombrelia", "/Ombrelia/Sessions/Ombrelia"},
        {u"Lumsey", "/Ombrelia/Sessions/Lumsey"},
        {u"VNC", "/Ombrelia/Sessions/VNC"},
        {u"Extra", "/Extra/Sessions"},
    };
    for (const auto& [kind, place] : cases) {
        EXPECT_EQ(AfxGetSessionPath(kind).View(), platform_path(data() + place));
        EXPECT_TRUE(fs::is_directory(data() + place)) << place;
    }
    EXPECT_EQ(AfxGetSessionPath(u"vnc").View(), platform_path(data() + "/Ombrelia/Sessions/vnc"));
    EXPECT_EQ(GetSharedSessionPath(1).View(),
              platform_path(tests::profile_folder() +
                            "/common/Tolvarine Computer/8/Ombrelia/Sessions/Lumsey"));
    EXPECT_TRUE(fs::is_directory(tests::profile_folder() +
                                 "/common/Tolvarine Computer/8/Ombrelia/Sessions/Lumsey"));
    EXPECT_FALSE(fs::exists(data() + "/SessionPath.ini"));
}

TEST(SessionFolders, ChoicesThatAreThereAreInEffect) {
    const auto place = new_folder();
    write_file(place + "/file", "");
    const auto there = platform_path(place);
    const auto fallback = platform_path(data() + "/Dovr/Sessions");
    const std::pair<std::u16string, std::u16string> cases[] = {
        {there, there},          {there + u"\\", there},        {there + u"\\\\\\", there},
        {u"", fallback},         {there + u"\\gone", fallback}, {there + u"\\file", fallback},
        {u"Q:\\Sess", fallback},
    };
    for (const auto& [stored, in_effect] : cases) {
        choose(u"Dovr", stored);
        EXPECT_EQ(AfxGetSessionPath(u"Dovr").View(), in_effect);
        EXPECT_EQ(choice(u"Dovr").View(), stored) << "stays in the file";
    }
}

TEST(SessionFolders, TheSuiteSharesARoot) {
    const auto root = new_folder();
    choose(u"OmbreliaSessions", platform_path(root));
    EXPECT_EQ(AfxGetSessionPath(u"Lumsey").View(), platform_path(root + "/Lumsey"));
    EXPECT_TRUE(fs::is_directory(root + "/Lumsey"));
    EXPECT_EQ(AfxGetOmbrSessionPath().View(), platform_path(root));
    EXPECT_EQ(AfxGetOmbrAddonSessionPath(u"Extra").View(), platform_path(root + "/Extra"));
    EXPECT_FALSE(fs::exists(root + "/Extra"));
    EXPECT_EQ(AfxGetOmbrDefaultSessionPath().View(), platform_path(data() + "/Ombrelia/Sessions"));
    EXPECT_EQ(AfxGetOmbrDefaultCommonPath().View(), platform_path(data() + "/Ombrelia"));
    EXPECT_EQ(AfxGetOmbrAddonConfigPath(u"Extra").View(),
              platform_path(data() + "/Ombrelia/addons/Extra"));
    EXPECT_TRUE(fs::is_directory(data() + "/Ombrelia/addons"));

    // A file where the kind's folder belongs.
    write_file(root + "/VNC", "");
    EXPECT_EQ(AfxGetSessionPath(u"VNC").View(), platform_path(data() + "/Ombrelia/Sessions/VNC"));
    choose(u"OmbreliaSessions", u"Q:\\gone");
    EXPECT_EQ(AfxGetOmbrSessionPath().View(), platform_path(data() + "/Ombrelia/Sessions"));
}

TEST(SessionFolders, WithoutUserDataATemporaryFolderServes) {
    write_file(tests::profile_folder() + "/home", "");
    EXPECT_EQ(AfxGetSessionPath(u"Pelrin").View(),
              platform_path(tests::profile_folder() + "/temp/Pelrin/Sessions"));
    EXPECT_TRUE(fs::is_directory(tests::profile_folder() + "/temp/Pelrin/Sessions"));
}

TEST(SessionFiles, ExtensionsKnowTheirCase) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"Pelrin", u"pln"},        {u"Dovr", u"dvf"}, {u"Ombrelia", u"ombs"},
        {u"Lumsey", u"lmcs"},       {u"VNC", u"ovnc"}, {u"pelrin", u""},
        {u"OmbreliaSessions", u""}, {u"", u""},        {nullptr, u""},
    };
    for (const auto& [kind, extension] : cases) {
        CString found(u"stale");
        GetSessionFilesExt(kind, found);
        EXPECT_EQ(found, extension);
    }
}

TEST(SessionFiles, AreFoundByTheirEnding) {
    const std::pair<const char*, int> cases[] = {
        {"x.ovnc", 0},       {"sub/x.pln", 1}, {"apln", 1},      {"X.OMBS", 1}, {"pln", 1},
        {"a/b/c/d/.DvF", 1}, {"x.lmcs", 1},    {"x.pln.bak", 0}, {"lm", 0},     {"x.pln/empty", 0},
    };
    for (const auto& [file, found] : cases) {
        const auto folder = new_folder();
        const auto path = fs::path(folder) / file;
        fs::create_directories(path.parent_path());
        write_file(path, "");
        EXPECT_EQ(ExistSessionFile(platform_path(folder).c_str()), found) << file;
    }
    const auto outside = new_folder();
    write_file(outside + "/x.pln", "");
    const auto folder = new_folder();
    fs::create_directory_symlink(folder, folder + "/round");
    fs::create_directory_symlink(outside, folder + "/out");
    EXPECT_EQ(ExistSessionFile(platform_path(folder).c_str()), 0) << "links are not entered";
    EXPECT_EQ(ExistSessionFile(u"Q:\\gone"), 0);
    EXPECT_EQ(ExistSessionFile(u""), 0) << "not the root";
    EXPECT_EQ(ExistSessionFile(nullptr), 0);
}

// Two sessions and a file of another kind in the default folder of "Pelrin".
std::string old_sessions() {
    GetUserDataFolderPath(0);
    const auto folder = data() + "/Pelrin/Sessions";
    fs::create_directories(folder + "/lab");
    write_file(folder + "/a.pln", "a");
    write_file(folder + "/lab/b.pln", "b");
    write_file(folder + "/notes.txt", "n");
    return folder;
}

std::set<std::string> files_in(const std::string& folder) {
    std::set<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) files.insert(entry.path().string().substr(folder.size() + 1));
    }
    return files;
}

const std::set<std::string> kAll{"a.pln", "notes.txt", "lab/b.pln"};

TEST(ChangeOfFolder, AsksAndMoves) {
    const auto old_folder = old_sessions();
    const auto target = new_folder() + "/new";
    const auto path = platform_path(target);
    const auto change = [&] { return ChangeSessionPath(path.c_str(), u"Pelrin", nullptr); };

    int result = -1;
    answered(change, {"c\n"}, result);
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(fs::exists(target));
    EXPECT_EQ(choice(u"Pelrin").View(), u"");
    EXPECT_EQ(files_in(old_folder), kAll);

    const auto shown = answered(change, {"o\n", "y\n"}, result);
    EXPECT_EQ(result, 1);
    EXPECT_NE(shown.find("does not exist. Do you want to create it?"), std::string::npos) << shown;
    EXPECT_NE(shown.find("move your existing Pelrin session files"), std::string::npos) << shown;
    EXPECT_EQ(choice(u"Pelrin").View(), path);
    EXPECT_EQ(files_in(target), (std::set<std::string>{"a.pln", "lab/b.pln"}));
    EXPECT_EQ(files_in(old_folder), std::set<std::string>{"notes.txt"});
    EXPECT_EQ(AfxGetSessionPath(u"Pelrin").View(), path);
}

TEST(ChangeOfFolder, ANoLeavesTheFiles) {
    const auto old_folder = old_sessions();
    const auto target = new_folder();
    int result = -1;
    answered([&] { return ChangeSessionPath(platform_path(target).c_str(), u"Pelrin", nullptr); },
             {"n\n"}, result);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(AfxGetSessionPath(u"Pelrin").View(), platform_path(target));
    EXPECT_EQ(files_in(old_folder), kAll);
}

TEST(ChangeOfFolder, WithoutSessionFilesNothingIsAsked) {
    GetUserDataFolderPath(0);
    fs::create_directories(data() + "/Ombrelia/Sessions/VNC");
    write_file(data() + "/Ombrelia/Sessions/VNC/x.ovnc", "");
    const auto target = new_folder();
    int result = -1;
    answered(
        [&] {
            return ChangeSessionPath(platform_path(target).c_str(), u"OmbreliaSessions", nullptr);
        },
        {}, result);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(choice(u"OmbreliaSessions").View(), platform_path(target));
}

TEST(ChangeOfFolder, WithoutTheQuestionAboutFiles) {
    const auto old_folder = old_sessions();
    const auto first = new_folder();
    const auto second = new_folder();
    EXPECT_EQ(ChangeSessionPathWithoutMsgBox(platform_path(first).c_str(), u"Pelrin", 0), 1);
    EXPECT_EQ(files_in(old_folder), kAll);
    write_file(first + "/c.pln", "c");
    EXPECT_EQ(ChangeSessionPathWithoutMsgBox(platform_path(second).c_str(), u"Pelrin", 1), 1);
    EXPECT_EQ(files_in(second), std::set<std::string>{"c.pln"});

    // The whole root of the suite, whatever its files are called.
    fs::create_directories(data() + "/Ombrelia/Sessions/VNC");
    write_file(data() + "/Ombrelia/Sessions/VNC/x.ovnc", "");
    write_file(data() + "/Ombrelia/Sessions/readme", "");
    const auto root = new_folder();
    EXPECT_EQ(ChangeSessionPathWithoutMsgBox(platform_path(root).c_str(), u"OmbreliaSessions", 1),
              1);
    EXPECT_EQ(files_in(root), (std::set<std::string>{"VNC/x.ovnc", "readme"}));

    // A missing folder is a question all the same, and nobody is there to say yes.
    setsid();
    EXPECT_EQ(ChangeSessionPathWithoutMsgBox(u"C:\\nowhere\\new", u"Pelrin", 1), 0);
    EXPECT_EQ(AfxGetSessionPath(u"Pelrin").View(), platform_path(second));
    EXPECT_EQ(ChangeSessionPathWithoutMsgBox(nullptr, u"Pelrin", 1), 0);
}

TEST(ChangeOfFolder, AChoiceThatCannotBeWrittenMovesNothing) {
    const auto old_folder = old_sessions();
    fs::create_directory(data() + "/SessionPath.ini");
    EXPECT_EQ(ChangeSessionPathWithoutMsgBox(platform_path(new_folder()).c_str(), u"Pelrin", 1), 1);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(files_in(old_folder), kAll);
}

TEST(ChangeOfFolder, AFailedMoveLeavesTheChoiceInForce) {
    const auto old_folder = old_sessions();
    const auto target = new_folder();
    write_file(target + "/lab", "in the way of the folder");
    struct : tvutil2::ShellObserver {
        void advanced(std::size_t done, std::size_t all) override { heard.emplace_back(done, all); }
        std::vector<std::pair<std::size_t, std::size_t>> heard;
    } observer;
    EXPECT_EQ(
        ChangeSessionPathWithoutMsgBox(platform_path(target).c_str(), u"Pelrin", 1, &observer), 1);
    EXPECT_EQ(observer.heard, (decltype(observer.heard){{1, 2}, {2, 2}})) << "moved or not";
    EXPECT_EQ(AfxGetSessionPath(u"Pelrin").View(), platform_path(target));
    EXPECT_EQ(tests::read_file(old_folder + "/lab/b.pln"), "b");
}

}  // namespace
