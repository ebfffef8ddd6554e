// Texts that callers may leave out.
#pragma once

#include <string_view>

inline std::u16string_view view(const char16_t* text) {
    return text != nullptr ? text : u"";
}
