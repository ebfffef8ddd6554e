#include "tvutil2/platform/window/dialogs/dialog_template.h"

#include "tvutil2/platform/window/dialogs/dialogs.h"

#include <cstring>

namespace tvutil2 {
namespace {

// Reads on until something is missing; from then on gives zeros.
class Reader {
  public:
    explicit Reader(std::span<const std::byte> bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool is_whole() const { return m_is_whole; }

    template <class T>
    T number() {
        T value{};
        const auto part = take(sizeof value);
        if (!part.empty()) std::memcpy(&value, part.data(), sizeof value);
        return value;
    }
    int coordinate() { return number<std::int16_t>(); }

    std::u16string text() {
        std::u16string text;
        while (const auto unit = number<char16_t>()) text += unit;
        return text;
    }
    TemplateName name() {
        TemplateName name;
        const auto first = number<WORD>();
        if (first == 0xFFFF) {
            name.id = number<WORD>();
        } else if (first != 0) {
            name.text = static_cast<char16_t>(first) + text();
        }
        return name;
    }
    std::span<const std::byte> take(std::size_t size) {
        if (size > m_bytes.size() - m_at) {
            m_is_whole = false;
            m_at = m_bytes.size();
            return {};
        }
        m_at += size;
        return m_bytes.subspan(m_at - size, size);
    }
    void align() { take((4 - m_at % 4) % 4); }

  private:
    std::span<const std::byte> m_bytes;
    std::size_t m_at = 0;
    bool m_is_whole = true;
};

TemplateItem read_item(Reader& reader, bool is_extended) {
    TemplateItem item;
    reader.align();
    if (is_extended) reader.number<DWORD>();  // help
    const auto first = reader.number<DWORD>();
    const auto second = reader.number<DWORD>();
    item.style = is_extended ? second : first;
    item.ex_style = is_extended ? first : second;
    item.x = reader.coordinate();
    item.y = reader.coordinate();
    item.width = reader.coordinate();
    item.height = reader.coordinate();
    item.id = is_extended ? reader.number<DWORD>() : reader.number<WORD>();
    item.class_name = reader.name();
    item.title = reader.name();
    item.data = reader.take(reader.number<WORD>());
    return item;
}

void read_font(Reader& reader, bool is_extended, DialogTemplate& dialog) {
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
    Reader reader(bytes);
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
    dialog.x = reader.coordinate();
    dialog.y = reader.coordinate();
    dialog.width = reader.coordinate();
    dialog.height = reader.coordinate();
    dialog.menu = reader.name();
    dialog.class_name = reader.name();
    dialog.title = reader.name();
    if ((dialog.style & DS_SETFONT) != 0) read_font(reader, is_extended, dialog);
    for (WORD i = 0; i < count && reader.is_whole(); ++i) {
        dialog.items.push_back(read_item(reader, is_extended));
    }
    if (!reader.is_whole()) return std::nullopt;
    return dialog;
}

}  // namespace tvutil2
