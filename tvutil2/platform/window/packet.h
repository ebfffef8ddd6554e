// What goes between two processes: a message to a window, and the answer.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <cstdint>
#include <string>

namespace tvutil2 {

enum class PacketKind : DWORD { post = 1, send = 2, notify = 3 };

/// Followed by `data_size` bytes that the message points to.
struct Packet {
    static constexpr DWORD kMark = 0x31505654;  // "TVP1"
    DWORD mark = kMark;
    PacketKind kind = PacketKind::post;
    std::uint64_t window = 0;
    DWORD message = 0;
    DWORD data_size = 0;
    std::uint64_t wparam = 0;
    std::int64_t lparam = 0;
};

/// The answer to `send`, followed by `data_size` bytes that the message filled in.
struct PacketAnswer {
    DWORD mark = Packet::kMark;
    DWORD error = 0;
    std::int64_t result = 0;
    std::uint64_t data_size = 0;
};

/// Bytes that one message may carry.
inline constexpr DWORD kMaxPacketData = DWORD{64} << 20U;

/// Messages of the system that point to their sender's memory, which is only there while it waits.
[[nodiscard]] bool points_to_memory(UINT message);
/// Those of them that reach another process, since what they point to is known and goes along.
[[nodiscard]] bool goes_along(UINT message);
/// Those that don't, and the messages of controls, many of which point to memory.
[[nodiscard]] bool stays_in_process(UINT message);

}  // namespace tvutil2
