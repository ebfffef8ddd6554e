#include "tools/tvutil/log_follow.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/tvutil/failure.h"

namespace tool {
namespace {

constexpr char16_t kByteOrderMark = 0xFEFF;

std::string folder_of(const std::string& path) {
    const auto separator = path.rfind('/');
    return separator == 0 ? "/" : path.substr(0, separator);
}

}  // namespace

GrowingLog::GrowingLog(std::string path)
    : m_path(std::move(path)), m_changes(inotify_init1(IN_CLOEXEC)) {
    if (inotify_add_watch(m_changes, folder_of(m_path).c_str(),
                          IN_MODIFY | IN_CREATE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF) <
        0) {
        const Failure failure{Exit::failed, folder_of(m_path) + ": " + std::strerror(errno)};
        close(m_changes);
        throw failure;
    }
}

GrowingLog::~GrowingLog() {
    close(m_changes);
}

// Empty when there is nothing more for now.
std::string GrowingLog::next_block() {
    constexpr std::size_t kBlock = 65536;
    const int file = open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat info {};
    if (file < 0 || fstat(file, &info) != 0) {
        if (file >= 0) close(file);
        return {};
    }
    const auto size = static_cast<std::uint64_t>(info.st_size);
    if (info.st_dev != m_device || info.st_ino != m_inode || size < m_offset) {
        m_device = info.st_dev;
        m_inode = info.st_ino;
        m_offset = 0;
        m_started.clear();
    }
    std::string bytes(kBlock, '\0');
    const auto count = pread(file, bytes.data(), bytes.size(), static_cast<off_t>(m_offset));
    close(file);
    // Whole units alone: half a one comes again with the rest.
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) / 2 * 2 : 0);
    m_offset += bytes.size();
    return bytes;
}

void GrowingLog::skip() {
    while (!next_block().empty()) {
    }
}

bool GrowingLog::read(const See& see) {
    for (;;) {
        const bool is_start = m_offset == 0;
        const auto bytes = next_block();
        if (bytes.empty()) return true;
        std::u16string units(bytes.size() / 2, u'\0');
        std::memcpy(units.data(), bytes.data(), bytes.size());
        const bool has_mark = units[0] == kByteOrderMark && (is_start || m_offset == bytes.size());
        m_started.append(units, has_mark ? 1 : 0);
        std::size_t start = 0;
        for (auto end = m_started.find(u"\r\n"); end != std::u16string::npos;
             end = m_started.find(u"\r\n", start)) {
            if (!see(std::u16string_view(m_started).substr(start, end - start))) return false;
            start = end + 2;
        }
        m_started.erase(0, start);
    }
}

void GrowingLog::wait() {
    alignas(inotify_event) char events[4096];
    const auto size = ::read(m_changes, events, sizeof events);
    for (ssize_t at = 0; at < size;) {
        inotify_event event{};
        std::memcpy(&event, events + at, sizeof event);
        if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0) {
            throw Failure{Exit::failed, folder_of(m_path) + ": the folder is gone"};
        }
        at += static_cast<ssize_t>(sizeof event + event.len);
    }
}

}  // namespace tool
