#include "tvutil2/platform/draw/text.h"

#include "tvutil2/platform/draw/text_lines.h"

#include <algorithm>
#include <cstdlib>

using tvutil2::Drawing;
using tvutil2::fail_with;
using tvutil2::line_of;
using tvutil2::pixel_of;
using tvutil2::plain_options;
using tvutil2::TextLine;
using tvutil2::Writing;

namespace {

// Draws a line whose upper left corner is at a pixel of the surface, through `clip`.
void draw_line(const Drawing& drawing, const Writing& writing, const tvutil2::Region& clip,
               const TextLine& line, POINT at) {
    const RECT cell{at.x, at.y, tvutil2::plus(at.x, line.width),
                    tvutil2::plus(at.y, writing.line_height())};
    if (drawing.state().background_mode == OPAQUE) {
        auto behind = clip;
        behind.intersect(cell);
        drawing.fill(behind, pixel_of(drawing.state().background));
    }
    // Slanted and stacked characters reach beyond their cell.
    const auto reach = writing.line_height();
    if (!clip.touches({tvutil2::plus(cell.left, -reach), tvutil2::plus(cell.top, -reach),
                       tvutil2::plus(cell.right, reach), tvutil2::plus(cell.bottom, reach)})) {
        return;
    }
    auto canvas = drawing.canvas();
    canvas.clip = clip.rects();
    const auto ink = pixel_of(drawing.state().text_color);
    for (const auto& piece : line.pieces) {
        const auto x = tvutil2::plus(at.x, piece.x);
        if (x > clip.bounds().right + reach) break;
        // Farther out than pango counts, nothing of a part could reach the surface.
        if (std::abs(std::int64_t{x}) > tvutil2::Region::kFarthest / 64) continue;
        piece.layout->draw_line(canvas, piece.line, x, at.y + writing.ascent(), ink);
    }
}

LONG aligned(LONG left, LONG right, int width, UINT format) {
    const auto room = std::int64_t{right} - left - width;
    if ((format & DT_CENTER) != 0) return tvutil2::saturated(left + room / 2);
    return (format & DT_RIGHT) != 0 ? tvutil2::saturated(left + room) : left;
}

std::u16string_view text_of(const char16_t* text, int count) {
    if (text == nullptr) return {};
    return count < 0 ? std::u16string_view(text)
                     : std::u16string_view(text, static_cast<std::size_t>(count));
}

// Where the upper left corner of a line is that is aligned at a place.
POINT corner_of(const Writing& writing, const TextLine& line, UINT align, POINT at) {
    if ((align & TA_CENTER) == TA_CENTER) {
        at.x = tvutil2::plus(at.x, -line.width / 2);
    } else if ((align & TA_RIGHT) != 0) {
        at.x = tvutil2::plus(at.x, -line.width);
    }
    if ((align & TA_BASELINE) == TA_BASELINE) {
        at.y = tvutil2::plus(at.y, -writing.ascent());
    } else if ((align & TA_BOTTOM) != 0) {
        at.y = tvutil2::plus(at.y, -writing.line_height());
    }
    return at;
}

bool draw_at(const Drawing& drawing, const tvutil2::Region& clip, int x, int y,
             std::u16string_view text, bool is_right_to_left) {
    const Writing writing(drawing);
    if (!writing) return false;
    auto& state = drawing.state();
    auto options = plain_options();
    options.is_right_to_left = is_right_to_left || (state.text_align & TA_RTLREADING) != 0;
    const auto line = line_of(writing, text, options);
    const bool moves = (state.text_align & TA_UPDATECP) != 0;
    const auto at =
        corner_of(writing, line, state.text_align, moves ? state.position : POINT{x, y});
    const auto by = drawing.shift();
    draw_line(drawing, writing, clip, line, {tvutil2::plus(at.x, by.x), tvutil2::plus(at.y, by.y)});
    if (moves && (state.text_align & TA_RIGHT) == 0) {
        state.position.x = tvutil2::plus(state.position.x, line.width);
    }
    return true;
}

}  // namespace

int DrawTextW(HDC context, const char16_t* text, int count, RECT* rect, UINT format) {
    const Drawing drawing(context);
    if (!drawing || rect == nullptr) return 0;
    const Writing writing(drawing);
    if (!writing) return 0;
    const auto shown = text_of(text, count);
    const auto width = tvutil2::saturated(std::int64_t{rect->right} - rect->left);
    const auto line_height = writing.line_height();
    if (shown.empty()) {
        if ((format & DT_CALCRECT) != 0) rect->right = rect->left, rect->bottom = rect->top;
        return 0;
    }
    const auto lines = tvutil2::lines_of(writing, shown, width, format);
    const auto height = tvutil2::saturated(static_cast<std::int64_t>(lines.size()) * line_height);
    if ((format & DT_CALCRECT) != 0) {
        int widest = 0;
        for (const auto& line : lines) widest = std::max(widest, line.width);
        rect->right = tvutil2::plus(rect->left, widest);
        rect->bottom = tvutil2::plus(rect->top, height);
        return height;
    }
    LONG top = rect->top;
    const auto room = std::int64_t{rect->bottom} - rect->top - height;
    if ((format & DT_SINGLELINE) != 0 && (format & DT_VCENTER) != 0) {
        top = tvutil2::saturated(top + (room < 0 ? (room - 1) / 2 : room / 2));
    } else if ((format & DT_SINGLELINE) != 0 && (format & DT_BOTTOM) != 0) {
        top = tvutil2::saturated(top + room);
    }
    const auto area = drawing.to_device(*rect);
    auto clip = drawing.clip();
    if ((format & DT_NOCLIP) == 0) clip.intersect(tvutil2::Region(area));
    auto y = tvutil2::plus(top, drawing.shift().y);
    for (const auto& line : lines) {
        if (y >= clip.bounds().bottom + line_height) break;
        draw_line(drawing, writing, clip, line,
                  {aligned(area.left, area.right, line.width, format), y});
        y = tvutil2::plus(y, line_height);
    }
    return tvutil2::saturated(std::int64_t{top} - rect->top + height);
}

BOOL TextOutW(HDC context, int x, int y, const char16_t* text, int count) {
    const Drawing drawing(context);
    if (!drawing || count < 0) return FALSE;
    return draw_at(drawing, drawing.clip(), x, y, text_of(text, count), false) ? TRUE : FALSE;
}

BOOL ExtTextOutW(HDC context, int x, int y, UINT options, const RECT* rect, const char16_t* text,
                 UINT count, const int* /*distances*/) {
    const Drawing drawing(context);
    if (!drawing) return FALSE;
    auto clip = drawing.clip();
    if (rect != nullptr) {
        const auto area = drawing.to_device(*rect);
        if ((options & ETO_OPAQUE) != 0) drawing.fill(area, pixel_of(drawing.state().background));
        if ((options & ETO_CLIPPED) != 0) clip.intersect(tvutil2::Region(area));
    }
    if (text == nullptr || count == 0) return TRUE;
    const bool is_right_to_left = (options & ETO_RTLREADING) != 0;
    return draw_at(drawing, clip, x, y, {text, count}, is_right_to_left) ? TRUE : FALSE;
}

BOOL GetTextExtentPoint32W(HDC context, const char16_t* text, int count, SIZE* size) {
    const Drawing drawing(context);
    if (!drawing) return FALSE;
    if (size == nullptr || count < 0) return fail_with(ERROR_INVALID_PARAMETER);
    const Writing writing(drawing);
    if (!writing) return FALSE;
    const auto measured = text_of(text, count);
    size->cx = measured.empty() ? 0 : line_of(writing, measured, plain_options()).width;
    size->cy = writing.line_height();
    return TRUE;
}

BOOL GetTextMetricsW(HDC context, TEXTMETRICW* metrics) {
    const Drawing drawing(context);
    if (!drawing) return FALSE;
    const Writing writing(drawing);
    if (!writing || metrics == nullptr) return FALSE;
    const auto& font = writing.font->metrics();
    const auto& record = drawing.state().font.object->record();
    *metrics = {};
    metrics->tmHeight = font.ascent + font.descent;
    metrics->tmAscent = font.ascent;
    metrics->tmDescent = font.descent;
    metrics->tmInternalLeading = std::max(0, font.ascent + font.descent - font.size);
    metrics->tmAveCharWidth = font.average_width;
    metrics->tmMaxCharWidth = font.widest;
    metrics->tmWeight = record.lfWeight == FW_DONTCARE ? FW_NORMAL : record.lfWeight;
    metrics->tmDigitizedAspectX = static_cast<LONG>(drawing.context().dpi());
    metrics->tmDigitizedAspectY = metrics->tmDigitizedAspectX;
    metrics->tmFirstChar = u' ';
    metrics->tmLastChar = 0xFFFC;
    metrics->tmDefaultChar = 0xFFFD;
    metrics->tmBreakChar = u' ';
    metrics->tmItalic = record.lfItalic;
    metrics->tmUnderlined = record.lfUnderline;
    metrics->tmStruckOut = record.lfStrikeOut;
    // The bit says that widths differ.
    metrics->tmPitchAndFamily = font.is_monospaced ? 0 : 1;
    metrics->tmCharSet = record.lfCharSet;
    return TRUE;
}

namespace tvutil2 {

std::shared_ptr<const TextLayout> lay_out_text(HDC context, std::u16string_view text,
                                               TextOptions options) {
    const Drawing drawing(context);
    if (!drawing) return nullptr;
    const Writing writing(drawing);
    if (options.language == 0) options.language = plain_options().language;
    return writing ? writing.lay_out(text, options) : nullptr;
}

bool draw_text_line(HDC context, const TextLayout& layout, int line, int x, int y, COLORREF color) {
    const Drawing drawing(context);
    if (!drawing) return false;
    const Writing writing(drawing);
    if (!writing) return false;
    const auto by = drawing.shift();
    constexpr LONG kFar = Region::kFarthest / 64;
    const auto left = std::clamp(plus(x, by.x), -kFar, kFar);
    const auto top = std::clamp(plus(y, by.y), -kFar, kFar);
    layout.draw_line(drawing.canvas(), line, left, top + writing.ascent(), pixel_of(color));
    return true;
}

}  // namespace tvutil2
