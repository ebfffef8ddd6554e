#include "tvutil2/ui/text_transfer.h"

#include "tvutil2/platform/base/global_memory.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/process/console.h"
#include "tvutil2/platform/window/clipboard.h"
#include "tvutil2/platform/window/window.h"

#include <climits>
#include <string_view>
#include <vector>

namespace {

// Null when memory is short. A narrow text may have more than the two bytes a character that it
// usually needs at most.
HGLOBAL narrow_block(std::u16string_view text) {
    if (text.size() >= INT_MAX) return nullptr;
    const auto size = static_cast<int>(text.size());
    const auto bytes =
        WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) return nullptr;
    auto* const block = GlobalAlloc(GHND, static_cast<SIZE_T>(bytes) + 1);
    if (block == nullptr) return nullptr;
    WideCharToMultiByte(CP_ACP, 0, text.data(), size, static_cast<char*>(GlobalLock(block)), bytes,
                        nullptr, nullptr);
    GlobalUnlock(block);
    return block;
}

}  // namespace

BOOL TvCopyStringToClipboard(const char16_t* lpszText) {
    if (lpszText == nullptr || *lpszText == 0 || OpenClipboard(nullptr) == FALSE) return FALSE;
    EmptyClipboard();
    auto* const block = narrow_block(lpszText);
    const bool is_there = block != nullptr && SetClipboardData(CF_TEXT, block) != nullptr;
    if (!is_there && block != nullptr) GlobalFree(block);
    CloseClipboard();
    return is_there ? TRUE : FALSE;
}

void TvSendStringToCmd(HWND hWnd, const char16_t* lpszText) {
    DWORD process = 0;
    GetWindowThreadProcessId(hWnd, &process);
    if (lpszText == nullptr || AttachConsole(process) == FALSE) return;
    std::vector<INPUT_RECORD> keys;
    for (const auto character : std::u16string_view(lpszText)) {
        INPUT_RECORD record{};
        record.EventType = KEY_EVENT;
        record.Event.KeyEvent.uChar.UnicodeChar = character;
        for (const BOOL is_down : {TRUE, FALSE}) {
            record.Event.KeyEvent.bKeyDown = is_down;
            keys.push_back(record);
        }
    }
    DWORD written = 0;
    WriteConsoleInputW(GetStdHandle(STD_INPUT_HANDLE), keys.data(), static_cast<DWORD>(keys.size()),
                       &written);
    FreeConsole();
}
