#include "tvutil2/platform/window/controls/edit_lines.h"

#include "tvutil2/platform/window/controls/text_breaks.h"

#include <algorithm>

namespace tvutil2 {
namespace {

constexpr std::size_t kLongestWhole = 1024;
constexpr std::size_t kPart = 512;

std::size_t line_end(std::u16string_view text, std::size_t from) {
    const auto found = text.find_first_of(u"\r\n", from);
    return found == std::u16string_view::npos ? text.size() : found;
}

std::size_t behind_line_end(std::u16string_view text, std::size_t at) {
    if (at >= text.size()) return text.size();
    const bool is_pair = text[at] == u'\r' && at + 1 < text.size() && text[at + 1] == u'\n';
    return at + (is_pair ? 2 : 1);
}

// Behind a blank if there is one near, and never within a character.
std::size_t good_end(std::u16string_view text, std::size_t start, std::size_t size) {
    if (start + size >= text.size()) return text.size() - start;
    const auto blank = text.substr(start, size).rfind(u' ');
    if (blank != std::u16string_view::npos && blank + 64 > size) return blank + 1;
    const auto end = next_character(text, previous_character(text, start + size));
    return end > start ? end - start : size;
}

bool runs_both_ways(std::u16string_view text) {
    return std::ranges::any_of(text, [](char16_t unit) {
        return (unit >= 0x590 && unit < 0x900) || (unit >= 0xD800 && unit < 0xDC00) ||
               (unit >= 0xFB1D && unit < 0xFEFF) || unit == 0x200F;
    });
}

}  // namespace

EditLines::Layout EditLines::lay_out(std::u16string_view text, const RowFont& font) {
    const auto options = row_options(font);
    // Shorter ones are kept below.
    if (text.size() <= 160) return lay_out_text(font.context, text, options);
    for (const auto& each : m_kept) {
        if (each.layout && each.text == text) return each.layout;
    }
    auto& slot = m_kept[m_next_kept++ % m_kept.size()];
    slot = {std::u16string(text), lay_out_text(font.context, text, options)};
    return slot.layout;
}

int EditLines::measure(std::u16string_view text, const RowFont& font, std::size_t start,
                       Part& part) {
    if (part.width < 0) {
        const auto layout = lay_out(text.substr(start, part.size), font);
        part.width = layout ? layout->line_width(0) : 0;
    }
    return part.width;
}

void EditLines::add_line(std::u16string_view text, const RowFont& font, Range line,
                         std::size_t next, const Rest& rest, std::vector<Row>& rows) const {
    if (font.wrap_width >= 0) {
        wrap(text, font.wrap_width, line, next, rest, rows);
        return;
    }
    Row row{line.start, line.end, next};
    if (line.end - line.start > kLongestWhole) {
        const auto whole = text.substr(0, line.end);
        for (auto at = line.start; at < line.end;) {
            const auto size = good_end(whole, at, kPart);
            row.parts.push_back({size});
            at += size;
        }
    }
    rows.push_back(std::move(row));
}

bool EditLines::is_old_start(std::size_t at, const Rest& rest) const {
    if (at < rest.from) return false;
    const auto old = at - rest.moved;
    const auto found = std::ranges::lower_bound(m_rows, old, {}, &Row::start);
    return found != m_rows.end() && found->start == old;
}

// Ends early where a row begins that began there before the change, which only moved it.
void EditLines::wrap(std::u16string_view text, int wrap_width, Range line, std::size_t next,
                     const Rest& rest, std::vector<Row>& rows) const {
    auto at = line.start;
    do {
        const auto end = m_wrapping.row_end(text, wrap_width, at, line.end);
        rows.push_back({at, end, end});
        at = end;
        if (at < line.end && is_old_start(at, rest)) return;
    } while (at < line.end);
    rows.back().next = next;
}

void EditLines::reset(std::u16string_view text, const RowFont& font, bool is_one_line) {
    m_rows.clear();
    m_is_one_line = is_one_line;
    m_widest = 0;
    m_kept = {};
    if (font.wrap_width >= 0) m_wrapping.reset(text, font);
    for (std::size_t at = 0;;) {
        const auto end = is_one_line ? text.size() : line_end(text, at);
        const auto next = is_one_line ? end : behind_line_end(text, end);
        add_line(text, font, {at, end}, next, {}, m_rows);
        if (end == next) break;
        at = next;
    }
}

EditLines::Range EditLines::row(std::size_t index) const {
    const auto& row = m_rows[std::min(index, m_rows.size() - 1)];
    return {row.start, row.end};
}

std::size_t EditLines::row_of(std::size_t at) const {
    const auto behind = std::ranges::upper_bound(m_rows, at, {}, &Row::start);
    return behind == m_rows.begin() ? 0 : static_cast<std::size_t>(behind - m_rows.begin()) - 1;
}

// Within one long row only the parts that it touches change.
bool EditLines::change_within(std::u16string_view text, const EditText::Change& change) {
    auto index = row_of(change.at);
    auto& row = m_rows[index];
    if (row.parts.empty() || change.at + change.removed > row.end) return false;
    const auto inserted = text.substr(change.at, change.inserted);
    if (!m_is_one_line && std::ranges::any_of(inserted, is_line_end)) return false;
    if (inserted.size() > kLongestWhole) return false;
    auto first = row.parts.begin();
    auto start = row.start;
    while (first + 1 != row.parts.end() && start + first->size < change.at) {
        start += first->size;
        ++first;
    }
    auto last = first;
    auto end = start + first->size;
    while (end < change.at + change.removed) end += (++last)->size;
    first->size = end - start - change.removed + change.inserted;
    first->width = -1;
    first = row.parts.erase(first + 1, last + 1) - 1;
    if (first->size > 2 * kPart) {
        const auto size = good_end(text, start, kPart);
        const auto rest = first->size - size;
        first->size = size;
        row.parts.insert(first + 1, Part{rest});
    } else if (first->size == 0 && row.parts.size() > 1) {
        row.parts.erase(first);
    }
    row.width = -1;
    const auto moved = change.inserted - change.removed;
    row.end += moved;
    row.next += moved;
    for (++index; index < m_rows.size(); ++index) {
        m_rows[index].start += moved;
        m_rows[index].end += moved;
        m_rows[index].next += moved;
    }
    return true;
}

void EditLines::change(std::u16string_view text, const RowFont& font,
                       const EditText::Change& change) {
    if (m_is_one_line) {
        if (!change_within(text, change)) reset(text, font, true);
        return;
    }
    if (change_within(text, change)) return;
    if (font.wrap_width >= 0) m_wrapping.change(text, font, change);
    const auto reach = font.wrap_width >= 0 ? Wrapping::kReach : 0;
    auto first = row_of(change.at - std::min(change.at, reach));
    // What comes to stand behind a CR may belong to it; a word may fit into the row before now.
    const auto start = m_rows[first].start;
    const bool follows_return = start > 0 && text[start - 1] == u'\r';
    if (first > 0 && (follows_return || !m_rows[first - 1].ends_line())) --first;
    auto stop = row_of(change.at + change.removed);
    while (stop + 1 < m_rows.size() && !m_rows[stop].ends_line()) ++stop;
    const Rest rest{change.at + change.inserted + reach, change.inserted - change.removed};
    const auto limit = m_rows[stop].next + rest.moved;
    std::vector<Row> fresh;
    auto kept = stop + 1;
    for (auto at = m_rows[first].start;;) {
        const auto end = line_end(text, at);
        const auto next = behind_line_end(text, end);
        add_line(text, font, {at, end}, next, rest, fresh);
        if (const auto reached = fresh.back().next; reached < end) {
            kept = row_of(reached - rest.moved);
            break;
        }
        // A text's last line ends without anything; one that ended so may go on now.
        if (next >= limit && (kept < m_rows.size() || end == next)) break;
        at = next;
    }
    for (auto i = kept; i < m_rows.size(); ++i) {
        for (auto* const each : {&m_rows[i].start, &m_rows[i].end, &m_rows[i].next}) {
            *each += rest.moved;
        }
    }
    put_rows(first, kept, std::move(fresh));
}

// In place of those before `kept`. Mostly they are as many as before: then nothing moves.
void EditLines::put_rows(std::size_t first, std::size_t kept, std::vector<Row>&& fresh) {
    const auto begin = m_rows.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = m_rows.begin() + static_cast<std::ptrdiff_t>(kept);
    const auto same = std::min(static_cast<std::ptrdiff_t>(fresh.size()), end - begin);
    std::move(fresh.begin(), fresh.begin() + same, begin);
    if (begin + same != end) {
        m_rows.erase(begin + same, end);
    } else {
        m_rows.insert(end, std::make_move_iterator(fresh.begin() + same),
                      std::make_move_iterator(fresh.end()));
    }
}

int EditLines::width_of(std::u16string_view text, const RowFont& font, std::size_t index) {
    auto& row = m_rows[index];
    if (row.width < 0) {
        row.width = 0;
        auto at = row.start;
        for (auto& part : row.parts) {
            row.width += measure(text, font, at, part);
            at += part.size;
        }
        if (row.parts.empty()) {
            Part whole{row.end - row.start};
            row.width = measure(text, font, row.start, whole);
        }
        m_widest = std::max(m_widest, row.width);
    }
    return row.width;
}

int EditLines::x_of(std::u16string_view text, const RowFont& font, std::size_t at) {
    auto& row = m_rows[row_of(at)];
    at = std::min(at, row.end);
    auto start = row.start;
    auto size = row.end - row.start;
    int x = 0;
    for (auto& part : row.parts) {
        size = part.size;
        if (at <= start + size) break;
        x += measure(text, font, start, part);
        start += size;
    }
    const auto layout = lay_out(text.substr(start, size), font);
    return layout ? x + layout->x_of(0, at - start) : x;
}

std::size_t EditLines::place_at(std::u16string_view text, const RowFont& font, std::size_t index,
                                int x) {
    auto& row = m_rows[std::min(index, m_rows.size() - 1)];
    auto start = row.start;
    auto size = row.end - row.start;
    for (auto& part : row.parts) {
        size = part.size;
        const auto width = measure(text, font, start, part);
        if (x < width || start + size >= row.end) break;
        x -= width;
        start += size;
    }
    const auto layout = lay_out(text.substr(start, size), font);
    auto place = layout ? start + std::min(layout->unit_at(0, x), size) : start;
    // Behind the last character of a row that wraps is the next row's begin.
    if (place == row.end && !row.ends_line() && index + 1 < m_rows.size() && place > row.start) {
        place = previous_character(text, place);
    }
    return place;
}

std::vector<EditLines::Span> EditLines::spans(std::u16string_view text, const RowFont& font,
                                              std::size_t index, Range range) {
    const auto& row = m_rows[index];
    const auto start = std::max(range.start, row.start);
    const auto end = std::min(range.end, row.end);
    std::vector<Span> found;
    const auto x_in_row = [&](std::size_t at) {
        if (at < row.end || row_of(at) == index) return x_of(text, font, at);
        return width_of(text, font, index);
    };
    const auto shown = text.substr(row.start, row.end - row.start);
    if (start < end && row.parts.empty() && (font.is_right_to_left || runs_both_ways(shown))) {
        const auto layout = lay_out(shown, font);
        for (auto at = start; layout && at < end; at = next_character(text, at)) {
            const auto a = layout->x_of(0, at - row.start);
            const auto b = layout->end_of(0, at - row.start);
            found.push_back({std::min(a, b), std::max(a, b)});
        }
    } else if (start < end) {
        found.push_back({x_in_row(start), x_in_row(end)});
    }
    return found;
}

void EditLines::draw(std::u16string_view text, const RowFont& font, std::size_t index, POINT corner,
                     Span shown, COLORREF color) {
    auto& row = m_rows[index];
    if (row.parts.empty()) {
        const auto layout = lay_out(text.substr(row.start, row.end - row.start), font);
        if (layout) draw_text_line(font.context, *layout, 0, corner.x, corner.y, color);
        return;
    }
    auto start = row.start;
    int x = 0;
    for (auto& part : row.parts) {
        const auto width = measure(text, font, start, part);
        if (x > shown.right) break;
        if (x + width >= shown.left) {
            const auto layout = lay_out(text.substr(start, part.size), font);
            if (layout) draw_text_line(font.context, *layout, 0, corner.x + x, corner.y, color);
        }
        x += width;
        start += part.size;
    }
}

}  // namespace tvutil2
