// Values in the distinguished encoding rules (ITU-T X.690), read where they stand.
//
// Lengths that aren't the shortest possible, or that are left open, don't belong to these rules and
// are refused: of two files that differ in a byte at most one is well formed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace tvutil2 {

using DerBytes = std::span<const std::byte>;

/// Tags that are met in signatures; those of a structure have bit 0x20 set.
enum DerTag : std::uint8_t {
    kDerInteger = 0x02,
    kDerOctets = 0x04,
    kDerNull = 0x05,
    kDerObjectId = 0x06,
    kDerSequence = 0x30,
    kDerSet = 0x31,
    kDerContext0 = 0xA0,
    kDerContext1 = 0xA1,
};

struct DerValue {
    std::uint8_t tag = 0;
    DerBytes content;
    DerBytes whole;  ///< with tag and length
};

/// A walk over values that stand one behind the other in bytes that outlive it.
class DerReader {
  public:
    explicit DerReader(DerBytes bytes) : m_rest(bytes) {}

    [[nodiscard]] bool is_at_end() const { return m_rest.empty(); }
    [[nodiscard]] bool is_next(std::uint8_t tag) const {
        return !m_rest.empty() && std::to_integer<std::uint8_t>(m_rest[0]) == tag;
    }
    /// The next value; nothing when it isn't whole, or its tag or length has another form.
    [[nodiscard]] std::optional<DerValue> next();
    /// The next one if it has that tag.
    [[nodiscard]] std::optional<DerValue> next(std::uint8_t tag) {
        return is_next(tag) ? next() : std::nullopt;
    }

  private:
    DerBytes m_rest;
};

}  // namespace tvutil2
