// What a watch of a folder can ask for, and what it can be told.
#pragma once

#include "tvutil2/platform/base/types.h"

inline constexpr DWORD FILE_NOTIFY_CHANGE_FILE_NAME = 0x001;
inline constexpr DWORD FILE_NOTIFY_CHANGE_DIR_NAME = 0x002;
inline constexpr DWORD FILE_NOTIFY_CHANGE_ATTRIBUTES = 0x004;
inline constexpr DWORD FILE_NOTIFY_CHANGE_SIZE = 0x008;
inline constexpr DWORD FILE_NOTIFY_CHANGE_LAST_WRITE = 0x010;
inline constexpr DWORD FILE_NOTIFY_CHANGE_LAST_ACCESS = 0x020;
inline constexpr DWORD FILE_NOTIFY_CHANGE_CREATION = 0x040;
inline constexpr DWORD FILE_NOTIFY_CHANGE_SECURITY = 0x100;

inline constexpr DWORD FILE_ACTION_ADDED = 1;
inline constexpr DWORD FILE_ACTION_REMOVED = 2;
inline constexpr DWORD FILE_ACTION_MODIFIED = 3;
inline constexpr DWORD FILE_ACTION_RENAMED_OLD_NAME = 4;
inline constexpr DWORD FILE_ACTION_RENAMED_NEW_NAME = 5;

namespace tvutil2 {

/// All flags of a filter.
inline constexpr DWORD kEveryChange = 0x17F;

/// A filter asks for something, and for nothing unknown.
[[nodiscard]] constexpr bool is_change_filter(DWORD filter) {
    return filter != 0 && (filter & ~kEveryChange) == 0;
}

}  // namespace tvutil2
