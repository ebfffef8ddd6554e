// The first window of a process, until it is painted.
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/window.h"

#include <cstdlib>

int main() {
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    auto* const top = CreateWindowExW(0, u"#32770", u"First", WS_POPUP | WS_CAPTION | WS_VISIBLE, 0,
                                      0, 300, 200, nullptr, nullptr, nullptr, nullptr);
    CreateWindowExW(0, u"Button", u"OK", WS_CHILD | WS_VISIBLE, 100, 100, 80, 26, top, nullptr,
                    nullptr, nullptr);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    return tvutil2::picture_of(top) != nullptr ? 0 : 1;
}
