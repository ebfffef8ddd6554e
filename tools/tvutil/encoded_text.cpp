#include "tools/tvutil/encoded_text.h"

#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/conversion.h"

#include <cstring>
#include <optional>
#include <utility>

#include "tools/tvutil/failure.h"

namespace tool {
namespace {

constexpr UINT kUtf16 = 1200;
constexpr UINT kUtf16Swapped = 1201;

constexpr struct {
    const char* name;
    TextEncoding encoding;
    std::string_view mark;
} kNamed[] = {{"utf-16", {kUtf16, true}, "\xFF\xFE"},
              {"utf-16be", {kUtf16Swapped, true}, "\xFE\xFF"},
              {"utf-8-bom", {CP_UTF8, true}, "\xEF\xBB\xBF"},
              {"utf-8", {CP_UTF8, false}, ""}};

constexpr struct {
    std::string_view name;
    const char* as;
} kOtherNames[] = {{"utf16le", "utf-16"},    {"unicode", "utf-16"},    {"ucs2", "utf-16"},
                   {"ucs2le", "utf-16"},     {"ucs2be", "utf-16be"},   {"unicodefffe", "utf-16be"},
                   {"utf8sig", "utf-8-bom"}, {"utf8mark", "utf-8-bom"}};

void swap_pairs(std::u16string& text) {
    for (auto& unit : text) unit = static_cast<char16_t>((unit >> 8U) | (unit << 8U));
}

DecodedText decoded_utf16(const TextEncoding& encoding, std::string_view bytes) {
    DecodedText result;
    result.text.resize(bytes.size() / 2);
    if (!result.text.empty()) std::memcpy(result.text.data(), bytes.data(), bytes.size() / 2 * 2);
    if (encoding.page == kUtf16Swapped) swap_pairs(result.text);
    result.is_valid = bytes.size() % 2 == 0;  // half a unit says nothing
    return result;
}

// A page takes every text, up to the most that can be converted at once.
template <class Text>
Text or_fail(std::optional<Text> text) {
    if (!text) throw Failure{Exit::failed, "the text is too long to be converted"};
    return *std::move(text);
}

bool is_known(UINT page) {
    return MultiByteToWideChar(page, 0, "a", 1, nullptr, 0) != 0;
}

}  // namespace

std::string_view TextEncoding::mark() const {
    for (const auto& named : kNamed) {
        if (named.encoding == *this) return named.mark;
    }
    return {};
}

std::string TextEncoding::name() const {
    for (const auto& named : kNamed) {
        if (named.encoding == *this) return named.name;
    }
    return std::to_string(page);
}

TextEncoding encoding_named(const std::string& name) {
    const auto folded = folded_encoding_name(name);
    if (folded == "ansi") return {GetACP(), false};
    for (const auto& named : kNamed) {
        if (folded == folded_encoding_name(named.name)) return named.encoding;
    }
    for (const auto& [other, as] : kOtherNames) {
        if (folded == other) return encoding_named(as);
    }
    const auto page = page_named(name);
    for (const auto& named : kNamed) {
        const bool is_plain_utf8 = named.encoding.page == CP_UTF8 && !named.encoding.has_mark;
        if (page == named.encoding.page && (page != CP_UTF8 || is_plain_utf8)) {
            return named.encoding;
        }
    }
    if (!page || *page == CP_ACP || !is_known(*page)) {
        throw Failure{Exit::usage, unknown_encoding(name)};
    }
    return {*page, false};
}

TextEncoding encoding_of(std::string_view bytes) {
    for (const auto& named : kNamed) {
        if (!named.mark.empty() && bytes.starts_with(named.mark)) return named.encoding;
    }
    return {tvutil2::to_utf16(bytes) ? CP_UTF8 : GetACP(), false};
}

DecodedText decoded(const TextEncoding& encoding, std::string_view bytes) {
    if (bytes.empty()) return {};
    if (encoding.unit() == 2) return decoded_utf16(encoding, bytes);
    auto text = tvutil2::codepage::units_of(encoding.page, MB_ERR_INVALID_CHARS, bytes);
    const bool is_valid = text.has_value();
    if (!is_valid) text = tvutil2::codepage::units_of(encoding.page, 0, bytes);
    return {or_fail(std::move(text)), is_valid};
}

std::string encoded(const TextEncoding& encoding, std::u16string_view text) {
    if (text.empty()) return {};
    if (encoding.unit() == 2) {
        std::u16string units(text);
        if (encoding.page == kUtf16Swapped) swap_pairs(units);
        return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t)};
    }
    return or_fail(tvutil2::codepage::bytes_in(encoding.page, 0, text));
}

bool EncodedLines::is_unit(std::string_view bytes, std::size_t at, char c) const {
    if (m_encoding.unit() == 1) return bytes[at] == c;
    const std::size_t low = m_encoding.page == kUtf16 ? 0 : 1;
    return bytes[at + low] == c && bytes[at + 1 - low] == '\0';
}

bool EncodedLines::next() {
    const auto unit = m_encoding.unit();
    std::size_t end = 0;
    while (end + unit <= m_rest.size()) {
        // By the quickest way to the next byte that may be one.
        const auto found = m_rest.find('\n', end);
        if (found == std::string_view::npos) break;
        end = found / unit * unit;
        if (end + unit <= m_rest.size() && is_unit(m_rest, end, '\n')) {
            m_whole = m_rest.substr(0, end + unit);
            m_rest.remove_prefix(m_whole.size());
            return true;
        }
        end += unit;
    }
    m_whole = std::exchange(m_rest, {});
    return !m_whole.empty();
}

std::string_view EncodedLines::content() const {
    const auto unit = m_encoding.unit();
    auto line = m_whole;
    for (const char c : {'\n', '\r'}) {
        if (line.size() < unit || line.size() % unit != 0) break;
        if (!is_unit(line, line.size() - unit, c)) break;
        line.remove_suffix(unit);
    }
    return line;
}

}  // namespace tool
