#include "tvutil2/platform/window/dialogs/dialog_template.h"

#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/template_reader.h"

namespace tvutil2 {
namespace {

int coordinate(TemplateReader& reader) {
    return reader.number<std::int16_t>();
}

TemplateName name(TemplateReader& reader) {
    TemplateName name;
    const auto first = reader.number<WORD>();
    if (first == 0xFFFF) {
        name.id = reader.number<WORD>();
    } else if (first != 0) {
        name.text = static_cast<char16_t>(first) + reader.text();
    }
    return name;
}

TemplateItem read_item(TemplateReader& reader, bool is_extended) {
    TemplateItem item;
    reader.align();
    if (is_extended) reader.number<DWORD>();  // help
    const auto first = reader.number<DWORD>();
    const auto second = reader.number<DWORD>();
    item.style = is_extended ? second : first;
    item.ex_style = is_extended ? first : second;
    item.x = coordinate(reader);
    item.y = coordinate(reader);
    item.width = coordinate(reader);
    item.height = coordinate(reader);
    item.id = is_extended ? reader.number<DWORD>() : reader.number<WORD>();
    item.class_name = name(reader);
    item.title = name(reader);
    item.data = reader.take(reader.number<WORD>());
    return item;
}

void read_font(TemplateReader& reader, bool is_extended, DialogTemplate& dialog) {
    dialog.points = reader.number<std::int16_t>();
    if (is_extended) {
        dialog.weight = reader.number<WORD>();
        dialog.is_italic = reader.number<BYTE>() != 0;
        reader.number<BYTE>();  // the character set
    }
    // 0x7FFF stands for the font of messages, without a face.
    if (dialog.points != 0x7FFF) dialog.face = reader.text();
}

}  // namespace

std::optional<DialogTemplate> read_dialog_template(std::span<const std::byte> bytes) {
    TemplateReader reader(bytes);
    DialogTemplate dialog;
    const auto first = reader.number<DWORD>();
    const bool is_extended = first >> 16 == 0xFFFF;
    if (is_extended) {
        if ((first & 0xFFFF) != 1) return std::nullopt;
        reader.number<DWORD>();  // help
        dialog.ex_style = reader.number<DWORD>();
        dialog.style = reader.number<DWORD>();
    } else {
        dialog.style = first;
        dialog.ex_style = reader.number<DWORD>();
    }
    const auto count = reader.number<WORD>();
    dialog.x = coordinate(reader);
    dialog.y = coordinate(reader);
    dialog.width = coordinate(reader);
    dialog.height = coordinate(reader);
    dialog.menu = name(reader);
    dialog.class_name = name(reader);
    dialog.title = name(reader);
    if ((dialog.style & DS_SETFONT) != 0) read_font(reader, is_extended, dialog);
    for (WORD i = 0; i < count && reader.is_whole(); ++i) {
        dialog.items.push_back(read_item(reader, is_extended));
    }
    if (!reader.is_whole()) return std::nullopt;
    return dialog;
}

}  // namespace tvutil2
