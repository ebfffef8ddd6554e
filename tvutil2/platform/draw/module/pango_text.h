// Fonts and paragraphs, by pango.
#pragma once

#include "tvutil2/platform/draw/engine.h"

namespace tvutil2 {

[[nodiscard]] std::shared_ptr<const Font> open_pango_font(const FontRequest& request);

/// Short texts are kept for a while: what is measured is drawn next, and drawn again later.
[[nodiscard]] std::shared_ptr<const TextLayout> lay_out_by_pango(
    const std::shared_ptr<const Font>& font, std::u16string_view text, const TextOptions& options);

}  // namespace tvutil2
