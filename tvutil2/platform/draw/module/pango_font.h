// Fonts, as pango opens them.
#pragma once

#include "tvutil2/platform/draw/engine.h"
#include "tvutil2/platform/draw/module/pango_handles.h"

#include <array>

namespace tvutil2 {

/// What fonts and paragraphs of that direction are made with.
[[nodiscard]] FontContext make_font_context(PangoFontMap* map, PangoDirection direction);

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

// Each dialog makes the same fonts anew. One that was open before has its measures, and the layouts
// that were made with it.
class RecentFonts {
  public:
    [[nodiscard]] std::shared_ptr<const Font> open(PangoContext* context,
                                                   const FontRequest& request);

  private:
    struct Open {
        FontRequest request;
        std::shared_ptr<const Font> font;
    };
    std::array<Open, 16> m_fonts;
    std::size_t m_next = 0;
};

}  // namespace tvutil2
