// Texts of registry keys, read.
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/registry/reg_text.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

char16_t lower(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

int hex_digit(char16_t unit) {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    unit = lower(unit);
    return unit >= u'a' && unit <= u'f' ? unit - u'a' + 10 : -1;
}

std::optional<std::u16string> text_of(std::string_view bytes) {
    if (bytes.starts_with("\xff\xfe")) {
        if (bytes.size() % 2 != 0) return std::nullopt;
        std::u16string text;
        text.reserve(bytes.size() / 2);
        for (std::size_t i = 2; i < bytes.size(); i += 2) {
            text.push_back(static_cast<char16_t>(static_cast<BYTE>(bytes[i]) |
                                                 static_cast<BYTE>(bytes[i + 1]) << 8U));
        }
        return text;
    }
    if (bytes.starts_with("\xef\xbb\xbf")) bytes.remove_prefix(3);
    return to_utf16(bytes);
}

class Reader {
  public:
    explicit Reader(std::u16string_view text) : m_text(text) {}

    std::optional<RegTextError> read(std::vector<RegTextKey>& keys) {
        if (!skip_to_line() || !take_word(u"windows registry editor version 5.00") || !end_line()) {
            fail("not a registry text of version 5");
        }
        while (m_what == nullptr && skip_to_line()) {
            if (peek() == u'[') {
                read_key(keys);
            } else {
                read_value(keys);
            }
            if (!end_line()) fail("more than the line can hold");
        }
        if (m_what == nullptr) return std::nullopt;
        keys.clear();
        return RegTextError{m_line, m_what};
    }

  private:
    // Zero at the end; a zero in the text is no part of anything that is read with it.
    [[nodiscard]] char16_t peek() const { return m_at < m_text.size() ? m_text[m_at] : u'\0'; }

    bool fail(const char* what) {
        if (m_what == nullptr) m_what = what;
        return false;
    }

    bool take(char16_t unit) {
        if (m_at == m_text.size() || m_text[m_at] != unit) return false;
        ++m_at;
        return true;
    }

    bool take_word(std::u16string_view word) {
        if (m_text.size() - m_at < word.size()) return false;
        for (std::size_t i = 0; i < word.size(); ++i) {
            if (lower(m_text[m_at + i]) != word[i]) return false;
        }
        m_at += word.size();
        return true;
    }

    bool take_line_end() {
        const bool is_return = take(u'\r');
        if (!take(u'\n') && !is_return) return false;
        ++m_line;
        return true;
    }

    void skip_blanks() {
        while (peek() == u' ' || peek() == u'\t') ++m_at;
    }

    void skip_comment() {
        if (peek() != u';') return;
        m_at = std::min(m_text.find_first_of(u"\r\n", m_at), m_text.size());
    }

    // To the first line that isn't empty or a comment; false at the end of the text.
    bool skip_to_line() {
        do {
            skip_blanks();
            skip_comment();
        } while (take_line_end());
        return m_at < m_text.size();
    }

    // Nothing but a comment may follow. The line end stays, so that errors name this line.
    bool end_line() {
        skip_blanks();
        skip_comment();
        return m_at == m_text.size() || peek() == u'\r' || peek() == u'\n';
    }

    // A key's name may hold brackets: the last one of the line ends it.
    bool read_key(std::vector<RegTextKey>& keys) {
        const auto line_end = std::min(m_text.find_first_of(u"\r\n", m_at), m_text.size());
        const auto line = m_text.substr(m_at, line_end - m_at);
        const auto close = line.rfind(u']');
        if (close == std::u16string_view::npos) return fail("a key without its bracket");
        RegTextKey key;
        key.is_deleted = line.substr(1).starts_with(u'-');
        const std::size_t start = key.is_deleted ? 2 : 1;
        if (!parse_reg_key_name(line.substr(start, close - start), key.root, key.path)) {
            return fail("not the name of a key");
        }
        if (key.is_deleted && key.path.empty()) return fail("a root can't be deleted");
        m_at += close + 1;
        keys.push_back(std::move(key));
        return true;
    }

    bool read_value(std::vector<RegTextKey>& keys) {
        RegTextValue value;
        if (peek() == u'"') {
            if (!read_quoted(value.name)) return false;
        } else if (!take(u'@')) {
            return fail("neither a key nor a value");
        }
        if (keys.empty()) return fail("a value without a key");
        if (keys.back().is_deleted) return fail("a value of a deleted key");
        if (value.name.size() > REG_MAX_VALUE_NAME) return fail("a name too long");
        if (value.name.find(u'\0') != value.name.npos) return fail("a zero in a name");
        skip_blanks();
        if (!take(u'=')) return fail("a value without \"=\"");
        skip_blanks();
        if (!read_content(value)) return false;
        if (value.data.size() > REG_MAX_VALUE_DATA) return fail("data too large");
        keys.back().values.push_back(std::move(value));
        return true;
    }

    bool read_content(RegTextValue& value) {
        if (take(u'-')) {
            value.is_deleted = true;
            return true;
        }
        if (peek() == u'"') return read_text(value);
        if (take_word(u"dword:")) return read_dword(value);
        if (!take_word(u"hex")) return fail("unknown kind of data");
        value.type = REG_BINARY;
        if (take(u'(') && !(read_number(value.type) && take(u')'))) return fail("a wrong type");
        if (!take(u':')) return fail("unknown kind of data");
        return read_bytes(value.data);
    }

    // An error names the line of the opening quote: the text may have swallowed all the others.
    bool read_quoted(std::u16string& text) {
        const auto first_line = m_line;
        ++m_at;
        while (m_at < m_text.size()) {
            if (take(u'"')) return true;
            if (peek() == u'\r' || peek() == u'\n') {
                const auto start = m_at;
                take_line_end();
                text.append(m_text.substr(start, m_at - start));
                continue;
            }
            if (take(u'\\') && peek() != u'\\' && peek() != u'"') {
                return fail("an unknown escape");
            }
            text.push_back(m_text[m_at++]);
        }
        m_line = first_line;
        return fail("a text without its closing quote");
    }

    bool read_text(RegTextValue& value) {
        std::u16string text;
        if (!read_quoted(text)) return false;
        value.type = REG_SZ;
        value.data.reserve(text.size() * 2 + 2);
        text.push_back(u'\0');
        for (const char16_t unit : text) {
            value.data.push_back(static_cast<BYTE>(unit & 0xFFU));
            value.data.push_back(static_cast<BYTE>(unit >> 8U));
        }
        return true;
    }

    // One to eight hexadecimal digits.
    bool read_number(DWORD& number) {
        number = 0;
        int count = 0;
        for (; hex_digit(peek()) >= 0; ++m_at) {
            if (++count > 8) return false;
            number = number << 4U | static_cast<DWORD>(hex_digit(peek()));
        }
        return count > 0;
    }

    bool read_dword(RegTextValue& value) {
        DWORD number = 0;
        skip_blanks();
        if (!read_number(number)) return fail("a wrong number");
        value.type = REG_DWORD;
        for (unsigned shift = 0; shift < 32; shift += 8) {
            value.data.push_back(static_cast<BYTE>(number >> shift));
        }
        return true;
    }

    void skip_blanks_and_continuations() {
        for (;;) {
            skip_blanks();
            const auto before = m_at;
            if (!take(u'\\')) return;
            skip_blanks();
            if (take_line_end()) continue;
            m_at = before;
            return;
        }
    }

    bool read_bytes(std::vector<BYTE>& data) {
        skip_blanks_and_continuations();
        if (hex_digit(peek()) < 0) return true;
        for (;;) {
            DWORD number = 0;
            if (!read_number(number) || number > 0xFF) return fail("a wrong byte");
            data.push_back(static_cast<BYTE>(number));
            skip_blanks_and_continuations();
            if (!take(u',')) return true;
            skip_blanks_and_continuations();
        }
    }

    std::u16string_view m_text;
    std::size_t m_at = 0;
    std::size_t m_line = 1;
    const char* m_what = nullptr;
};

}  // namespace

std::optional<RegTextError> parse_reg_text(std::string_view bytes, std::vector<RegTextKey>& keys) {
    keys.clear();
    const auto text = text_of(bytes);
    if (!text) return RegTextError{1, "neither UTF-8 nor whole UTF-16"};
    return Reader(*text).read(keys);
}

}  // namespace tvutil2
