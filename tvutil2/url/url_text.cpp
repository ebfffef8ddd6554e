#include "tvutil2/url/url_text.h"

#include <array>

namespace tvutil2 {
namespace {

constexpr std::u16string_view kReserved = u"%&+/:=?@";

// What each ASCII character needs: nothing, or its escape. A zero would end the text.
constexpr auto kIsPlain = [] {
    std::array<bool, 128> plain{};
    plain.fill(true);
    plain[0] = plain[' '] = false;
    for (const auto c : kReserved) plain[c] = false;
    return plain;
}();

bool is_plain(char16_t c) {
    return c >= kIsPlain.size() || kIsPlain[c];
}

void append_escape(char16_t c, CString& out) {
    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    if (c == u' ') {
        out += u'+';
        return;
    }
    const char16_t escape[] = {u'%', kDigits[c >> 4U], kDigits[c & 15U]};
    out += std::u16string_view(escape, 3);
}

// Any letter counts, not only those up to F: that is how such URLs have always been read.
int digit_value(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'A' && c <= u'Z') return c - u'A' + 10;
    if (c >= u'a' && c <= u'z') return c - u'a' + 10;
    return -1;
}

}  // namespace

void append_escaped(std::u16string_view text, CString& out) {
    while (!text.empty()) {
        std::size_t plain = 0;
        while (plain < text.size() && is_plain(text[plain])) ++plain;
        out += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) return;
        append_escape(text[0], out);
        text.remove_prefix(1);
    }
}

void unescape(CString& text) {
    const auto from = text.View();
    const auto first = from.find_first_of(u"%+");
    if (first == std::u16string_view::npos) return;
    std::u16string out(from.substr(0, first));
    out.reserve(from.size());
    for (std::size_t i = first; i < from.size(); ++i) {
        const char16_t c = from[i];
        const int high = c == u'%' && i + 2 < from.size() ? digit_value(from[i + 1]) : -1;
        const int low = high >= 0 ? digit_value(from[i + 2]) : -1;
        if (low >= 0) {
            out.push_back(static_cast<char16_t>((16 * high + low) & 0xFF));
            i += 2;
        } else {
            out.push_back(c == u'+' ? u' ' : c);
        }
    }
    text = CString(std::move(out));
}

}  // namespace tvutil2

CString EscapeUrlText(const CString& text) {
    CString out;
    tvutil2::append_escaped(text.View(), out);
    return out;
}

CString UnescapeUrlText(const CString& text) {
    CString out(text);
    tvutil2::unescape(out);
    return out;
}
