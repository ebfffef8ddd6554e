// Windows of ours and of Qt, both without a screen. For programs that link Qt's widgets.
#pragma once

#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <QApplication>
#include <cstdlib>

namespace bench {

/// A shown window without a frame.
inline HWND open_window(int width, int height) {
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    return CreateWindowExW(0, u"#32770", u"", WS_POPUP | WS_VISIBLE, 0, 0, width, height, nullptr,
                           nullptr, nullptr, nullptr);
}

/// Until everything is painted.
inline void run_dry() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

inline QApplication& application() {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_LOGGING_RULES", "*=false", 1);
    static int count = 1;
    static char name[] = "bench";
    static char* arguments[] = {name, nullptr};
    static QApplication only(count, arguments);
    return only;
}

}  // namespace bench
