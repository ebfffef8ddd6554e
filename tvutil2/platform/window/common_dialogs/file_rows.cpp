#include "tvutil2/platform/window/common_dialogs/file_rows.h"

#include "tvutil2/platform/base/clock.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tvutil2 {

std::u16string extension_of(const FolderEntry& entry) {
    const auto dot = entry.name.rfind(u'.');
    if (entry.is_folder || dot == std::u16string::npos || dot == 0) return {};
    return upper_of(std::u16string_view(entry.name).substr(dot + 1));
}

void FileRows::clear() {
    m_all.clear();
    m_shown.clear();
}

bool FileRows::is_shown(const FolderEntry& entry) const {
    if (entry.is_hidden && !m_shows_hidden) return false;
    if (entry.is_folder || m_patterns.empty()) return true;
    const auto upper = upper_of(entry.name);
    return std::ranges::any_of(m_patterns,
                               [&](const NamePattern& each) { return each.matches(upper); });
}

// Folders come first in either direction.
bool FileRows::comes_before(std::uint32_t a, std::uint32_t b) const {
    const auto* left = &m_all[a];
    const auto* right = &m_all[b];
    if (left->is_folder != right->is_folder) return left->is_folder;
    if (m_order.is_descending) std::swap(left, right);
    if (m_order.column == FileColumn::size && left->size != right->size) {
        return left->size < right->size;
    }
    if (m_order.column == FileColumn::changed) {
        const auto way = CompareFileTime(&left->changed, &right->changed);
        if (way != 0) return way < 0;
    }
    if (m_order.column == FileColumn::type) {
        const auto way = extension_of(*left).compare(extension_of(*right));
        if (way != 0) return way < 0;
    }
    return left->key < right->key;
}

// Those of the entries from one on are put among the rows.
void FileRows::show_from(std::size_t first) {
    const auto before = static_cast<std::ptrdiff_t>(m_shown.size());
    for (auto i = first; i < m_all.size(); ++i) {
        if (is_shown(m_all[i])) m_shown.push_back(static_cast<std::uint32_t>(i));
    }
    const auto sooner = [this](std::uint32_t a, std::uint32_t b) { return comes_before(a, b); };
    const auto middle = m_shown.begin() + before;
    // A part comes in the order of names.
    if (!std::is_sorted(middle, m_shown.end(), sooner)) std::sort(middle, m_shown.end(), sooner);
    std::inplace_merge(m_shown.begin(), middle, m_shown.end(), sooner);
}

void FileRows::show_again() {
    m_shown.clear();
    show_from(0);
}

void FileRows::add(std::vector<FolderEntry> entries) {
    const auto first = m_all.size();
    if (m_all.empty()) {
        m_all = std::move(entries);
    } else {
        m_all.insert(m_all.end(), std::make_move_iterator(entries.begin()),
                     std::make_move_iterator(entries.end()));
    }
    show_from(first);
}

void FileRows::show_hidden(bool shows) {
    m_shows_hidden = shows;
    show_again();
}

void FileRows::show_files(const std::vector<std::u16string>& patterns) {
    m_patterns = {patterns.begin(), patterns.end()};
    show_again();
}

void FileRows::order_by(FileOrder order) {
    m_order = order;
    show_again();
}

int FileRows::find(int from, std::u16string_view beginning) const {
    const auto wanted = upper_of(beginning);
    for (int i = 0; i < count(); ++i) {
        const auto row = (from + i) % count();
        const auto& name = at(row).name;
        if (name.size() >= wanted.size() &&
            upper_of(std::u16string_view(name).substr(0, wanted.size())) == wanted) {
            return row;
        }
    }
    return -1;
}

}  // namespace tvutil2
