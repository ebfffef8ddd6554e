#include "tvutil2/platform/codepage/conversion.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/page_table.h"

#include <algorithm>
#include <climits>

namespace tvutil2::codepage {
namespace {

// The default character counts: two bytes where there are lead bytes, U+FFFD in UTF-8.
std::size_t most_bytes_of_unit(UINT page) {
    if (page == CP_ACP) page = GetACP();
    if (page == CP_UTF8) return 3;
    const auto* const table = PageTable::of(page);
    if (table == nullptr) return 0;
    return table->four_bytes() != nullptr ? 4 : table->has_leads() ? 2 : 1;
}

std::optional<std::size_t> refuse() {
    SetLastError(ERROR_INVALID_PARAMETER);
    return std::nullopt;
}

// More room than one conversion can fill is never missed.
template <class Unit>
int int_room(std::span<Unit> out) {
    return static_cast<int>(std::min<std::size_t>(out.size(), INT_MAX));
}

// Without room the platform would only count.
std::optional<std::size_t> counted(int result) {
    if (result <= 0) return std::nullopt;
    return static_cast<std::size_t>(result);
}

template <class Unit>
std::optional<std::basic_string<Unit>> cut(std::basic_string<Unit> text,
                                           std::optional<std::size_t> size) {
    if (!size) return std::nullopt;
    text.resize(*size);
    return text;
}

}  // namespace

std::size_t byte_room(UINT page, std::size_t units) {
    const auto most = most_bytes_of_unit(page);
    return units > INT_MAX ? INT_MAX * std::min<std::size_t>(most, 1)
                           : std::min<std::size_t>(units * most, INT_MAX);
}

std::optional<std::size_t> put_bytes(UINT page, DWORD flags, std::u16string_view text,
                                     std::span<char> out, const char* default_char,
                                     BOOL* used_default) {
    if (text.empty()) return 0;
    if (text.size() > INT_MAX || out.empty()) return refuse();
    return counted(WideCharToMultiByte(page, flags, text.data(), static_cast<int>(text.size()),
                                       out.data(), int_room(out), default_char, used_default));
}

std::optional<std::size_t> put_units(UINT page, DWORD flags, std::string_view bytes,
                                     std::span<char16_t> out) {
    if (bytes.empty()) return 0;
    if (bytes.size() > INT_MAX || out.empty()) return refuse();
    return counted(MultiByteToWideChar(page, flags, bytes.data(), static_cast<int>(bytes.size()),
                                       out.data(), int_room(out)));
}

std::optional<std::string> bytes_in(UINT page, DWORD flags, std::u16string_view text,
                                    const char* default_char, BOOL* used_default) {
    std::string bytes(byte_room(page, text.size()), '\0');
    const auto size = put_bytes(page, flags, text, bytes, default_char, used_default);
    return cut(std::move(bytes), size);
}

std::optional<std::u16string> units_of(UINT page, DWORD flags, std::string_view bytes) {
    std::u16string units(unit_room(bytes.size()), u'\0');
    const auto size = put_units(page, flags, bytes, units);
    return cut(std::move(units), size);
}

}  // namespace tvutil2::codepage
