// A word beside a hive that every write moves on, and that any process can sleep on.
//
// One page of a file, mapped by all. Those who may only read the file can still wait: the kernel
// takes a read-only mapping for a futex of a shared file.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <atomic>
#include <string>

namespace tvutil2 {

class SignalPage {
  public:
    SignalPage() = default;
    ~SignalPage();
    SignalPage(const SignalPage&) = delete;
    SignalPage& operator=(const SignalPage&) = delete;

    /// Maps the file; it is made where it is missing and may be. ERROR_SUCCESS if it is mapped
    /// already.
    LONG open(const std::string& file, bool is_private);
    [[nodiscard]] bool is_open() const { return m_word != nullptr; }

    [[nodiscard]] std::uint32_t value() const;
    /// Moves the word on and wakes all who wait, in all processes.
    void announce();
    /// Returns when the word isn't `seen` any more, or for no reason.
    void wait(std::uint32_t seen) const;

  private:
    std::atomic<std::uint32_t>* m_word = nullptr;
    bool m_may_write = false;
};

}  // namespace tvutil2
