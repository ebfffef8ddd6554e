#include "tvutil2/platform/window/endpoint.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/service_thread.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/packet.h"
#include "tvutil2/platform/window/process_place.h"
#include "tvutil2/platform/window/remote_message.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/window_table.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>

namespace tvutil2 {
namespace {

bool has_pointer(UINT message) {
    return points_to_memory(message) || stays_in_process(message);
}

struct Connection {
    std::shared_ptr<const Descriptor> descriptor;
    std::uint64_t serial = 0;  ///< descriptors are used again, these aren't
    std::string incoming;
    std::string outgoing;
    std::shared_ptr<RemoteMessage> message;  // in the hands of a window's thread
};

class Endpoint {
  public:
    bool open(DWORD process) {
        if (!m_place.open(process)) return false;
        m_epoll = Descriptor(epoll_create1(EPOLL_CLOEXEC));
        m_wake = Descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
        if (!m_epoll || !m_wake || !watch(m_place.socket(), EPOLLIN, EPOLL_CTL_ADD) ||
            !watch(m_wake.get(), EPOLLIN, EPOLL_CTL_ADD)) {
            m_place.remove();
            return false;
        }
        return true;
    }

    [[nodiscard]] ProcessPlace& place() { return m_place; }

    // The thread: sleeps until somebody comes, goes on, or is to have an answer.
    [[noreturn]] void run() {
        std::array<epoll_event, 16> events;
        for (;;) {
            const int count = epoll_wait(m_epoll.get(), events.data(), events.size(), -1);
            for (int i = 0; i < count; ++i) serve(events[static_cast<std::size_t>(i)]);
        }
    }

    // From the thread of a window, which sends it at once: the program may end right behind its
    // procedure, and the answer counts all the same. This object's thread sends what has no room
    // yet.
    void give_answer(const RemoteMessage& message) {
        auto bytes = message.answer_bytes();
        if (const auto socket = message.socket.lock()) send_some(socket->get(), bytes);
        {
            const std::lock_guard guard(m_lock);
            m_answers.push_back({message.connection, message.serial, std::move(bytes)});
        }
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto size = write(m_wake.get(), &one, sizeof one);
    }

    // In a child after a fork: the connections are its parent's.
    void abandon() {
        m_place.abandon();
        m_epoll = Descriptor();
        m_connections.clear();
    }

  private:
    struct Answer {
        int connection;
        std::uint64_t serial;
        std::string bytes;
    };

    bool watch(int descriptor, std::uint32_t events, int operation) {
        epoll_event event{};
        event.events = events;
        event.data.fd = descriptor;
        return epoll_ctl(m_epoll.get(), operation, descriptor, &event) == 0;
    }

    void serve(const epoll_event& event) {
        const int descriptor = event.data.fd;
        if (descriptor == m_place.socket()) return accept_all();
        if (descriptor == m_wake.get()) return take_answers();
        const auto found = m_connections.find(descriptor);
        if (found == m_connections.end()) return;
        auto& connection = found->second;
        const bool goes_on =
            (event.events & EPOLLOUT) != 0 ? write_more(connection) : read_more(connection);
        if (!goes_on) drop(found);
    }

    void accept_all() {
        for (;;) {
            Descriptor accepted(
                accept4(m_place.socket(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
            if (!accepted) return;
            ucred peer{};
            socklen_t size = sizeof peer;
            if (getsockopt(accepted.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 ||
                peer.uid != geteuid()) {
                continue;
            }
            const int descriptor = accepted.get();
            if (!watch(descriptor, EPOLLIN, EPOLL_CTL_ADD)) continue;
            auto& connection = m_connections[descriptor];
            connection.descriptor = std::make_shared<const Descriptor>(std::move(accepted));
            connection.serial = ++m_serial;
        }
    }

    void drop(std::map<int, Connection>::iterator connection) {
        // Its sender has gone: nobody wants the message any more.
        auto& message = connection->second.message;
        if (message) message->settle(SentMessage::withdrawn);
        m_connections.erase(connection);
    }

    // False when the connection is at its end.
    bool read_more(Connection& connection) {
        char block[16384];
        for (;;) {
            const auto size = recv(connection.descriptor->get(), block, sizeof block, 0);
            if (size > 0) {
                const bool is_too_much = connection.incoming.size() > kMaxPacketData;
                if (connection.message || is_too_much) return false;  // one message is all
                connection.incoming.append(block, static_cast<std::size_t>(size));
                continue;
            }
            const bool is_open = size < 0 && (errno == EAGAIN || errno == EINTR);
            if (connection.message) return is_open;
            const auto result = take_packet(connection);
            return is_open && result;
        }
    }

    // Hands a packet on that is all there. False when nothing more is to come.
    bool take_packet(Connection& connection) {
        Packet packet;
        auto& bytes = connection.incoming;
        if (bytes.size() < sizeof packet) return true;
        std::memcpy(&packet, bytes.data(), sizeof packet);
        if (packet.mark != Packet::kMark || packet.data_size > kMaxPacketData) return false;
        const auto whole = sizeof packet + packet.data_size;
        if (bytes.size() < whole) return true;
        if (bytes.size() > whole) return false;
        auto* const window = reinterpret_cast<HWND>(packet.window);
        const auto* const record = WindowTable::instance().record_of(window);
        auto* const queue = record != nullptr ? record->queue.load() : nullptr;
        if (packet.kind == PacketKind::post) {
            if (queue != nullptr && !has_pointer(packet.message)) {
                queue->post(
                    {window, packet.message, packet.wparam, packet.lparam, GetTickCount(), {}},
                    record, 0);
            }
            return false;
        }
        return pass_on(connection, packet, bytes.substr(sizeof packet), record, queue);
    }

    bool pass_on(Connection& connection, const Packet& packet, std::string data,
                 const Window* record, ThreadQueue* queue) {
        const bool is_notice = packet.kind == PacketKind::notify;
        if (is_notice ? has_pointer(packet.message) : stays_in_process(packet.message))
            return false;
        auto message = std::make_shared<RemoteMessage>();
        message->window = reinterpret_cast<HWND>(packet.window);
        message->message = packet.message;
        message->wparam = packet.wparam;
        message->lparam = packet.lparam;
        message->data = std::move(data);
        if (!message->unpack()) return false;
        if (!is_notice) {
            message->connection = connection.descriptor->get();
            message->socket = connection.descriptor;
            message->serial = connection.serial;
            message->on_answer = [this](SentMessage& answered) {
                give_answer(static_cast<RemoteMessage&>(answered));
            };
            connection.message = message;
        }
        const bool is_sent = queue != nullptr && queue->send(message, *record);
        if (!is_sent && !is_notice) give_answer(*message);
        return !is_notice;
    }

    void take_answers() {
        std::uint64_t count = 0;
        [[maybe_unused]] const auto size = read(m_wake.get(), &count, sizeof count);
        std::vector<Answer> answers;
        {
            const std::lock_guard guard(m_lock);
            answers.swap(m_answers);
        }
        for (auto& answer : answers) {
            const auto found = m_connections.find(answer.connection);
            // The sender may have gone, and another one come with its descriptor.
            if (found == m_connections.end() || found->second.serial != answer.serial) continue;
            found->second.outgoing = std::move(answer.bytes);
            if (!write_more(found->second)) drop(found);
        }
    }

    // Sends as much as there is room for, and takes it from the bytes. False when nothing more can
    // be sent at all.
    static bool send_some(int connection, std::string& bytes) {
        while (!bytes.empty()) {
            const auto size = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (size > 0) {
                bytes.erase(0, static_cast<std::size_t>(size));
            } else if (errno != EINTR) {
                return errno == EAGAIN;
            }
        }
        return true;
    }

    // False when all is written, or can't be.
    bool write_more(Connection& connection) {
        const int descriptor = connection.descriptor->get();
        return send_some(descriptor, connection.outgoing) && !connection.outgoing.empty() &&
               watch(descriptor, EPOLLOUT, EPOLL_CTL_MOD);
    }

    ProcessPlace m_place;
    Descriptor m_epoll, m_wake;
    std::map<int, Connection> m_connections;
    std::uint64_t m_serial = 0;
    std::mutex m_lock;
    std::vector<Answer> m_answers;
};

struct State {
    std::mutex lock;
    Endpoint* endpoint = nullptr;  // never destroyed: its thread runs to the end of the process
    bool has_failed = false;
    std::vector<ListedWindow> listed;

    ForkMember is_fork_safe{ForkRank::caller, this,
                            [](void* all) { static_cast<State*>(all)->lock.lock(); },
                            [](void* all) { static_cast<State*>(all)->lock.unlock(); },
                            [](void* all) { static_cast<State*>(all)->begin_child(); }};

    // The windows, and the thread that tells of them, are the parent's.
    void begin_child() {
        if (endpoint != nullptr) endpoint->abandon();
        endpoint = nullptr;
        has_failed = false;
        listed.clear();
        lock.unlock();
        new (&lock) std::mutex;
    }
};

State& state() {
    static auto* const instance = [] {
        static auto* const made = new State;
        std::atexit([] {
            const std::lock_guard guard(made->lock);
            if (made->endpoint != nullptr) made->endpoint->place().remove();
        });
        return made;
    }();
    return *instance;
}

std::vector<ListedWindow> windows_for_others() {
    std::vector<ListedWindow> windows;
    const TreeLock tree;
    for (auto* each = tree.table.root().first_child; each != nullptr; each = each->next) {
        // One that ends is listed no more when it is hidden: once for both steps.
        if (!is_for_others(*each) || each->is_destroying) continue;
        windows.push_back({each->handle, each->queue.load()->thread(), each->style,
                           each->window_class->name, each->text});
    }
    return windows;
}

// With the lock held. Null when others can't be told.
Endpoint* endpoint(State& all) {
    if (all.endpoint != nullptr || all.has_failed) return all.endpoint;
    auto fresh = std::make_unique<Endpoint>();
    all.has_failed = !fresh->open(static_cast<DWORD>(getpid()));
    if (all.has_failed) return nullptr;
    all.endpoint = fresh.release();
    start_service_thread([served = all.endpoint] { served->run(); });
    return all.endpoint;
}

bool is_same(const ListedWindow& a, const ListedWindow& b) {
    return a.handle == b.handle && a.style == b.style && a.title == b.title;
}

}  // namespace

bool is_for_others(const Window& window) {
    return !window.text.empty() && window.parent == &WindowTable::instance().root();
}

void publish_windows() {
    auto& all = state();
    const std::lock_guard guard(all.lock);
    auto windows = windows_for_others();
    if (std::equal(windows.begin(), windows.end(), all.listed.begin(), all.listed.end(), is_same)) {
        return;
    }
    auto* const own = endpoint(all);
    if (own == nullptr || !own->place().list(windows)) return;
    all.listed = std::move(windows);
}

}  // namespace tvutil2
