#include "tvutil2/platform/window/controls/edit_lines.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/window/controls/text_breaks.h"

#include <algorithm>

namespace tvutil2 {
namespace {

constexpr std::size_t kLongestWhole = 1024;
constexpr std::size_t kPart = 512;
constexpr std::size_t kWrapped = 512;

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

TextOptions options_of(const RowFont& font, bool wraps) {
    TextOptions options;
    options.language = static_cast<LANGID>(GetThreadLocale() & 0xFFFF);
    options.is_right_to_left = font.is_right_to_left;
    options.tab_width = font.tab_width;
    if (wraps) {
        options.wrap_width = font.wrap_width;
        options.breaks_words = true;
    }
    return options;
}

bool runs_both_ways(std::u16string_view text) {
    return std::ranges::any_of(text, [](char16_t unit) {
        return (unit >= 0x590 && unit < 0x900) || (unit >= 0xD800 && unit < 0xDC00) ||
               (unit >= 0xFB1D && unit < 0xFEFF) || unit == 0x200F;
    });
}

}  // namespace

EditLines::Layout EditLines::lay_out(std::u16string_view text, const RowFont& font) {
    const auto options = options_of(font, false);
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
                         std::size_t next, std::vector<Row>& rows) const {
    if (font.wrap_width >= 0) {
        wrap(text, font, line, next, ~std::size_t{0}, 0, rows);
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

bool EditLines::is_old_start(std::size_t at, std::size_t from, std::ptrdiff_t moved) const {
    if (from >= m_rows.size()) return false;
    const auto old = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(at) - moved);
    const auto found = std::ranges::lower_bound(m_rows.begin() + static_cast<std::ptrdiff_t>(from),
                                                m_rows.end(), old, {}, &Row::start);
    return found != m_rows.end() && found->start == old;
}

// Ends early where a row begins that began there before the change, which only moved it.
void EditLines::wrap(std::u16string_view text, const RowFont& font, Range line, std::size_t next,
                     std::size_t sync_from, std::ptrdiff_t moved, std::vector<Row>& rows) const {
    const auto options = options_of(font, true);
    const auto whole = text.substr(0, line.end);
    auto block = kWrapped;
    auto at = line.start;
    do {
        const auto size = line.end - at <= block ? line.end - at : good_end(whole, at, block);
        const auto layout = lay_out_text(font.context, text.substr(at, size), options);
        const bool is_last = at + size == line.end;
        const auto lines = layout ? layout->line_count() : 1;
        if (lines == 1 && !is_last && block < Engine::kLongestText) {
            block *= 2;
            continue;
        }
        const auto begin = at;
        // The last one may go on in the next block.
        const auto whole_lines = is_last || lines == 1 ? lines : lines - 1;
        for (int i = 0; i < whole_lines; ++i) {
            const auto end = i + 1 < lines ? begin + layout->line_start(i + 1) : begin + size;
            rows.push_back({at, end, end});
            at = end;
            if (at < line.end && is_old_start(at, sync_from, moved)) return;
        }
    } while (at < line.end);
    rows.back().next = next;
}

void EditLines::reset(std::u16string_view text, const RowFont& font, bool is_one_line) {
    m_rows.clear();
    m_is_one_line = is_one_line;
    m_widest = 0;
    m_kept = {};
    for (std::size_t at = 0;;) {
        const auto end = is_one_line ? text.size() : line_end(text, at);
        const auto next = is_one_line ? end : behind_line_end(text, end);
        add_line(text, font, {at, end}, next, m_rows);
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
    if (m_is_one_line && font.wrap_width < 0) {
        if (!change_within(text, change)) reset(text, font, true);
        return;
    }
    if (change_within(text, change)) return;
    auto first = row_of(change.at);
    // What comes to stand behind a CR may belong to it; a word may fit into the row before now.
    const bool follows_return = change.at > 0 && text[change.at - 1] == u'\r';
    if (first > 0 && (follows_return || !m_rows[first - 1].ends_line())) --first;
    const auto last = row_of(change.at + change.removed);
    auto stop = last;
    while (stop + 1 < m_rows.size() && !m_rows[stop].ends_line()) ++stop;
    const auto moved = static_cast<std::ptrdiff_t>(change.inserted - change.removed);
    const auto limit = m_rows[stop].next + static_cast<std::size_t>(moved);
    std::vector<Row> fresh;
    auto kept = stop + 1;
    for (auto at = m_rows[first].start;;) {
        const auto end = line_end(text, at);
        const auto next = behind_line_end(text, end);
        if (font.wrap_width >= 0) {
            wrap(text, font, {at, end}, next, last + 1, moved, fresh);
            const auto reached = fresh.back().next;
            if (reached < end) {
                kept =
                    row_of(static_cast<std::size_t>(static_cast<std::ptrdiff_t>(reached) - moved));
                break;
            }
        } else {
            add_line(text, font, {at, end}, next, fresh);
        }
        // A text's last line ends without anything; one that ended so may go on now.
        if (next >= limit && (kept < m_rows.size() || end == next)) break;
        at = next;
    }
    for (auto i = kept; i < m_rows.size(); ++i) {
        for (auto* const each : {&m_rows[i].start, &m_rows[i].end, &m_rows[i].next}) {
            *each = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(*each) + moved);
        }
    }
    const auto begin = m_rows.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = m_rows.begin() + static_cast<std::ptrdiff_t>(kept);
    // Mostly as many as before: then nothing moves.
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
    if (start < end &&
        (row.parts.empty() &&
         (font.is_right_to_left || runs_both_ways(text.substr(row.start, row.end - row.start))))) {
        for (auto at = start; at < end;) {
            const auto next = std::min(next_character(text, at), end);
            const auto a = x_in_row(at);
            const auto b = x_in_row(next);
            found.push_back({std::min(a, b), std::max(a, b)});
            at = next;
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
