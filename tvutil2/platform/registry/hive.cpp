#include "tvutil2/platform/registry/hive.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/registry/key_name.h"
#include "tvutil2/platform/registry/registry.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>

namespace tvutil2 {
namespace {

constexpr auto kSuccess = static_cast<LONG>(ERROR_SUCCESS);
constexpr auto kNotFound = static_cast<LONG>(ERROR_FILE_NOT_FOUND);
constexpr auto kDeleted = static_cast<LONG>(ERROR_KEY_DELETED);
constexpr auto kNoMore = static_cast<LONG>(ERROR_NO_MORE_ITEMS);

std::int64_t now() {
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    return static_cast<std::int64_t>(ticks_of(time));
}

LONG find_key(Database& database, std::int64_t& key, DWORD& depth) {
    auto query = database.query(Sql::key_exists);
    query.bind(key);
    if (!query.next()) return query.error() == kSuccess ? kDeleted : query.error();
    depth = static_cast<DWORD>(query.integer(0));
    return kSuccess;
}

LONG find_sub_key(Database& database, std::int64_t parent, std::u16string_view name,
                  std::int64_t& key) {
    const auto folded = folded_name(name);
    auto query = database.query(Sql::find_sub_key);
    query.bind(parent).bind(folded);
    if (!query.next()) return query.error() == kSuccess ? kNotFound : query.error();
    key = query.integer(0);
    return kSuccess;
}

LONG touch(Database& database, Sql what, std::int64_t key) {
    const auto error = database.query(what).bind(key).bind(now()).run();
    if (error != kSuccess) return error;
    return database.changed_rows() == 0 ? kDeleted : kSuccess;
}

LONG add_key(Database& database, std::int64_t parent, std::u16string_view name, DWORD depth,
             std::int64_t& key) {
    const auto folded = folded_name(name);
    const auto stored = stored_name(name);
    const auto error = database.query(Sql::add_key)
                           .bind(parent)
                           .bind(folded)
                           .bind(stored)
                           .bind(std::int64_t{depth})
                           .bind(now())
                           .run();
    key = database.last_row_id();
    return error;
}

// Walks from `base` as far as keys exist. `key` and `parent` are the last two met; `found` is how
// many of the parts are there.
struct Walk {
    std::int64_t key = 0;
    std::int64_t parent = 0;
    DWORD depth = 0;
    std::size_t found = 0;
};

LONG walk(Database& database, std::int64_t base, const std::vector<std::u16string_view>& parts,
          Walk& at) {
    at = {base, 0, 0, 0};
    if (const auto error = find_key(database, at.key, at.depth); error != kSuccess) return error;
    for (const auto part : parts) {
        std::int64_t next = 0;
        const auto error = find_sub_key(database, at.key, part, next);
        if (error == kNotFound) return kSuccess;
        if (error != kSuccess) return error;
        at = {next, at.key, at.depth + 1, at.found + 1};
    }
    return kSuccess;
}

LONG walk_to_end(Database& database, std::int64_t base,
                 const std::vector<std::u16string_view>& parts, Walk& at) {
    const auto error = walk(database, base, parts, at);
    return error == kSuccess && at.found < parts.size() ? kNotFound : error;
}

// Walks again, for another writer may have been here since, and makes what isn't there.
LONG add_missing(Database& database, std::int64_t base,
                 const std::vector<std::u16string_view>& parts, Walk& at, bool& is_new) {
    if (const auto error = walk(database, base, parts, at); error != kSuccess) return error;
    const auto missing = parts.size() - at.found;
    is_new = missing > 0;
    if (missing > REG_MAX_NEW_LEVELS || at.depth + missing > REG_MAX_DEPTH) {
        return static_cast<LONG>(ERROR_INVALID_PARAMETER);
    }
    while (at.found < parts.size()) {
        std::int64_t key = 0;
        auto error = add_key(database, at.key, parts[at.found], at.depth + 1, key);
        if (error == kSuccess) error = touch(database, Sql::touch_names, at.key);
        if (error != kSuccess) return error;
        at = {key, at.key, at.depth + 1, at.found + 1};
    }
    return kSuccess;
}

// The parent of a key that was reached with no parts isn't known from the walk.
LONG parent_of(Database& database, Walk& at) {
    if (at.parent != 0) return kSuccess;
    auto query = database.query(Sql::parent_of);
    query.bind(at.key);
    if (query.next()) at.parent = query.integer(0);
    return query.error();
}

LONG remove_key(Database& database, Walk& at) {
    if (const auto error = parent_of(database, at); error != kSuccess) return error;
    auto error = database.query(Sql::carry_changes).bind(at.key).bind(at.parent).run();
    for (const auto step : {Sql::delete_values_of, Sql::delete_key}) {
        if (error == kSuccess) error = database.query(step).bind(at.key).run();
    }
    return error != kSuccess ? error : touch(database, Sql::touch_names, at.parent);
}

LONG remove_below(Database& database, std::int64_t key) {
    auto error = kSuccess;
    for (const auto step :
         {Sql::carry_changes_below, Sql::delete_values_below, Sql::delete_keys_below}) {
        if (error == kSuccess) error = database.query(step).bind(key).run();
    }
    return error;
}

LONG read_changes(Database& database, std::int64_t key, bool subtree, Changes& changes) {
    auto query = database.query(subtree ? Sql::changes_of_tree : Sql::changes_of_key);
    query.bind(key);
    if (!query.next()) return query.error() == kSuccess ? kDeleted : query.error();
    if (query.is_null(0)) return kDeleted;
    changes = {query.integer(0), query.integer(1)};
    return kSuccess;
}

}  // namespace

// Both hives are made by one call, so that a fork finds both or none.
struct Hives {
    Hive* user;
    Hive* machine;
};

Hive::Hive(const std::string& folder, bool is_private, bool may_write)
    : m_file(folder + "/registry.db"),
      m_is_private(is_private),
      m_may_write(may_write),
      m_hub([this](Watch& watch) { return changed_since(watch); }) {}

// Never destroyed: handles are used by static objects of other modules to the very end.
const Hives& Hive::all() {
    static const Hives hives = [] {
        const bool writes_machine = !profile_root().empty() || geteuid() == 0;
        const Hives made{new Hive(user_store(), true, true),
                         new Hive(machine_store(), false, writes_machine)};
        pthread_atfork([] { before_fork(); }, [] { after_fork(false); }, [] { after_fork(true); });
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
        hive->m_cache.attach(nullptr);
        hive->m_writer.close();
        hive->m_reader.close();
    }
}

void Hive::after_fork(bool in_child) {
    for (auto* hive : {all().machine, all().user}) {
        hive->m_hub.after_fork(in_child);
        if (in_child) hive->m_cache.renew_lock();
        hive->m_read_lock.unlock();
        hive->m_write_lock.unlock();
    }
}

LONG Hive::open_writer() {
    if (m_writer.is_open()) return kSuccess;
    if (!m_may_write) return static_cast<LONG>(ERROR_ACCESS_DENIED);
    auto error = m_writer.open(m_file, true);
    if (error == kNotFound) {
        error = Database::create(m_file, m_is_private);
        if (error == kSuccess) error = m_writer.open(m_file, true);
    }
    if (error == kSuccess) error = m_hub.page().open(m_file + "-signal", m_is_private);
    if (error != kSuccess) m_writer.close();
    return error;
}

LONG Hive::try_write(const Body& change, bool& is_stale) {
    if (const auto error = open_writer(); error != kSuccess) return error;
    Transaction transaction(m_writer, Sql::begin_write);
    auto error = transaction.error();
    if (error == kSuccess) {
        error = change(m_writer);
        if (error == kSuccess) error = transaction.commit();
    }
    is_stale = error != kSuccess && m_writer.is_stale();
    if (error == kSuccess) m_hub.page().announce();
    return error;
}

// A file that was replaced behind our back is opened again, once.
LONG Hive::write(const Body& change) {
    const std::lock_guard guard(m_write_lock);
    bool is_stale = false;
    const auto error = try_write(change, is_stale);
    if (!is_stale) return error;
    m_writer.close();
    {
        const std::lock_guard reading(m_read_lock);
        close_reader();
    }
    return try_write(change, is_stale);
}

// Only a connection that may write keeps the index from being cut short by others, and so only
// its mapping is safe to look at.
LONG Hive::open_reader() {
    if (m_reader.is_open()) return kSuccess;
    auto error = m_may_write ? m_reader.open(m_file, true) : static_cast<LONG>(ERROR_ACCESS_DENIED);
    if (error == kSuccess) {
        m_cache.attach(m_reader.wal_index());
        return error;
    }
    const bool may_still_read = error == static_cast<LONG>(ERROR_ACCESS_DENIED) ||
                                error == static_cast<LONG>(ERROR_WRITE_PROTECT);
    return may_still_read ? m_reader.open(m_file, false) : error;
}

void Hive::close_reader() {
    m_cache.attach(nullptr);
    m_reader.close();
}

LONG Hive::read(const Body& body, LONG result_without_file) {
    const std::lock_guard guard(m_read_lock);
    for (int attempt = 0;; ++attempt) {
        auto error = open_reader();
        if (error == kNotFound) return result_without_file;
        if (error != kSuccess) return error;
        bool is_stale = false;
        {
            const Transaction snapshot(m_reader, Sql::begin);
            error = snapshot.error();
            if (error == kSuccess) error = body(m_reader);
            is_stale = error != kSuccess && m_reader.is_stale();
        }
        if (!is_stale || attempt > 0) return error;
        close_reader();
    }
}

// The state is noted before the store is asked, so that an answer is never kept under a state that
// is newer than itself.
LONG Hive::read_value(std::int64_t key, std::u16string_view name,
                      const std::function<LONG(const ValueView&)>& use) {
    const auto folded = folded_name(name);
    const auto body = [&](Database& database) {
        const auto stamp = m_cache.stamp();
        auto query = database.query(Sql::get_value);
        query.bind(key).bind(folded);
        if (query.next()) {
            const ValueView value{static_cast<DWORD>(query.integer(0)), query.bytes(1)};
            m_cache.keep(stamp, key, name, &value);
            return use(value);
        }
        DWORD depth = 0;
        auto error = query.error();
        if (error == kSuccess) error = find_key(database, key, depth);
        if (error != kSuccess) return error;
        m_cache.keep(stamp, key, name, nullptr);
        return kNotFound;
    };
    return read(body, kNotFound);
}

LONG Hive::open_key(std::int64_t base, std::u16string_view path, std::int64_t& key) {
    std::vector<std::u16string_view> parts;
    if (const auto error = split_key_path(path, parts); error != kSuccess) return error;
    Walk at{base, 0, 0, 0};
    const auto body = [&](Database& database) { return walk_to_end(database, base, parts, at); };
    const auto error = read(body, parts.empty() ? kSuccess : kNotFound);
    if (error == kSuccess) key = at.key;
    return error;
}

LONG Hive::create_key(std::int64_t base, std::u16string_view path, bool may_create,
                      std::int64_t& key, bool& is_new) {
    std::vector<std::u16string_view> parts;
    if (const auto error = split_key_path(path, parts); error != kSuccess) return error;
    Walk at{base, 0, 0, 0};
    auto error = read([&](Database& d) { return walk(d, base, parts, at); }, kSuccess);
    if (error != kSuccess) return error;
    is_new = at.found < parts.size();
    if (is_new) {
        if (!may_create) return static_cast<LONG>(ERROR_ACCESS_DENIED);
        error = write([&](Database& d) { return add_missing(d, base, parts, at, is_new); });
    }
    if (error == kSuccess) key = at.key;
    return error;
}

LONG Hive::delete_key(std::int64_t base, std::u16string_view path) {
    std::vector<std::u16string_view> parts;
    if (const auto error = split_key_path(path, parts); error != kSuccess) return error;
    return write([&](Database& database) {
        Walk at;
        const auto error = walk_to_end(database, base, parts, at);
        if (error != kSuccess) return error;
        if (at.key == kRootKey) return static_cast<LONG>(ERROR_ACCESS_DENIED);
        auto child = database.query(Sql::sub_key_at);
        child.bind(at.key).bind(std::int64_t{0});
        if (child.next()) return static_cast<LONG>(ERROR_ACCESS_DENIED);
        return child.error() != kSuccess ? child.error() : remove_key(database, at);
    });
}

LONG Hive::delete_tree(std::int64_t base, std::u16string_view path, bool keep_key) {
    std::vector<std::u16string_view> parts;
    if (const auto error = split_key_path(path, parts); error != kSuccess) return error;
    return write([&](Database& database) {
        Walk at;
        auto error = walk_to_end(database, base, parts, at);
        if (error != kSuccess) return error;
        if (at.key == kRootKey && !keep_key) return static_cast<LONG>(ERROR_ACCESS_DENIED);
        error = remove_below(database, at.key);
        if (error != kSuccess || !keep_key) {
            return error != kSuccess ? error : remove_key(database, at);
        }
        error = database.query(Sql::delete_values_of).bind(at.key).run();
        if (error == kSuccess) error = touch(database, Sql::touch_values, at.key);
        return error != kSuccess ? error : touch(database, Sql::touch_names, at.key);
    });
}

LONG Hive::set_value(std::int64_t key, std::u16string_view name, DWORD type,
                     std::string_view data) {
    const auto folded = folded_name(name);
    const auto stored = stored_name(name);
    return write([&](Database& database) {
        const auto error = touch(database, Sql::touch_values, key);
        if (error != kSuccess) return error;
        return database.query(Sql::set_value)
            .bind(key)
            .bind(folded)
            .bind(stored)
            .bind(std::int64_t{type})
            .bind(data)
            .run();
    });
}

LONG Hive::delete_value(std::int64_t key, std::u16string_view name) {
    const auto folded = folded_name(name);
    return write([&](Database& database) {
        auto error = touch(database, Sql::touch_values, key);
        if (error == kSuccess) {
            error = database.query(Sql::delete_value).bind(key).bind(folded).run();
        }
        if (error != kSuccess) return error;
        return database.changed_rows() == 0 ? kNotFound : kSuccess;
    });
}

LONG Hive::entry_at(std::int64_t key, DWORD index, Position& position, Entry& entry,
                    bool of_values) {
    const auto body = [&](Database& database) {
        DWORD depth = 0;
        if (const auto error = find_key(database, key, depth); error != kSuccess) return error;
        const auto stamp = m_cache.stamp();
        const bool goes_on = stamp.is_whole && position.stamp.is_whole &&
                             stamp.words == position.stamp.words && index == position.index + 1;
        const auto how = of_values ? (goes_on ? Sql::value_after : Sql::value_at)
                                   : (goes_on ? Sql::sub_key_after : Sql::sub_key_at);
        auto query = database.query(how);
        query.bind(key);
        if (goes_on) {
            query.bind(position.folded);
        } else {
            query.bind(std::int64_t{index});
        }
        if (!query.next()) return query.error() == kSuccess ? kNoMore : query.error();
        entry.folded = query.bytes(0);
        entry.name = name_of_stored(query.bytes(1));
        if (of_values) {
            entry.type = static_cast<DWORD>(query.integer(2));
            entry.data = query.bytes(3);
        } else {
            entry.written = query.integer(2);
        }
        // The position is taken once the caller is served: an entry that didn't fit is asked for
        // again.
        position = {index, entry.folded, stamp};
        return kSuccess;
    };
    return read(body, kNoMore);
}

LONG Hive::sub_key_at(std::int64_t key, DWORD index, Position& position, Entry& entry) {
    return entry_at(key, index, position, entry, false);
}

LONG Hive::value_at(std::int64_t key, DWORD index, Position& position, Entry& entry) {
    return entry_at(key, index, position, entry, true);
}

LONG Hive::info(std::int64_t key, KeyInfo& info) {
    info = {};
    const auto number = [](const Query& query, int column) {
        return static_cast<DWORD>(query.integer(column));
    };
    const auto body = [&](Database& database) {
        auto own = database.query(Sql::key_info);
        own.bind(key);
        if (!own.next()) return own.error() == kSuccess ? kDeleted : own.error();
        info.written = own.integer(0);
        auto sub_keys = database.query(Sql::sub_key_info);
        sub_keys.bind(key);
        if (!sub_keys.next()) return sub_keys.error();
        info.sub_keys = number(sub_keys, 0);
        info.longest_sub_key = number(sub_keys, 1) / 2;
        auto values = database.query(Sql::value_info);
        values.bind(key);
        if (!values.next()) return values.error();
        info.values = number(values, 0);
        info.longest_value_name = number(values, 1) / 2;
        info.longest_data = number(values, 2);
        return kSuccess;
    };
    return read(body, kSuccess);
}

LONG Hive::flush() {
    const auto exists = read([](Database&) { return kSuccess; }, kNotFound);
    if (!m_may_write || exists == kNotFound) return kSuccess;
    if (exists != kSuccess) return exists;
    const std::lock_guard guard(m_write_lock);
    const auto error = open_writer();
    return error != kSuccess ? error : m_writer.sync();
}

LONG Hive::begin_watch(std::int64_t key, bool subtree, Changes& now) {
    {
        const std::lock_guard guard(m_write_lock);
        const auto error =
            m_may_write ? open_writer() : m_hub.page().open(m_file + "-signal", m_is_private);
        if (error != kSuccess) return error;
    }
    const auto body = [&](Database& database) { return read_changes(database, key, subtree, now); };
    return read(body, kNotFound);
}

LONG Hive::changed_since(Watch& watch) {
    Changes now;
    const auto body = [&](Database& database) {
        return read_changes(database, watch.key, watch.subtree, now);
    };
    if (const auto error = read(body, kDeleted); error != kSuccess) return error;
    auto seen = watch.since;
    if ((watch.filter & REG_NOTIFY_CHANGE_NAME) != 0) seen.names = now.names;
    if ((watch.filter & REG_NOTIFY_CHANGE_LAST_SET) != 0) seen.values = now.values;
    if (seen == watch.since) return kNoMore;
    watch.since = seen;
    return kSuccess;
}

}  // namespace tvutil2
