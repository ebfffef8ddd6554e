#include "tvutil2/platform/registry/hive.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/registry/key_name.h"
#include "tvutil2/platform/registry/registry.h"

#include <unistd.h>

#include <algorithm>

namespace tvutil2 {
namespace {

constexpr auto kSuccess = static_cast<LONG>(ERROR_SUCCESS);
constexpr auto kNotFound = static_cast<LONG>(ERROR_FILE_NOT_FOUND);
constexpr auto kDeleted = static_cast<LONG>(ERROR_KEY_DELETED);
constexpr auto kNoMore = static_cast<LONG>(ERROR_NO_MORE_ITEMS);
constexpr auto kDenied = static_cast<LONG>(ERROR_ACCESS_DENIED);
constexpr auto kCorrupt = static_cast<LONG>(ERROR_REGISTRY_CORRUPT);

// How often a call opens a store anew that is replaced again and again.
constexpr int kAttempts = 3;

// What an enumeration reads ahead, once nobody is seen to write beside it.
constexpr std::size_t kMostAhead = 256;
constexpr std::size_t kMostBytesAhead = 65536;

std::int64_t now() {
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    return static_cast<std::int64_t>(ticks_of(time));
}

LONG find_key(Database& database, std::int64_t key, DWORD& depth) {
    auto query = database.query(Sql::key_exists);
    query.bind(key);
    if (!query.next()) return query.error() == kSuccess ? kDeleted : query.error();
    const auto found = query.integer(0);
    if (found < 0 || found > REG_MAX_DEPTH) return kCorrupt;
    depth = static_cast<DWORD>(found);
    return kSuccess;
}

// A sub key lies one level deeper than its key. One that doesn't is its own child, or another's in
// a circle, which no call of this registry has made.
LONG find_sub_key(Database& database, std::int64_t parent, DWORD depth, std::u16string_view name,
                  std::int64_t& key) {
    const auto folded = folded_name(name);
    auto query = database.query(Sql::find_sub_key);
    query.bind(parent).bind(folded);
    if (!query.next()) return query.error() == kSuccess ? kNotFound : query.error();
    key = query.integer(0);
    return query.integer(1) == std::int64_t{depth} + 1 ? kSuccess : kCorrupt;
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
        const auto error = find_sub_key(database, at.key, at.depth, part, next);
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

LONG remove_below(Database& database, const Walk& at) {
    auto error = kSuccess;
    for (const auto step :
         {Sql::carry_changes_below, Sql::delete_values_below, Sql::delete_keys_below}) {
        if (error == kSuccess) {
            error = database.query(step).bind(at.key).bind(std::int64_t{at.depth} + 1).run();
        }
    }
    return error;
}

// Takes rows of an enumeration's query, at most `most` of them and as far as there is room. True
// when there are no more.
bool take_rows(Query& query, bool of_values, std::size_t most, std::int64_t depth,
               std::vector<Entry>& rows) {
    query.bind(static_cast<std::int64_t>(most));
    std::size_t bytes = 0;
    while (bytes < kMostBytesAhead) {
        if (!query.next()) return rows.size() < most;
        Entry entry;
        entry.folded = query.bytes(0);
        entry.name = name_of_stored(query.bytes(1));
        if (of_values) {
            entry.type = static_cast<DWORD>(query.integer(2));
            entry.data = query.bytes(3);
        } else {
            entry.is_damaged = query.integer(2) != depth;
            entry.written = query.integer(3);
        }
        bytes += sizeof entry + entry.folded.size() * 2 + entry.data.size();
        rows.push_back(std::move(entry));
    }
    return false;
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

// The state is noted before the store is asked, so that an answer is never kept under a state that
// is newer than itself.
LONG Hive::read_value(const KeyId& key, std::u16string_view name,
                      const std::function<LONG(const ValueView&)>& use) {
    const auto folded = folded_name(name);
    const auto body = [&](Connection& from) {
        const auto stamp = m_cache.stamp();
        auto query = from.database.query(Sql::get_value);
        query.bind(key.row).bind(folded);
        if (query.next()) {
            const ValueView value{static_cast<DWORD>(query.integer(0)), query.bytes(1)};
            m_cache.keep(stamp, key, name, &value);
            return use(value);
        }
        DWORD depth = 0;
        auto error = query.error();
        if (error == kSuccess) error = find_key(from.database, key.row, depth);
        if (error != kSuccess) return error;
        m_cache.keep(stamp, key, name, nullptr);
        return kNotFound;
    };
    return read(key, body, kNotFound);
}

LONG Hive::open_key(const KeyId& base, std::u16string_view path, KeyId& key) {
    std::vector<std::u16string_view> parts;
    if (const auto error = split_key_path(path, parts); error != kSuccess) return error;
    key = base;
    const auto body = [&](Connection& from) {
        Walk at;
        const auto error = walk_to_end(from.database, base.row, parts, at);
        key = {at.key, from.store};
        return error;
    };
    return read(base, body, parts.empty() ? kSuccess : kNotFound);
}

LONG Hive::create_key(const KeyId& base, std::u16string_view path, bool may_create, KeyId& key,
                      bool& is_new) {
    std::vector<std::u16string_view> parts;
    if (const auto error = split_key_path(path, parts); error != kSuccess) return error;
    Walk at{base.row, 0, 0, 0};
    key = base;
    const auto look = [&](Connection& from) {
        const auto error = walk(from.database, base.row, parts, at);
        key = {at.key, from.store};
        return error;
    };
    const auto error = read(base, look, kSuccess);
    if (error != kSuccess) return error;
    is_new = at.found < parts.size();
    if (!is_new) return kSuccess;
    if (!may_create) return kDenied;
    return write(base, [&](Connection& to) {
        const auto made = add_missing(to.database, base.row, parts, at, is_new);
        key = {at.key, to.store};
        return made;
    });
}

LONG Hive::rename_key(const KeyId& base, std::u16string_view path, std::u16string_view name) {
    std::vector<std::u16string_view> parts;
    std::vector<std::u16string_view> name_parts;
    auto error = split_key_path(path, parts);
    if (error == kSuccess) error = split_key_path(name, name_parts);
    if (error != kSuccess) return error;
    if (name_parts.size() != 1) return static_cast<LONG>(ERROR_INVALID_PARAMETER);
    const auto folded = folded_name(name_parts.front());
    const auto stored = stored_name(name_parts.front());
    return write(base, [&](Connection& to) {
        Walk at;
        auto made = walk_to_end(to.database, base.row, parts, at);
        if (made != kSuccess) return made;
        if (at.key == KeyId::kRoot) return kDenied;
        if (made = parent_of(to.database, at); made != kSuccess) return made;
        std::int64_t other = 0;
        made = find_sub_key(to.database, at.parent, at.depth - 1, name_parts.front(), other);
        if (made == kSuccess && other != at.key) return static_cast<LONG>(ERROR_ALREADY_EXISTS);
        if (made != kSuccess && made != kNotFound) return made;
        made = to.database.query(Sql::rename_key).bind(at.key).bind(folded).bind(stored).run();
        return made != kSuccess ? made : touch(to.database, Sql::touch_names, at.parent);
    });
}

LONG Hive::delete_key(const KeyId& base, std::u16string_view path) {
    std::vector<std::u16string_view> parts;
    if (const auto error = split_key_path(path, parts); error != kSuccess) return error;
    return write(base, [&](Connection& to) {
        Walk at;
        const auto error = walk_to_end(to.database, base.row, parts, at);
        if (error != kSuccess) return error;
        if (at.key == KeyId::kRoot) return kDenied;
        auto child = to.database.query(Sql::sub_key_at);
        child.bind(at.key).bind(std::int64_t{0}).bind(std::int64_t{1});
        if (child.next()) return kDenied;
        return child.error() != kSuccess ? child.error() : remove_key(to.database, at);
    });
}

LONG Hive::delete_tree(const KeyId& base, std::u16string_view path, bool keep_key) {
    std::vector<std::u16string_view> parts;
    if (const auto error = split_key_path(path, parts); error != kSuccess) return error;
    return write(base, [&](Connection& to) {
        auto& database = to.database;
        Walk at;
        auto error = walk_to_end(database, base.row, parts, at);
        if (error != kSuccess) return error;
        if (at.key == KeyId::kRoot && !keep_key) return kDenied;
        error = remove_below(database, at);
        if (error != kSuccess || !keep_key) {
            return error != kSuccess ? error : remove_key(database, at);
        }
        error = database.query(Sql::delete_values_of).bind(at.key).run();
        if (error == kSuccess) error = touch(database, Sql::touch_values, at.key);
        return error != kSuccess ? error : touch(database, Sql::touch_names, at.key);
    });
}

LONG Hive::set_value(const KeyId& key, std::u16string_view name, DWORD type,
                     std::string_view data) {
    const auto folded = folded_name(name);
    const auto stored = stored_name(name);
    return write(key, [&](Connection& to) {
        const auto error = touch(to.database, Sql::touch_values, key.row);
        if (error != kSuccess) return error;
        return to.database.query(Sql::set_value)
            .bind(key.row)
            .bind(folded)
            .bind(stored)
            .bind(std::int64_t{type})
            .bind(data)
            .run();
    });
}

LONG Hive::delete_value(const KeyId& key, std::u16string_view name) {
    const auto folded = folded_name(name);
    return write(key, [&](Connection& to) {
        auto error = touch(to.database, Sql::touch_values, key.row);
        if (error == kSuccess) {
            error = to.database.query(Sql::delete_value).bind(key.row).bind(folded).run();
        }
        if (error != kSuccess) return error;
        return to.database.changed_rows() == 0 ? kNotFound : kSuccess;
    });
}

// Reads the entry at `index`, and more behind it the longer nobody writes: a reading ahead that a
// writer makes worthless costs as much as it gains elsewhere.
LONG Hive::list(const KeyId& key, DWORD index, Listing& listing, bool of_values, Connection& from) {
    const auto stamp = m_cache.stamp();
    DWORD depth = 0;
    if (const auto error = find_key(from.database, key.row, depth); error != kSuccess) return error;
    const bool is_quiet = stamp == listing.stamp;
    const auto want = is_quiet ? std::clamp<std::size_t>(listing.ahead.size() * 2, 1, kMostAhead)
                               : std::size_t{1};
    std::vector<Entry> rows;
    bool is_to_the_end = false;
    bool is_found = false;
    const bool goes_on = listing.has_last && (index == listing.last || index == listing.last + 1);
    if (goes_on) {
        const auto& last = listing.ahead[listing.last - listing.first].folded;
        auto query = from.database.query(of_values ? Sql::value_after : Sql::sub_key_after);
        query.bind(key.row).bind(last);
        is_to_the_end = take_rows(query, of_values, want + 1, std::int64_t{depth} + 1, rows);
        if (query.error() != kSuccess) return query.error();
        is_found = !rows.empty() && rows.front().folded == last;
        if (is_found && index != listing.last) rows.erase(rows.begin());
        // The one before was so large that the reading stopped at it.
        is_found = is_found && (!rows.empty() || is_to_the_end);
    }
    if (!is_found) {
        rows.clear();
        auto query = from.database.query(of_values ? Sql::value_at : Sql::sub_key_at);
        query.bind(key.row).bind(std::int64_t{index});
        is_to_the_end = take_rows(query, of_values, want, std::int64_t{depth} + 1, rows);
        if (query.error() != kSuccess) return query.error();
    }
    listing = {std::move(rows), index, is_to_the_end, stamp, false, 0};
    return kSuccess;
}

LONG Hive::entry_at(const KeyId& key, DWORD index, Listing& listing, const Entry*& entry,
                    bool of_values) {
    const auto is_ahead = [&] {
        const auto size = listing.ahead.size();
        return index >= listing.first && (index - listing.first < size ||
                                          (index - listing.first == size && listing.is_to_the_end));
    };
    // One that goes on is a part of what has begun before.
    constexpr std::int64_t kWhile = 50'000;
    const bool goes_on = listing.has_last && index == listing.last + 1;
    if (!is_ahead() || !is_current(goes_on ? kWhile : kJust) ||
        !m_cache.is_unchanged(listing.stamp)) {
        const auto body = [&](Connection& from) {
            return list(key, index, listing, of_values, from);
        };
        if (const auto error = read(key, body, kNoMore); error != kSuccess) return error;
    }
    if (index - listing.first >= listing.ahead.size()) {
        listing = {};
        return kNoMore;
    }
    entry = &listing.ahead[index - listing.first];
    listing.has_last = true;
    listing.last = index;
    return entry->is_damaged ? kCorrupt : kSuccess;
}

LONG Hive::sub_key_at(const KeyId& key, DWORD index, Listing& listing, const Entry*& entry) {
    return entry_at(key, index, listing, entry, false);
}

LONG Hive::value_at(const KeyId& key, DWORD index, Listing& listing, const Entry*& entry) {
    return entry_at(key, index, listing, entry, true);
}

LONG Hive::info(const KeyId& key, KeyInfo& info) {
    info = {};
    const auto number = [](const Query& query, int column) {
        return static_cast<DWORD>(query.integer(column));
    };
    const auto body = [&](Connection& from) {
        auto own = from.database.query(Sql::key_info);
        own.bind(key.row);
        if (!own.next()) return own.error() == kSuccess ? kDeleted : own.error();
        info.written = own.integer(0);
        auto sub_keys = from.database.query(Sql::sub_key_info);
        sub_keys.bind(key.row);
        if (!sub_keys.next()) return sub_keys.error();
        info.sub_keys = number(sub_keys, 0);
        info.longest_sub_key = number(sub_keys, 1) / 2;
        auto values = from.database.query(Sql::value_info);
        values.bind(key.row);
        if (!values.next()) return values.error();
        info.values = number(values, 0);
        info.longest_value_name = number(values, 1) / 2;
        info.longest_data = number(values, 2);
        return kSuccess;
    };
    return read(key, body, kSuccess);
}

// What this process wrote to a store that is gone can't be brought to the disk any more.
LONG Hive::flush(const KeyId& key) {
    constexpr auto kLost = static_cast<LONG>(ERROR_REGISTRY_IO_FAILED);
    if (!m_may_write)
        return read(
            key, [](Connection&) { return kSuccess; }, kSuccess);
    const std::lock_guard guard(m_write_lock);
    const auto number = m_file.number();
    if (m_written_store != 0 && number != m_written_store) {
        forget_store();
        return key.is_in(number) ? kLost : kDeleted;
    }
    if (number == 0 && key.row == KeyId::kRoot) return kSuccess;
    auto error = open_current_writer();
    if (error == kSuccess && !key.is_in(m_writer.store)) error = kDeleted;
    if (error == kSuccess) error = m_writer.database.sync();
    if (error != kSuccess) return error;
    return m_file.number() == m_writer.store ? kSuccess : kLost;
}

LONG Hive::begin_watch(Watch& watch) {
    {
        const std::lock_guard guard(m_write_lock);
        std::string file;
        auto error = m_may_write ? open_current_writer() : m_file.check(file);
        if (error == kSuccess && !m_may_write) {
            error = m_hub.open_page(file + "-signal", m_file.is_private(), m_file.number());
        }
        if (error != kSuccess) return error;
    }
    const auto body = [&](Connection& from) {
        watch.counted_in = from.store;
        return read_changes(from.database, watch.key.row, watch.subtree, watch.since);
    };
    return read(watch.key, body, kNotFound);
}

LONG Hive::changed_since(Watch& watch) {
    Changes now;
    std::uint32_t store = 0;
    const auto body = [&](Connection& from) {
        store = from.store;
        return read_changes(from.database, watch.key.row, watch.subtree, now);
    };
    if (const auto error = read(watch.key, body, kDeleted); error != kSuccess) return error;
    auto seen = watch.since;
    if ((watch.filter & REG_NOTIFY_CHANGE_NAME) != 0) seen.names = now.names;
    if ((watch.filter & REG_NOTIFY_CHANGE_LAST_SET) != 0) seen.values = now.values;
    if (seen == watch.since && store == watch.counted_in) return kNoMore;
    watch.since = seen;
    watch.counted_in = store;
    return kSuccess;
}

}  // namespace tvutil2
