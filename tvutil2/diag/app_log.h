// A plain-text diary of each run of a product, and one that all products and installers share.
//
// A run's file is "<folder>\applog\<product>_<yy_mm_dd_hh_mm_ss>_<ms>.log": UTF-16, little endian,
// with a byte-order mark, lines ending in CR and LF. It begins with a header (the path, the start,
// module and system facts), and then has one line a call:
//
//     [14:03:27.512] text          information
//     [14:03:27.518] [DEB] text    debug
//
// The common file is "Common\Log\GlobalLog.txt" in the user data folder: the same encoding, no mark
// and no header, and lines that begin with the date. Nothing prunes it.
//
// A line costs one open, one write at the end and one close, and is with the operating system when
// the call returns. Nothing stays open. While another program has the file open for writing, the
// open fails and the line is lost: the file's sharing mode is the only exclusion. Nothing here
// shows a message, reports a failure beyond its result, or changes the last error.
//
// All functions are safe from any thread. A line that is written while another thread starts a new
// file goes to the one or the other.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"

#include <atomic>

namespace tvutil2 {

/// 0: nothing goes to the run's file. Else information lines do, and above 1 debug lines, too. Set
/// by _InitApplicationLog and _SetWriteAppLog alone.
TVUTIL_API extern std::atomic<int> g_log_mode;

[[nodiscard]] inline int log_mode() {
    return g_log_mode.load(std::memory_order_relaxed);
}

/// Full path of the run's file; empty until the first one was started. Good for the life of the
/// process.
[[nodiscard]] TVUTIL_API const CString& log_path();

/// A formatted message ends after this many units.
inline constexpr std::size_t kLongestFormattedMessage = 4095;

inline constexpr int kInformationLine = 1;
inline constexpr int kDebugLine = 2;

/// The text itself for format 0, whatever percent signs it holds; else the printf-style text over
/// the arguments, cut after kLongestFormattedMessage. Null is empty.
TVUTIL_API void write_log(int type, int format, const char16_t* text, FormatArguments arguments);
/// The same for the common log; 1 when the whole line is in the file, else 0.
TVUTIL_API int write_global_log(int format, const char16_t* text, FormatArguments arguments);

}  // namespace tvutil2

/// Starts a run's file, with its header; an earlier one is left alone. Nothing happens for mode 0.
/// With `sweep` all logs of the folder, of whatever product, become backups (".bak") first, and
/// those that were backups are deleted: a log outlives one further start. Two starts never share a
/// file, also in the same millisecond. When the file can't be opened, mode and path are set all the
/// same, and the first line makes it, without a header. Null texts are empty.
TVUTIL_API void _InitApplicationLog(const char16_t* folder, const char16_t* product, int mode,
                                    int sweep);

/// Stores the mode. A mode above 0 starts a file, without a sweep, if there never was one.
TVUTIL_API void _SetWriteAppLog(int mode, const char16_t* folder, const char16_t* product);

/// Writes one line, as debug line for type 2. 1 when the file could be opened, whatever became of
/// the write; 0 otherwise, with mode 0, and before the first file.
TVUTIL_API int _WriteApplicationLog(const char16_t* text, int type);
/// Appends bytes as they are, as a whole or not at all.
TVUTIL_API int _WriteApplicationLog(const unsigned char* data, unsigned int length);

/// An information line; see write_log for `format`. With mode 0 this costs one comparison.
template <class... Arguments>
void __WriteInfoAppLog(int format, const char16_t* text, const Arguments&... arguments) {
    if (tvutil2::log_mode() == 0) return;
    const tvutil2::FormatArgument list[] = {arguments..., nullptr};
    tvutil2::write_log(tvutil2::kInformationLine, format, text, {list, sizeof...(arguments)});
}

/// A debug line, with a mode above 1.
template <class... Arguments>
void __WriteDebugAppLog(int format, const char16_t* text, const Arguments&... arguments) {
    if (tvutil2::log_mode() <= 1) return;
    const tvutil2::FormatArgument list[] = {arguments..., nullptr};
    tvutil2::write_log(tvutil2::kDebugLine, format, text, {list, sizeof...(arguments)});
}

/// A line of the common log, whatever the mode.
template <class... Arguments>
void __WriteGlobalAppLog(int format, const char16_t* text, const Arguments&... arguments) {
    const tvutil2::FormatArgument list[] = {arguments..., nullptr};
    tvutil2::write_global_log(format, text, {list, sizeof...(arguments)});
}

/// The same for installers: the text as it is.
extern "C" TVUTIL_API void TvInstallWriteGlobalAppLog(const char16_t* text);

/// Today's local date, "20260512".
TVUTIL_API CString GetDateString();
