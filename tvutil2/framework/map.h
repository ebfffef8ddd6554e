// A map from any key to any value.
#pragma once

#include "tvutil2/framework/exceptions.h"
#include "tvutil2/framework/string_map.h"

#include <functional>
#include <unordered_map>

/// Where a key of CMap goes; specialise it for keys that std::hash doesn't know.
template <class ArgKey>
std::size_t HashKey(const ArgKey& key) {
    return std::hash<std::decay_t<ArgKey>>()(key);
}

/// Map from keys, compared with ==, to values. The argument types are how keys and values are
/// passed. An object belongs to one thread at a time; an element never moves.
template <class Key, class ArgKey, class Value, class ArgValue>
class CMap {
  public:
    /// Elements are allocated one by one, whatever the block size of the interface.
    explicit CMap(int /*block_size*/ = 10) {}

    [[nodiscard]] int GetCount() const { return static_cast<int>(m_elements.size()); }
    [[nodiscard]] int GetSize() const { return GetCount(); }
    [[nodiscard]] bool IsEmpty() const { return m_elements.empty(); }

    /// Non-zero, and the value, when the key is there; otherwise `value` stays what it was.
    BOOL Lookup(ArgKey key, Value& value) const {
        const auto found = m_elements.find(key);
        if (found == m_elements.end()) return FALSE;
        value = found->second;
        return TRUE;
    }
    /// The value of a key, which is entered with an empty one if it is missing.
    Value& operator[](ArgKey key) { return m_elements[key]; }
    void SetAt(ArgKey key, ArgValue value) { m_elements[key] = value; }
    /// Non-zero if the key was there.
    BOOL RemoveKey(ArgKey key) { return m_elements.erase(key) != 0 ? TRUE : FALSE; }
    void RemoveAll() { m_elements = {}; }

    /// Where a walk over all elements starts, in no promised order; null for an empty map.
    [[nodiscard]] POSITION GetStartPosition() const { return position_of(m_elements.begin()); }
    /// Key and value at a position, which moves to the next element, or null behind the last one.
    /// The element may be removed afterwards without harm to the walk. Throws CInvalidArgException
    /// for a null position.
    void GetNextAssoc(POSITION& position, Key& key, Value& value) const {
        if (position == nullptr) tvutil2::throw_invalid_argument();
        const auto& element = *reinterpret_cast<const Element*>(position);
        key = element.first;
        value = element.second;
        position = position_of(std::next(m_elements.find(element.first)));
    }

  private:
    struct Hash {
        std::size_t operator()(const Key& key) const { return HashKey<ArgKey>(key); }
    };
    using Elements = std::unordered_map<Key, Value, Hash>;
    using Element = typename Elements::value_type;

    POSITION position_of(typename Elements::const_iterator element) const {
        if (element == m_elements.end()) return nullptr;
        return reinterpret_cast<POSITION>(const_cast<Element*>(&*element));
    }

    Elements m_elements;
};
