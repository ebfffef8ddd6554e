#include "tvutil2/platform/base/wide_text.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/text_length.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <string>
#include <string_view>

namespace {

// Digits, "." and ASCII letters of one case need no collator: it would say what the code units say,
// and version texts are most of what is compared.
bool in_code_unit_order(std::u16string_view text) {
    for (const auto c : text) {
        if ((c < u'0' || c > u'9') && c != u'.') return false;
    }
    return true;
}

// Whoever opens one has it for good.
UCollator* open_collator() {
    UErrorCode error = U_ZERO_ERROR;
    auto* const c = ucol_open(tvutil2::default_locale_name(), &error);
    if (U_FAILURE(error)) return nullptr;
    ucol_setStrength(c, UCOL_TERTIARY);
    return c;
}

// One collator for the life of the process: opening one costs milliseconds, comparing with one is
// safe from any number of threads. Where case doesn't count the texts are lowered instead: what the
// collator would pass over with it are all the other forms of a letter, too.
const UCollator* collator() {
    static const UCollator* const opened = open_collator();
    return opened;
}

const UCollator* name_collator() {
    static const UCollator* const opened = [] {
        auto* const c = open_collator();
        UErrorCode error = U_ZERO_ERROR;
        if (c != nullptr) ucol_setAttribute(c, UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
        return c;
    }();
    return opened;
}

std::u16string lowered(std::u16string_view text) {
    // Its small letter by itself is the "i" of another one.
    constexpr char16_t kDottedCapitalI = 0x130;
    std::u16string out(text);
    for (auto& c : out) {
        if (c != kDottedCapitalI) c = tvutil2::to_lower(c);
    }
    return out;
}

bool is_word_mark(char16_t c) {
    return c == u'-' || c == u'\'';
}

// Word sort: hyphens and apostrophes don't part words that belong together ("co-op" beside "coop").
std::u16string without_word_marks(std::u16string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (const auto c : text) {
        if (!is_word_mark(c)) out.push_back(c);
    }
    return out;
}

int collate(const UCollator* c, std::u16string_view a, std::u16string_view b) {
    return ucol_strcoll(c, a.data(), static_cast<std::int32_t>(a.size()), b.data(),
                        static_cast<std::int32_t>(b.size()));
}

int compare_words(std::u16string_view left, std::u16string_view right) {
    if (left == right) return 0;
    const UCollator* c = nullptr;
    if ((in_code_unit_order(left) && in_code_unit_order(right)) || (c = collator()) == nullptr) {
        return left.compare(right);
    }
    if (const int order = collate(c, without_word_marks(left), without_word_marks(right))) {
        return order;
    }
    const auto marks = [](std::u16string_view text) {
        return std::count_if(text.begin(), text.end(), is_word_mark);
    };
    if (const auto more = marks(left) - marks(right)) return more < 0 ? -1 : 1;
    return collate(c, left, right);
}

// A digit's value in any script that the platform's own conversion knows; -1 for another unit.
int digit_value(char16_t c) {
    if (c < 0x80) return c >= u'0' && c <= u'9' ? c - u'0' : -1;
    return u_charDigitValue(c);
}

// Copies a part with its zero; false when it doesn't fit. A part nobody asks for fits.
bool put_part(std::u16string_view part, char16_t* out, std::size_t size) {
    if (out == nullptr) return true;
    if (part.size() + 1 > size) return false;
    part.copy(out, part.size());
    out[part.size()] = 0;
    return true;
}

}  // namespace

int lstrlenW(const char16_t* text) {
    return text == nullptr ? 0 : static_cast<int>(tvutil2::text_length(text));
}

int lstrcmpW(const char16_t* a, const char16_t* b) {
    if (a == nullptr || b == nullptr) return (a != nullptr) - (b != nullptr);
    return compare_words(a, b);
}

int lstrcmpiW(const char16_t* a, const char16_t* b) {
    if (a == nullptr || b == nullptr) return (a != nullptr) - (b != nullptr);
    const std::u16string_view left(a);
    return left == b ? 0 : compare_words(lowered(left), lowered(b));
}

int _wcsicmp(const char16_t* a, const char16_t* b) {
    for (;; ++a, ++b) {
        const auto left = tvutil2::to_lower(*a);
        const auto right = tvutil2::to_lower(*b);
        if (left != right) return left - right;
        if (left == 0) return 0;
    }
}

int _wtoi(const char16_t* text) {
    if (text == nullptr) return 0;
    while (tvutil2::is_space(*text)) ++text;
    const bool negative = *text == u'-';
    if (*text == u'-' || *text == u'+') ++text;
    // One above the largest int, so that the smallest one has its digits too.
    constexpr std::int64_t kLimit = std::int64_t{std::numeric_limits<int>::max()} + 1;
    std::int64_t value = 0;
    for (int digit = 0; (digit = digit_value(*text)) >= 0; ++text) {
        value = value * 10 + digit;
        if (value > kLimit) value = kLimit;
    }
    if (negative) return static_cast<int>(-value);
    return static_cast<int>(value < kLimit ? value : kLimit - 1);
}

int _wsplitpath_s(const char16_t* path, char16_t* drive, std::size_t drive_size, char16_t* folder,
                  std::size_t folder_size, char16_t* name, std::size_t name_size,
                  char16_t* extension, std::size_t extension_size) {
    const auto empty_all = [&] {
        if (drive != nullptr && drive_size > 0) *drive = 0;
        if (folder != nullptr && folder_size > 0) *folder = 0;
        if (name != nullptr && name_size > 0) *name = 0;
        if (extension != nullptr && extension_size > 0) *extension = 0;
    };
    const auto matches = [](const char16_t* part, std::size_t size) {
        return (part == nullptr) == (size == 0);
    };
    if (path == nullptr || !matches(drive, drive_size) || !matches(folder, folder_size) ||
        !matches(name, name_size) || !matches(extension, extension_size)) {
        empty_all();
        return EINVAL;
    }
    std::u16string_view rest(path);
    const std::size_t drive_end = rest.size() >= 2 && rest[1] == u':' ? 2 : 0;
    const auto drive_part = rest.substr(0, drive_end);
    rest.remove_prefix(drive_end);
    const auto separator = rest.find_last_of(u"\\/");
    const auto name_start = separator == std::u16string_view::npos ? 0 : separator + 1;
    const auto folder_part = rest.substr(0, name_start);
    rest.remove_prefix(name_start);
    const auto dot = std::min(rest.rfind(u'.'), rest.size());
    if (put_part(drive_part, drive, drive_size) && put_part(folder_part, folder, folder_size) &&
        put_part(rest.substr(0, dot), name, name_size) &&
        put_part(rest.substr(dot), extension, extension_size)) {
        return 0;
    }
    empty_all();
    return ERANGE;
}

int MulDiv(int number, int numerator, int denominator) {
    if (denominator == 0) return -1;
    const auto product = std::int64_t{number} * numerator;
    const auto divisor = std::int64_t{denominator};
    const std::int64_t half = (divisor < 0 ? -divisor : divisor) / 2;
    const auto result = (product < 0 ? product - half : product + half) / divisor;
    const bool fits =
        result >= std::numeric_limits<int>::min() && result <= std::numeric_limits<int>::max();
    return fits ? static_cast<int>(result) : -1;
}

namespace tvutil2 {

std::string name_order_key(std::u16string_view name) {
    const auto* const c = name_collator();
    std::string key(4 * name.size() + 16, '\0');
    const auto fill = [&] {
        return static_cast<std::size_t>(ucol_getSortKey(
            c, name.data(), static_cast<std::int32_t>(name.size()),
            reinterpret_cast<std::uint8_t*>(key.data()), static_cast<std::int32_t>(key.size())));
    };
    if (c != nullptr) {
        const auto size = fill();
        const bool fits = size <= key.size();
        key.resize(size);
        if (!fits) fill();
        return key;
    }
    key.clear();
    for (const auto unit : name) {
        key += static_cast<char>(to_lower(unit) >> 8);
        key += static_cast<char>(to_lower(unit) & 0xFF);
    }
    return key;
}

bool is_space(char16_t c) {
    if (c < 0x80) return c == u' ' || (c >= 0x09 && c <= 0x0D);
    return c == 0x85 || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x2028 ||
           c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000;
}

char16_t to_upper(char16_t c) {
    if (c < 0x80) return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
    const auto upper = u_toupper(c);
    return upper < 0x10000 ? static_cast<char16_t>(upper) : c;
}

char16_t to_lower(char16_t c) {
    if (c < 0x80) return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
    const auto lower = u_tolower(c);
    return lower < 0x10000 ? static_cast<char16_t>(lower) : c;
}

}  // namespace tvutil2
