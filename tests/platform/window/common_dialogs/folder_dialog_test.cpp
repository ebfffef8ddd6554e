#include "tvutil2/platform/window/common_dialogs/folder_dialog.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/platform/window/common_dialogs/person.h"
#include "tests/support/mounts.h"
#include "tests/support/profile.h"

namespace {

namespace fs = std::filesystem;
using tests::click;
using tests::holds;
using tests::is_selected;
using tests::name_of;
using tests::Names;
using tests::next;
using tests::press;
using tests::selected;
using tests::Step;
using tests::tree_of;

constexpr int kEdit = 0x3744;
constexpr int kMake = 0x3746;

bool can_be_ok(HWND dialog) {
    return IsWindowEnabled(GetDlgItem(dialog, IDOK)) != 0;
}

class FolderDialogs : public testing::Test {
  protected:
    FolderDialogs() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        SetThreadLocale(0x0409);
        fs::create_directories(m_host + "/b/c");
    }

    // The path of what was chosen; empty for nothing.
    std::u16string browse(std::vector<Step> steps, UINT flags = BIF_NEWDIALOGSTYLE) {
        m_info.lpszTitle = u"Where to?";
        m_info.ulFlags = flags;
        m_info.lpfn = &FolderDialogs::hear;
        m_info.lParam = reinterpret_cast<LPARAM>(this);
        const tests::Person person(std::move(steps));
        const tvutil2::ItemList chosen(SHBrowseForFolderW(&m_info));
        EXPECT_TRUE(person.has_done_all());
        return tvutil2::path_of(chosen.get()).value_or(u"");
    }
    static int hear(HWND dialog, UINT message, LPARAM parameter, LPARAM data) {
        auto& self = *reinterpret_cast<FolderDialogs*>(data);
        if (message == BFFM_INITIALIZED && !self.m_first.empty()) {
            SendMessageW(dialog, BFFM_SETSELECTIONW, TRUE,
                         reinterpret_cast<LPARAM>(self.m_first.c_str()));
        }
        if (message != BFFM_VALIDATEFAILEDW) return 0;
        self.m_refused = reinterpret_cast<const char16_t*>(parameter);
        return self.m_keeps_open ? 1 : 0;
    }

    std::string m_host = tests::new_folder();
    std::u16string m_path = tests::platform_path(m_host);
    std::u16string m_first = m_path + u"\\b";
    std::u16string m_refused;
    bool m_keeps_open = false;
    BROWSEINFOW m_info{};
};

TEST_F(FolderDialogs, GoDownByKeysFromWhatIsSelected) {
    char16_t name[MAX_PATH];
    m_info.pszDisplayName = name;
    EXPECT_EQ(browse({is_selected(u"b"), press(VK_RIGHT), holds({u"c"}), press(VK_RIGHT),
                      is_selected(u"c"), press(VK_RETURN)}),
              m_path + u"\\b\\c");
    EXPECT_EQ(std::u16string_view(name), u"c");
    EXPECT_EQ(browse({is_selected(u"b"), press(VK_ESCAPE)}), u"");
}

TEST_F(FolderDialogs, EndWhereAPathStopsToBe) {
    fs::create_directories(m_host + "/B2");
    const struct {
        std::u16string first, chosen;
    } cases[] = {{m_path + u"\\gone\\deeper\\still", m_path},
                 {m_path + u"\\B\\C", m_path + u"\\b\\c"},
                 {m_path + u"\\x\\..\\B2\\", m_path + u"\\B2"}};
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        m_first = each.first;
        const auto name = each.chosen.substr(each.chosen.rfind(u'\\') + 1);
        EXPECT_EQ(browse({is_selected(name), press(VK_RETURN)}), each.chosen);
    }
}

TEST_F(FolderDialogs, ShowNamesOfEveryKindAndNoLoops) {
    m_first = m_path;
    fs::create_directories(m_host + "/*/in");
    fs::create_directories(m_host + "/x\ny");
    fs::create_directories(m_host + "/.hidden");
    fs::create_directory_symlink("nowhere", m_host + "/dead");
    fs::create_directory_symlink("loop", m_host + "/loop");
    fs::create_directory_symlink("..", m_host + "/b/up");
    std::ofstream(m_host + "/b/file") << "x";
    const Names all{u"*", u"b", u"x\xFFFDy"};
    const auto root = m_path.substr(m_path.rfind(u'\\') + 1);
    const auto has_no_arrow = [](HWND dialog) {
        TVITEMW asked{};
        asked.hItem = next(dialog, TVGN_CARET);
        SendMessageW(tree_of(dialog), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&asked));
        EXPECT_EQ(asked.cChildren, 0);
        return true;
    };
    EXPECT_EQ(browse({is_selected(root), press(VK_RIGHT), holds(all), press('X', u"x"),
                      is_selected(all[2]), press(VK_UP), is_selected(u"b"), press(VK_RIGHT),
                      holds({u"c", u"up"}), press(VK_RIGHT), press(VK_DOWN), is_selected(u"up"),
                      has_no_arrow, press(VK_LEFT), press(VK_UP), is_selected(u"*"),
                      press(VK_RIGHT), holds({u"in"}), press(VK_RETURN)}),
              m_path + u"\\*");
    // Hidden ones on demand, files if the caller wants them.
    const Step show_hidden = [](HWND) {
        tvutil2::press_key(VK_CONTROL);
        tvutil2::type_key('H');
        tvutil2::release_key(VK_CONTROL);
        return true;
    };
    m_first = m_path + u"\\b";
    EXPECT_EQ(
        browse({press(VK_RIGHT), holds({u"c", u"up", u"file"}), press(VK_LEFT), press(VK_LEFT),
                is_selected(root), show_hidden,
                holds({u".hidden", u"*", u"b", u"x\xFFFDy", u"dead", u"loop"}), press(VK_ESCAPE)},
               BIF_NEWDIALOGSTYLE | BIF_BROWSEINCLUDEFILES),
        u"");
}

TEST_F(FolderDialogs, SayWhatHasGone) {
    m_first = m_path + u"\\b\\c";
    // A neighbour that nobody assumes, which comes with what the disk says of its folder.
    fs::create_directory(m_host + "/b/d");
    const Step is_read = [](HWND dialog) {
        return name_of(dialog, next(dialog, TVGN_NEXT, next(dialog, TVGN_CARET))) == u"d";
    };
    const Step remove = [&](HWND) {
        fs::remove_all(m_host + "/b/c");
        return true;
    };
    EXPECT_EQ(browse({is_selected(u"c"), is_read, remove, press(VK_RIGHT),
                      holds({u"This folder can't be read"}), press(VK_RIGHT),
                      [](HWND dialog) { return !can_be_ok(dialog); }, press(VK_ESCAPE)}),
              u"");
}

TEST_F(FolderDialogs, MakeFolders) {
    const auto is_named = [](HWND) {
        return GetFocus() != nullptr && SendMessageW(GetFocus(), WM_GETTEXTLENGTH, 0, 0) == 10;
    };
    const Step type_name = [](HWND) {
        tvutil2::type_text(u"mine");
        return true;
    };
    EXPECT_EQ(browse({is_selected(u"b"), click(kMake), is_named, press(VK_RETURN),
                      is_selected(u"New folder"), press(VK_LEFT), is_selected(u"b"), click(kMake),
                      [](HWND dialog) {
                          return selected(dialog) == u"New folder (2)" &&
                                 SendMessageW(tree_of(dialog), TVM_GETEDITCONTROL, 0, 0) != 0;
                      },
                      type_name, press(VK_RETURN), is_selected(u"mine"), press(VK_RETURN)}),
              m_path + u"\\b\\mine");
    EXPECT_TRUE(fs::is_directory(m_host + "/b/New folder"));
    EXPECT_TRUE(fs::is_directory(m_host + "/b/mine"));
    EXPECT_FALSE(fs::exists(m_host + "/b/New folder (2)"));
}

TEST_F(FolderDialogs, GoOnWithDisksThatAreFullOrSilent) {
    if (!tests::has_own_mounts()) GTEST_SKIP() << "no mounts";
    fs::create_directory(m_host + "/dead");
    const tests::SmallDisk full(m_host + "/b", 0);
    const tests::DeadDisk dead(m_host + "/dead");
    if (!full.is_there() || !dead.is_there()) GTEST_SKIP() << "no disks";
    const Step is_told = [](HWND dialog) {
        if (tree_of(dialog) != nullptr) return false;
        SendMessageW(dialog, WM_COMMAND, IDOK, 0);
        return true;
    };
    const Step select_dead = [&](HWND dialog) {
        const auto path = m_path + u"\\dead";
        SendMessageW(dialog, BFFM_SETSELECTIONW, TRUE, reinterpret_cast<LPARAM>(path.c_str()));
        return true;
    };
    EXPECT_EQ(
        browse({is_selected(u"b"), click(kMake), is_told, is_selected(u"b"), select_dead,
                is_selected(u"dead"), press(VK_RIGHT), holds({u"Reading…"}),
                holds({u"\"dead\" isn't answering."}), click(kMake), is_told, press(VK_RETURN)}),
        m_path + u"\\dead");
    EXPECT_TRUE(fs::is_empty(m_host + "/b"));
}

TEST_F(FolderDialogs, TakeWhatIsTyped) {
    const auto type = [&](const std::u16string& text) -> Step {
        return [text](HWND dialog) {
            SetDlgItemTextW(dialog, kEdit, text.c_str());
            return true;
        };
    };
    constexpr UINT kFlags = BIF_USENEWUI | BIF_VALIDATE;
    const Step ok = click(IDOK);
    EXPECT_EQ(browse({is_selected(u"b"), type(u"c"), ok}, kFlags), m_path + u"\\b\\c");
    EXPECT_EQ(browse({is_selected(u"b"), type(m_path + u"\\b\\..\\b"), ok}, kFlags),
              m_path + u"\\b");
    EXPECT_EQ(browse({is_selected(u"b"), type(u"none"), ok}, kFlags), m_path + u"\\b");
    EXPECT_EQ(m_refused, u"none");
    m_keeps_open = true;
    m_refused.clear();
    EXPECT_EQ(browse({is_selected(u"b"), type(u"none"), ok,
                      [&](HWND) { return !m_refused.empty(); }, press(VK_ESCAPE)},
                     kFlags),
              u"");
}

TEST_F(FolderDialogs, ChooseOnlyWhatHasAPath) {
    m_first.clear();
    const Step select_computer = [](HWND dialog) {
        SendMessageW(dialog, BFFM_SETSELECTIONW, FALSE,
                     reinterpret_cast<LPARAM>(tvutil2::computer_item_list().get()));
        EXPECT_EQ(selected(dialog), u"Computer");
        EXPECT_FALSE(can_be_ok(dialog));
        SendMessageW(dialog, BFFM_ENABLEOK, 0, 1);
        EXPECT_TRUE(can_be_ok(dialog));
        return true;
    };
    EXPECT_EQ(browse({select_computer, press(VK_RIGHT), holds({u"C:"}), press(VK_RIGHT),
                      is_selected(u"C:"), press(VK_RETURN)},
                     BIF_NEWDIALOGSTYLE | BIF_RETURNONLYFSDIRS),
              u"C:\\");
    // A tree that begins elsewhere holds nothing else.
    const auto root = tvutil2::item_list_of(m_path);
    m_info.pidlRoot = root.get();
    m_first = u"C:\\";
    const Step look = [&](HWND dialog) {
        const auto name = name_of(dialog, next(dialog, TVGN_ROOT));
        EXPECT_EQ(name, m_path.substr(m_path.rfind(u'\\') + 1));
        return true;
    };
    EXPECT_EQ(browse({look, press(VK_RETURN)}), m_path);
    EXPECT_EQ(SHBrowseForFolderW(nullptr), nullptr);
}

}  // namespace
