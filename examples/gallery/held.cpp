#include "examples/gallery/held.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/window/clipboard.h"
#include "tvutil2/platform/window/find_windows.h"

#include <malloc.h>

#include <filesystem>
#include <iterator>

namespace gallery {
namespace {

BOOL count_child(HWND, LPARAM count) {
    ++*reinterpret_cast<std::size_t*>(count);
    return TRUE;
}

BOOL count_top(HWND window, LPARAM count) {
    count_child(window, count);
    return EnumChildWindows(window, count_child, count);
}

}  // namespace

Held held_now() {
    // What was copied last is kept, in as many forms as were asked for.
    if (OpenClipboard(nullptr) != FALSE) {
        EmptyClipboard();
        CloseClipboard();
    }
    Held held;
    held.handles = tvutil2::handle_table::count_live();
    EnumThreadWindows(GetCurrentThreadId(), count_top, reinterpret_cast<LPARAM>(&held.windows));
    const std::filesystem::directory_iterator open("/proc/self/fd");
    held.descriptors = static_cast<std::size_t>(std::distance(begin(open), end(open)));
    held.bytes = mallinfo2().uordblks;
    return held;
}

std::string words_of(const Held& held) {
    return std::to_string(held.handles) + " handles, " + std::to_string(held.windows) +
           " windows, " + std::to_string(held.descriptors) + " descriptors, " +
           std::to_string(held.bytes) + " bytes";
}

}  // namespace gallery
