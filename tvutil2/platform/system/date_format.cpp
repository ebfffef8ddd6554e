#include "tvutil2/platform/system/date_format.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/last_error.h"

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <optional>
#include <string>
#include <string_view>

namespace tvutil2 {
namespace {

void append_number(std::u16string& out, unsigned number, std::size_t digits) {
    const auto text = std::to_string(number);
    out.append(digits - std::min(digits, text.size()), u'0');
    out.append(text.begin(), text.end());
}

// One run of a picture's letter; false for one that stands for a name.
bool append_part(std::u16string& out, const SYSTEMTIME& date, char16_t letter, std::size_t count) {
    if (letter == u'y') {
        if (count <= 2) {
            append_number(out, date.wYear % 100U, count);
        } else {
            append_number(out, date.wYear, 4);
        }
        return true;
    }
    if (count > 2 || letter == u'g') return fail_with(ERROR_NOT_SUPPORTED);
    append_number(out, letter == u'd' ? date.wDay : date.wMonth, count);
    return true;
}

// Appends quoted text and gives where it ends; '' is an apostrophe.
std::size_t append_quoted(std::u16string& out, std::u16string_view picture, std::size_t start) {
    std::size_t i = start + 1;
    for (; i < picture.size(); ++i) {
        if (picture[i] != u'\'') {
            out.push_back(picture[i]);
        } else if (i + 1 < picture.size() && picture[i + 1] == u'\'') {
            out.push_back(picture[i++]);
        } else {
            return i + 1;
        }
    }
    return i;
}

std::optional<std::u16string> formatted(const SYSTEMTIME& date, std::u16string_view picture) {
    std::u16string out;
    for (std::size_t i = 0; i < picture.size();) {
        const char16_t unit = picture[i];
        if (unit == u'\'') {
            i = append_quoted(out, picture, i);
        } else if (std::u16string_view(u"dMyg").find(unit) != std::u16string_view::npos) {
            const auto end = std::min(picture.find_first_not_of(unit, i), picture.size());
            if (!append_part(out, date, unit, end - i)) return std::nullopt;
            i = end;
        } else {
            out.push_back(unit);
            ++i;
        }
    }
    return out;
}

}  // namespace
}  // namespace tvutil2

int GetDateFormatW(LCID /*locale*/, DWORD flags, const SYSTEMTIME* date, const char16_t* picture,
                   char16_t* buffer, int size) {
    using namespace tvutil2;
    SYSTEMTIME today{};
    if (date == nullptr) {
        GetLocalTime(&today);
        date = &today;
    }
    if (flags != 0) return fail_with(ERROR_NOT_SUPPORTED);
    if (picture == nullptr || size < 0 || (size > 0 && buffer == nullptr) || !is_date(*date)) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    const auto text = formatted(*date, picture);
    if (!text) return 0;
    const auto units = static_cast<int>(text->size()) + 1;
    if (size == 0) return units;
    if (units > size) return fail_with(ERROR_INSUFFICIENT_BUFFER);
    buffer[text->copy(buffer, text->size())] = 0;
    return units;
}

__time64_t _time64(__time64_t* time) {
    constexpr std::uint64_t kTicksPerSecond = 10000000;
    constexpr __time64_t kSecondsTo1970 = 11644473600;
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const auto seconds =
        static_cast<__time64_t>(tvutil2::ticks_of(now) / kTicksPerSecond) - kSecondsTo1970;
    if (time != nullptr) *time = seconds;
    return seconds;
}

int _localtime64_s(std::tm* parts, const __time64_t* time) {
    if (parts == nullptr || time == nullptr) return EINVAL;
    const time_t seconds = *time;
    return localtime_r(&seconds, parts) != nullptr ? 0 : EINVAL;
}

__time64_t _mktime64(std::tm* parts) {
    if (parts == nullptr) return -1;
    const time_t seconds = mktime(parts);
    return seconds < 0 ? -1 : seconds;
}

std::size_t wcsftime(char16_t* buffer, std::size_t size, const char16_t* format,
                     const std::tm* parts) {
    if (buffer == nullptr || size == 0) return 0;
    *buffer = 0;
    if (format == nullptr || parts == nullptr) return 0;
    // The host's wide characters hold a whole code point each; names beyond the first plane are
    // no names of days.
    const std::u16string_view units(format);
    const std::wstring wide_format(units.begin(), units.end());
    std::wstring wide(size, L'\0');
    const auto length = std::wcsftime(wide.data(), wide.size(), wide_format.c_str(), parts);
    std::transform(wide.begin(), wide.begin() + static_cast<std::ptrdiff_t>(length), buffer,
                   [](wchar_t c) { return static_cast<char16_t>(c); });
    buffer[length] = 0;
    return length;
}
