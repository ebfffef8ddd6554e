#include "tvutil2/platform/registry/registry.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/registry/key.h"
#include "tvutil2/platform/registry/results.h"

#include <algorithm>
#include <cstring>

namespace {

using tvutil2::kDenied;
using tvutil2::KeyObject;
using tvutil2::KeyReference;
using tvutil2::kSuccess;
using tvutil2::resolve_key;

constexpr auto kInvalid = static_cast<LONG>(ERROR_INVALID_PARAMETER);
constexpr auto kMoreData = static_cast<LONG>(ERROR_MORE_DATA);

/// Rights that change something: refused at once where the hive can't be written.
constexpr DWORD kWritingRights = KEY_SET_VALUE | KEY_CREATE_SUB_KEY | 0x000D0000;

std::u16string_view view_of(const char16_t* text) {
    return text == nullptr ? std::u16string_view() : std::u16string_view(text);
}

bool is_text(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

LONG give_handle(const KeyReference& base, const tvutil2::KeyId& id, DWORD access, HKEY* result) {
    if ((access & kWritingRights) != 0 && !base.hive->may_write()) return kDenied;
    const auto key =
        tvutil2::handle_table::insert(std::make_shared<KeyObject>(*base.hive, id, access));
    if (key == 0) return static_cast<LONG>(ERROR_TOO_MANY_OPEN_FILES);
    *result = reinterpret_cast<HKEY>(key);
    return kSuccess;
}

bool is_event(HANDLE handle) {
    const auto object = tvutil2::handle_table::find(reinterpret_cast<std::uintptr_t>(handle));
    return object && object->kind() == tvutil2::HandleKind::event;
}

// Copies data out by the rules of RegQueryValueExW.
LONG give_data(DWORD type, std::string_view data, BYTE* out, DWORD* size) {
    if (size == nullptr) return out == nullptr ? kSuccess : kInvalid;
    const auto room = *size;
    *size = static_cast<DWORD>(data.size());
    if (out == nullptr) return kSuccess;
    if (room < data.size()) return kMoreData;
    if (!data.empty()) std::memcpy(out, data.data(), data.size());
    const auto left = std::min<std::size_t>(room - data.size(), sizeof(char16_t));
    const bool is_ended = data.ends_with(std::string_view("\0\0", 2)) && data.size() % 2 == 0;
    if (is_text(type) && left == sizeof(char16_t) && !is_ended) {
        std::memset(out + data.size(), 0, sizeof(char16_t));
    }
    return kSuccess;
}

// Copies a name with its zero; `*count` is the room going in and the length coming out.
LONG give_name(std::u16string_view name, char16_t* out, DWORD* count) {
    if (out == nullptr || count == nullptr) return kInvalid;
    if (name.size() >= *count) return kMoreData;
    name.copy(out, name.size());
    out[name.size()] = 0;
    *count = static_cast<DWORD>(name.size());
    return kSuccess;
}

void give(DWORD* out, DWORD value) {
    if (out != nullptr) *out = value;
}

void give_time(FILETIME* out, std::int64_t ticks) {
    if (out != nullptr) *out = tvutil2::file_time_of(static_cast<std::uint64_t>(ticks));
}

void give_empty_class(char16_t* name, DWORD* count) {
    if (name != nullptr && count != nullptr && *count > 0) *name = 0;
    give(count, 0);
}

using Step = LONG (tvutil2::Hive::*)(const tvutil2::KeyId&, DWORD, tvutil2::Listing&,
                                     const tvutil2::Entry*&);

// Gives `use` the entry at an index.
template <class Use>
LONG with_entry_at(const KeyReference& key, Step step, tvutil2::Listing tvutil2::KeyMemory::*place,
                   DWORD index, Use use) {
    const std::unique_lock guard(key.memory->listing_lock, std::try_to_lock);
    tvutil2::Listing from_the_start;
    auto& listing = guard.owns_lock() ? key.memory->*place : from_the_start;
    const tvutil2::Entry* entry = nullptr;
    const auto error = (key.hive->*step)(key.id, index, listing, entry);
    return error != kSuccess ? error : use(*entry);
}

LONG delete_tree(HKEY key, const char16_t* sub_key, bool keep_key) {
    KeyReference base;
    const auto error = resolve_key(key, 0, base);
    return error != kSuccess ? error : base.hive->delete_tree(base.id, view_of(sub_key), keep_key);
}

// The watch of a call: news since the last one on the same handle, or from now on.
LONG make_watch(const KeyReference& key, BOOL subtree, DWORD filter, HANDLE event,
                std::shared_ptr<tvutil2::Watch>& watch) {
    watch = std::make_shared<tvutil2::Watch>();
    watch->owner = key.object.get();
    watch->key = key.id;
    watch->subtree = subtree != 0;
    watch->filter = filter;
    watch->event = event;
    const auto error = key.hive->begin_watch(*watch);
    if (error != kSuccess || !key.object) return error;
    auto& memory = *key.memory;
    const std::lock_guard guard(memory.watch_lock);
    if (memory.watch && memory.watch->subtree == watch->subtree) {
        key.hive->hub().go_on_from(*memory.watch, *watch);
    }
    memory.watch = watch;
    return kSuccess;
}

}  // namespace

LONG RegOpenKeyExW(HKEY key, const char16_t* sub_key, DWORD options, DWORD access, HKEY* result) {
    if (result == nullptr || options != 0) return kInvalid;
    *result = nullptr;
    KeyReference base;
    auto error = resolve_key(key, 0, base);
    tvutil2::KeyId id;
    if (error == kSuccess) error = base.hive->open_key(base.id, view_of(sub_key), id);
    return error != kSuccess ? error : give_handle(base, id, access, result);
}

LONG RegCreateKeyExW(HKEY key, const char16_t* sub_key, DWORD reserved,
                     const char16_t* /*class_name*/, DWORD options, DWORD access,
                     const SECURITY_ATTRIBUTES* /*security*/, HKEY* result, DWORD* disposition) {
    if (result == nullptr || reserved != 0) return kInvalid;
    *result = nullptr;
    if (options != 0) return static_cast<LONG>(ERROR_NOT_SUPPORTED);
    KeyReference base;
    auto error = resolve_key(key, 0, base);
    if (error != kSuccess) return error;
    const bool may_create =
        !base.object || (base.object->access & KEY_CREATE_SUB_KEY) == KEY_CREATE_SUB_KEY;
    tvutil2::KeyId id;
    bool is_new = false;
    error = base.hive->create_key(base.id, view_of(sub_key), may_create, id, is_new);
    if (error != kSuccess) return error;
    give(disposition, is_new ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY);
    return give_handle(base, id, access, result);
}

LONG RegCloseKey(HKEY key) {
    if (tvutil2::is_root_key(key)) return kSuccess;
    const auto object = tvutil2::handle_table::remove(reinterpret_cast<std::uintptr_t>(key),
                                                      tvutil2::HandleKind::key);
    if (!object) return static_cast<LONG>(ERROR_INVALID_HANDLE);
    auto& closed = static_cast<KeyObject&>(*object);
    closed.is_closed = true;
    closed.hive.hub().release(&closed);
    return kSuccess;
}

LONG RegQueryValueExW(HKEY key, const char16_t* name, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* size) {
    if (reserved != nullptr || (data != nullptr && size == nullptr)) return kInvalid;
    KeyReference base;
    const auto error = resolve_key(key, KEY_QUERY_VALUE, base);
    if (error != kSuccess) return error;
    return base.hive->get_value(base.id, view_of(name), [&](const tvutil2::ValueView& value) {
        give(type, value.type);
        return give_data(value.type, value.data, data, size);
    });
}

LONG RegSetValueExW(HKEY key, const char16_t* name, DWORD reserved, DWORD type, const BYTE* data,
                    DWORD size) {
    const auto text = view_of(name);
    if (reserved != 0 || text.size() > REG_MAX_VALUE_NAME || (data == nullptr && size != 0)) {
        return kInvalid;
    }
    if (size > REG_MAX_VALUE_DATA) return static_cast<LONG>(ERROR_NOT_ENOUGH_MEMORY);
    KeyReference base;
    const auto error = resolve_key(key, KEY_SET_VALUE, base);
    if (error != kSuccess) return error;
    return base.hive->set_value(base.id, text, type, {reinterpret_cast<const char*>(data), size});
}

LONG RegDeleteValueW(HKEY key, const char16_t* name) {
    KeyReference base;
    const auto error = resolve_key(key, KEY_SET_VALUE, base);
    return error != kSuccess ? error : base.hive->delete_value(base.id, view_of(name));
}

LONG RegSetKeyValueW(HKEY key, const char16_t* sub_key, const char16_t* name, DWORD type,
                     const void* data, DWORD size) {
    HKEY opened = nullptr;
    auto error =
        RegCreateKeyExW(key, sub_key, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &opened, nullptr);
    if (error != kSuccess) return error;
    error = RegSetValueExW(opened, name, 0, type, static_cast<const BYTE*>(data), size);
    RegCloseKey(opened);
    return error;
}

LONG RegDeleteKeyValueW(HKEY key, const char16_t* sub_key, const char16_t* name) {
    HKEY opened = nullptr;
    auto error = RegOpenKeyExW(key, sub_key, 0, KEY_SET_VALUE, &opened);
    if (error != kSuccess) return error;
    error = RegDeleteValueW(opened, name);
    RegCloseKey(opened);
    return error;
}

LONG RegEnumKeyW(HKEY key, DWORD index, char16_t* name, DWORD count) {
    return RegEnumKeyExW(key, index, name, &count, nullptr, nullptr, nullptr, nullptr);
}

LONG RegEnumKeyExW(HKEY key, DWORD index, char16_t* name, DWORD* count, DWORD* reserved,
                   char16_t* class_name, DWORD* class_count, FILETIME* last_write) {
    if (name == nullptr || count == nullptr || reserved != nullptr) return kInvalid;
    KeyReference base;
    const auto error = resolve_key(key, KEY_ENUMERATE_SUB_KEYS, base);
    if (error != kSuccess) return error;
    return with_entry_at(base, &tvutil2::Hive::sub_key_at, &tvutil2::KeyMemory::sub_keys, index,
                         [&](const tvutil2::Entry& entry) {
                             const auto given = give_name(entry.name, name, count);
                             if (given != kSuccess) return given;
                             give_empty_class(class_name, class_count);
                             give_time(last_write, entry.written);
                             return kSuccess;
                         });
}

LONG RegEnumValueW(HKEY key, DWORD index, char16_t* name, DWORD* count, DWORD* reserved,
                   DWORD* type, BYTE* data, DWORD* size) {
    if (name == nullptr || count == nullptr || reserved != nullptr) return kInvalid;
    if (data != nullptr && size == nullptr) return kInvalid;
    KeyReference base;
    const auto error = resolve_key(key, KEY_QUERY_VALUE, base);
    if (error != kSuccess) return error;
    return with_entry_at(base, &tvutil2::Hive::value_at, &tvutil2::KeyMemory::values, index,
                         [&](const tvutil2::Entry& entry) {
                             const auto given = give_name(entry.name, name, count);
                             if (given != kSuccess) return given;
                             give(type, entry.type);
                             return give_data(entry.type, entry.data, data, size);
                         });
}

LONG RegRenameKey(HKEY key, const char16_t* sub_key, const char16_t* new_name) {
    if (new_name == nullptr) return kInvalid;
    KeyReference base;
    const auto error = resolve_key(key, KEY_CREATE_SUB_KEY, base);
    if (error != kSuccess) return error;
    return base.hive->rename_key(base.id, view_of(sub_key), view_of(new_name));
}

LONG RegDeleteKeyW(HKEY key, const char16_t* sub_key) {
    if (sub_key == nullptr) return kInvalid;
    KeyReference base;
    const auto error = resolve_key(key, 0, base);
    return error != kSuccess ? error : base.hive->delete_key(base.id, view_of(sub_key));
}

LONG SHDeleteKeyW(HKEY key, const char16_t* sub_key) {
    return delete_tree(key, sub_key, false);
}

LONG RegDeleteTreeW(HKEY key, const char16_t* sub_key) {
    return delete_tree(key, sub_key, view_of(sub_key).empty());
}

LONG RegQueryInfoKeyW(HKEY key, char16_t* class_name, DWORD* class_count, DWORD* reserved,
                      DWORD* sub_keys, DWORD* longest_sub_key, DWORD* longest_class, DWORD* values,
                      DWORD* longest_value_name, DWORD* longest_data, DWORD* security_size,
                      FILETIME* last_write) {
    if (reserved != nullptr) return kInvalid;
    KeyReference base;
    tvutil2::KeyInfo info;
    auto error = resolve_key(key, KEY_QUERY_VALUE, base);
    if (error == kSuccess) error = base.hive->info(base.id, info);
    if (error != kSuccess) return error;
    give_empty_class(class_name, class_count);
    give(sub_keys, info.sub_keys);
    give(longest_sub_key, info.longest_sub_key);
    give(longest_class, 0);
    give(values, info.values);
    give(longest_value_name, info.longest_value_name);
    give(longest_data, info.longest_data);
    give(security_size, 0);
    give_time(last_write, info.written);
    return kSuccess;
}

LONG RegFlushKey(HKEY key) {
    KeyReference base;
    const auto error = resolve_key(key, 0, base);
    return error != kSuccess ? error : base.hive->flush(base.id);
}

LONG RegNotifyChangeKeyValue(HKEY key, BOOL subtree, DWORD filter, HANDLE event,
                             BOOL asynchronous) {
    constexpr DWORD kFilters = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET;
    if ((filter & kFilters) == 0 || (filter & ~kFilters) != 0) return kInvalid;
    if (asynchronous != 0) {
        if (event == nullptr) return kInvalid;
        if (!is_event(event)) return static_cast<LONG>(ERROR_INVALID_HANDLE);
    }
    std::shared_ptr<tvutil2::Watch> watch;
    tvutil2::Hive* hive = nullptr;
    {
        // Not held while waiting: a handle that is closed then must be able to end.
        KeyReference base;
        auto error = resolve_key(key, KEY_NOTIFY, base);
        if (error == kSuccess) {
            error = make_watch(base, subtree, filter, asynchronous != 0 ? event : nullptr, watch);
        }
        if (error != kSuccess) return error;
        hive = base.hive;
        hive->hub().add(watch);
        if (base.object && base.object->is_closed) hive->hub().release(base.object.get());
    }
    return asynchronous != 0 ? kSuccess : hive->hub().wait(watch);
}
