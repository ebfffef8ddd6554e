// What tests of files look at and run into.
#pragma once

#include <sys/resource.h>

#include <csignal>
#include <string>

namespace tests {

/// Every file with its content, every link with its target and every folder ("name/") below a
/// folder, sorted, in one text.
std::string tree(const std::string& folder);

/// While it lives, no file of this process grows beyond `limit` bytes: a full disk, as far as one
/// process can have its own.
class FullDisk {
  public:
    explicit FullDisk(rlim_t limit);
    ~FullDisk();
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

  private:
    rlimit m_before{};
    void (*m_handler)(int);
};

}  // namespace tests
