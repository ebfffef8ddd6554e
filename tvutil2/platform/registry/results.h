// The results that most calls of the registry have.
#pragma once

#include "tvutil2/platform/base/last_error.h"

namespace tvutil2 {

inline constexpr auto kSuccess = static_cast<LONG>(ERROR_SUCCESS);
inline constexpr auto kNotFound = static_cast<LONG>(ERROR_FILE_NOT_FOUND);
inline constexpr auto kDeleted = static_cast<LONG>(ERROR_KEY_DELETED);
inline constexpr auto kNoMore = static_cast<LONG>(ERROR_NO_MORE_ITEMS);
inline constexpr auto kDenied = static_cast<LONG>(ERROR_ACCESS_DENIED);
inline constexpr auto kCorrupt = static_cast<LONG>(ERROR_REGISTRY_CORRUPT);

}  // namespace tvutil2
