#include "tvutil2/platform/trust/der.h"

namespace tvutil2 {

std::optional<DerValue> DerReader::next() {
    constexpr std::uint8_t kManyBytesTag = 0x1F;
    constexpr std::size_t kLongForm = 0x80;
    constexpr std::size_t kMostLengthBytes = 4;
    const auto byte = [this](std::size_t at) { return std::to_integer<std::uint8_t>(m_rest[at]); };
    if (m_rest.size() < 2 || (byte(0) & kManyBytesTag) == kManyBytesTag) return std::nullopt;
    std::size_t length = byte(1);
    std::size_t head = 2;
    if (length >= kLongForm) {
        const std::size_t count = length - kLongForm;
        if (count == 0 || count > kMostLengthBytes || m_rest.size() < head + count) {
            return std::nullopt;
        }
        length = 0;
        for (; head < 2 + count; ++head) length = length << 8U | byte(head);
        const std::size_t least = count == 1 ? kLongForm : std::size_t{1} << (8 * (count - 1));
        if (length < least) return std::nullopt;
    }
    if (length > m_rest.size() - head) return std::nullopt;
    const DerValue value{byte(0), m_rest.subspan(head, length), m_rest.first(head + length)};
    m_rest = m_rest.subspan(head + length);
    return value;
}

}  // namespace tvutil2
