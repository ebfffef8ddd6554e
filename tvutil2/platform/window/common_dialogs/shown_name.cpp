#include "tvutil2/platform/window/common_dialogs/shown_name.h"

namespace tvutil2 {

std::u16string shown_name(std::u16string name) {
    for (auto& unit : name) {
        const bool is_control = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
        const bool breaks_lines = unit == 0x2028 || unit == 0x2029;
        const bool turns = unit == 0x061C || unit == 0x200E || unit == 0x200F ||
                           (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
        if (is_control || breaks_lines || turns) unit = 0xFFFD;
    }
    return name;
}

std::u16string text_with_path(std::u16string text, const std::u16string& path) {
    if (const auto place = text.find(u"%s"); place != std::u16string::npos) {
        text.replace(place, 2, shown_name(path));
    }
    return text;
}

}  // namespace tvutil2
