// Windows of other processes of the same user.
#pragma once

#include "tvutil2/platform/window/listing.h"
#include "tvutil2/platform/window/window_types.h"

#include <optional>

namespace tvutil2 {

/// Whether a handle can only be a window of another process.
[[nodiscard]] bool is_remote(HWND window);
/// What is known of it; nothing with ERROR_INVALID_WINDOW_HANDLE when it isn't there.
[[nodiscard]] std::optional<ListedWindow> find_remote(HWND window);
/// All of them, process by process.
[[nodiscard]] std::vector<ListedWindow> remote_windows();

/// As PostMessageW and SendNotifyMessageW (`is_notice`). A last error other than ERROR_SUCCESS.
[[nodiscard]] DWORD post_remote(HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                                bool is_notice);
/// As SendMessageTimeoutW. False with the last error.
bool send_remote(HWND window, UINT message, WPARAM wparam, LPARAM lparam, bool is_deaf,
                 DWORD milliseconds, LRESULT& result);

}  // namespace tvutil2
