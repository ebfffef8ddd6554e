// Changes as a reader gets them, one behind the other in memory.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace tvutil2 {

/// Records that are gathered between two reads, up to a limit of bytes. When more comes, all of
/// them are dropped, and so is what comes until somebody has been told. Not safe from two threads.
class ChangeRecords {
  public:
    explicit ChangeRecords(std::size_t limit) : m_limit(limit) {}

    /// Appends a FILE_NOTIFY_INFORMATION for the name `prefix` + `name`. One that says the same as
    /// the record before it is passed over.
    void add(DWORD action, std::u16string_view prefix, std::u16string_view name);
    void lose();

    [[nodiscard]] bool has_news() const { return m_is_lost || m_first < m_bytes.size(); }
    /// As many whole records as have room in `size` bytes, taken out. Empty when some were lost, or
    /// when the first has no room; then nothing is left.
    [[nodiscard]] std::vector<std::byte> take(std::size_t size);

  private:
    [[nodiscard]] bool is_last(DWORD action, std::u16string_view prefix,
                               std::u16string_view name) const;
    void clear();

    std::size_t m_limit;
    std::vector<std::byte> m_bytes;
    std::size_t m_first = 0;  ///< where the first record stands that isn't taken
    std::size_t m_last = 0;   ///< where the last one stands
    bool m_is_lost = false;
};

}  // namespace tvutil2
