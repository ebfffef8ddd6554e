// What the host's records of changes are to those who ask for FILE_NOTIFY_CHANGE_ flags.
#pragma once

#include "tvutil2/platform/watch/change_filter.h"

#include <sys/inotify.h>

#include <cstdint>

namespace tvutil2 {

constexpr DWORD name_kind(bool is_folder) {
    return is_folder ? FILE_NOTIFY_CHANGE_DIR_NAME : FILE_NOTIFY_CHANGE_FILE_NAME;
}

// The host tells of attributes, owners and times in one: who asked for one of them hears of all.
constexpr DWORD kAttributeKinds =
    FILE_NOTIFY_CHANGE_ATTRIBUTES | FILE_NOTIFY_CHANGE_SECURITY | FILE_NOTIFY_CHANGE_LAST_WRITE;
constexpr DWORD kWriteKinds = FILE_NOTIFY_CHANGE_SIZE | FILE_NOTIFY_CHANGE_LAST_WRITE;

constexpr DWORD content_kinds(std::uint32_t mask) {
    DWORD kinds = 0;
    if ((mask & IN_MODIFY) != 0) kinds |= kWriteKinds;
    if ((mask & IN_ATTRIB) != 0) kinds |= kAttributeKinds;
    if ((mask & IN_ACCESS) != 0) kinds |= FILE_NOTIFY_CHANGE_LAST_ACCESS;
    return kinds;
}

}  // namespace tvutil2
