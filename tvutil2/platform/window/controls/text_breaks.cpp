#include "tvutil2/platform/window/controls/text_breaks.h"

#include <unicode/ubrk.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace tvutil2 {
namespace {

constexpr std::size_t kReach = 256;

bool is_blank(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\u00A0' || unit == u'\u3000';
}

// Each such unit is a character of its own where both neighbours are such ones.
bool is_plain(char16_t unit) {
    return unit >= 0x20 && unit < 0x300 && unit != 0xA9 && unit != 0xAD && unit != 0xAE;
}

class Breaks {
  public:
    explicit Breaks(UBreakIteratorType type) {
        UErrorCode error = U_ZERO_ERROR;
        m_breaks.reset(ubrk_open(type, "", nullptr, 0, &error));
    }

    std::size_t following(std::u16string_view text, std::size_t at) {
        const auto first = begin(text, at);
        if (!set(text, first, at)) return at + 1;
        const auto found = ubrk_following(m_breaks.get(), static_cast<std::int32_t>(at - first));
        return found == UBRK_DONE ? text.size() : first + static_cast<std::size_t>(found);
    }
    std::size_t preceding(std::u16string_view text, std::size_t at) {
        const auto first = begin(text, at);
        if (!set(text, first, at)) return at - 1;
        const auto found = ubrk_preceding(m_breaks.get(), static_cast<std::int32_t>(at - first));
        return found == UBRK_DONE ? first : first + static_cast<std::size_t>(found);
    }

  private:
    // Behind a line's end everything begins anew.
    static std::size_t begin(std::u16string_view text, std::size_t at) {
        auto first = at;
        while (first > 0 && at - first < kReach && !is_line_end(text[first - 1])) --first;
        return first == at && at > 0 ? at - 1 - (at > 1 && text[at - 2] == u'\r' ? 1 : 0) : first;
    }
    bool set(std::u16string_view text, std::size_t first, std::size_t at) {
        if (!m_breaks) return false;
        const auto size = std::min(text.size(), at + kReach) - first;
        UErrorCode error = U_ZERO_ERROR;
        ubrk_setText(m_breaks.get(), text.data() + first, static_cast<std::int32_t>(size), &error);
        return U_SUCCESS(error);
    }

    struct Close {
        void operator()(UBreakIterator* breaks) const { ubrk_close(breaks); }
    };
    std::unique_ptr<UBreakIterator, Close> m_breaks;
};

Breaks& characters() {
    static thread_local Breaks breaks(UBRK_CHARACTER);
    return breaks;
}
Breaks& words() {
    static thread_local Breaks breaks(UBRK_WORD);
    return breaks;
}

}  // namespace

std::size_t next_character(std::u16string_view text, std::size_t at) {
    if (at + 1 >= text.size()) return text.size();
    if (is_plain(text[at]) && is_plain(text[at + 1])) return at + 1;
    return characters().following(text, at);
}

std::size_t previous_character(std::u16string_view text, std::size_t at) {
    at = std::min(at, text.size());
    if (at <= 1) return 0;
    if (is_plain(text[at - 1]) && is_plain(text[at - 2])) return at - 1;
    return characters().preceding(text, at);
}

std::size_t next_word(std::u16string_view text, std::size_t at) {
    if (at >= text.size()) return text.size();
    if (!is_blank(text[at])) at = words().following(text, at);
    while (at < text.size() && is_blank(text[at])) ++at;
    return at;
}

std::size_t previous_word(std::u16string_view text, std::size_t at) {
    at = std::min(at, text.size());
    while (at > 0 && is_blank(text[at - 1])) --at;
    return at == 0 ? 0 : words().preceding(text, at);
}

std::pair<std::size_t, std::size_t> word_at(std::u16string_view text, std::size_t at) {
    if (text.empty()) return {0, 0};
    at = std::min(at, text.size() - 1);
    if (is_line_end(text[at]) && at > 0 && !is_line_end(text[at - 1])) --at;
    const auto end = words().following(text, at);
    return {words().preceding(text, end), end};
}

}  // namespace tvutil2
