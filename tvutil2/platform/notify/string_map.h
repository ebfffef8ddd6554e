// A map of texts.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace Windows::Foundation::Collections {

/// A value: copies are apart. Walked in the order of the keys' units.
class StringMap {
  public:
    /// True when a value of that key was replaced.
    bool Insert(const std::u16string& key, const std::u16string& value) {
        return !m_map.insert_or_assign(key, value).second;
    }
    [[nodiscard]] bool HasKey(std::u16string_view key) const {
        return m_map.find(key) != m_map.end();
    }
    /// Empty where there is none.
    [[nodiscard]] std::u16string Lookup(std::u16string_view key) const {
        const auto found = m_map.find(key);
        return found != m_map.end() ? found->second : std::u16string();
    }
    [[nodiscard]] std::size_t Size() const { return m_map.size(); }
    [[nodiscard]] auto begin() const { return m_map.begin(); }
    [[nodiscard]] auto end() const { return m_map.end(); }

  private:
    std::map<std::u16string, std::u16string, std::less<>> m_map;
};

}  // namespace Windows::Foundation::Collections
