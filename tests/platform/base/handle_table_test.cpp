#include "tvutil2/platform/base/handle_table.h"

#include "tvutil2/platform/objects/objects.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <set>
#include <vector>

#include "tests/support/threads.h"

namespace {

HANDLE new_event() {
    return CreateEventW(nullptr, FALSE, FALSE, nullptr);
}

TEST(HandleTable, AClosedHandleStaysVoidThoughItsPlaceIsUsedAgain) {
    constexpr std::size_t kCount = 2000;  // more than the table begins with
    std::vector<HANDLE> closed(kCount);
    for (auto& handle : closed) handle = new_event();
    for (auto* handle : closed) ASSERT_TRUE(CloseHandle(handle));
    std::set<HANDLE> live;
    for (std::size_t i = 0; i < kCount; ++i) live.insert(new_event());
    EXPECT_EQ(live.size(), kCount);
    for (auto* handle : closed) {
        ASSERT_EQ(live.count(handle), 0U);
        SetLastError(0);
        ASSERT_FALSE(SetEvent(handle));
        ASSERT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        ASSERT_FALSE(CloseHandle(handle));
    }
    for (auto* handle : live) {
        ASSERT_TRUE(SetEvent(handle));
        ASSERT_TRUE(CloseHandle(handle));
    }
}

TEST(HandleTable, InventedHandlesAreRefused) {
    auto* const live = new_event();
    const auto value = reinterpret_cast<std::uintptr_t>(live);
    for (const auto invented :
         {std::uintptr_t{0}, std::uintptr_t{1}, std::uintptr_t{4}, ~std::uintptr_t{0}, value + 1,
          value + 2, value ^ (std::uintptr_t{1} << 32), value & 0xFFFFFFFF, value | 0xFFFFFFFC,
          value + 400000, std::uintptr_t{0x80000001}}) {
        EXPECT_FALSE(SetEvent(reinterpret_cast<HANDLE>(invented))) << std::hex << invented;
        EXPECT_FALSE(CloseHandle(reinterpret_cast<HANDLE>(invented))) << std::hex << invented;
    }
    EXPECT_TRUE(CloseHandle(live));
}

TEST(HandleTable, ThreadsMayCloseWhatOthersUse) {
    std::array<std::atomic<HANDLE>, 8> shared{};
    for (auto& handle : shared) handle = new_event();
    std::atomic<int> wrong = 0;
    tests::on_threads(4, [&](int t) {
        for (auto i = static_cast<std::size_t>(t); i < 5000; ++i) {
            auto* const old = shared[i * 5 % 8].exchange(new_event());
            SetEvent(shared[i * 3 % 8]);
            WaitForSingleObject(old, 0);
            // Whoever took it out of the array is the only one who closes it.
            if (!CloseHandle(old) || CloseHandle(old)) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
    for (auto& handle : shared) EXPECT_TRUE(CloseHandle(handle));
}

}  // namespace
