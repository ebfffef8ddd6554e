#include "tvutil2/platform/draw/module/pango_text.h"

#include "tvutil2/platform/draw/module/cairo_canvas.h"
#include "tvutil2/platform/draw/module/pango_font.h"
#include "tvutil2/platform/draw/module/recent_layouts.h"
#include "tvutil2/platform/draw/module/script_rules.h"
#include "tvutil2/platform/draw/module/utf8_text.h"

#include <algorithm>

namespace tvutil2 {
namespace {

int pixels(int units) {
    return PANGO_PIXELS(units);
}

// The forms of characters that several languages write their own way; empty for the others.
const char* language_tag(LANGID language) {
    switch (language & 0x3FF) {
        case 0x04:
            return language == 0x0804 || language == 0x1004 ? "zh-cn" : "zh-tw";
        case 0x11:
            return "ja";
        case 0x12:
            return "ko";
        default:
            return "";
    }
}

class PangoParagraph : public TextLayout {
  public:
    PangoParagraph(PangoContext* context, const PangoFontObject& font, std::u16string_view text,
                   const TextOptions& options)
        : m_text(text), m_layout(pango_layout_new(context)) {
        auto* const layout = m_layout.get();
        pango_layout_set_auto_dir(layout, FALSE);
        pango_layout_set_single_paragraph_mode(layout, TRUE);
        pango_layout_set_font_description(layout, font.description());
        pango_layout_set_text(layout, m_text.bytes().data(),
                              static_cast<int>(m_text.bytes().size()));
        set_attributes(font, text.size(), options);
        // Most have none, and this takes a good part of what a line takes.
        if (text.find(u'\t') != std::u16string_view::npos) set_tabs(font, options);
        set_width(options);
    }

    [[nodiscard]] int line_count() const override {
        return pango_layout_get_line_count(m_layout.get());
    }
    [[nodiscard]] int line_width(int line) const override {
        PangoRectangle logical{};
        pango_layout_line_get_extents(get(line), nullptr, &logical);
        return pixels(logical.width);
    }
    [[nodiscard]] std::size_t line_start(int line) const override {
        return m_text.unit_of(get(line)->start_index);
    }
    [[nodiscard]] bool is_cut() const override {
        return pango_layout_is_ellipsized(m_layout.get()) != FALSE;
    }

    void draw_line(const Canvas& canvas, int line, int left, int baseline,
                   std::uint32_t color) const override {
        const CairoCanvas on(canvas);
        on.set_color(color);
        cairo_move_to(on.get(), left, baseline);
        auto* const shown = get(line);
        stand_on_one_line(*shown);
        pango_cairo_show_layout_line(on.get(), shown);
    }

    [[nodiscard]] int x_of(int line, std::size_t unit) const override {
        return edge_of(line, unit, FALSE);
    }
    [[nodiscard]] int end_of(int line, std::size_t unit) const override {
        return edge_of(line, unit, TRUE);
    }
    [[nodiscard]] std::size_t unit_at(int line, int x) const override {
        int index = 0;
        int trailing = 0;
        const auto limited = std::clamp(x, -G_MAXINT / PANGO_SCALE, G_MAXINT / PANGO_SCALE);
        pango_layout_line_x_to_index(get(line), limited * PANGO_SCALE, &index, &trailing);
        const auto* at = m_text.bytes().data() + index;
        at = g_utf8_offset_to_pointer(at, trailing);
        return m_text.unit_of(static_cast<int>(at - m_text.bytes().data()));
    }
    [[nodiscard]] std::size_t next_caret(std::size_t unit) const override {
        return stepped(unit, 1);
    }
    [[nodiscard]] std::size_t previous_caret(std::size_t unit) const override {
        return stepped(unit, -1);
    }

    [[nodiscard]] std::vector<Unit> units() const override {
        std::vector<Unit> units(m_text.units());
        int count = 0;
        const auto* const breaks = pango_layout_get_log_attrs_readonly(m_layout.get(), &count);
        const auto widths = character_widths(static_cast<std::size_t>(count));
        const auto* at = m_text.bytes().data();
        int x = 0;
        std::size_t character = 0;
        for (std::size_t unit = 0; unit < units.size(); ++character) {
            const auto width = pixels(x + widths[character]) - pixels(x);
            x += widths[character];
            const auto& here = breaks[character];
            auto& told = units[unit];
            told.advance = static_cast<unsigned>(std::clamp(width, 0, kWidest)) & kWidest;
            told.begins_character = here.is_char_break != 0;
            told.may_begin_line = here.is_line_break != 0;
            told.is_blank = here.is_white != 0;
            const auto* const next = g_utf8_next_char(at);
            unit += next - at == 4 ? 2 : 1;
            at = next;
        }
        return units;
    }

  private:
    static constexpr int kWidest = 0x1FFF;

    // In the drawing library's units, in the order of the text.
    [[nodiscard]] std::vector<int> character_widths(std::size_t count) const {
        std::vector<int> widths(count);
        const auto* const text = m_text.bytes().data();
        for (const auto* run = get(0)->runs; run != nullptr; run = run->next) {
            auto* const glyphs = static_cast<PangoGlyphItem*>(run->data);
            const auto first = g_utf8_pointer_to_offset(text, text + glyphs->item->offset);
            pango_glyph_item_get_logical_widths(glyphs, text, widths.data() + first);
        }
        return widths;
    }

    // Behind an ideograph letters would be raised, but not the digits that its font has.
    static void stand_on_one_line(const PangoLayoutLine& line) {
        for (const auto* run = line.runs; run != nullptr; run = run->next) {
            static_cast<PangoGlyphItem*>(run->data)->y_offset = 0;
        }
    }
    [[nodiscard]] int edge_of(int line, std::size_t unit, gboolean is_end) const {
        int x = 0;
        pango_layout_line_index_to_x(get(line), m_text.byte_of(unit), is_end, &x);
        return pixels(x);
    }

    [[nodiscard]] PangoLayoutLine* get(int line) const {
        return pango_layout_get_line_readonly(m_layout.get(),
                                              std::clamp(line, 0, line_count() - 1));
    }

    void set_tabs(const PangoFontObject& font, const TextOptions& options) {
        const auto tab =
            options.tab_width > 0 ? options.tab_width : 8 * font.metrics().average_width;
        const Tabs tabs(pango_tab_array_new_with_positions(1, TRUE, PANGO_TAB_LEFT, tab));
        pango_layout_set_tabs(m_layout.get(), tabs.get());
    }

    void set_attributes(const PangoFontObject& font, std::size_t size, const TextOptions& options) {
        const Attributes list(pango_attr_list_new());
        if (font.is_underlined()) {
            pango_attr_list_insert(list.get(), pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
        }
        if (font.is_struck_out()) {
            pango_attr_list_insert(list.get(), pango_attr_strikethrough_new(TRUE));
        }
        if (const auto* const tag = language_tag(options.language); *tag != 0) {
            auto* const language = pango_language_from_string(tag);
            pango_attr_list_insert(list.get(), pango_attr_language_new(language));
            write_marks_as(list.get(), m_layout.get(), language);
            const bool is_korean = (options.language & 0x3FF) == 0x12;
            if (is_korean && options.wrap_width >= 0) {
                keep_words_whole(list.get(), m_text.bytes(),
                                 options.wrap_width / std::max(1, font.metrics().size));
            }
        }
        if (options.underlined >= 0 && static_cast<std::size_t>(options.underlined) < size) {
            auto* const mark = pango_attr_underline_new(PANGO_UNDERLINE_SINGLE);
            const auto start = m_text.byte_of(static_cast<std::size_t>(options.underlined));
            const auto* const at = m_text.bytes().data() + start;
            mark->start_index = static_cast<guint>(start);
            mark->end_index = mark->start_index + static_cast<guint>(g_utf8_next_char(at) - at);
            pango_attr_list_insert(list.get(), mark);
        }
        pango_layout_set_attributes(m_layout.get(), list.get());
    }

    void set_width(const TextOptions& options) {
        auto* const layout = m_layout.get();
        const auto units = [](int width) {
            return std::min(width, G_MAXINT / PANGO_SCALE) * PANGO_SCALE;
        };
        if (options.wrap_width >= 0) {
            pango_layout_set_width(layout, units(options.wrap_width));
            pango_layout_set_wrap(layout,
                                  options.breaks_words ? PANGO_WRAP_WORD_CHAR : PANGO_WRAP_WORD);
        } else if (options.ellipsis != Ellipsis::none && options.ellipsis_width >= 0) {
            pango_layout_set_width(layout, units(options.ellipsis_width));
            pango_layout_set_ellipsize(layout, options.ellipsis == Ellipsis::end
                                                   ? PANGO_ELLIPSIZE_END
                                                   : PANGO_ELLIPSIZE_MIDDLE);
        }
    }

    [[nodiscard]] std::size_t stepped(std::size_t unit, int step) const {
        int count = 0;
        const auto* const breaks = pango_layout_get_log_attrs_readonly(m_layout.get(), &count);
        const auto* const text = m_text.bytes().data();
        auto at = static_cast<int>(
            g_utf8_pointer_to_offset(text, text + m_text.byte_of(unit)));  // characters
        do {
            at += step;
        } while (at > 0 && at < count - 1 && breaks[at].is_cursor_position == 0);
        at = std::clamp(at, 0, std::max(0, count - 1));
        return m_text.unit_of(static_cast<int>(g_utf8_offset_to_pointer(text, at) - text));
    }

    Utf8Text m_text;
    Layout m_layout;
};

// pango's objects belong to a thread.
struct ThreadText {
    FontMap map{pango_cairo_font_map_new()};
    FontContext left_to_right = make_font_context(map.get(), PANGO_DIRECTION_LTR);
    FontContext right_to_left = make_font_context(map.get(), PANGO_DIRECTION_RTL);
    RecentFonts fonts;
    RecentLayouts recent;

    static ThreadText& get() {
        static thread_local ThreadText text;
        return text;
    }
};

}  // namespace

std::shared_ptr<const Font> open_pango_font(const FontRequest& request) {
    auto& thread = ThreadText::get();
    return thread.fonts.open(thread.left_to_right.get(), request);
}

std::shared_ptr<const TextLayout> lay_out_by_pango(const std::shared_ptr<const Font>& font,
                                                   std::u16string_view text,
                                                   const TextOptions& options) {
    auto& thread = ThreadText::get();
    const RecentLayouts::Query query{font.get(), text, &options};
    const bool is_kept = text.size() <= RecentLayouts::kLongest;
    if (is_kept) {
        if (auto known = thread.recent.find(query)) return known;
    }
    auto* const context =
        options.is_right_to_left ? thread.right_to_left.get() : thread.left_to_right.get();
    auto made =
        std::make_shared<const PangoParagraph>(context, static_cast<const PangoFontObject&>(*font),
                                               text.substr(0, Engine::kLongestText), options);
    if (is_kept) thread.recent.add(font, query, made);
    return made;
}

}  // namespace tvutil2
