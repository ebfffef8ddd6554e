#include "tvutil2/platform/draw/module/script_rules.h"

#include "tvutil2/platform/draw/module/pango_handles.h"

#include <string_view>

namespace tvutil2 {
namespace {

constexpr gunichar kFullStop = 0x3002;
constexpr gunichar kFirstIdeograph = 0x2E80;  // or kana, or a syllable

bool is_wide_mark(gunichar code) {
    return (code >= 0x3000 && code < 0x3040) || (code >= 0xFF00 && code < 0xFF66);
}

bool is_hangul(gunichar code) {
    return (code >= 0xAC00 && code < 0xD7B0) || (code >= 0x1100 && code < 0x1200);
}

void insert_attribute(PangoAttrList* list, PangoAttribute* attribute, std::size_t start,
                      std::size_t end) {
    attribute->start_index = static_cast<guint>(start);
    attribute->end_index = static_cast<guint>(end);
    pango_attr_list_insert(list, attribute);
}

// The family that has the language's own marks; empty when there is none.
std::string family_of_marks(PangoLayout* layout, PangoLanguage* language) {
    auto* const context = pango_layout_get_context(layout);
    const auto* const wanted = pango_layout_get_font_description(layout);
    using FontSet = std::unique_ptr<PangoFontset, EndWith<g_object_unref>>;
    using FoundFont = std::unique_ptr<PangoFont, EndWith<g_object_unref>>;
    const FontSet fonts(pango_context_load_fontset(context, wanted, language));
    if (!fonts) return {};
    const FoundFont font(pango_fontset_get_font(fonts.get(), kFullStop));
    if (!font) return {};
    const Description found(pango_font_describe(font.get()));
    const auto* const family = pango_font_description_get_family(found.get());
    return family != nullptr ? family : "";
}

}  // namespace

void write_marks_as(PangoAttrList* list, PangoLayout* layout, PangoLanguage* language) {
    const std::string_view text = pango_layout_get_text(layout);
    std::string family;
    bool is_behind_latin = false;
    for (std::size_t at = 0; at < text.size();) {
        const auto* const here = text.data() + at;
        const auto code = g_utf8_get_char(here);
        const auto next = at + static_cast<std::size_t>(g_utf8_next_char(here) - here);
        if (g_unichar_isalpha(code)) {
            is_behind_latin = code < kFirstIdeograph;
        } else if (is_behind_latin && is_wide_mark(code)) {
            if (family.empty()) family = family_of_marks(layout, language);
            if (family.empty()) return;
            insert_attribute(list, pango_attr_family_new(family.c_str()), at, next);
        }
        at = next;
    }
}

void keep_words_whole(PangoAttrList* list, const std::string& text, int most_characters) {
    for (std::size_t at = 0; at < text.size();) {
        const auto start = at;
        bool has_hangul = false;
        int characters = 0;
        for (; at < text.size() && text[at] != ' ' && text[at] != '\t'; ++characters) {
            const auto* const here = text.data() + at;
            has_hangul = has_hangul || is_hangul(g_utf8_get_char(here));
            at += static_cast<std::size_t>(g_utf8_next_char(here) - here);
        }
        if (has_hangul && characters <= most_characters) {
            insert_attribute(list, pango_attr_allow_breaks_new(FALSE), start, at);
        }
        while (at < text.size() && (text[at] == ' ' || text[at] == '\t')) ++at;
    }
}

}  // namespace tvutil2
