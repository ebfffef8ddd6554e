// Where a conversion puts what it makes: into the caller's room, or nowhere, to learn the size.
#pragma once

#include <algorithm>
#include <cstddef>

namespace tvutil2::codepage {

/// What an inner loop has taken from the front of its text, and what it made of that.
struct Progress {
    std::size_t taken = 0;
    std::size_t made = 0;

    Progress& operator+=(Progress part) {
        taken += part.taken;
        made += part.made;
        return *this;
    }
};

/// Counts.
template <class Unit>
class Counter {
  public:
    bool put(Unit /*unit*/) {
        ++m_count;
        return true;
    }
    /// Takes units that need no conversion but their width.
    template <class Source>
    bool put_run(const Source* /*units*/, std::size_t count) {
        m_count += count;
        return true;
    }
    /// Lets an inner loop take from the front of a text, and gives what it took: the first of the
    /// two counts, the other one writes.
    template <class Count, class Convert>
    std::size_t take(const Count& count, const Convert& /*convert*/) {
        const Progress progress = count();
        m_count += progress.made;
        return progress.taken;
    }
    [[nodiscard]] std::size_t count() const { return m_count; }

  private:
    std::size_t m_count = 0;
};

/// Writes until the room is full; false from the first unit on that has none.
template <class Unit>
class Writer {
  public:
    Writer(Unit* out, std::size_t room) : m_out(out), m_room(room) {}

    bool put(Unit unit) {
        if (m_count == m_room) return false;
        m_out[m_count++] = unit;
        return true;
    }
    template <class Source>
    bool put_run(const Source* units, std::size_t count) {
        const auto taken = std::min(count, m_room - m_count);
        Unit* const out = m_out + m_count;
        for (std::size_t i = 0; i < taken; ++i) out[i] = static_cast<Unit>(units[i]);
        m_count += taken;
        return taken == count;
    }
    template <class Count, class Convert>
    std::size_t take(const Count& /*count*/, const Convert& convert) {
        const Progress progress = convert(m_out + m_count, m_room - m_count);
        m_count += progress.made;
        return progress.taken;
    }
    [[nodiscard]] std::size_t count() const { return m_count; }

  private:
    Unit* m_out;
    std::size_t m_room;
    std::size_t m_count = 0;
};

/// How a conversion ended.
enum class Outcome { done, no_room, invalid };

/// How many bytes at the front are ASCII.
[[nodiscard]] std::size_t ascii_prefix(const char* bytes, std::size_t size);
/// How many units at the front are ASCII.
[[nodiscard]] std::size_t ascii_prefix(const char16_t* units, std::size_t size);

}  // namespace tvutil2::codepage
