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
#include "tvutil2/platform/registry/value_cache.h"

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace tvutil2 {

constexpr std::int64_t kRootKey = 1;

/// A sub key or value as an enumeration gives it.
struct Entry {
    std::string folded;
    std::u16string name;
    std::int64_t written = 0;
    DWORD type = 0;
    std::string data;
};

struct KeyInfo {
    DWORD sub_keys = 0;
    DWORD longest_sub_key = 0;
    DWORD values = 0;
    DWORD longest_value_name = 0;
    DWORD longest_data = 0;
    std::int64_t written = 0;
};

/// Where the last enumeration call on a handle stood, so that the next index costs one step.
struct Position {
    DWORD index = 0;
    std::string folded;
    ValueCache::Stamp stamp;
};

struct Hives;

class Hive {
  public:
    static Hive& user();
    static Hive& machine();

    /// Whether this process is to write here at all; the disk may still refuse.
    [[nodiscard]] bool may_write() const { return m_may_write; }

    /// All results are error codes; keys are ids. A hive without a file has an empty root.
    LONG open_key(std::int64_t base, std::u16string_view path, std::int64_t& key);
    /// Makes what is missing, if the caller may; otherwise a missing key is ERROR_ACCESS_DENIED.
    LONG create_key(std::int64_t base, std::u16string_view path, bool may_create, std::int64_t& key,
                    bool& is_new);
    LONG delete_key(std::int64_t base, std::u16string_view path);
    LONG delete_tree(std::int64_t base, std::u16string_view path, bool keep_key);

    /// Calls `use` with the value.
    template <class Use>
    LONG get_value(std::int64_t key, std::u16string_view name, Use use) {
        auto result = static_cast<LONG>(ERROR_FILE_NOT_FOUND);
        const auto use_or_miss = [&](const ValueView* value) {
            if (value != nullptr) result = use(*value);
        };
        if (m_cache.look_up(key, name, use_or_miss)) return result;
        return read_value(key, name, std::function<LONG(const ValueView&)>(use));
    }
    LONG set_value(std::int64_t key, std::u16string_view name, DWORD type, std::string_view data);
    LONG delete_value(std::int64_t key, std::u16string_view name);

    LONG sub_key_at(std::int64_t key, DWORD index, Position& position, Entry& entry);
    LONG value_at(std::int64_t key, DWORD index, Position& position, Entry& entry);
    LONG info(std::int64_t key, KeyInfo& info);
    LONG flush();

    /// How often a key has changed; makes the hive if there is none, for a watch needs one.
    LONG begin_watch(std::int64_t key, bool subtree, Changes& now);
    [[nodiscard]] ChangeHub& hub() { return m_hub; }

  private:
    static const Hives& all();
    static void before_fork();
    static void after_fork(bool in_child);

    Hive(const std::string& folder, bool is_private, bool may_write);

    using Body = std::function<LONG(Database&)>;
    LONG read(const Body& body, LONG result_without_file);
    LONG write(const Body& change);
    LONG try_write(const Body& change, bool& is_stale);
    LONG open_writer();
    LONG open_reader();
    void close_reader();
    LONG read_value(std::int64_t key, std::u16string_view name,
                    const std::function<LONG(const ValueView&)>& use);
    LONG entry_at(std::int64_t key, DWORD index, Position& position, Entry& entry, bool of_values);
    LONG changed_since(Watch& watch);

    std::string m_file;
    bool m_is_private;
    bool m_may_write;
    std::mutex m_write_lock;
    Database m_writer;
    std::mutex m_read_lock;
    Database m_reader;
    ValueCache m_cache;
    ChangeHub m_hub;
};

}  // namespace tvutil2
