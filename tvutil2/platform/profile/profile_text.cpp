#include "tvutil2/platform/profile/profile_text.h"

#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/codepage/conversion.h"
#include "tvutil2/platform/codepage/narrow_page.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

using Encoding = ProfileText::Encoding;

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kSwappedMark = "\xFE\xFF";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// Text that compares the same has the same one (FNV-1a over lowered units).
std::uint64_t caseless_hash(std::u16string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char16_t c : text) hash = (hash ^ to_lower(c)) * 0x100000001B3;
    return hash;
}

bool is_same_name(std::u16string_view a, std::u16string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(),
                      [](char16_t x, char16_t y) { return x == y || to_lower(x) == to_lower(y); });
}

std::u16string_view trimmed(std::u16string_view text) {
    while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
    return text;
}

// The name in a header that stands in trimmed text; null when it isn't one. Behind it there may be
// anything: a person's comment, say.
const char16_t* end_of_name(std::u16string_view text) {
    const auto end = text.back() == u']' ? text.size() - 1 : text.find(u']');
    return end == std::u16string_view::npos || end == 0 ? nullptr : text.data() + end;
}

// UTF-8 with its bytes swapped in pairs is nothing; UTF-16 of the other order is its swapped self.
void swap_bytes(std::string& bytes, std::size_t from) {
    for (auto i = from; i + 1 < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
}

bool is_ascii(std::string_view bytes) {
    return std::none_of(bytes.begin(), bytes.end(), [](char c) { return c < 0; });
}

// As a whole, so that what is read in the other page and written again keeps its bytes.
bool is_plain_utf8(std::string_view bytes) {
    return is_ascii(bytes) ? GetACP() == CP_UTF8 : to_utf16(bytes).has_value();
}

std::u16string from_page(UINT page, std::string_view bytes) {
    return codepage::units_of(page, 0, bytes).value_or(std::u16string());
}

bool append_in_page(std::u16string_view text, std::string& out) {
    BOOL used_default = FALSE;
    const auto bytes = codepage::bytes_in(narrow_page(), 0, text, "?", &used_default);
    if (!bytes || used_default != FALSE) return false;
    out += *bytes;
    return true;
}

}  // namespace

std::u16string_view without_quotes(std::u16string_view text) {
    const bool is_quoted = text.size() >= 2 && text.front() == text.back() &&
                           (text.front() == u'"' || text.front() == u'\'');
    return is_quoted ? text.substr(1, text.size() - 2) : text;
}

// A line and its text. Offsets are in bytes of the file.
struct ProfileText::Line {
    std::size_t begin;
    std::size_t end;  // without the line end
    std::size_t next;
    std::u16string text;
};

ProfileText::ProfileText(std::string bytes) : m_bytes(std::move(bytes)) {
    const std::string_view all = m_bytes;
    if (all.starts_with(kUtf16Mark) || all.starts_with(kSwappedMark)) {
        m_encoding = all.starts_with(kUtf16Mark) ? Encoding::utf16 : Encoding::utf16_swapped;
        m_start = 2;
        m_unit = 2;
        if (all.size() % 2 != 0) m_bytes.pop_back();  // half a unit says nothing
    } else if (all.starts_with(kUtf8Mark)) {
        m_encoding = Encoding::utf8;
        m_start = kUtf8Mark.size();
    } else if (is_plain_utf8(all)) {
        m_encoding = Encoding::utf8;
    }
    parse();
}

void ProfileText::parse() {
    Line line{};
    std::size_t place = m_start;
    m_comments = m_start;
    bool is_first = true;
    while (next_line(place, line)) {
        if (is_first && line.next != line.end) {
            const bool has_cr = line.next - line.end == 2 * m_unit;
            m_line_end = has_cr ? u"\r\n" : u"\n";
        }
        is_first = false;
        add_line(line);
    }
    if (!m_sections.empty()) m_sections.back().end = m_bytes.size();
}

bool ProfileText::next_line(std::size_t& place, Line& line) const {
    if (place >= m_bytes.size()) return false;
    const auto is_unit = [this](std::size_t at, char c) {
        if (m_unit == 1) return m_bytes[at] == c;
        const std::size_t low = m_encoding == Encoding::utf16 ? 0 : 1;
        return m_bytes[at + low] == c && m_bytes[at + 1 - low] == '\0';
    };
    line.begin = place;
    auto end = place;
    while (end < m_bytes.size() && !is_unit(end, '\n')) end += m_unit;
    line.next = std::min(end + m_unit, m_bytes.size());
    const bool is_ended = end < m_bytes.size();
    if (is_ended && end > place && is_unit(end - m_unit, '\r')) end -= m_unit;
    line.end = end;
    line.text = decode(line.begin, line.end);
    place = line.next;
    return true;
}

void ProfileText::add_line(const Line& line) {
    const auto text = trimmed(line.text);
    if (text.empty() || text.front() != u';') {
        const auto comments = std::exchange(m_comments, line.next);
        const auto* const name_end =
            !text.empty() && text.front() == u'[' ? end_of_name(text) : nullptr;
        if (name_end != nullptr) {
            const auto name = trimmed({text.data() + 1, name_end});
            if (!m_sections.empty()) m_sections.back().end = comments;
            m_sections.push_back(
                {std::u16string(name), caseless_hash(name), line.begin, line.next, line.next, {}});
        } else if (!m_sections.empty()) {
            const auto equals = line.text.find(u'=');
            if (equals != std::u16string::npos) add_entry(line, equals);
        }
    }
}

void ProfileText::add_entry(const Line& line, std::size_t equals) {
    const std::u16string_view text = line.text;
    const auto key = trimmed(text.substr(0, equals));
    if (key.empty()) return;
    auto begin = equals + 1;
    while (begin < text.size() && is_space(text[begin])) ++begin;
    // In bytes: "=" is the first of its kind there as well, and white space of more than one byte
    // may as well be replaced.
    const std::size_t low = m_encoding == Encoding::utf16_swapped ? 1 : 0;
    auto place = line.begin;
    while (m_bytes[place + low] != '=' || (m_unit == 2 && m_bytes[place + 1 - low] != '\0')) {
        place += m_unit;
    }
    place += m_unit;
    while (place < line.end && (m_bytes[place + low] == ' ' || m_bytes[place + low] == '\t') &&
           (m_unit == 1 || m_bytes[place + 1 - low] == '\0')) {
        place += m_unit;
    }
    m_sections.back().entries.push_back(
        {std::u16string(key), std::u16string(trimmed(text.substr(begin))), caseless_hash(key),
         line.begin, place, line.end, line.next});
}

std::u16string ProfileText::decode(std::size_t begin, std::size_t end) const {
    auto bytes = m_bytes.substr(begin, end - begin);
    if (m_unit == 1) return from_page(page(), bytes);
    if (m_encoding == Encoding::utf16_swapped) swap_bytes(bytes, 0);
    std::u16string text(bytes.size() / 2, u'\0');
    std::copy(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(text.size() * 2),
              reinterpret_cast<char*>(text.data()));
    return text;
}

bool ProfileText::encode(std::u16string_view text, std::string& out) const {
    if (m_encoding == Encoding::ansi) return append_in_page(text, out);
    if (m_encoding == Encoding::utf8) {
        const auto bytes = to_utf8(text);
        if (bytes) out += *bytes;
        return bytes.has_value();
    }
    const auto start = out.size();
    out.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    if (m_encoding == Encoding::utf16_swapped) swap_bytes(out, start);
    return true;
}

UINT ProfileText::page() const {
    return m_encoding == Encoding::utf8 ? CP_UTF8 : narrow_page();
}

std::optional<std::string> ProfileText::in_utf16(std::string_view bytes_of_page) const {
    const auto text = codepage::units_of(page(), MB_ERR_INVALID_CHARS, bytes_of_page);
    if (!text) return std::nullopt;
    std::string bytes(kUtf16Mark);
    bytes.append(reinterpret_cast<const char*>(text->data()), text->size() * 2);
    return bytes;
}

// Bytes of the ANSI page that happen to be UTF-8, now that one value is another or gone, would be
// read as that, all lines of them.
std::optional<std::string> ProfileText::read_alike(std::string bytes) const {
    const bool changes = m_encoding == Encoding::ansi && !is_ascii(bytes) && is_plain_utf8(bytes);
    return changes ? in_utf16(bytes) : std::optional(std::move(bytes));
}

const ProfileText::Section* ProfileText::find(std::u16string_view section) const {
    const auto name = trimmed(section);
    const auto hash = caseless_hash(name);
    const auto found = std::find_if(m_sections.begin(), m_sections.end(), [&](const Section& s) {
        return s.name_hash == hash && is_same_name(s.name, name);
    });
    return found != m_sections.end() ? &*found : nullptr;
}

const ProfileText::Entry* ProfileText::find(const Section& section, std::u16string_view key) {
    const auto name = trimmed(key);
    const auto hash = caseless_hash(name);
    const auto& entries = section.entries;
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry& e) {
        return e.key_hash == hash && is_same_name(e.key, name);
    });
    return found != entries.end() ? &*found : nullptr;
}

// A line for `place`, which is the start of a line, or the end of a file whose last line has no
// end.
std::u16string ProfileText::entry_line(std::u16string_view key, std::u16string_view value,
                                       std::size_t place) const {
    std::u16string line;
    const auto last = place > m_start ? decode(place - m_unit, place) : std::u16string();
    if (place > m_start && last != u"\n") line += m_line_end;
    line.append(key).append(u"=").append(value).append(m_line_end);
    return line;
}

std::optional<std::string> ProfileText::with_value(std::u16string_view section,
                                                   std::u16string_view key,
                                                   std::u16string_view value) const {
    const auto* const found = find(section);
    const auto* const entry = found != nullptr ? find(*found, key) : nullptr;
    std::size_t begin = m_bytes.size();
    std::size_t end = begin;
    std::u16string text;
    if (entry != nullptr) {
        begin = entry->value_begin;
        end = entry->end;
        text = value;
    } else if (found != nullptr) {
        begin = found->entries.empty() ? found->next : found->entries.back().next;
        end = begin;
        text = entry_line(key, value, begin);
    } else {
        // Apart from what stands above it, as a person would write it.
        const auto tail = decode(std::max(m_start, begin - std::min(begin, 4 * m_unit)), begin);
        if (!tail.empty() && !tail.ends_with(u'\n')) text += m_line_end;
        if (!tail.empty() && !tail.ends_with(u"\n\n") && !tail.ends_with(u"\n\r\n")) {
            text += m_line_end;
        }
        text.append(u"[").append(section).append(u"]").append(m_line_end);
        text.append(key).append(u"=").append(value).append(m_line_end);
    }
    auto bytes = m_bytes.substr(0, begin);
    if (!encode(text, bytes)) {
        auto wide = in_utf16(std::string_view(m_bytes).substr(m_start));
        if (!wide) return std::nullopt;
        return ProfileText(std::move(*wide)).with_value(section, key, value);
    }
    return read_alike(std::move(bytes.append(m_bytes, end)));
}

std::optional<std::string> ProfileText::without_key(std::u16string_view section,
                                                    std::u16string_view key) const {
    const auto* const found = find(section);
    if (found == nullptr) return m_bytes;
    const auto name = trimmed(key);
    std::string bytes;
    std::size_t copied = 0;
    for (const auto& entry : found->entries) {  // all of that name, or the next one would appear
        if (!is_same_name(entry.key, name)) continue;
        bytes.append(m_bytes, copied, entry.begin - copied);
        copied = entry.next;
    }
    return read_alike(std::move(bytes.append(m_bytes, copied)));
}

std::optional<std::string> ProfileText::without_section(std::u16string_view section) const {
    const auto name = trimmed(section);
    std::string bytes;
    std::size_t copied = 0;
    for (const auto& found : m_sections) {
        if (!is_same_name(found.name, name)) continue;
        bytes.append(m_bytes, copied, found.begin - copied);
        copied = found.end;
    }
    return read_alike(std::move(bytes.append(m_bytes, copied)));
}

}  // namespace tvutil2
