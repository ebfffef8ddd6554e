#include "tvutil2/platform/draw/text.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/draw/context_object.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

using tvutil2::Drawing;
using tvutil2::Ellipsis;
using tvutil2::Engine;
using tvutil2::fail_with;
using tvutil2::Font;
using tvutil2::pixel_of;
using tvutil2::TextLayout;
using tvutil2::TextOptions;

namespace {

using Layout = std::shared_ptr<const TextLayout>;

// How a context writes.
struct Writing {
    Engine* engine = nullptr;
    std::shared_ptr<const Font> font;

    explicit Writing(const Drawing& drawing) {
        engine = tvutil2::drawing_engine();
        if (engine != nullptr) font = drawing.state().font.object->font();
    }
    explicit operator bool() const { return font != nullptr; }

    [[nodiscard]] int ascent() const { return font->metrics().ascent; }
    [[nodiscard]] int line_height() const { return ascent() + font->metrics().descent; }
    [[nodiscard]] Layout lay_out(std::u16string_view text, const TextOptions& options) const {
        return engine->lay_out(font, text, options);
    }
};

TextOptions plain_options() {
    TextOptions options;
    options.language = static_cast<LANGID>(GetThreadLocale() & 0xFFFF);
    return options;
}

// Where a text may be parted that is too long to be shaped at once: at a blank if there is one, and
// never within a pair.
std::size_t first_part(std::u16string_view text) {
    constexpr auto kMost = Engine::kLongestText;
    if (text.size() <= kMost) return text.size();
    const auto blank = text.substr(0, kMost).rfind(u' ');
    if (blank != std::u16string_view::npos && blank > kMost / 2) return blank + 1;
    const bool is_in_pair = text[kMost] >= 0xDC00 && text[kMost] < 0xE000;
    return is_in_pair ? kMost - 1 : kMost;
}

// One line, or a part of it, where it is to be drawn: `x` from the left of its line.
struct Piece {
    Layout layout;
    int line;
    int x;
};

struct Line {
    std::vector<Piece> pieces;
    int width = 0;
};

// What "&" stands for is taken out; `underlined` is the place of the last character that it marked.
std::u16string without_prefixes(std::u16string_view text, int& underlined) {
    std::u16string shown;
    shown.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'&') {
            if (++i == text.size()) break;
            if (text[i] != u'&') underlined = static_cast<int>(shown.size());
        }
        shown += text[i];
    }
    return shown;
}

// A text on its way into a rectangle.
class DrawnText {
  public:
    DrawnText(const Writing& writing, std::u16string_view text, int width, UINT format)
        : m_writing(writing), m_width(std::max(width, 0)), m_format(format) {
        int underlined = -1;
        if ((format & DT_NOPREFIX) == 0 && text.find(u'&') != std::u16string_view::npos) {
            m_own = without_prefixes(text, underlined);
            text = m_own;
        }
        if ((format & DT_HIDEPREFIX) != 0) underlined = -1;
        if ((format & DT_EXPANDTABS) == 0 && text.find(u'\t') != std::u16string_view::npos) {
            if (text.data() != m_own.data()) m_own = text;
            std::ranges::replace(m_own, u'\t', u' ');
            text = m_own;
        }
        add_paragraphs(text, underlined);
    }

    [[nodiscard]] const std::vector<Line>& lines() const { return m_lines; }
    [[nodiscard]] int widest() const {
        int width = 0;
        for (const auto& line : m_lines) width = std::max(width, line.width);
        return width;
    }

  private:
    [[nodiscard]] bool has(UINT flag) const { return (m_format & flag) != 0; }

    [[nodiscard]] TextOptions options() const {
        auto options = plain_options();
        options.is_right_to_left = has(DT_RTLREADING);
        options.breaks_words = has(DT_EDITCONTROL);
        if (has(DT_WORDBREAK) && !has(DT_SINGLELINE)) options.wrap_width = m_width;
        return options;
    }
    [[nodiscard]] Ellipsis ellipsis() const {
        if (has(DT_CALCRECT) || (has(DT_WORDBREAK) && !has(DT_SINGLELINE))) return Ellipsis::none;
        if (has(DT_PATH_ELLIPSIS)) return Ellipsis::middle;
        return has(DT_END_ELLIPSIS | DT_WORD_ELLIPSIS) ? Ellipsis::end : Ellipsis::none;
    }

    void add_paragraphs(std::u16string_view text, int underlined) {
        while (true) {
            const auto end =
                has(DT_SINGLELINE) ? std::u16string_view::npos : text.find_first_of(u"\r\n");
            add_paragraph(text.substr(0, end), underlined);
            if (end == std::u16string_view::npos) return;
            const bool is_pair =
                text[end] == u'\r' && end + 1 < text.size() && text[end + 1] == u'\n';
            const auto next = end + (is_pair ? 2 : 1);
            underlined -= static_cast<int>(std::min<std::size_t>(next, 0x7FFFFFFF));
            text.remove_prefix(next);
            if (text.empty()) return;
        }
    }

    void add_paragraph(std::u16string_view text, int underlined) {
        auto how = options();
        if (ellipsis() != Ellipsis::none) {
            how.underlined = underlined;
            m_lines.push_back(shortened(text, how));
            return;
        }
        Line line;
        bool is_first = true;
        while (is_first || !text.empty()) {
            is_first = false;
            const auto size = first_part(text);
            how.underlined = underlined;
            const auto layout = m_writing.lay_out(text.substr(0, size), how);
            if (how.wrap_width >= 0) {
                add_lines(layout);
            } else {
                append(line, layout);
            }
            underlined -= static_cast<int>(size);
            text.remove_prefix(size);
        }
        if (how.wrap_width < 0) m_lines.push_back(std::move(line));
    }

    void add_lines(const Layout& layout) {
        for (int i = 0; i < layout->line_count(); ++i) {
            m_lines.push_back({{{layout, i, 0}}, layout->line_width(i)});
        }
    }

    static void append(Line& line, const Layout& layout) {
        line.pieces.push_back({layout, 0, line.width});
        line.width = tvutil2::plus(line.width, layout->line_width(0));
    }

    Line shortened(std::u16string_view text, TextOptions how) {
        const bool is_path = has(DT_PATH_ELLIPSIS);
        how.ellipsis = ellipsis();
        how.ellipsis_width = m_width;
        std::u16string own;
        if (text.size() > Engine::kLongestText) {
            // No line shows so much: its two ends will do.
            constexpr auto kEnd = Engine::kLongestText / 2 - 1;
            own = text.substr(0, kEnd);
            own += u'\u2026';
            if (is_path) own += text.substr(text.size() - kEnd);
            text = own;
        }
        std::u16string path;
        if (is_path) {
            path = shortened_path(text, how);
            text = path;
            how.ellipsis = Ellipsis::end;
        }
        Line line;
        append(line, m_writing.lay_out(text, how));
        return line;
    }

    // As much of the front as fits beside the name, which stays whole if it can.
    std::u16string shortened_path(std::u16string_view text, const TextOptions& like) {
        TextOptions how = like;
        how.ellipsis = Ellipsis::none;
        how.underlined = -1;
        const auto fits = [&](std::u16string_view candidate) {
            return m_writing.lay_out(candidate, how)->line_width(0) <= m_width;
        };
        const auto slash = text.find_last_of(u"\\/");
        if (fits(text) || slash == std::u16string_view::npos) return std::u16string(text);
        const auto name = text.substr(slash);
        const auto with_front = [&](std::size_t size) {
            return std::u16string(text.substr(0, size)) + u'\u2026' + std::u16string(name);
        };
        std::size_t least = 0;
        std::size_t most = slash;
        while (least < most) {
            const auto middle = (least + most + 1) / 2;
            if (fits(with_front(middle))) {
                least = middle;
            } else {
                most = middle - 1;
            }
        }
        if (least > 0 && text[least] >= 0xDC00 && text[least] < 0xE000) --least;
        return with_front(least);
    }

    const Writing& m_writing;
    int m_width;
    UINT m_format;
    std::u16string m_own;
    std::vector<Line> m_lines;
};

// Draws a line whose upper left corner is at a pixel of the surface, through `clip`.
void draw_line(const Drawing& drawing, const Writing& writing, const tvutil2::Region& clip,
               const Line& line, POINT at) {
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

Line line_of(const Writing& writing, std::u16string_view text, TextOptions options) {
    Line line;
    do {
        const auto size = first_part(text);
        const auto layout = writing.lay_out(text.substr(0, size), options);
        line.pieces.push_back({layout, 0, line.width});
        line.width = tvutil2::plus(line.width, layout->line_width(0));
        text.remove_prefix(size);
    } while (!text.empty());
    return line;
}

// Where the upper left corner of a line is that is aligned at a place.
POINT corner_of(const Writing& writing, const Line& line, UINT align, POINT at) {
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
    const DrawnText drawn(writing, shown, width, format);
    const auto height =
        tvutil2::saturated(static_cast<std::int64_t>(drawn.lines().size()) * line_height);
    if ((format & DT_CALCRECT) != 0) {
        rect->right = tvutil2::plus(rect->left, drawn.widest());
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
    for (const auto& line : drawn.lines()) {
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
