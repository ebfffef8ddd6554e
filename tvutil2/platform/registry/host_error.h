// What a failed call of the host is to those who asked the registry.
#pragma once

#include "tvutil2/platform/base/last_error.h"

#include <cerrno>

namespace tvutil2 {

/// The error number for `errno`; a file that may not grow further is a full disk.
inline LONG errno_error() {
    return static_cast<LONG>(errno == EFBIG ? ERROR_DISK_FULL : error_from_errno(errno));
}

}  // namespace tvutil2
