#include "tvutil2/platform/window/common_dialogs/file_texts.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/system/date_format.h"
#include "tvutil2/platform/window/common_dialogs/file_rows.h"
#include "tvutil2/platform/window/common_dialogs/file_words.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"

#include <ctime>
#include <iterator>
#include <string>

namespace tvutil2 {
namespace {

std::u16string digits(std::uint64_t number) {
    const auto text = std::to_string(number);
    return {text.begin(), text.end()};
}

// Two digits, with a zero in front.
std::u16string two_digits(int number) {
    return digits(static_cast<std::uint64_t>(number) + 100).substr(1);
}

}  // namespace

// Tenths below ten, whole ones above: each rounded from the bytes.
std::u16string size_text(std::uint64_t bytes, LANGID language) {
    constexpr std::uint64_t kStep = 1024;
    const auto& format = file_format(language);
    std::size_t unit = 0;
    std::uint64_t size = 1;
    const auto rounded = [&](std::uint64_t times) {
        return bytes / size * times + (bytes % size * times + size / 2) / size;
    };
    while (rounded(1) >= kStep && unit + 1 < std::size(format.units)) {
        size *= kStep;
        ++unit;
    }
    auto number = digits(rounded(1));
    if (const auto tenths = rounded(10); size > 1 && tenths < 100) {
        number = digits(tenths / 10) + format.decimal_mark + digits(tenths % 10);
    }
    return number + u'\xA0' + format.units[unit];
}

std::u16string time_text(const FILETIME& time, LANGID language) {
    constexpr std::uint64_t kTicksOfSecond = 10000000;
    const auto seconds = ticks_of(time) / kTicksOfSecond;
    const auto epoch = ticks_of(file_time_of(std::int64_t{0}, 0)) / kTicksOfSecond;
    if (seconds < epoch) return {};
    const auto since = static_cast<__time64_t>(seconds - epoch);
    std::tm parts{};
    if (_localtime64_s(&parts, &since) != 0) return {};
    const SYSTEMTIME date{static_cast<WORD>(parts.tm_year + 1900),
                          static_cast<WORD>(parts.tm_mon + 1),
                          static_cast<WORD>(parts.tm_wday),
                          static_cast<WORD>(parts.tm_mday),
                          0,
                          0,
                          0,
                          0};
    char16_t text[32];
    const auto* const picture = file_format(language).date;
    if (GetDateFormatW(LOCALE_USER_DEFAULT, 0, &date, picture, text, 32) == 0) return {};
    return text + (u' ' + two_digits(parts.tm_hour) + u':' + two_digits(parts.tm_min));
}

std::u16string type_text(const FolderEntry& entry, LANGID language) {
    if (entry.is_folder) return file_word(FileWord::folder, language);
    const auto extension = extension_of(entry);
    if (extension.empty()) return file_word(FileWord::file, language);
    std::u16string text = file_word(FileWord::typed_file, language);
    return text.replace(text.find(u"%s"), 2, shown_name(extension));
}

}  // namespace tvutil2
