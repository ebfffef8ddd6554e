#include "tvutil2/platform/registry/hive.h"

#include "tvutil2/platform/registry/key_name.h"
#include "tvutil2/platform/registry/key_tree.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/platform/registry/results.h"

namespace tvutil2 {

using key_tree::Walk;

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
        if (error == kSuccess) error = key_tree::find_key(from.database, key.row, depth);
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
        const auto error = key_tree::walk_to_end(from.database, base.row, parts, at);
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
        const auto error = key_tree::walk(from.database, base.row, parts, at);
        key = {at.key, from.store};
        return error;
    };
    const auto error = read(base, look, kSuccess);
    if (error != kSuccess) return error;
    is_new = at.found < parts.size();
    if (!is_new) return kSuccess;
    if (!may_create) return kDenied;
    return write(base, [&](Connection& to) {
        const auto made = key_tree::add_missing(to.database, base.row, parts, at, is_new);
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
        auto made = key_tree::walk_to_end(to.database, base.row, parts, at);
        if (made != kSuccess) return made;
        if (at.key == KeyId::kRoot) return kDenied;
        if (made = key_tree::parent_of(to.database, at); made != kSuccess) return made;
        std::int64_t other = 0;
        made =
            key_tree::find_sub_key(to.database, at.parent, at.depth - 1, name_parts.front(), other);
        if (made == kSuccess && other != at.key) return static_cast<LONG>(ERROR_ALREADY_EXISTS);
        if (made != kSuccess && made != kNotFound) return made;
        made = to.database.query(Sql::rename_key).bind(at.key).bind(folded).bind(stored).run();
        return made != kSuccess ? made : key_tree::touch(to.database, Sql::touch_names, at.parent);
    });
}

LONG Hive::delete_key(const KeyId& base, std::u16string_view path) {
    std::vector<std::u16string_view> parts;
    if (const auto error = split_key_path(path, parts); error != kSuccess) return error;
    return write(base, [&](Connection& to) {
        Walk at;
        const auto error = key_tree::walk_to_end(to.database, base.row, parts, at);
        if (error != kSuccess) return error;
        if (at.key == KeyId::kRoot) return kDenied;
        auto child = to.database.query(Sql::sub_key_at);
        child.bind(at.key).bind(std::int64_t{0}).bind(std::int64_t{1});
        if (child.next()) return kDenied;
        return child.error() != kSuccess ? child.error() : key_tree::remove_key(to.database, at);
    });
}

LONG Hive::delete_tree(const KeyId& base, std::u16string_view path, bool keep_key) {
    std::vector<std::u16string_view> parts;
    if (const auto error = split_key_path(path, parts); error != kSuccess) return error;
    return write(base, [&](Connection& to) {
        auto& database = to.database;
        Walk at;
        auto error = key_tree::walk_to_end(database, base.row, parts, at);
        if (error != kSuccess) return error;
        if (at.key == KeyId::kRoot && !keep_key) return kDenied;
        error = key_tree::remove_below(database, at);
        if (error != kSuccess || !keep_key) {
            return error != kSuccess ? error : key_tree::remove_key(database, at);
        }
        error = database.query(Sql::delete_values_of).bind(at.key).run();
        if (error == kSuccess) error = key_tree::touch(database, Sql::touch_values, at.key);
        return error != kSuccess ? error : key_tree::touch(database, Sql::touch_names, at.key);
    });
}

LONG Hive::set_value(const KeyId& key, std::u16string_view name, DWORD type,
                     std::string_view data) {
    const auto folded = folded_name(name);
    const auto stored = stored_name(name);
    return write(key, [&](Connection& to) {
        const auto error = key_tree::touch(to.database, Sql::touch_values, key.row);
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
        auto error = key_tree::touch(to.database, Sql::touch_values, key.row);
        if (error == kSuccess) {
            error = to.database.query(Sql::delete_value).bind(key.row).bind(folded).run();
        }
        if (error != kSuccess) return error;
        return to.database.changed_rows() == 0 ? kNotFound : kSuccess;
    });
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
        return key_tree::read_changes(from.database, watch.key.row, watch.subtree, watch.since);
    };
    return read(watch.key, body, kNotFound);
}

LONG Hive::changed_since(Watch& watch) {
    Changes now;
    std::uint32_t store = 0;
    const auto body = [&](Connection& from) {
        store = from.store;
        return key_tree::read_changes(from.database, watch.key.row, watch.subtree, now);
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
