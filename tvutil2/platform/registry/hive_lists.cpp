// Enumerations of a hive, and how far they read ahead.
#include "tvutil2/platform/registry/hive.h"
#include "tvutil2/platform/registry/key_name.h"
#include "tvutil2/platform/registry/key_tree.h"
#include "tvutil2/platform/registry/results.h"

#include <algorithm>

namespace tvutil2 {
namespace {

// What an enumeration reads ahead, once nobody is seen to write beside it.
constexpr std::size_t kMostAhead = 256;
constexpr std::size_t kMostBytesAhead = 65536;

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

}  // namespace

// Reads the entry at `index`, and more behind it the longer nobody writes: a reading ahead that a
// writer makes worthless costs as much as it gains elsewhere.
LONG Hive::list(const KeyId& key, DWORD index, Listing& listing, bool of_values, Connection& from) {
    const auto stamp = m_cache.stamp();
    DWORD depth = 0;
    if (const auto error = key_tree::find_key(from.database, key.row, depth); error != kSuccess)
        return error;
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

}  // namespace tvutil2
