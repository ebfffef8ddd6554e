#include "tvutil2/platform/system/version_info.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/system/elf_note.h"
#include "tvutil2/platform/system/executable_file.h"
#include "tvutil2/platform/system/pe_file.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {
namespace {

constexpr WORD kVersionType = 16;
constexpr WORD kVersionName = 1;
// A block tells its own length in 16 bits.
constexpr std::size_t kLongestBlock = 0xFFFF;
constexpr std::u16string_view kRootKey = u"VS_VERSION_INFO";

// What a block begins with: its length, that of its value, whether the value is text, and the key
// with its zero. The value stands at the next multiple of four.
struct BlockHead {
    WORD length, value_length, type;
    char16_t key[kRootKey.size() + 1];
};
constexpr std::size_t kValueOffset = (sizeof(BlockHead) + 3) / 4 * 4;

DWORD two_numbers(std::uint16_t high, std::uint16_t low) {
    return (DWORD{high} << 16U) | low;
}

std::vector<std::byte> block_of(const VersionNumbers& numbers) {
    constexpr DWORD kStructure = 0x00010000;
    BlockHead head{kValueOffset + sizeof(VS_FIXEDFILEINFO), sizeof(VS_FIXEDFILEINFO), 0, {}};
    kRootKey.copy(head.key, kRootKey.size());
    VS_FIXEDFILEINFO value{};
    value.dwSignature = VS_FFI_SIGNATURE;
    value.dwStrucVersion = kStructure;
    value.dwFileVersionMS = value.dwProductVersionMS = two_numbers(numbers[0], numbers[1]);
    value.dwFileVersionLS = value.dwProductVersionLS = two_numbers(numbers[2], numbers[3]);
    std::vector<std::byte> block(head.length);
    std::memcpy(block.data(), &head, sizeof head);
    std::memcpy(block.data() + kValueOffset, &value, sizeof value);
    return block;
}

// Empty, with the last error set, when there is none.
std::vector<std::byte> version_block(const char16_t* path) {
    const auto file = ExecutableFile::open(path);
    if (!file) return {};
    if (is_elf_file(*file)) {
        const auto numbers = elf_version(*file);
        return numbers ? block_of(*numbers) : std::vector<std::byte>();
    }
    auto block = pe_resource(*file, kVersionType, kVersionName, kLongestBlock);
    if (block && block->size() < sizeof(WORD)) {
        SetLastError(ERROR_BAD_EXE_FORMAT);
        return {};
    }
    return block.value_or(std::vector<std::byte>());
}

// A block inside a version block: a value and further blocks ("VS_VERSIONINFO", "StringTable" and
// their kin, published with the platform). Offsets are from the first byte of the outermost.
struct Block {
    std::u16string key;
    bool is_text;
    std::size_t value, value_size;  // bytes
    std::size_t children, end;
};

class BlockReader {
  public:
    explicit BlockReader(std::span<const std::byte> bytes) : m_bytes(bytes), m_size(bytes.size()) {}

    // The block at an offset, in front of `end`; nothing when it doesn't fit.
    [[nodiscard]] std::optional<Block> at(std::size_t offset, std::size_t end) const {
        struct Head {
            WORD length, value_length, type;
        };
        const auto head = m_bytes.at<Head>(offset);
        end = std::min(end, m_size);
        if (!head || head->length < sizeof *head || head->length > end - offset) {
            return std::nullopt;
        }
        Block block;
        block.end = offset + head->length;
        block.is_text = head->type == 1;
        auto next = offset + sizeof *head;
        for (;; next += sizeof(char16_t)) {
            const auto unit = m_bytes.at<char16_t>(next);
            if (!unit || next >= block.end) return std::nullopt;
            if (*unit == 0) break;
            block.key += *unit;
        }
        block.value = aligned(next + sizeof(char16_t));
        block.value_size = std::size_t{head->value_length} * (block.is_text ? 2 : 1);
        block.children = aligned(block.value + block.value_size);
        if (block.value + block.value_size > block.end) return std::nullopt;
        return block;
    }

    // Keys are compared without regard to case.
    [[nodiscard]] std::optional<Block> child(const Block& parent, std::u16string_view key) const {
        for (auto next = parent.children; next < parent.end;) {
            auto block = at(next, parent.end);
            if (!block) return std::nullopt;
            if (_wcsicmp(block->key.c_str(), std::u16string(key).c_str()) == 0) return block;
            next = aligned(block->end);
        }
        return std::nullopt;
    }

  private:
    static std::size_t aligned(std::size_t offset) { return (offset + 3) / 4 * 4; }

    MemoryBytes m_bytes;
    std::size_t m_size;
};

}  // namespace
}  // namespace tvutil2

DWORD GetFileVersionInfoSizeW(const char16_t* path, DWORD* handle) {
    if (handle != nullptr) *handle = 0;
    return static_cast<DWORD>(tvutil2::version_block(path).size());
}

BOOL GetFileVersionInfoW(const char16_t* path, DWORD /*handle*/, DWORD size, void* block) {
    if (block == nullptr || size < sizeof(WORD)) {
        return tvutil2::fail_with(ERROR_INSUFFICIENT_BUFFER);
    }
    const auto found = tvutil2::version_block(path);
    if (found.empty()) return FALSE;
    const auto count = std::min<std::size_t>(size, found.size());
    std::memset(block, 0, size);
    std::memcpy(block, found.data(), count);
    // A query knows the block's size by this word alone.
    WORD length = 0;
    std::memcpy(&length, block, sizeof length);
    length = static_cast<WORD>(std::min<std::size_t>(length, count));
    std::memcpy(block, &length, sizeof length);
    return TRUE;
}

BOOL VerQueryValueW(const void* block, const char16_t* name, void** value, UINT* size) {
    if (block == nullptr || name == nullptr || value == nullptr || size == nullptr) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    WORD length = 0;
    std::memcpy(&length, block, sizeof length);
    const tvutil2::BlockReader reader({static_cast<const std::byte*>(block), length});
    auto found = reader.at(0, length);
    if (!found || found->key != tvutil2::kRootKey) {
        return tvutil2::fail_with(ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    std::u16string_view path(name);
    while (found && !path.empty()) {
        const auto part = path.substr(0, path.find(u'\\'));
        path.remove_prefix(std::min(part.size() + 1, path.size()));
        if (!part.empty()) found = reader.child(*found, part);
    }
    if (!found || found->value_size == 0) {
        return tvutil2::fail_with(ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    *value = const_cast<char*>(static_cast<const char*>(block)) + found->value;
    *size = static_cast<UINT>(found->is_text ? found->value_size / 2 : found->value_size);
    return TRUE;
}
