// Who in this process waits for changes of a hive.
//
// One thread, started with the first watch, sleeps on the hive's signal page; each time it wakes
// it asks the store which of the watches have something to report. A watch reports once.
#pragma once

#include "tvutil2/platform/registry/key_id.h"
#include "tvutil2/platform/registry/signal_page.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace tvutil2 {

/// How often the sub keys and the values of a key, or of a tree, have changed.
struct Changes {
    std::int64_t names = 0;
    std::int64_t values = 0;
    bool operator==(const Changes&) const = default;
};

struct Watch {
    const void* owner = nullptr;  ///< the handle object; closing it ends the watch
    KeyId key;
    bool subtree = false;
    DWORD filter = 0;
    Changes since;                 ///< what isn't news
    std::uint32_t counted_in = 0;  ///< the store that `since` was counted in
    HANDLE event = nullptr;        ///< set when the watch ends; null when a thread waits in wait()

    bool is_over = false;  ///< guarded by the hub, as is the result
    LONG result = 0;
};

class ChangeHub {
  public:
    /// Tells whether there is something to report: ERROR_SUCCESS when there is, with `since` moved
    /// on; ERROR_NO_MORE_ITEMS when there isn't; another error ends the watch with it.
    using Check = std::function<LONG(Watch&)>;
    explicit ChangeHub(Check check) : m_check(std::move(check)) {}

    /// Opens the page of a store, unless it is open. Of another store's page the waiters are woken,
    /// since nobody announces there any more.
    LONG open_page(const std::string& file, bool is_private, std::uint32_t store);
    /// Wakes the waiters of a store that is gone. The page of the one behind it stays.
    void drop_page(std::uint32_t store);
    /// To be called after a commit.
    void announce();

    /// Enters a watch and looks once, so that nothing falls between `since` and now. The page is
    /// open.
    void add(const std::shared_ptr<Watch>& watch);
    /// Lets a watch begin where the one before it has reported up to.
    void go_on_from(const Watch& before, Watch& watch);
    /// Blocks until the watch is over; its result.
    LONG wait(const std::shared_ptr<Watch>& watch);
    /// Ends the watches of a handle: with ERROR_INVALID_HANDLE, for those who block.
    void release(const void* owner);

    /// Around a fork; in the child no thread runs and nobody waits.
    void before_fork() { m_lock.lock(); }
    void after_fork(bool in_child);

  private:
    std::shared_ptr<SignalPage> current_page();
    void run();
    void look(const std::shared_ptr<Watch>& watch);
    void finish(const std::shared_ptr<Watch>& watch, LONG result);

    Check m_check;
    std::mutex m_lock;
    std::shared_ptr<SignalPage> m_page;
    std::uint32_t m_page_store = 0;
    std::unique_ptr<std::condition_variable> m_over = std::make_unique<std::condition_variable>();
    std::vector<std::shared_ptr<Watch>> m_watches;
    bool m_is_running = false;
};

}  // namespace tvutil2
