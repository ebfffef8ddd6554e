// What drawing needs of outlines, fonts and image files, as the drawing module carries it out.
//
// The module stands on the host's drawing libraries and is loaded when the first text is measured
// or the first outline drawn. Rectangles and copies of pixels don't need it.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

/// Pixels as Surface has them, and where drawing is let through: rectangles that don't overlap and
/// lie inside.
struct Canvas {
    std::uint32_t* pixels;
    int width;
    int height;
    std::span<const RECT> clip;
};

/// Pixels to be drawn.
struct Image {
    const std::uint32_t* pixels;
    int width;
    int height;
};

/// An outline in pixels; 0, 0 is the upper left corner of the first pixel.
class Path {
  public:
    enum class Step : std::uint8_t { move, line, curve, close };
    struct Element {
        Step step;
        double x1, y1, x2, y2, x, y;  ///< both controls of a curve, and the end
    };

    Path& move_to(double x, double y) { return add({Step::move, 0, 0, 0, 0, x, y}); }
    Path& line_to(double x, double y) { return add({Step::line, 0, 0, 0, 0, x, y}); }
    Path& curve_to(double x1, double y1, double x2, double y2, double x, double y) {
        return add({Step::curve, x1, y1, x2, y2, x, y});
    }
    Path& close() { return add({Step::close, 0, 0, 0, 0, 0, 0}); }
    TVUTIL_API Path& add_rect(double x, double y, double width, double height);
    /// The radius is held to half of the shorter side.
    TVUTIL_API Path& add_round_rect(double x, double y, double width, double height, double radius);
    TVUTIL_API Path& add_ellipse(double x, double y, double width, double height);

    [[nodiscard]] std::span<const Element> elements() const { return m_elements; }

  private:
    Path& add(const Element& element) {
        m_elements.push_back(element);
        return *this;
    }
    std::vector<Element> m_elements;
};

/// How an outline is drawn. Dashes and gaps take turns, in pixels; none is a line throughout.
struct Stroke {
    double width = 1;
    std::span<const double> dashes;
    bool is_round = false;  ///< ends and corners
};

struct FontRequest {
    std::string families;  ///< UTF-8, with commas between them
    int size = 0;          ///< pixels; of the characters, or of the line
    bool is_line_height = false;
    int weight = 400;
    bool is_italic = false;
    bool is_underlined = false;
    bool is_struck_out = false;
    friend bool operator==(const FontRequest&, const FontRequest&) = default;
};

/// Pixels.
struct FontMetrics {
    int ascent = 0;
    int descent = 0;
    int size = 0;  ///< of the characters: less than the line's height
    int average_width = 0;
    int widest = 0;
    bool is_monospaced = false;
};

/// An open font; for all threads.
class Font {
  public:
    Font() = default;
    virtual ~Font() = default;
    Font(const Font&) = delete;
    Font& operator=(const Font&) = delete;
    [[nodiscard]] virtual const FontMetrics& metrics() const = 0;
};

enum class Ellipsis : std::uint8_t { none, middle, end };

struct TextOptions {
    int wrap_width = -1;  ///< lines are broken between words to this many pixels; -1: they aren't
    bool breaks_words = false;  ///< and where a word doesn't fit, inside it
    int ellipsis_width = -1;    ///< what is wider is cut, as `ellipsis` says
    Ellipsis ellipsis = Ellipsis::none;
    bool is_right_to_left = false;  ///< the paragraph; what is in it decides for itself
    int tab_width = 0;              ///< pixels; 0: that of 8 average characters
    int underlined = -1;            ///< unit of the character to be underlined; -1: none
    LANGID language = 0;            ///< chooses among forms of the same characters
    friend bool operator==(const TextOptions&, const TextOptions&) = default;
};

/// A paragraph, shaped and broken into lines. Positions in the text are in its 16-bit units. For
/// the thread that made it.
class TextLayout {
  public:
    TextLayout() = default;
    virtual ~TextLayout() = default;
    TextLayout(const TextLayout&) = delete;
    TextLayout& operator=(const TextLayout&) = delete;

    /// What a unit of the text takes of a line. Of a character, that is its first unit's.
    struct Unit {
        std::uint16_t advance : 13;  ///< pixels
        std::uint16_t begins_character : 1;
        std::uint16_t may_begin_line : 1;
        std::uint16_t is_blank : 1;
    };

    /// At least 1.
    [[nodiscard]] virtual int line_count() const = 0;
    /// Pixels that the line advances by, blanks at its end included.
    [[nodiscard]] virtual int line_width(int line) const = 0;
    [[nodiscard]] virtual std::size_t line_start(int line) const = 0;
    [[nodiscard]] virtual bool is_cut() const = 0;
    /// `left` is where the line begins, `baseline` where its characters stand. The colour is
    /// 0xAARRGGBB, not multiplied.
    virtual void draw_line(const Canvas& canvas, int line, int left, int baseline,
                           std::uint32_t color) const = 0;
    /// Where a caret before that unit stands, in pixels from the line's left.
    [[nodiscard]] virtual int x_of(int line, std::size_t unit) const = 0;
    /// Where the character at that unit ends: the next one may be read in the other direction.
    [[nodiscard]] virtual int end_of(int line, std::size_t unit) const = 0;
    /// The place for a caret that is nearest to `x`: always between characters as people see them.
    [[nodiscard]] virtual std::size_t unit_at(int line, int x) const = 0;
    /// The next such place behind `unit`, and the one before it.
    [[nodiscard]] virtual std::size_t next_caret(std::size_t unit) const = 0;
    [[nodiscard]] virtual std::size_t previous_caret(std::size_t unit) const = 0;
    /// Of a paragraph in one line, one for each unit, in the order of the text.
    [[nodiscard]] virtual std::vector<Unit> units() const = 0;
};

/// Any thread. What fails for lack of memory gives null or does nothing.
class Engine {
  public:
    Engine() = default;
    virtual ~Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    virtual void fill(const Canvas& canvas, const Path& path, std::uint32_t color) = 0;
    virtual void stroke(const Canvas& canvas, const Path& path, const Stroke& stroke,
                        std::uint32_t color) = 0;
    /// `from` of the image, scaled into `to`, over what is there. A rectangle with negative width
    /// or height is mirrored.
    virtual void draw_image(const Canvas& canvas, const RECT& to, const Image& image,
                            const RECT& from, double opacity) = 0;

    [[nodiscard]] virtual std::shared_ptr<const Font> open_font(const FontRequest& request) = 0;
    /// Up to kLongestText units without line breaks.
    [[nodiscard]] virtual std::shared_ptr<const TextLayout> lay_out(
        const std::shared_ptr<const Font>& font, std::u16string_view text,
        const TextOptions& options) = 0;

    /// Appends a PNG of the pixels; 0 or an error.
    [[nodiscard]] virtual DWORD encode_png(const Image& image, std::string& bytes) = 0;

    static constexpr std::size_t kLongestText = 4096;
    static constexpr int kLargestFont = 2048;
};

/// The module's one function.
using OpenEngine = Engine*();
inline constexpr auto kOpenEngine = "tvutil2_open_engine";

/// The drawing module's engine, which lives for ever; null with ERROR_MOD_NOT_FOUND where the
/// module, or what it stands on, isn't installed.
[[nodiscard]] TVUTIL_API Engine* drawing_engine();

}  // namespace tvutil2
