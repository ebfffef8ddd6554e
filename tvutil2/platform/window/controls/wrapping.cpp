#include "tvutil2/platform/window/controls/wrapping.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/window/controls/text_breaks.h"

#include <algorithm>

namespace tvutil2 {
namespace {

// Units that are shaped at once.
constexpr std::size_t kBlock = 512;

bool is_in_pair(std::u16string_view text, std::size_t at) {
    return at > 0 && at < text.size() && (text[at] & 0xFC00U) == 0xDC00U &&
           (text[at - 1] & 0xFC00U) == 0xD800U;
}

// What decides how a unit is written, in its line.
std::size_t context_begin(std::u16string_view text, std::size_t from) {
    auto at = from;
    while (at > 0 && from - at < Wrapping::kReach && !is_line_end(text[at - 1])) --at;
    return is_in_pair(text, at) ? at - 1 : at;
}

std::size_t context_end(std::u16string_view text, std::size_t to) {
    auto at = to;
    while (at < text.size() && at - to < Wrapping::kReach && !is_line_end(text[at])) ++at;
    return is_in_pair(text, at) ? at + 1 : at;
}

}  // namespace

TextOptions row_options(const RowFont& font) {
    TextOptions options;
    options.language = static_cast<LANGID>(GetThreadLocale() & 0xFFFF);
    options.is_right_to_left = font.is_right_to_left;
    options.tab_width = font.tab_width;
    return options;
}

void Wrapping::reset(std::u16string_view text, const RowFont& font) {
    TEXTMETRICW metrics{};
    GetTextMetricsW(font.context, &metrics);
    m_tab_width = std::max(font.tab_width > 0 ? font.tab_width : 8 * metrics.tmAveCharWidth, 1);
    m_units.assign(text.size(), {});
    measure(text, font, 0, text.size());
}

void Wrapping::change(std::u16string_view text, const RowFont& font,
                      const EditText::Change& change) {
    const auto at = m_units.begin() + static_cast<std::ptrdiff_t>(change.at);
    const auto kept = static_cast<std::ptrdiff_t>(std::min(change.inserted, change.removed));
    if (change.removed > change.inserted) {
        m_units.erase(at + kept, at + static_cast<std::ptrdiff_t>(change.removed));
    } else {
        m_units.insert(at + kept, change.inserted - change.removed, {});
    }
    const auto end = change.at + change.inserted;
    measure(text, font, context_begin(text, change.at), context_end(text, end));
}

void Wrapping::measure(std::u16string_view text, const RowFont& font, std::size_t from,
                       std::size_t to) {
    while (from < to) {
        if (is_line_end(text[from])) {
            m_units[from++] = {};
            continue;
        }
        auto end = from;
        while (end < to && end - from < kBlock && !is_line_end(text[end])) ++end;
        const auto begin = context_begin(text, from);
        const auto around = text.substr(begin, context_end(text, end) - begin);
        const auto layout = lay_out_text(font.context, around, row_options(font));
        if (!layout) return;
        const auto units = layout->units();
        std::copy(units.begin() + static_cast<std::ptrdiff_t>(from - begin),
                  units.begin() + static_cast<std::ptrdiff_t>(end - begin),
                  m_units.begin() + static_cast<std::ptrdiff_t>(from));
        from = end;
    }
}

std::size_t Wrapping::row_end(std::u16string_view text, int wrap_width, std::size_t at,
                              std::size_t end) const {
    auto word = at;
    auto character = at;
    int x = 0;
    auto i = at;
    for (; i < end; ++i) {
        const auto unit = m_units[i];
        if (i > at && unit.may_begin_line != 0) word = i;
        if (i > at && unit.begins_character != 0) character = i;
        const auto is_tab = text[i] == u'\t';
        const auto next = is_tab ? (x / m_tab_width + 1) * m_tab_width : x + unit.advance;
        if ((unit.is_blank != 0 ? x : next) > wrap_width) break;
        x = next;
    }
    if (i == end) return end;
    if (word > at) return word;
    if (character > at) return character;
    for (++i; i < end && m_units[i].begins_character == 0;) ++i;
    return i;
}

}  // namespace tvutil2
