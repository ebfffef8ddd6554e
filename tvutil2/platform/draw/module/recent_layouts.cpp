#include "tvutil2/platform/draw/module/recent_layouts.h"

#include <cstdint>
#include <functional>

namespace tvutil2 {

std::shared_ptr<const TextLayout> RecentLayouts::find(const Query& query) {
    const auto found = m_places.find(query);
    if (found != m_places.end()) {
        m_entries.splice(m_entries.begin(), m_entries, found->second);
        return found->second->layout;
    }
    if (m_entries.size() == kMost) {
        m_places.erase(m_entries.back().query());
        m_entries.pop_back();
    }
    return nullptr;
}

void RecentLayouts::add(const std::shared_ptr<const Font>& font, const Query& query,
                        const std::shared_ptr<const TextLayout>& layout) {
    m_entries.push_front({font, std::u16string(query.text), *query.options, layout});
    m_places.emplace(m_entries.front().query(), m_entries.begin());
}

std::size_t RecentLayouts::Hash::operator()(const Query& query) const {
    auto hash = std::hash<std::u16string_view>()(query.text);
    for (const auto part : {reinterpret_cast<std::uintptr_t>(query.font) >> 4U,
                            static_cast<std::uintptr_t>(query.options->wrap_width),
                            static_cast<std::uintptr_t>(query.options->ellipsis_width)}) {
        hash = (hash ^ part) * 0x9E3779B97F4A7C15U;
    }
    return hash;
}

bool RecentLayouts::Equal::operator()(const Query& a, const Query& b) const {
    return a.font == b.font && *a.options == *b.options && a.text == b.text;
}

}  // namespace tvutil2
