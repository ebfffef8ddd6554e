// Of what size and on which side a picture or a text in a control is seen, and how it is read.
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/picture/icons.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/list_box.h"
#include "tvutil2/platform/window/controls/static.h"

#include <vector>

#include "tests/platform/window/controls/control_fixture.h"

namespace {

using Looks = tests::ControlTest;

constexpr RECT kPlace{10, 10, 210, 34};

// The pixels of where the controls of these tests are.
std::vector<std::uint32_t> pixels(HWND parent) {
    const auto picture = tvutil2::picture_of(parent);
    std::vector<std::uint32_t> found;
    for (int y = kPlace.top; y < kPlace.bottom; ++y) {
        const auto* const row = picture->row(y);
        found.insert(found.end(), row + kPlace.left, row + kPlace.right);
    }
    return found;
}

TEST_F(Looks, PicturesGiveTheirSizeToWhatShowsThem) {
    auto* const icon = reinterpret_cast<LPARAM*>(LoadIconW(nullptr, IDI_ERROR));
    auto* const screen = GetDC(nullptr);
    auto* const bitmap = CreateCompatibleBitmap(screen, 50, 40);
    ReleaseDC(nullptr, screen);
    const struct {
        DWORD style;
        const void* image;
        SIZE size;
    } cases[] = {
        {SS_ICON, icon, {32, 32}},
        {SS_ICON | WS_BORDER, icon, {32, 32}},
        {SS_ICON | SS_CENTERIMAGE, icon, {20, 10}},
        {SS_ICON | SS_REALSIZECONTROL, icon, {20, 10}},
        {SS_ICON, nullptr, {20, 10}},
        {SS_BITMAP, bitmap, {50, 40}},
        {SS_BITMAP, icon, {20, 10}},
        {SS_LEFT, bitmap, {20, 10}},
    };
    for (const auto& each : cases) {
        auto* const shown = add(u"Static", each.style & ~WS_BORDER, {10, 10, 30, 20});
        if ((each.style & WS_BORDER) != 0) {
            SetWindowLongW(shown, GWL_STYLE, static_cast<LONG>(each.style | WS_CHILD | WS_VISIBLE));
            SetWindowPos(shown, nullptr, 0, 0, 24, 14,
                         SWP_NOMOVE | SWP_NOZORDER | SWP_FRAMECHANGED);
        }
        SendMessageW(shown, STM_SETIMAGE, 0, reinterpret_cast<LPARAM>(each.image));
        RECT client{};
        GetClientRect(shown, &client);
        EXPECT_EQ(client.right, each.size.cx) << each.style;
        EXPECT_EQ(client.bottom, each.size.cy) << each.style;
        DestroyWindow(shown);
    }
    DeleteObject(bitmap);
}

// What ends a sentence stands at its left; what is at the right, at the right.
TEST_F(Looks, TextsAreReadFromWhereTheStylesSay) {
    constexpr auto kReading = LONG{WS_EX_RTLREADING};
    const struct {
        const char16_t* name;
        DWORD style;
        LONG ex_style;
        DWORD like;  // the style of what looks so, with the text as it is seen
    } cases[] = {
        {u"Static", SS_LEFT, kReading, SS_LEFT},
        {u"Static", SS_LEFT, kReading | LONG{WS_EX_RIGHT}, SS_RIGHT},
        {u"Static", SS_LEFTNOWORDWRAP, kReading, SS_LEFTNOWORDWRAP},
        {u"Button", BS_PUSHBUTTON, kReading, BS_PUSHBUTTON},
        {u"Button", BS_CHECKBOX, kReading, BS_CHECKBOX},
        {u"Button", BS_GROUPBOX, kReading, BS_GROUPBOX},
        {u"Button", BS_COMMANDLINK, kReading, BS_COMMANDLINK},
        {u"ListBox", 0, kReading, 0},
        {u"Edit", 0, kReading | LONG{WS_EX_RIGHT}, ES_RIGHT},
    };
    const auto look = [this](const auto& each, DWORD style, LONG ex_style, const char16_t* text) {
        auto* const control = add(each.name, style, kPlace, text);
        SetWindowLongW(control, GWL_EXSTYLE, ex_style);
        const auto given = reinterpret_cast<LPARAM>(text);
        const bool is_edit = std::u16string_view(each.name) == u"Edit";
        if (is_edit) SetWindowTextW(control, u"");
        if (is_edit) SendMessageW(control, EM_SETCUEBANNER, 1, given);
        SendMessageW(control, LB_ADDSTRING, 0, given);
        InvalidateRect(control, nullptr, TRUE);
        pump();
        auto seen = pixels(m_parent);
        DestroyWindow(control);
        pump();
        return seen;
    };
    const auto nothing = pixels(m_parent);
    for (const auto& each : cases) {
        const auto seen = look(each, each.style, each.ex_style, u"HHH.");
        EXPECT_NE(seen, nothing);
        EXPECT_EQ(seen, look(each, each.like, 0, u".HHH")) << each.ex_style << " " << each.style;
        EXPECT_NE(seen, look(each, each.like, 0, u"HHH."));
    }
}

}  // namespace
