#include "tvutil2/platform/window/controls/edit_text.h"

#include <algorithm>

namespace tvutil2 {

void EditText::set(std::u16string text) {
    m_text = std::move(text);
    m_anchor = m_caret = 0;
    forget_steps();
}

EditText::Range EditText::selection() const {
    return {std::min(m_anchor, m_caret), std::max(m_anchor, m_caret)};
}

std::u16string_view EditText::selected() const {
    const auto [start, end] = selection();
    return std::u16string_view(m_text).substr(start, end - start);
}

void EditText::select(std::size_t anchor, std::size_t caret) {
    anchor = std::min(anchor, m_text.size());
    caret = std::min(caret, m_text.size());
    if (anchor == m_anchor && caret == m_caret) return;
    m_anchor = anchor;
    m_caret = caret;
    m_joins = false;
}

bool EditText::joins(const Range& range, std::u16string_view by, Kind kind) const {
    if (!m_joins || m_done == 0) return false;
    const auto& last = m_steps[m_done - 1];
    if (last.kind != kind) return false;
    if (kind == Kind::typed) {
        return range.is_empty() && range.start == last.at + last.inserted.size() &&
               by.find(u'\n') == std::u16string_view::npos;
    }
    return kind == Kind::deleted && by.empty() && last.inserted.empty() &&
           (range.end == last.at || range.start == last.at);
}

void EditText::note(const Range& range, std::u16string_view by, Kind kind) {
    while (m_steps.size() > m_done) {
        m_units -= m_steps.back().removed.size() + m_steps.back().inserted.size();
        m_steps.pop_back();
    }
    const auto removed = std::u16string_view(m_text).substr(range.start, range.end - range.start);
    m_units += removed.size() + by.size();
    if (joins(range, by, kind)) {
        auto& last = m_steps.back();
        if (kind == Kind::typed) {
            last.inserted += by;
        } else if (range.end == last.at) {
            last.removed.insert(0, removed);
            last.at = range.start;
        } else {
            last.removed += removed;
        }
        return;
    }
    m_steps.push_back(
        {range.start, std::u16string(removed), std::u16string(by), m_anchor, m_caret, kind});
    std::size_t old = 0;
    while (old + 1 < m_steps.size() &&
           (m_steps.size() - old > kMostSteps || m_units > kMostUnits)) {
        m_units -= m_steps[old].removed.size() + m_steps[old].inserted.size();
        ++old;
    }
    m_steps.erase(m_steps.begin(), m_steps.begin() + static_cast<std::ptrdiff_t>(old));
    m_done = m_steps.size();
}

EditText::Change EditText::replace(const Range& range, std::u16string_view by, Kind kind) {
    if (range.is_empty() && by.empty()) return {};
    // What is put in may be a part of the text itself.
    const std::u16string copy(by);
    note(range, copy, kind);
    m_text.replace(range.start, range.end - range.start, copy);
    m_anchor = m_caret = range.start + copy.size();
    m_joins = kind != Kind::other;
    return {range.start, range.end - range.start, copy.size()};
}

EditText::Change EditText::undo() {
    if (m_done == 0) return {};
    const auto& step = m_steps[--m_done];
    m_text.replace(step.at, step.inserted.size(), step.removed);
    m_anchor = step.anchor;
    m_caret = step.caret;
    m_joins = false;
    return {step.at, step.inserted.size(), step.removed.size()};
}

EditText::Change EditText::redo() {
    if (!can_redo()) return {};
    const auto& step = m_steps[m_done++];
    m_text.replace(step.at, step.removed.size(), step.inserted);
    m_anchor = m_caret = step.at + step.inserted.size();
    m_joins = false;
    return {step.at, step.removed.size(), step.inserted.size()};
}

void EditText::forget_steps() {
    m_steps.clear();
    m_done = m_units = 0;
    m_joins = false;
}

}  // namespace tvutil2
