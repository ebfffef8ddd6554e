// The file behind a hive: where it lies, who may have made it, and whether it is still the same.
//
// A store can be deleted, put away or replaced while this process has it open, and what is written
// to it then is seen by nobody. So every store that was met at the path gets a number, and who
// holds an open connection compares.
//
// The machine's store says what programs trust, so it is used only as the superuser (or, below a
// profile, the own account) made it: nobody else owns its folder or one of its files or may write
// to them. No store is opened through a link; only the folder of a user's may be one.
#pragma once

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/types.h"

#include <sys/types.h>

#include <atomic>
#include <mutex>
#include <string>

struct stat;

namespace tvutil2 {

/// Whether nobody but the superuser and the own account can have made or changed a file.
[[nodiscard]] bool is_trusted_file(const struct stat& info);

class StoreFile {
  public:
    StoreFile(std::string folder, bool is_private);

    /// The hive's file. Its companions have the same name and a suffix.
    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] bool is_private() const { return m_is_private; }

    /// Makes the folder, if need be, with its mode whatever the umask is.
    [[nodiscard]] LONG make_folder() const;

    /// Looks at the folder and the files, and takes write permissions that others have of our own
    /// machine store away. ERROR_FILE_NOT_FOUND when there is no hive, ERROR_ACCESS_DENIED for a
    /// link, a foreign owner or somebody else's write permission. `real` becomes the path to open.
    [[nodiscard]] LONG check(std::string& real) const;

    /// Which of the stores met at the path, counted from 1, is there now; 0 for none. One system
    /// call. Safe from any thread.
    [[nodiscard]] std::uint32_t number();
    /// Whether the store of this number was still there that short time ago: what answers that take
    /// less than a system call can afford to know.
    [[nodiscard]] bool was_just(std::uint32_t number, std::int64_t nanoseconds_ago);

    void before_fork() { m_lock.lock(); }
    void after_fork() { m_lock.unlock(); }

  private:
    bool pin_store(struct stat& info);

    const std::string m_folder;
    const std::string m_path;
    const bool m_is_private;

    std::mutex m_lock;
    /// Holds the store last met, so that no other file can get its inode.
    Descriptor m_pin;
    dev_t m_device = 0;
    ino_t m_inode = 0;
    std::uint32_t m_number = 0;

    std::atomic<std::uint32_t> m_seen_number{0};
    std::atomic<std::int64_t> m_seen_at{0};
};

}  // namespace tvutil2
