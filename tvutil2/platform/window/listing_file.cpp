#include "tvutil2/platform/window/listing_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <thread>

namespace tvutil2 {
namespace {

constexpr std::size_t kBlock = 4096;

struct ListingHeader {
    std::uint64_t size, checksum;
};

// FNV-1a, over 64 bits.
std::uint64_t checksum_of(std::string_view bytes) {
    std::uint64_t sum = 0xCBF29CE484222325;
    for (const char byte : bytes) {
        sum = (sum ^ static_cast<unsigned char>(byte)) * std::uint64_t{0x100000001B3};
    }
    return sum;
}

std::string read_from_start(int file) {
    std::string bytes;
    char block[kBlock];
    for (ssize_t size = 0;
         (size = pread(file, block, sizeof block, static_cast<off_t>(bytes.size()))) > 0;) {
        bytes.append(block, static_cast<std::size_t>(size));
    }
    return bytes;
}

std::optional<std::string> whole_listing(const std::string& bytes) {
    ListingHeader header;
    if (bytes.size() < sizeof header) return std::nullopt;
    std::memcpy(&header, bytes.data(), sizeof header);
    if (header.size > bytes.size() - sizeof header) return std::nullopt;
    auto listing = bytes.substr(sizeof header, header.size);
    if (checksum_of(listing) != header.checksum) return std::nullopt;
    return listing;
}

}  // namespace

bool ListingFile::open(int folder, const std::string& name) {
    m_room = 0;
    m_file = Descriptor(
        openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    return static_cast<bool>(m_file);
}

bool ListingFile::make_room(std::size_t size) {
    if (size <= m_room) return true;
    const auto room = (size + kBlock - 1) / kBlock * kBlock;
    errno = posix_fallocate(m_file.get(), 0, static_cast<off_t>(room));
    if (errno != 0) return false;
    m_room = room;
    return true;
}

bool ListingFile::write(std::string_view bytes) {
    const ListingHeader header{bytes.size(), checksum_of(bytes)};
    std::string all(reinterpret_cast<const char*>(&header), sizeof header);
    all.append(bytes);
    if (!make_room(all.size())) return false;
    for (std::size_t at = 0; at < all.size();) {
        const auto size =
            pwrite(m_file.get(), all.data() + at, all.size() - at, static_cast<off_t>(at));
        if (size < 0 && errno == EINTR) continue;
        if (size <= 0) return false;
        at += static_cast<std::size_t>(size);
    }
    return true;
}

std::optional<std::string> read_listing_file(int file) {
    using namespace std::chrono_literals;
    const auto end = std::chrono::steady_clock::now() + 20ms;
    for (;;) {
        const auto bytes = read_from_start(file);
        auto listing = whole_listing(bytes);
        // One that nothing was written to yet isn't in the midst of anything.
        if (listing || bytes.empty() || std::chrono::steady_clock::now() >= end) return listing;
        std::this_thread::sleep_for(100us);
    }
}

}  // namespace tvutil2
