// Which key of which store.
#pragma once

#include <cstdint>

namespace tvutil2 {

/// A key of a hive: its row, and the number of the store that has the row (see StoreFile). The root
/// is in every store.
struct KeyId {
    static constexpr std::int64_t kRoot = 1;

    std::int64_t row = kRoot;
    std::uint32_t store = 0;

    [[nodiscard]] bool is_in(std::uint32_t number) const { return row == kRoot || store == number; }
};

}  // namespace tvutil2
