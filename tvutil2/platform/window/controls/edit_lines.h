// How the text of an edit control lies in rows, and where its characters stand in them.
//
// Rows end with the text's lines (CR LF, LF, CR) and, where it wraps, at a width. A change measures
// anew what it touches, whatever the text's size: rows without wrapping that are longer than 1024
// units are kept in parts, each shaped by itself. Lengths in pixels. For one thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/controls/edit_text.h"
#include "tvutil2/platform/window/controls/wrapping.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

class TVUTIL_API EditLines {
  public:
    /// Without the characters that end its line.
    using Range = EditText::Range;

    void reset(std::u16string_view text, const RowFont& font, bool is_one_line);
    /// `text` is what the change has made of it.
    void change(std::u16string_view text, const RowFont& font, const EditText::Change& change);

    /// At least 1.
    [[nodiscard]] std::size_t count() const { return m_rows.size(); }
    [[nodiscard]] Range row(std::size_t index) const;
    /// The row that a caret stands in.
    [[nodiscard]] std::size_t row_of(std::size_t at) const;
    [[nodiscard]] int width_of(std::u16string_view text, const RowFont& font, std::size_t row);
    /// Of the rows that were measured so far.
    [[nodiscard]] int widest() const { return m_widest; }
    /// From the row's left.
    [[nodiscard]] int x_of(std::u16string_view text, const RowFont& font, std::size_t at);
    [[nodiscard]] std::size_t place_at(std::u16string_view text, const RowFont& font,
                                       std::size_t row, int x);
    /// What the characters of a range take of the row, left to right: one part, or several where
    /// directions mix.
    struct Span {
        int left, right;
    };
    [[nodiscard]] std::vector<Span> spans(std::u16string_view text, const RowFont& font,
                                          std::size_t row, Range range);
    /// Draws what of the row lies between `left` and `right` (from the row's left).
    void draw(std::u16string_view text, const RowFont& font, std::size_t row, POINT corner,
              Span shown, COLORREF color);

  private:
    struct Part {
        std::size_t size;
        int width = -1;
    };
    struct Row {
        std::size_t start = 0, end = 0;
        std::size_t next = 0;  ///< behind what ends its line
        int width = -1;
        std::vector<Part> parts = {};  ///< of a long row
        [[nodiscard]] bool ends_line() const { return next != end; }
    };
    struct Kept {
        std::u16string text;
        std::shared_ptr<const TextLayout> layout;
    };
    using Layout = std::shared_ptr<const TextLayout>;

    Layout lay_out(std::u16string_view text, const RowFont& font);
    int measure(std::u16string_view text, const RowFont& font, std::size_t start, Part& part);
    bool change_within(std::u16string_view text, const EditText::Change& change);
    // From where on the old rows hold if one begins where a new one does, and how far they moved.
    struct Rest {
        std::size_t from = ~std::size_t{0};
        std::size_t moved = 0;  ///< what is negative wraps around
    };
    void add_line(std::u16string_view text, const RowFont& font, Range line, std::size_t next,
                  const Rest& rest, std::vector<Row>& rows) const;
    void wrap(std::u16string_view text, int wrap_width, Range line, std::size_t next,
              const Rest& rest, std::vector<Row>& rows) const;
    [[nodiscard]] bool is_old_start(std::size_t at, const Rest& rest) const;
    void put_rows(std::size_t first, std::size_t kept, std::vector<Row>&& fresh);

    Wrapping m_wrapping;
    std::vector<Row> m_rows{Row{}};
    bool m_is_one_line = true;
    int m_widest = 0;
    std::array<Kept, 8> m_kept;  ///< layouts of parts that were asked for lately
    std::size_t m_next_kept = 0;
};

}  // namespace tvutil2
