// Where the rows of a text end that wraps at a width.
//
// Every unit is measured once, with what stands around it, and again when something near it
// changes. A row then only adds up, so that a word which moves down a row in each of a thousand
// rows costs little. Lengths in pixels. For one thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/controls/edit_text.h"

#include <string_view>
#include <vector>

namespace tvutil2 {

/// Where the text is measured and drawn. Without the drawing module everything is 0 wide.
struct RowFont {
    HDC context = nullptr;
    bool is_right_to_left = false;
    int tab_width = 0;    ///< 0: that of 8 average characters
    int wrap_width = -1;  ///< -1: rows end with lines only
};

/// How a row of that font is laid out.
[[nodiscard]] TextOptions row_options(const RowFont& font);

class Wrapping {
  public:
    /// So far from a change units are measured anew.
    static constexpr std::size_t kReach = 32;

    void reset(std::u16string_view text, const RowFont& font);
    /// `text` is what the change has made of it.
    void change(std::u16string_view text, const RowFont& font, const EditText::Change& change);

    /// The end of the row that begins at `at`, in a line that ends at `end`. Behind a blank, which
    /// may reach out of the width; within a word where that is wider; behind a character at least.
    [[nodiscard]] std::size_t row_end(std::u16string_view text, int wrap_width, std::size_t at,
                                      std::size_t end) const;

  private:
    void measure(std::u16string_view text, const RowFont& font, std::size_t from, std::size_t to);

    std::vector<TextLayout::Unit> m_units;
    int m_tab_width = 1;
};

}  // namespace tvutil2
