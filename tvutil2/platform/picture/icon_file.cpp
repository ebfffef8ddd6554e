#include "tvutil2/platform/picture/icon_file.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

namespace tvutil2 {
namespace {

constexpr std::size_t kDirectory = 6;
constexpr std::size_t kFileEntry = 16;
constexpr std::size_t kResourceEntry = 14;
constexpr std::size_t kHead = 12;

DWORD number_at(std::span<const std::byte> bytes, std::size_t place, unsigned size) {
    DWORD value = 0;
    for (unsigned i = 0; i < size; ++i) {
        value |= std::to_integer<DWORD>(bytes[place + i]) << (8 * i);
    }
    return value;
}

int length_at(std::span<const std::byte> bytes, std::size_t place) {
    const auto length = std::to_integer<int>(bytes[place]);
    return length == 0 ? 256 : length;
}

// Less is better.
auto fitness(const IconEntry& entry, int size) {
    const bool is_smaller = entry.width < size;
    return std::tuple(is_smaller, std::abs(entry.width - size),
                      -static_cast<int>(number_at(entry.head, 6, 2)));
}

}  // namespace

std::optional<IconEntry> best_icon(std::span<const std::byte> directory, bool is_resource,
                                   int size) {
    const auto entry_size = is_resource ? kResourceEntry : kFileEntry;
    if (directory.size() < kDirectory || number_at(directory, 0, 4) != 0x10000) return {};
    const auto count = number_at(directory, 4, 2);
    std::optional<IconEntry> best;
    for (DWORD i = 0; i < count; ++i) {
        const auto place = kDirectory + i * entry_size;
        if (place + entry_size > directory.size()) break;
        const auto bytes = directory.subspan(place, entry_size);
        const IconEntry entry{length_at(bytes, 0), length_at(bytes, 1), number_at(bytes, 8, 4),
                              number_at(bytes, 12, is_resource ? 2 : 4), bytes.first(kHead)};
        if (!best || fitness(entry, size) < fitness(*best, size)) best = entry;
    }
    return best;
}

std::span<const std::byte> icon_data(const IconEntry& entry, std::span<const std::byte> file) {
    if (entry.place >= file.size() || entry.size > file.size() - entry.place) return {};
    return file.subspan(entry.place, entry.size);
}

std::vector<std::byte> single_icon(const IconEntry& entry, std::span<const std::byte> data) {
    std::vector<std::byte> file;
    file.reserve(kDirectory + kFileEntry + data.size());
    for (const unsigned value : {0U, 0U, 1U, 0U, 1U, 0U})
        file.push_back(static_cast<std::byte>(value));
    for (const auto byte : entry.head.first(8)) file.push_back(byte);
    const auto add_number = [&file](std::size_t value) {
        for (unsigned i = 0; i < 4; ++i) file.push_back(static_cast<std::byte>(value >> 8 * i));
    };
    add_number(data.size());
    add_number(kDirectory + kFileEntry);
    for (const auto byte : data) file.push_back(byte);
    return file;
}

}  // namespace tvutil2
