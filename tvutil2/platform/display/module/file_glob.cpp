#include "tvutil2/platform/display/module/file_glob.h"

#include "tvutil2/platform/display/module/desktop_look.h"

namespace tvutil2 {

std::string caseless_glob(const std::u16string& pattern) {
    if (pattern == u"*.*") return "*";
    const auto text = utf8_of(pattern);
    std::string result;
    const auto append = [&](gunichar character) {
        char bytes[6];
        result.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(character, bytes)));
    };
    for (const auto* at = text.c_str(); *at != 0; at = g_utf8_next_char(at)) {
        const auto character = g_utf8_get_char(at);
        const auto lower = g_unichar_tolower(character);
        const auto upper = g_unichar_toupper(character);
        if (lower != upper) {
            result += '[';
            append(lower);
            append(upper);
            result += ']';
        } else {
            if (character == '[' || character == '\\') result += '\\';
            append(character);
        }
    }
    return result;
}

}  // namespace tvutil2
