// Values read before, kept for as long as nobody has written to the hive.
//
// The judge is the head of SQLite's WAL index, which all connections of all processes share: the
// very words by which SQLite decides whether its own cached pages still hold. A commit changes
// them before it returns. So an answer that was read after the words were noted, and is given only
// while they stand unchanged, is never older than any write that has returned. What a killed
// writer leaves there makes the words differ, and every look-up then goes to the store.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <array>
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
        bool is_whole = false;
    };

    /// Where the head of the index is mapped; null when it isn't. Forgets all answers.
    void attach(const volatile std::uint64_t* head);
    [[nodiscard]] bool is_attached() const;

    /// To be taken before the store is read.
    [[nodiscard]] Stamp stamp() const;

    /// Calls `use` with the value, or null if it is known that there is none; false when nothing
    /// is known. The name counts as written: spellings of one name are entries of their own.
    template <class Use>
    bool look_up(std::int64_t key, std::u16string_view name, Use use) const {
        const std::shared_lock guard(m_lock);
        if (m_head == nullptr || !m_stamp.is_whole || !holds(m_stamp)) return false;
        const auto found = m_values.find(Name{key, name});
        if (found == m_values.end()) return false;
        const auto& entry = found->second;
        const ValueView value{entry.type, entry.data};
        use(entry.exists ? &value : nullptr);
        return true;
    }

    /// Keeps an answer (null: there is no such value) that was read after `stamp` was taken.
    void keep(const Stamp& stamp, std::int64_t key, std::u16string_view name,
              const ValueView* value);

    /// For the child of a fork that came upon a detached cache: a thread that doesn't exist there
    /// may have been looking into it, and would hold the lock for ever.
    void renew_lock();

  private:
    struct Name {
        std::int64_t key;
        std::u16string_view text;
    };
    struct OwnedName {
        std::int64_t key;
        std::u16string text;
    };
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(const Name& name) const;
        std::size_t operator()(const OwnedName& name) const {
            return (*this)(Name{name.key, name.text});
        }
    };
    struct Same {
        using is_transparent = void;
        template <class A, class B>
        bool operator()(const A& a, const B& b) const {
            return a.key == b.key && std::u16string_view(a.text) == b.text;
        }
    };
    struct Entry {
        bool exists = false;
        DWORD type = 0;
        std::string data;
    };

    [[nodiscard]] bool holds(const Stamp& stamp) const;
    void forget();

    mutable std::shared_mutex m_lock;
    const volatile std::uint64_t* m_head = nullptr;
    Stamp m_stamp;
    std::unordered_map<OwnedName, Entry, Hash, Same> m_values;
    std::size_t m_bytes = 0;
};

}  // namespace tvutil2
