// The registry: a tree of keys with typed values, one hive for the user and one for the machine.
//
// Names are compared without regard to case (each unit by simple case mapping) and kept as they
// were written. The backslash separates keys in a sub-key name and can't be part of a key's name;
// a value's name may hold any unit. Sub keys and values are listed in the order of their
// upper-case names, by code unit, so that an index names the same entry until something changes.
//
// Every function gives an error code, ERROR_SUCCESS being 0, and leaves the thread's last error
// alone. All of them may be called from any thread, on one handle too. What a call has written is
// seen by every call that begins, in any process, after it returned. A process that is killed
// loses nothing that a returned call wrote, and leaves no half of what it was writing; a machine
// that loses power may lose the last moments before it, unless RegFlushKey was called.
//
// Errors that any function may give: ERROR_INVALID_HANDLE (a closed or foreign handle),
// ERROR_KEY_DELETED (the key behind the handle is gone), ERROR_ACCESS_DENIED (the handle wasn't
// opened with that right, or the hive can't be written by this process), ERROR_BUSY (another
// process kept the hive locked for five seconds), ERROR_REGISTRY_CORRUPT, ERROR_DISK_FULL,
// ERROR_WRITE_PROTECT, ERROR_CANTOPEN, ERROR_CANTREAD, ERROR_CANTWRITE and
// ERROR_NOT_ENOUGH_MEMORY. A hive that gives one of them is left as it is, never made anew.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/types.h"

struct SECURITY_ATTRIBUTES;

/// The roots. They are open at all times; closing one does nothing. The machine's hive is written
/// by the superuser only, except below TVUTIL_PROFILE.
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(std::uintptr_t{0x80000001});
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(std::uintptr_t{0x80000002});

/// What a handle may be used for.
inline constexpr DWORD KEY_QUERY_VALUE = 0x0001;
inline constexpr DWORD KEY_SET_VALUE = 0x0002;
inline constexpr DWORD KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr DWORD KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr DWORD KEY_NOTIFY = 0x0010;
inline constexpr DWORD KEY_READ = 0x20019;
inline constexpr DWORD KEY_WRITE = 0x20006;
inline constexpr DWORD KEY_ALL_ACCESS = 0xF003F;

/// What a value holds. Text is 16-bit, little endian; the final zero is part of the data only if
/// the writer counted it.
inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_DWORD_BIG_ENDIAN = 5;
inline constexpr DWORD REG_LINK = 6;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;

/// Whether RegCreateKeyExW made the key or found it.
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

/// What a notification waits for: a sub key made or deleted; a value made, changed or deleted.
inline constexpr DWORD REG_NOTIFY_CHANGE_NAME = 0x1;
inline constexpr DWORD REG_NOTIFY_CHANGE_LAST_SET = 0x4;

/// Limits, in units without a final zero (names), keys (depth) and bytes (data).
inline constexpr DWORD REG_MAX_KEY_NAME = 255;
inline constexpr DWORD REG_MAX_VALUE_NAME = 16383;
inline constexpr DWORD REG_MAX_DEPTH = 512;
inline constexpr DWORD REG_MAX_NEW_LEVELS = 32;
inline constexpr DWORD REG_MAX_VALUE_DATA = DWORD{64} << 20U;

/// Opens a key. Null or empty names `key` itself. `options` is 0. ERROR_FILE_NOT_FOUND when it
/// isn't there, ERROR_BAD_PATHNAME for a name with a leading backslash (repeated and trailing ones
/// are passed over), ERROR_INVALID_PARAMETER for a part that is too long. Rights to write are
/// refused at once where the hive can't be written.
TVUTIL_API LONG RegOpenKeyExW(HKEY key, const char16_t* sub_key, DWORD options, DWORD access,
                              HKEY* result);

/// Opens a key, making it and its missing parents first. Only what is made needs
/// KEY_CREATE_SUB_KEY of `key`. Class and security are not kept; `options` is 0 (keys last), other
/// options give ERROR_NOT_SUPPORTED. More than REG_MAX_NEW_LEVELS new keys in one call, or a key
/// deeper than REG_MAX_DEPTH, give ERROR_INVALID_PARAMETER. `disposition` may be null.
TVUTIL_API LONG RegCreateKeyExW(HKEY key, const char16_t* sub_key, DWORD reserved,
                                const char16_t* class_name, DWORD options, DWORD access,
                                const SECURITY_ATTRIBUTES* security, HKEY* result,
                                DWORD* disposition);

/// Gives a handle up. Waits for a change of it end, in whatever thread.
TVUTIL_API LONG RegCloseKey(HKEY key);

/// A value's type and data; a null or empty name is the key's unnamed value. `type` may be null.
/// With `data` null, `*size` (in bytes, may be null) becomes the size of the data. With `data`,
/// `*size` is its room going in and the size of the data coming out; too little room gives
/// ERROR_MORE_DATA and leaves `data` alone. Text without a final zero gets one, uncounted, where
/// there is room for it. ERROR_FILE_NOT_FOUND when there is no such value.
TVUTIL_API LONG RegQueryValueExW(HKEY key, const char16_t* name, DWORD* reserved, DWORD* type,
                                 BYTE* data, DWORD* size);

/// Makes or replaces a value. ERROR_INVALID_PARAMETER for a name above REG_MAX_VALUE_NAME or null
/// data of some size, ERROR_NOT_ENOUGH_MEMORY for data above REG_MAX_VALUE_DATA.
TVUTIL_API LONG RegSetValueExW(HKEY key, const char16_t* name, DWORD reserved, DWORD type,
                               const BYTE* data, DWORD size);

TVUTIL_API LONG RegDeleteValueW(HKEY key, const char16_t* name);

/// Makes or replaces a value of a sub key, which is made if it is missing; null or empty names
/// `key` itself. Errors as with RegCreateKeyExW and RegSetValueExW.
TVUTIL_API LONG RegSetKeyValueW(HKEY key, const char16_t* sub_key, const char16_t* name, DWORD type,
                                const void* data, DWORD size);
/// Deletes a value of a sub key.
TVUTIL_API LONG RegDeleteKeyValueW(HKEY key, const char16_t* sub_key, const char16_t* name);

/// The name of the sub key at `index`; `count` is the room in units, the zero included.
/// ERROR_NO_MORE_ITEMS past the last, ERROR_MORE_DATA when the name doesn't fit.
TVUTIL_API LONG RegEnumKeyW(HKEY key, DWORD index, char16_t* name, DWORD count);

/// The same; `*count` is the room going in and the units without the zero coming out. The class
/// is always empty. `class_name`, `class_count` and `last_write` may be null.
TVUTIL_API LONG RegEnumKeyExW(HKEY key, DWORD index, char16_t* name, DWORD* count, DWORD* reserved,
                              char16_t* class_name, DWORD* class_count, FILETIME* last_write);

/// Name, type and data of the value at `index`; sizes as with RegEnumKeyExW (name) and
/// RegQueryValueExW (data). `type`, `data` and `size` may be null.
TVUTIL_API LONG RegEnumValueW(HKEY key, DWORD index, char16_t* name, DWORD* count, DWORD* reserved,
                              DWORD* type, BYTE* data, DWORD* size);

/// Gives a sub key, with all below it, another name: one part, not a path. Its handles stay what
/// they are. A name that is only spelled otherwise is a name as well; ERROR_ALREADY_EXISTS when
/// another key has it, ERROR_ACCESS_DENIED for a root. Needs KEY_CREATE_SUB_KEY.
TVUTIL_API LONG RegRenameKey(HKEY key, const char16_t* sub_key, const char16_t* new_name);

/// Deletes a key without sub keys; ERROR_ACCESS_DENIED when it has some or is a root. Handles to
/// it stay open and give ERROR_KEY_DELETED. ERROR_INVALID_PARAMETER for a null name.
TVUTIL_API LONG RegDeleteKeyW(HKEY key, const char16_t* sub_key);

/// Deletes a key and all below it, as a whole or not at all.
TVUTIL_API LONG SHDeleteKeyW(HKEY key, const char16_t* sub_key);

/// The same; with a null or empty name, empties `key` but keeps it.
TVUTIL_API LONG RegDeleteTreeW(HKEY key, const char16_t* sub_key);

/// Counts and sizes of a key; any pointer may be null. Longest names are in units without a zero,
/// the longest data is in bytes. The class is empty and the security descriptor has no size.
TVUTIL_API LONG RegQueryInfoKeyW(HKEY key, char16_t* class_name, DWORD* class_count,
                                 DWORD* reserved, DWORD* sub_keys, DWORD* longest_sub_key,
                                 DWORD* longest_class, DWORD* values, DWORD* longest_value_name,
                                 DWORD* longest_data, DWORD* security_size, FILETIME* last_write);

/// Returns when all that was written to the hive before has reached the disk.
TVUTIL_API LONG RegFlushKey(HKEY key);

/// Waits for a change, of the key alone or with all below it; `filter` is one or both of the
/// REG_NOTIFY_ bits. The first call on a handle begins to watch; what changes between two calls
/// with the same handle and `subtree` is reported by the second at once.
/// With `asynchronous` zero the call returns at the change, when the key is deleted, or when the
/// handle is closed. Otherwise it returns at once and `event` is set, once, at the same moments;
/// null gives ERROR_INVALID_PARAMETER. The first watch in a process starts a thread that lives as
/// long as the process.
TVUTIL_API LONG RegNotifyChangeKeyValue(HKEY key, BOOL subtree, DWORD filter, HANDLE event,
                                        BOOL asynchronous);

namespace tvutil2 {

/// Whether two open keys are one key, whatever the names were that they were opened by.
[[nodiscard]] TVUTIL_API bool is_same_key(HKEY one, HKEY other);

}  // namespace tvutil2
