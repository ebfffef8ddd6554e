#include "bench/support/page_peers.h"

#include "tvutil2/platform/codepage/codepage.h"

#include <unicode/uchar.h>

#include <memory>

namespace bench {

std::u16string letters_of(const Page& page, int size) {
    std::u16string result;
    const auto icu = page.icu == nullptr ? nullptr : std::make_unique<Icu>(page.icu);
    const auto host =
        page.host == nullptr ? nullptr : std::make_unique<Host>(page.host, "UTF-16LE");
    for (unsigned int unit = 0x80; unit < 0xD800; ++unit) {
        const std::u16string text(1, static_cast<char16_t>(unit));
        std::string bytes(8, '\0');
        BOOL used = FALSE;
        const auto count = WideCharToMultiByte(page.number, 0, text.data(), 1, bytes.data(), 8,
                                               nullptr, page.number == CP_UTF8 ? nullptr : &used);
        const bool is_wanted = size == 0 ? count == 1 || count == 2 : count == size;
        if (!is_wanted || used != FALSE || u_isalpha(static_cast<UChar32>(unit)) == 0) continue;
        const auto ours = bytes;
        if (icu && icu->narrow(text, bytes) <= 0) continue;
        if (host && !host->convert(text, bytes)) continue;
        // Of long sequences there are some that the editions of a standard moved.
        if (size != 0 && bytes != ours) continue;
        result += text;
    }
    return result;
}

std::u16string mixed_text(const std::u16string& letters) {
    std::u16string text;
    std::uint32_t seed = 1;
    const auto next = [&seed](std::size_t limit) {
        seed = seed * 1664525U + 1013904223U;
        return (seed >> 8U) % limit;
    };
    while (text.size() < kSize) {
        if (next(4) == 0) {
            text += std::u16string_view(u"terminal session ").substr(0, 9 + next(9));
        } else {
            for (auto count = 2 + next(7); count > 0; --count) {
                // A language uses a few of its letters most of the time.
                const auto limit = next(4) == 0 ? letters.size() : 1 + letters.size() / 8;
                text.push_back(letters[next(limit)]);
            }
        }
        text.push_back(u' ');
    }
    return text;
}

}  // namespace bench
