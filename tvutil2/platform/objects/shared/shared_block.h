// Memory that several processes have in common, behind a name.
//
// It is anonymous memory of the host (memfd_create), sealed against changes of its size: nobody can
// take a page away from under a process, and the memory is gone with its last holder, however that
// one ends. Another process opens it through the holder's descriptor (/proc/PID/fd/N), which the
// host allows to processes of the same user alone.
#pragma once

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/objects/shared/robust_word.h"

#include <memory>
#include <optional>
#include <string>

namespace tvutil2 {

/// What stands at the beginning of a block. The numbers are atomic, since all holders change them.
struct BlockHeader {
    std::uint64_t magic;
    DWORD kind;    ///< a HandleKind
    DWORD traits;  ///< of an event: 1 for manual reset; of a semaphore: its maximum; of a mapping:
                   ///< its protection
    std::uint64_t size;    ///< of a mapping, in bytes
    std::uint64_t device;  ///< of a mapped file, else 0
    std::uint64_t inode;
    std::uint64_t unused;
    /// A mutex; with the other kinds never held, for those who die as they signal.
    RobustWord robust;
    std::atomic<DWORD> sequence;  ///< counts signals; what sleepers sleep on
    std::atomic<DWORD> state;     ///< 1 for a signalled event; a semaphore's count
    std::atomic<DWORD> sleepers;
    std::atomic<std::uint64_t>
        pulses;  ///< their number, and below it how many still let one through

    static constexpr std::uint64_t kMagic = 0x31304B4C42565400;
};

class SharedBlock {
  public:
    static constexpr std::size_t kHeaderSize = 4096;

    /// New memory with a zero-filled header and so much behind it; null with the last error.
    static std::unique_ptr<SharedBlock> create(HandleKind kind, DWORD traits, std::uint64_t size);
    /// That of another holder; null when that isn't there any more, or isn't a block.
    static std::unique_ptr<SharedBlock> open(int process, int descriptor, std::uint64_t inode);
    /// Whether that holder still has it.
    static bool is_there(int process, int descriptor, std::uint64_t inode);
    /// Takes size and traits over from the header.
    void adopt();
    ~SharedBlock();
    SharedBlock(const SharedBlock&) = delete;
    SharedBlock& operator=(const SharedBlock&) = delete;

    [[nodiscard]] BlockHeader& header() const { return *m_header; }
    [[nodiscard]] HandleKind kind() const { return static_cast<HandleKind>(m_header->kind); }
    [[nodiscard]] int descriptor() const { return m_descriptor.get(); }
    [[nodiscard]] std::uint64_t inode() const { return m_inode; }
    /// As it was when the block was opened, whatever a holder writes into the header.
    [[nodiscard]] std::uint64_t size() const { return m_size; }
    [[nodiscard]] DWORD traits() const { return m_traits; }

  private:
    explicit SharedBlock(Descriptor descriptor) : m_descriptor(std::move(descriptor)) {}
    bool map();

    Descriptor m_descriptor;
    BlockHeader* m_header = nullptr;
    std::uint64_t m_inode = 0;
    std::uint64_t m_size = 0;
    DWORD m_traits = 0;
};

}  // namespace tvutil2
