// Copying, moving, renaming and deleting as the shell does it: lists of names, whole trees, trash.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <cstddef>

inline constexpr UINT FO_MOVE = 1;
inline constexpr UINT FO_COPY = 2;
inline constexpr UINT FO_DELETE = 3;
inline constexpr UINT FO_RENAME = 4;

using FILEOP_FLAGS = WORD;
inline constexpr FILEOP_FLAGS FOF_MULTIDESTFILES = 0x0001;
inline constexpr FILEOP_FLAGS FOF_SILENT = 0x0004;
inline constexpr FILEOP_FLAGS FOF_NOCONFIRMATION = 0x0010;
inline constexpr FILEOP_FLAGS FOF_ALLOWUNDO = 0x0040;
inline constexpr FILEOP_FLAGS FOF_NOCONFIRMMKDIR = 0x0200;
inline constexpr FILEOP_FLAGS FOF_NOERRORUI = 0x0400;

/// Result of an operation of which something was declined.
inline constexpr int DE_OPCANCELLED = 0x75;

struct SHFILEOPSTRUCTW {
    HWND hwnd;              ///< owner of a question, or null
    UINT wFunc;             ///< FO_ value
    const char16_t* pFrom;  ///< names, each with its zero, one more zero at the end
    const char16_t* pTo;    ///< the same; one name unless FOF_MULTIDESTFILES
    FILEOP_FLAGS fFlags;
    BOOL fAnyOperationsAborted;  ///< out: something was declined
    void* hNameMappings;         ///< out: always null
    const char16_t* lpszProgressTitle;
};

/// Carries the operation out. 0, or an error code: of the first name that failed (ERROR_ value), or
/// DE_OPCANCELLED when nothing failed but something was declined. The names behind a failed one
/// are still worked on. Null or empty `pFrom`, an unknown operation and lists that don't pair give
/// ERROR_INVALID_PARAMETER.
///
/// The last part of a source may hold wildcards, which take in all but "." and ".."; no match is
/// ERROR_FILE_NOT_FOUND. A name that is there with the wildcards' own characters in it is that name
/// alone. Symbolic links are moved, copied and deleted as what they are: nothing behind them is
/// touched. The root of a drive is refused, and its content too unless it is copied
/// (ERROR_ACCESS_DENIED). A separator behind what is no folder is ERROR_INVALID_NAME.
///
/// - FO_MOVE, FO_COPY: into the folder `pTo`, or to the name `pTo` when it doesn't exist and there
///   is one source without wildcards; with FOF_MULTIDESTFILES each source to the name at its place
///   in `pTo`. Missing folders of the target are made. A folder that meets a folder is merged with
///   it; a file that meets a file is a question. A source that lies on or above its target is
///   ERROR_SHARING_VIOLATION. Between file systems a move copies all, then deletes.
/// - FO_RENAME: one source, one target in any folder. Nothing is overwritten
///   (ERROR_ALREADY_EXISTS).
/// - FO_DELETE: with FOF_ALLOWUNDO into the trash: the freedesktop trash of the person, or "Trash"
///   below TVUTIL_PROFILE, from where a file manager can restore it. What lies on another file
///   system is copied there and then deleted. Without it, for good.
///
/// Questions go through MessageBoxW and are not asked with FOF_NOCONFIRMATION, which answers Yes.
/// Where there is nobody to ask, the answer is No. Failures are never shown, whether FOF_NOERRORUI
/// is given or not, and there is no progress window: the result is the report.
TVUTIL_API int SHFileOperationW(SHFILEOPSTRUCTW* operation);

namespace tvutil2 {

/// Is told how far an operation is, on the thread that carries it out. May not throw.
class ShellObserver {
  public:
    virtual ~ShellObserver() = default;
    /// Behind each source, whatever became of it: that many of all are worked on.
    virtual void advanced(std::size_t done, std::size_t all) = 0;
};

/// SHFileOperationW for somebody who watches; a null `observer` is nobody.
///
/// With `Sources::names` the sources hold no wildcards: a name that was found on the disk means
/// itself, also if it is gone by now.
enum class Sources { patterns, names };
TVUTIL_API int watched_shell_operation(SHFILEOPSTRUCTW* operation, ShellObserver* observer,
                                       Sources sources = Sources::patterns);

}  // namespace tvutil2
