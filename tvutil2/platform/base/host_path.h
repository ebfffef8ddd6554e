// From the platform's paths to the host's and back.
//
// "C:\" is "/". Other drives exist only where TVUTIL_DRIVES maps them ("D=/mnt/data;E=/srv"). Both
// separators are understood, "\x" is rooted at "/", and a relative path hangs on the current
// folder. "." and ".." are taken away from the text, before any link is followed. A "\\?\" in front
// of a drive is passed over; other paths that begin with two separators name a network host and
// have no place here.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

/// How far a path is looked up on the disk.
enum class Lookup {
    all,
    likely_new,       ///< the same answer, sooner for a name that is about to be made
    last_as_written,  ///< all but the last part: for a rename that changes nothing but case
    none,             ///< as written: what is there under that path is what a look-up would find
};

/// The absolute host path that a platform path names. What exists is found exactly first and
/// without regard to case second, part by part; parts that don't exist are taken as written.
/// Nothing, with the last error set, for an empty path (ERROR_PATH_NOT_FOUND), text that isn't
/// valid UTF-16 or holds a NUL (ERROR_INVALID_NAME), a drive that isn't mapped or a relative path
/// in a current folder that is gone (ERROR_PATH_NOT_FOUND), or a network path (ERROR_BAD_NETPATH).
[[nodiscard]] TVUTIL_API std::optional<std::string> host_path(std::u16string_view path,
                                                              Lookup lookup = Lookup::all);

/// The platform path of an absolute host path, below the mapped drive that covers most of it, else
/// below "C:". Nothing when it isn't valid UTF-8 or a part of it holds a backslash.
[[nodiscard]] TVUTIL_API std::optional<std::u16string> platform_path(std::string_view host);

/// The host folders that are roots of drives, without a trailing slash; "/" is "" and comes first.
[[nodiscard]] std::vector<std::string> drive_roots();

/// Whether the text ends in a separator, of whatever kind.
[[nodiscard]] bool ends_in_separator(std::u16string_view path);

/// A host folder's entry as the platform names it; nothing for a name that a search passes over.
[[nodiscard]] std::optional<std::u16string> platform_name(std::string_view host_name);

}  // namespace tvutil2
