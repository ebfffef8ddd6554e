#include "tvutil2/platform/objects/shared/shared_block.h"

#include "tvutil2/platform/base/last_error.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tvutil2 {
namespace {

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;

std::string path_of(int process, int descriptor) {
    return "/proc/" + std::to_string(process) + "/fd/" + std::to_string(descriptor);
}

bool is_sealed(int descriptor) {
    const int seals = fcntl(descriptor, F_GET_SEALS);
    return seals >= 0 && (seals & kSeals) == kSeals;
}

bool is_sound(const BlockHeader& header, std::uint64_t file_size) {
    if (header.magic != BlockHeader::kMagic) return false;
    switch (static_cast<HandleKind>(header.kind)) {
        case HandleKind::event:
        case HandleKind::mutex:
            return true;
        case HandleKind::semaphore:
            return header.traits > 0 && header.traits <= 0x7FFFFFFF;
        case HandleKind::mapping:
            return header.inode != 0 || header.size == file_size - SharedBlock::kHeaderSize;
        default:
            return false;
    }
}

}  // namespace

std::unique_ptr<SharedBlock> SharedBlock::create(HandleKind kind, DWORD traits,
                                                 std::uint64_t size) {
    std::unique_ptr<SharedBlock> block(new SharedBlock(
        Descriptor(memfd_create("tvutil2-object", MFD_CLOEXEC | MFD_ALLOW_SEALING))));
    const auto whole = size + kHeaderSize;
    if (!block->m_descriptor || whole < size ||
        ftruncate(block->descriptor(), static_cast<off_t>(whole)) != 0 ||
        fcntl(block->descriptor(), F_ADD_SEALS, kSeals) != 0 || !block->map()) {
        SetLastError(errno == EMFILE || errno == ENFILE ? ERROR_TOO_MANY_OPEN_FILES
                                                        : ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    auto& header = block->header();
    header.magic = BlockHeader::kMagic;
    header.kind = static_cast<DWORD>(kind);
    header.traits = traits;
    header.size = size;
    return block;
}

std::unique_ptr<SharedBlock> SharedBlock::open(int process, int descriptor, std::uint64_t inode) {
    const auto path = path_of(process, descriptor);
    std::unique_ptr<SharedBlock> block(new SharedBlock(
        Descriptor(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY | O_NONBLOCK))));
    struct stat info {};
    if (!block->m_descriptor || fstat(block->descriptor(), &info) != 0 || !S_ISREG(info.st_mode) ||
        info.st_ino != inode || static_cast<std::size_t>(info.st_size) < kHeaderSize ||
        !is_sealed(block->descriptor()) || !block->map() ||
        !is_sound(block->header(), static_cast<std::uint64_t>(info.st_size))) {
        return nullptr;
    }
    block->adopt();
    return block;
}

bool SharedBlock::is_there(int process, int descriptor, std::uint64_t inode) {
    struct stat info {};
    return stat(path_of(process, descriptor).c_str(), &info) == 0 && info.st_ino == inode;
}

void SharedBlock::adopt() {
    m_traits = m_header->traits;
    m_size = m_header->size;
}

bool SharedBlock::map() {
    struct stat info {};
    if (fstat(descriptor(), &info) != 0) return false;
    m_inode = info.st_ino;
    void* const memory =
        mmap(nullptr, kHeaderSize, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor(), 0);
    if (memory == MAP_FAILED) return false;
    m_header = static_cast<BlockHeader*>(memory);
    return true;
}

SharedBlock::~SharedBlock() {
    if (m_header != nullptr) munmap(m_header, kHeaderSize);
}

}  // namespace tvutil2
