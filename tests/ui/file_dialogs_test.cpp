#include "tvutil2/ui/file_dialogs.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/common_dialogs/open_file_hook.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/platform/window/common_dialogs/person.h"
#include "tests/support/profile.h"
#include "tests/support/resource_image.h"

namespace {

using tests::Step;

constexpr int kEdit = 0x047C;
constexpr int kPath = 0x0471;

// One string of a block of 16, at the block's first place.
std::string string_block(std::u16string_view text) {
    std::u16string units{static_cast<char16_t>(text.size())};
    units += text;
    units.append(15, u'\0');
    return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t)};
}

class Filtered : public CFileDlg {
  public:
    Filtered() : CFileDlg(TRUE) {}
    using CFileDlg::GetFilter;
};

Step type(const std::u16string& name) {
    return [name](HWND dialog) {
        if (GetDlgItem(dialog, kEdit) == nullptr) return false;
        SetDlgItemTextW(dialog, kEdit, name.c_str());
        SendMessageW(dialog, WM_COMMAND, IDOK, 0);
        return true;
    };
}
// The folder that the dialog shows.
Step is_in(const std::u16string& path) {
    return [path](HWND dialog) {
        char16_t shown[1024] = {};
        GetDlgItemTextW(dialog, kPath, shown, 1024);
        return path == shown;
    };
}
// The answer to a question of the dialog's.
Step answer(int button) {
    return [button](HWND dialog) {
        if (GetDlgItem(dialog, kEdit) != nullptr) return false;
        SendMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(button), 0);
        return true;
    };
}
// Back in the dialog.
const Step cancel = [](HWND dialog) {
    if (GetDlgItem(dialog, kEdit) == nullptr) return false;
    SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    return true;
};

class FileDialogs : public testing::Test {
  protected:
    FileDialogs() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        SetThreadLocale(0x0409);
        for (const char* const name : {"a.txt", "b.txt", "c.dat"}) {
            tests::write_file(m_host + "/" + name, "x");
        }
        std::filesystem::create_directory(m_host + "/in");
    }
    int run(CFileDlg& dialog, DWORD flags, std::vector<Step> steps) {
        dialog.m_dwFlags = flags;
        dialog.m_nFilterID = 0;
        dialog.m_strInitDir = m_path.c_str();
        const tests::Person person(std::move(steps));
        const auto result = dialog.DoModal();
        EXPECT_TRUE(person.has_done_all());
        return result;
    }
    static std::vector<std::u16string> list_of(const CFileOpenDlg& dialog) {
        std::vector<std::u16string> paths;
        for (auto place = dialog.m_listPaths.GetHeadPosition(); place != nullptr;) {
            paths.emplace_back(dialog.m_listPaths.GetNext(place).View());
        }
        return paths;
    }

    std::string m_host = tests::new_folder();
    std::u16string m_path = tests::platform_path(m_host);
};

TEST_F(FileDialogs, CutFiltersIntoPartsAndAtTheirEnd) {
    const std::u16string parts = u"Text|*.txt|All|*.*";
    const std::u16string endless(300, u'x');
    tests::ResourceImage image;
    image.add(u"#6", u"#2", 0, string_block(parts));
    image.add(u"#6", u"#3", 0, string_block(parts + u"|"));
    image.add(u"#6", u"#4", 0, string_block(endless));
    ASSERT_TRUE(tvutil2::add_module_resources(nullptr, image.bytes().data(), image.bytes().size()));
    const struct {
        UINT id;
        std::u16string filter;
    } cases[] = {{16, std::u16string(u"Text\0*.txt\0All\0*.*\0\0", 20)},
                 {32, std::u16string(u"Text\0*.txt\0All\0*.*\0\0\0", 21)},
                 {48, endless.substr(0, 254) + std::u16string(2, u'\0')}};
    AfxSetResourceHandle(GetModuleHandleW(nullptr));
    Filtered dialog;
    for (const auto& each : cases) {
        dialog.m_nFilterID = each.id;
        const auto* const filter = dialog.GetFilter();
        ASSERT_NE(filter, nullptr);
        EXPECT_EQ(std::u16string(filter, each.filter.size()), each.filter) << each.id;
    }
    dialog.m_nFilterID = 99;
    EXPECT_EQ(dialog.GetFilter(), nullptr);
}

TEST_F(FileDialogs, OpenWhatIsThere) {
    constexpr DWORD kFlags = OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST;
    CFileOpenDlg dialog;
    dialog.m_listPaths.AddTail(u"before");
    dialog.m_strDefExt = u"txt";
    EXPECT_EQ(run(dialog, kFlags, {type(u"a")}), IDOK);
    EXPECT_EQ(dialog.m_strFilePath.View(), m_path + u"\\a.txt");
    EXPECT_EQ(list_of(dialog), std::vector<std::u16string>{u"before"});
    // A folder is entered; what isn't there is no answer.
    EXPECT_EQ(run(dialog, kFlags,
                  {type(u"in"), is_in(m_path + u"\\in"), type(u"gone"), answer(IDOK), cancel}),
              IDCANCEL);
    EXPECT_EQ(dialog.m_strFilePath.View(), m_path + u"\\a.txt");
}

TEST_F(FileDialogs, OpenSeveral) {
    CFileOpenDlg dialog;
    dialog.m_strFilePath = u"first";
    EXPECT_EQ(run(dialog, OFN_ALLOWMULTISELECT, {type(u"\"b.txt\" \"a.txt\" \"c.dat\"")}), IDOK);
    EXPECT_EQ(list_of(dialog), (std::vector<std::u16string>{
                                   m_path + u"\\b.txt", m_path + u"\\a.txt", m_path + u"\\c.dat"}));
    EXPECT_EQ(dialog.m_strFilePath.View(), u"first");
    EXPECT_EQ(run(dialog, OFN_ALLOWMULTISELECT, {type(u"b.txt")}), IDOK);
    EXPECT_EQ(list_of(dialog), std::vector<std::u16string>{m_path + u"\\b.txt"});
}

TEST_F(FileDialogs, OpenFilesOfSeveralFolders) {
    tests::write_file(m_host + "/in/d.txt", "x");
    setenv("TVUTIL_DRIVES", ("D=" + m_host + "/in").c_str(), 1);
    const struct {
        std::u16string typed;
        std::vector<std::u16string> paths;
    } cases[] = {
        {u"\"in\\d.txt\" \"a.txt\"", {m_path + u"\\in\\d.txt", m_path + u"\\a.txt"}},
        {u"\"a.txt\" \"D:\\d.txt\"", {m_path + u"\\a.txt", m_path + u"\\in\\d.txt"}},
    };
    for (const auto& each : cases) {
        CFileOpenDlg dialog;
        EXPECT_EQ(run(dialog, OFN_ALLOWMULTISELECT, {type(each.typed)}), IDOK);
        EXPECT_EQ(list_of(dialog), each.paths);
    }
    // A root ends in a backslash of its own.
    std::filesystem::create_directory(m_host + "/in/x");
    tests::write_file(m_host + "/in/x/e.txt", "x");
    CFileOpenDlg dialog;
    EXPECT_EQ(run(dialog, OFN_ALLOWMULTISELECT, {type(u"\"D:\\x\\e.txt\" \"D:\\d.txt\"")}), IDOK);
    EXPECT_EQ(list_of(dialog), (std::vector<std::u16string>{u"D:\\\\x\\e.txt", u"D:\\\\d.txt"}));
}

// The library's own resources have the template.
TEST_F(FileDialogs, HandTheirHookAndTemplateOn) {
    constexpr DWORD kTemplate = 14012;
    constexpr int kNo = 7;
    std::vector<UINT> heard;
    CFileOpenDlg dialog;
    dialog.m_dwTemplateID = 0xABCD0000 | kTemplate;
    dialog.m_strFilePath = u"first";
    dialog.m_lCustData = reinterpret_cast<LPARAM>(&heard);
    dialog.m_pfnHook = [](HWND part, UINT message, WPARAM, LPARAM parameter) -> UINT_PTR {
        static std::vector<UINT>* codes = nullptr;
        if (message == WM_INITDIALOG) {
            codes = reinterpret_cast<std::vector<UINT>*>(
                reinterpret_cast<const OPENFILENAMEW*>(parameter)->lCustData);
            EXPECT_NE(GetDlgItem(part, kNo), nullptr);
            return TRUE;
        }
        if (message != WM_NOTIFY) return FALSE;
        codes->push_back(reinterpret_cast<const NMHDR*>(parameter)->code);
        const bool refuses = codes->back() == CDN_FILEOK;
        SetWindowLongPtrW(part, DWLP_MSGRESULT, refuses ? 1 : 0);
        return refuses ? TRUE : FALSE;
    };
    const Step is_refused = [&](HWND) { return heard.back() == CDN_FILEOK; };
    EXPECT_EQ(run(dialog, 0, {type(u"a.txt"), is_refused, cancel}), IDCANCEL);
    EXPECT_EQ(dialog.m_strFilePath.View(), u"first");
    EXPECT_EQ(heard, (std::vector<UINT>{CDN_INITDONE, CDN_FOLDERCHANGE, CDN_FILEOK}));
}

TEST_F(FileDialogs, ChooseNothingWithoutADisplay) {
    setenv("TVUTIL_DISPLAY", "none", 1);
    CFileOpenDlg dialog;
    dialog.m_strFilePath = u"first";
    EXPECT_EQ(run(dialog, 0, {}), IDCANCEL);
    EXPECT_EQ(CommDlgExtendedError(), CDERR_DIALOGFAILURE);
    EXPECT_EQ(dialog.m_strFilePath.View(), u"first");
    CFolderOpenDlg folder;
    folder.m_strPath = m_path.c_str();
    EXPECT_EQ(folder.DoModal(), IDCANCEL);
    EXPECT_EQ(folder.m_strPath.View(), m_path);
}

TEST_F(FileDialogs, AskBeforeTheyReplace) {
    CFileSaveDlg dialog;
    EXPECT_EQ(run(dialog, OFN_OVERWRITEPROMPT,
                  {type(u"a.txt"), answer(IDNO), type(u"a.txt"), answer(IDYES)}),
              IDOK);
    EXPECT_EQ(dialog.m_strFilePath.View(), m_path + u"\\a.txt");
    dialog.m_strFilePath.Empty();
    EXPECT_EQ(run(dialog, OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST,
                  {type(u"none\\new"), answer(IDOK), type(u"new.txt")}),
              IDOK);
    EXPECT_EQ(dialog.m_strFilePath.View(), m_path + u"\\new.txt");
}

TEST_F(FileDialogs, NeedRoomForTheAnswer) {
    char16_t small[8] = {};
    OPENFILENAMEW asked{};
    EXPECT_FALSE(GetOpenFileNameW(&asked));
    EXPECT_EQ(CommDlgExtendedError(), CDERR_STRUCTSIZE);
    asked.lStructSize = sizeof asked;
    asked.lpstrFile = small;
    asked.nMaxFile = 8;
    asked.lpstrInitialDir = m_path.c_str();
    const tests::Person person({type(u"a.txt")});
    EXPECT_FALSE(GetOpenFileNameW(&asked));
    EXPECT_EQ(CommDlgExtendedError(), FNERR_BUFFERTOOSMALL);
    EXPECT_EQ(small[0], m_path.size() + 7);
}

}  // namespace
