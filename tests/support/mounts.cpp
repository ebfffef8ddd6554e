#include "tests/support/mounts.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>
#include <utility>

namespace tests {

bool has_own_mounts() {
    const auto user = getuid();
    const auto group = getgid();
    if (unshare(CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
        std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    }
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

SmallDisk::SmallDisk(std::string folder, int names) : m_folder(std::move(folder)) {
    // The root is one of them.
    const auto options = "mode=755,nr_inodes=" + std::to_string(names + 1);
    m_is_there = mount("small", m_folder.c_str(), "tmpfs", 0, options.c_str()) == 0;
}

SmallDisk::~SmallDisk() {
    umount2(m_folder.c_str(), MNT_DETACH);
}

// A file system of a program's, which never says a word.
DeadDisk::DeadDisk(std::string folder)
    : m_folder(std::move(folder)), m_server(open("/dev/fuse", O_RDWR | O_CLOEXEC)) {
    const auto options = "fd=" + std::to_string(m_server) +
                         ",rootmode=40000,user_id=" + std::to_string(getuid()) +
                         ",group_id=" + std::to_string(getgid());
    m_is_there = m_server >= 0 && mount("dead", m_folder.c_str(), "fuse", 0, options.c_str()) == 0;
}

DeadDisk::~DeadDisk() {
    if (m_server >= 0) close(m_server);
    umount2(m_folder.c_str(), MNT_DETACH);
}

}  // namespace tests
