#include "tvutil2/platform/files/full_path.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/host_files.h"

DWORD GetFullPathNameW(const char16_t* path, DWORD size, char16_t* buffer, char16_t** name) {
    using namespace tvutil2;
    if (name != nullptr) *name = nullptr;
    if (path == nullptr || *path == 0) return fail_with(ERROR_INVALID_NAME);
    const auto host = host_path(path, Lookup::none);
    if (!host) return 0;
    const auto full = platform_path(*host);
    if (!full) return fail_with(ERROR_INVALID_NAME);
    if (buffer == nullptr || full->size() >= size) return static_cast<DWORD>(full->size()) + 1;
    buffer[full->copy(buffer, full->size())] = 0;
    const auto last = full->find_last_of(u'\\') + 1;
    if (name != nullptr && last < full->size()) *name = buffer + last;
    return static_cast<DWORD>(full->size());
}
