// A program that copies or pastes text, in UTF-16 or in the ANSI code page.
//
//     clipboard copy wide|narrow TEXT   says "ready", and is asked for the text until its input
//     ends clipboard paste wide|narrow       says what is there, in UTF-8
#include "tvutil2/platform/window/clipboard.h"

#include "tvutil2/platform/base/global_memory.h"
#include "tvutil2/platform/base/utf.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace {

void copy(UINT format, const void* text, std::size_t size) {
    auto* const block = GlobalAlloc(GMEM_MOVEABLE, size);
    std::memcpy(GlobalLock(block), text, size);
    GlobalUnlock(block);
    OpenClipboard(nullptr);
    EmptyClipboard();
    SetClipboardData(format, block);
    CloseClipboard();
}

void say(const std::string& text) {
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

}  // namespace

int main(int count, char** arguments) {
    const std::string_view what = count > 1 ? arguments[1] : "";
    const bool is_wide = count > 2 && std::string_view(arguments[2]) == "wide";
    if (what == "copy" && count == 4) {
        const std::string narrow = arguments[3];
        const auto wide = tvutil2::to_utf16_lossy(narrow);
        if (is_wide) {
            copy(CF_UNICODETEXT, wide.c_str(), (wide.size() + 1) * sizeof(char16_t));
        } else {
            copy(CF_TEXT, narrow.c_str(), narrow.size() + 1);
        }
        say("ready");
        while (std::getchar() != EOF) {
        }
        return 0;
    }
    if (what != "paste") return 2;
    OpenClipboard(nullptr);
    const auto* const data = GlobalLock(GetClipboardData(is_wide ? CF_UNICODETEXT : CF_TEXT));
    if (data == nullptr) {
        say("nothing");
    } else if (is_wide) {
        say(tvutil2::to_utf8_lossy(static_cast<const char16_t*>(data)));
    } else {
        say(static_cast<const char*>(data));
    }
    CloseClipboard();
    return 0;
}
