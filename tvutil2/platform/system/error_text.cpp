#include "tvutil2/platform/system/error_text.h"

#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/notify/notify_errors.h"
#include "tvutil2/platform/process/account.h"
#include "tvutil2/platform/process/package.h"
#include "tvutil2/platform/system/os_version.h"
#include "tvutil2/platform/trust/trust_errors.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

namespace tvutil2 {
namespace {

struct ErrorText {
    DWORD error;
    std::u16string_view text;
};

// In the order of their numbers.
constexpr ErrorText kTexts[] = {
    {ERROR_SUCCESS, u"The operation is done."},
    {ERROR_INVALID_FUNCTION, u"There is no such function here."},
    {ERROR_FILE_NOT_FOUND, u"The file is not there."},
    {ERROR_PATH_NOT_FOUND, u"The path is not there."},
    {ERROR_TOO_MANY_OPEN_FILES, u"Too many files are open."},
    {ERROR_ACCESS_DENIED, u"Access is denied."},
    {ERROR_INVALID_HANDLE, u"The handle is not valid."},
    {ERROR_NOT_ENOUGH_MEMORY, u"There is not enough memory."},
    {ERROR_BAD_FORMAT, u"The data has a wrong format."},
    {ERROR_INVALID_DATA, u"The data is not valid."},
    {ERROR_OUTOFMEMORY, u"There is no memory left."},
    {ERROR_INVALID_DRIVE, u"There is no such drive."},
    {ERROR_CURRENT_DIRECTORY, u"The current folder can't be removed."},
    {ERROR_NOT_SAME_DEVICE, u"The file can't be moved to another file system."},
    {ERROR_NO_MORE_FILES, u"There are no more files."},
    {ERROR_WRITE_PROTECT, u"The medium is write-protected."},
    {ERROR_GEN_FAILURE, u"The system failed for a reason that has no number here."},
    {ERROR_SHARING_VIOLATION, u"The file is in use by another program."},
    {ERROR_LOCK_VIOLATION, u"A part of the file is locked by another program."},
    {ERROR_HANDLE_EOF, u"The end of the file is reached."},
    {ERROR_HANDLE_DISK_FULL, u"The disk is full."},
    {ERROR_NOT_SUPPORTED, u"The request is not supported."},
    {ERROR_BAD_NETPATH, u"The network path is not there."},
    {ERROR_FILE_EXISTS, u"The file exists."},
    {ERROR_CANNOT_MAKE, u"The file or folder can't be made."},
    {ERROR_INVALID_PARAMETER, u"A parameter is wrong."},
    {ERROR_BROKEN_PIPE, u"The other end of the pipe is closed."},
    {ERROR_BUFFER_OVERFLOW, u"The name is too long for its buffer."},
    {ERROR_DISK_FULL, u"There is not enough space on the disk."},
    {ERROR_CALL_NOT_IMPLEMENTED, u"The function is not available on this system."},
    {ERROR_SEM_TIMEOUT, u"The time for the operation is over."},
    {ERROR_INSUFFICIENT_BUFFER, u"The buffer is too small."},
    {ERROR_INVALID_NAME, u"The name is not valid."},
    {ERROR_MOD_NOT_FOUND, u"The module is not there."},
    {ERROR_PROC_NOT_FOUND, u"The module has no such function."},
    {ERROR_NEGATIVE_SEEK, u"The file pointer can't stand in front of the file."},
    {ERROR_DIR_NOT_EMPTY, u"The folder is not empty."},
    {ERROR_BAD_PATHNAME, u"The path is not valid."},
    {ERROR_BUSY, u"The resource is in use."},
    {ERROR_ALREADY_EXISTS, u"The file or object exists already."},
    {ERROR_BAD_EXE_FORMAT, u"The file is no valid executable."},
    {ERROR_ENVVAR_NOT_FOUND, u"There is no such environment variable."},
    {ERROR_FILENAME_EXCED_RANGE, u"The name is too long."},
    {ERROR_FILE_TOO_LARGE, u"The file is larger than it may be."},
    {ERROR_MORE_DATA, u"There is more data than room for it."},
    {WAIT_TIMEOUT, u"The time for the wait is over."},
    {ERROR_NO_MORE_ITEMS, u"There are no more items."},
    {ERROR_DIRECTORY, u"The name is not that of a folder."},
    {ERROR_NOT_OWNER, u"The mutex belongs to another thread."},
    {ERROR_TOO_MANY_POSTS, u"The semaphore is at its maximum."},
    {ERROR_MR_MID_NOT_FOUND, u"There is no text for this message."},
    {ERROR_INVALID_ADDRESS, u"The address is not valid."},
    {ERROR_OPERATION_ABORTED, u"The operation was broken off."},
    {ERROR_STACK_OVERFLOW, u"The stack is used up."},
    {ERROR_INVALID_FLAGS, u"The flags are not valid."},
    {ERROR_FILE_INVALID, u"The file has nothing that could be used so."},
    {ERROR_BADDB, u"The registry is damaged."},
    {ERROR_BADKEY, u"The registry key is not valid."},
    {ERROR_CANTOPEN, u"The registry can't be opened."},
    {ERROR_CANTREAD, u"The registry can't be read."},
    {ERROR_CANTWRITE, u"The registry can't be written."},
    {ERROR_REGISTRY_CORRUPT, u"The registry's file is damaged."},
    {ERROR_REGISTRY_IO_FAILED, u"The registry's file can't be read or written."},
    {ERROR_KEY_DELETED, u"The registry key is marked for deletion."},
    {ERROR_KEY_HAS_CHILDREN, u"The registry key has sub keys."},
    {ERROR_CHILD_MUST_BE_VOLATILE, u"A key below a volatile one must be volatile."},
    {ERROR_NO_UNICODE_TRANSLATION, u"The text has characters that the code page doesn't have."},
    {ERROR_IO_DEVICE, u"The device reported a read or write error."},
    {ERROR_MAPPED_ALIGNMENT, u"The place in the mapping is no multiple of the step for it."},
    {ERROR_OLD_WIN_VERSION, u"The system's version is another than the one asked for."},
    {ERROR_NO_ASSOCIATION, u"No program is set for files of this kind."},
    {ERROR_NO_MORE_USER_HANDLES, u"There are no more handles for windows."},
    {ERROR_MESSAGE_SYNC_ONLY, u"The message can only be sent, and waited for."},
    {ERROR_NOT_FOUND, u"It is not there."},
    {ERROR_NONE_MAPPED, u"There is no such account."},
    {ERROR_INVALID_SID, u"The security identifier is not valid."},
    {ERROR_INVALID_WINDOW_HANDLE, u"The window is not there."},
    {ERROR_INVALID_MENU_HANDLE, u"The menu is not there."},
    {ERROR_INVALID_HOOK_HANDLE, u"The hook is not there."},
    {ERROR_TLW_WITH_WSCHILD, u"A child window needs a parent."},
    {ERROR_CANNOT_FIND_WND_CLASS, u"There is no such window class."},
    {ERROR_WINDOW_OF_OTHER_THREAD, u"The window belongs to another thread."},
    {ERROR_CLASS_ALREADY_EXISTS, u"There is a window class of this name already."},
    {ERROR_CLASS_DOES_NOT_EXIST, u"There is no window class of this name."},
    {ERROR_CLASS_HAS_WINDOWS, u"The window class has windows yet."},
    {ERROR_INVALID_INDEX, u"The index is not valid."},
    {ERROR_INVALID_HOOK_FILTER, u"There is no such kind of hook."},
    {ERROR_INVALID_MSGBOX_STYLE, u"There is no such set of buttons."},
    {ERROR_INVALID_THREAD_ID, u"The thread is not there."},
    {ERROR_POPUP_ALREADY_ACTIVE, u"A menu is open already."},
    {ERROR_NO_SYSTEM_RESOURCES, u"The system has no room for it."},
    {ERROR_MENU_ITEM_NOT_FOUND, u"The menu has no such item."},
    {ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION, u"This needs a display, and there is none."},
    {ERROR_TIMEOUT, u"The operation took longer than it may."},
    {ERROR_RESOURCE_DATA_NOT_FOUND, u"The file has no resources."},
    {ERROR_RESOURCE_TYPE_NOT_FOUND, u"The file has no resource of this type."},
    {ERROR_RESOURCE_NAME_NOT_FOUND, u"The file has no resource of this name."},
    {ERROR_RESOURCE_LANG_NOT_FOUND, u"The file has no resource in this language."},
    {ERROR_NOT_ENOUGH_QUOTA, u"The limit for it is reached."},
    {ERROR_BAD_USERNAME, u"The user name is not valid."},
    {ERROR_INTERNET_TIMEOUT, u"The server took longer than it may."},
    {ERROR_INTERNET_INVALID_URL, u"The address is not valid."},
    {ERROR_INTERNET_UNRECOGNIZED_SCHEME, u"Addresses of this kind are not supported."},
    {ERROR_INTERNET_NAME_NOT_RESOLVED, u"There is no server of this name."},
    {ERROR_INTERNET_INVALID_OPTION, u"There is no such option."},
    {ERROR_INTERNET_INCORRECT_HANDLE_TYPE, u"The handle stands for something else."},
    {ERROR_INTERNET_INCORRECT_HANDLE_STATE, u"The request is not at the point for this."},
    {ERROR_INTERNET_CANNOT_CONNECT, u"The server can't be reached."},
    {ERROR_INTERNET_CONNECTION_ABORTED, u"The connection ended before its time."},
    {ERROR_INTERNET_SEC_CERT_DATE_INVALID, u"The server's certificate is out of date."},
    {ERROR_INTERNET_SEC_CERT_CN_INVALID, u"The server's certificate is for another name."},
    {ERROR_INTERNET_HTTPS_TO_HTTP_ON_REDIR, u"The server wants to leave the protected connection."},
    {ERROR_INTERNET_INVALID_CA, u"Nobody who is trusted stands for the server's certificate."},
    {ERROR_HTTP_HEADER_NOT_FOUND, u"There is no such header."},
    {ERROR_HTTP_INVALID_SERVER_RESPONSE, u"The server's answer can't be understood."},
    {ERROR_HTTP_HEADER_ALREADY_EXISTS, u"The header is there already."},
    {ERROR_HTTP_REDIRECT_FAILED, u"The server sends from one address to the next without end."},
    {ERROR_INTERNET_SECURITY_CHANNEL_ERROR, u"The connection can't be protected."},
    {static_cast<DWORD>(APPMODEL_ERROR_NO_PACKAGE), u"The process has no package."},
    {static_cast<DWORD>(E_NOTIMPL), u"Not implemented."},
    {static_cast<DWORD>(E_NOINTERFACE), u"There is no such interface."},
    {static_cast<DWORD>(E_POINTER), u"The pointer is not valid."},
    {static_cast<DWORD>(E_FAIL), u"Unspecified error."},
    {static_cast<DWORD>(RPC_E_CHANGED_MODE), u"The thread has another concurrency model already."},
    {static_cast<DWORD>(CLASS_E_NOAGGREGATION), u"The class can't be part of another object."},
    {static_cast<DWORD>(REGDB_E_CLASSNOTREG), u"There is no such class."},
    {static_cast<DWORD>(CO_E_CLASSSTRING), u"The text is not that of a class."},
    {static_cast<DWORD>(CO_E_OBJNOTREG), u"The object is not registered."},
    {CRYPT_E_NOT_FOUND, u"The signature has no such part."},
    {CRYPT_E_NO_MATCH, u"The file holds no signature."},
    {static_cast<DWORD>(TRUST_E_BAD_DIGEST), u"The file was changed since it was signed."},
    {static_cast<DWORD>(TRUST_E_MALFORMED_SIGNATURE), u"The signature can't be read."},
    {static_cast<DWORD>(TRUST_E_PROVIDER_UNKNOWN), u"There is no such way to check a signature."},
    {static_cast<DWORD>(TRUST_E_SUBJECT_FORM_UNKNOWN), u"Files of this kind have no signature."},
    {static_cast<DWORD>(TRUST_E_NOSIGNATURE), u"The file is not signed."},
    {static_cast<DWORD>(CERT_E_EXPIRED),
     u"The signer's certificate, or one behind it, is out of date."},
    {static_cast<DWORD>(CERT_E_UNTRUSTEDROOT),
     u"Nobody who is trusted stands for the signer's certificate."},
    {static_cast<DWORD>(CERT_E_CHAINING),
     u"The certificate of who stands for the signer's is missing."},
    {static_cast<DWORD>(CERT_E_WRONG_USAGE), u"The certificate is not for signing programs."},
    {static_cast<DWORD>(WPN_E_PLATFORM_UNAVAILABLE), u"No notification server answers."},
    {static_cast<DWORD>(WEB_E_INVALID_XML), u"The text is no XML document."},
};
static_assert(std::is_sorted(std::begin(kTexts), std::end(kTexts),
                             [](const ErrorText& a, const ErrorText& b) {
                                 return a.error < b.error;
                             }));

// An HRESULT of the facility for error numbers holds one in its low half.
DWORD without_facility(DWORD message) {
    return (message & 0xFFFF0000) == 0x80070000 ? message & 0xFFFF : message;
}

std::u16string text_of(DWORD message) {
    const auto error = without_facility(message);
    const auto* const found =
        std::lower_bound(std::begin(kTexts), std::end(kTexts), error,
                         [](const ErrorText& entry, DWORD wanted) { return entry.error < wanted; });
    if (found == std::end(kTexts) || found->error != error) return {};
    return std::u16string(found->text) + u"\r\n";
}

bool put_in_block(const std::u16string& text, char16_t* pointer, DWORD least) {
    const std::size_t units = std::max<std::size_t>(text.size() + 1, least);
    auto* const block = reinterpret_cast<char16_t*>(LocalAlloc(LMEM_FIXED, units * 2));
    if (block == nullptr) return false;
    text.copy(block, text.size());
    block[text.size()] = 0;
    *reinterpret_cast<char16_t**>(pointer) = block;
    return true;
}

}  // namespace
}  // namespace tvutil2

DWORD FormatMessageW(DWORD flags, const void* /*source*/, DWORD message, DWORD /*language*/,
                     char16_t* buffer, DWORD size, const void* /*arguments*/) {
    constexpr DWORD kKnown =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    if (buffer == nullptr || (flags & FORMAT_MESSAGE_FROM_SYSTEM) == 0 || (flags & ~kKnown) != 0) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    const auto text = tvutil2::text_of(message);
    if (text.empty()) return tvutil2::fail_with(ERROR_MR_MID_NOT_FOUND);
    if ((flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0) {
        if (!tvutil2::put_in_block(text, buffer, size)) return 0;
    } else {
        if (text.size() >= size) return tvutil2::fail_with(ERROR_INSUFFICIENT_BUFFER);
        buffer[text.copy(buffer, text.size())] = 0;
    }
    return static_cast<DWORD>(text.size());
}
