// A line while it is being read.
#pragma once

#include "tvutil2/platform/base/text_length.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace tvutil2 {

/// Gathers the units of a line in a work area; a line that is longer than it moves piece by piece
/// to the caller's string. The last piece, which may be a full one, ends at its first zero.
template <class Unit>
class TextLine {
  public:
    /// Empties `long_line`, which takes lines that have no room in the work area.
    explicit TextLine(std::basic_string<Unit>& long_line) : m_long(long_line) { m_long.clear(); }

    void put(Unit unit) {
        if (m_count == kPiece) move_piece();
        m_units[m_count++] = unit;
    }

    /// Takes `count` units that `convert(first, count, out)` puts out, a part at a time.
    template <class Convert>
    void put_run(std::size_t count, const Convert& convert) {
        for (std::size_t taken = 0; taken < count;) {
            if (m_count == kPiece) move_piece();
            const auto part = std::min(count - taken, kPiece - m_count);
            convert(taken, part, m_units + m_count);
            m_count += part;
            taken += part;
        }
    }

    /// The whole line, with a zero behind it. Nothing may be put any more.
    std::basic_string_view<Unit> finish() {
        const auto last = last_piece();
        if (m_long.empty()) return last;
        return m_long.append(last);
    }

    /// The whole line in the caller's string.
    void finish_in_string() { m_long.append(last_piece()); }

  private:
    static constexpr std::size_t kPiece = 1023;

    std::basic_string_view<Unit> last_piece() {
        m_units[m_count] = 0;
        if constexpr (sizeof(Unit) == 1) {
            return m_units;
        } else {
            return {m_units, text_length(m_units)};
        }
    }

    void move_piece() {
        m_long.append(m_units, kPiece);
        m_count = 0;
    }

    Unit m_units[kPiece + 1];
    std::size_t m_count = 0;
    std::basic_string<Unit>& m_long;
};

}  // namespace tvutil2
