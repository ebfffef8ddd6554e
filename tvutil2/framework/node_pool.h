// Storage of the nodes of lists and maps: blocks of nodes, so that an element doesn't cost an
// allocation of its own, and stays where it is for as long as it lives.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace tvutil2 {

/// Makes and destroys nodes. What a destroyed node leaves is used again; storage goes back to the
/// heap in release() and with the pool. The owner destroys its nodes before either.
template <class Node>
class NodePool {
  public:
    /// `block_size`: nodes in the first block; blocks grow with the number of nodes.
    explicit NodePool(int block_size)
        : m_block_size(static_cast<std::size_t>(std::max(block_size, 1))) {}
    NodePool(const NodePool&) = delete;
    NodePool& operator=(const NodePool&) = delete;

    template <class... Arguments>
    Node* make(Arguments&&... arguments) {
        if (m_free == nullptr) add_block();
        auto* const slot = m_free;
        auto* const rest = slot->next;
        auto* const node = ::new (slot->bytes) Node{std::forward<Arguments>(arguments)...};
        m_free = rest;  // only now: a constructor that throws leaves the slot free
        return node;
    }

    void destroy(Node* node) {
        node->~Node();
        auto* const slot = ::new (static_cast<void*>(node)) Slot;
        slot->next = m_free;
        m_free = slot;
    }

    void release() {
        m_blocks.clear();
        m_free = nullptr;
        m_size = 0;
    }

    void swap(NodePool& other) noexcept {
        std::swap(m_block_size, other.m_block_size);
        std::swap(m_size, other.m_size);
        std::swap(m_free, other.m_free);
        m_blocks.swap(other.m_blocks);
    }

  private:
    union Slot {
        Slot* next;
        alignas(Node) std::byte bytes[sizeof(Node)];
    };

    void add_block() {
        const auto count = std::max(m_block_size, std::min(m_size / 2, std::size_t{1024}));
        auto& block = m_blocks.emplace_back(std::make_unique<Slot[]>(count));
        for (auto i = count; i-- > 0;) {
            block[i].next = m_free;
            m_free = &block[i];
        }
        m_size += count;
    }

    std::size_t m_block_size;
    std::size_t m_size = 0;
    Slot* m_free = nullptr;
    std::vector<std::unique_ptr<Slot[]>> m_blocks;
};

}  // namespace tvutil2
