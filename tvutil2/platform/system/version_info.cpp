#include "tvutil2/platform/system/version_info.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/system/elf_note.h"
#include "tvutil2/platform/system/pe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
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

class OpenFile : public FileBytes {
  public:
    explicit OpenFile(Descriptor file) : m_file(std::move(file)) {}

    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> out) const override {
        std::size_t filled = 0;
        while (filled < out.size()) {
            const auto size = pread(m_file.get(), out.data() + filled, out.size() - filled,
                                    static_cast<off_t>(offset + filled));
            if (size < 0 && errno == EINTR) continue;
            if (size <= 0) return false;
            filled += static_cast<std::size_t>(size);
        }
        return true;
    }

  private:
    Descriptor m_file;
};

// False with the last error set. O_NONBLOCK: a pipe with a file's name must not hold the caller.
bool open_executable(const char16_t* path, Descriptor& file) {
    const auto host = host_path_of(path);
    if (!host) return false;
    file = Descriptor(open(host->c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat info {};
    if (!file || fstat(file.get(), &info) != 0) return fail_at(*host);
    if (S_ISDIR(info.st_mode)) return fail_with(ERROR_ACCESS_DENIED);
    return S_ISREG(info.st_mode) || fail_with(ERROR_BAD_EXE_FORMAT);
}

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
    Descriptor descriptor;
    if (!open_executable(path, descriptor)) return {};
    const OpenFile file(std::move(descriptor));
    if (is_elf_file(file)) {
        const auto numbers = elf_version(file);
        return numbers ? block_of(*numbers) : std::vector<std::byte>();
    }
    auto block = pe_resource(file, kVersionType, kVersionName, kLongestBlock);
    if (block && block->size() < sizeof(WORD)) {
        SetLastError(ERROR_BAD_EXE_FORMAT);
        return {};
    }
    return block.value_or(std::vector<std::byte>());
}

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
    using tvutil2::BlockHead;
    using tvutil2::kValueOffset;
    const auto is_root = [](std::u16string_view text) { return text.empty() || text == u"\\"; };
    if (block == nullptr || name == nullptr || value == nullptr || size == nullptr) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    WORD length = 0;
    std::memcpy(&length, block, sizeof length);
    BlockHead head{};
    if (!is_root(name) || length < kValueOffset) {
        return tvutil2::fail_with(ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    std::memcpy(&head, block, sizeof head);
    const std::u16string_view key(head.key, std::size(head.key));
    if (key != std::u16string_view(u"VS_VERSION_INFO\0", key.size()) || head.value_length == 0 ||
        head.value_length > length - kValueOffset) {
        return tvutil2::fail_with(ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    *value = const_cast<char*>(static_cast<const char*>(block)) + kValueOffset;
    *size = head.value_length;
    return TRUE;
}
