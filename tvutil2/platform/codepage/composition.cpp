#include "tvutil2/platform/codepage/composition.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace tvutil2::codepage {
namespace {

constexpr char32_t kFirstMark = 0x300;  // none below

// Which units are non-spacing marks, or halves of surrogate pairs that may be: encoders ask about
// every text, and hardly any text has one.
class Marks {
  public:
    static const Marks& get() {
        static const Marks marks;
        return marks;
    }
    /// Whether there is a mark or a half among `count` units.
    [[nodiscard]] bool may_be_among(const char16_t* units, std::size_t count) const {
        unsigned int kinds = kNone;
        for (std::size_t i = 0; i < count; ++i) kinds |= m_kinds[units[i]];
        return kinds != kNone;
    }
    [[nodiscard]] bool holds(char32_t c) const {
        if (c < 0x10000) return m_kinds[c] == kMark;
        return u_charType(static_cast<UChar32>(c)) == U_NON_SPACING_MARK;
    }

  private:
    enum Kind : std::uint8_t { kNone = 0, kMark = 1, kHalf = 2 };

    Marks() {
        u_enumCharTypes(add, this);
        std::fill(m_kinds.begin() + 0xD800, m_kinds.begin() + 0xE000, kHalf);
    }
    static UBool add(const void* context, UChar32 first, UChar32 limit, UCharCategory type) {
        if (type != U_NON_SPACING_MARK) return 1;
        auto& marks = *static_cast<Marks*>(const_cast<void*>(context));
        for (UChar32 c = first; c < limit && c < 0x10000; ++c) {
            marks.m_kinds[static_cast<std::size_t>(c)] = kMark;
        }
        return 1;
    }

    std::array<Kind, 0x10000> m_kinds{};
};

bool is_mark(char32_t c) {
    return c >= kFirstMark && Marks::get().holds(c);
}

// The units at the front of languages whose scripts have no marks.
std::size_t low_prefix(std::u16string_view text) {
    constexpr std::size_t kStep = 32;
    std::size_t i = 0;
    for (; i + kStep <= text.size(); i += kStep) {
        char16_t highest = 0;
        for (std::size_t j = i; j < i + kStep; ++j) highest = std::max(highest, text[j]);
        if (highest >= kFirstMark) break;
    }
    while (i < text.size() && text[i] < kFirstMark) ++i;
    return i;
}

// The units at the front among which there is no mark.
std::size_t markless_prefix(std::u16string_view text) {
    constexpr std::size_t kStep = 16;
    auto i = low_prefix(text);
    if (i == text.size()) return i;
    const auto& marks = Marks::get();
    while (i + kStep <= text.size() && !marks.may_be_among(text.data() + i, kStep)) i += kStep;
    while (i < text.size() && !marks.may_be_among(text.data() + i, 1)) ++i;
    return i;
}

char32_t take_front(std::u16string_view& text) {
    UChar32 c = 0;
    std::size_t size = 0;
    U16_NEXT(text.data(), size, text.size(), c);
    text.remove_prefix(size);
    return static_cast<char32_t>(c);
}

void append(std::u16string& text, char32_t c) {
    if (c < 0x10000) {
        text.push_back(static_cast<char16_t>(c));
    } else {
        text.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10U)));
        text.push_back(static_cast<char16_t>(0xDC00 | (c & 0x3FFU)));
    }
}

}  // namespace

bool has_mark(std::u16string_view text) {
    bool has_base = false;
    while (!text.empty()) {
        const auto prefix = markless_prefix(text);
        text.remove_prefix(prefix);
        has_base = has_base || prefix > 0;
        if (text.empty()) return false;
        if (is_mark(take_front(text)) && has_base) return true;
        has_base = true;
    }
    return false;
}

std::u16string composed(std::u16string_view text, const std::function<bool(char32_t)>& holds) {
    UErrorCode status = U_ZERO_ERROR;
    const auto* const composer = unorm2_getNFCInstance(&status);
    if (U_FAILURE(status)) return std::u16string(text);
    std::u16string result;
    result.reserve(text.size());
    std::size_t base_position = 0;
    char32_t base = 0;
    while (!text.empty()) {
        const auto c = take_front(text);
        if (!result.empty() && is_mark(c)) {
            const auto pair =
                unorm2_composePair(composer, static_cast<UChar32>(base), static_cast<UChar32>(c));
            if (pair >= 0 && holds(static_cast<char32_t>(pair))) {
                result.resize(base_position);
                base = static_cast<char32_t>(pair);
                append(result, base);
                continue;
            }
        }
        base_position = result.size();
        base = c;
        append(result, c);
    }
    return result;
}

}  // namespace tvutil2::codepage
