#include "tvutil2/platform/registry/key_name.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/registry/registry.h"

#include <algorithm>

namespace tvutil2 {
namespace {

void append_unit(std::string& bytes, char16_t unit) {
    bytes.push_back(static_cast<char>(unit >> 8U));
    bytes.push_back(static_cast<char>(unit & 0xFFU));
}

}  // namespace

std::string stored_name(std::u16string_view name) {
    std::string bytes;
    bytes.reserve(name.size() * 2);
    for (const auto unit : name) append_unit(bytes, unit);
    return bytes;
}

std::string folded_name(std::u16string_view name) {
    std::string bytes;
    bytes.reserve(name.size() * 2);
    for (const auto unit : name) append_unit(bytes, to_upper(unit));
    return bytes;
}

std::u16string name_of_stored(std::string_view bytes) {
    std::u16string name;
    name.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto high = static_cast<unsigned char>(bytes[i]);
        const auto low = static_cast<unsigned char>(bytes[i + 1]);
        name.push_back(static_cast<char16_t>(high << 8U | low));
    }
    return name;
}

LONG split_key_path(std::u16string_view path, std::vector<std::u16string_view>& parts) {
    if (path.starts_with(u'\\')) return static_cast<LONG>(ERROR_BAD_PATHNAME);
    while (!path.empty()) {
        const auto end = std::min(path.find(u'\\'), path.size());
        if (end > REG_MAX_KEY_NAME) return static_cast<LONG>(ERROR_INVALID_PARAMETER);
        if (end > 0) parts.push_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return ERROR_SUCCESS;
}

}  // namespace tvutil2
