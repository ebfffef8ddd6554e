// The text of an edit control: what it is, what of it is selected, and what was done to it.
//
// Knows no window, font or line. Positions are in 16-bit units; those that are given are held
// within the text. For one thread at a time.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

class TVUTIL_API EditText {
  public:
    /// A part of the text that became another one.
    struct Change {
        std::size_t at = 0, removed = 0, inserted = 0;
    };
    struct Range {
        std::size_t start = 0, end = 0;
        [[nodiscard]] bool is_empty() const { return start == end; }
        friend bool operator==(const Range&, const Range&) = default;
    };
    /// What is typed one behind the other, or deleted so, is undone at once.
    enum class Kind : std::uint8_t { typed, deleted, other };

    [[nodiscard]] const std::u16string& text() const { return m_text; }
    [[nodiscard]] std::size_t size() const { return m_text.size(); }
    /// Another text, with the caret in front and nothing to undo.
    void set(std::u16string text);

    /// Where the selection was begun, and where it ends now: the caret.
    [[nodiscard]] std::size_t anchor() const { return m_anchor; }
    [[nodiscard]] std::size_t caret() const { return m_caret; }
    [[nodiscard]] Range selection() const;
    [[nodiscard]] std::u16string_view selected() const;
    void select(std::size_t anchor, std::size_t caret);

    /// Puts text in the place of the selection, and the caret behind it.
    Change replace(std::u16string_view by, Kind kind) { return replace(selection(), by, kind); }
    /// The same with another part, which isn't selected when it is undone.
    Change replace(const Range& range, std::u16string_view by, Kind kind);

    [[nodiscard]] bool can_undo() const { return m_done > 0; }
    [[nodiscard]] bool can_redo() const { return m_done < m_steps.size(); }
    /// The last change backwards, or the last one undone once more. With nothing there: no change.
    Change undo();
    Change redo();
    void forget_steps();
    /// The next change is undone by itself.
    void end_step() { m_joins = false; }

  private:
    struct Step {
        std::size_t at;
        std::u16string removed, inserted;
        std::size_t anchor, caret;  // before
        Kind kind;
    };
    static constexpr std::size_t kMostSteps = 1000;
    static constexpr std::size_t kMostUnits = std::size_t{4} << 20;

    void note(const Range& range, std::u16string_view by, Kind kind);
    bool joins(const Range& range, std::u16string_view by, Kind kind) const;

    std::u16string m_text;
    std::size_t m_anchor = 0, m_caret = 0;
    std::vector<Step> m_steps;
    std::size_t m_done = 0;   // of the steps
    std::size_t m_units = 0;  // that the steps keep
    bool m_joins = false;
};

}  // namespace tvutil2
