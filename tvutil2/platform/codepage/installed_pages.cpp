// Which pages there are to choose from.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/codepage/catalogue.h"
#include "tvutil2/platform/codepage/codepage.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace {

// Numbers are told as decimal text.
bool tell(CODEPAGE_ENUMPROCW callback, UINT number) {
    char digits[10];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    char16_t text[std::size(digits) + 1] = {};
    std::copy(std::begin(digits), end, text);
    return callback(text) != FALSE;
}

}  // namespace

BOOL IsValidCodePage(UINT page) {
    return page == CP_UTF8 || tvutil2::codepage::find_row(page) != nullptr ? TRUE : FALSE;
}

BOOL EnumSystemCodePagesW(CODEPAGE_ENUMPROCW callback, DWORD flags) {
    if (callback == nullptr) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    if (flags != CP_INSTALLED && flags != CP_SUPPORTED) {
        return tvutil2::fail_with(ERROR_INVALID_FLAGS);
    }
    for (const auto& row : tvutil2::codepage::catalogue()) {
        if (!tell(callback, row.number)) return TRUE;
    }
    tell(callback, CP_UTF8);
    return TRUE;
}
