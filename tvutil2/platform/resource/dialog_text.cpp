// The form of templates: "DLGTEMPLATEEX" and "DLGITEMTEMPLATEEX", published with the platform.
#include "tvutil2/platform/resource/dialog_text.h"

#include "tvutil2/platform/base/types.h"

#include <algorithm>
#include <cstring>

namespace tvutil2 {
namespace {

constexpr WORD kButtonClass = 0x80;
constexpr WORD kStaticClass = 0x82;

// What stands behind the end reads as zero.
class Units {
  public:
    Units(const void* bytes, std::size_t size) : m_units(size / 2, u'\0') {
        if (!m_units.empty()) std::memcpy(m_units.data(), bytes, m_units.size() * 2);
    }

    [[nodiscard]] bool is_at_end() const { return m_next >= m_units.size(); }
    WORD word() {
        const auto at = m_next++;
        return at < m_units.size() ? static_cast<WORD>(m_units[at]) : WORD{0};
    }
    DWORD number() {
        const WORD low = word();
        return MAKELONG(low, word());
    }
    void skip(std::size_t words) { m_next += words; }
    void align() { m_next += m_next % 2; }

    // Text, or the number that stands for it: that of a class, or of a resource.
    std::u16string text(WORD* number = nullptr) {
        constexpr WORD kNumber = 0xFFFF;
        const WORD first = word();
        if (first == kNumber) {
            const WORD value = word();
            if (number != nullptr) *number = value;
            return {};
        }
        std::u16string text;
        for (auto unit = first; unit != 0; unit = word()) text += static_cast<char16_t>(unit);
        return text;
    }

  private:
    std::u16string m_units;
    std::size_t m_next = 0;
};

// "&Yes" is "Yes" with its key; "&&" is one of them.
std::u16string without_key_mark(const std::u16string& label) {
    std::u16string text;
    for (std::size_t i = 0; i < label.size(); ++i) {
        if (label[i] == u'&' && ++i == label.size()) break;
        text += label[i];
    }
    return text;
}

}  // namespace

DialogText read_dialog_text(const void* dialog_template, std::size_t size) {
    DialogText dialog;
    Units units(dialog_template, size);
    const WORD version = units.word();
    if (version != 1 || units.word() != 0xFFFF) return dialog;
    units.skip(6);  // help id, extended style, style
    const int count = units.word();
    units.skip(4);  // place and size
    units.text();   // menu
    units.text();   // class
    dialog.caption = units.text();
    units.skip(3);  // size and weight of the font
    units.text();
    for (int i = 0; i < count && !units.is_at_end(); ++i) {
        units.align();
        units.skip(10);  // help id, extended style, style, place and size
        const DWORD id = units.number();
        WORD kind = 0;
        units.text(&kind);
        auto label = units.text();
        units.skip(units.word() / 2);  // data of its own
        if (kind == kButtonClass) dialog.buttons.push_back({id, without_key_mark(label)});
        if (kind == kStaticClass) dialog.texts.push_back(std::move(label));
    }
    return dialog;
}

}  // namespace tvutil2
