// The keys of a store, as rows of its database: how a path is walked, and what the calls of the
// registry do to the keys on it. All within a transaction of the caller's; the results are error
// codes.
#pragma once

#include "tvutil2/platform/registry/change_hub.h"
#include "tvutil2/platform/registry/database.h"

#include <string_view>
#include <vector>

namespace tvutil2::key_tree {

/// How deep the key with that row lies.
LONG find_key(Database& database, std::int64_t key, DWORD& depth);
/// The row of a sub key of a key at that depth. A sub key lies one level deeper than its key. One
/// that doesn't is its own child, or another's in a circle, which no call of this registry has
/// made.
LONG find_sub_key(Database& database, std::int64_t parent, DWORD depth, std::u16string_view name,
                  std::int64_t& key);
/// Counts a change of a key's names or values.
LONG touch(Database& database, Sql what, std::int64_t key);

/// A walk from `base` as far as keys exist. `key` and `parent` are the last two met, `parent` 0
/// where it isn't known; `found` is how many of the parts are there.
struct Walk {
    std::int64_t key = 0;
    std::int64_t parent = 0;
    DWORD depth = 0;
    std::size_t found = 0;
};
using Parts = std::vector<std::u16string_view>;

LONG walk(Database& database, std::int64_t base, const Parts& parts, Walk& at);
/// The same, where all of the parts have to be there.
LONG walk_to_end(Database& database, std::int64_t base, const Parts& parts, Walk& at);
/// Walks again, for another writer may have been here since, and makes what isn't there.
LONG add_missing(Database& database, std::int64_t base, const Parts& parts, Walk& at, bool& is_new);
/// Looks the parent up where the walk doesn't know it: of a key that was reached with no parts.
LONG parent_of(Database& database, Walk& at);
/// Removes a key without sub keys, with its values.
LONG remove_key(Database& database, Walk& at);
/// Removes all keys below a key.
LONG remove_below(Database& database, const Walk& at);

LONG read_changes(Database& database, std::int64_t key, bool subtree, Changes& changes);

}  // namespace tvutil2::key_tree
