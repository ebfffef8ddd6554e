#include "tvutil2/platform/codepage/composition.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>

namespace tvutil2::codepage {
namespace {

constexpr char32_t kFirstMark = 0x300;  // none below

bool is_mark(char32_t c) {
    return c >= kFirstMark && u_charType(static_cast<UChar32>(c)) == U_NON_SPACING_MARK;
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
    // As a rule there is nothing that could be one, and looking at the units alone says so.
    std::size_t first = 0;
    while (first < text.size() && text[first] < kFirstMark) ++first;
    bool has_base = first > 0;
    text.remove_prefix(first);
    while (!text.empty()) {
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
