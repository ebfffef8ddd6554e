#include "tvutil2/platform/registry/key_tree.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/registry/key_name.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/platform/registry/results.h"

namespace tvutil2::key_tree {
namespace {

std::int64_t row_time() {
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    return static_cast<std::int64_t>(ticks_of(time));
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
                           .bind(row_time())
                           .run();
    key = database.last_row_id();
    return error;
}

}  // namespace

LONG find_key(Database& database, std::int64_t key, DWORD& depth) {
    auto query = database.query(Sql::key_exists);
    query.bind(key);
    if (!query.next()) return query.error() == kSuccess ? kDeleted : query.error();
    const auto found = query.integer(0);
    if (found < 0 || found > REG_MAX_DEPTH) return kCorrupt;
    depth = static_cast<DWORD>(found);
    return kSuccess;
}

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
    const auto error = database.query(what).bind(key).bind(row_time()).run();
    if (error != kSuccess) return error;
    return database.changed_rows() == 0 ? kDeleted : kSuccess;
}

LONG walk(Database& database, std::int64_t base, const Parts& parts, Walk& at) {
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

LONG walk_to_end(Database& database, std::int64_t base, const Parts& parts, Walk& at) {
    const auto error = walk(database, base, parts, at);
    return error == kSuccess && at.found < parts.size() ? kNotFound : error;
}

LONG add_missing(Database& database, std::int64_t base, const Parts& parts, Walk& at,
                 bool& is_new) {
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

LONG read_changes(Database& database, std::int64_t key, bool subtree, Changes& changes) {
    auto query = database.query(subtree ? Sql::changes_of_tree : Sql::changes_of_key);
    query.bind(key);
    if (!query.next()) return query.error() == kSuccess ? kDeleted : query.error();
    if (query.is_null(0)) return kDeleted;
    changes = {query.integer(0), query.integer(1)};
    return kSuccess;
}

}  // namespace tvutil2::key_tree
