// The process's one inotify descriptor, and who hears what it tells.
//
// The host allows an account few descriptors of this kind (128 by default), so every watch of the
// process shares one, and folders that several watches follow are watched once. A thread, started
// with the first watch, sleeps on the descriptor. All that it tells is told with the hub's lock
// held, so that whoever takes a watch away under that lock hears nothing any more.
#pragma once

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/types.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

namespace tvutil2 {

/// One folder that is listened to. It stays in its place while it is watched.
class FolderSubscriber {
  public:
    FolderSubscriber() = default;
    FolderSubscriber(const FolderSubscriber&) = delete;
    FolderSubscriber& operator=(const FolderSubscriber&) = delete;

    /// Something happened to an entry. `mask` holds the host's IN_ flags, IN_ISDIR included.
    virtual void on_entry(std::uint32_t mask, std::string_view name) = 0;
    /// An entry got another name, or came from or went to a folder that isn't listened to by the
    /// same party. One of the two is null then. Called for the subscriber that the entry left if
    /// there is one, and else for the one it came to.
    virtual void on_move(FolderSubscriber* from, std::string_view old_name, FolderSubscriber* to,
                         std::string_view new_name, bool is_folder) = 0;
    /// The folder itself was moved.
    virtual void on_folder_moved() = 0;
    /// The folder is no longer watched: it is gone, or its file system is.
    virtual void on_folder_gone() = 0;
    /// Changes were lost. Told to every subscriber.
    virtual void on_lost() = 0;
    /// The queue of changes was empty a moment ago: what was true before has been told. Called once
    /// for each tell_when_quiet().
    virtual void on_quiet() = 0;
    /// Subscribers of one party hear of a move between two of their folders once.
    [[nodiscard]] virtual const void* party() const = 0;

  protected:
    ~FolderSubscriber() = default;

  private:
    friend class InotifyHub;
    int m_watch = -1;
    bool m_waits_for_quiet = false;
};

class InotifyHub {
  public:
    static InotifyHub& instance();

    [[nodiscard]] std::unique_lock<std::mutex> locked() { return std::unique_lock(m_lock); }

    // With the lock held:

    /// Begins to listen to a folder of the host for IN_ flags. False with the last error:
    /// ERROR_NO_SYSTEM_RESOURCES when the host's limit of watches or descriptors is reached, else
    /// what is wrong with the path.
    [[nodiscard]] bool watch(FolderSubscriber& folder, const std::string& path, std::uint32_t mask);
    /// Whether what stands at a path is the folder that this one listens to, or nothing.
    [[nodiscard]] bool is_watched_by(const FolderSubscriber& folder, const std::string& path,
                                     std::uint32_t mask) const;
    /// The folder's end: nothing more is told to it.
    void forget(FolderSubscriber& folder);
    /// Takes what the host has to tell off its queue, to be told later: for those who hold the lock
    /// for long.
    void collect();
    /// The subscriber is told once the queue was empty. Asking twice is asking once.
    void tell_when_quiet(FolderSubscriber& folder);

  private:
    struct State;
    struct Event;
    InotifyHub();
    ~InotifyHub() = delete;

    bool start();
    void begin_child();
    void run();
    void tell_all();
    void tell_batch();
    void tell(const Event& event);
    template <class Tell>
    void tell_each(int watch, Tell tell_one);
    void tell_departure(const Event& first, std::size_t offset);
    void tell_arrival(const Event& second);
    void tell_move(const Event* first, const Event* second);

    std::mutex m_lock;
    State* m_state;
    ForkMember m_is_fork_safe;
};

}  // namespace tvutil2
