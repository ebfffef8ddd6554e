// One hive: the store behind a root key, shared by all handles below it.
//
// Two connections, each under a lock of its own: reads never wait for a write of this process to
// reach the disk. Values read before come from the cache and touch neither. A fork closes both
// connections in parent and child, since SQLite can't be carried across one; they are opened again
// when next needed.
#pragma once

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/registry/change_hub.h"
#include "tvutil2/platform/registry/database.h"
#include "tvutil2/platform/registry/key_id.h"
#include "tvutil2/platform/registry/store_file.h"
#include "tvutil2/platform/registry/value_cache.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

/// A sub key or value as an enumeration gives it.
struct Entry {
    std::string folded;
    std::u16string name;
    std::int64_t written = 0;
    DWORD type = 0;
    std::string data;
    bool is_damaged = false;
};

struct KeyInfo {
    DWORD sub_keys = 0;
    DWORD longest_sub_key = 0;
    DWORD values = 0;
    DWORD longest_value_name = 0;
    DWORD longest_data = 0;
    std::int64_t written = 0;
};

/// What the enumeration calls on a handle leave for the next one.
///
/// `ahead` holds entries from `first` on that nothing has changed since. Where something has, the
/// next index is found behind the name that the last call gave, as long as that one is there: a
/// step costs the same however many entries lie before it and whoever writes.
struct Listing {
    std::vector<Entry> ahead;
    DWORD first = 0;
    bool is_to_the_end = false;
    ValueCache::Stamp stamp;

    bool has_last = false;
    DWORD last = 0;  ///< one of those ahead
};

struct Hives;

class Hive {
  public:
    static Hive& user();
    static Hive& machine();

    /// Whether this process is to write here at all; the disk may still refuse.
    [[nodiscard]] bool may_write() const { return m_may_write; }

    /// All results are error codes. A hive without a file has an empty root; a key of a store that
    /// is gone or was replaced is deleted.
    LONG open_key(const KeyId& base, std::u16string_view path, KeyId& key);
    /// Makes what is missing, if the caller may; otherwise a missing key is ERROR_ACCESS_DENIED.
    LONG create_key(const KeyId& base, std::u16string_view path, bool may_create, KeyId& key,
                    bool& is_new);
    LONG rename_key(const KeyId& base, std::u16string_view path, std::u16string_view name);
    LONG delete_key(const KeyId& base, std::u16string_view path);
    LONG delete_tree(const KeyId& base, std::u16string_view path, bool keep_key);

    /// Calls `use` with the value.
    template <class Use>
    LONG get_value(const KeyId& key, std::u16string_view name, Use use) {
        auto result = static_cast<LONG>(ERROR_FILE_NOT_FOUND);
        const auto use_or_miss = [&](const ValueView* value) {
            if (value != nullptr) result = use(*value);
        };
        if (is_current() && m_cache.look_up(key, name, use_or_miss)) return result;
        return read_value(key, name, std::function<LONG(const ValueView&)>(use));
    }
    LONG set_value(const KeyId& key, std::u16string_view name, DWORD type, std::string_view data);
    LONG delete_value(const KeyId& key, std::u16string_view name);

    /// `entry` belongs to the listing, and lasts until its next use.
    LONG sub_key_at(const KeyId& key, DWORD index, Listing& listing, const Entry*& entry);
    LONG value_at(const KeyId& key, DWORD index, Listing& listing, const Entry*& entry);
    LONG info(const KeyId& key, KeyInfo& info);
    LONG flush(const KeyId& key);

    /// Notes how often the watch's key has changed; makes the hive if there is none, for a watch
    /// needs one.
    LONG begin_watch(Watch& watch);
    [[nodiscard]] ChangeHub& hub() { return m_hub; }

  private:
    static const Hives& all();
    static void before_fork();
    static void after_fork(bool in_child);

    Hive(const std::string& folder, bool is_private, bool may_write);

    struct Connection {
        Database database;
        std::uint32_t store = 0;
    };
    /// Works on the open connection, under its lock.
    using Body = std::function<LONG(Connection&)>;
    LONG read(const KeyId& key, const Body& body, LONG result_without_file);
    LONG write(const KeyId& key, const Body& change);
    LONG try_write(const KeyId& key, const Body& change, bool& is_lost);
    LONG open(Connection& connection, bool may_write);
    LONG open_writer();
    LONG open_current_writer();
    LONG open_reader();
    void close_reader();
    void forget_store();
    /// Less than it takes to move a file away and to call again.
    static constexpr std::int64_t kJust = 2'000;
    [[nodiscard]] bool is_current(std::int64_t nanoseconds_ago = kJust) {
        return m_file.was_just(m_reader_store, nanoseconds_ago);
    }
    LONG read_value(const KeyId& key, std::u16string_view name,
                    const std::function<LONG(const ValueView&)>& use);
    LONG entry_at(const KeyId& key, DWORD index, Listing& listing, const Entry*& entry,
                  bool of_values);
    LONG list(const KeyId& key, DWORD index, Listing& listing, bool of_values, Connection& from);
    LONG changed_since(Watch& watch);

    StoreFile m_file;
    bool m_may_write;
    std::mutex m_write_lock;
    Connection m_writer;
    /// The store that this process last wrote to.
    std::uint32_t m_written_store = 0;
    std::mutex m_read_lock;
    Connection m_reader;
    std::atomic<std::uint32_t> m_reader_store{0};
    ValueCache m_cache;
    ChangeHub m_hub;
};

}  // namespace tvutil2
