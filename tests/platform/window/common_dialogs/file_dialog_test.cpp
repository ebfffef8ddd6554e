#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/files/shell_link.h"
#include "tvutil2/platform/window/common_dialogs/file_layout.h"
#include "tvutil2/platform/window/common_dialogs/open_file_name.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/keys.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/window/common_dialogs/person.h"
#include "tests/support/mounts.h"
#include "tests/support/profile.h"

namespace {

namespace fs = std::filesystem;
using tests::click;
using tests::Names;
using tests::press;
using tests::Step;

HWND rows_of(HWND dialog) {
    return GetDlgItem(dialog, tvutil2::kFileRows);
}

Names names_shown(HWND dialog) {
    Names names;
    const auto count = static_cast<int>(SendMessageW(rows_of(dialog), LVM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        char16_t text[300] = {};
        LVITEMW asked{};
        asked.mask = LVIF_TEXT;
        asked.iItem = i;
        asked.pszText = text;
        asked.cchTextMax = 300;
        SendMessageW(rows_of(dialog), LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&asked));
        names.emplace_back(text);
    }
    return names;
}

std::u16string text_at(HWND dialog, int id) {
    char16_t text[1024] = {};
    GetDlgItemTextW(dialog, id, text, 1024);
    return text;
}

Step shows(const Names& names) {
    return [names](HWND dialog) { return names_shown(dialog) == names; };
}
Step is_named(const std::u16string& text) {
    return [text](HWND dialog) { return text_at(dialog, tvutil2::kFileName) == text; };
}
Step is_in(const std::u16string& path) {
    return [path](HWND dialog) { return text_at(dialog, tvutil2::kFilePath) == path; };
}
Step type(const std::u16string& text) {
    return [text](HWND) {
        tvutil2::type_text(text);
        return true;
    };
}
Step press_with(std::vector<int> held, int key) {
    return [held = std::move(held), key](HWND) {
        for (const auto each : held) tvutil2::press_key(each);
        tvutil2::type_key(key);
        for (const auto each : held) tvutil2::release_key(each);
        return true;
    };
}
const Step go_to_rows = [](HWND dialog) {
    SetFocus(rows_of(dialog));
    return true;
};
// In a message box.
Step answer_with(int button) {
    return [button](HWND dialog) {
        if (rows_of(dialog) != nullptr) return false;
        SendMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(button), 0);
        return true;
    };
}
// The header of a column.
Step click_column(int column) {
    return [column](HWND dialog) {
        NMLISTVIEW told{};
        told.hdr = {rows_of(dialog), static_cast<UINT_PTR>(tvutil2::kFileRows), LVN_COLUMNCLICK};
        told.iSubItem = column;
        SendMessageW(dialog, WM_NOTIFY, told.hdr.idFrom, reinterpret_cast<LPARAM>(&told));
        return true;
    };
}

class FileDialogRows : public testing::Test {
  protected:
    FileDialogRows() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        SetThreadLocale(0x0409);
        fs::create_directory(m_host + "/in");
        write("b10.txt", 5);
        write("b9.txt", 3000);
        write("a.dat", 20);
        write(".hidden.txt", 1);
        m_asked.lStructSize = sizeof m_asked;
        m_asked.lpstrFile = m_chosen;
        m_asked.nMaxFile = 4096;
        m_asked.lpstrInitialDir = m_path.c_str();
        m_asked.Flags = OFN_HIDEREADONLY;
    }
    void write(const std::string& name, std::size_t size) {
        tests::write_file(m_host + "/" + name, std::string(size, 'x'));
    }
    // What was chosen, the zeros between names as bars; empty for nothing.
    std::u16string open(std::vector<Step> steps) {
        m_chosen[0] = 0;
        const tests::Person person(std::move(steps));
        const bool is_chosen = GetOpenFileNameW(&m_asked) != 0;
        EXPECT_TRUE(person.has_done_all());
        if (!is_chosen) return {};
        std::u16string text = m_chosen;
        const bool has_several = m_asked.nFileOffset > text.size();
        for (const auto* name = m_chosen + text.size() + 1; has_several && *name != 0;
             name += std::u16string_view(name).size() + 1) {
            text.append(u"|").append(name);
        }
        return text;
    }

    std::string m_host = tests::new_folder();
    std::u16string m_path = tests::platform_path(m_host);
    char16_t m_chosen[4096] = {};
    OPENFILENAMEW m_asked{};
};

const Names kUsual{u"in", u"a.dat", u"b9.txt", u"b10.txt"};

TEST_F(FileDialogRows, GoWhereKeysGo) {
    EXPECT_EQ(
        open({shows(kUsual), go_to_rows, type(u"b1"), is_named(u"b10.txt"), press(VK_RETURN)}),
        m_path + u"\\b10.txt");
    // Down into a folder and up again, where it is selected still.
    EXPECT_EQ(open({shows(kUsual), go_to_rows, type(u"in"), press(VK_RETURN),
                    is_in(m_path + u"\\in"), shows({u"Nothing to show here"}), press(VK_BACK),
                    is_in(m_path), shows(kUsual), press(VK_RETURN), is_in(m_path + u"\\in"),
                    press_with({VK_MENU}, VK_UP), is_in(m_path), press(VK_ESCAPE)}),
              u"");
}

TEST_F(FileDialogRows, ShowAndOrderWhatIsWanted) {
    const Names by_size{u"in", u"b10.txt", u"a.dat", u"b9.txt"};
    m_asked.lpstrFilter = u"Texts\0*.txt;*.doc\0All\0*.*\0";
    EXPECT_EQ(
        open({shows({u"in", u"b9.txt", u"b10.txt"}), press_with({VK_CONTROL}, 'H'),
              shows({u"in", u".hidden.txt", u"b9.txt", u"b10.txt"}), press_with({VK_CONTROL}, 'H'),
              click_column(0), shows({u"in", u"b10.txt", u"b9.txt"}), type(u"*.dat"),
              press(VK_RETURN), shows({u"in", u"a.dat"}), press(VK_ESCAPE)}),
        u"");
    m_asked.nFilterIndex = 2;
    EXPECT_EQ(open({shows(kUsual), click_column(1), shows(by_size), press(VK_ESCAPE)}), u"");
}

TEST_F(FileDialogRows, ChooseSeveral) {
    m_asked.Flags |= OFN_ALLOWMULTISELECT;
    EXPECT_EQ(open({shows(kUsual), go_to_rows, press_with({VK_CONTROL}, 'A'),
                    is_named(u"\"a.dat\" \"b9.txt\" \"b10.txt\""), press(VK_RETURN)}),
              m_path + u"|a.dat|b9.txt|b10.txt");
    EXPECT_EQ(open({shows(kUsual), go_to_rows, press(VK_HOME), press(VK_DOWN),
                    press_with({VK_SHIFT}, VK_DOWN), is_named(u"\"a.dat\" \"b9.txt\""),
                    press(VK_RETURN)}),
              m_path + u"|a.dat|b9.txt");
    // From where a name was looked for.
    EXPECT_EQ(open({shows(kUsual), go_to_rows, press(VK_HOME), type(u"b9"),
                    press_with({VK_SHIFT}, VK_DOWN), is_named(u"\"b9.txt\" \"b10.txt\""),
                    press(VK_RETURN)}),
              m_path + u"|b9.txt|b10.txt");
}

TEST_F(FileDialogRows, OfferNamesWhileOneIsTyped) {
    const auto is_open = [](HWND dialog) {
        return SendDlgItemMessageW(dialog, tvutil2::kFileName, CB_GETDROPPEDSTATE, 0, 0) != 0;
    };
    EXPECT_EQ(open({shows(kUsual), type(u"b"), is_open, press(VK_DOWN), press(VK_DOWN),
                    is_named(u"b10.txt"), press(VK_RETURN),
                    [&](HWND dialog) { return !is_open(dialog); }, press(VK_RETURN)}),
              m_path + u"\\b10.txt");
    // What is typed stays, and goes, whatever is offered.
    write("b", 1);
    EXPECT_EQ(open({shows({u"in", u"a.dat", u"b", u"b9.txt", u"b10.txt"}), type(u"b"), is_open,
                    press(VK_ESCAPE), is_named(u"b"), type(u"9"), is_open, press(VK_BACK),
                    is_named(u"b"), press(VK_RETURN)}),
              m_path + u"\\b");
}

TEST_F(FileDialogRows, ShowNamesOfEveryKindOnOneLine) {
    const std::string names[] = {"x\ny", "\xE2\x80\xAEtxt.exe", "q\"q"};
    const std::u16string chosen[] = {u"x\ny", u"\x202Etxt.exe", u"q\"q"};
    m_asked.Flags |= OFN_ALLOWMULTISELECT;
    for (std::size_t i = 0; i < std::size(names); ++i) {
        SCOPED_TRACE(i);
        const auto folder = m_host + "/in";
        fs::remove_all(folder);
        fs::create_directory(folder);
        tests::write_file(folder + "/" + names[i], "x");
        const auto has_one = [](HWND dialog) {
            const auto shown = names_shown(dialog);
            return shown.size() == 1 && shown[0].size() > 2 && shown[0] != u"Reading…" &&
                   shown[0].find(u'\n') == std::u16string::npos &&
                   shown[0].find(u'\x202E') == std::u16string::npos;
        };
        const auto path = m_path + u"\\in";
        m_asked.lpstrInitialDir = path.c_str();
        EXPECT_EQ(open({has_one, go_to_rows, press(VK_HOME),
                        [](HWND dialog) { return !text_at(dialog, tvutil2::kFileName).empty(); },
                        press(VK_RETURN)}),
                  path + u"\\" + chosen[i]);
    }
}

TEST_F(FileDialogRows, SayWhatCannotBeShown) {
    fs::create_directory_symlink("loop", m_host + "/loop");
    const Step remove = [&](HWND) {
        fs::remove_all(m_host + "/in");
        return true;
    };
    EXPECT_EQ(open({shows({u"in", u"a.dat", u"b9.txt", u"b10.txt", u"loop"}), go_to_rows,
                    type(u"in"), press(VK_RETURN), shows({u"Nothing to show here"}), remove,
                    shows({u"The folder \"in\" isn't there."}), press_with({VK_CONTROL}, 'L'),
                    type(u"..\\loop"), press(VK_RETURN),
                    shows({u"The folder \"loop\" isn't there."}), press(VK_ESCAPE)}),
              u"");
}

TEST_F(FileDialogRows, FollowTheFolder) {
    const Step change = [&](HWND) {
        fs::remove(m_host + "/a.dat");
        write("b1.txt", 1);
        fs::rename(m_host + "/b10.txt", m_host + "/b3.txt");
        return true;
    };
    // What is selected stays so.
    EXPECT_EQ(open({shows(kUsual), go_to_rows, type(u"b9"), is_named(u"b9.txt"), change,
                    shows({u"in", u"b1.txt", u"b3.txt", u"b9.txt"}), press(VK_UP),
                    is_named(u"b3.txt"), press_with({VK_CONTROL}, 'L'), type(u"in"),
                    press(VK_RETURN), is_in(m_path + u"\\in"), shows({u"Nothing to show here"}),
                    [&](HWND) {
                        write("in/new", 1);
                        return true;
                    },
                    shows({u"new"}), press(VK_ESCAPE)}),
              u"");
}

// Neither its folder nor a name on it keeps the dialog from going on.
TEST_F(FileDialogRows, SayWhichDiskIsSilent) {
    if (!tests::has_own_mounts()) GTEST_SKIP() << "no mounts";
    const tests::DeadDisk disk(m_host + "/in");
    if (!disk.is_there()) GTEST_SKIP() << "no file systems of programs";
    const Names silent{u"\"in\" isn't answering."};
    const auto inside = m_path + u"\\in";
    m_asked.lpstrInitialDir = inside.c_str();
    EXPECT_EQ(open({shows({u"Reading…"}), shows(silent), type(u"..\\in\\x"), press(VK_RETURN),
                    answer_with(IDOK), click(tvutil2::kFileMake), answer_with(IDOK),
                    press_with({VK_MENU}, VK_UP), is_in(m_path), shows(kUsual), press(VK_ESCAPE)}),
              u"");
}

TEST_F(FileDialogRows, SayWhatCannotBeMade) {
    if (!tests::has_own_mounts()) GTEST_SKIP() << "no mounts";
    const tests::SmallDisk disk(m_host + "/in", 1);
    if (!disk.is_there()) GTEST_SKIP() << "no file systems in memory";
    const auto inside = m_path + u"\\in";
    m_asked.lpstrInitialDir = inside.c_str();
    EXPECT_EQ(open({shows({u"Nothing to show here"}), click(tvutil2::kFileMake),
                    shows({u"New folder"}), click(tvutil2::kFileMake), answer_with(IDOK),
                    shows({u"New folder"}), press(VK_ESCAPE)}),
              u"");
}

const Step is_being_named = [](HWND dialog) {
    return SendMessageW(rows_of(dialog), LVM_GETEDITCONTROL, 0, 0) != 0;
};

// A new one gets its name where it stands; Esc leaves it as it is.
TEST_F(FileDialogRows, MakeFolders) {
    const Names made{u"in", u"New folder", u"a.dat", u"b9.txt", u"b10.txt"};
    EXPECT_EQ(
        open({shows(kUsual), press_with({VK_CONTROL, VK_SHIFT}, 'N'), is_being_named, shows(made),
              press(VK_ESCAPE), press(VK_RETURN), is_in(m_path + u"\\New folder"), press(VK_BACK),
              shows(made), press_with({VK_CONTROL, VK_SHIFT}, 'N'), is_being_named, type(u"mine"),
              press(VK_RETURN),
              shows({u"in", u"mine", u"New folder", u"a.dat", u"b9.txt", u"b10.txt"}),
              press(VK_RETURN), is_in(m_path + u"\\mine"), press(VK_ESCAPE)}),
        u"");
    EXPECT_TRUE(fs::is_directory(m_host + "/New folder"));
    EXPECT_TRUE(fs::is_directory(m_host + "/mine"));
}

TEST_F(FileDialogRows, GiveOtherNames) {
    EXPECT_EQ(
        open({shows(kUsual), go_to_rows, type(u"b9"), press(VK_F2), is_being_named, type(u"c.txt"),
              press(VK_RETURN), shows({u"in", u"a.dat", u"b10.txt", u"c.txt"}), press(VK_F2),
              is_being_named, type(u"..\\d.txt"), press(VK_RETURN), answer_with(IDOK), press(VK_F2),
              is_being_named, type(u"b10.txt"), press(VK_RETURN), answer_with(IDOK),
              press(VK_ESCAPE)}),
        u"");
    EXPECT_TRUE(fs::exists(m_host + "/c.txt"));
}

TEST_F(FileDialogRows, FollowTheFlags) {
    m_asked.Flags = OFN_CREATEPROMPT;
    EXPECT_EQ(open({shows(kUsual), click(tvutil2::kFileReadOnly), type(u"new"), press(VK_RETURN),
                    answer_with(IDYES)}),
              m_path + u"\\new");
    EXPECT_NE(m_asked.Flags & OFN_READONLY, 0U);
    EXPECT_FALSE(fs::exists(m_host + "/new"));
}

// The extension is the caller's first, and the filter's when there is none or another is chosen.
TEST_F(FileDialogRows, GiveNamesTheExtensionOfTheFilter) {
    const auto choose = [](int filter) -> Step {
        return [filter](HWND dialog) {
            SendDlgItemMessageW(dialog, tvutil2::kFileTypes, CB_SETCURSEL,
                                static_cast<WPARAM>(filter), 0);
            SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(tvutil2::kFileTypes, CBN_SELCHANGE), 0);
            return true;
        };
    };
    const auto say = [](const char16_t* text) -> Step {
        return [text](HWND dialog) {
            SetDlgItemTextW(dialog, tvutil2::kFileName, text);
            return true;
        };
    };
    m_asked.lpstrFilter = u"Texts\0*.txt;*.text\0All\0*.*\0Data\0*.dat\0Odd\0*.d?t\0";
    const struct {
        const char16_t* extension;
        std::vector<Step> steps;
        const char16_t* chosen;
        bool differs;
    } cases[] = {
        {nullptr, {say(u"x"), choose(2)}, u"\\x", false},
        {u"", {say(u"x")}, u"\\x.txt", false},
        {u"doc", {say(u"x")}, u"\\x.doc", false},
        {u"doc", {say(u"x.y")}, u"\\x.y", true},
        {u"doc", {say(u"x"), choose(2)}, u"\\x.dat", true},
        {u"doc", {say(u"x.DOC"), choose(2)}, u"\\x.dat", true},
        {u"doc", {say(u"x.doc"), choose(2), choose(1)}, u"\\x.doc", false},
        {u"doc", {say(u"x"), choose(2), choose(3)}, u"\\x.doc", false},
        {u"doc", {say(u"docdoc"), choose(2)}, u"\\docdoc.dat", true},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        m_asked.lpstrDefExt = each.extension;
        m_asked.nFilterIndex = 1;
        m_chosen[0] = 0;
        auto steps = each.steps;
        steps.push_back(click(IDOK));
        const tests::Person person(std::move(steps));
        EXPECT_TRUE(GetSaveFileNameW(&m_asked));
        EXPECT_EQ(m_chosen, m_path + each.chosen);
        EXPECT_EQ((m_asked.Flags & OFN_EXTENSIONDIFFERENT) != 0, each.differs);
    }
}

TEST_F(FileDialogRows, FollowShortcuts) {
    const auto make_link = [&](const std::u16string& name, const std::u16string& to) {
        IShellLinkW* link = nullptr;
        IPersistFile* file = nullptr;
        ASSERT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                   reinterpret_cast<void**>(&link)),
                  S_OK);
        link->SetPath(to.c_str());
        link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file));
        EXPECT_EQ(file->Save((m_path + u"\\" + name).c_str(), TRUE), S_OK);
        file->Release();
        link->Release();
    };
    make_link(u"file.lnk", m_path + u"\\a.dat");
    make_link(u"folder.lnk", m_path + u"\\in");
    make_link(u"gone.lnk", m_path + u"\\gone");
    write("none.lnk", 5);
    const auto open_name = [&](const std::u16string& name) {
        return open({type(name), press(VK_RETURN)});
    };
    m_asked.Flags |= OFN_FILEMUSTEXIST;
    EXPECT_EQ(open_name(u"file.lnk"), m_path + u"\\a.dat");
    EXPECT_EQ(open_name(u"none.lnk"), m_path + u"\\none.lnk");
    EXPECT_EQ(
        open({type(u"folder.lnk"), press(VK_RETURN), is_in(m_path + u"\\in"), press(VK_ESCAPE)}),
        u"");
    EXPECT_EQ(open({type(u"gone.lnk"), press(VK_RETURN), answer_with(IDOK), press(VK_ESCAPE)}),
              u"");
    m_asked.Flags |= OFN_NODEREFERENCELINKS;
    EXPECT_EQ(open_name(u"folder.lnk"), m_path + u"\\folder.lnk");
}

}  // namespace
