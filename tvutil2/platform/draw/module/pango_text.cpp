#include "tvutil2/platform/draw/module/pango_text.h"

#include "tvutil2/platform/draw/module/cairo_canvas.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <unordered_map>
#include <utility>

namespace tvutil2 {
namespace {

template <auto kEnd>
struct EndWith {
    template <class T>
    void operator()(T* object) const {
        kEnd(object);
    }
};
using FontMap = std::unique_ptr<PangoFontMap, EndWith<g_object_unref>>;
using Context = std::unique_ptr<PangoContext, EndWith<g_object_unref>>;
using Layout = std::unique_ptr<PangoLayout, EndWith<g_object_unref>>;
using Description = std::unique_ptr<PangoFontDescription, EndWith<pango_font_description_free>>;
using Attributes = std::unique_ptr<PangoAttrList, EndWith<pango_attr_list_unref>>;
using Tabs = std::unique_ptr<PangoTabArray, EndWith<pango_tab_array_free>>;
using FontOptions = std::unique_ptr<cairo_font_options_t, EndWith<cairo_font_options_destroy>>;

constexpr const char* kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr int kLetters = 52;

int pixels(int units) {
    return PANGO_PIXELS(units);
}

// Characters keep to whole pixels and to the grid upright only: crisp, and of the same widths at
// every place of a line.
Context make_context(PangoFontMap* map, PangoDirection direction) {
    Context context(pango_font_map_create_context(map));
    const FontOptions options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_ON);
    pango_cairo_context_set_font_options(context.get(), options.get());
    pango_context_set_base_dir(context.get(), direction);
    pango_context_set_language(context.get(), pango_language_from_string("en"));
    return context;
}

class PangoFontObject : public Font {
  public:
    PangoFontObject(PangoContext* context, const FontRequest& request);
    [[nodiscard]] const FontMetrics& metrics() const override { return m_metrics; }
    [[nodiscard]] const PangoFontDescription* description() const { return m_description.get(); }
    [[nodiscard]] bool is_underlined() const { return m_is_underlined; }
    [[nodiscard]] bool is_struck_out() const { return m_is_struck_out; }

  private:
    void set_size(int size);
    void read_heights(PangoContext* context);
    void read_widths(PangoContext* context);

    Description m_description;
    bool m_is_underlined;
    bool m_is_struck_out;
    FontMetrics m_metrics;
};

PangoFontObject::PangoFontObject(PangoContext* context, const FontRequest& request)
    : m_description(pango_font_description_new()),
      m_is_underlined(request.is_underlined),
      m_is_struck_out(request.is_struck_out) {
    pango_font_description_set_family(m_description.get(), request.families.c_str());
    pango_font_description_set_weight(m_description.get(),
                                      static_cast<PangoWeight>(request.weight));
    if (request.is_italic) {
        pango_font_description_set_style(m_description.get(), PANGO_STYLE_ITALIC);
    }
    set_size(std::clamp(request.size, 1, Engine::kLargestFont));
    read_heights(context);
    // Down until the line fits: heights are rounded for each size by themselves.
    if (request.is_line_height) {
        const auto line = m_metrics.ascent + m_metrics.descent;
        set_size(std::max(1, request.size * m_metrics.size / std::max(1, line) + 1));
        read_heights(context);
        while (m_metrics.size > 1 && m_metrics.ascent + m_metrics.descent > request.size) {
            set_size(m_metrics.size - 1);
            read_heights(context);
        }
    }
    read_widths(context);
}

void PangoFontObject::set_size(int size) {
    m_metrics.size = size;
    pango_font_description_set_absolute_size(m_description.get(), size * double{PANGO_SCALE});
}

void PangoFontObject::read_heights(PangoContext* context) {
    using FontReference = std::unique_ptr<PangoFont, EndWith<g_object_unref>>;
    using Metrics = std::unique_ptr<PangoFontMetrics, EndWith<pango_font_metrics_unref>>;
    m_metrics.ascent = m_metrics.size;
    m_metrics.descent = 0;
    const FontReference font(pango_context_load_font(context, m_description.get()));
    if (!font) return;
    const Metrics metrics(pango_font_get_metrics(font.get(), nullptr));
    m_metrics.ascent = PANGO_PIXELS_CEIL(pango_font_metrics_get_ascent(metrics.get()));
    m_metrics.descent = PANGO_PIXELS_CEIL(pango_font_metrics_get_descent(metrics.get()));
}

void PangoFontObject::read_widths(PangoContext* context) {
    const Layout layout(pango_layout_new(context));
    pango_layout_set_font_description(layout.get(), m_description.get());
    const auto width = [&](const char* text) {
        int value = 0;
        pango_layout_set_text(layout.get(), text, -1);
        pango_layout_get_pixel_size(layout.get(), &value, nullptr);
        return value;
    };
    m_metrics.average_width = std::max(1, (width(kAlphabet) + kLetters / 2) / kLetters);
    m_metrics.widest = std::max(width("W"), width("@"));
    m_metrics.is_monospaced = width("i") == width("W");
}

// Text in UTF-8, and where each 16-bit unit is in it. What would end a line or the text is a blank.
class Utf8Text {
  public:
    explicit Utf8Text(std::u16string_view text) {
        m_bytes.reserve(text.size() + text.size() / 2);
        bool is_plain = true;
        for (std::size_t i = 0; i < text.size();) i += add(text, i, is_plain);
        m_units = text.size();
    }

    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] std::size_t units() const { return m_units; }
    [[nodiscard]] int byte_of(std::size_t unit) const {
        if (unit >= m_units) return static_cast<int>(m_bytes.size());
        return m_offsets.empty() ? static_cast<int>(unit) : m_offsets[unit];
    }
    [[nodiscard]] std::size_t unit_of(int byte) const {
        if (m_offsets.empty()) return std::min(static_cast<std::size_t>(byte), m_units);
        return static_cast<std::size_t>(std::ranges::lower_bound(m_offsets, byte) -
                                        m_offsets.begin());
    }

  private:
    std::size_t add(std::u16string_view text, std::size_t i, bool& is_plain) {
        char32_t code = text[i];
        const bool is_pair = code >= 0xD800 && code < 0xDC00 && i + 1 < text.size() &&
                             text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
        if (is_pair) {
            code = 0x10000 + ((code - 0xD800) << 10U) + (text[i + 1] - 0xDC00U);
        } else if (code >= 0xD800 && code < 0xE000) {
            code = 0xFFFD;
        } else if (code == 0 || code == u'\n' || code == u'\r' || code == 0x2028 ||
                   code == 0x2029) {
            code = u' ';
        }
        if (code >= 0x80 && is_plain) {
            is_plain = false;
            m_offsets.reserve(text.size());
            for (std::size_t k = 0; k < i; ++k) m_offsets.push_back(static_cast<int>(k));
        }
        const auto start = static_cast<int>(m_bytes.size());
        if (!is_plain) m_offsets.insert(m_offsets.end(), is_pair ? 2 : 1, start);
        append(code);
        return is_pair ? 2 : 1;
    }

    void append(char32_t code) {
        std::array<char, 6> bytes{};
        const auto size = g_unichar_to_utf8(code, bytes.data());
        m_bytes.append(bytes.data(), static_cast<std::size_t>(size));
    }

    std::string m_bytes;
    std::vector<int> m_offsets;  // none while every unit is one byte
    std::size_t m_units = 0;
};

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
        pango_cairo_show_layout_line(on.get(), get(line));
    }

    [[nodiscard]] int x_of(int line, std::size_t unit) const override {
        int x = 0;
        pango_layout_line_index_to_x(get(line), m_text.byte_of(unit), FALSE, &x);
        return pixels(x);
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
            pango_attr_list_insert(list.get(),
                                   pango_attr_language_new(pango_language_from_string(tag)));
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

// Texts that were laid out lately, by a thread. Those that nobody asks for again are dropped with
// their generation.
class RecentLayouts {
  public:
    static constexpr std::size_t kLongest = 160;
    static constexpr std::size_t kGeneration = 256;

    struct Query {
        const Font* font;
        std::u16string_view text;
        const TextOptions& options;
    };

    std::shared_ptr<const TextLayout> find(const Query& query) {
        if (const auto found = m_young.find(query); found != m_young.end()) return found->second;
        const auto found = m_old.find(query);
        if (found == m_old.end()) return nullptr;
        auto layout = found->second;
        auto node = m_old.extract(found);
        make_room();
        m_young.insert(std::move(node));
        return layout;
    }

    void add(const std::shared_ptr<const Font>& font, const Query& query,
             const std::shared_ptr<const TextLayout>& layout) {
        make_room();
        m_young.emplace(Key{font, std::u16string(query.text), query.options}, layout);
    }

  private:
    struct Key {
        std::shared_ptr<const Font> font;
        std::u16string text;
        TextOptions options;
        [[nodiscard]] Query query() const { return {font.get(), text, options}; }
    };
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(const Query& query) const {
            const auto& options = query.options;
            auto hash = std::hash<std::u16string_view>()(query.text);
            for (const auto part : {reinterpret_cast<std::uintptr_t>(query.font) >> 4U,
                                    static_cast<std::uintptr_t>(options.wrap_width),
                                    static_cast<std::uintptr_t>(options.ellipsis_width)}) {
                hash = (hash ^ part) * 0x9E3779B97F4A7C15U;
            }
            return hash;
        }
        std::size_t operator()(const Key& key) const { return (*this)(key.query()); }
    };
    struct Equal {
        using is_transparent = void;
        static bool same(const Query& a, const Query& b) {
            return a.font == b.font && a.options == b.options && a.text == b.text;
        }
        bool operator()(const Key& a, const Key& b) const { return same(a.query(), b.query()); }
        bool operator()(const Query& a, const Key& b) const { return same(a, b.query()); }
        bool operator()(const Key& a, const Query& b) const { return same(a.query(), b); }
    };
    using Layouts = std::unordered_map<Key, std::shared_ptr<const TextLayout>, Hash, Equal>;

    void make_room() {
        if (m_young.size() < kGeneration) return;
        m_old = std::exchange(m_young, {});
    }

    Layouts m_young;
    Layouts m_old;
};

// Each dialog makes the same fonts anew. One that was open before has its measures, and the layouts
// that were made with it.
class RecentFonts {
  public:
    std::shared_ptr<const Font> open(PangoContext* context, const FontRequest& request) {
        const auto known = std::ranges::find_if(
            m_fonts, [&request](const Open& each) { return each.font && each.request == request; });
        if (known != m_fonts.end()) return known->font;
        auto& oldest = m_fonts[m_next++ % m_fonts.size()];
        oldest = {request, std::make_shared<PangoFontObject>(context, request)};
        return oldest.font;
    }

  private:
    struct Open {
        FontRequest request;
        std::shared_ptr<const Font> font;
    };
    std::array<Open, 16> m_fonts;
    std::size_t m_next = 0;
};

// pango's objects belong to a thread.
struct ThreadText {
    FontMap map{pango_cairo_font_map_new()};
    Context left_to_right = make_context(map.get(), PANGO_DIRECTION_LTR);
    Context right_to_left = make_context(map.get(), PANGO_DIRECTION_RTL);
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
    const RecentLayouts::Query query{font.get(), text, options};
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
