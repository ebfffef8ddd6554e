// A word beside a hive that every watched write moves on, and that any process can sleep on.
//
// One page of a file, mapped by all as the address of a futex and for nothing else: the word is
// read and moved on by the kernel, so that a file that somebody cuts short is an error and not the
// end of the process. Those who may only read the file can still wait: the kernel takes a read-only
// mapping for a futex of a shared file.
//
// Who watches holds a lock for reading on the file, which ends with the process, however that ends.
// A writer looks for such a lock and leaves the word alone when there is none.
#pragma once

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/types.h"

#include <string>

namespace tvutil2 {

class SignalPage {
  public:
    SignalPage() = default;
    ~SignalPage();
    SignalPage(const SignalPage&) = delete;
    SignalPage& operator=(const SignalPage&) = delete;

    /// Maps the file; it is made, with its mode whatever the umask is, where it is missing and may
    /// be. ERROR_ACCESS_DENIED for what is no plain file of this name alone, or of a stranger's.
    LONG open(const std::string& file, bool is_private);

    /// Lets writers know that somebody waits. Before the value and the store are looked at.
    void begin_watching();
    /// For the child of a fork, where nobody waits.
    void forget_watching() { m_presence = Descriptor(); }

    [[nodiscard]] std::uint32_t value() const;
    /// After a commit: moves the word on and wakes all who wait, in all processes.
    void announce() const;
    /// Moves the word on and wakes, looked for or not.
    void wake() const;
    /// Returns when the word isn't `seen` any more, or for no reason.
    void wait(std::uint32_t seen) const;

  private:
    [[nodiscard]] bool is_watched() const;

    std::string m_path;
    Descriptor m_file;
    /// An opening of its own: a lock isn't seen by who looks through the same one.
    Descriptor m_presence;
    void* m_word = nullptr;
    bool m_may_write = false;
};

}  // namespace tvutil2
