#include "tvutil2/platform/registry/hive.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/registry/key_name.h"
#include "tvutil2/platform/registry/registry.h"

#include <pthread.h>
#include <unistd.h>

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

LONG touch(Database& database, Sql what, std::int64_t key, std::int64_t number) {
    const auto error = database.query(what).bind(key).bind(number).bind(now()).run();
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

// The parent of a key that was reached with no parts isn't known from the walk.
LONG parent_of(Database& database, Walk& at) {
    if (at.parent != 0) return kSuccess;
    auto query = database.query(Sql::parent_of);
    query.bind(at.key);
    if (query.next()) at.parent = query.integer(0);
    return query.error();
}

LONG remove_key(Database& database, Walk& at, std::int64_t number) {
    if (const auto error = parent_of(database, at); error != kSuccess) return error;
    for (const auto step : {Sql::delete_values_of, Sql::delete_key}) {
        if (const auto error = database.query(step).bind(at.key).run(); error != kSuccess) {
            return error;
        }
    }
    return touch(database, Sql::touch_names, at.parent, number);
}

LONG remove_below(Database& database, std::int64_t key) {
    const auto error = database.query(Sql::delete_values_below).bind(key).run();
    return error != kSuccess ? error : database.query(Sql::delete_keys_below).bind(key).run();
}

void fork_hives(void (Hive::*step)(bool), bool in_child) {
    (Hive::user().*step)(in_child);
    (Hive::machine().*step)(in_child);
}

// Both hives are made by the same call, so that the handlers never make one.
struct Hives {
    Hive* user;
    Hive* machine;
};

}  // namespace

Hive::Hive(const std::string& folder, bool is_private, bool may_write)
    : m_file(folder + "/registry.db"),
      m_is_private(is_private),
      m_may_write(may_write),
      m_hub([this](Watch& watch) { return changed_since(watch); }) {}

// Never destroyed: handles are used by static objects of other modules to the very end.
Hive& Hive::user() {
    static auto* const hive = [] {
        auto* const made = new Hive(user_store(), true, true);
        return made;
    }();
    static const int hooked = pthread_atfork([] { fork_hives(&Hive::before_fork_in, false); },
                                             [] { fork_hives(&Hive::after_fork, false); },
                                             [] { fork_hives(&Hive::after_fork, true); });
    static_cast<void>(hooked);
    return *hive;
}

Hive& Hive::machine() {
    static auto* const hive =
        new Hive(machine_store(), false, !profile_root().empty() || geteuid() == 0);
    return *hive;
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

LONG Hive::try_write(const Change& change, bool& is_stale) {
    if (const auto error = open_writer(); error != kSuccess) return error;
    Transaction transaction(m_writer, Sql::begin_write);
    auto error = transaction.error();
    if (error == kSuccess) {
        std::int64_t number = 0;
        {
            auto next = m_writer.query(Sql::next_change);
            next.bind(std::int64_t{1});
            if (next.next()) number = next.integer(0);
            error = next.run();
        }
        if (error == kSuccess) error = change(m_writer, number);
        if (error == kSuccess) error = transaction.commit();
    }
    is_stale = error != kSuccess && m_writer.is_stale();
    if (error == kSuccess) m_hub.page().announce();
    return error;
}

// A file that was replaced behind our back is opened again, once.
LONG Hive::write(const Change& change) {
    const std::lock_guard guard(m_write_lock);
    bool is_stale = false;
    const auto error = try_write(change, is_stale);
    if (!is_stale) return error;
    m_writer.close();
    return try_write(change, is_stale);
}
