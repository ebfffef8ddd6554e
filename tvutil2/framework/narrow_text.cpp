#include "tvutil2/framework/narrow_text.h"

#include "tvutil2/platform/codepage/codepage.h"

#include <algorithm>

namespace tvutil2 {
namespace {

// Every page keeps ASCII as it is, and most text is nothing else.
template <class Text>
bool is_ascii(const Text& text) {
    return std::all_of(text.begin(), text.end(),
                       [](auto unit) { return static_cast<char32_t>(unit) < 0x80; });
}

}  // namespace

std::u16string from_ansi(std::string_view bytes) {
    if (is_ascii(bytes)) return {bytes.begin(), bytes.end()};
    // No page has more units than bytes.
    std::u16string text(bytes.size(), u'\0');
    const auto size = static_cast<int>(bytes.size());
    text.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, text.data(), size)));
    return text;
}

std::string to_ansi(std::u16string_view text) {
    std::string bytes;
    if (is_ascii(text)) {
        bytes.resize(text.size());
        std::transform(text.begin(), text.end(), bytes.begin(),
                       [](char16_t unit) { return static_cast<char>(unit); });
        return bytes;
    }
    const auto convert = [&text](char* out, int room) {
        return WideCharToMultiByte(CP_ACP, WC_COMPOSITECHECK, text.data(),
                                   static_cast<int>(text.size()), out, room, "?", nullptr);
    };
    bytes.resize(static_cast<std::size_t>(convert(nullptr, 0)));
    convert(bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
}

}  // namespace tvutil2
