// A window on the offscreen display for controls to be in, and what they tell it.
#pragma once

#include "tvutil2/platform/display/driver.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

namespace tests {

class ControlTest : public testing::Test {
  protected:
    ControlTest() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        WNDCLASSW description{};
        description.lpfnWndProc = hear;
        description.hbrBackground = reinterpret_cast<HBRUSH>(std::intptr_t{15 + 1});
        description.lpszClassName = u"Tests::Parent";
        RegisterClassW(&description);
        m_current = this;
        m_parent = CreateWindowExW(0, u"Tests::Parent", u"", WS_POPUP | WS_VISIBLE, 50, 50, 500,
                                   400, nullptr, nullptr, nullptr, nullptr);
    }
    ~ControlTest() override {
        if (IsWindow(m_parent)) DestroyWindow(m_parent);
        m_current = nullptr;
    }

    HWND add(const char16_t* class_name, DWORD style, RECT place = {10, 10, 210, 38},
             const char16_t* text = u"", int id = 7) {
        return CreateWindowExW(0, class_name, text, style | WS_CHILD | WS_VISIBLE, place.left,
                               place.top, place.right - place.left, place.bottom - place.top,
                               m_parent, reinterpret_cast<HMENU>(static_cast<std::intptr_t>(id)),
                               nullptr, nullptr);
    }

    // Runs the loop dry; what the parent was told meanwhile, and since the last time.
    std::string pump() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        return std::exchange(m_told, {});
    }
    std::string type(std::u16string_view text) {
        tvutil2::type_text(text);
        return pump();
    }
    std::string press(int key, bool with_control = false, bool with_shift = false) {
        if (with_control) tvutil2::press_key(VK_CONTROL);
        if (with_shift) tvutil2::press_key(VK_SHIFT);
        tvutil2::type_key(key);
        if (with_shift) tvutil2::release_key(VK_SHIFT);
        if (with_control) tvutil2::release_key(VK_CONTROL);
        return pump();
    }
    static POINT on_screen(HWND window, POINT point) {
        ClientToScreen(window, &point);
        return point;
    }
    std::string click(HWND window, POINT point) {
        tvutil2::click(on_screen(window, point));
        return pump();
    }
    static std::u16string text_of(HWND window) {
        std::u16string text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, u'\0');
        text.resize(static_cast<std::size_t>(
            GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
        return text;
    }
    // For eyes: TVUTIL_TEST_PICTURES=DIR keeps them.
    void keep_picture(const char* name) {
        const char* const folder = std::getenv("TVUTIL_TEST_PICTURES");
        if (folder == nullptr) return;
        const auto picture = tvutil2::picture_of(m_parent);
        ASSERT_NE(picture, nullptr);
        EXPECT_TRUE(picture->write_png(std::string(folder) + "/" + name + ".png"));
    }

    HWND m_parent = nullptr;
    std::string m_told;
    /// Names of codes in WM_COMMAND.
    std::function<std::string(HWND, WORD)> m_name = [](HWND, WORD code) {
        return std::to_string(code);
    };
    std::function<LRESULT(UINT, WPARAM, LPARAM)> m_answer;

  private:
    static LRESULT hear(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        auto* const self = m_current;
        if (self == nullptr) return DefWindowProcW(window, message, wparam, lparam);
        if (message == WM_COMMAND) {
            self->m_told += (self->m_told.empty() ? "" : " ") +
                            self->m_name(reinterpret_cast<HWND>(lparam), HIWORD(wparam));
        }
        const auto answer = self->m_answer ? self->m_answer(message, wparam, lparam) : 0;
        return answer != 0 ? answer : DefWindowProcW(window, message, wparam, lparam);
    }
    static inline ControlTest* m_current = nullptr;
};

}  // namespace tests
