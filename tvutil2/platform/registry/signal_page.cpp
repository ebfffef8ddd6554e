#include "tvutil2/platform/registry/signal_page.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/registry/host_error.h"
#include "tvutil2/platform/registry/store_file.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <ctime>

namespace tvutil2 {
namespace {

constexpr std::size_t kPageSize = 4096;
constexpr int kOpenFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

// Room is claimed on the disk: what the kernel can't write into a hole on a full one is lost.
bool has_whole_page(int file, bool may_write) {
    struct stat info {};
    if (fstat(file, &info) != 0) return false;
    if (static_cast<std::size_t>(info.st_size) >= kPageSize) return true;
    errno = may_write ? posix_fallocate(file, 0, kPageSize) : EACCES;
    return errno == 0;
}

// Of another name the file is somebody else's as well, and writing here would change it.
bool is_ours(int file, bool is_private) {
    struct stat info {};
    if (fstat(file, &info) != 0) return false;
    const bool is_plain = S_ISREG(info.st_mode) && info.st_nlink == 1;
    errno = EACCES;
    return is_plain && (is_private || is_trusted_file(info));
}

Descriptor make_file(const std::string& path, mode_t mode) {
    Descriptor made(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | kOpenFlags, mode));
    if (made && fchmod(made.get(), mode) != 0) return {};
    return made;
}

struct flock whole_file(short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

}  // namespace

SignalPage::~SignalPage() {
    if (m_word != nullptr) munmap(m_word, kPageSize);
}

LONG SignalPage::open(const std::string& file, bool is_private) {
    m_path = file;
    m_may_write = true;
    m_file = make_file(file, is_private ? 0600 : 0644);
    if (!m_file) m_file = Descriptor(::open(file.c_str(), O_RDWR | kOpenFlags));
    if (!m_file && (errno == EACCES || errno == EPERM || errno == EROFS)) {
        m_may_write = false;
        m_file = Descriptor(::open(file.c_str(), O_RDONLY | kOpenFlags));
    }
    if (!m_file || !is_ours(m_file.get(), is_private) ||
        !has_whole_page(m_file.get(), m_may_write)) {
        return errno == ELOOP ? static_cast<LONG>(ERROR_ACCESS_DENIED) : errno_error();
    }
    const int access = m_may_write ? PROT_READ | PROT_WRITE : PROT_READ;
    void* const page = mmap(nullptr, kPageSize, access, MAP_SHARED, m_file.get(), 0);
    if (page == MAP_FAILED) return errno_error();
    m_word = page;
    return ERROR_SUCCESS;
}

void SignalPage::begin_watching() {
    if (m_presence) return;
    Descriptor opened(::open(m_path.c_str(), O_RDONLY | kOpenFlags));
    auto lock = whole_file(F_RDLCK);
    if (opened && fcntl(opened.get(), F_OFD_SETLK, &lock) == 0) m_presence = std::move(opened);
}

bool SignalPage::is_watched() const {
    auto lock = whole_file(F_WRLCK);
    return fcntl(m_file.get(), F_OFD_GETLK, &lock) != 0 || lock.l_type != F_UNLCK;
}

std::uint32_t SignalPage::value() const {
    std::uint32_t value = 0;
    const auto size = pread(m_file.get(), &value, sizeof value, 0);
    return size == sizeof value ? value : 0;
}

// Who begins to watch after the look sees the commit that came before it.
void SignalPage::announce() const {
    if (is_watched()) wake();
}

void SignalPage::wake() const {
    if (!m_may_write || m_word == nullptr) return;
    for (int attempt = 0; attempt < 2; ++attempt) {
        constexpr unsigned kAddOne = FUTEX_OP(FUTEX_OP_ADD, 1, FUTEX_OP_CMP_EQ, 0);
        const auto woken =
            syscall(SYS_futex, m_word, FUTEX_WAKE_OP, INT_MAX, nullptr, m_word, kAddOne);
        // Cut short: the same page of the same file once it is made whole.
        if (woken >= 0 || errno != EFAULT || !has_whole_page(m_file.get(), true)) return;
    }
}

void SignalPage::wait(std::uint32_t seen) const {
    if (syscall(SYS_futex, m_word, FUTEX_WAIT, seen, nullptr, nullptr, 0) == 0 || errno != EFAULT ||
        has_whole_page(m_file.get(), m_may_write)) {
        return;
    }
    // There is nothing to sleep on until somebody who may write has made the file whole.
    constexpr timespec kAWhile{1, 0};
    nanosleep(&kAWhile, nullptr);
}

}  // namespace tvutil2
