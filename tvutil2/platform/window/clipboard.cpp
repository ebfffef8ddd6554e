#include "tvutil2/platform/window/clipboard.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/global_memory.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

using tvutil2::fail_with;

namespace {

// A thread of this name has nothing open.
const std::thread::id kNobody;

struct Clipboard {
    std::mutex lock;
    std::thread::id opener;
    HWND window = nullptr;  // named by who has it open
    HWND owner = nullptr;
    std::map<UINT, HGLOBAL> blocks;
    bool is_foreign = false;  // the desktop's: asked for when somebody wants it
    bool is_changed = false;  // since it was opened
    DWORD number = 1;

    static Clipboard& instance() {
        static auto* const clipboard = new Clipboard;  // never destroyed: threads end behind it
        static const tvutil2::ForkLock fork_safe(clipboard->lock, tvutil2::ForkRank::area);
        return *clipboard;
    }

    [[nodiscard]] bool is_mine() const { return opener == std::this_thread::get_id(); }
    [[nodiscard]] HGLOBAL find(UINT format) const {
        const auto found = blocks.find(format);
        return found != blocks.end() ? found->second : nullptr;
    }
    void clear() {
        for (const auto& [format, block] : blocks) GlobalFree(block);
        blocks.clear();
    }
};

using Held = std::unique_lock<std::mutex>;

// Null, with the last error, unless the calling thread has it open.
Clipboard* opened(Held& held) {
    auto& clipboard = Clipboard::instance();
    held = Held(clipboard.lock);
    if (clipboard.is_mine()) return &clipboard;
    SetLastError(ERROR_CLIPBOARD_NOT_OPEN);
    return nullptr;
}

// Up to the zero, or the end of the block.
template <class Unit>
std::basic_string<Unit> text_in(HGLOBAL block) {
    const auto* const begin = static_cast<const Unit*>(GlobalLock(block));
    if (begin == nullptr) return {};
    const auto* const end = begin + GlobalSize(block) / sizeof(Unit);
    std::basic_string<Unit> text(begin, std::find(begin, end, Unit{0}));
    GlobalUnlock(block);
    return text;
}

template <class Unit>
HGLOBAL block_of(const std::basic_string<Unit>& text) {
    auto* const block = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(Unit));
    if (block == nullptr) return nullptr;
    std::memcpy(GlobalLock(block), text.c_str(), (text.size() + 1) * sizeof(Unit));
    GlobalUnlock(block);
    return block;
}

std::u16string wide(const std::string& text) {
    const auto size = static_cast<int>(text.size());
    std::u16string result(text.size(), u'\0');
    const auto count =
        size == 0 ? 0 : MultiByteToWideChar(CP_ACP, 0, text.data(), size, result.data(), size);
    result.resize(static_cast<std::size_t>(std::max(count, 0)));
    return result;
}

std::string narrow(const std::u16string& text) {
    constexpr int kMostBytes = 4;
    if (text.size() > INT_MAX / kMostBytes) return {};
    const auto size = static_cast<int>(text.size());
    std::string result(text.size() * kMostBytes, '\0');
    const auto count = size == 0
                           ? 0
                           : WideCharToMultiByte(CP_ACP, 0, text.data(), size, result.data(),
                                                 static_cast<int>(result.size()), nullptr, nullptr);
    result.resize(static_cast<std::size_t>(std::max(count, 0)));
    return result;
}

// The desktop's lines end in "\n".
std::u16string with_plain_ends(const std::u16string& text) {
    std::u16string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool is_pair = text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n';
        if (!is_pair) result += text[i];
    }
    return result;
}

std::u16string with_our_ends(const std::u16string& text) {
    std::u16string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n' && (i == 0 || text[i - 1] != u'\r')) result += u'\r';
        result += text[i];
    }
    return result;
}

// The one form of a text from the other.
HGLOBAL derived(const Clipboard& clipboard, UINT format) {
    auto* const other = clipboard.find(format == CF_TEXT ? CF_UNICODETEXT : CF_TEXT);
    if (other == nullptr) return nullptr;
    return format == CF_TEXT ? block_of(narrow(text_in<char16_t>(other)))
                             : block_of(wide(text_in<char>(other)));
}

bool is_text(UINT format) {
    return format == CF_TEXT || format == CF_UNICODETEXT;
}

}  // namespace

BOOL OpenClipboard(HWND owner) {
    if (owner != nullptr && !IsWindow(owner)) return fail_with(ERROR_INVALID_WINDOW_HANDLE);
    auto* const driver = tvutil2::display();
    auto& clipboard = Clipboard::instance();
    const Held held(clipboard.lock);
    if (clipboard.opener != kNobody && !clipboard.is_mine()) return fail_with(ERROR_ACCESS_DENIED);
    const bool is_again = clipboard.is_mine();
    clipboard.opener = std::this_thread::get_id();
    clipboard.window = owner;
    if (is_again) return TRUE;
    clipboard.is_changed = false;
    clipboard.is_foreign = driver != nullptr && !driver->owns_clipboard();
    // What the process put there is no longer what is there.
    if (clipboard.is_foreign) clipboard.clear();
    return TRUE;
}

BOOL CloseClipboard() {
    std::u16string text;
    bool is_offered = false;
    {
        Held held;
        auto* const clipboard = opened(held);
        if (clipboard == nullptr) return FALSE;
        clipboard->opener = kNobody;
        is_offered = std::exchange(clipboard->is_changed, false);
        if (is_offered) {
            auto* const wide_block = clipboard->find(CF_UNICODETEXT);
            auto* const narrow_block = clipboard->find(CF_TEXT);
            if (wide_block != nullptr) {
                text = text_in<char16_t>(wide_block);
            } else if (narrow_block != nullptr) {
                text = wide(text_in<char>(narrow_block));
            }
        }
    }
    auto* const driver = tvutil2::loaded_display();
    if (is_offered && driver != nullptr) driver->offer_text(with_plain_ends(text));
    return TRUE;
}

BOOL EmptyClipboard() {
    Held held;
    auto* const clipboard = opened(held);
    if (clipboard == nullptr) return FALSE;
    clipboard->clear();
    clipboard->owner = clipboard->window;
    clipboard->is_foreign = false;
    clipboard->is_changed = true;
    ++clipboard->number;
    return TRUE;
}

HGLOBAL SetClipboardData(UINT format, HGLOBAL data) {
    Held held;
    auto* const clipboard = opened(held);
    if (clipboard == nullptr) return nullptr;
    if (format == 0 || data == nullptr) return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    auto& block = clipboard->blocks[format];
    if (block != nullptr && block != data) GlobalFree(block);
    block = data;
    // The other form is that of an older text.
    if (is_text(format)) {
        const auto other = clipboard->blocks.find(format == CF_TEXT ? CF_UNICODETEXT : CF_TEXT);
        if (other != clipboard->blocks.end() && !clipboard->is_changed) {
            GlobalFree(other->second);
            clipboard->blocks.erase(other);
        }
    }
    clipboard->is_foreign = false;
    clipboard->is_changed = true;
    ++clipboard->number;
    return data;
}

HGLOBAL GetClipboardData(UINT format) {
    Held held;
    auto* clipboard = opened(held);
    if (clipboard == nullptr) return nullptr;
    if (clipboard->is_foreign && is_text(format) && clipboard->blocks.empty()) {
        held.unlock();
        std::u16string text;
        auto* const driver = tvutil2::loaded_display();
        const bool is_there = driver != nullptr && driver->read_text(text);
        clipboard = opened(held);
        if (clipboard == nullptr || !is_there) return nullptr;
        auto* const block = block_of(with_our_ends(text));
        if (block == nullptr) return nullptr;
        clipboard->blocks[CF_UNICODETEXT] = block;
    }
    auto* const found = clipboard->find(format);
    if (found != nullptr || !is_text(format)) return found;
    auto* const block = derived(*clipboard, format);
    if (block != nullptr) clipboard->blocks[format] = block;
    return block;
}

BOOL IsClipboardFormatAvailable(UINT format) {
    auto* const driver = tvutil2::loaded_display();
    if (driver != nullptr && !driver->owns_clipboard()) {
        return is_text(format) && driver->offers_text() ? TRUE : FALSE;
    }
    auto& clipboard = Clipboard::instance();
    const Held held(clipboard.lock);
    const bool is_there = clipboard.find(format) != nullptr ||
                          (is_text(format) && (clipboard.find(CF_TEXT) != nullptr ||
                                               clipboard.find(CF_UNICODETEXT) != nullptr));
    return is_there ? TRUE : FALSE;
}

HWND GetClipboardOwner() {
    auto& clipboard = Clipboard::instance();
    const Held held(clipboard.lock);
    return clipboard.owner;
}

DWORD GetClipboardSequenceNumber() {
    auto& clipboard = Clipboard::instance();
    const Held held(clipboard.lock);
    return clipboard.number;
}
