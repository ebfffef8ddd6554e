#include "tvutil2/platform/watch/change_records.h"

#include "tvutil2/platform/watch/directory_changes.h"

#include <algorithm>
#include <cstring>

namespace tvutil2 {
namespace {

constexpr std::size_t kHead = offsetof(FILE_NOTIFY_INFORMATION, FileName);

std::size_t record_size(std::size_t name_bytes) {
    return (kHead + name_bytes + sizeof(DWORD) - 1) / sizeof(DWORD) * sizeof(DWORD);
}

struct Head {
    DWORD next;
    DWORD action;
    DWORD name_bytes;
};
static_assert(sizeof(Head) == kHead);

Head head_at(const std::byte* record) {
    Head head{};
    std::memcpy(&head, record, sizeof(head));
    return head;
}

void put_next(std::byte* record, std::size_t distance) {
    const auto next = static_cast<DWORD>(distance);
    std::memcpy(record, &next, sizeof(next));
}

}  // namespace

void ChangeRecords::add(DWORD action, std::u16string_view prefix, std::u16string_view name) {
    if (m_is_lost || is_last(action, prefix, name)) return;
    const auto name_bytes = (prefix.size() + name.size()) * sizeof(char16_t);
    const auto place = m_bytes.size();
    if (place - m_first + record_size(name_bytes) > m_limit) return lose();
    m_bytes.resize(place + record_size(name_bytes));
    if (place > m_first) put_next(m_bytes.data() + m_last, place - m_last);
    auto* const record = m_bytes.data() + place;
    const Head head{0, action, static_cast<DWORD>(name_bytes)};
    std::memcpy(record, &head, sizeof(head));
    const auto prefix_bytes = prefix.size() * sizeof(char16_t);
    std::memcpy(record + kHead, prefix.data(), prefix_bytes);
    std::memcpy(record + kHead + prefix_bytes, name.data(), name_bytes - prefix_bytes);
    m_last = place;
}

bool ChangeRecords::is_last(DWORD action, std::u16string_view prefix,
                            std::u16string_view name) const {
    if (m_first == m_bytes.size()) return false;
    const auto* const record = m_bytes.data() + m_last;
    const auto head = head_at(record);
    const auto prefix_bytes = prefix.size() * sizeof(char16_t);
    const auto name_bytes = name.size() * sizeof(char16_t);
    return head.action == action && head.name_bytes == prefix_bytes + name_bytes &&
           std::memcmp(record + kHead, prefix.data(), prefix_bytes) == 0 &&
           std::memcmp(record + kHead + prefix_bytes, name.data(), name_bytes) == 0;
}

void ChangeRecords::lose() {
    clear();
    m_is_lost = true;
}

void ChangeRecords::clear() {
    m_bytes.clear();
    m_first = m_last = 0;
    m_is_lost = false;
}

std::vector<std::byte> ChangeRecords::take(std::size_t size) {
    std::size_t end = m_first;
    std::size_t last = m_first;
    while (end < m_bytes.size()) {
        const auto length = record_size(head_at(m_bytes.data() + end).name_bytes);
        if (end + length - m_first > size) break;
        last = end;
        end += length;
    }
    std::vector<std::byte> taken;
    if (end > m_first) {
        put_next(m_bytes.data() + last, 0);
        if (m_first == 0 && end == m_bytes.size()) {
            taken.swap(m_bytes);
        } else {
            taken.assign(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_first),
                         m_bytes.begin() + static_cast<std::ptrdiff_t>(end));
        }
        m_first = end;
    }
    if (taken.empty() || m_first >= m_bytes.size()) clear();
    return taken;
}

}  // namespace tvutil2
