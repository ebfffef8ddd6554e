// Small executables with a version, made byte by byte.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace tests {

class Bytes {
  public:
    template <class T>
    void put(std::size_t at, const T& value) {
        if (m_bytes.size() < at + sizeof value) m_bytes.resize(at + sizeof value);
        std::memcpy(m_bytes.data() + at, std::addressof(value), sizeof value);
    }
    void put_text(std::size_t at, std::string_view text) {
        for (const char c : text) put(at++, c);
    }
    [[nodiscard]] const std::string& all() const { return m_bytes; }

  private:
    std::string m_bytes;
};

/// Where the parts of pe_image stand.
inline constexpr std::size_t kPeRoot = 512;            // the first resource directory
inline constexpr std::size_t kPeBlock = kPeRoot + 88;  // the version block
inline constexpr std::size_t kPeValue = kPeBlock + 40;
inline constexpr std::uint16_t kPeBlockSize = 40 + 52;

/// A file of the platform with one section, and version 8.1.2.61 in a block of `block_size` bytes
/// whose value says that it has `value_size`.
inline Bytes pe_image(std::uint16_t value_size = 52, std::uint16_t block_size = kPeBlockSize) {
    using u16 = std::uint16_t;
    using u32 = std::uint32_t;
    Bytes image;
    image.put_text(0, "MZ");
    image.put(60, u32{64});
    image.put_text(64, std::string_view("PE\0\0", 4));
    image.put(68, u16{0x14C});
    image.put(70, u16{1});    // sections
    image.put(84, u16{224});  // size of the optional header
    image.put(88, u16{0x10B});
    image.put(88 + 92, u32{16});
    image.put(88 + 96 + 16, u32{0x1000});  // the resources
    image.put(312 + 8, u32{0x200});
    image.put(312 + 12, u32{0x1000});
    image.put(312 + 16, u32{0x200});
    image.put(312 + 20, static_cast<u32>(kPeRoot));
    const u32 entries[3][2] = {{16, 0x80000018}, {1, 0x80000030}, {0x409, 0x48}};
    for (u32 level = 0; level < 3; ++level) {
        image.put(kPeRoot + 24 * level + 14, u16{1});
        image.put(kPeRoot + 24 * level + 16, entries[level][0]);
        image.put(kPeRoot + 24 * level + 20, entries[level][1]);
    }
    image.put(kPeRoot + 72, u32{0x1000 + 88});
    image.put(kPeRoot + 76, u32{block_size});
    image.put(kPeBlock, block_size);
    image.put(kPeBlock + 2, value_size);
    for (std::size_t i = 0; i < 15; ++i) {
        image.put(kPeBlock + 6 + 2 * i, static_cast<u16>("VS_VERSION_INFO"[i]));
    }
    image.put(kPeValue, u32{0xFEEF04BD});
    image.put(kPeValue + 8, u32{0x00080001});
    image.put(kPeValue + 12, u32{0x0002003D});
    image.put(kPeRoot + 0x1FF, char{0});
    return image;
}

/// A file of the host, of 64 bits, whose note segment holds another note and then version 8.1.2.61.
inline Bytes elf_image() {
    using u16 = std::uint16_t;
    using u32 = std::uint32_t;
    using u64 = std::uint64_t;
    Bytes image;
    image.put_text(0,
                   "\x7F"
                   "ELF\x02\x01\x01");
    image.put(32, u64{64});  // program headers
    image.put(54, u16{56});
    image.put(56, u16{1});
    image.put(64, u32{4});  // a note segment
    image.put(72, u64{120});
    image.put(96, u64{20 + 28});
    image.put(112, u64{4});
    const u32 other[] = {4, 1, 3};
    image.put(120, other);
    image.put_text(132, std::string_view("GNU\0x", 5));
    const u32 ours[] = {8, 8, 1};
    image.put(140, ours);
    image.put_text(152, std::string_view("tvutil2\0", 8));
    const u16 version[] = {8, 1, 2, 61};
    image.put(160, version);
    return image;
}

}  // namespace tests
