// Texts of registry keys, written.
#include "tvutil2/platform/registry/reg_text.h"

namespace tvutil2 {
namespace {

constexpr std::size_t kBytesOfLine = 25;

class Writer {
  public:
    explicit Writer(std::string& bytes) : m_bytes(bytes) { m_bytes = "\xff\xfe"; }

    void put(char16_t unit) {
        m_bytes.push_back(static_cast<char>(unit & 0xFFU));
        m_bytes.push_back(static_cast<char>(unit >> 8U));
    }

    void put(std::u16string_view text) {
        for (const char16_t unit : text) put(unit);
    }

    void put_line(std::u16string_view text = {}) {
        put(text);
        put(u"\r\n");
    }

    bool put_key(const RegTextKey& key) {
        if (key.path.find_first_of(std::u16string_view(u"\r\n\0", 3)) != key.path.npos) {
            return false;
        }
        put_line();
        put(key.is_deleted ? u"[-" : u"[");
        put(reg_key_name(key.root, key.path));
        put_line(u"]");
        for (const auto& value : key.values) {
            if (value.name.find(u'\0') != value.name.npos) return false;
            put_value(value);
        }
        return true;
    }

  private:
    void put_value(const RegTextValue& value) {
        if (const auto words = words_in(value); !words.empty()) {
            put(u"; ");
            put_line(words);
        }
        if (value.name.empty()) {
            put(u'@');
        } else {
            put_quoted(value.name);
        }
        put(u'=');
        if (value.is_deleted) {
            put(u'-');
        } else if (value.type == REG_DWORD && value.data.size() == 4) {
            put(u"dword:");
            for (auto byte = value.data.rbegin(); byte != value.data.rend(); ++byte) {
                put_byte(*byte);
            }
        } else if (const auto text = quotable_text(value)) {
            put_quoted(*text);
        } else {
            put_bytes(value);
        }
        put_line();
    }

    // What a text says that is told byte by byte, for those who read it; the texts of a list with
    // " | " between them. Nothing where it could end the comment, or is quoted anyway.
    static std::u16string words_in(const RegTextValue& value) {
        const bool is_text = value.type == REG_SZ || value.type == REG_EXPAND_SZ;
        const bool is_odd = value.data.size() % 2 != 0;
        if (value.is_deleted || is_odd || !(is_text || value.type == REG_MULTI_SZ)) return {};
        auto text = units_of(value.data);
        if (value.type == REG_SZ && is_quotable(text)) return {};
        text.erase(text.find_last_not_of(u'\0') + 1);
        std::u16string words;
        for (const char16_t unit : text) {
            if (unit == 0) {
                words += u" | ";
            } else if (unit < u' ') {
                return {};
            } else {
                words += unit;
            }
        }
        return words;
    }

    // Quotes mean text with one zero, at its end. All else is told byte by byte, so that reading
    // gives back the very same data.
    static std::optional<std::u16string> quotable_text(const RegTextValue& value) {
        if (value.type != REG_SZ || value.data.size() % 2 != 0) return std::nullopt;
        auto text = units_of(value.data);
        if (!is_quotable(text)) return std::nullopt;
        text.pop_back();
        return text;
    }

    static bool is_quotable(std::u16string_view text) {
        return !text.empty() && text.find(u'\0') == text.size() - 1;
    }

    static std::u16string units_of(const std::vector<BYTE>& data) {
        std::u16string text;
        for (std::size_t i = 0; i + 1 < data.size(); i += 2) {
            text.push_back(static_cast<char16_t>(data[i] | data[i + 1] << 8U));
        }
        return text;
    }

    void put_quoted(std::u16string_view text) {
        put(u'"');
        for (const char16_t unit : text) {
            if (unit == u'\\' || unit == u'"') put(u'\\');
            put(unit);
        }
        put(u'"');
    }

    void put_digit(unsigned digit) { put(u"0123456789abcdef"[digit & 0xFU]); }

    void put_byte(BYTE byte) {
        put_digit(byte >> 4U);
        put_digit(byte);
    }

    void put_bytes(const RegTextValue& value) {
        put(u"hex");
        if (value.type != REG_BINARY) {
            put(u'(');
            unsigned shift = 28;
            while (shift > 0 && value.type >> shift == 0) shift -= 4;
            for (;; shift -= 4) {
                put_digit(value.type >> shift);
                if (shift == 0) break;
            }
            put(u')');
        }
        put(u':');
        for (std::size_t i = 0; i < value.data.size(); ++i) {
            if (i > 0) put(i % kBytesOfLine == 0 ? u",\\\r\n  " : u",");
            put_byte(value.data[i]);
        }
    }

    std::string& m_bytes;
};

}  // namespace

bool write_reg_text(const std::vector<RegTextKey>& keys, std::string& bytes) {
    Writer writer(bytes);
    writer.put_line(u"Windows Registry Editor Version 5.00");
    for (const auto& key : keys) {
        if (writer.put_key(key)) continue;
        bytes.clear();
        return false;
    }
    return true;
}

}  // namespace tvutil2
