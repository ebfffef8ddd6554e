#include "tvutil2/framework/narrow_text.h"

#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/conversion.h"

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

namespace tvutil2 {
namespace {

// Every page keeps ASCII as it is, and most text is nothing else.
template <class Text>
bool is_ascii(const Text& text) {
    return std::all_of(text.begin(), text.end(),
                       [](auto unit) { return static_cast<char32_t>(unit) < 0x80; });
}

// Only a text that no string of the framework has room for can't be converted.
template <class Text>
Text or_throw(std::optional<Text> text) {
    if (!text) throw std::bad_alloc();
    return *std::move(text);
}

}  // namespace

std::u16string from_ansi(std::string_view bytes) {
    if (is_ascii(bytes)) return {bytes.begin(), bytes.end()};
    return or_throw(codepage::units_of(CP_ACP, 0, bytes));
}

std::string to_ansi(std::u16string_view text) {
    if (is_ascii(text)) {
        std::string bytes(text.size(), '\0');
        std::transform(text.begin(), text.end(), bytes.begin(),
                       [](char16_t unit) { return static_cast<char>(unit); });
        return bytes;
    }
    return or_throw(codepage::bytes_in(CP_ACP, WC_COMPOSITECHECK, text, "?"));
}

}  // namespace tvutil2
