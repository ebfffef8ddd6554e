#include "tvutil2/platform/draw/module/pango_font.h"

#include <algorithm>

namespace tvutil2 {
namespace {

constexpr const char* kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr int kLetters = 52;

}  // namespace

// Characters keep to whole pixels and to the grid upright only: crisp, and of the same widths at
// every place of a line.
FontContext make_font_context(PangoFontMap* map, PangoDirection direction) {
    FontContext context(pango_font_map_create_context(map));
    const FontOptions options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_ON);
    pango_cairo_context_set_font_options(context.get(), options.get());
    pango_context_set_base_dir(context.get(), direction);
    pango_context_set_language(context.get(), pango_language_from_string("en"));
    return context;
}

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

std::shared_ptr<const Font> RecentFonts::open(PangoContext* context, const FontRequest& request) {
    const auto known = std::ranges::find_if(
        m_fonts, [&request](const Open& each) { return each.font && each.request == request; });
    if (known != m_fonts.end()) return known->font;
    auto& oldest = m_fonts[m_next++ % m_fonts.size()];
    oldest = {request, std::make_shared<PangoFontObject>(context, request)};
    return oldest.font;
}

}  // namespace tvutil2
