#include "tvutil2/platform/files/long_path.h"

#include "tvutil2/platform/files/files.h"

#include <cstring>
#include <string>

DWORD GetLongPathNameW(const char16_t* path, char16_t* buffer, DWORD size) {
    if (GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES) return 0;
    const auto length = std::char_traits<char16_t>::length(path);
    if (length >= size || buffer == nullptr) return static_cast<DWORD>(length + 1);
    std::memmove(buffer, path, (length + 1) * sizeof(char16_t));
    return static_cast<DWORD>(length);
}
