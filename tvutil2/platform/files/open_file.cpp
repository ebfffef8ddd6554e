// CreateFileW.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/file_object.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/sharing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tvutil2 {
namespace {

constexpr DWORD kWriteRights = FILE_WRITE_DATA | FILE_APPEND_DATA;

struct Request {
    const char16_t* name;
    std::string path;  // the host's
    DWORD access;
    DWORD sharing;
    DWORD disposition;
    DWORD flags;

    [[nodiscard]] bool truncates() const {
        return disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING;
    }
    [[nodiscard]] bool writes() const { return (access & kWriteRights) != 0; }
};

DWORD without_generic(DWORD access) {
    DWORD rights = access & ~(GENERIC_READ | GENERIC_WRITE | GENERIC_ALL);
    if ((access & (GENERIC_READ | GENERIC_ALL)) != 0) {
        rights |= FILE_READ_DATA | FILE_READ_ATTRIBUTES;
    }
    if ((access & (GENERIC_WRITE | GENERIC_ALL)) != 0)
        rights |= kWriteRights | FILE_WRITE_ATTRIBUTES;
    if ((access & GENERIC_ALL) != 0) rights |= DELETE;
    return rights;
}

bool is_sound(DWORD disposition, DWORD access, DWORD flags) {
    if (disposition < CREATE_NEW || disposition > TRUNCATE_EXISTING ||
        (disposition == TRUNCATE_EXISTING && (access & FILE_WRITE_DATA) == 0)) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    if ((flags & FILE_FLAG_DELETE_ON_CLOSE) != 0) return fail_with(ERROR_NOT_SUPPORTED);
    return true;
}

// Read access is always asked for, since marks are read locks; without it, at least what was asked.
// O_NONBLOCK: a pipe with a file's name must not hold the caller.
Descriptor open_host(const Request& request, int extra) {
    extra |= O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    if ((request.access & kWriteRights) == FILE_APPEND_DATA) extra |= O_APPEND;
    if ((request.flags & FILE_FLAG_WRITE_THROUGH) != 0) extra |= O_DSYNC;
    const mode_t mode = (request.flags & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0666;
    const auto attempt = [&](int access) {
        return open(request.path.c_str(), access | extra, mode);
    };
    if (request.writes() || request.truncates()) {
        int file = attempt(O_RDWR);
        if (file < 0 && errno == EACCES && (request.access & FILE_READ_DATA) == 0) {
            file = attempt(O_WRONLY);
        }
        // A folder's attributes may be changed through a handle for writing.
        if (file < 0 && errno == EISDIR && request.disposition == OPEN_EXISTING) {
            file = attempt(O_RDONLY);
        }
        return Descriptor(file);
    }
    int file = attempt(O_RDONLY);
    if (file < 0 && errno == EACCES && (request.access & FILE_READ_DATA) == 0) {
        file = attempt(O_PATH);
    }
    return Descriptor(file);
}

// Most files are there as they are written. What isn't is looked up, and may be there in another
// writing.
Descriptor open_existing(Request& request) {
    auto file = open_host(request, 0);
    if (file || errno != ENOENT) return file;
    auto found = host_path_of(request.name, Lookup::likely_new);
    errno = ENOENT;
    if (!found || *found == request.path) return file;
    request.path = std::move(*found);
    return open_host(request, 0);
}

// Tells apart whether the file was there, which a plain O_CREAT would not.
Descriptor open_or_create(Request& request, bool& existed) {
    existed = request.disposition != CREATE_NEW;
    if (request.disposition == CREATE_NEW) return open_host(request, O_CREAT | O_EXCL);
    auto file = open_existing(request);
    if (file || errno != ENOENT || request.disposition == OPEN_EXISTING ||
        request.disposition == TRUNCATE_EXISTING) {
        return file;
    }
    existed = false;
    file = open_host(request, O_CREAT | O_EXCL);
    if (!file &&
        errno == EEXIST) {  // made by another in the meantime, or a link that leads nowhere
        existed = true;
        file = open_host(request, O_CREAT);
    }
    return file;
}

bool is_allowed(const Request& request, const struct stat& info, bool existed) {
    if (S_ISDIR(info.st_mode)) {
        return (request.flags & FILE_FLAG_BACKUP_SEMANTICS) != 0 && !request.truncates()
                   ? true
                   : fail_with(ERROR_ACCESS_DENIED);
    }
    if (S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode)) return fail_with(ERROR_NOT_SUPPORTED);
    if (existed && (request.writes() || request.truncates()) && is_read_only(info)) {
        return fail_with(ERROR_ACCESS_DENIED);
    }
    return true;
}

// For a text that ends in a separator: there is no file of such a name, nor is one made.
bool may_be_folder(const char16_t* path, DWORD disposition) {
    const auto host = host_path_of(path);
    if (!host || !is_folder_if_it_says_so(path, *host)) return false;
    const bool creates = disposition != OPEN_EXISTING && disposition != TRUNCATE_EXISTING;
    return !creates || is_folder(*host) || fail_with(ERROR_INVALID_NAME);
}

std::shared_ptr<FileObject> open_file(Request request) {
    bool existed = false;
    auto file = open_or_create(request, existed);
    if (!file) {
        if (errno == EEXIST) {
            SetLastError(ERROR_FILE_EXISTS);
        } else {
            fail_at(request.path);
        }
        return nullptr;
    }
    struct stat info {};
    if (!stat_mode(file.get(), info)) {
        fail_with_errno();
        return nullptr;
    }
    if (!is_allowed(request, info, existed)) return nullptr;
    const bool takes_part = (request.access & (FILE_READ_DATA | kWriteRights | DELETE)) != 0;
    if (S_ISREG(info.st_mode) && takes_part &&
        !claim_sharing(file.get(), request.access, request.sharing)) {
        return nullptr;
    }
    if (request.truncates() && existed && S_ISREG(info.st_mode) && ftruncate(file.get(), 0) != 0) {
        fail_with_errno();
        return nullptr;
    }
    if (request.disposition == CREATE_ALWAYS || request.disposition == OPEN_ALWAYS) {
        SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    }
    return std::make_shared<FileObject>(std::move(file), request.access, std::move(request.path));
}

}  // namespace
}  // namespace tvutil2

HANDLE CreateFileW(const char16_t* path, DWORD access, DWORD sharing,
                   SECURITY_ATTRIBUTES* /*security*/, DWORD disposition, DWORD flags_and_attributes,
                   HANDLE /*model*/) {
    using namespace tvutil2;
    const DWORD rights = without_generic(access);
    if (!is_sound(disposition, rights, flags_and_attributes)) return INVALID_HANDLE_VALUE;
    auto host = host_path_of(path, disposition == CREATE_NEW ? Lookup::likely_new : Lookup::none);
    if (!host || (ends_in_separator(path) && !may_be_folder(path, disposition))) {
        return INVALID_HANDLE_VALUE;
    }
    auto file =
        open_file({path, std::move(*host), rights, sharing, disposition, flags_and_attributes});
    if (!file) return INVALID_HANDLE_VALUE;
    const auto handle = make_handle<HANDLE>(std::move(file));
    return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}
