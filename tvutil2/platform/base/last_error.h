// The platform's error codes, the last error of a thread, and their relation to errno.
//
// Inside the ground floor there is one way to fail: a result that says so, and a last error that
// says why.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

inline constexpr DWORD NO_ERROR = 0;
inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_INVALID_FUNCTION = 1;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_BAD_FORMAT = 11;
inline constexpr DWORD ERROR_INVALID_DATA = 13;
inline constexpr DWORD ERROR_OUTOFMEMORY = 14;
inline constexpr DWORD ERROR_INVALID_DRIVE = 15;
inline constexpr DWORD ERROR_CURRENT_DIRECTORY = 16;
inline constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_LOCK_VIOLATION = 33;
inline constexpr DWORD ERROR_HANDLE_EOF = 38;
inline constexpr DWORD ERROR_HANDLE_DISK_FULL = 39;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_BAD_NETPATH = 53;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_CANNOT_MAKE = 82;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_BROKEN_PIPE = 109;
inline constexpr DWORD ERROR_BUFFER_OVERFLOW = 111;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_CALL_NOT_IMPLEMENTED = 120;
inline constexpr DWORD ERROR_NOT_LOCKED = 158;
inline constexpr DWORD ERROR_SEM_TIMEOUT = 121;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
inline constexpr DWORD ERROR_BAD_PATHNAME = 161;
inline constexpr DWORD ERROR_BUSY = 170;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;
inline constexpr DWORD ERROR_ENVVAR_NOT_FOUND = 203;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_FILE_TOO_LARGE = 223;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD ERROR_NO_MORE_ITEMS = 259;
inline constexpr DWORD ERROR_DIRECTORY = 267;
inline constexpr DWORD ERROR_NOT_OWNER = 288;
inline constexpr DWORD ERROR_TOO_MANY_POSTS = 298;
inline constexpr DWORD ERROR_INVALID_ADDRESS = 487;
inline constexpr DWORD ERROR_STACK_OVERFLOW = 1001;
inline constexpr DWORD ERROR_OPERATION_ABORTED = 995;
inline constexpr DWORD ERROR_INVALID_FLAGS = 1004;
inline constexpr DWORD ERROR_FILE_INVALID = 1006;
inline constexpr DWORD ERROR_BADDB = 1009;
inline constexpr DWORD ERROR_BADKEY = 1010;
inline constexpr DWORD ERROR_CANTOPEN = 1011;
inline constexpr DWORD ERROR_CANTREAD = 1012;
inline constexpr DWORD ERROR_CANTWRITE = 1013;
inline constexpr DWORD ERROR_REGISTRY_CORRUPT = 1015;
inline constexpr DWORD ERROR_REGISTRY_IO_FAILED = 1016;
inline constexpr DWORD ERROR_KEY_DELETED = 1018;
inline constexpr DWORD ERROR_KEY_HAS_CHILDREN = 1020;
inline constexpr DWORD ERROR_CHILD_MUST_BE_VOLATILE = 1021;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr DWORD ERROR_IO_DEVICE = 1117;
inline constexpr DWORD ERROR_MAPPED_ALIGNMENT = 1132;
inline constexpr DWORD ERROR_NO_ASSOCIATION = 1155;
inline constexpr DWORD ERROR_NO_MORE_USER_HANDLES = 1158;
inline constexpr DWORD ERROR_MESSAGE_SYNC_ONLY = 1159;
inline constexpr DWORD ERROR_BAD_USERNAME = 2202;
inline constexpr DWORD ERROR_NONE_MAPPED = 1332;
inline constexpr DWORD ERROR_INVALID_SID = 1337;
inline constexpr DWORD ERROR_NOT_FOUND = 1168;
inline constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr DWORD ERROR_INVALID_MENU_HANDLE = 1401;
inline constexpr DWORD ERROR_INVALID_HOOK_HANDLE = 1404;
inline constexpr DWORD ERROR_TLW_WITH_WSCHILD = 1406;
inline constexpr DWORD ERROR_CANNOT_FIND_WND_CLASS = 1407;
inline constexpr DWORD ERROR_WINDOW_OF_OTHER_THREAD = 1408;
inline constexpr DWORD ERROR_CLASS_ALREADY_EXISTS = 1410;
inline constexpr DWORD ERROR_CLASS_DOES_NOT_EXIST = 1411;
inline constexpr DWORD ERROR_CLASS_HAS_WINDOWS = 1412;
inline constexpr DWORD ERROR_INVALID_INDEX = 1413;
inline constexpr DWORD ERROR_INVALID_HOOK_FILTER = 1426;
inline constexpr DWORD ERROR_INVALID_MSGBOX_STYLE = 1438;
inline constexpr DWORD ERROR_INVALID_THREAD_ID = 1444;
inline constexpr DWORD ERROR_POPUP_ALREADY_ACTIVE = 1446;
inline constexpr DWORD ERROR_NO_SYSTEM_RESOURCES = 1450;
inline constexpr DWORD ERROR_MENU_ITEM_NOT_FOUND = 1456;
inline constexpr DWORD ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION = 1459;
inline constexpr DWORD ERROR_TIMEOUT = 1460;
inline constexpr DWORD ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
inline constexpr DWORD ERROR_RESOURCE_TYPE_NOT_FOUND = 1813;
inline constexpr DWORD ERROR_RESOURCE_NAME_NOT_FOUND = 1814;
inline constexpr DWORD ERROR_RESOURCE_LANG_NOT_FOUND = 1815;
inline constexpr DWORD ERROR_NOT_ENOUGH_QUOTA = 1816;

inline constexpr DWORD ERROR_INTERNET_TIMEOUT = 12002;
inline constexpr DWORD ERROR_INTERNET_INVALID_URL = 12005;
inline constexpr DWORD ERROR_INTERNET_UNRECOGNIZED_SCHEME = 12006;
inline constexpr DWORD ERROR_INTERNET_NAME_NOT_RESOLVED = 12007;
inline constexpr DWORD ERROR_INTERNET_INVALID_OPTION = 12009;
inline constexpr DWORD ERROR_INTERNET_INCORRECT_HANDLE_TYPE = 12018;
inline constexpr DWORD ERROR_INTERNET_INCORRECT_HANDLE_STATE = 12019;
inline constexpr DWORD ERROR_INTERNET_CANNOT_CONNECT = 12029;
inline constexpr DWORD ERROR_INTERNET_CONNECTION_ABORTED = 12030;
inline constexpr DWORD ERROR_INTERNET_SEC_CERT_DATE_INVALID = 12037;
inline constexpr DWORD ERROR_INTERNET_SEC_CERT_CN_INVALID = 12038;
inline constexpr DWORD ERROR_INTERNET_HTTPS_TO_HTTP_ON_REDIR = 12040;
inline constexpr DWORD ERROR_INTERNET_INVALID_CA = 12045;
inline constexpr DWORD ERROR_HTTP_HEADER_NOT_FOUND = 12150;
inline constexpr DWORD ERROR_HTTP_INVALID_SERVER_RESPONSE = 12152;
inline constexpr DWORD ERROR_HTTP_HEADER_ALREADY_EXISTS = 12155;
inline constexpr DWORD ERROR_HTTP_REDIRECT_FAILED = 12156;
inline constexpr DWORD ERROR_INTERNET_SECURITY_CHANNEL_ERROR = 12157;

/// The last error of the calling thread. A call that succeeds leaves it alone unless it says
/// otherwise.
TVUTIL_API DWORD GetLastError();
TVUTIL_API void SetLastError(DWORD error);

namespace tvutil2 {

/// The platform's name for a host error number.
[[nodiscard]] TVUTIL_API DWORD error_from_errno(int error);

/// Sets the last error from errno; always false, so that a failing path is one line.
bool fail_with_errno();

/// Sets the last error; always false.
inline bool fail_with(DWORD error) {
    SetLastError(error);
    return false;
}

}  // namespace tvutil2
