// How a hive comes by its store: its two connections, what becomes of them when the store is
// replaced, and across a fork.
#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/registry/hive.h"
#include "tvutil2/platform/registry/results.h"

#include <unistd.h>

namespace tvutil2 {
namespace {

// How often a call opens a store anew that is replaced again and again.
constexpr int kAttempts = 3;

}  // namespace

// Both hives are made by one call, so that a fork finds both or none.
struct Hives {
    Hive* user;
    Hive* machine;
};

Hive::Hive(const std::string& folder, bool is_private, bool may_write)
    : m_file(folder, is_private),
      m_may_write(may_write),
      m_hub([this](Watch& watch) { return changed_since(watch); }) {}

// Never destroyed: handles are used by static objects of other modules to the very end.
const Hives& Hive::all() {
    static const Hives hives = [] {
        const bool writes_machine = !profile_root().empty() || geteuid() == 0;
        const Hives made{new Hive(user_store(), true, true),
                         new Hive(machine_store(), false, writes_machine)};
        static const ForkMember is_fork_safe(
            ForkRank::registry, nullptr, [](void*) { before_fork(); },
            [](void*) { after_fork(false); }, [](void*) { after_fork(true); });
        return made;
    }();
    return hives;
}

Hive& Hive::user() {
    return *all().user;
}

Hive& Hive::machine() {
    return *all().machine;
}

// SQLite knows a file by its inode, once a process: as long as an inherited connection is open, a
// new one in the child isn't sound either. So none is open when the fork comes.
void Hive::before_fork() {
    for (auto* hive : {all().user, all().machine}) {
        hive->m_write_lock.lock();
        hive->m_read_lock.lock();
        hive->m_hub.before_fork();
        hive->m_writer.database.close();
        hive->close_reader();
        hive->m_file.before_fork();
    }
}

void Hive::after_fork(bool in_child) {
    for (auto* hive : {all().machine, all().user}) {
        hive->m_file.after_fork();
        hive->m_hub.after_fork(in_child);
        if (in_child) hive->m_cache.renew_lock();
        hive->m_read_lock.unlock();
        hive->m_write_lock.unlock();
    }
}

// A store that is replaced while it is opened is looked at again.
LONG Hive::open(Connection& connection, bool may_write) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        std::string file;
        auto error = m_file.check(file);
        const auto number = m_file.number();
        if (error == kSuccess) error = connection.database.open(file, may_write);
        if (error != kSuccess) return error;
        if (number != 0 && m_file.number() == number) {
            connection.store = number;
            return kSuccess;
        }
        connection.database.close();
    }
    return static_cast<LONG>(ERROR_BUSY);
}

LONG Hive::open_writer() {
    if (m_writer.database.is_open()) return kSuccess;
    if (!m_may_write) return kDenied;
    auto error = open(m_writer, true);
    if (error == kNotFound) {
        error = m_file.make_folder();
        if (error == kSuccess) error = Database::create(m_file.path(), m_file.is_private());
        if (error == kSuccess) error = open(m_writer, true);
    }
    if (error == kSuccess) {
        error = m_hub.open_page(m_file.path() + "-signal", m_file.is_private(), m_writer.store);
    }
    if (error != kSuccess) m_writer.database.close();
    return error;
}

LONG Hive::open_current_writer() {
    if (m_writer.database.is_open() && m_file.number() != m_writer.store) forget_store();
    return open_writer();
}

void Hive::forget_store() {
    m_writer.database.close();
    {
        const std::lock_guard reading(m_read_lock);
        close_reader();
    }
    m_hub.drop_page(m_writer.store);
}

// The store is looked for behind the commit: what was committed to one that is still there by then
// is seen by all.
LONG Hive::try_write(const KeyId& key, const Body& change, bool& is_lost) {
    if (const auto error = open_writer(); error != kSuccess) return error;
    auto error = kDeleted;
    bool is_stale = false;
    if (key.is_in(m_writer.store)) {
        Transaction transaction(m_writer.database, Sql::begin_write);
        error = transaction.error();
        if (error == kSuccess) error = change(m_writer);
        if (error == kSuccess) error = transaction.commit();
        is_stale = error != kSuccess && m_writer.database.is_stale();
    }
    is_lost = is_stale || m_file.number() != m_writer.store;
    if (error == kSuccess && !is_lost) {
        m_written_store = m_writer.store;
        m_hub.announce();
    }
    return error;
}

// What went to a store that is gone is written again to the one that is there now, or that is made.
LONG Hive::write(const KeyId& key, const Body& change) {
    const std::lock_guard guard(m_write_lock);
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        bool is_lost = false;
        const auto error = try_write(key, change, is_lost);
        if (!is_lost) return error;
        forget_store();
    }
    return static_cast<LONG>(ERROR_CANTWRITE);
}

// Only a connection that may write keeps the index from being cut short by others, and so only
// its mapping is safe to look at.
LONG Hive::open_reader() {
    if (m_reader.database.is_open()) return kSuccess;
    auto error = m_may_write ? open(m_reader, true) : kDenied;
    if (error == kSuccess) {
        m_cache.attach(m_reader.database.wal_index());
    } else if (error == kDenied || error == static_cast<LONG>(ERROR_WRITE_PROTECT)) {
        error = open(m_reader, false);
    }
    if (error == kSuccess) m_reader_store = m_reader.store;
    return error;
}

void Hive::close_reader() {
    m_reader_store = 0;
    m_cache.attach(nullptr);
    m_reader.database.close();
}

LONG Hive::read(const KeyId& key, const Body& body, LONG result_without_file) {
    const std::lock_guard guard(m_read_lock);
    for (int attempt = 0;; ++attempt) {
        if (m_reader.database.is_open() && !is_current()) {
            close_reader();
            m_hub.drop_page(m_reader.store);
        }
        auto error = open_reader();
        if (error == kNotFound) return key.row == KeyId::kRoot ? result_without_file : kDeleted;
        if (error != kSuccess) return error;
        if (!key.is_in(m_reader.store)) return kDeleted;
        bool is_stale = false;
        {
            const Transaction snapshot(m_reader.database, Sql::begin);
            error = snapshot.error();
            if (error == kSuccess) error = body(m_reader);
            is_stale = error != kSuccess && m_reader.database.is_stale();
        }
        if (!is_stale || attempt > 0) return error;
        close_reader();
    }
}

}  // namespace tvutil2
