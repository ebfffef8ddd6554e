#include "tvutil2/data/data_import.h"

#include "tvutil2/data/import_plan.h"
#include "tvutil2/data/proxy_import.h"
#include "tvutil2/data/user_data.h"
#include "tvutil2/framework/app.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/folder_copy.h"
#include "tvutil2/settings/ini_file.h"
#include "tvutil2/settings/registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/fifo.h"
#include "tests/support/host_files.h"
#include "tests/support/killed.h"
#include "tests/support/profile.h"
#include "tests/support/program.h"
#include "tests/support/signer.h"

namespace {

namespace fs = std::filesystem;
using tests::new_folder;
using tests::platform_path;
using tests::read_file;
using tests::write_file;

constexpr unsigned int kNoOlder = 4;

void set_text(const std::u16string& key, const char16_t* name, const std::u16string& text) {
    CRegistry registry;
    ASSERT_NE(registry.Open(HKEY_CURRENT_USER, key.c_str(), 1, KEY_ALL_ACCESS), 0);
    ASSERT_NE(registry.SetValue(name, text.c_str()), 0);
}

std::u16string user_data_key(char16_t version) {
    return std::u16string(u"Software\\Tolvarine\\Common\\") + version + u"\\UserData";
}

/// A data folder of version 7 or 6, known to the registry.
std::string old_data(char16_t version) {
    auto folder = new_folder();
    set_text(user_data_key(version), u"UserDataPath", platform_path(folder));
    return folder;
}

std::string new_data() {
    static const auto folder = tests::profile_folder() + "/home/Documents/Tolvarine Computer/8";
    return folder;
}

void put(const std::string& folder, const std::string& name, const std::string& content) {
    fs::create_directories(fs::path(folder + "/" + name).parent_path());
    write_file(folder + "/" + name, content);
}

void clear_marks() {
    for (const auto* mark : {u"ImportDone", u"Version7", u"Version6"}) SetImportPrevStatus(mark, 0);
}

std::vector<unsigned int> marks() {
    std::vector<unsigned int> values;
    for (const auto* mark : {u"Version7", u"Version6", u"ImportDone", u"PelrinOptions"}) {
        values.push_back(GetImportPrevStatus(mark));
    }
    return values;
}

class Told : public tvutil2::CopyObserver {
  public:
    void copied() override {
        if (++files == throws_at) throw std::runtime_error("enough");
    }
    void failed(const char16_t* from, DWORD error) override {
        const std::u16string path(from);
        failures.emplace_back(path.substr(path.find_last_of(u"\\/") + 1), error);
    }
    int files = 0;
    int throws_at = -1;
    std::vector<std::pair<std::u16string, DWORD>> failures;
};

const std::vector<std::string> kCopied = {
    "Common/Proxy/p.ini",
    "SECSH/k",
    "Ombrelia/Yarrowe/y",
    "Ombrelia/Keyboard/sub/k",
    "Ombrelia/addon/a",
    "Pelrin/Scripts/s",
    "Pelrin/QuickButton Files/q",
    "Pelrin/ColorScheme Files/c",
    "Pelrin/HighlightSet Files/h",
    "Ombrelia/Vantrosa.ini",
    "Ombrelia/Lumsey.ini",
    "Ombrelia/Hosts.ini",
    "Ombrelia/Esound.ini",
    "Ombrelia/Commands.ini",
    "Pelrin/alias.ini",
    "Pelrin/Pelrin.ini",
    "Pelrin/trigger.ini",
    "Pelrin/CustomKeyMap.ckm",
    "Dovr/Dovr.ini",
    "Dovr/LocalBookmark.ini",
    "Ombrelia/Sessions/VNC/a.ovnc",
    "Dovr/Sessions/lab/b.dvf",
};

TEST(DataImport, BringsAllThatIsListedOnce) {
    const auto old = old_data(u'7');
    const auto older = old_data(u'6');
    put(older, "Pelrin/Sessions/six.pln", "6");
    const auto chosen = new_folder();
    put(chosen, "c.pln", "chosen");
    for (const auto& name : kCopied) put(old, name, name);
    put(old, "Other/x", "not listed");
    put(old, "Pelrin/Sessions/default.pln", "the folder wasn't in effect");
    const auto choices = "[SessionPath]\r\nPelrin=C:" + chosen + "\r\nDovr=\r\n";
    put(old, "SessionPath.ini", choices);
    put(new_data(), "Pelrin/Pelrin.ini", "mine");
    put(new_data(), "Common/Proxy/p.ini", "mine");
    const auto before = tests::tree(old);

    EXPECT_EQ(tvutil2::plan_import(kNoOlder).version, 7U);
    Told told;
    TvInitDataFolder(kNoOlder, &told);
    EXPECT_EQ(marks(), (std::vector<unsigned int>{1, 0, 1, 1}));
    for (const auto& name : kCopied) {
        EXPECT_EQ(read_file(new_data() + "/" + name), name == "Pelrin/Pelrin.ini" ? "mine" : name);
    }
    EXPECT_EQ(read_file(new_data() + "/Pelrin/Sessions/c.pln"), "chosen");
    for (const auto* const name :
         {"Other", "SessionPath.ini", "Pelrin/Sessions/default.pln", "Pelrin/Sessions/six.pln"}) {
        EXPECT_FALSE(fs::exists(new_data() + "/" + name)) << name;
    }
    EXPECT_EQ(tests::tree(old), before) << "not even written in another encoding";
    EXPECT_EQ(told.files, static_cast<int>(kCopied.size()) + 1);
    EXPECT_TRUE(told.failures.empty());

    const auto after = tests::tree(new_data());
    put(old, "SECSH/late", "");
    TvInitDataFolder(kNoOlder);
    SetImportPrevStatus(u"ImportDone", 0);
    TvInitDataFolder(kNoOlder);
    EXPECT_EQ(tests::tree(new_data()), after) << "either mark will do";
}

TEST(DataImport, PassesOverWhatCantBeCopied) {
    const auto old = old_data(u'7');
    const auto outside = new_folder();
    put(outside, "o", "outside");
    put(old, "Common/a", "new");
    put(old, "Common/locked", "new");
    put(old, "Common/z", "z");
    put(old, "SECSH", "no folder");
    fs::create_symlink("nowhere", old + "/Common/dead");
    fs::create_directory_symlink(old + "/Common", old + "/Common/round");
    fs::create_directory_symlink(outside, old + "/Pelrin");
    fs::create_symlink(outside + "/o", old + "/Common/o");
    put(old, "SessionPath.ini", "[SessionPath]\nPelrin=\\\nDovr=C:\\no\\such\n");
    put(new_data(), "Common/locked", "old");
    chmod((new_data() + "/Common/locked").c_str(), 0444);
    put(new_data(), "Dovr", "in the way");
    put(old, "Dovr/Dovr.ini", "d");

    Told told;
    TvInitDataFolder(kNoOlder, &told);
    const std::vector<std::pair<std::u16string, DWORD>> expected = {
        {u"dead", ERROR_FILE_NOT_FOUND},
        {u"locked", ERROR_ACCESS_DENIED},
        {u"Dovr.ini", ERROR_PATH_NOT_FOUND}};
    std::sort(told.failures.begin(), told.failures.end(),
              [](const auto& a, const auto& b) { return b.first < a.first; });
    EXPECT_EQ(told.failures, (std::vector<std::pair<std::u16string, DWORD>>{
                                 expected[1], expected[0], expected[2]}));
    EXPECT_EQ(tests::tree(new_data()),
              "Common/ Common/a=new Common/locked=old Common/o=outside "
              "Common/round->" +
                  old + "/Common Common/z=z Dovr=in the way ");
    EXPECT_EQ(marks(), (std::vector<unsigned int>{1, 0, 1, 1}));
}

TEST(DataImport, ProxiesOfVersionSixBecomeFiles) {
    old_data(u'6');
    const std::u16string proxies = u"Software\\Tolvarine\\Proxy\\";
    CRegistry full;
    full.Open(HKEY_CURRENT_USER, (proxies + u"full \u4E2D*").c_str(), 1, KEY_ALL_ACCESS);
    full.SetValue(u"Type", DWORD{5});
    full.SetValue(u"Port", u"80");  // no number
    for (const auto* name : {u"Host", u"UserName", u"Proxy", u"Password"}) {
        full.SetValue(name, (std::u16string(u"=") + name + u" ").c_str());
    }
    set_text(proxies + u"empty", u"Other", u"");
    set_text(proxies + u"../../out", u"Host", u"evil");
    const auto folder = platform_path(new_data()) + u"\\Common\\Proxy\\";
    put(new_data(), "Common/Proxy/empty.ini", "[SECTION]\nHOST=old\nNOTE=kept\n");

    Told told;
    TvInitDataFolder(kNoOlder, &told);
    struct {
        const char16_t* file;
        std::vector<const char16_t*> values;
    } const cases[] = {
        {u"full \u4E2D*.ini",
         {u"5", u"=Host ", u"1080", u"=UserName ", u"=Proxy ", u"=Password ", u""}},
        {u"empty.ini", {u"2", u"", u"1080", u"", u"", u"", u"kept"}},
    };
    for (const auto& [file, values] : cases) {
        CIniFile ini((folder + file).c_str());
        EXPECT_EQ(ini.unicodeFile, 1);
        auto value = values.begin();
        for (const auto* key :
             {u"TYPE", u"HOST", u"PORT", u"USERNAME", u"JUMPHOST", u"PASSWORD", u"NOTE"}) {
            EXPECT_EQ(ini.GetValue(u"SECTION", key, u""), *value++);
        }
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(new_data() + "/Common/Proxy"), {}), 2);
    ASSERT_EQ(told.failures.size(), 1U);
    EXPECT_EQ(told.failures[0].second, DWORD{ERROR_INVALID_NAME});
    EXPECT_EQ(marks(), (std::vector<unsigned int>{0, 1, 1, 1}));
}

// What is under its name is whole, and as long as something is missing nothing is marked.
TEST(DataImport, KilledAnywhereItLeavesNoPartOfAFile) {
    const auto old = old_data(u'6');
    set_text(u"Software\\Tolvarine\\Proxy\\p", u"Host", u"h");
    const std::string content(70000, 'x');
    put(old, "Common/large", content);
    put(old, "Pelrin/alias.ini", content);
    put(old, "Dovr/Sessions/s.dvf", content);
    GetUserDataFolderPath(0);
    const auto whole_proxy = [] {
        const auto bytes = read_file(new_data() + "/Common/Proxy/p.ini");
        return bytes.size() > 100 && bytes.ends_with(std::string("\n\0", 2));
    };
    // Over what is there and where nothing is, and at other calls.
    for (const bool is_new : {true, false}) {
        for (int call = is_new ? 0 : 1;
             tests::kill_at_call(call, [] { TvInitDataFolder(kNoOlder); }); call += 1 + call / 8) {
            for (const auto* const name :
                 {"Common/large", "Pelrin/alias.ini", "Dovr/Sessions/s.dvf"}) {
                const auto path = new_data() + "/" + name;
                EXPECT_EQ(read_file(path), fs::exists(path) ? content : "") << call;
            }
            const bool is_marked = GetImportPrevStatus(u"ImportDone") != 0;
            if (is_marked || fs::exists(new_data() + "/Common/Proxy/p.ini")) {
                EXPECT_TRUE(whole_proxy()) << call;
            }
            if (is_new) fs::remove_all(new_data() + "/Common");
            clear_marks();
        }
    }
    TvInitDataFolder(kNoOlder);
    EXPECT_EQ(GetImportPrevStatus(u"ImportDone"), 1U);
    EXPECT_TRUE(whole_proxy());
    for (const auto& entry : fs::recursive_directory_iterator(new_data())) {
        EXPECT_FALSE(entry.path().filename().string().starts_with(".")) << entry.path();
    }
}

TEST(DataImport, FullDiskAndThrowingListenerLoseNothing) {
    const auto old = old_data(u'7');
    constexpr std::size_t kSize = std::size_t{3} << 20;
    put(old, "Common/1", "1");
    put(old, "Common/2", std::string(kSize, 'x'));
    put(old, "Common/3", "3");
    put(new_data(), "Common/2", "before");

    Told thrower;
    thrower.throws_at = 2;
    {
        const tests::FullDisk disk(kSize / 2);
        EXPECT_THROW(TvInitDataFolder(kNoOlder, &thrower), std::runtime_error);
    }
    EXPECT_EQ(marks(), (std::vector<unsigned int>{0, 0, 0, 0}));
    EXPECT_EQ(thrower.failures,
              (std::vector<std::pair<std::u16string, DWORD>>{{u"2", ERROR_FILE_TOO_LARGE}}));
    EXPECT_EQ(read_file(new_data() + "/Common/2"), "before");
    // The next start, at the same moment as another program's.
    EXPECT_EQ(tests::in_child([] {
                  const auto other = fork();
                  TvInitDataFolder(kNoOlder);
                  if (other == 0) _exit(0);
                  return waitpid(other, nullptr, 0) == other ? 0 : 1;
              }),
              0);
    EXPECT_EQ(GetImportPrevStatus(u"Version7"), 1U);
    EXPECT_EQ(read_file(new_data() + "/Common/2").size(), kSize);
    EXPECT_EQ(read_file(new_data() + "/Common/3"), "3");
}

TEST(DataImport, NothingIsBroughtToAMakeshiftFolder) {
    put(old_data(u'7'), "SECSH/a", "a");
    set_text(user_data_key(u'8'), u"UserDataPath", u"Q:\\away");
    TvInitDataFolder(kNoOlder);
    EXPECT_EQ(tvutil2::plan_import(kNoOlder).answer, tvutil2::ImportAnswer::no_folder);
    EXPECT_EQ(marks(), (std::vector<unsigned int>{0, 0, 0, 0}));
    EXPECT_FALSE(fs::exists(tests::profile_folder() + "/temp/SECSH"));
}

// A migration tool that notes its arguments, found by the path.
std::string tool_notes() {
    static const auto folder = new_folder();
    write_file(folder + "/Birkenfold.exe", "#!/bin/sh\necho \"$@\" >>'" + folder + "/notes'\n");
    chmod((folder + "/Birkenfold.exe").c_str(), 0755);
    setenv("PATH", (folder + ":" + getenv("PATH")).c_str(), 1);
    return folder + "/notes";
}

TEST(DataImport, OlderDataIsTheMigrationToolsOnceForEachProduct) {
    const auto notes = tool_notes();
    TvInitDataFolder(kNoOlder);
    EXPECT_FALSE(
        CRegistry().Open(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Common\\8\\Import", 0, KEY_READ))
        << "nothing was written";
    TvInitDataFolder(3);
    EXPECT_EQ(GetImportPrevStatus(u"Dovr"), 2U) << "no data";
    const auto v5 = old_data(u'5');
    put(v5, "Dovr/x", "");
    put(v5, "Pelrin/x", "");
    set_text(u"Software\\Tolvarine\\Dovr\\5\\Language", u"x", u"");
    set_text(u"Software\\Tolvarine\\Pelrin\\5", u"x", u"");
    TvInitDataFolder(3);
    EXPECT_FALSE(fs::exists(notes)) << "settled";
    SetImportPrevStatus(u"Enterprise", 1);
    TvInitDataFolder(2);
    EXPECT_EQ(GetImportPrevStatus(u"Pelrin"), 0U);
    SetImportPrevStatus(u"Enterprise", 0);
    set_text(u"Software\\Tolvarine\\Proxy\\p", u"Host", u"h");
    TvInitDataFolder(2);
    EXPECT_EQ(read_file(notes), "-upgrade -pelrin\n");
    EXPECT_EQ(GetImportPrevStatus(u"Pelrin"), 1U);
    EXPECT_EQ(GetImportPrevStatus(u"ImportDone"), 1U);
    EXPECT_TRUE(fs::exists(new_data() + "/Common/Proxy/p.ini"));

    // The folder of now, under another spelling, is no earlier one.
    SetImportPrevStatus(u"ImportDone", 0);
    SetImportPrevStatus(u"Pelrin", 0);
    put(new_data(), "Pelrin/x", "");
    set_text(user_data_key(u'5'), u"UserDataPath", platform_path(new_data()) + u"\\.\\");
    TvInitDataFolder(2);
    EXPECT_EQ(GetImportPrevStatus(u"Pelrin"), 2U);
    EXPECT_EQ(read_file(notes), "-upgrade -pelrin\n");
}

TEST(DataImport, TheToolThatMovesIsCheckedAndNotWaitedFor) {
    const auto folder = new_folder();
    const auto product = tests::copy_program(TESTS_STARTED "/siblings.exe", folder, "Product.exe");
    const auto tool = tests::copy_program(TESTS_STARTED "/launched.exe", folder, "birkenfold.exe");
    const auto report = folder + "/report";
    setenv("TVUTIL_TEST_REPORT", report.c_str(), 1);
    tests::output_of(product, {"move", "pelrin"});
    EXPECT_FALSE(fs::exists(report)) << "unsigned";
    tests::sign_program(tool, tests::make_signer("Tolvarine Computer"));
    const tests::Fifo pipe;
    setenv("TVUTIL_TEST_REPORT", pipe.path().c_str(), 1);
    tests::output_of(product, {"move", "pelrin"});
    EXPECT_NE(pipe.read_all().find("argument=-move\nargument=-pelrin\n"), std::string::npos);
}

TEST(DataImport, FindsTheNewestVersionBeforeSix) {
    char16_t path[MAX_PATH] = u"stale";
    EXPECT_EQ(TvGetPrevVersion(path, u"Pelrin"), 0U);
    const auto v5 = old_data(u'5');
    const auto v4 = tests::profile_folder() + "/home/.config/Tolvarine";
    const auto spool = tests::profile_folder() + "/common/Tolvarine/Zemt/4/Spool";
    for (const auto& folder : {v5 + "/Pelrin", v4 + "/Pelrin", v4 + "/Dovr", spool}) {
        fs::create_directories(folder);
    }
    for (const auto* key : {u"Pelrin\\5", u"Pelrin\\4", u"Dovr\\5", u"Dovr\\4", u"Zemt\\5",
                            u"Zemt\\4", u"Ombrelia Enterprise\\4"}) {
        set_text(std::u16string(u"Software\\Tolvarine\\") + key, u"x", u"");
    }
    struct {
        const char16_t* product;
        unsigned int version;
        std::string path;
    } const cases[] = {{u"Pelrin", 5, v5},
                       {u"Dovr", 4, v4},
                       {u"Zemt", 4, spool},
                       {u"Enterprise", 4, v4},
                       {u"Ombrelia", 0, v4}};
    for (const auto& [product, version, place] : cases) {
        EXPECT_EQ(TvGetPrevVersion(path, product), version) << place;
        EXPECT_EQ(path, platform_path(place));
    }
}

class Application : public CWinApp {
  public:
    Application() : CWinApp(u"Product") {}
    using CWinApp::SetRegistryKey;
};

TEST(DataImport, ForgetsTheRegistryOfAnEarlierVersion) {
    Application app;
    TvResetPreviousReg(8, 12);  // without names nothing happens
    TvDeleteRebarState();
    struct {
        const char16_t* stored;
        bool is_kept;
        const char16_t* key = u"Tolvarine";
    } const cases[] = {
        {u"8.0012", true},  {u"8.0013", true},  {u"9.0012", true},
        {u"8.0011", false}, {u"7.0099", false}, {u"9.0011", false},
        {u"8", false},      {u"", false},       {u"7.0001", true, u"Other"},
    };
    for (const auto& [stored, is_kept, company] : cases) {
        app.SetRegistryKey(company);
        app.WriteProfileString(u"Below", u"x", u"y");
        app.WriteProfileString(u"", u"RegVersion", stored);
        TvResetPreviousReg(8, 12);
        EXPECT_EQ(app.GetProfileString(u"Below", u"x") == u"y", is_kept)
            << CString(stored).GetLength();
        EXPECT_EQ(app.GetProfileString(u"", u"RegVersion"), is_kept ? stored : u"8.0012");
    }
    app.SetRegistryKey(u"Other");
    for (const auto* bar : {u"A", u"Rebar1\\x", u"Rebar2"}) {
        app.WriteProfileInt((std::u16string(u"Workspace\\") + bar).c_str(), u"x", 1);
    }
    TvDeleteRebarState();
    EXPECT_EQ(app.GetProfileInt(u"Workspace\\A", u"x", 0), 1U);
    EXPECT_EQ(app.GetProfileInt(u"Workspace\\Rebar1\\x", u"x", 0), 0U);
    EXPECT_EQ(app.GetProfileInt(u"Workspace\\Rebar2", u"x", 0), 1U);
}

}  // namespace
