// The names under which people know encodings.
#include <algorithm>
#include <cctype>
#include <charconv>

#include "tools/tvutil/encoded_text.h"

namespace tool {
namespace {

// Without what people put between letters and digits, in lower case. "latin1" is what it says, not
// the wider 1252.
constexpr struct {
    std::string_view name;
    UINT page;
} kNames[] = {{"utf7", 65000},     {"ascii", 20127},     {"usascii", 20127}, {"latin1", 28591},
              {"latin2", 28592},   {"latin3", 28593},    {"latin4", 28594},  {"latin5", 28599},
              {"latin9", 28605},   {"shiftjis", 932},    {"sjis", 932},      {"gbk", 936},
              {"gb2312", 936},     {"gb18030", 54936},   {"big5", 950},      {"euckr", 51949},
              {"eucjp", 51932},    {"iso2022jp", 50220}, {"koi8r", 20866},   {"koi8u", 21866},
              {"macroman", 10000}, {"macintosh", 10000}, {"johab", 1361},    {"tis620", 874}};

constexpr struct {
    std::string_view start;
    UINT first;
} kNumbered[] = {{"windows", 0}, {"win", 0}, {"cp", 0}, {"ibm", 0}, {"ms", 0}, {"iso8859", 28590}};

}  // namespace

std::string folded_encoding_name(std::string_view name) {
    std::string folded;
    for (const char c : name) {
        if (c == '-' || c == '_' || c == ' ' || c == '.') continue;
        folded += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return folded;
}

std::optional<UINT> page_named(std::string_view name) {
    const auto folded = folded_encoding_name(name);
    for (const auto& [known, page] : kNames) {
        if (folded == known) return page;
    }
    std::string_view digits = folded;
    UINT first = 0;
    for (const auto& [start, base] : kNumbered) {
        if (!folded.starts_with(start)) continue;
        digits.remove_prefix(start.size());
        first = base;
        break;
    }
    UINT number = 0;
    const auto* const end = digits.data() + digits.size();
    const auto parsed = std::from_chars(digits.data(), end, number);
    const bool is_wrong = parsed.ec != std::errc() || parsed.ptr != end ||
                          (first == 0 ? number > 0xFFFF : number == 0 || number > 16);
    if (is_wrong) return std::nullopt;
    return first + number;
}

std::string unknown_encoding(std::string_view name) {
    return "\"" + std::string(name) +
           "\" is no encoding that is known here; some that are: utf-8, utf-8-bom, utf-16, "
           "utf-16be, ansi, ascii, latin1, iso-8859-15, cp1252, cp437, koi8-r, shift_jis, euc-kr, "
           "gb18030, big5, or the number of a code page (\"tvutil codepage list\")";
}

}  // namespace tool
