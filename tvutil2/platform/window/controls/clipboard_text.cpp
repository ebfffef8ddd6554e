#include "tvutil2/platform/window/controls/clipboard_text.h"

#include "tvutil2/platform/base/global_memory.h"
#include "tvutil2/platform/window/clipboard.h"

namespace tvutil2 {
namespace {

class OpenedClipboard {
  public:
    explicit OpenedClipboard(HWND owner) : m_is_open(OpenClipboard(owner) != FALSE) {}
    ~OpenedClipboard() {
        if (m_is_open) CloseClipboard();
    }
    OpenedClipboard(const OpenedClipboard&) = delete;
    OpenedClipboard& operator=(const OpenedClipboard&) = delete;

    explicit operator bool() const { return m_is_open; }

  private:
    bool m_is_open;
};

}  // namespace

bool put_clipboard_text(HWND owner, std::u16string_view text) {
    auto* const block = GlobalAlloc(GHND, (text.size() + 1) * sizeof(char16_t));
    if (block == nullptr) return false;
    text.copy(static_cast<char16_t*>(GlobalLock(block)), text.size());
    GlobalUnlock(block);
    const OpenedClipboard opened(owner);
    const bool is_there =
        opened && EmptyClipboard() != FALSE && SetClipboardData(CF_UNICODETEXT, block) != nullptr;
    if (!is_there) GlobalFree(block);
    return is_there;
}

std::u16string clipboard_text(HWND owner) {
    const OpenedClipboard opened(owner);
    auto* const block = opened ? GetClipboardData(CF_UNICODETEXT) : nullptr;
    const auto* const text = static_cast<const char16_t*>(GlobalLock(block));
    if (text == nullptr) return {};
    const std::u16string_view units(text, GlobalSize(block) / sizeof(char16_t));
    std::u16string found(units.substr(0, units.find(u'\0')));
    GlobalUnlock(block);
    return found;
}

}  // namespace tvutil2
