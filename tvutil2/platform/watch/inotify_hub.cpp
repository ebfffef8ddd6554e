#include "tvutil2/platform/watch/inotify_hub.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/service_thread.h"
#include "tvutil2/platform/files/host_files.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <new>
#include <thread>
#include <unordered_map>
#include <vector>

namespace tvutil2 {
namespace {

using Clock = std::chrono::steady_clock;

// Changes that come in a storm are taken a thousand at a time and not one by one: half a wait of
// this length more before a change is told, and a tenth of the work. The host's queue holds many
// times what comes in this time.
constexpr auto kStorm = std::chrono::milliseconds(1);

// How long the second half of a move is waited for, in milliseconds, when the first is the last
// record of all.
constexpr int kSecondHalf = 1;

using Subscribers = std::vector<FolderSubscriber*>;

constexpr std::size_t kReadSize = std::size_t{64} * 1024;
// A read that leaves less room than this may have left something in the queue.
constexpr std::size_t kLargestEvent = sizeof(inotify_event) + 256;

bool has_input(int descriptor, int milliseconds) {
    pollfd wanted{descriptor, POLLIN, 0};
    return poll(&wanted, 1, milliseconds) > 0;
}

}  // namespace

// One record of the queue.
struct InotifyHub::Event {
    int watch;
    std::uint32_t mask;
    std::uint32_t cookie;
    std::string_view name;

    [[nodiscard]] bool is_folder() const { return (mask & IN_ISDIR) != 0; }

    // The record at `offset`, which moves to the next one; false behind the last.
    static bool take(const std::vector<char>& records, std::size_t& offset, Event& event) {
        if (offset + sizeof(inotify_event) > records.size()) return false;
        inotify_event head{};
        std::memcpy(&head, records.data() + offset, sizeof(head));
        const auto* const name = records.data() + offset + sizeof(head);
        event = {head.wd, head.mask, head.cookie, std::string_view(name, strnlen(name, head.len))};
        offset += sizeof(head) + head.len;
        return true;
    }
};

struct InotifyHub::State {
    Descriptor queue;
    bool is_running = false;
    std::unordered_map<int, Subscribers> subscribers;
    Subscribers waiting_for_quiet;
    std::vector<char> telling;              ///< records that are being told
    std::vector<char> pending;              ///< records that are off the queue and come after those
    std::vector<std::uint32_t> told_moves;  ///< whose second half has been told with the first

    [[nodiscard]] bool is_subscribed(int watch, const FolderSubscriber* folder) const {
        const auto found = subscribers.find(watch);
        return found != subscribers.end() &&
               std::find(found->second.begin(), found->second.end(), folder) != found->second.end();
    }
    // A copy: who is told something may take folders away and add others.
    [[nodiscard]] Subscribers subscribers_of(int watch) const {
        const auto found = subscribers.find(watch);
        return found == subscribers.end() ? Subscribers() : found->second;
    }
};

// The thread uses it for as long as the process lives, so it is never destroyed.
InotifyHub& InotifyHub::instance() {
    static auto* const hub = new InotifyHub;
    return *hub;
}

InotifyHub::InotifyHub()
    : m_state(new State),
      m_is_fork_safe(
          ForkRank::store, this, [](void* hub) { static_cast<InotifyHub*>(hub)->m_lock.lock(); },
          [](void* hub) { static_cast<InotifyHub*>(hub)->m_lock.unlock(); },
          [](void* hub) { static_cast<InotifyHub*>(hub)->begin_child(); }) {}

// The queue is the parent's: a child that read it would take changes away. What it inherits of
// watches tells nothing any more.
void InotifyHub::begin_child() {
    for (const auto& [watch, folders] : m_state->subscribers) {
        for (auto* const folder : folders) folder->m_watch = -1;
    }
    *m_state = State();
    m_lock.unlock();
    new (&m_lock) std::mutex;
}

bool InotifyHub::start() {
    auto& state = *m_state;
    if (state.is_running) return true;
    if (!state.queue) state.queue = Descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!state.queue) {
        return errno == EMFILE ? fail_with(ERROR_NO_SYSTEM_RESOURCES) : fail_with_errno();
    }
    try {
        start_service_thread([this] { run(); });
    } catch (const std::exception&) {
        return fail_with(ERROR_NO_SYSTEM_RESOURCES);
    }
    return state.is_running = true;
}

bool InotifyHub::watch(FolderSubscriber& folder, const std::string& path, std::uint32_t mask) {
    if (!start()) return false;
    auto& state = *m_state;
    // Others may listen to the same folder: what they asked for stays asked for.
    const int watch = inotify_add_watch(state.queue.get(), path.c_str(), mask | IN_MASK_ADD);
    if (watch < 0) {
        if (errno == ENOSPC || errno == ENOMEM) return fail_with(ERROR_NO_SYSTEM_RESOURCES);
        return errno == ENOTDIR ? fail_with(ERROR_DIRECTORY) : fail_at(path);
    }
    folder.m_watch = watch;
    state.subscribers[watch].push_back(&folder);
    return true;
}

// The host knows a folder by what it is and not by its path.
bool InotifyHub::is_watched_by(const FolderSubscriber& folder, const std::string& path,
                               std::uint32_t mask) const {
    const int watch = inotify_add_watch(m_state->queue.get(), path.c_str(), mask | IN_MASK_ADD);
    return watch < 0 || watch == folder.m_watch;
}

void InotifyHub::forget(FolderSubscriber& folder) {
    auto& state = *m_state;
    if (std::exchange(folder.m_waits_for_quiet, false)) {
        auto& waiting = state.waiting_for_quiet;
        waiting.erase(std::remove(waiting.begin(), waiting.end(), &folder), waiting.end());
    }
    const auto found = state.subscribers.find(folder.m_watch);
    folder.m_watch = -1;
    if (found == state.subscribers.end()) return;
    auto& folders = found->second;
    folders.erase(std::remove(folders.begin(), folders.end(), &folder), folders.end());
    if (!folders.empty()) return;
    inotify_rm_watch(state.queue.get(), found->first);
    state.subscribers.erase(found);
}

void InotifyHub::collect() {
    auto& pending = m_state->pending;
    for (;;) {
        const auto used = pending.size();
        pending.resize(used + kReadSize);
        const auto size = read(m_state->queue.get(), pending.data() + used, kReadSize);
        pending.resize(used + static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        if (size < static_cast<ssize_t>(kReadSize - kLargestEvent)) return;
    }
}

void InotifyHub::tell_when_quiet(FolderSubscriber& folder) {
    if (!std::exchange(folder.m_waits_for_quiet, true))
        m_state->waiting_for_quiet.push_back(&folder);
}

void InotifyHub::run() {
    const int queue = m_state->queue.get();
    Clock::time_point last;
    for (;;) {
        has_input(queue, -1);
        if (Clock::now() - last < 2 * kStorm) std::this_thread::sleep_for(kStorm);
        {
            const auto guard = locked();
            collect();
            tell_all();
        }
        last = Clock::now();
    }
}

void InotifyHub::tell_all() {
    auto& state = *m_state;
    for (;;) {
        while (!state.pending.empty()) {
            state.telling.swap(state.pending);
            tell_batch();
            state.telling.clear();
        }
        if (state.waiting_for_quiet.empty()) return;
        // What was done before they asked is off the queue now, or has been told.
        collect();
        if (state.pending.empty()) break;
    }
    for (auto* const folder : std::exchange(state.waiting_for_quiet, {})) {
        folder->m_waits_for_quiet = false;
        folder->on_quiet();
    }
}

void InotifyHub::tell_batch() {
    Event event{};
    for (std::size_t offset = 0; Event::take(m_state->telling, offset, event);) {
        if ((event.mask & IN_MOVED_FROM) != 0) {
            tell_departure(event, offset);
        } else if ((event.mask & IN_MOVED_TO) != 0) {
            tell_arrival(event);
        } else {
            tell(event);
        }
    }
}

// Who is told something may take folders away, this one included, and add others.
template <class Tell>
void InotifyHub::tell_each(int watch, Tell tell_one) {
    const auto found = m_state->subscribers.find(watch);
    if (found == m_state->subscribers.end()) return;
    if (found->second.size() == 1) return tell_one(*found->second.front());
    for (auto* const folder : std::vector(found->second)) {
        if (m_state->is_subscribed(watch, folder)) tell_one(*folder);
    }
}

void InotifyHub::tell(const Event& event) {
    auto& state = *m_state;
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
        std::vector<int> watches;
        for (const auto& [watch, folders] : state.subscribers) watches.push_back(watch);
        for (const int watch : watches) {
            tell_each(watch, [](FolderSubscriber& folder) { folder.on_lost(); });
        }
    } else if ((event.mask & IN_IGNORED) != 0) {
        tell_each(event.watch, [](FolderSubscriber& folder) {
            folder.m_watch = -1;
            folder.on_folder_gone();
        });
        state.subscribers.erase(event.watch);
    } else if ((event.mask & IN_MOVE_SELF) != 0) {
        tell_each(event.watch, [](FolderSubscriber& folder) { folder.on_folder_moved(); });
    } else if (!event.name.empty()) {
        tell_each(event.watch,
                  [&](FolderSubscriber& folder) { folder.on_entry(event.mask, event.name); });
    }
}

// A move is two records, and they are told as one. The second stands somewhere behind the first;
// when nothing at all does, the host may be between the two.
void InotifyHub::tell_departure(const Event& first, std::size_t offset) {
    auto& state = *m_state;
    const auto second_half_in = [&](const std::vector<char>& records, std::size_t from,
                                    Event& event) {
        while (Event::take(records, from, event)) {
            if ((event.mask & IN_MOVED_TO) != 0 && event.cookie == first.cookie) return true;
        }
        return false;
    };
    if (offset == state.telling.size() && state.pending.empty() &&
        has_input(state.queue.get(), kSecondHalf)) {
        collect();
    }
    Event second{};
    if (!second_half_in(state.telling, offset, second) &&
        !second_half_in(state.pending, 0, second)) {
        return tell_move(&first, nullptr);
    }
    state.told_moves.push_back(first.cookie);
    const std::string new_name(second.name);  // what is pending may grow while this is told
    second.name = new_name;
    tell_move(&first, &second);
}

void InotifyHub::tell_arrival(const Event& second) {
    auto& told = m_state->told_moves;
    const auto found = std::find(told.begin(), told.end(), second.cookie);
    if (found == told.end()) return tell_move(nullptr, &second);
    told.erase(found);
}

void InotifyHub::tell_move(const Event* first, const Event* second) {
    const auto& state = *m_state;
    const auto is_folder = (first != nullptr ? first : second)->is_folder();
    const auto old_name = first != nullptr ? first->name : std::string_view();
    const auto new_name = second != nullptr ? second->name : std::string_view();
    const auto left = first != nullptr ? state.subscribers_of(first->watch) : Subscribers();
    auto reached = second != nullptr ? state.subscribers_of(second->watch) : Subscribers();
    for (auto* const from : left) {
        if (!state.is_subscribed(first->watch, from)) continue;
        const auto to = std::find_if(reached.begin(), reached.end(), [&](const auto* folder) {
            return folder->party() == from->party();
        });
        auto* const target = to != reached.end() ? *to : nullptr;
        if (target != nullptr) reached.erase(to);
        from->on_move(from, old_name, target, new_name, is_folder);
    }
    for (auto* const to : reached) {
        if (state.is_subscribed(second->watch, to)) {
            to->on_move(nullptr, old_name, to, new_name, is_folder);
        }
    }
}

}  // namespace tvutil2
