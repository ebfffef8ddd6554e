#include "tvutil2/platform/base/global_memory.h"
#include "tvutil2/platform/files/item_list.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/common_dialogs/open_file_hook.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/show.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "tests/platform/window/common_dialogs/person.h"
#include "tests/platform/window/dialogs/template_bytes.h"
#include "tests/support/profile.h"
#include "tests/support/resource_image.h"

namespace {

using tests::Step;

constexpr int kPlaces = 0x3751;

// What the hook does; it gets the child, and CDN_, or 0 for WM_INITDIALOG.
std::function<INT_PTR(HWND child, UINT code, OPENFILENAMEW& asked)> g_react;

UINT_PTR hook(HWND child, UINT message, WPARAM, LPARAM lparam) {
    if (message == WM_INITDIALOG) {
        return static_cast<UINT_PTR>(g_react(child, 0, *reinterpret_cast<OPENFILENAMEW*>(lparam)));
    }
    if (message != WM_NOTIFY) return 0;
    const auto& told = *reinterpret_cast<const OFNOTIFYW*>(lparam);
    EXPECT_EQ(told.hdr.hwndFrom, GetParent(child));
    return static_cast<UINT_PTR>(g_react(child, told.hdr.code, *told.lpOFN));
}

Step say_ok(const std::u16string& name) {
    return [name](HWND dialog) {
        if (GetDlgItem(dialog, cmb13) == nullptr) return false;
        SetDlgItemTextW(dialog, cmb13, name.c_str());
        SendMessageW(dialog, WM_COMMAND, IDOK, 0);
        return true;
    };
}

std::u16string answer_of(HWND dialog, UINT message) {
    char16_t text[300] = {};
    const auto size = SendMessageW(dialog, message, 300, reinterpret_cast<LPARAM>(text));
    EXPECT_EQ(static_cast<std::size_t>(size), std::u16string(text).size() + 1);
    return text;
}

LRESULT tell(HWND dialog, UINT message, int id, const char16_t* text) {
    return SendMessageW(dialog, message, static_cast<WPARAM>(id), reinterpret_cast<LPARAM>(text));
}

RECT place_of(HWND dialog, int id) {
    RECT place{};
    GetWindowRect(GetDlgItem(dialog, id), &place);
    return place;
}

class FileHooks : public testing::Test {
  protected:
    FileHooks() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        g_react = [](HWND, UINT, OPENFILENAMEW&) { return 0; };
        for (const char* const name : {"a.txt", "b.dat"}) {
            tests::write_file(m_host + "/" + name, "x");
        }
        std::filesystem::create_directory(m_host + "/in");
        m_asked.lStructSize = sizeof m_asked;
        m_asked.lpstrFilter = u"Texts\0*.txt\0All\0*.*\0";
        m_asked.nFilterIndex = 1;
        m_asked.lpstrFile = m_file;
        m_asked.nMaxFile = 300;
        m_asked.lpstrInitialDir = m_path.c_str();
        m_asked.Flags = OFN_ENABLEHOOK | OFN_EXPLORER;
        m_asked.lpfnHook = hook;
    }
    ~FileHooks() override { g_react = nullptr; }

    void add_template(const std::string& bytes) {
        m_image.add(u"#5", u"#200", 0, bytes);
        ASSERT_TRUE(
            tvutil2::add_module_resources(nullptr, m_image.bytes().data(), m_image.bytes().size()));
        m_asked.Flags |= OFN_ENABLETEMPLATE;
        m_asked.hInstance = GetModuleHandleW(nullptr);
        m_asked.lpTemplateName = MAKEINTRESOURCEW(200);
    }

    const std::string m_host = tests::new_folder();
    const std::u16string m_path = tests::platform_path(m_host);
    char16_t m_file[300] = {};
    OPENFILENAMEW m_asked{};
    tests::ResourceImage m_image;
};

TEST_F(FileHooks, HearWhatThePersonDoes) {
    tests::TemplateBytes bytes(u"", WS_CHILD | DS_CONTROL, 200, 30);
    add_template(bytes.add(0x80, 5, WS_TABSTOP, u"Check", 5, 5, 60, 14).bytes());
    std::vector<UINT> heard;
    std::u16string refused;
    g_react = [&](HWND child, UINT code, OPENFILENAMEW& asked) -> INT_PTR {
        heard.push_back(code);
        EXPECT_EQ(&asked, &m_asked);
        EXPECT_NE(GetDlgItem(child, 5), nullptr);
        EXPECT_EQ(asked.nFilterIndex, heard.size() > 3 ? 2U : 1U);
        if (code != CDN_FILEOK || !refused.empty()) return 0;
        refused = asked.lpstrFile;
        SetWindowLongPtrW(child, DWLP_MSGRESULT, 1);
        return 1;
    };
    const auto choose_type = [](HWND dialog) {
        SendDlgItemMessageW(dialog, cmb1, CB_SETCURSEL, 1, 0);
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(cmb1, CBN_SELCHANGE), 0);
        return true;
    };
    // The folder is first in its list.
    const auto select_second = [](HWND dialog) {
        SetFocus(GetDlgItem(dialog, lst1));
        tvutil2::type_key(VK_END, {});
        return answer_of(dialog, CDM_GETSPEC) == u"b.dat";
    };
    const tests::Person person({choose_type, select_second, say_ok(u"b.dat"),
                                [&](HWND) { return !refused.empty(); }, say_ok(u"a.txt")});
    EXPECT_TRUE(GetOpenFileNameW(&m_asked));
    EXPECT_EQ(refused, m_path + u"\\b.dat");
    EXPECT_EQ(m_file, m_path + u"\\a.txt");
    // As often as the list has changed under the key.
    heard.erase(std::unique(heard.begin(), heard.end()), heard.end());
    EXPECT_EQ(heard, (std::vector<UINT>{0, CDN_INITDONE, CDN_FOLDERCHANGE, CDN_TYPECHANGE,
                                        CDN_SELCHANGE, CDN_FILEOK}));
}

// Whatever has been refused before.
TEST_F(FileHooks, LeaveTheRecordAsItWasWhenNothingIsChosen) {
    char16_t title[20] = u"title";
    std::u16string(u"first").copy(m_file, 5);
    m_asked.lpstrFileTitle = title;
    m_asked.nMaxFileTitle = 20;
    m_asked.lpstrDefExt = u"txt";
    m_asked.nFileOffset = 77;
    m_asked.Flags |= OFN_READONLY;
    std::u16string refused;
    char16_t larger[400] = u"larger";
    g_react = [&](HWND child, UINT code, OPENFILENAMEW& asked) -> INT_PTR {
        if (code == CDN_INITDONE) {
            CheckDlgButton(GetParent(child), chx1, BST_UNCHECKED);
            asked.lpstrFile = larger;
            asked.nMaxFile = 400;
        }
        if (code != CDN_FILEOK) return 0;
        refused = asked.lpstrFile;
        EXPECT_EQ(std::u16string(title), u"b.dat");
        EXPECT_EQ(asked.Flags & (OFN_READONLY | OFN_EXTENSIONDIFFERENT), OFN_EXTENSIONDIFFERENT);
        SetWindowLongPtrW(child, DWLP_MSGRESULT, 1);
        return 1;
    };
    const tests::Person person({say_ok(u"b.dat"), [&](HWND) { return !refused.empty(); },
                                [](HWND dialog) {
                                    SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
                                    return true;
                                }});
    EXPECT_FALSE(GetOpenFileNameW(&m_asked));
    EXPECT_EQ(refused, m_path + u"\\b.dat");
    EXPECT_EQ(std::u16string(larger), u"first");
    EXPECT_EQ(std::u16string(title), u"title");
    EXPECT_EQ(m_asked.nFileOffset, 77);
    EXPECT_EQ(m_asked.Flags & (OFN_READONLY | OFN_EXTENSIONDIFFERENT), OFN_READONLY);
}

TEST_F(FileHooks, AskAndChangeTheDialog) {
    g_react = [&](HWND child, UINT code, OPENFILENAMEW&) -> INT_PTR {
        if (code != CDN_INITDONE) return 0;
        auto* const dialog = GetParent(child);
        EXPECT_EQ(answer_of(dialog, CDM_GETFOLDERPATH), m_path);
        EXPECT_EQ(answer_of(dialog, CDM_GETFILEPATH), m_path);
        const auto size = SendMessageW(dialog, CDM_GETFOLDERIDLIST, 0, 0);
        std::vector<unsigned char> list(static_cast<std::size_t>(size));
        EXPECT_EQ(SendMessageW(dialog, CDM_GETFOLDERIDLIST, list.size(),
                               reinterpret_cast<LPARAM>(list.data())),
                  size);
        EXPECT_EQ(tvutil2::path_of(reinterpret_cast<PCIDLIST_ABSOLUTE>(list.data())), m_path);
        tell(dialog, CDM_SETCONTROLTEXT, edt1, u"new");
        EXPECT_EQ(answer_of(dialog, CDM_GETSPEC), u"new");
        EXPECT_EQ(answer_of(dialog, CDM_GETFILEPATH), m_path + u"\\new");
        char16_t small[3] = u"xy";
        EXPECT_EQ(tell(dialog, CDM_GETSPEC, 3, small), 4);
        EXPECT_EQ(std::u16string(small), u"xy");
        EXPECT_EQ(SendMessageW(dialog, CDM_GETSPEC, 0, 0), 4);
        tell(dialog, CDM_SETCONTROLTEXT, IDOK, u"Take");
        tell(dialog, CDM_SETCONTROLTEXT, 9999, nullptr);
        tell(dialog, CDM_HIDECONTROL, stc2, nullptr);
        tell(dialog, CDM_HIDECONTROL, cmb1, nullptr);
        tell(dialog, CDM_SETDEFEXT, 0, u"dat");
        return 0;
    };
    const tests::Person person({[](HWND dialog) {
        char16_t text[20] = {};
        GetDlgItemTextW(dialog, IDOK, text, 20);
        EXPECT_EQ(std::u16string(text), u"Take");
        EXPECT_FALSE(IsWindowVisible(GetDlgItem(dialog, cmb1)));
        // Nothing is left where it was.
        const auto name = place_of(dialog, cmb13);
        EXPECT_LT(place_of(dialog, IDOK).top - name.bottom, name.bottom - name.top);
        SendMessageW(dialog, WM_COMMAND, IDOK, 0);
        return true;
    }});
    EXPECT_TRUE(GetSaveFileNameW(&m_asked));
    EXPECT_EQ(m_file, m_path + u"\\new.dat");
}

TEST_F(FileHooks, NeedWhatTheyAreMadeOf) {
    add_template(std::string("\1\0\xFF\xFFshort", 9));
    const struct {
        DWORD flags;
        LPOFNHOOKPROC hook;
        const char16_t* name;
        DWORD error;
    } cases[] = {
        {OFN_ENABLEHOOK, nullptr, nullptr, CDERR_NOHOOK},
        {OFN_ENABLETEMPLATE, nullptr, nullptr, CDERR_NOTEMPLATE},
        {OFN_ENABLETEMPLATE, nullptr, u"none", CDERR_FINDRESFAILURE},
        {OFN_ENABLETEMPLATE | OFN_ENABLEHOOK, hook, MAKEINTRESOURCEW(200), CDERR_INITIALIZATION},
    };
    for (const auto& each : cases) {
        m_asked.Flags = each.flags;
        m_asked.lpfnHook = each.hook;
        m_asked.lpTemplateName = each.name;
        EXPECT_FALSE(GetOpenFileNameW(&m_asked));
        EXPECT_EQ(CommDlgExtendedError(), each.error);
    }
}

TEST_F(FileHooks, MayDoTheirWorst) {
    const std::function<void(HWND)> deeds[] = {
        [](HWND) { throw std::runtime_error("hook"); },
        [](HWND child) { DestroyWindow(GetParent(child)); },
        [](HWND child) { DestroyWindow(child); },
        [](HWND child) { EndDialog(GetParent(child), IDOK); },
        [](HWND child) { SendMessageW(GetParent(child), WM_COMMAND, IDCANCEL, 0); },
    };
    for (const UINT when : {0U, CDN_INITDONE, CDN_FOLDERCHANGE, CDN_FILEOK}) {
        for (std::size_t i = 0; i < std::size(deeds); ++i) {
            SCOPED_TRACE(testing::Message() << when << " " << i);
            g_react = [&](HWND child, UINT code, OPENFILENAMEW&) {
                if (code == when) deeds[i](child);
                return -1;
            };
            const auto find = [](HWND dialog) { return GetDlgItem(dialog, cmb13) != nullptr; };
            const tests::Person person({find, say_ok(u"a.txt"), [&](HWND dialog) {
                                            SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
                                            return true;
                                        }});
            bool has_thrown = false;
            try {
                GetOpenFileNameW(&m_asked);
            } catch (const std::runtime_error&) {
                has_thrown = true;
            }
            EXPECT_EQ(has_thrown, i == 0);
            EXPECT_EQ(FindWindowW(u"#32770", nullptr), nullptr);
        }
    }
}

TEST_F(FileHooks, TakeATemplateFromMemory) {
    tests::TemplateBytes bytes(u"", WS_CHILD, 100, 20);
    const auto content = bytes.add(0x80, 5, WS_TABSTOP, u"x", 5, 5, 60, 14).bytes();
    alignas(4) static unsigned char fixed[500];
    ASSERT_LE(content.size(), sizeof fixed);
    std::ranges::copy(content, fixed);
    auto* const movable = GlobalAlloc(GMEM_MOVEABLE, content.size());
    std::memcpy(GlobalLock(movable), content.data(), content.size());
    GlobalUnlock(movable);
    m_asked.Flags |= OFN_ENABLETEMPLATEHANDLE;
    bool has_control = false;
    g_react = [&](HWND child, UINT, OPENFILENAMEW&) {
        has_control = GetDlgItem(child, 5) != nullptr;
        return 0;
    };
    const HINSTANCE cases[] = {reinterpret_cast<HINSTANCE>(fixed),
                               reinterpret_cast<HINSTANCE>(movable)};
    for (auto* const each : cases) {
        m_asked.hInstance = each;
        has_control = false;
        const tests::Person person({say_ok(u"a.txt")});
        EXPECT_TRUE(GetOpenFileNameW(&m_asked));
        EXPECT_TRUE(has_control);
    }
    EXPECT_EQ(GlobalFree(movable), nullptr);
    m_asked.hInstance = nullptr;
    EXPECT_FALSE(GetOpenFileNameW(&m_asked));
    EXPECT_EQ(CommDlgExtendedError(), CDERR_NOTEMPLATE);
}

TEST_F(FileHooks, StandAroundTheDialog) {
    // Left of, above, right of and below what belongs to the dialog.
    tests::TemplateBytes bytes(u"", WS_CHILD, 180, 110);
    bytes.add(0x82, stc32, 0, u"", 40, 20, 100, 60)
        .add(0x80, 1001, WS_TABSTOP, u"l", 5, 30, 30, 14)
        .add(0x80, 1002, WS_TABSTOP, u"t", 50, 3, 30, 14)
        .add(0x80, 1003, WS_TABSTOP, u"r", 145, 30, 30, 14)
        .add(0x80, 1004, WS_TABSTOP, u"b", 50, 90, 30, 14);
    add_template(bytes.bytes());
    HWND part = nullptr;
    g_react = [&](HWND child, UINT, OPENFILENAMEW&) {
        part = child;
        return 0;
    };
    const auto check = [&](HWND dialog) {
        const auto list = place_of(dialog, kPlaces);
        const auto rows = place_of(dialog, lst1);
        const auto right = place_of(part, 1003);
        const auto bottom = place_of(part, 1004);
        RECT whole{};
        GetWindowRect(part, &whole);
        EXPECT_LT(place_of(part, 1001).right, list.left);
        EXPECT_LT(place_of(part, 1002).bottom, place_of(dialog, cmb2).top);
        EXPECT_GT(right.left, rows.right);
        EXPECT_LT(right.right, whole.right);
        EXPECT_GT(bottom.top, place_of(dialog, IDCANCEL).bottom);
        EXPECT_LT(bottom.bottom, whole.bottom);
        EXPECT_FALSE(IsWindowVisible(GetDlgItem(part, stc32)));
    };
    const tests::Person person({[&](HWND dialog) {
        check(dialog);
        RECT place{};
        GetWindowRect(dialog, &place);
        SetWindowPos(dialog, nullptr, 0, 0, place.right - place.left + 100,
                     place.bottom - place.top + 50, SWP_NOMOVE | SWP_NOZORDER);
        check(dialog);
        SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        return true;
    }});
    EXPECT_FALSE(GetOpenFileNameW(&m_asked));
    EXPECT_TRUE(person.has_done_all());
}

TEST_F(FileHooks, TakeAnyTemplateAsAChildThatFits) {
    tests::TemplateBytes bytes(u"Caption", WS_POPUP | WS_CAPTION | WS_DISABLED, 32767, 32767);
    for (DWORD id = 1; id <= 200; ++id) bytes.add(0x80, id, WS_TABSTOP, u"x", -32768, 0, 9, 9);
    add_template(bytes.bytes());
    HWND own = nullptr;
    g_react = [&](HWND child, UINT, OPENFILENAMEW&) {
        own = child;
        return 0;
    };
    const tests::Person person({[&](HWND dialog) {
        EXPECT_EQ(GetParent(own), dialog);
        EXPECT_TRUE(IsWindowVisible(own));
        RECT part{};
        RECT whole{};
        RECT list{};
        EXPECT_TRUE(GetWindowRect(own, &part) && GetWindowRect(dialog, &whole));
        EXPECT_TRUE(GetWindowRect(GetDlgItem(dialog, lst1), &list));
        EXPECT_LE(part.bottom, whole.bottom);
        EXPECT_LE(part.right, whole.right);
        EXPECT_LT(whole.bottom - whole.top, 1080);
        EXPECT_GT(list.bottom - list.top, 50);
        SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        return true;
    }});
    EXPECT_FALSE(GetOpenFileNameW(&m_asked));
    EXPECT_EQ(CommDlgExtendedError(), 0U);
}

}  // namespace
