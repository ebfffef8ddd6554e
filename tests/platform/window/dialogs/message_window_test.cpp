#include "tvutil2/platform/base/global_memory.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/clipboard.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "tests/platform/window/trace.h"

namespace {

constexpr const char16_t* kCaption = u"A question";

// What the person does once the box is there.
std::function<void(HWND)> g_person;

void act(HWND, UINT, UINT_PTR id, DWORD) {
    KillTimer(nullptr, id);
    auto* const box = FindWindowW(u"#32770", kCaption);
    ASSERT_NE(box, nullptr);
    g_person(box);
}

int ask(UINT type, std::function<void(HWND)> person, const char16_t* text = u"Go on?",
        HWND owner = nullptr) {
    g_person = std::move(person);
    SetTimer(nullptr, 0, 1, act);
    return MessageBoxW(owner, text, kCaption, type);
}

std::u16string label(HWND box, int id) {
    char16_t text[64] = {};
    GetDlgItemTextW(box, id, text, 64);
    return text;
}

class MessageWindows : public testing::Test {
  protected:
    MessageWindows() { setenv("TVUTIL_DISPLAY", "offscreen", 1); }
};

TEST_F(MessageWindows, AnswerWhatIsTypedInThem) {
    const struct {
        UINT type;
        std::vector<int> keys;
        int answer;
    } cases[] = {
        {MB_OK, {VK_ESCAPE}, IDOK},
        {MB_OK, {VK_RETURN}, IDOK},
        {MB_OKCANCEL | MB_ICONERROR, {VK_RETURN}, IDOK},
        {MB_OKCANCEL | MB_DEFBUTTON2, {VK_RETURN}, IDCANCEL},
        {MB_OKCANCEL | MB_DEFBUTTON2, {VK_SPACE}, IDCANCEL},
        {MB_OKCANCEL | MB_DEFBUTTON4, {VK_SPACE}, IDOK},
        // Esc is no answer where nothing cancels.
        {MB_YESNO, {VK_ESCAPE, 'N'}, IDNO},
        {MB_YESNOCANCEL | MB_ICONQUESTION, {VK_ESCAPE}, IDCANCEL},
        {MB_YESNOCANCEL, {VK_TAB, VK_RETURN}, IDNO},
        {MB_ABORTRETRYIGNORE, {VK_ESCAPE, VK_RIGHT, VK_RETURN}, IDRETRY},
        {MB_ABORTRETRYIGNORE, {VK_LEFT, VK_RETURN}, IDIGNORE},
        {MB_CANCELTRYCONTINUE | MB_DEFBUTTON3, {VK_RETURN}, IDCONTINUE},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        const auto type_all = [&](HWND) {
            for (const int key : each.keys) tvutil2::type_key(key, key == 'N' ? u"n" : u"");
        };
        EXPECT_EQ(ask(each.type, type_all), each.answer);
    }
    EXPECT_EQ(MessageBoxW(nullptr, u"", u"", 7), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_MSGBOX_STYLE);
}

TEST_F(MessageWindows, SpeakTheThreadsLanguageAndHoldTheirOwner) {
    const auto before = GetThreadLocale();
    auto& trace = tests::Trace::current();
    trace = {};
    auto* const owner = tests::traced_window(WS_POPUP | WS_VISIBLE);
    SetThreadLocale(0x0407);
    const auto look = [&](HWND box) {
        EXPECT_FALSE(IsWindowEnabled(owner));
        EXPECT_EQ(GetWindow(box, GW_OWNER), owner);
        EXPECT_EQ(label(box, IDYES), u"&Ja");
        EXPECT_EQ(label(box, IDNO), u"&Nein");
        EXPECT_EQ(label(box, 0xFFFF), u"Weiter & weiter?");
        tvutil2::type_key('J', u"j");
    };
    EXPECT_EQ(ask(MB_YESNO, look, u"Weiter & weiter?", owner), IDYES);
    EXPECT_TRUE(IsWindowEnabled(owner));
    SetThreadLocale(before);
    DestroyWindow(owner);
    EXPECT_EQ(MessageBoxW(owner, u"", u"", MB_OK), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    trace = {};
}

TEST_F(MessageWindows, CopyWhatIsToBeRead) {
    const auto copy = [](HWND) {
        tvutil2::press_key(VK_CONTROL);
        tvutil2::type_key('C');
        tvutil2::release_key(VK_CONTROL);
        tvutil2::type_key(VK_RETURN);
    };
    EXPECT_EQ(ask(MB_OKCANCEL, copy, u"a\r\nb"), IDOK);
    const std::u16string line = u"---------------------------\r\n";
    ASSERT_TRUE(OpenClipboard(nullptr));
    const auto* const copied =
        static_cast<const char16_t*>(GlobalLock(GetClipboardData(CF_UNICODETEXT)));
    EXPECT_EQ(
        std::u16string(copied != nullptr ? copied : u""),
        line + kCaption + u"\r\n" + line + u"a\r\nb\r\n" + line + u"OK   Cancel   \r\n" + line);
    CloseClipboard();
}

// Nothing is approved when nobody can answer any more.
TEST_F(MessageWindows, RefuseWhenTheDisplayOrTheProgramEnds) {
    const auto lose = [](HWND box) {
        PostMessageW(box, WM_CLOSE, 0, 0);
        tvutil2::lose_display(box);
    };
    EXPECT_EQ(ask(MB_YESNO | MB_DEFBUTTON1, lose), IDNO);
    EXPECT_EQ(ask(MB_OKCANCEL, [](HWND) { PostQuitMessage(3); }), IDCANCEL);
    EXPECT_EQ(ask(MB_YESNOCANCEL, [](HWND box) { DestroyWindow(box); }), IDCANCEL);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) && message.message != WM_QUIT) {
    }
    EXPECT_EQ(message.wParam, 3U);
}

TEST_F(MessageWindows, StayOnTheScreenWhateverTheirTextIs) {
    const auto work = tvutil2::monitors().front().work;
    const std::u16string texts[] = {u"", std::u16string(3000, u'w'), std::u16string(1 << 20, u'\n'),
                                    std::u16string(200, u'\\') + std::u16string(900, u' ')};
    for (const auto& text : texts) {
        SCOPED_TRACE(text.size());
        const auto measure = [&](HWND box) {
            RECT place{};
            GetWindowRect(box, &place);
            EXPECT_GE(place.left, work.left);
            EXPECT_GE(place.top, work.top);
            EXPECT_LE(place.right, work.right);
            EXPECT_LE(place.bottom, work.bottom);
            tvutil2::type_key(VK_RETURN);
        };
        EXPECT_EQ(ask(MB_OK | MB_ICONWARNING, measure, text.c_str()), IDOK);
    }
}

}  // namespace
