#include "tvutil2/platform/registry/signal_page.h"

#include "tvutil2/platform/base/last_error.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

namespace tvutil2 {
namespace {

constexpr std::size_t kPageSize = 4096;

// Room is claimed on the disk: a write into a hole on a full one would kill the process.
bool has_whole_page(int file, bool may_write) {
    struct stat info {};
    if (fstat(file, &info) != 0) return false;
    if (static_cast<std::size_t>(info.st_size) >= kPageSize) return true;
    errno = may_write ? posix_fallocate(file, 0, kPageSize) : EACCES;
    return errno == 0;
}

void* map_page(int file, bool may_write) {
    if (!has_whole_page(file, may_write)) return MAP_FAILED;
    const int access = may_write ? PROT_READ | PROT_WRITE : PROT_READ;
    return mmap(nullptr, kPageSize, access, MAP_SHARED, file, 0);
}

}  // namespace

SignalPage::~SignalPage() {
    if (m_word != nullptr) munmap(m_word, kPageSize);
}

LONG SignalPage::open(const std::string& file, bool is_private) {
    if (is_open()) return ERROR_SUCCESS;
    const mode_t mode = is_private ? 0600 : 0644;
    m_may_write = true;
    int opened = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, mode);
    if (opened < 0 && (errno == EACCES || errno == EPERM || errno == EROFS)) {
        m_may_write = false;
        opened = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    }
    if (opened < 0) return static_cast<LONG>(error_from_errno(errno));
    void* page = map_page(opened, m_may_write);
    const auto error =
        static_cast<LONG>(errno == EFBIG ? ERROR_DISK_FULL : error_from_errno(errno));
    ::close(opened);
    if (page == MAP_FAILED) return error;
    m_word = static_cast<std::atomic<std::uint32_t>*>(page);
    return ERROR_SUCCESS;
}

std::uint32_t SignalPage::value() const {
    return m_word->load(std::memory_order_acquire);
}

void SignalPage::announce() {
    if (m_word == nullptr || !m_may_write) return;
    m_word->fetch_add(1, std::memory_order_release);
    syscall(SYS_futex, m_word, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

void SignalPage::wait(std::uint32_t seen) const {
    syscall(SYS_futex, m_word, FUTEX_WAIT, seen, nullptr, nullptr, 0);
}

}  // namespace tvutil2
