// Text on its way into a context: in the context's font, and broken into lines.
#pragma once

#include "tvutil2/platform/draw/context_object.h"
#include "tvutil2/platform/draw/engine.h"

#include <memory>
#include <string_view>
#include <vector>

namespace tvutil2 {

// How a context writes.
struct Writing {
    Engine* engine = nullptr;
    std::shared_ptr<const Font> font;

    explicit Writing(const Drawing& drawing) {
        engine = drawing_engine();
        if (engine != nullptr) font = drawing.state().font.object->font();
    }
    explicit operator bool() const { return font != nullptr; }

    [[nodiscard]] int ascent() const { return font->metrics().ascent; }
    [[nodiscard]] int line_height() const { return ascent() + font->metrics().descent; }
    [[nodiscard]] std::shared_ptr<const TextLayout> lay_out(std::u16string_view text,
                                                            const TextOptions& options) const {
        return engine->lay_out(font, text, options);
    }
};

/// With the forms of characters of the calling thread's language.
[[nodiscard]] TextOptions plain_options();

/// One line, or a part of it, where it is to be drawn: `x` from the left of its line.
struct TextPiece {
    std::shared_ptr<const TextLayout> layout;
    int line;
    int x;
};

struct TextLine {
    std::vector<TextPiece> pieces;
    int width = 0;
};

[[nodiscard]] TextLine line_of(const Writing& writing, std::u16string_view text,
                               const TextOptions& options);

/// As DrawTextW lays it out in a rectangle of that width.
[[nodiscard]] std::vector<TextLine> lines_of(const Writing& writing, std::u16string_view text,
                                             int width, UINT format);

}  // namespace tvutil2
