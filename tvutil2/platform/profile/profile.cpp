#include "tvutil2/platform/profile/profile.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/profile/profile_store.h"

#include <algorithm>

namespace tvutil2 {
namespace {

DWORD copy_text(std::u16string_view text, char16_t* buffer, DWORD size) {
    if (buffer == nullptr || size == 0) return 0;
    const auto count = std::min<std::size_t>(text.size(), size - 1);
    std::copy_n(text.begin(), count, buffer);
    buffer[count] = u'\0';
    if (count < text.size()) SetLastError(ERROR_MORE_DATA);
    return static_cast<DWORD>(count);
}

// `list`: texts with a zero behind each.
DWORD copy_list(std::u16string_view list, char16_t* buffer, DWORD size) {
    if (buffer == nullptr || size == 0) return 0;
    if (list.size() < size) {
        std::copy(list.begin(), list.end(), buffer);
        buffer[list.size()] = u'\0';
        if (list.empty() && size > 1) buffer[1] = u'\0';
        return static_cast<DWORD>(list.size());
    }
    SetLastError(ERROR_MORE_DATA);
    const auto count = size < 2 ? 0 : size - 2;
    std::copy_n(list.begin(), count, buffer);
    std::fill(buffer + count, buffer + size, u'\0');
    return count;
}

std::u16string section_names(const ProfileText& text) {
    std::u16string list;
    for (const auto& section : text.sections()) {
        // "[]" would end the list for whoever reads it.
        if (!section.name.empty()) list.append(section.name).push_back(u'\0');
    }
    return list;
}

std::u16string without_trailing_blanks(const char16_t* text) {
    std::u16string result(text != nullptr ? text : u"");
    result.erase(result.find_last_not_of(u" \t") + 1);
    return result;
}

UINT digit_of(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    const char16_t small = c | 0x20;
    return small >= u'a' && small <= u'f' ? small - u'a' + 10 : 16;
}

UINT number_of(std::u16string_view text) {
    while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
    const bool is_negative = text.starts_with(u'-');
    if (is_negative || text.starts_with(u'+')) text.remove_prefix(1);
    const UINT base = text.starts_with(u"0x")   ? 16
                      : text.starts_with(u"0o") ? 8
                      : text.starts_with(u"0b") ? 2
                                                : 10;
    if (base != 10) text.remove_prefix(2);
    UINT number = 0;
    for (; !text.empty() && digit_of(text.front()) < base; text.remove_prefix(1)) {
        number = number * base + digit_of(text.front());
    }
    return is_negative ? 0 - number : number;
}

bool has_line_break(std::u16string_view text) {
    return text.find_first_of(u"\r\n") != std::u16string_view::npos;
}

bool is_key(std::u16string_view key) {
    while (!key.empty() && is_space(key.front())) key.remove_prefix(1);
    return !key.empty() && key.front() != u'[' && key.front() != u';' &&
           key.find(u'=') == std::u16string_view::npos && !has_line_break(key);
}

}  // namespace
}  // namespace tvutil2

DWORD tvutil2::profile_string(const char16_t* section, const char16_t* key,
                              const char16_t* fallback, char16_t* buffer, DWORD size,
                              const char16_t* path) {
    const auto text = read_profile(path);
    if (text != nullptr && section == nullptr) {
        return copy_list(section_names(*text), buffer, size);
    }
    const auto* const found = text != nullptr && section != nullptr ? text->find(section) : nullptr;
    if (found != nullptr && key == nullptr) {
        std::u16string list;
        for (const auto& entry : found->entries) list.append(entry.key).push_back(u'\0');
        return copy_list(list, buffer, size);
    }
    const auto* const entry = found != nullptr ? ProfileText::find(*found, key) : nullptr;
    if (entry != nullptr) return copy_text(without_quotes(entry->value), buffer, size);
    if (section == nullptr) return copy_list({}, buffer, size);
    const auto count = copy_text(fallback != nullptr ? fallback : u"", buffer, size);
    if (key == nullptr && buffer != nullptr && count + 1 < size) buffer[count + 1] = u'\0';
    return count;
}

DWORD GetPrivateProfileStringW(const char16_t* section, const char16_t* key,
                               const char16_t* fallback, char16_t* buffer, DWORD size,
                               const char16_t* path) {
    return tvutil2::profile_string(section, key, tvutil2::without_trailing_blanks(fallback).c_str(),
                                   buffer, size, path);
}

UINT GetPrivateProfileIntW(const char16_t* section, const char16_t* key, int fallback,
                           const char16_t* path) {
    using namespace tvutil2;
    if (section == nullptr || key == nullptr) return static_cast<UINT>(fallback);
    const auto text = read_profile(path);
    const auto* const found = text != nullptr ? text->find(section) : nullptr;
    const auto* const entry = found != nullptr ? ProfileText::find(*found, key) : nullptr;
    return entry != nullptr ? number_of(without_quotes(entry->value)) : static_cast<UINT>(fallback);
}

DWORD GetPrivateProfileSectionNamesW(char16_t* buffer, DWORD size, const char16_t* path) {
    return GetPrivateProfileStringW(nullptr, nullptr, nullptr, buffer, size, path);
}

DWORD GetPrivateProfileSectionW(const char16_t* section, char16_t* buffer, DWORD size,
                                const char16_t* path) {
    using namespace tvutil2;
    const auto text = section != nullptr ? read_profile(path) : nullptr;
    const auto* const found = text == nullptr || section == nullptr ? nullptr : text->find(section);
    std::u16string list;
    if (found != nullptr) {
        for (const auto& entry : found->entries) {
            list.append(entry.key).append(u"=").append(entry.value).push_back(u'\0');
        }
    }
    return copy_list(list, buffer, size);
}

BOOL WritePrivateProfileStringW(const char16_t* section, const char16_t* key, const char16_t* value,
                                const char16_t* path) {
    using namespace tvutil2;
    if (section == nullptr || has_line_break(section) || (key != nullptr && !is_key(key))) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    const auto host = host_path_of(path);
    if (!host) return FALSE;
    return edit_profile(*host, [&](const ProfileText& text) -> std::optional<std::string> {
        if (key == nullptr) return text.without_section(section);
        if (value == nullptr) return text.without_key(section, key);
        const std::u16string_view all(value);
        return text.with_value(section, key,
                               all.substr(0, std::min(all.find_first_of(u"\r\n"), all.size())));
    });
}
