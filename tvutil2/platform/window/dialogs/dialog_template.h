// Dialog templates, both forms, taken apart.
//
// Little endian. DIALOG: style and extended style (32 bits each), count of items, x, y, width and
// height (16 each), menu, class and title, and with DS_SETFONT points (16) and face. DIALOGEX
// begins with version 1, 0xFFFF, a help id (32), the extended style and the style; its font also
// has a weight (16), italic and a character set (8 each). Items begin at multiples of 4: style,
// extended style (in DIALOGEX behind a help id and the other way round), place, id (16; in DIALOGEX
// 32), class, title, and a count of bytes for the control. A menu, class or title is 0 for none,
// 0xFFFF and a number, or zero-terminated text.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tvutil2 {

/// Text, or a number where that isn't 0.
struct TemplateName {
    WORD id = 0;
    std::u16string text;

    /// As functions take it; valid for as long as this object.
    [[nodiscard]] const char16_t* pointer() const {
        return id != 0 ? MAKEINTRESOURCEW(id) : text.c_str();
    }
};

/// Places and sizes are in dialog units.
struct TemplateItem {
    DWORD style = 0, ex_style = 0;
    int x = 0, y = 0, width = 0, height = 0;
    DWORD id = 0;
    TemplateName class_name, title;
    std::span<const std::byte> data;  ///< for the control, in the template
};

struct DialogTemplate {
    DWORD style = 0, ex_style = 0;
    int x = 0, y = 0, width = 0, height = 0;
    TemplateName menu, class_name, title;
    int points = 0;  ///< 0 without a font of its own
    int weight = 0;
    bool is_italic = false;
    std::u16string face;
    std::vector<TemplateItem> items;
};

/// Nothing for what is malformed or ends too early. Reads nothing outside of `bytes`.
[[nodiscard]] TVUTIL_API std::optional<DialogTemplate> read_dialog_template(
    std::span<const std::byte> bytes);

}  // namespace tvutil2
