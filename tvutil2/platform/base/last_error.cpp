#include "tvutil2/platform/base/last_error.h"

#include <cerrno>

namespace {
thread_local DWORD t_last_error = 0;
}

DWORD GetLastError() {
    return t_last_error;
}

void SetLastError(DWORD error) {
    t_last_error = error;
}

namespace tvutil2 {

DWORD error_from_errno(int error) {
    switch (error) {
        case 0:
            return ERROR_SUCCESS;
        case ENOENT:
            return ERROR_FILE_NOT_FOUND;
        case ENOTDIR:
        case ELOOP:
            return ERROR_PATH_NOT_FOUND;
        case EMFILE:
        case ENFILE:
            return ERROR_TOO_MANY_OPEN_FILES;
        case EACCES:
        case EPERM:
        case EISDIR:
            return ERROR_ACCESS_DENIED;
        case EBADF:
            return ERROR_INVALID_HANDLE;
        case ENOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        case EXDEV:
            return ERROR_NOT_SAME_DEVICE;
        case EROFS:
            return ERROR_WRITE_PROTECT;
        case ETXTBSY:
            return ERROR_SHARING_VIOLATION;
        case EAGAIN:
            return ERROR_LOCK_VIOLATION;
        case EBUSY:
            return ERROR_BUSY;
        case EEXIST:
            return ERROR_ALREADY_EXISTS;
        case ENOTEMPTY:
            return ERROR_DIR_NOT_EMPTY;
        case ENOSPC:
        case EDQUOT:
            return ERROR_DISK_FULL;
        case EFBIG:
            return ERROR_FILE_TOO_LARGE;
        case ENAMETOOLONG:
            return ERROR_FILENAME_EXCED_RANGE;
        case EINVAL:
            return ERROR_INVALID_PARAMETER;
        case EPIPE:
            return ERROR_BROKEN_PIPE;
        case ENOEXEC:
            return ERROR_BAD_EXE_FORMAT;
        case ENOSYS:
        case EOPNOTSUPP:
            return ERROR_NOT_SUPPORTED;
        case EIO:
            return ERROR_IO_DEVICE;
        case ETIMEDOUT:
            return ERROR_SEM_TIMEOUT;
        default:
            return ERROR_GEN_FAILURE;
    }
}

bool fail_with_errno() {
    return fail_with(error_from_errno(errno));
}

}  // namespace tvutil2
