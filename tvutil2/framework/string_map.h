// The hash map behind the framework's maps with text keys.
//
// Open addressing with linear probing: a slot holds a key's hash and its node, so that a look-up
// seldom touches a node that isn't the wanted one, and a miss as a rule touches one cache line.
// Nodes never move, and are chained in a list of their own, so that a walk costs what there is to
// walk and survives the removal of the element that it is at.
//
// Hashes are keyed with a number that is drawn once a process: whoever chooses the keys (a file,
// the other side of a connection) can't choose them to collide. With random keys a look-up compares
// two or three slots at the highest load, which is two thirds.
#pragma once

#include "tvutil2/framework/exceptions.h"
#include "tvutil2/framework/node_pool.h"
#include "tvutil2/framework/strings.h"

#include <bit>

/// Place of an element in a list or a map: of use to the object that gave it, until the element is
/// removed. Null is no place.
using POSITION = struct POSITION__*;

namespace tvutil2 {

/// Keyed hash of text.
[[nodiscard]] TVUTIL_API std::uint64_t hash_of(std::u16string_view text);

template <class Value>
class StringMap {
  public:
    /// `block_size`: elements that are allocated together.
    explicit StringMap(int block_size = 10) : m_pool(block_size) {}
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
        const auto* slot = find_slot(text, hash_of(text));
        if (slot == nullptr) return FALSE;
        value = slot->node->value;
        return TRUE;
    }
    /// The value of a key, which is entered with a null or empty value if it is missing. The
    /// reference holds until the key is removed.
    Value& operator[](const char16_t* key) { return At(view_of(key)); }
    /// The same for text that needn't end with a zero.
    Value& At(std::u16string_view text) {
        const auto hash = hash_of(text);
        const auto* slot = find_slot(text, hash);
        return slot != nullptr ? slot->node->value : insert(text, hash)->value;
    }
    void SetAt(const char16_t* key, Value value) { (*this)[key] = std::move(value); }

    /// Non-zero if the key was there.
    BOOL RemoveKey(const char16_t* key) {
        const auto text = view_of(key);
        auto* slot = find_slot(text, hash_of(text));
        if (slot == nullptr) return FALSE;
        auto* const node = slot->node;
        close_gap(static_cast<std::size_t>(slot - m_slots.data()));
        unlink(node);
        m_pool.destroy(node);
        --m_count;
        return TRUE;
    }
    /// Removes everything and gives the storage back.
    void RemoveAll() {
        while (m_head != nullptr) m_pool.destroy(std::exchange(m_head, m_head->next));
        m_tail = nullptr;
        m_count = 0;
        m_slots = {};
        m_pool.release();
    }

    /// Where a walk over all elements starts; null for an empty map. There is no promised order.
    [[nodiscard]] POSITION GetStartPosition() const { return position_of(m_tail); }
    /// Key and value at a position, which moves to the next element, or null behind the last one.
    /// The element may be removed afterwards without harm to the walk. Throws CInvalidArgException
    /// for a null position.
    void GetNextAssoc(POSITION& position, CString& key, Value& value) const {
        if (position == nullptr) throw_invalid_argument();
        const auto* node = reinterpret_cast<const Node*>(position);
        key = node->key;
        value = node->value;
        position = position_of(node->previous);
    }
    /// Hands each key and value to `visit`, in the order of a walk and without copying them.
    template <class Visit>
    void ForEach(Visit visit) const {
        for (const auto* node = m_tail; node != nullptr; node = node->previous) {
            visit(std::as_const(node->key), std::as_const(node->value));
        }
    }

  private:
    struct Node {
        CString key;
        Value value{};
        Node* previous = nullptr;
        Node* next = nullptr;
    };
    struct Slot {
        std::uint64_t hash = 0;
        Node* node = nullptr;  // null: the slot is empty
    };

    static std::u16string_view view_of(const char16_t* key) {
        return key == nullptr ? std::u16string_view() : std::u16string_view(key);
    }
    static POSITION position_of(const Node* node) {
        return reinterpret_cast<POSITION>(const_cast<Node*>(node));
    }
    [[nodiscard]] std::size_t mask() const { return m_slots.size() - 1; }

    [[nodiscard]] const Slot* find_slot(std::u16string_view key, std::uint64_t hash) const {
        if (m_count == 0) return nullptr;
        for (auto i = hash & mask();; i = (i + 1) & mask()) {
            const auto& slot = m_slots[i];
            if (slot.node == nullptr) return nullptr;
            if (slot.hash == hash && same_text(slot.node->key.View(), key)) return &slot;
        }
    }
    [[nodiscard]] Slot* find_slot(std::u16string_view key, std::uint64_t hash) {
        return const_cast<Slot*>(std::as_const(*this).find_slot(key, hash));
    }

    Node* insert(std::u16string_view key, std::uint64_t hash) {
        if ((m_count + 1) * 3 > m_slots.size() * 2) grow();
        auto* const node = m_pool.make(CString(key));
        node->previous = m_tail;
        (m_tail == nullptr ? m_head : m_tail->next) = node;
        m_tail = node;
        place({hash, node});
        ++m_count;
        return node;
    }

    void place(const Slot& slot) {
        auto i = slot.hash & mask();
        while (m_slots[i].node != nullptr) i = (i + 1) & mask();
        m_slots[i] = slot;
    }

    void grow() {
        std::vector<Slot> old(std::max<std::size_t>(m_slots.size() * 2, 16));
        old.swap(m_slots);
        for (const auto& slot : old) {
            if (slot.node != nullptr) place(slot);
        }
    }

    // Empties a slot and moves up what stands behind it and would no longer be found.
    void close_gap(std::size_t gap) {
        for (auto i = (gap + 1) & mask(); m_slots[i].node != nullptr; i = (i + 1) & mask()) {
            const auto home = m_slots[i].hash & mask();
            if (((i - home) & mask()) >= ((i - gap) & mask())) {
                m_slots[gap] = m_slots[i];
                gap = i;
            }
        }
        m_slots[gap] = {};
    }

    void unlink(Node* node) {
        (node->previous == nullptr ? m_head : node->previous->next) = node->next;
        (node->next == nullptr ? m_tail : node->next->previous) = node->previous;
    }

    void add_all(const StringMap& other) {
        for (const auto* node = other.m_head; node != nullptr; node = node->next) {
            (*this)[node->key] = node->value;
        }
    }

    void swap(StringMap& other) noexcept {
        m_pool.swap(other.m_pool);
        m_slots.swap(other.m_slots);
        std::swap(m_head, other.m_head);
        std::swap(m_tail, other.m_tail);
        std::swap(m_count, other.m_count);
    }

    NodePool<Node> m_pool;
    std::vector<Slot> m_slots;  // none, or a power of two
    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    std::size_t m_count = 0;
};

}  // namespace tvutil2
