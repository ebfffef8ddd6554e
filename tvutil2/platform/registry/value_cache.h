// Values read before, kept for as long as nobody has written to the hive.
//
// The judge is the head of SQLite's WAL index, which all connections of all processes share: the
// very words by which SQLite decides whether its own cached pages still hold. A commit changes
// them before it returns. So an answer that was read after the words were noted, and is given only
// while they stand unchanged, is never older than any write that has returned. What a killed
// writer leaves there makes the words differ, and every look-up then goes to the store.
//
// When the room is taken, some new answers are let in, and others picked at random make room: those
// who read more than it holds, over and over in the same order, still find about the part of it
// that the room is to the whole, where the oldest answer would be the very one that is asked for
// next.
#pragma once

#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/registry/key_id.h"

#include <array>
#include <random>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tvutil2 {

/// A value as the store holds it.
struct ValueView {
    DWORD type = 0;
    std::string_view data;
};

class ValueCache {
  public:
    /// The words that an answer is bound to; `is_whole` is false while a writer is at them.
    struct Stamp {
        std::array<std::uint64_t, 6> words{};
        std::uint64_t attachment = 0;  ///< which mapping they were read from
        bool is_whole = false;

        /// Of stamps that aren't whole none is like another.
        bool operator==(const Stamp& other) const {
            return is_whole && other.is_whole && attachment == other.attachment &&
                   words == other.words;
        }
    };

    /// Where the head of the index is mapped; null when it isn't. Forgets all answers.
    void attach(const volatile std::uint64_t* head);

    /// To be taken before the store is read.
    [[nodiscard]] Stamp stamp() const;
    /// Whether nothing was written since the stamp was taken.
    [[nodiscard]] bool is_unchanged(const Stamp& stamp) const;

    /// Calls `use` with the value, or null if it is known that there is none; false when nothing
    /// is known. The name counts as written: spellings of one name are entries of their own.
    template <class Use>
    bool look_up(const KeyId& key, std::u16string_view name, Use use) const {
        const std::shared_lock guard(m_lock);
        if (!holds(m_stamp)) return false;
        const auto found = m_values.find(Name{key.row, store_of(key), name});
        if (found == m_values.end()) return false;
        const auto& entry = found->second;
        const ValueView value{entry.type, entry.data};
        use(entry.exists ? &value : nullptr);
        return true;
    }

    /// Keeps an answer (null: there is no such value) that was read after `stamp` was taken.
    void keep(const Stamp& stamp, const KeyId& key, std::u16string_view name,
              const ValueView* value);

    /// For the child of a fork that came upon a detached cache: a thread that doesn't exist there
    /// may have been looking into it, and would hold the lock for ever.
    void renew_lock();

  private:
    struct Name {
        std::int64_t row;
        std::uint32_t store;
        std::u16string_view text;
    };
    struct OwnedName {
        std::int64_t row;
        std::uint32_t store;
        std::u16string text;
    };
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(const Name& name) const;
        std::size_t operator()(const OwnedName& name) const {
            return (*this)(Name{name.row, name.store, name.text});
        }
    };
    struct Same {
        using is_transparent = void;
        template <class A, class B>
        bool operator()(const A& a, const B& b) const {
            return a.row == b.row && a.store == b.store && std::u16string_view(a.text) == b.text;
        }
    };
    struct Entry {
        bool exists = false;
        DWORD type = 0;
        std::string data;
    };

    /// A handle of a store that is gone finds nothing of the next one's.
    [[nodiscard]] static std::uint32_t store_of(const KeyId& key) {
        return key.row == KeyId::kRoot ? 0 : key.store;
    }
    [[nodiscard]] bool holds(const Stamp& stamp) const;
    void forget();
    void evict_one();
    [[nodiscard]] static std::size_t cost_of(std::u16string_view name, std::size_t size);

    mutable std::shared_mutex m_lock;
    const volatile std::uint64_t* m_head = nullptr;
    std::uint64_t m_attachment = 0;
    Stamp m_stamp;
    std::unordered_map<OwnedName, Entry, Hash, Same> m_values;
    std::size_t m_bytes = 0;
    std::minstd_rand m_random;
};

}  // namespace tvutil2
