// Programs that are started and waited for.
//
// The handle of a process is waited for like any other object, and is signalled once the program
// has ended. A started program is a child of this process: code of the host's that waits for every
// child (waitpid with -1) takes the exit code away, and the program counts as ended with code
// 0xFFFFFFFF. Closing the handle doesn't touch the program; none leaves a zombie. In a child after
// a fork a handle never becomes signalled, for the program is the parent's child.
#pragma once

#include "tvutil2/platform/objects/objects.h"

inline constexpr DWORD DETACHED_PROCESS = 0x8;
inline constexpr DWORD NORMAL_PRIORITY_CLASS = 0x20;
inline constexpr DWORD CREATE_NO_WINDOW = 0x08000000;

/// For the started program's window, of which the host's programs decide for themselves.
struct STARTUPINFOW {
    DWORD cb;
    char16_t* lpReserved;
    char16_t* lpDesktop;
    char16_t* lpTitle;
    DWORD dwX, dwY, dwXSize, dwYSize, dwXCountChars, dwYCountChars, dwFillAttribute, dwFlags;
    WORD wShowWindow, cbReserved2;
    BYTE* lpReserved2;
    HANDLE hStdInput, hStdOutput, hStdError;
};

/// Both handles stand for the process, and both are the caller's to close.
struct PROCESS_INFORMATION {
    HANDLE hProcess, hThread;
    DWORD dwProcessId, dwThreadId;
};

/// Starts a program. `application` is its path, taken as it stands. When it is null the command
/// line names it: in quotes, or up to the first blank, and when there is no such program, up to the
/// next one, and so on. A name without an extension is looked for with ".exe" first and then as it
/// stands; one without a folder, in the running program's folder, the current one and those of
/// PATH, in this order, and never elsewhere. The program gets that name as its own and the rest of
/// the line split by split_command_line(); no shell reads it.
///
/// With `inherit` it has the caller's standard files, else those as ShellExecuteW passes them on;
/// other open files never. It stays in the caller's session unless DETACHED_PROCESS or
/// CREATE_NO_WINDOW is given. Attributes and start-up information are passed over; the command line
/// isn't written to.
///
/// 0 with ERROR_INVALID_PARAMETER (no result or no name, an environment, an unknown flag, text that
/// isn't UTF-16), ERROR_FILENAME_EXCED_RANGE (a line of 32768 units or more), ERROR_FILE_NOT_FOUND,
/// ERROR_PATH_NOT_FOUND, ERROR_DIRECTORY (`folder` is none), ERROR_ACCESS_DENIED,
/// ERROR_BAD_EXE_FORMAT, ERROR_SHARING_VIOLATION (the file is being written),
/// ERROR_NOT_ENOUGH_MEMORY. Safe from any thread.
TVUTIL_API BOOL CreateProcessW(const char16_t* application, char16_t* command_line,
                               SECURITY_ATTRIBUTES* process_attributes,
                               SECURITY_ATTRIBUTES* thread_attributes, BOOL inherit, DWORD flags,
                               void* environment, const char16_t* folder, STARTUPINFOW* start_up,
                               PROCESS_INFORMATION* information);

/// The program's exit code, 128 and the number of the signal that ended it, or STILL_ACTIVE. 0 with
/// ERROR_INVALID_HANDLE.
TVUTIL_API BOOL GetExitCodeProcess(HANDLE process, DWORD* code);
/// The host's number of a process; 0 with ERROR_INVALID_HANDLE.
TVUTIL_API DWORD GetProcessId(HANDLE process);

namespace tvutil2 {

struct Program;

/// Starts a program and enters a handle for it. Null with `error` as its errno, or with 0 and the
/// last error when there can be no handle or nobody to wait; nothing is started then.
[[nodiscard]] HANDLE start_process(const Program& program, int& error);

}  // namespace tvutil2
