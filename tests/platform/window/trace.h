// Windows that write down what they are told, for tests of the order of messages.
#pragma once

#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tests {

/// One for each thread: what its traced windows have heard, in words, and what they do about it.
struct Trace {
    std::vector<std::string> lines;
    std::map<HWND, std::string> names;
    /// Runs instead of DefWindowProcW; returns what the procedure does.
    std::function<LRESULT(HWND, UINT, WPARAM, LPARAM)> handler = DefWindowProcW;

    static Trace& current() {
        static thread_local Trace trace;
        return trace;
    }

    static const char* word(UINT message) {
        static const std::map<UINT, const char*> words{{WM_NCCREATE, "NCCREATE"},
                                                       {WM_CREATE, "CREATE"},
                                                       {WM_SIZE, "SIZE"},
                                                       {WM_MOVE, "MOVE"},
                                                       {WM_DESTROY, "DESTROY"},
                                                       {WM_NCDESTROY, "NCDESTROY"},
                                                       {WM_CLOSE, "CLOSE"},
                                                       {WM_SHOWWINDOW, "SHOW"},
                                                       {WM_NCCALCSIZE, "CALCSIZE"},
                                                       {WM_PARENTNOTIFY, "NOTIFY"},
                                                       {WM_GETMINMAXINFO, "LIMITS"},
                                                       {WM_TIMER, "TIMER"},
                                                       {WM_SETTEXT, "SETTEXT"},
                                                       {WM_ENABLE, "ENABLE"},
                                                       {WM_WINDOWPOSCHANGING, "CHANGING"},
                                                       {WM_WINDOWPOSCHANGED, "CHANGED"},
                                                       {WM_PAINT, "PAINT"},
                                                       {WM_NCPAINT, "NCPAINT"},
                                                       {WM_ERASEBKGND, "ERASE"},
                                                       {WM_SETFOCUS, "SETFOCUS"},
                                                       {WM_KILLFOCUS, "KILLFOCUS"},
                                                       {WM_ACTIVATE, "ACTIVATE"},
                                                       {WM_NCACTIVATE, "NCACTIVATE"},
                                                       {WM_CANCELMODE, "CANCELMODE"},
                                                       {WM_CAPTURECHANGED, "CAPTURECHANGED"},
                                                       {WM_MOUSEACTIVATE, "MOUSEACTIVATE"},
                                                       {WM_NCHITTEST, "HITTEST"},
                                                       {WM_SETCURSOR, "SETCURSOR"},
                                                       {WM_MOUSEMOVE, "MOUSEMOVE"},
                                                       {WM_MOUSELEAVE, "MOUSELEAVE"},
                                                       {WM_LBUTTONDOWN, "LBUTTONDOWN"},
                                                       {WM_LBUTTONUP, "LBUTTONUP"},
                                                       {WM_MOUSEWHEEL, "MOUSEWHEEL"},
                                                       {WM_KEYDOWN, "KEYDOWN"},
                                                       {WM_KEYUP, "KEYUP"},
                                                       {WM_CHAR, "CHAR"},
                                                       {WM_SYSKEYDOWN, "SYSKEYDOWN"},
                                                       {WM_SYSKEYUP, "SYSKEYUP"},
                                                       {WM_SYSCHAR, "SYSCHAR"}};
        const auto found = words.find(message);
        return found != words.end() ? found->second : nullptr;
    }

    static LRESULT procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        auto& trace = current();
        if (message == WM_NCCREATE || message == WM_GETMINMAXINFO) {
            trace.names.try_emplace(window, 1, static_cast<char>('A' + trace.names.size() % 26));
        }
        const auto* const known = word(message);
        const auto text = known != nullptr ? known : std::to_string(message);
        trace.lines.push_back(trace.names[window] + " " + text);
        return trace.handler(window, message, wparam, lparam);
    }

    /// What was heard since the last call, in one text.
    std::string take() {
        std::string all;
        for (const auto& line : lines) all += (all.empty() ? "" : ", ") + line;
        lines.clear();
        return all;
    }
};

/// The class of traced windows.
inline const char16_t* traced_class() {
    static const bool is_registered = [] {
        WNDCLASSW description{};
        description.lpfnWndProc = Trace::procedure;
        description.cbWndExtra = 16;
        description.lpszClassName = u"Tests::Traced";
        return RegisterClassW(&description) != 0;
    }();
    return is_registered ? u"tests::traced" : nullptr;
}

inline HWND traced_window(DWORD style = 0, HWND parent = nullptr, const char16_t* title = u"",
                          int id = 0) {
    return CreateWindowExW(0, traced_class(), title, style, 1, 2, 30, 40, parent,
                           reinterpret_cast<HMENU>(static_cast<std::intptr_t>(id)), nullptr,
                           nullptr);
}

}  // namespace tests
