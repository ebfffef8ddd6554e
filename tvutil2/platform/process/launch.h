// Start of another program or of the program for a document.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/show_commands.h"
#include "tvutil2/platform/base/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Results of ShellExecuteW, all of them below 33.
inline constexpr int SE_ERR_FNF = 2;  ///< no such file
inline constexpr int SE_ERR_PNF = 3;  ///< no such folder
inline constexpr int SE_ERR_ACCESSDENIED = 5;
inline constexpr int SE_ERR_OOM = 8;          ///< no memory, or arguments beyond the host's limit
inline constexpr int SE_ERR_BAD_FORMAT = 11;  ///< no program of this machine
inline constexpr int SE_ERR_SHARE = 26;       ///< the file is being written
inline constexpr int SE_ERR_NOASSOC = 31;     ///< nothing opens such a document

/// Starts the executable `file` with a text of arguments, in `folder` or, when that is null, in the
/// current one. The started program gets the text split by split_command_line(); no shell reads
/// it. A file that isn't executable is handed to the desktop's opener (xdg-open), if there is one,
/// and so is a web address ("http://" or "https://", in any case, and more behind it).
/// `verb` is null, empty or "open". `owner` and `show` are for the started program's window, of
/// which the host's programs decide for themselves.
///
/// Above 32 when the program has started, else a SE_ERR_ code, with the last error that it stands
/// for. The program belongs to nobody: it has a session of its own, the default signal actions and
/// none of the caller's open files but standard output and error, and those only if they are no
/// pipes. It isn't waited for and leaves no zombie. Safe from any thread.
TVUTIL_API HINSTANCE ShellExecuteW(HWND owner, const char16_t* verb, const char16_t* file,
                                   const char16_t* parameters, const char16_t* folder, int show);

/// Asks ShellExecuteExW for the handle of the process.
inline constexpr DWORD SEE_MASK_NOCLOSEPROCESS = 0x40;

struct SHELLEXECUTEINFOW {
    DWORD cbSize;
    DWORD fMask;
    HWND hwnd;
    const char16_t* lpVerb;
    const char16_t* lpFile;
    const char16_t* lpParameters;
    const char16_t* lpDirectory;
    int nShow;
    HINSTANCE hInstApp;  ///< out: what ShellExecuteW would have given
    HANDLE hProcess;     ///< out: the caller's to close; null unless asked for, and for a document
};

/// ShellExecuteW with its arguments in a structure; other bits of the mask are passed over. A
/// program whose handle is asked for is this process's child (processes.h), in a session of its
/// own.
TVUTIL_API BOOL ShellExecuteExW(SHELLEXECUTEINFOW* info);

namespace tvutil2 {

/// The arguments in a command line, by the rules of the platform's C run-time library: blanks and
/// tabs part arguments; a pair of quotes keeps them together; 2n backslashes before a quote are n
/// backslashes and the quote counts; one backslash more makes the quote a plain character; two
/// quotes inside a quoted part are one plain quote; backslashes elsewhere are themselves. The
/// text holds arguments only: the program's name isn't part of it.
[[nodiscard]] TVUTIL_API std::vector<std::u16string> split_command_line(std::u16string_view text);

/// What stands behind "http://" or "https://", in any case; empty for all other text.
[[nodiscard]] TVUTIL_API std::u16string_view web_address_rest(std::u16string_view text);

/// The way back: a text that is split into this one argument, whatever it holds. One without
/// blanks, tabs and quotes is itself. A zero would end the command line, so nothing can carry it.
[[nodiscard]] TVUTIL_API std::u16string quoted_argument(std::u16string_view argument);

}  // namespace tvutil2
