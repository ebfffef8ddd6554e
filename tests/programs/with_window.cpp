// A program with one window, whose title is its argument: prints the window's handle, and answers
// messages until it is closed.
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <signal.h>

#include <cstdint>
#include <cstdio>

namespace {

LRESULT procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_USER:
            return static_cast<LRESULT>(wparam) + lparam;
        case WM_USER + 1:  // asks back
            return SendMessageW(reinterpret_cast<HWND>(wparam), WM_USER, 1, lparam);
        case WM_USER + 2:
            return DestroyWindow(window);
        case WM_USER + 3:
            return raise(SIGSTOP);
        case WM_COPYDATA: {
            const auto& given = *reinterpret_cast<const COPYDATASTRUCT*>(lparam);
            auto sum = static_cast<LRESULT>(given.dwData);
            for (DWORD i = 0; i < given.cbData; ++i) {
                sum += static_cast<const BYTE*>(given.lpData)[i];
            }
            return sum;
        }
        case WM_DESTROY:
            PostQuitMessage(3);
            return 0;
        default:
            return DefWindowProcW(window, message, wparam, lparam);
    }
}

}  // namespace

int main(int argc, char** argv) {
    WNDCLASSW description{};
    description.lpfnWndProc = procedure;
    description.lpszClassName = u"Tests::WithWindow";
    RegisterClassW(&description);
    const auto title = tvutil2::to_utf16_lossy(argc > 1 ? argv[1] : "");
    auto* const window = CreateWindowExW(0, description.lpszClassName, title.c_str(), 0, 0, 0, 0, 0,
                                         nullptr, nullptr, nullptr, nullptr);
    std::printf("%ju\n", static_cast<std::uintmax_t>(reinterpret_cast<std::uintptr_t>(window)));
    std::fflush(stdout);
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
    return static_cast<int>(message.wParam);
}
