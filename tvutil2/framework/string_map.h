// The hash map behind the framework's maps with text keys.
//
// A table of chains. An element is one allocation, which holds its key and, for text, its value
// too; it never moves. Elements also stand in the order of their coming, so that a walk costs what
// there is to walk and survives the removal of the element that it is at.
//
// Hashes are keyed with a number that is drawn once a process: whoever chooses the keys (a file,
// the other side of a connection) can't choose them to collide. With no more elements than chains,
// a look-up compares one element and a half, and a miss one half, on the average.
#pragma once

#include "tvutil2/framework/exceptions.h"
#include "tvutil2/framework/held_value.h"
#include "tvutil2/framework/strings.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

/// Place of an element in a list or a map: of use to the object that gave it, until the element is
/// removed. Null is no place.
using POSITION = struct POSITION__*;

namespace tvutil2 {

/// Keyed hash of text.
[[nodiscard]] TVUTIL_API std::uint64_t hash_of(std::u16string_view text);

template <class Value>
class StringMap {
  public:
    /// What a value can be seen as without copying it: text as a view.
    using View = typename HeldValue<Value>::View;

    /// Elements are allocated one by one, whatever the block size of the interface.
    explicit StringMap(int /*block_size*/ = 10) {}
    /// A copy has copies of the elements.
    StringMap(const StringMap& other) : StringMap() { add_all(other); }
    StringMap(StringMap&& other) noexcept : StringMap() { swap(other); }
    ~StringMap() { RemoveAll(); }
    StringMap& operator=(const StringMap& other) {
        if (this == &other) return *this;
        StringMap copy(other);
        swap(copy);
        return *this;
    }
    StringMap& operator=(StringMap&& other) noexcept {
        swap(other);
        return *this;
    }

    [[nodiscard]] int GetCount() const { return static_cast<int>(m_count); }
    [[nodiscard]] int GetSize() const { return GetCount(); }
    [[nodiscard]] bool IsEmpty() const { return m_count == 0; }

    /// Non-zero, and the value, when the key is there; otherwise `value` stays what it was. A null
    /// key is the empty one, here and below.
    BOOL Lookup(const char16_t* key, Value& value) const {
        const auto text = view_of(key);
        const auto* node = find(text, hash_of(text));
        if (node == nullptr) return FALSE;
        node->value.copy_to(value, storage_of(node));
        return TRUE;
    }
    /// The value of a key, which is entered with a null or empty value if it is missing. The
    /// reference holds until the key is removed.
    Value& operator[](const char16_t* key) { return At(view_of(key)); }
    /// The same for text that needn't end with a zero.
    Value& At(std::u16string_view key) {
        const auto hash = hash_of(key);
        auto* node = find(key, hash);
        if (node == nullptr) node = insert(key, hash, HeldValue<Value>::as_view(Value()));
        return node->value.reference(storage_of(node));
    }
    void SetAt(const char16_t* key, const Value& value) {
        Set(view_of(key), HeldValue<Value>::as_view(value));
    }
    /// The same for text that needn't end with a zero, and that may lie in this map.
    void Set(std::u16string_view key, View value) {
        const auto hash = hash_of(key);
        if (auto* const node = find(key, hash)) {
            node->value.set(storage_of(node), value);
        } else {
            insert(key, hash, value);
        }
    }

    /// Non-zero if the key was there.
    BOOL RemoveKey(const char16_t* key) {
        if (m_count == 0) return FALSE;
        const auto text = view_of(key);
        auto** const link = link_to(text, hash_of(text));
        auto* const node = *link;
        if (node == nullptr) return FALSE;
        *link = node->next_in_chain;
        (node->previous == nullptr ? m_head : node->previous->next) = node->next;
        (node->next == nullptr ? m_tail : node->next->previous) = node->previous;
        --m_count;
        destroy(node);
        return TRUE;
    }
    /// Removes everything and gives the storage back.
    void RemoveAll() {
        while (m_head != nullptr) destroy(std::exchange(m_head, m_head->next));
        m_tail = nullptr;
        m_count = 0;
        m_chains = {};
    }

    /// Where a walk over all elements starts; null for an empty map. There is no promised order.
    [[nodiscard]] POSITION GetStartPosition() const { return position_of(m_tail); }
    /// Key and value at a position, which moves to the next element, or null behind the last one.
    /// The element may be removed afterwards without harm to the walk. Throws CInvalidArgException
    /// for a null position.
    void GetNextAssoc(POSITION& position, CString& key, Value& value) const {
        if (position == nullptr) throw_invalid_argument();
        const auto* node = reinterpret_cast<const Node*>(position);
        key = key_of(node);
        node->value.copy_to(value, storage_of(node));
        position = position_of(node->previous);
    }
    /// Hands each key and value to `visit`, as views, in the order of a walk.
    template <class Visit>
    void ForEach(Visit visit) const {
        for (const auto* node = m_tail; node != nullptr; node = node->previous) {
            visit(key_of(node), node->value.view(storage_of(node)));
        }
    }
    /// The same from behind: what a walk meets last comes first.
    template <class Visit>
    void ForEachFromBehind(Visit visit) const {
        for (const auto* node = m_head; node != nullptr; node = node->next) {
            visit(key_of(node), node->value.view(storage_of(node)));
        }
    }

  private:
    // The key's units lie behind it, and behind them those of the value.
    struct Node {
        Node* previous = nullptr;
        Node* next = nullptr;
        Node* next_in_chain = nullptr;
        [[no_unique_address]] HeldValue<Value> value;
        std::uint32_t key_size = 0;
    };

    static std::u16string_view view_of(const char16_t* key) {
        return key == nullptr ? std::u16string_view() : std::u16string_view(key);
    }
    static POSITION position_of(const Node* node) {
        return reinterpret_cast<POSITION>(const_cast<Node*>(node));
    }
    static char16_t* units_of(Node* node) { return reinterpret_cast<char16_t*>(node + 1); }
    static const char16_t* units_of(const Node* node) {
        return reinterpret_cast<const char16_t*>(node + 1);
    }
    static std::u16string_view key_of(const Node* node) { return {units_of(node), node->key_size}; }
    static char16_t* storage_of(Node* node) { return units_of(node) + node->key_size; }
    static const char16_t* storage_of(const Node* node) { return units_of(node) + node->key_size; }

    static Node* make(std::u16string_view key, View value) {
        const auto units = key.size() + HeldValue<Value>::units_for(value);
        auto* const node = ::new (::operator new(sizeof(Node) + units * sizeof(char16_t))) Node;
        node->key_size = static_cast<std::uint32_t>(key.size());
        std::copy(key.begin(), key.end(), units_of(node));
        node->value.begin(storage_of(node), value);
        return node;
    }
    static void destroy(Node* node) {
        node->~Node();
        ::operator delete(node);
    }

    // A chain's link to an element, or its last one. There is one chain at least.
    Node** link_to(std::u16string_view key, std::uint64_t hash) {
        auto** link = &chain_of(hash);
        while (*link != nullptr && !same_text(key_of(*link), key)) link = &(*link)->next_in_chain;
        return link;
    }
    [[nodiscard]] Node* find(std::u16string_view key, std::uint64_t hash) const {
        return m_count == 0 ? nullptr : *const_cast<StringMap*>(this)->link_to(key, hash);
    }
    Node*& chain_of(std::uint64_t hash) { return m_chains[hash & (m_chains.size() - 1)]; }

    Node* insert(std::u16string_view key, std::uint64_t hash, View value) {
        if (m_count == m_chains.size()) grow();
        auto* const node = make(key, value);
        node->previous = m_tail;
        (m_tail == nullptr ? m_head : m_tail->next) = node;
        m_tail = node;
        node->next_in_chain = std::exchange(chain_of(hash), node);
        ++m_count;
        return node;
    }

    void grow() {
        m_chains = std::vector<Node*>(std::max<std::size_t>(m_chains.size() * 2, 8));
        for (auto* node = m_head; node != nullptr; node = node->next) {
            node->next_in_chain = std::exchange(chain_of(hash_of(key_of(node))), node);
        }
    }

    void add_all(const StringMap& other) {
        for (const auto* node = other.m_head; node != nullptr; node = node->next) {
            Set(key_of(node), node->value.view(storage_of(node)));
        }
    }

    void swap(StringMap& other) noexcept {
        m_chains.swap(other.m_chains);
        std::swap(m_head, other.m_head);
        std::swap(m_tail, other.m_tail);
        std::swap(m_count, other.m_count);
    }

    std::vector<Node*> m_chains;  // none, or a power of two
    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    std::size_t m_count = 0;
};

}  // namespace tvutil2
