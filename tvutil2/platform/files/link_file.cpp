#include "tvutil2/platform/files/link_file.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/utf.h"

#include <charconv>
#include <cstdio>

namespace tvutil2 {
namespace {

constexpr std::string_view kHeader = "[Desktop Entry]";
constexpr std::string_view kPath = "X-Tvutil-Path";
constexpr std::string_view kDescription = "X-Tvutil-Description";
constexpr std::string_view kArguments = "X-Tvutil-Arguments";
constexpr std::string_view kIcon = "X-Tvutil-Icon";
constexpr std::string_view kIconIndex = "X-Tvutil-IconIndex";
constexpr std::string_view kHotKey = "X-Tvutil-HotKey";

// A desktop entry's escapes ("\s", "\n", "\t", "\r", "\\"), so that a value is one line and keeps
// its blanks.
std::string escaped(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        switch (c) {
            case ' ':
                out += i == 0 || i + 1 == text.size() ? "\\s" : " ";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                out += c;
        }
    }
    return out;
}

// A field of its own: the same escapes, and "\uXXXX" for what has no place in UTF-8 or in a line.
std::string field(std::u16string_view text) {
    std::string out;
    while (!text.empty()) {
        const bool is_pair = text.size() > 1 && to_utf8(text.substr(0, 2)).has_value() &&
                             !to_utf8(text.substr(0, 1)).has_value();
        const auto character = text.substr(0, is_pair ? 2 : 1);
        const auto utf8 = to_utf8(character);
        const bool has_escape =
            character[0] == u'\n' || character[0] == u'\r' || character[0] == u'\t';
        if (utf8 && (has_escape || (character[0] >= 0x20 && character[0] != 0x7F))) {
            out += *utf8;
        } else {
            out += '\x01';  // can't occur otherwise; stands for the "\" that escaped() leaves alone
            char code[8];
            std::snprintf(code, sizeof code, "u%04X", static_cast<unsigned>(character[0]));
            out += code;
        }
        text.remove_prefix(character.size());
    }
    out = escaped(out);
    for (auto& c : out) {
        if (c == '\x01') c = '\\';
    }
    return out;
}

std::optional<char16_t> hex_unit(std::string_view digits) {
    unsigned value = 0;
    const auto* end = digits.data() + digits.size();
    const auto [stopped, error] = std::from_chars(digits.data(), end, value, 16);
    if (error != std::errc() || stopped != end) return std::nullopt;
    return static_cast<char16_t>(value);
}

std::optional<std::u16string> parse_field(std::string_view text) {
    std::u16string out;
    while (!text.empty()) {
        const auto plain = to_utf16(text.substr(0, text.find('\\')));
        if (!plain) return std::nullopt;
        out += *plain;
        text.remove_prefix(std::min(text.find('\\'), text.size()));
        if (text.empty()) break;
        if (text.size() < 2) return std::nullopt;
        constexpr std::string_view kLetters = "sntr\\";
        constexpr std::u16string_view kUnits = u" \n\t\r\\";
        const auto letter = kLetters.find(text[1]);
        if (letter != std::string_view::npos) {
            out += kUnits[letter];
            text.remove_prefix(2);
        } else if (text[1] == 'u' && text.size() >= 6) {
            const auto unit = hex_unit(text.substr(2, 4));
            if (!unit) return std::nullopt;
            out += *unit;
            text.remove_prefix(6);
        } else {
            return std::nullopt;
        }
    }
    return out;
}

template <class Number>
bool parse_number(std::string_view text, Number& out) {
    const auto* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, out);
    return error == std::errc() && stopped == end;
}

// One word of an Exec line: quoted, with the four characters that matter inside quotes escaped and
// "%" doubled.
std::string exec_word(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') out += '\\';
        if (c == '%') out += '%';
        out += c;
    }
    return out + '"';
}

// The command line as a file manager is to run it. The arguments are words already, quoted the way
// a command line of this family quotes, so each goes over as it is between blanks and quotes.
std::string exec_line(const std::string& target, std::u16string_view arguments) {
    auto line = exec_word(target);
    std::string word;
    bool in_quotes = false;
    bool is_word = false;
    const auto end_word = [&] {
        if (is_word) {
            line += ' ';
            line += exec_word(word);
        }
        word.clear();
        is_word = false;
    };
    for (const char c : to_utf8_lossy(arguments)) {
        if (c == '"') {
            in_quotes = !in_quotes;
            is_word = true;
        } else if (c == ' ' && !in_quotes) {
            end_word();
        } else {
            word += c;
            is_word = true;
        }
    }
    end_word();
    return line;
}

bool parse_line(std::string_view key, std::string_view value, LinkFields& fields) {
    const auto put = [value](std::u16string& out) {
        auto text = parse_field(value);
        if (text) out = std::move(*text);
        return text.has_value();
    };
    if (key == kPath) return put(fields.path);
    if (key == kDescription) return put(fields.description);
    if (key == kArguments) return put(fields.arguments);
    if (key == kIcon) return put(fields.icon);
    if (key == kIconIndex) return parse_number(value, fields.icon_index);
    if (key == kHotKey) return parse_number(value, fields.hot_key);
    return true;
}

}  // namespace

std::string link_text(const LinkFields& fields, std::string_view name) {
    std::string text(kHeader);
    const auto add = [&text](std::string_view key, std::string_view value) {
        text += '\n';
        text += key;
        text += '=';
        text += value;
    };
    add("Type", "Application");
    add("Version", "1.5");
    add("Name", escaped(name));
    if (!fields.description.empty()) add("Comment", escaped(to_utf8_lossy(fields.description)));
    if (const auto target = host_path(fields.path)) {
        add("Exec", escaped(exec_line(*target, fields.arguments)));
    }
    if (const auto icon = host_path(fields.icon)) add("Icon", escaped(*icon));
    add(kPath, field(fields.path));
    add(kDescription, field(fields.description));
    add(kArguments, field(fields.arguments));
    add(kIcon, field(fields.icon));
    add(kIconIndex, std::to_string(fields.icon_index));
    add(kHotKey, std::to_string(fields.hot_key));
    return text + '\n';
}

std::optional<LinkFields> parse_link(std::string_view text) {
    LinkFields fields;
    bool is_first = true;
    bool has_path = false;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        auto line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.empty() || line[0] == '#') continue;
        if (is_first && line != kHeader) return std::nullopt;
        if (!is_first && line[0] == '[') break;  // another group, which isn't ours
        is_first = false;
        const auto equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        const auto key = line.substr(0, equals);
        if (!parse_line(key, line.substr(equals + 1), fields)) return std::nullopt;
        has_path = has_path || key == kPath;
    }
    if (!has_path) return std::nullopt;
    return fields;
}

}  // namespace tvutil2
