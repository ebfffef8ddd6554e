#include "tvutil2/platform/window/listing.h"

#include <bit>
#include <cstring>

namespace tvutil2 {
namespace {

static_assert(std::endian::native == std::endian::little, "numbers are copied as they are");

constexpr std::string_view kMark = "TVW1";

struct Header {
    std::uint64_t handle;
    DWORD thread, style, class_units, title_units;
};

std::string_view bytes_of(const std::u16string& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

// Takes text off the front; false when there isn't as much.
bool take_text(std::string_view& bytes, DWORD units, std::u16string& text) {
    const auto size = std::size_t{units} * sizeof(char16_t);
    if (bytes.size() < size) return false;
    text.resize(units);
    std::memcpy(text.data(), bytes.data(), size);
    bytes.remove_prefix(size);
    return true;
}

}  // namespace

std::string encode_listing(const std::vector<ListedWindow>& windows) {
    std::string bytes(kMark);
    for (const auto& window : windows) {
        const Header header{window.handle, window.thread, window.style,
                            static_cast<DWORD>(window.class_name.size()),
                            static_cast<DWORD>(window.title.size())};
        bytes.append(reinterpret_cast<const char*>(&header), sizeof header);
        bytes.append(bytes_of(window.class_name)).append(bytes_of(window.title));
    }
    return bytes;
}

std::optional<std::vector<ListedWindow>> decode_listing(std::string_view bytes) {
    if (!bytes.starts_with(kMark)) return std::nullopt;
    bytes.remove_prefix(kMark.size());
    std::vector<ListedWindow> windows;
    while (!bytes.empty()) {
        Header header;
        if (bytes.size() < sizeof header) return std::nullopt;
        std::memcpy(&header, bytes.data(), sizeof header);
        bytes.remove_prefix(sizeof header);
        ListedWindow window{header.handle, header.thread, header.style, {}, {}};
        if (!take_text(bytes, header.class_units, window.class_name) ||
            !take_text(bytes, header.title_units, window.title)) {
            return std::nullopt;
        }
        windows.push_back(std::move(window));
    }
    return windows;
}

}  // namespace tvutil2
