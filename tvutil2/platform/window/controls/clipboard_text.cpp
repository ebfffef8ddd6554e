#include "tvutil2/platform/window/controls/clipboard_text.h"

#include <mutex>

namespace tvutil2 {
namespace {

struct Kept {
    std::mutex lock;
    std::u16string text;

    static Kept& instance() {
        static auto* const kept = new Kept;  // threads end behind statics
        return *kept;
    }
};

}  // namespace

bool put_clipboard_text(HWND /*owner*/, std::u16string_view text) {
    auto& kept = Kept::instance();
    const std::lock_guard guard(kept.lock);
    kept.text = text;
    return true;
}

std::u16string clipboard_text(HWND /*owner*/) {
    auto& kept = Kept::instance();
    const std::lock_guard guard(kept.lock);
    return kept.text;
}

}  // namespace tvutil2
