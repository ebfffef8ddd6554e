// The files of the log: their lines, the sweep, and how a line gets to the end of one.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <string>
#include <string_view>

namespace tvutil2 {

/// "[14:03:27.512] text" with its line end; "[DEB]" in front of the text of a debug line.
[[nodiscard]] TVUTIL_API std::u16string log_line(const SYSTEMTIME& time, std::u16string_view text,
                                                 bool is_debug);
/// "[2026-05-12 14:03:27.512] text" with its line end.
[[nodiscard]] TVUTIL_API std::u16string global_log_line(const SYSTEMTIME& time,
                                                        std::u16string_view text);

enum class LogWrite { not_opened, failed, done };

/// Appends a line to the common log. A piece of a line at its end, which a killed program left, is
/// taken away first.
TVUTIL_API LogWrite append_to_global_log(const char16_t* path, std::u16string_view line);

/// What a sweep does with a file, by its name's last three units without regard to case: "bak" is
/// deleted, "log" becomes "bak".
enum class Sweep { keep, remove, back_up };
[[nodiscard]] TVUTIL_API Sweep sweep_of(std::u16string_view name);

/// Sweeps the files of a folder. Folders stay, and so does a log whose backup's name is taken.
TVUTIL_API void sweep_logs(const char16_t* folder);

/// A text as it stands in the files.
[[nodiscard]] inline std::string_view bytes_of(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

}  // namespace tvutil2
