// Disks of a test's own, mounted where nobody else sees them.
#pragma once

#include <string>

namespace tests {

/// Gives the calling thread, and those that it starts, mounts of their own; before other threads
/// need them. False where the host doesn't let this process have any.
bool has_own_mounts();

/// A disk that takes `names` files and folders, and then is full.
class SmallDisk {
  public:
    SmallDisk(std::string folder, int names);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    [[nodiscard]] bool is_there() const { return m_is_there; }

  private:
    std::string m_folder;
    bool m_is_there;
};

/// A disk whose server has gone: who asks anything of it waits until this ends.
class DeadDisk {
  public:
    explicit DeadDisk(std::string folder);
    ~DeadDisk();
    DeadDisk(const DeadDisk&) = delete;
    DeadDisk& operator=(const DeadDisk&) = delete;

    [[nodiscard]] bool is_there() const { return m_is_there; }

  private:
    std::string m_folder;
    int m_server;
    bool m_is_there;
};

}  // namespace tests
